#ifndef RADIO_FILES_FINGERPRINT_H
#define RADIO_FILES_FINGERPRINT_H

#include "radio/files/Json.h"

#include <array>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <string>

namespace Radio {

/** FNV-1a, 64 bits: enough to notice a change. */
class Fingerprint {
public:
    template <typename Value>
    void add(const Value& value) {
        for (const char character : toText(value) + ";") {
            m_hash = (m_hash ^ static_cast<unsigned char>(character)) * 0x100000001B3U;
        }
    }

    std::string text() const {
        std::array<char, 17> digits{};
        static_cast<void>(std::snprintf(digits.data(), digits.size(), "%016" PRIx64, m_hash));
        return digits.data();
    }

private:
    std::uint64_t m_hash = 0xCBF29CE484222325U;
};

} // namespace Radio

#endif
