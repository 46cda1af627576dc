/**
 * The frequency module of a radio channel under C names: for programs in C, and for those that load the
 * library with dlopen() and look its operations up. Beside what the class does, it tells what came of the
 * last frequency change of each direction.
 *
 * What holds for the class holds here: nothing is locked, so the operations of one module must not overlap,
 * nor its phases and temperatures; modules of different channels may be used on different threads. Results
 * are those of ResultCode.h. No operation throws.
 *
 * Usable from C99 and from C++17 on.
 */
#ifndef FREQUENCYHANDLER_INTERFACE_FREQUENCYHANDLER_C_H
#define FREQUENCYHANDLER_INTERFACE_FREQUENCYHANDLER_C_H

#include "FrequencyHandlerVersion.h"
#include "Handshake.h"
#include "ResultCode.h"
#include "Visibility.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The frequency module of one radio channel. */
typedef struct FrequencyHandlerModule FrequencyHandlerModule;

/** The boards that there are handlers for, by their number. */
enum {
    FrequencyHandlerMicrowaveBoardIf = 0,
    FrequencyHandlerRfModule = 1,
    FrequencyHandlerMicrowaveBoardDspOffset = 2,
    FrequencyHandlerMicrowaveBoardHzCsOffset = 3,
    FrequencyHandlerRau = 4,
    FrequencyHandlerMicrowaveBoardHz = 5
};

/** Which way a carrier goes. */
enum { FrequencyHandlerTx = 0, FrequencyHandlerRx = 1 };

/** What came of a frequency change. */
typedef struct FrequencyHandlerTuning {
    /** The carrier that was asked for, in kHz; 0 before the first one. */
    uint32_t frequency;
    /** 0: nothing that was written was refused. 0x8000: something was, and nothing was written after it. The
     * carrier is kept and told to observers in both cases. A driver that is not there is written nothing, and
     * refuses nothing: see `written`. */
    EAFResult result;
    /** What the driver, or the remote radio unit, that refused answered; 0x8000 where none of them was asked,
     * or where it threw. 0 with the result 0. */
    int32_t code;
    /** 1: what makes the carrier (of a microwave board its RF LO) was there and took it; what is written
     * after it, the charge pump, may have been refused. 0: it has nothing of this carrier: there was none,
     * since a driver is missing or phase 11 was not run, or it refused, or what is written before it did; and
     * before the first carrier. 0, too, where something threw, since nobody knows what came before. With the
     * result 0 this is the only sign. */
    int32_t written;
} FrequencyHandlerTuning;

/** The version of the library that is loaded: compare with FREQUENCYHANDLER_VERSION of the headers. */
RADIO_API uint32_t FrequencyHandler_GetVersion(void);

/**
 * Makes the module of a channel for the board `type` and stores it in `*module`; it registers itself with the
 * module manager, and is driven by that through the phases from then on. To be given back with
 * FrequencyHandler_Destroy.
 *
 * 0x8000, and null is stored: `type` is none of the above, or there is no memory, or the platform's
 * ModuleInterface, the base of a module, throws. A null `module` is 0x8000, too. What broker and module
 * manager answer is not looked at, nor is it when they throw: the module is there, and not found.
 */
RADIO_API EAFResult FrequencyHandler_Create(int32_t channel, int32_t type, FrequencyHandlerModule** module);

/** Withdraws and deletes a module; null is none. The platform must have stopped to notify temperatures. */
RADIO_API void FrequencyHandler_Destroy(FrequencyHandlerModule* module);

/**
 * Sets the carrier of a direction, in kHz. 0 whether or not the hardware took it, and whether or not there is
 * any, which FrequencyHandler_GetTuning tells; 0x8000 for a null `module` and a `direction` that is none.
 */
RADIO_API EAFResult FrequencyHandler_Tune(FrequencyHandlerModule* module, int32_t direction,
                                          uint32_t frequency);

/**
 * Stores what came of the last FrequencyHandler_Tune of a direction in `*tuning`, as soon as that has
 * returned. When an observer tunes the direction that it is told of, that one was the last, and stays;
 * the LO-leakage correction comes after it, and is then that of the carrier before, until the temperature
 * changes. 0x8000, and nothing is stored, for a null argument and a `direction` that is none. Of the hardware
 * of the carrier alone: what LO-leakage cancellation writes is not looked at.
 */
RADIO_API EAFResult FrequencyHandler_GetTuning(const FrequencyHandlerModule* module, int32_t direction,
                                               FrequencyHandlerTuning* tuning);

#ifdef __cplusplus
}
#endif

#endif
