#ifndef RADIOCTL_REPORT_VERDICTREPORT_H
#define RADIOCTL_REPORT_VERDICTREPORT_H

#include "radio/board/Verdict.h"
#include "radio/files/Json.h"

#include <ostream>

namespace Radio {

/** The lines of a verdict. */
void writeText(std::ostream& out, const Verdict& verdict);

/** "pass", "fail" or "none". */
const char* verdictWord(const Verdict& verdict);

/** "pass", "fail" or null, as the member "verdict" of an event. */
Json verdictJson(const Verdict& verdict);

/** Each limit and what came of it, as the member "limits" of an event. */
Json limitsJson(const Verdict& verdict);

} // namespace Radio

#endif
