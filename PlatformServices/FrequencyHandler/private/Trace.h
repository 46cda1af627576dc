/**
 * The one way in which the library writes a trace message.
 *
 *     FH_TRACE(m_trace, TraceCode::error, "Could not get the variable %s from the database", name);
 *
 * The numeric level is mapped first and compared with the threshold of the trace object. Only a message that
 * is wanted is formatted, and only for it are the arguments computed. The text is cut to what fits 200 bytes
 * with the closing zero. A message that cannot be traced is lost, and nothing else changes for that.
 */
#ifndef FREQUENCYHANDLER_PRIVATE_TRACE_H
#define FREQUENCYHANDLER_PRIVATE_TRACE_H

#include "OrbiTrace.h"

#include <array>

/** The numeric levels of the library's messages. Some failures use the failing code itself as the level. */
namespace RL::FrequencyHandler::TraceCode {
constexpr int notice = 0x100;
constexpr struct Information {
    constexpr operator int() const { return 0x800; }
} information;
constexpr int error = 0x8000;
constexpr int moduleRegistrationError = 0x8005;
} // namespace RL::FrequencyHandler::TraceCode

namespace RL::FrequencyHandler::Trace {

/** What every trace object of the library is built with. */
constexpr const char* objectName = "QVX.FH";
constexpr OrbiTraceLevel initialLevel{3};

/** Room for the text of a message and its closing zero; what does not fit is cut off. */
using Text = std::array<char, 200>;

/** Formats a message that is wanted and hands it to the trace object. */
[[gnu::cold, gnu::format(printf, 5, 6)]] void
write(OrbiTrace& trace, OrbiTraceLevel level, const char* sourceFile, int line, const char* format, ...);

/** In a handler for whatever the trace has thrown: the message is lost. Lets the unwinding of a cancelled
 * thread pass. */
[[gnu::cold]] void lose();

/** Whether a message of the numeric level `code` is wanted, which is mapped to `level`. */
[[gnu::always_inline]] inline bool isWantedHere(const OrbiTrace& trace, int code, OrbiTraceLevel& level) {
    try {
        level = CZulTraceHandler_DmLevel2GtLevel(code);
    } catch (...) {
        lose();
        return false;
    }
    return trace.getLevel() >= level;
}

/** The same, out of the way of what goes well. */
[[gnu::cold]] bool isWanted(const OrbiTrace& trace, int code, OrbiTraceLevel& level);

/** The same for what is told in the course of every operation: where it stands, without a call. */
inline bool isWanted(const OrbiTrace& trace, TraceCode::Information code, OrbiTraceLevel& level) {
    return isWantedHere(trace, code, level);
}

} // namespace RL::FrequencyHandler::Trace

#define FH_TRACE(trace, code, ...)                                                                           \
    do {                                                                                                     \
        OrbiTraceLevel fhTraceLevel;                                                                         \
        if (::RL::FrequencyHandler::Trace::isWanted((trace), (code), fhTraceLevel)) {                        \
            ::RL::FrequencyHandler::Trace::write((trace), fhTraceLevel, __FILE__, __LINE__, __VA_ARGS__);    \
        }                                                                                                    \
    } while (false)

#endif
