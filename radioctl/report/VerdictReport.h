#ifndef RADIOCTL_REPORT_VERDICTREPORT_H
#define RADIOCTL_REPORT_VERDICTREPORT_H

#include "radio/board/Verdict.h"

#include <ostream>

namespace Radio {

/** The lines of a verdict. */
void writeText(std::ostream& out, const Verdict& verdict);

} // namespace Radio

#endif
