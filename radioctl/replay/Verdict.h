#ifndef RADIOCTL_REPLAY_VERDICT_H
#define RADIOCTL_REPLAY_VERDICT_H

#include "radio/recording/RecordingFile.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Radio::Replaying {

/** What came of a recording. */
enum class Outcome {
    identical,
    /** Newer records have taken the place of what came next; until then it was identical. */
    identicalUntilGap,
    different,
    /** Something in it cannot be lived again; until then it was identical. */
    stopped,
    /** It is no recording. */
    unusable,
};

/** Where the library went another way. */
enum class Difference {
    none,
    /** Another call, or the same with other arguments. */
    call,
    /** A call where the recording has none. */
    more,
    /** None where the recording has one. */
    less,
    /** An operation answers something else. */
    answer,
    /** It ended the process. */
    crash,
};

struct Verdict {
    std::string file;
    Outcome outcome = Outcome::unusable;
    Difference difference = Difference::none;
    /** Calls that were identical, and those that the recording has. */
    std::uint64_t calls = 0;
    std::uint64_t recorded = 0;
    /** Calls that were passed without a comparison: outside of recorded operations, or of who knows what. */
    std::uint64_t notCompared = 0;
    /** So much was not recorded for want of room, which can look like a difference, or hide one. */
    std::uint64_t passedOver = 0;
    /** Counted from 1. */
    std::uint64_t operation = 0;
    /** Where its record stands; nothing: it was outside of all. */
    std::optional<std::uint64_t> begin;
    /** Which record the library differed from; nothing: there is none. */
    std::optional<std::uint64_t> at;
    /** What it did; its object is `object`. */
    Recordings::Record now;
    std::optional<Recordings::Object> object;
    /** Of a crash: the signal; 0: the process ended by itself, with `ending`, and said nothing. */
    int signal = 0;
    int ending = 0;
    /** Why a file cannot be used, or lived no further. */
    std::string reason;
};

/** What radioctl-replay said of `file`, and with what it ended; a signal is a negative number. */
Verdict readVerdict(const std::string& file, const std::string& said, int ending);

} // namespace Radio::Replaying

#endif
