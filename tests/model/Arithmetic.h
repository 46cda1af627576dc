#ifndef TESTS_MODEL_ARITHMETIC_H
#define TESTS_MODEL_ARITHMETIC_H

#include "Story.h"

#include <cstdint>

/** Numbers without overflow, and the explicit ways back to 32 bits. */
namespace Told {

__extension__ using Wide = __int128;

/** The number modulo 2^32, from 0 to 2^32 - 1. */
constexpr Wide modulo32(Wide number) {
    constexpr Wide all = Wide{1} << 32;
    return ((number % all) + all) % all;
}

/** The 32-bit two's complement number that has the same remainder modulo 2^32. */
constexpr Wide wrapped(Wide number) {
    constexpr Wide half = Wide{1} << 31;
    return modulo32(number + half) - half;
}

constexpr std::int32_t asInt(Wide number) {
    return static_cast<std::int32_t>(wrapped(number));
}

/** What a 32-bit number becomes whose sign is taken away: the lowest stays as it is. */
constexpr Wide magnitude(Wide number) {
    return number < 0 ? modulo32(-number) : number;
}

/** The 32-bit number next to a floating-point one toward zero; beyond the range the end of it, 0 for no
 * number. */
std::int32_t truncated(double number);

/** The value of a table at a point, clamped outside it, rounded once, halves away from zero. */
std::int32_t interpolated(const Table& table, std::int32_t x1, std::int32_t x2);

} // namespace Told

#endif
