#ifndef RADIOCTL_PLAN_EXPLANATIONREPORT_H
#define RADIOCTL_PLAN_EXPLANATIONREPORT_H

#include "radio/plan/Explanation.h"

#include <ostream>

namespace Radio::Plan {

/** Tells a person how the carrier came about. */
void writeText(std::ostream& out, const Board& board, const Explanation& explanation);

/** The same as events, one JSON object a line. */
void writeJson(std::ostream& out, const Board& board, const Explanation& explanation);

} // namespace Radio::Plan

#endif
