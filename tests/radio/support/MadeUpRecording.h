#ifndef TESTS_RADIO_SUPPORT_MADEUPRECORDING_H
#define TESTS_RADIO_SUPPORT_MADEUPRECORDING_H

#include "recording/RecordingFormat.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

/** A recording that a test writes slot by slot. */
class MadeUpRecording {
public:
    MadeUpRecording(std::uint32_t names, std::uint32_t beginning, std::uint32_t ring)
        : m_names(names),
          m_beginning(beginning),
          m_ring(ring),
          m_bytes(Recording::headerBytes + (names + beginning + ring) * Recording::slotBytes, '\0') {
        namespace At = Recording::At;
        m_bytes.replace(0, Recording::magic.size(), Recording::magic);
        word(At::version, 1);
        word(At::byteOrder, 0x01020304);
        word(At::wordBits, 32);
        word(At::slotSize, 32);
        word(At::nameSlots, names);
        word(At::beginningSlots, beginning);
        word(At::ringSlots, ring);
    }

    MadeUpRecording& word(std::size_t at, std::uint32_t number) {
        for (unsigned index = 0; index < 4; ++index) {
            m_bytes[at + index] = static_cast<char>(number >> (8U * index) & 255U);
        }
        return *this;
    }
    MadeUpRecording& text(std::size_t at, std::string_view text) {
        m_bytes.replace(at, text.size(), text);
        return *this;
    }

    /** Adds a name of at most 28 bytes. */
    MadeUpRecording& name(Recording::ObjectKind kind, std::uint16_t number, std::string_view text,
                          std::int32_t first = 0, std::int32_t second = 0) {
        const std::uint8_t more = text.empty() ? 0 : 1;
        put(Recording::headerBytes + m_nameCount * 32U,
            {Recording::commitMark(m_nameCount, false), static_cast<std::uint8_t>(kind), 0, 0, more, number,
             static_cast<std::uint16_t>(text.size()), 0, first, second, 0, 0});
        if (more != 0) {
            const std::size_t at = Recording::headerBytes + (m_nameCount + 1) * 32U;
            word(at, Recording::commitMark(m_nameCount + 1, true));
            m_bytes.replace(at + 4, text.size(), text);
        }
        m_nameCount += 1U + more;
        return word(Recording::At::namesClaimed, m_nameCount);
    }

    /** Adds a record with at most 28 bytes behind it. */
    MadeUpRecording& record(Recording::Kind kind, std::uint16_t object, std::int32_t code, std::int32_t a = 0,
                            std::int32_t b = 0, std::int32_t c = 0, std::int32_t d = 0, unsigned depth = 0,
                            std::string_view bytes = {},
                            Recording::Outcome outcome = Recording::Outcome::returned) {
        const std::uint8_t more = bytes.empty() ? 0 : 1;
        put(offsetOf(m_claimed), {Recording::commitMark(m_claimed, false), static_cast<std::uint8_t>(kind), 1,
                                  static_cast<std::uint8_t>(depth), more, object,
                                  Recording::secondOf(outcome, bytes.size()), code, a, b, c, d});
        if (more != 0) {
            const std::size_t at = offsetOf(m_claimed + 1);
            word(at, Recording::commitMark(m_claimed + 1, true));
            m_bytes.replace(at + 4, bytes.size(), bytes);
        }
        m_claimed += 1U + more;
        return word(Recording::At::claimed, static_cast<std::uint32_t>(m_claimed));
    }

    std::size_t offsetOf(std::uint64_t sequence) const {
        const std::uint64_t place =
            sequence < m_beginning ? sequence : m_beginning + (sequence - m_beginning) % m_ring;
        return Recording::headerBytes + static_cast<std::size_t>(m_names + place) * 32U;
    }
    std::uint64_t claimed() const { return m_claimed; }
    std::uint32_t wordAt(std::size_t at) const {
        std::uint32_t number = 0;
        for (unsigned index = 4; index-- > 0;) {
            number = number << 8U | static_cast<std::uint8_t>(m_bytes[at + index]);
        }
        return number;
    }
    const std::string& bytes() const { return m_bytes; }

private:
    void put(std::size_t at, const Recording::Slot& slot) {
        word(at, slot.commit);
        word(at + 4, static_cast<std::uint32_t>(slot.kind | slot.thread << 8U | slot.depth << 16U) |
                         std::uint32_t{slot.more} << 24U);
        word(at + 8, slot.object | std::uint32_t{slot.second} << 16U);
        std::size_t offset = at + 12;
        for (const std::int32_t number : {slot.code, slot.a, slot.b, slot.c, slot.d}) {
            word(offset, static_cast<std::uint32_t>(number));
            offset += 4;
        }
    }

    std::uint32_t m_names;
    std::uint32_t m_beginning;
    std::uint32_t m_ring;
    std::uint32_t m_nameCount = 0;
    std::uint64_t m_claimed = 0;
    std::string m_bytes;
};

#endif
