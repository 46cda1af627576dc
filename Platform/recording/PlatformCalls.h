/** What the doors to the platform have in common. */
#ifndef PLATFORM_RECORDING_PLATFORMCALLS_H
#define PLATFORM_RECORDING_PLATFORMCALLS_H

#include "Calls.h"
#include "Names.h"

namespace Recording {

/** Records a call that is wholly told by `entry` and its answer. */
template <typename Call>
auto recorded(Entry entry, Call call) {
    const auto code = outgoing(entry, call);
    entry.code = static_cast<std::int32_t>(code);
    Recorder::write(entry);
    return code;
}

inline std::uint16_t nameOf(ObjectKind kind, const char* name) {
    return Names::numberOf(kind, name != nullptr ? name : "");
}

} // namespace Recording

#endif
