/**
 * Result codes: the 32-bit word that every operation of the platform and of this library answers with.
 *
 * A code below 0x8000 is a success and a code of 0x8000 or above is a failure. Codes compare as signed
 * 32-bit integers, so 0xFFFFFFFF is -1 and a success. 0 is the ordinary success. The library reports its
 * own failures as exactly 0x8000, whatever code the platform gave; the platform's code is shown in a trace
 * message only. What the platform or a driver throws counts as a failure. Two operations of
 * CTxIQImbalanceHandler have a failing code of their own beside it.
 *
 * Usable from C99 and from C++17 on.
 */
#ifndef FREQUENCYHANDLER_INTERFACE_RESULTCODE_H
#define FREQUENCYHANDLER_INTERFACE_RESULTCODE_H

#include <stdint.h>

#ifdef __cplusplus

/** Result of the module and interface framework. Any 32-bit value may occur, not only the named ones. */
enum EAFResult : int32_t { ResultOk = 0, ResultFailed = 0x8000 };

/** True for every code that the rule above calls a success. Takes any of the platform's result types. */
template <typename Code>
constexpr bool isSuccess(Code code) {
    return static_cast<int32_t>(code) < static_cast<int32_t>(ResultFailed);
}

/** True for every code that the rule above calls a failure. Takes any of the platform's result types. */
template <typename Code>
constexpr bool isFailure(Code code) {
    return !isSuccess(code);
}

#else

typedef int32_t EAFResult;
enum { ResultOk = 0, ResultFailed = 0x8000 };

#endif

#endif
