#ifndef PLATFORM_DEVICES_IIOSERVER_H
#define PLATFORM_DEVICES_IIOSERVER_H

#include <chrono>
#include <string>

namespace Devices {

/**
 * Finds out whether a server of IIO devices answers at `uri`, within `limit`: 0, or an error number. libiio
 * itself waits five seconds for one that is silent, whatever it is told. A URI of another kind is not tried,
 * and gives 0.
 */
int awaitIioServer(const std::string& uri, std::chrono::milliseconds limit);

} // namespace Devices

#endif
