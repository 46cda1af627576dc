/**
 * The one way in which the library writes a trace message.
 *
 *     FH_TRACE(m_trace, TraceCode::error, "Could not get the variable %s from the database", name);
 *
 * The numeric level is mapped first and compared with the threshold of the trace object. Only a message that
 * is wanted is formatted, and only for it are the arguments computed. The text is cut to what fits 200 bytes
 * with the closing zero.
 */
#ifndef FREQUENCYHANDLER_PRIVATE_TRACE_H
#define FREQUENCYHANDLER_PRIVATE_TRACE_H

#include "OrbiTrace.h"

/** The numeric levels of the library's messages. Some failures use the failing code itself as the level. */
namespace RL::FrequencyHandler::TraceCode {
constexpr int notice = 0x100;
constexpr int information = 0x800;
constexpr int error = 0x8000;
constexpr int moduleRegistrationError = 0x8005;
} // namespace RL::FrequencyHandler::TraceCode

namespace RL::FrequencyHandler::Trace {

/** What every trace object of the library is built with. */
constexpr const char* objectName = "QVX.FH";
constexpr OrbiTraceLevel initialLevel{3};

/** Formats a message that is wanted and hands it to the trace object. One that cannot be traced is lost. */
__attribute__((format(printf, 5, 6))) void write(OrbiTrace& trace, OrbiTraceLevel level,
                                                 const char* sourceFile, int line, const char* format,
                                                 ...) noexcept;

} // namespace RL::FrequencyHandler::Trace

#define FH_TRACE(trace, code, ...)                                                                           \
    do {                                                                                                     \
        const OrbiTraceLevel fhTraceLevel = CZulTraceHandler_DmLevel2GtLevel(static_cast<int>(code));        \
        if ((trace).getLevel() >= fhTraceLevel) {                                                            \
            ::RL::FrequencyHandler::Trace::write((trace), fhTraceLevel, __FILE__, __LINE__, __VA_ARGS__);    \
        }                                                                                                    \
    } while (false)

#endif
