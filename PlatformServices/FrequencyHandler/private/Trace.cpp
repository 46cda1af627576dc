#include "Trace.h"

#include <cxxabi.h>

#include <cstdarg>
#include <cstdio>
#include <ostream>

namespace RL::FrequencyHandler::Trace {

void write(OrbiTrace& trace, OrbiTraceLevel level, const char* sourceFile, int line, const char* format,
           ...) {
    Text text{};
    va_list arguments;
    va_start(arguments, format);
    static_cast<void>(std::vsnprintf(text.data(), text.size(), format, arguments));
    va_end(arguments);

    try {
        trace.beginLogMsg(level, sourceFile, line) << text.data() << std::endl;
        trace.endLogMsg();
    } catch (...) {
        lose();
    }
}

bool isWanted(const OrbiTrace& trace, int code, OrbiTraceLevel& level) {
    return isWantedHere(trace, code, level);
}

void lose() {
    try {
        throw;
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) { // NOLINT(bugprone-empty-catch): there is nobody left to tell
    }
}

} // namespace RL::FrequencyHandler::Trace
