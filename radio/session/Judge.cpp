#include "radio/session/Judge.h"

#include "ResultCode.h"
#include "radio/board/BoardNames.h"
#include "radio/board/PlatformWords.h"
#include "radio/session/PeekPoke.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <iterator>

namespace Radio {

namespace {

using Writes = std::vector<std::pair<std::string, std::int64_t>>;

std::string inKhz(unsigned long frequency) {
    return std::to_string(frequency) + " kHz";
}

std::string textOf(const Writes& writes) {
    std::vector<std::string> items;
    std::transform(writes.begin(), writes.end(), std::back_inserter(items),
                   [](const auto& write) { return write.first + "=" + std::to_string(write.second); });
    return writes.empty() ? "no writes" : joined(items, " ");
}

std::string textOf(const std::vector<std::string>& traces) {
    std::vector<std::string> items;
    std::transform(traces.begin(), traces.end(), std::back_inserter(items),
                   [](const std::string& text) { return "\"" + text + "\""; });
    return traces.empty() ? "no trace message" : joined(items, ", ");
}

bool anyContains(const std::vector<std::string>& traces, const std::string& text) {
    return std::any_of(traces.begin(), traces.end(),
                       [&text](const std::string& trace) { return trace.find(text) != std::string::npos; });
}

Judgement compareFrequencies(unsigned long expected, unsigned long found) {
    return {expected == found, inKhz(expected), inKhz(found)};
}

class Judge {
public:
    Judge(RadioUnit& radio, const LastCommand& last) : m_radio(radio), m_last(last) {}

    Judgement operator()(const ExpectDriver& expected) const {
        Standalone::Driver& driver = *m_radio.platform().drivers().find(expected.name);
        if (driver.backing() != nullptr) {
            const DriverAnswer answer = readDriver(driver);
            if (isFailure(answer.code)) {
                return {false, std::to_string(expected.value), "no answer, " + codeText(answer.code)};
            }
        }
        return {driver.value() == expected.value, std::to_string(expected.value),
                std::to_string(driver.value()) +
                    (driver.wasWritten() || driver.backing() != nullptr ? "" : " (never written)")};
    }

    Judgement operator()(const ExpectFrequency& expected) const {
        return compareFrequencies(expected.frequency,
                                  m_radio.frequency(expected.direction, expected.channel));
    }

    Judgement operator()(const ExpectRau& expected) const {
        const Standalone::RauService& rau = *m_radio.platform().raus().at(rauName(expected.channel));
        return compareFrequencies(
            expected.frequency, expected.direction == Direction::tx ? rau.txFrequency() : rau.rxFrequency());
    }

    Judgement operator()(const ExpectNotified& expected) const {
        std::vector<std::string> told;
        bool held = false;
        for (const Notification& notification : m_last.notifications) {
            if (notification.direction == expected.direction && notification.channel == expected.channel) {
                told.push_back(inKhz(notification.frequency));
                held = held || notification.frequency == expected.frequency;
            }
        }
        return {held, inKhz(expected.frequency), told.empty() ? "no notification" : joined(told, ", ")};
    }

    Judgement operator()(const ExpectResult& expected) const {
        const std::string found = m_last.code == 0 ? "ok" : codeText(m_last.code) + successNote();
        switch (expected.kind) {
        case ExpectResult::Kind::ok:
            return {isSuccess(m_last.code), "ok", found};
        case ExpectResult::Kind::failed:
            return {isFailure(m_last.code), "failed", found};
        case ExpectResult::Kind::code:
            break;
        }
        return {m_last.code == expected.code, codeText(expected.code), found};
    }

    Judgement operator()(const ExpectTrace& expected) const {
        return {anyContains(m_last.traces, expected.text), "a trace message with \"" + expected.text + "\"",
                textOf(m_last.traces)};
    }

    Judgement operator()(const ExpectNoTrace& expected) const {
        if (expected.text.empty()) {
            return {m_last.traces.empty(), "no trace message", textOf(m_last.traces)};
        }
        return {!anyContains(m_last.traces, expected.text), "no trace message with \"" + expected.text + "\"",
                textOf(m_last.traces)};
    }

    Judgement operator()(const ExpectWriteCount& expected) const {
        return {m_last.writes.size() == expected.count, counted(expected.count, "write"),
                counted(m_last.writes.size(), "write") +
                    (m_last.writes.empty() ? "" : ": " + textOf(m_last.writes))};
    }

    Judgement operator()(const ExpectLeakage& expected) const {
        const std::string limit = "less than " + levelText(expected.limit);
        if (m_radio.transmitter(expected.channel) == nullptr) {
            return {false, limit, "no model: the hardware is real"};
        }
        const LeakingTransmitter& transmitter = *m_radio.transmitter(expected.channel);
        if (transmitter.surroundings().carrier == 0) {
            return {false, limit, "no carrier"};
        }
        const double level = transmitter.level();
        return {level < expected.limit, limit, levelText(level)};
    }

    Judgement operator()(const ExpectWrites& expected) const {
        const bool held = m_last.writes == expected.writes;
        return {held, textOf(expected.writes), textOf(m_last.writes),
                held ? std::vector<AlignedWrite>() : alignWrites(expected.writes, m_last.writes)};
    }

private:
    std::string successNote() const { return isSuccess(m_last.code) ? " (a success)" : " (failed)"; }

    RadioUnit& m_radio;
    const LastCommand& m_last;
};

} // namespace

Judgement judge(const Expectation& expectation, RadioUnit& radio, const LastCommand& last) {
    return std::visit(Judge(radio, last), expectation);
}

} // namespace Radio
