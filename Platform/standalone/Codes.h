#ifndef PLATFORM_STANDALONE_CODES_H
#define PLATFORM_STANDALONE_CODES_H

#include <cstdint>

/** The failing codes that the stand-alone platform answers with of its own accord. */
namespace Standalone::Codes {

/** Nothing is known under that name, identifier or handle. */
constexpr std::int32_t notFound = 0x8001;
/** The name, identifier or module is taken; what was there first stays. */
constexpr std::int32_t alreadyThere = 0x8002;
/** An argument is null, or a table has not the number of axes that the call needs. */
constexpr std::int32_t badArgument = 0x8003;
/** No stand-alone platform exists at the moment. */
constexpr std::int32_t noPlatform = 0x8004;
/** There is no memory for it. */
constexpr std::int32_t outOfMemory = 0x8005;

} // namespace Standalone::Codes

#endif
