// The temperature handler: a door to the platform's TemperatureService.

#include "ITemperatureHandler.h"
#include "standalone/Codes.h"
#include "standalone/Platform.h"

using Standalone::Platform;
namespace Codes = Standalone::Codes;

ITemperatureHandler::~ITemperatureHandler() = default;

ETHResult ITemperatureHandler::registerObserver(ITemperatureObserver* observer) {
    Platform* const platform = Platform::current();
    return static_cast<ETHResult>(platform != nullptr ? platform->temperature().add(observer)
                                                      : Codes::noPlatform);
}
