#include "radio/laboratory/Draws.h"

namespace Radio::Laboratory {

namespace {

constexpr std::uint64_t golden = 0x9E3779B97F4A7C15U;

/** Has each bit of a number depend on all of them (SplitMix64). */
std::uint64_t mixed(std::uint64_t number) {
    number = (number ^ (number >> 30U)) * 0xBF58476D1CE4E5B9U;
    number = (number ^ (number >> 27U)) * 0x94D049BB133111EBU;
    return number ^ (number >> 31U);
}

/** FNV-1a. */
std::uint64_t hashOf(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char character : text) {
        hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001B3U;
    }
    return hash;
}

} // namespace

Draws::Draws(std::uint64_t seed, std::uint64_t transmitter, std::string_view quantity)
    : m_state(mixed(mixed(mixed(seed + golden) ^ (transmitter + golden)) ^ hashOf(quantity))) {}

std::uint64_t Draws::bits() {
    m_state += golden;
    return mixed(m_state);
}

double Draws::uniform() {
    return static_cast<double>(bits() >> 11U) * (1.0 / 9007199254740992.0); // 2^-53
}

double Draws::normal() {
    constexpr int count = 12;
    double sum = 0.0;
    for (int n = 0; n < count; ++n) {
        sum += uniform();
    }
    return sum - count / 2.0;
}

} // namespace Radio::Laboratory
