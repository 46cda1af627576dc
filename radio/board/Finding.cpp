#include "radio/board/Finding.h"

namespace Radio {

std::string_view toString(Severity severity) {
    return severity == Severity::error ? "error" : "warning";
}

} // namespace Radio
