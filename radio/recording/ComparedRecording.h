#ifndef RADIO_RECORDING_COMPAREDRECORDING_H
#define RADIO_RECORDING_COMPAREDRECORDING_H

#include "radio/recording/Alignment.h"
#include "radio/recording/Compared.h"
#include "radio/recording/Selection.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace Radio::Recordings {

/** Goes through the records of one operation, whatever other threads do meanwhile. One at a time of a file.
 */
class OperationReader {
public:
    /** `file` must outlive the object, and `step` be the number of a record in it. */
    OperationReader(RecordingFile& file, const Wanted& wanted, std::uint64_t step);

    /** What it begins with, wanted or not. */
    const Seen& begin() const { return m_begin; }
    /** The next record that is wanted, its end included. What happened outside of operations has none. */
    std::optional<Seen> next();
    /** Goes on to the one with the number. */
    std::optional<Seen> find(std::uint64_t sequence);

private:
    std::optional<Seen> read();

    RecordingFile& m_file;
    Selection m_selection;
    Seen m_begin;
    std::uint64_t m_overwritten = 0;
    bool m_isOver = true;
};

/** One of two recordings that are compared. */
class ComparedRecording {
public:
    /** Reads all of it. `file` must outlive the object. Throws InputError for what no recorder writes. */
    ComparedRecording(RecordingFile& file, const Wanted& wanted);

    const RecordingFile& file() const { return m_file; }
    const Losses& losses() const { return m_losses; }

    /** Operations, and records outside of any, in the order in which they began. */
    const std::vector<Item>& steps() const { return m_steps; }
    /** What is wanted of an operation. */
    std::vector<Item> callsOf(std::uint64_t step) const;
    OperationReader open(std::uint64_t step) const { return {m_file, m_wanted, step}; }

    /** Of the object at `index` of the file's. */
    bool isAskedFor(std::size_t index) const { return m_lookups[index] != Lookup::none; }
    bool isFound(std::size_t index) const { return m_lookups[index] == Lookup::found; }

private:
    /** What came of looking for an object, at best. */
    enum class Lookup : std::uint8_t { none, askedFor, found };

    void read();
    void note(const Record& record);

    RecordingFile& m_file;
    Wanted m_wanted;
    Comparing m_comparing;
    std::vector<Item> m_steps;
    std::vector<Lookup> m_lookups;
    Losses m_losses;
};

} // namespace Radio::Recordings

#endif
