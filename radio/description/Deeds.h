#ifndef RADIO_DESCRIPTION_DEEDS_H
#define RADIO_DESCRIPTION_DEEDS_H

#include "radio/recording/RecordingFile.h"

#include <array>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace Radio::Describing {

using Recordings::Kind;
using Recordings::Object;
using Recordings::Outcome;
using Recordings::Record;
using Recordings::RecordingFile;

/** An operation of the library, with the calls that it made and the contents that it found. */
struct Deed {
    /** Nothing: calls of an operation of which the recording does not have the beginning. */
    std::optional<Record> began;
    /** Nothing: the recording ends before it, or the gap has it. */
    std::optional<Record> ended;
    /** In order. Calls of what was done inside it are not among them. */
    std::vector<Record> calls;
    /** Another operation, other than the phase of a platform, was going on around it. */
    bool isInside = false;
    /** The gap of the ring lies before it. */
    bool isBehindGap = false;
    /** It is a channel, or what compensates one, that is built once more, or comes behind such. */
    bool isOfAnotherLife = false;

    /** What it is; `finished` for one without a beginning. */
    Kind kind() const { return began ? began->kind : Kind::finished; }
};

/** Goes through a recording, operation by operation, in the order in which they began. */
class Deeds {
public:
    /** `file` is read from its beginning, and must outlive the object. */
    explicit Deeds(RecordingFile& file);

    /** The next one; null at the end. Good until the next call. */
    const Deed* next();

private:
    /** What is given out when it is over, and nothing before it is still going on. */
    struct Entry {
        Deed deed;
        bool isOver = false;
    };

    void take(Record record);
    void begin(Record record);
    void end(Record record);
    void call(Record record);
    void closeAll();

    RecordingFile& m_file;
    std::deque<std::unique_ptr<Entry>> m_entries;
    /** What is going on on each thread, the innermost last. */
    std::array<std::vector<Entry*>, 256> m_threads;
    /** Calls that stand before an operation, which they are told of with. */
    std::array<std::vector<Record>, 256> m_strays;
    std::unique_ptr<Entry> m_given;
    /** The channels that were built, and those of what compensates them. */
    std::set<std::pair<Recordings::ObjectKind, std::int32_t>> m_built;
    bool m_isOfAnotherLife = false;
    bool m_isBehindGap = false;
    bool m_isAtEnd = false;
};

} // namespace Radio::Describing

#endif
