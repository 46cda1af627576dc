#ifndef RADIOCTL_TABLES_WHYREPORT_H
#define RADIOCTL_TABLES_WHYREPORT_H

#include "radio/tables/Why.h"

#include <ostream>

namespace Radio::Tables {

/** Tells a person how the corrections came about. */
void writeText(std::ostream& out, const Board& board, const Reason& reason);

/** The same as events, one JSON object a line. */
void writeJson(std::ostream& out, const Board& board, const Reason& reason);

} // namespace Radio::Tables

#endif
