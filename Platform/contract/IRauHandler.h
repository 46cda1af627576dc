#ifndef PLATFORM_CONTRACT_IRAUHANDLER_H
#define PLATFORM_CONTRACT_IRAUHANDLER_H

#include "IInterface.h"
#include "ResultCode.h"

/** Any radio that is reached through an interface of its own. Supplied by the platform. */
class RADIO_CLASS IRadio : public virtual IInterface {
public:
    ~IRadio() override;
};

/**
 * A remote radio unit, registered in the broker as "IRauHandler", followed by "_" and the channel number when
 * that is not 0. Supplied by the platform.
 */
class RADIO_CLASS IRauHandler : public virtual IRadio {
public:
    ~IRauHandler() override;

    /** Sets the transmit carrier, in kHz. */
    virtual EAFResult setTxRadioFrequency(unsigned long frequency) = 0;
    /** Sets the receive carrier, in kHz. */
    virtual EAFResult setRxRadioFrequency(unsigned long frequency) = 0;
};

#endif
