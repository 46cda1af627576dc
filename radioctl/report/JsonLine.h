#ifndef RADIOCTL_REPORT_JSONLINE_H
#define RADIOCTL_REPORT_JSONLINE_H

#include "radio/files/Json.h"

#include <ostream>

namespace Radio {

/** Writes `event` as one line, at once. */
inline void writeJsonLine(std::ostream& out, const Json& event) {
    out << toText(event) << "\n" << std::flush;
}

} // namespace Radio

#endif
