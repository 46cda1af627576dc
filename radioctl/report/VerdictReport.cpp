#include "radioctl/report/VerdictReport.h"

#include "radio/text/Words.h"

namespace Radio {

void writeText(std::ostream& out, const Verdict& verdict) {
    for (const std::string& line : linesOf(verdict)) {
        out << harmless(line) << "\n";
    }
}

} // namespace Radio
