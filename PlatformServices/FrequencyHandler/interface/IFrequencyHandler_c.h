/**
 * The C view of a frequency handler. Usable from C99 and from C++17 on.
 *
 * A client asks the C view of the broker for "IFrequencyHandler_" + direction (+ "_" + channel when the
 * channel is not 0), for example "IFrequencyHandler_Tx_1", and receives a FrequencyHandlerCStruct.
 */
#ifndef FREQUENCYHANDLER_INTERFACE_IFREQUENCYHANDLER_C_H
#define FREQUENCYHANDLER_INTERFACE_IFREQUENCYHANDLER_C_H

#include "Handshake.h"
#include "ResultCode.h"

/** What a client gives in order to be told of frequency changes. Read once, at registration, not kept. */
typedef struct IFrequencyObserver {
    /** Handed back unchanged as the first argument of every call. */
    void* context;
    /**
     * Called on the thread that changed the frequency, before the changing call returns.
     * `channel` is the radio channel number, `frequency` the new carrier in kHz (0 to 4294967295). The
     * frequency is the new one also when the write to the hardware failed.
     */
    void (*onFrequencyChanged)(void* context, unsigned long channel, unsigned long frequency);
} IFrequencyObserver;

/** The record that a frequency handler publishes; it belongs to the handler and lives as long as it. */
typedef struct FrequencyHandlerCStruct {
    /** The first argument of `registerObserver`. */
    void* handler;
    /**
     * Subscribes `observer`, which may be freed or used again afterwards. There is no way to unsubscribe,
     * and a second registration of the same record yields a second call for each change.
     *
     * Returns 0; 0x8000, and keeps nothing, when `handler`, `observer` or its function is null or when there
     * is no memory. Not to be called from inside `onFrequencyChanged`, nor while the frequency changes on
     * another thread.
     */
    EAFResult (*registerObserver)(void* handler, IFrequencyObserver* observer);
    /** The radio channel number. */
    unsigned long m_channel;
} FrequencyHandlerCStruct;

#endif
