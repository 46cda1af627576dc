/** Records and objects that are called back: each is passed on as one of the recorder's, which leads to it.
 */
#ifndef PLATFORM_RECORDING_CLIENTS_H
#define PLATFORM_RECORDING_CLIENTS_H

#include "CModuleManager_c.h"
#include "IFrequencyHandler.h"
#include "ITemperatureHandler_c.h"

#include <cstdint>

namespace Recording::Clients {

/** What the platform's temperature service is given in the place of the library's `observer`. */
ITemperatureObserver* observerOf(ITemperatureObserver* observer, std::uint16_t& object);
/** The C record of the temperature service that the library is given in the place of `real`. */
TemperatureHandlerCStruct* recordOf(TemperatureHandlerCStruct* real);
/** Records how the library registers `observer`; gives what `call` answers when it is given the observer. */
ETHResult registerObserver(ITemperatureObserver* observer, int way,
                           ETHResult (*call)(ITemperatureObserver* observer));

/** What the module manager is given in the place of the library's `callback`. */
ModuleCallbackRecord* callbackOf(ModuleCallbackRecord* callback, std::uint16_t object);

/** What the library's `handler`, with the number `object`, is given in the place of a client's observer,
 * which gets the number `observerNumber`. */
Observer<IFrequencyHandler>* observerOf(Observer<IFrequencyHandler>* observer, const void* handler,
                                        std::uint16_t object, std::uint16_t& observerNumber);
/** The same for the record of a C client, which the library reads during the call; false when it is to get
 * the client's own. */
bool observerOf(const IFrequencyObserver& observer, const void* handler, std::uint16_t object,
                IFrequencyObserver& given, std::uint16_t& observerNumber);
/** The object `owner` of the library is gone, and is called back by nobody. */
void forgetOwner(std::uint16_t owner);
/** The handler is gone, and tells nobody any more. */
void forget(const void* handler);

} // namespace Recording::Clients

#endif
