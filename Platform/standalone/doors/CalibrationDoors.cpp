// The calibration handler: doors to the platform's TableStore.

#include "CCalibrationHandler.h"
#include "standalone/Codes.h"
#include "standalone/Platform.h"

using Standalone::Platform;
namespace Codes = Standalone::Codes;

ECHResult CCalibrationHandler_GetTable(const char* tableName, CalibrationTableHandle* out) {
    Platform* const platform = Platform::current();
    return static_cast<ECHResult>(platform != nullptr ? platform->tables().lookup(tableName, out)
                                                      : Codes::noPlatform);
}

ECHResult CCalibrationTable_LinearInterpolate(CalibrationTableHandle table, int x, int* y) {
    Platform* const platform = Platform::current();
    return static_cast<ECHResult>(platform != nullptr ? platform->tables().interpolate(table, x, y)
                                                      : Codes::noPlatform);
}

ECHResult CCalibrationTable_BiLinearInterpolate(CalibrationTableHandle table, int x1, int x2, int* y) {
    Platform* const platform = Platform::current();
    return static_cast<ECHResult>(platform != nullptr ? platform->tables().interpolate(table, x1, x2, y)
                                                      : Codes::noPlatform);
}
