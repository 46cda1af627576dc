#ifndef RADIO_SESSION_HARDWAREWRITE_H
#define RADIO_SESSION_HARDWAREWRITE_H

#include "standalone/Platform.h"

#include <string>

namespace Radio {

/** True for a call that puts a value into hardware. */
bool isWrite(const Standalone::Call& call);
/** Where a write goes: the driver's name, or a carrier of a remote radio unit such as "IRauHandler_1.tx". */
std::string destination(const Standalone::Call& call);

} // namespace Radio

#endif
