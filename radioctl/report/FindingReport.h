#ifndef RADIOCTL_FINDINGREPORT_H
#define RADIOCTL_FINDINGREPORT_H

#include "BoardCheck.h"

#include <string>
#include <vector>

namespace Radioctl {

/**
 * Shows what was found in `file` on standard output, one line or JSON event each, and at the end how many
 * there are. Gives the exit code: warnings are good, errors are not.
 */
int showFindings(const std::string& file, const std::vector<Finding>& findings, bool json);

} // namespace Radioctl

#endif
