/**
 * The result types of the platform's services. The rule of ResultCode.h holds for all of them: below 0x8000,
 * compared as signed 32-bit integers, is a success.
 *
 * Usable from C99 and from C++17 on.
 */
#ifndef PLATFORM_CONTRACT_PLATFORMRESULTS_H
#define PLATFORM_CONTRACT_PLATFORMRESULTS_H

#include "ResultCode.h"

#ifdef __cplusplus

/** Result of a driver lookup, read or write. */
enum EDriverResult : int32_t {};
/** Result of the calibration handler. */
enum ECHResult : int32_t {};
/** Result of the temperature handler. */
enum ETHResult : int32_t {};

#else

typedef int32_t EDriverResult;
typedef int32_t ECHResult;
typedef int32_t ETHResult;

#endif

#endif
