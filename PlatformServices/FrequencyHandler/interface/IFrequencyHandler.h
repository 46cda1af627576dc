#ifndef FREQUENCYHANDLER_INTERFACE_IFREQUENCYHANDLER_H
#define FREQUENCYHANDLER_INTERFACE_IFREQUENCYHANDLER_H

#include "IFrequencyHandler_c.h"
#include "IInterface_c.h"
#include "Subject.h"

/**
 * The transmit or receive frequency of one radio channel, as the rest of the platform sees it.
 *
 * Registered in the broker as "IFrequencyHandler_Tx" or "IFrequencyHandler_Rx", followed by "_" and the
 * channel number when that is not 0. Owned by the frequency module of the channel; take no copy of the
 * pointer beyond the module's life. All operations are to be called on a thread on which the frequency does
 * not change at the same time: nothing here is locked.
 */
class RADIO_CLASS IFrequencyHandler : public IInterface_c, public Subject<IFrequencyHandler> {
public:
    ~IFrequencyHandler() override = default;

    /**
     * Appends `observer` to those that are told of a frequency change, in order of registration. The handler
     * keeps the pointer and never deletes it; there is no way to remove it, and an observer registered twice
     * is told twice.
     *
     * Returns 0; 0x8000 when memory is short.
     */
    virtual EAFResult registerObserver(Observer<IFrequencyHandler>* /*observer*/) { return ResultOk; }

    /** The carrier last set, in kHz; 0 before the first one. Already the new one while hardware is written.
     */
    virtual unsigned long getFrequency() const { return 0; }

    /**
     * The entry of the C record: see FrequencyHandlerCStruct::registerObserver for what it takes and answers.
     * The observer is wrapped in an object that lives as long as the process.
     */
    static EAFResult registerObserver(void* handler, IFrequencyObserver* observer);

protected:
    FrequencyHandlerCStruct m_cStruct{};
};

#endif
