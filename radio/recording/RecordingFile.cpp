#include "radio/recording/RecordingFile.h"

#include "radio/files/InputError.h"
#include "radio/files/TextFile.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

namespace Radio::Recordings {

namespace At = ::Recording::At;
using ::Recording::commitMark;
using ::Recording::continuationBytes;
using ::Recording::headerBytes;
using ::Recording::Slot;
using ::Recording::slotBytes;

namespace {

/** Often enough that nobody waits, and too seldom to be noticed. */
constexpr std::uint32_t recordsPerTick = 4096;

constexpr std::array<char, 17> hexDigits{"0123456789abcdef"};

std::uint8_t byteAt(std::string_view bytes, std::size_t offset) {
    return static_cast<std::uint8_t>(bytes[offset]);
}

/** A little-endian number, whatever this processor's are. */
template <typename Number>
Number numberAt(std::string_view bytes, std::size_t offset) {
    Number number = 0;
    for (std::size_t index = sizeof(Number); index-- > 0;) {
        number = static_cast<Number>(number << 8U | byteAt(bytes, offset + index));
    }
    return number;
}

std::int32_t signedAt(std::string_view bytes, std::size_t offset) {
    return static_cast<std::int32_t>(numberAt<std::uint32_t>(bytes, offset));
}

bool isKind(std::uint8_t number) {
    const bool isIncoming = number >= 1 && number <= static_cast<std::uint8_t>(Kind::compensationCarrier);
    const bool isOutgoing = number >= static_cast<std::uint8_t>(Kind::driverLookup) &&
                            number <= static_cast<std::uint8_t>(::Recording::lastKind);
    return isIncoming || isOutgoing || number == static_cast<std::uint8_t>(Kind::finished);
}

std::size_t slotsFor(std::size_t bytes) {
    return (bytes + continuationBytes - 1) / continuationBytes;
}

/** Whether a record of the kind may have so many bytes, as the operation ended. */
bool mayHave(const Slot& slot, Outcome outcome, std::size_t count) {
    const auto kind = static_cast<Kind>(slot.kind);
    if (outcome == Outcome::threwException) {
        return true; // what the exception says
    }
    if (outcome != Outcome::returned && kind != Kind::traceMessage) {
        return count == 0;
    }
    switch (kind) {
    case Kind::calibrate:
        return count == 44;
    case Kind::finished:
        return count == (slot.a == static_cast<std::int32_t>(Kind::calibrate) ? 16 : 0);
    case Kind::variableContent:
        return slot.a >= 0 && slot.a <= 1023 && count == static_cast<std::size_t>(slot.a) * 4;
    case Kind::moduleRegister:
        return slot.b >= 0 && static_cast<std::size_t>(slot.b) <= ::Recording::mostPhases &&
               count - static_cast<std::size_t>(slot.b) * 4 <= ::Recording::mostModuleName;
    case Kind::callbackRegister:
        return count % 4 == 0 && count <= ::Recording::mostPhases * 4;
    case Kind::driverWriteBuffer:
    case Kind::traceMessage:
        return true;
    default:
        return count == 0;
    }
}

} // namespace

std::int32_t Record::number(std::size_t index) const {
    return signedAt(bytes, index * 4);
}

std::uint64_t Record::slots() const {
    return 1 + slotsFor(bytes.size());
}

RecordingFile::RecordingFile(std::string bytes, std::string name)
    : m_bytes(std::move(bytes)),
      m_name(std::move(name)) {
    readHeader();
    readAreas();
    readNames();
}

void RecordingFile::refuse(std::size_t offset, const std::string& expected) const {
    throw InputError({m_name, 0}, "at byte " + std::to_string(offset) + ": expected " + expected);
}

std::uint32_t RecordingFile::word(std::size_t offset) const {
    return numberAt<std::uint32_t>(m_bytes, offset);
}

std::uint64_t RecordingFile::longWord(std::size_t offset) const {
    return numberAt<std::uint64_t>(m_bytes, offset);
}

std::string RecordingFile::textAt(std::size_t offset, std::size_t room) const {
    const std::string_view text = std::string_view(m_bytes).substr(offset, room);
    return std::string(text.substr(0, text.find('\0')));
}

void RecordingFile::readHeader() {
    if (m_bytes.substr(0, ::Recording::magic.size()) != ::Recording::magic) {
        refuse(0, "the word \"" + std::string(::Recording::magic) + "\" of a recording");
    }
    if (m_bytes.size() < headerBytes) {
        refuse(m_bytes.size(), "a header of " + std::to_string(headerBytes) + " bytes");
    }
    m_header.version = word(At::version);
    if (m_header.version != ::Recording::formatVersion) {
        refuse(At::version, "version " + std::to_string(::Recording::formatVersion) + ", found " +
                                std::to_string(m_header.version));
    }
    if (word(At::byteOrder) != ::Recording::byteOrderMark) {
        refuse(At::byteOrder, "little-endian numbers");
    }
    m_header.wordBits = word(At::wordBits);
    if (m_header.wordBits != 32 && m_header.wordBits != 64) {
        refuse(At::wordBits, "32 or 64 bits, found " + std::to_string(m_header.wordBits));
    }
    m_header.process = word(At::process);
    m_header.started = longWord(At::started);
    m_header.passedOver = word(At::passedOver);
    m_header.machine = textAt(At::machine, ::Recording::machineRoom);
    m_header.library = textAt(At::library, ::Recording::textRoom);
    m_header.unit = textAt(At::unit, ::Recording::textRoom);
    m_header.board = textAt(At::board, ::Recording::textRoom);
    m_header.program = textAt(At::program, ::Recording::textRoom);
    const std::uint32_t length = word(At::buildIdLength);
    if (length > ::Recording::buildIdRoom) {
        refuse(At::buildIdLength,
               "at most " + std::to_string(::Recording::buildIdRoom) + " bytes of build id");
    }
    for (std::size_t index = 0; index < length; ++index) {
        const std::uint8_t byte = byteAt(m_bytes, At::buildId + index);
        m_header.buildId += {hexDigits[byte >> 4U], hexDigits[byte & 15U]};
    }
}

void RecordingFile::readAreas() {
    if (word(At::slotSize) != slotBytes) {
        refuse(At::slotSize, "slots of " + std::to_string(slotBytes) + " bytes");
    }
    m_shares = {word(At::nameSlots), word(At::beginningSlots), word(At::ringSlots)};
    const std::uint64_t slots =
        std::uint64_t{m_shares.names} + m_shares.beginning + std::uint64_t{m_shares.ring};
    if (slots * slotBytes + headerBytes > m_bytes.size()) {
        refuse(m_bytes.size(), std::to_string(slots * slotBytes + headerBytes) + " bytes of " +
                                   std::to_string(slots) + " slots");
    }
    if (m_shares.ring == 0 || (m_shares.ring & (m_shares.ring - 1)) != 0) {
        refuse(At::ringSlots, "a power of two");
    }
    if (word(At::namesClaimed) > m_shares.names) {
        refuse(At::namesClaimed, "at most " + std::to_string(m_shares.names) + " slots of names");
    }
    m_claimed = longWord(At::claimed);
    if (m_claimed >> 62U != 0) {
        refuse(At::claimed, "fewer slots than any radio lives to claim");
    }
    rewind();
}

void RecordingFile::rewind() {
    m_at = 0;
    m_losses = {};
}

Slot RecordingFile::slotAt(std::size_t offset) const {
    const std::string_view bytes = std::string_view(m_bytes).substr(offset, slotBytes);
    return {numberAt<std::uint32_t>(bytes, 0),
            byteAt(bytes, 4),
            byteAt(bytes, 5),
            byteAt(bytes, 6),
            byteAt(bytes, 7),
            numberAt<std::uint16_t>(bytes, 8),
            numberAt<std::uint16_t>(bytes, 10),
            signedAt(bytes, 12),
            signedAt(bytes, 16),
            signedAt(bytes, 20),
            signedAt(bytes, 24),
            signedAt(bytes, 28)};
}

void RecordingFile::readNames() {
    const std::size_t claimed = word(At::namesClaimed);
    for (std::size_t at = 0; at < claimed;) {
        const std::size_t offset = headerBytes + at * slotBytes;
        const Slot slot = slotAt(offset);
        if (slot.commit != commitMark(at, false)) {
            ++at; // somebody was writing it; nothing speaks of it yet
            continue;
        }
        if (slot.kind == 0 || slot.kind > static_cast<std::uint8_t>(::Recording::lastObjectKind)) {
            refuse(offset + 4, "a kind of object, found " + std::to_string(slot.kind));
        }
        if (slot.more != slotsFor(slot.second) || at + slot.more >= claimed) {
            refuse(offset + 7, "as many slots as a name of " + std::to_string(slot.second) + " bytes takes");
        }
        if (slot.object == 0 || slot.object > m_objects.size() + claimed) {
            refuse(offset + 8, "the number of an object, found " + std::to_string(slot.object));
        }
        std::string name;
        for (std::size_t index = 1; index <= slot.more; ++index) {
            if (word(offset + index * slotBytes) != commitMark(at + index, true)) {
                refuse(offset + index * slotBytes, "the name to go on");
            }
            name += m_bytes.substr(offset + index * slotBytes + 4, continuationBytes);
        }
        name.resize(slot.second);
        m_objects.push_back({static_cast<ObjectKind>(slot.kind), slot.object, name, slot.a, slot.b});
        at += slot.more + std::size_t{1};
    }
    std::sort(m_objects.begin(), m_objects.end(),
              [](const Object& one, const Object& other) { return one.number < other.number; });
    const auto twice =
        std::adjacent_find(m_objects.begin(), m_objects.end(),
                           [](const Object& one, const Object& other) { return one.number == other.number; });
    if (twice != m_objects.end()) {
        refuse(headerBytes,
               "each number of an object once, found " + std::to_string(twice->number) + " twice");
    }
}

const Object* RecordingFile::object(std::uint16_t number) const {
    const auto found =
        std::lower_bound(m_objects.begin(), m_objects.end(), number,
                         [](const Object& object, std::uint16_t wanted) { return object.number < wanted; });
    return found != m_objects.end() && found->number == number ? &*found : nullptr;
}

std::size_t RecordingFile::offsetOf(std::uint64_t sequence) const {
    const std::uint64_t place = sequence < m_shares.beginning
                                    ? sequence
                                    : m_shares.beginning + (sequence - m_shares.beginning) % m_shares.ring;
    return headerBytes + static_cast<std::size_t>(m_shares.names + place) * slotBytes;
}

bool RecordingFile::continues(std::uint64_t sequence, std::size_t more) const {
    for (std::uint64_t index = 1; index <= more; ++index) {
        if (sequence + index >= m_claimed ||
            word(offsetOf(sequence + index)) != commitMark(sequence + index, true)) {
            return false;
        }
    }
    return true;
}

std::optional<Record> RecordingFile::next() {
    if (m_tick && ++m_records % recordsPerTick == 0) {
        m_tick();
    }
    while (m_at < m_claimed) {
        // Between the beginning, which stays, and the ring is what the ring has overwritten.
        if (m_at >= m_shares.beginning && m_claimed - m_at > m_shares.ring) {
            const std::uint64_t oldest = m_claimed - m_shares.ring;
            m_losses.overwritten += oldest - m_at;
            m_at = oldest;
        }
        const std::uint64_t sequence = m_at;
        const Slot slot = slotAt(offsetOf(sequence));
        const bool isWhole = slot.commit == commitMark(sequence, false) && continues(sequence, slot.more);
        m_at += isWhole ? slot.more + std::uint64_t{1} : std::uint64_t{1};
        if (isWhole) {
            return recordOf(sequence, slot);
        }
        m_losses.unfinished += slot.commit == commitMark(sequence, true) ? 0 : 1;
    }
    return {};
}

Record RecordingFile::at(std::uint64_t sequence) const {
    return recordOf(sequence, slotAt(offsetOf(sequence)));
}

Record RecordingFile::recordOf(std::uint64_t sequence, const Slot& slot) const {
    const std::size_t offset = offsetOf(sequence);
    if (!isKind(slot.kind)) {
        refuse(offset + 4, "a kind of record, found " + std::to_string(slot.kind));
    }
    const std::size_t count = slot.second >> 4U;
    const auto outcome = static_cast<std::uint16_t>(slot.second & 15U);
    if (outcome > static_cast<std::uint16_t>(Outcome::unwound)) {
        refuse(offset + 10, "an outcome, found " + std::to_string(outcome));
    }
    const bool isBegin = static_cast<Kind>(slot.kind) < Kind::finished;
    const bool isContent = static_cast<Kind>(slot.kind) == Kind::variableContent;
    if ((isBegin || isContent) && outcome != static_cast<std::uint16_t>(Outcome::returned)) {
        refuse(offset + 10, std::string(isBegin ? "the beginning of an operation" : "a content") +
                                ", without an outcome, found " + std::to_string(outcome));
    }
    if (slot.more != slotsFor(count)) {
        refuse(offset + 7, "as many slots as " + std::to_string(count) + " bytes take");
    }
    if (!mayHave(slot, static_cast<Outcome>(outcome), count)) {
        refuse(offset + 10, "as many bytes as the kind " + std::to_string(slot.kind) + " has, found " +
                                std::to_string(count));
    }
    if (static_cast<Kind>(slot.kind) == Kind::finished &&
        (slot.a <= 0 || slot.a >= static_cast<std::int32_t>(Kind::finished))) {
        refuse(offset + 16, "the kind of what has ended, found " + std::to_string(slot.a));
    }
    const Object* const spokenOf = slot.object != 0 ? object(slot.object) : nullptr;
    if (slot.object != 0 && spokenOf == nullptr) {
        refuse(offset + 8, "the number of an object, found " + std::to_string(slot.object));
    }
    return {sequence,    static_cast<Kind>(slot.kind),
            slot.thread, slot.depth,
            spokenOf,    static_cast<Outcome>(outcome),
            slot.code,   slot.a,
            slot.b,      slot.c,
            slot.d,      bytesBehind(sequence, count)};
}

std::string RecordingFile::bytesBehind(std::uint64_t sequence, std::size_t count) const {
    std::string bytes;
    for (std::uint64_t index = 1; bytes.size() < count; ++index) {
        bytes += m_bytes.substr(offsetOf(sequence + index) + 4, continuationBytes);
    }
    bytes.resize(count);
    return bytes;
}

RecordingFile readRecording(const std::string& file) {
    std::error_code error;
    const auto type = std::filesystem::status(file, error).type();
    // Whoever opens a pipe may wait for ever. What is not there is said by whoever tries to read it.
    if (type != std::filesystem::file_type::regular && type != std::filesystem::file_type::directory &&
        type != std::filesystem::file_type::not_found && type != std::filesystem::file_type::none) {
        throw InputError({file, 0}, "is no file, expected a recording");
    }
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    // What is no file is said by whoever tries to read it.
    const std::size_t most =
        error ? 0 : static_cast<std::size_t>(std::min<std::uintmax_t>(size, ::Recording::largestFile));
    std::string bytes = readTextFile(file, most, "a recording");
    if (bytes.size() > ::Recording::largestFile) {
        throw InputError({file, 0}, "at byte " + std::to_string(::Recording::largestFile) +
                                        ": expected the end of a recording");
    }
    return {std::move(bytes), file};
}

} // namespace Radio::Recordings
