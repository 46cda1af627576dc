/**
 * The calibration handler: the platform's calibration tables.
 *
 * Usable from C99 and from C++17 on.
 */
#ifndef PLATFORM_CONTRACT_CCALIBRATIONHANDLER_H
#define PLATFORM_CONTRACT_CCALIBRATIONHANDLER_H

#include "PlatformResults.h"
#include "Visibility.h"

#ifdef __cplusplus
extern "C" {
#endif

/** One table; what is in it is the calibration handler's own. */
typedef struct CalibrationTable CalibrationTable;
typedef CalibrationTable* CalibrationTableHandle;

/**
 * Stores the handle of the table `tableName` (dotted, capitalised) in `*out`; it stays valid as long as the
 * calibration handler does and is never released.
 */
RADIO_API ECHResult CCalibrationHandler_GetTable(const char* tableName, CalibrationTableHandle* out);

/**
 * Stores the value of a table with one axis at `x`, linearly interpolated, in `*y`. What it is beyond the
 * ends of the axis is the calibration handler's choice. A null `table` is a failure, for which `*y` is left
 * alone.
 */
RADIO_API ECHResult CCalibrationTable_LinearInterpolate(CalibrationTableHandle table, int x, int* y);

/** Stores the value of a table with two axes at (`x1`, `x2`), bilinearly interpolated, in `*y`; otherwise the
 * same. */
RADIO_API ECHResult CCalibrationTable_BiLinearInterpolate(CalibrationTableHandle table, int x1, int x2,
                                                          int* y);

#ifdef __cplusplus
}
#endif

#endif
