#ifndef RADIO_RECORDING_COMPARISON_H
#define RADIO_RECORDING_COMPARISON_H

#include "radio/recording/Alignment.h"
#include "radio/recording/ComparedRecording.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Radio::Recordings {

/** Something that the beginnings of two recordings say otherwise. */
struct HeaderDifference {
    /** "library", "build id"... */
    std::string what;
    std::string before;
    std::string after;
};

/** Something that one radio has and the other has not. */
struct ObjectDifference {
    ObjectKind kind{};
    std::string name;
    bool isInBefore = false;
    /** The library asked for it there, too. */
    bool isAskedForByTheOther = false;
};

/**
 * An operation that differs, or something that happened outside of any; or a call in one. Nothing on one
 * side: only the other one has it. On both sides: they have other arguments, or something else came of it.
 */
struct Difference {
    std::optional<Seen> before;
    std::optional<Seen> after;
};

struct Counts {
    std::uint64_t same = 0;
    std::uint64_t different = 0;
    std::uint64_t onlyBefore = 0;
    std::uint64_t onlyAfter = 0;

    bool isDifferent() const { return different + onlyBefore + onlyAfter != 0; }
    /** There was nothing on either side. */
    bool isNothing() const { return same == 0 && !isDifferent(); }
};

/**
 * What differs between two recordings. Operations are aligned by what is done with what, carriers included,
 * and so are the calls within each; threads, times, addresses and numbers of objects do not count. Takes for
 * each operation the memory of a slot, and for the calls of one operation at a time.
 */
class Comparison {
public:
    /** Both must outlive the object, and belong to two different objects. Throws InputError for what no
     * recorder writes. */
    Comparison(RecordingFile& before, RecordingFile& after, const Wanted& wanted);

    std::vector<HeaderDifference> header() const;
    /** Drivers, variables, tables and interfaces; first those that only the first has. */
    std::vector<ObjectDifference> objects() const;
    const Counts& operations() const { return m_counts; }
    const ComparedRecording& before() const { return m_before; }
    const ComparedRecording& after() const { return m_after; }

    /** Tells `visit` of each operation that differs until it returns false. */
    void operations(const std::function<bool(const Difference&)>& visit) const;
    /** Tells `visit` of each call of such an operation that differs until it returns false; gives the counts
     * of all of them. */
    Counts calls(const Difference& operation, const std::function<bool(const Difference&)>& visit) const;

private:
    ComparedRecording m_before;
    ComparedRecording m_after;
    std::vector<Match> m_matches;
    Counts m_counts;
};

} // namespace Radio::Recordings

#endif
