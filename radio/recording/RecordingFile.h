#ifndef RADIO_RECORDING_RECORDINGFILE_H
#define RADIO_RECORDING_RECORDINGFILE_H

#include "recording/RecordingFormat.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/** What a recorder wrote while a radio was at work: docs/recording.md. */
namespace Radio::Recordings {

using Kind = ::Recording::Kind;
using ObjectKind = ::Recording::ObjectKind;
using Outcome = ::Recording::Outcome;

/** What the beginning of a recording says of it. Texts are empty where nothing is known. */
struct Header {
    std::uint32_t version = 0;
    /** How many bits an address had, 32 or 64. */
    std::uint32_t wordBits = 0;
    std::uint32_t process = 0;
    /** In nanoseconds since 1970. */
    std::uint64_t started = 0;
    /** In hexadecimal digits. */
    std::string buildId;
    std::string machine;
    /** The library's file, with its version. */
    std::string library;
    std::string unit;
    std::string board;
    std::string program;
    /** So many things were not recorded for want of room. */
    std::uint32_t passedOver = 0;
};

/** Something that records speak of. What the words mean depends on the kind: RecordingFormat.h. */
struct Object {
    ObjectKind kind{};
    std::uint16_t number = 0;
    std::string name;
    std::int32_t first = 0;
    std::int32_t second = 0;
};

/** One record. */
struct Record {
    /** Which slot it is, counted from the beginning of the recording; numbers ascend, with gaps. */
    std::uint64_t sequence = 0;
    Kind kind{};
    unsigned thread = 0;
    /** So many operations of the library are going on around it on its thread. */
    unsigned depth = 0;
    /** Null: none, or one that nobody could give a number. Lives as long as the file. */
    const Object* object = nullptr;
    Outcome outcome{};
    std::int32_t code = 0;
    std::int32_t a = 0;
    std::int32_t b = 0;
    std::int32_t c = 0;
    std::int32_t d = 0;
    std::string bytes;

    /** Of an operation of the library, and of its end: since the recording began. */
    std::uint64_t nanoseconds() const { return unite(c, d); }
    /** Of what has a carrier in a and b: in kHz. */
    std::uint64_t carrier() const { return unite(a, b); }
    /** So many slots it takes. */
    std::uint64_t slots() const;
    /** The number at `index` of those in its bytes, which has to be there. */
    std::int32_t number(std::size_t index) const;

private:
    static std::uint64_t unite(std::int32_t low, std::int32_t high) {
        return std::uint64_t{static_cast<std::uint32_t>(high)} << 32U | static_cast<std::uint32_t>(low);
    }
};

/** What is not there any more, or not whole, so far. */
struct Losses {
    /** Slots that newer ones took the place of. */
    std::uint64_t overwritten = 0;
    /** Slots that were claimed and not finished: somebody was writing when the process ended. */
    std::uint64_t unfinished = 0;
};

/**
 * A recording, read from the beginning to the end. Whatever it is given, it takes no more memory than the
 * file itself does. Throws InputError, which names file and byte, for what no recorder writes.
 */
class RecordingFile {
public:
    /** `bytes` is the content of `name`. */
    RecordingFile(std::string bytes, std::string name);

    const Header& header() const { return m_header; }
    /** What it speaks of, in the order of the numbers. */
    const std::vector<Object>& objects() const { return m_objects; }
    /** Null: there is none. */
    const Object* object(std::uint16_t number) const;

    /** The next record; nothing at the end. */
    std::optional<Record> next();
    /** The record that next() gave with this number. */
    Record at(std::uint64_t sequence) const;
    /** Begins anew. */
    void rewind();
    /** next() gives the record with this number, which it has given before. Losses go on being counted. */
    void goTo(std::uint64_t sequence) { m_at = sequence; }
    const Losses& losses() const { return m_losses; }
    /** Is called every few thousand records; what it throws, next() throws. */
    void setTick(std::function<void()> tick) { m_tick = std::move(tick); }

private:
    ::Recording::Slot slotAt(std::size_t offset) const;
    std::size_t offsetOf(std::uint64_t sequence) const;
    std::uint32_t word(std::size_t offset) const;
    std::uint64_t longWord(std::size_t offset) const;
    std::string textAt(std::size_t offset, std::size_t room) const;
    [[noreturn]] void refuse(std::size_t offset, const std::string& expected) const;

    void readHeader();
    void readAreas();
    void readNames();
    bool continues(std::uint64_t sequence, std::size_t more) const;
    Record recordOf(std::uint64_t sequence, const ::Recording::Slot& slot) const;
    std::string bytesBehind(std::uint64_t sequence, std::size_t count) const;

    std::string m_bytes;
    std::string m_name;
    Header m_header;
    std::vector<Object> m_objects;
    ::Recording::Shares m_shares{};
    std::uint64_t m_claimed = 0;
    std::uint64_t m_at = 0;
    Losses m_losses;
    std::function<void()> m_tick;
    std::uint32_t m_records = 0;
};

/** The recording in a file. */
RecordingFile readRecording(const std::string& file);

} // namespace Radio::Recordings

#endif
