#ifndef RADIOCTL_TABLES_DIFFREPORT_H
#define RADIOCTL_TABLES_DIFFREPORT_H

#include "radio/tables/Diff.h"

#include <ostream>
#include <string>

namespace Radio::Tables {

/** Tells a person what changed: a summary for each channel, and the nodes that moved, ten of them or `all`.
 */
void writeText(std::ostream& out, const Difference& difference, const std::string& before,
               const std::string& after, bool all);

/** The same as events, one JSON object a line, with every node that moved. */
void writeJson(std::ostream& out, const Difference& difference, const std::string& before,
               const std::string& after);

} // namespace Radio::Tables

#endif
