#ifndef RADIOCTL_RECORD_COMPARISONREPORT_H
#define RADIOCTL_RECORD_COMPARISONREPORT_H

#include "radio/recording/Comparison.h"

#include <cstdint>
#include <ostream>
#include <string>

namespace Radio::Recordings {

/** What "radioctl record diff" is told of the two files, and how much of it is wanted. */
struct ComparisonStyle {
    std::string before;
    std::string after;
    /** Of operations, and of calls in each of them, only so many that differ. */
    std::uint64_t limit = 100;
    /** The calls of operations that one of them has, too. */
    bool verbose = false;
};

/** Shows what differs as lines for people: what only the first has behind "-", the second behind "+". */
void writeText(std::ostream& out, const Comparison& comparison, const ComparisonStyle& style);
/** The same as events, one JSON object a line. */
void writeJson(std::ostream& out, const Comparison& comparison, const ComparisonStyle& style);

} // namespace Radio::Recordings

#endif
