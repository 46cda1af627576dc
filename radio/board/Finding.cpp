#include "radio/board/Finding.h"

namespace Radio {

std::string_view toString(Severity severity) {
    return severity == Severity::error ? "error" : "warning";
}

bool isError(const Finding& finding) {
    return finding.severity == Severity::error;
}

} // namespace Radio
