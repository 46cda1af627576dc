#include "RadioTest.h"

using Standalone::Call;
using Standalone::Operation;

namespace {

bool isWrite(Operation operation) {
    switch (operation) {
    case Operation::driverWrite:
    case Operation::driverWriteBuffer:
    case Operation::rauTx:
    case Operation::rauRx:
        return true;
    default:
        return false;
    }
}

std::string levelName(OrbiTraceLevel level) {
    switch (static_cast<int>(level)) {
    case 1:
        return "error";
    case 2:
        return "warning";
    case 3:
        return "notice";
    case 4:
        return "information";
    default:
        return std::to_string(level);
    }
}

} // namespace

RadioTest::Lines RadioTest::writes() const {
    Lines lines;
    for (const Call& call : platform.calls().journal()) {
        if (isWrite(call.operation)) {
            lines.push_back(call.object + "=" + std::to_string(call.value));
        }
    }
    return lines;
}

RadioTest::Lines RadioTest::calls() const {
    Lines lines;
    for (const Call& call : platform.calls().journal()) {
        lines.push_back(std::string(Standalone::toString(call.operation)) + " " + call.object);
    }
    return lines;
}

RadioTest::Lines RadioTest::traces() const {
    Lines lines;
    for (const Standalone::TraceMessage& message : platform.trace().messages()) {
        lines.push_back(levelName(message.level) + ": " + message.text);
    }
    return lines;
}

RadioTest::Lines RadioTest::complaints() const {
    Lines lines;
    for (const std::string& line : traces()) {
        if (line.rfind("information: ", 0) != 0) {
            lines.push_back(line);
        }
    }
    return lines;
}

void RadioTest::forget() {
    platform.calls().clearJournal();
    platform.trace().clear();
}

void RadioTest::fail(Operation operation, const std::string& object, std::int32_t code) {
    platform.calls().inject({operation, object, code, {}, {}});
}

/**
 * What LeakSanitizer passes over in every test program: a C observer's wrapper lives as long as the process
 * by design, and nothing points to it any more once its handler is gone.
 */
// The name is the sanitizer's. NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" const char* __lsan_default_suppressions() {
    return "leak:IFrequencyHandler::registerObserver\n";
}
