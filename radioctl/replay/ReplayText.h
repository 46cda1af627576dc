#ifndef RADIOCTL_REPLAY_REPLAYTEXT_H
#define RADIOCTL_REPLAY_REPLAYTEXT_H

#include "radioctl/replay/Verdict.h"

#include <string>
#include <vector>

namespace Radio::Replaying {

/** A difference in the words of "radioctl record show -v". */
struct Told {
    /** "operation 7, tune tx 1 7442000 kHz  (0.016162 s)"; empty: before the first one. */
    std::string operation;
    /** What came before it, the last lines. */
    std::vector<std::string> before;
    std::string recorded;
    std::string now;
};

/** Reads the recording once more for them. */
Told tell(const Verdict& verdict);

/** ", 33 not compared"; empty for none. */
std::string notComparedText(std::uint64_t calls);

/** "identical, 123 calls", or what else came of it, in one line. */
std::string summaryOf(const Verdict& verdict);

} // namespace Radio::Replaying

#endif
