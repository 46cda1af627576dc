#include "Trace.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <exception>
#include <ostream>

namespace RL::FrequencyHandler::Trace {

void write(OrbiTrace& trace, OrbiTraceLevel level, const char* sourceFile, int line, const char* format,
           ...) noexcept {
    std::array<char, 200> text{};
    va_list arguments;
    va_start(arguments, format);
    static_cast<void>(std::vsnprintf(text.data(), text.size(), format, arguments));
    va_end(arguments);

    try {
        trace.beginLogMsg(level, sourceFile, line) << text.data() << std::endl;
        trace.endLogMsg();
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): there is nobody left to tell
    }
}

} // namespace RL::FrequencyHandler::Trace
