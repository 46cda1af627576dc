#ifndef PLATFORM_CONTRACT_ITEMPERATUREHANDLER_H
#define PLATFORM_CONTRACT_ITEMPERATUREHANDLER_H

#include "IInterface_c.h"
#include "ITemperatureHandler_c.h"

#include <vector>

/** Holds the temperature observers of a service, in the order in which they were registered. */
template <typename HandlerType>
class RADIO_CLASS TempSubject {
protected:
    TempSubject() = default;
    ~TempSubject() = default;

    std::vector<ITemperatureObserver*> m_observers;
};

/** The temperature service, registered in the broker as "ITemperatureHandler". Supplied by the platform. */
class RADIO_CLASS ITemperatureHandler : public TempSubject<ITemperatureHandler>, public IInterface_c {
public:
    ~ITemperatureHandler() override;

    /**
     * Subscribes `observer` with the temperature service of the process. From then on the service calls it
     * whenever the temperature changes, in the order of registration. The record must outlive its last call.
     */
    static ETHResult registerObserver(ITemperatureObserver* observer);
};

#endif
