#ifndef RADIOCTL_REPORT_JSONLINE_H
#define RADIOCTL_REPORT_JSONLINE_H

#include "radio/files/Json.h"

#include <ostream>

namespace Radio {

/**
 * What events promise to those who read them. Within a number, events and members are only added: the number
 * goes up when one goes away, is called otherwise or means something else.
 */
constexpr int jsonSchema = 1;

/** Writes `event`, an object with members, as one line, at once; in front of its own, it gets the member
 * "schema". */
inline void writeJsonLine(std::ostream& out, const Json& event) {
    out << "{\"schema\":" << jsonSchema << "," << toText(event).substr(1) << "\n" << std::flush;
}

} // namespace Radio

#endif
