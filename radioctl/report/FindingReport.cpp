#include "radioctl/report/FindingReport.h"

#include "radio/text/Words.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/report/JsonLine.h"

#include <algorithm>
#include <cstddef>
#include <iostream>

namespace Radio {

namespace {

void showFinding(const Finding& finding, bool json) {
    if (json) {
        writeJsonLine(std::cout, {{"event", "finding"},
                                  {"severity", toString(finding.severity)},
                                  {"file", finding.place.file},
                                  {"line", finding.place.line},
                                  {"text", finding.text}});
    } else {
        std::cout << toString(finding.place) << ": " << toString(finding.severity) << ": "
                  << harmless(finding.text) << "\n";
    }
}

void showVerdict(const std::string& file, std::size_t errors, std::size_t warnings, bool json) {
    if (json) {
        writeJsonLine(std::cout,
                      {{"event", "checked"}, {"file", file}, {"errors", errors}, {"warnings", warnings}});
    } else if (errors + warnings == 0) {
        std::cout << harmless(file) << ": good\n";
    } else {
        std::cout << harmless(file) << ": " << counted(errors, "error") << ", "
                  << counted(warnings, "warning") << "\n";
    }
}

} // namespace

int showFindings(const std::string& file, const std::vector<Finding>& findings, bool json, bool strict) {
    const auto errors = static_cast<std::size_t>(std::count_if(findings.begin(), findings.end(), isError));
    for (const Finding& finding : findings) {
        showFinding(finding, json);
    }
    showVerdict(file, errors, findings.size() - errors, json);
    return (strict ? findings.size() : errors) == 0 ? ExitCode::good : ExitCode::expectationFailed;
}

} // namespace Radio
