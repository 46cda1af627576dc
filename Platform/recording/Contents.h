/**
 * What the library reads through addresses, without a call: the contents of some variables. They are looked
 * at whenever an operation of the module begins that asked for them, and recorded when they have changed.
 */
#ifndef PLATFORM_RECORDING_CONTENTS_H
#define PLATFORM_RECORDING_CONTENTS_H

#include <cstdint>
#include <string_view>

namespace Recording::Contents {

/** The library was told, for the module `owner`, where the content of a variable is; null: nowhere. */
void watch(std::uint16_t variable, std::string_view name, std::uint16_t owner, const void* address);
/** Nobody reads any more for `owner`. */
void forget(std::uint16_t owner);
/** Records what `owner` will find that is not as it was. */
void writeChanges(std::uint16_t owner);

} // namespace Recording::Contents

#endif
