#include "service/radio/ServedRadio.h"

#include "ResultCode.h"
#include "radio/files/InputError.h"
#include "radio/session/HardwareWrite.h"

#include <algorithm>

namespace Radio::Service {

/** Hands everything on, and keeps what belongs to the action that is being carried out. */
class ServedRadio::Witness final : public SessionListener {
public:
    Witness(SessionListener& next, std::map<unsigned long, Standalone::PhaseReport>& phases,
            std::map<Failure, std::uint64_t>& failures)
        : m_next(next),
          m_phases(phases),
          m_failures(failures) {}

    /** Where what happens belongs to from now on; null: nowhere. */
    void setResult(Result* result) { m_result = result; } // cppcheck-suppress danglingLifetime

    void phaseStarted(unsigned long phase) override { m_next.phaseStarted(phase); }
    void phaseFinished(const Standalone::PhaseReport& report) override {
        m_phases[report.phase] = report;
        m_next.phaseFinished(report);
    }
    void booted(bool succeeded) override { m_next.booted(succeeded); }
    void commandStarted(const ScriptLine& line) override { m_next.commandStarted(line); }
    void commandFinished(std::int32_t code, const std::string& note) override {
        if (m_result != nullptr) {
            m_result->code = code;
            m_result->note = note;
        }
        m_next.commandFinished(code, note);
    }
    void called(const Standalone::Call& call) override {
        if (m_result != nullptr && isWrite(call) && isSuccess(call.code)) {
            m_result->writes.emplace_back(destination(call), call.value);
        }
        const bool isOfHardware = isWrite(call) || call.operation == Standalone::Operation::driverRead;
        if (isOfHardware && isFailure(call.code)) {
            count(call);
            if (m_result != nullptr) {
                m_result->failures.push_back(call);
            }
        }
        m_next.called(call);
    }
    void traced(const Standalone::TraceMessage& message) override {
        if (m_result != nullptr) {
            m_result->traces.push_back(message);
        }
        m_next.traced(message);
    }
    void notified(const Notification& notification) override {
        if (m_result != nullptr) {
            m_result->notifications.push_back(notification);
        }
        m_next.notified(notification);
    }
    void valueRead(const Reading& reading) override {
        if (m_result != nullptr) {
            m_result->value = reading.value;
        }
        m_next.valueRead(reading);
    }
    void warned(const std::string& text) override {
        if (m_result != nullptr) {
            m_result->warnings.push_back(text);
        }
        m_next.warned(text);
    }
    void judged(const ScriptLine& line, const Judgement& judgement) override {
        m_next.judged(line, judgement);
    }
    void listed(const Listing& listing) override { m_next.listed(listing); }
    void helpWanted(const std::string& about) override { m_next.helpWanted(about); }

private:
    void count(const Standalone::Call& call) {
        constexpr std::size_t most = 1000;
        const Failure failure{call.operation, call.object, call.code};
        const bool isNew = m_failures.count(failure) == 0;
        ++m_failures[isNew && m_failures.size() >= most ? Failure{} : failure];
    }

    SessionListener& m_next;
    std::map<unsigned long, Standalone::PhaseReport>& m_phases;
    std::map<Failure, std::uint64_t>& m_failures;
    Result* m_result = nullptr;
};

ServedRadio::ServedRadio(const Board& board, SessionListener& listener, Sensed sensed,
                         OrbiTraceLevel shownTrace, Devices::Hardware* hardware, StateFile& state)
    : m_board(board),
      m_sensed(std::move(sensed)),
      m_shownTrace(shownTrace),
      m_hardware(hardware),
      m_state(state),
      m_check(board),
      m_guard(board, hardware != nullptr && board.hardware.description.sensor.has_value()),
      m_witness(std::make_unique<Witness>(listener, m_phases, m_failures)) {
    begin();
}

ServedRadio::~ServedRadio() = default;

std::string ServedRadio::whyNot(const Action& action) {
    if (m_hardware != nullptr) {
        m_hardware->setForced(isForced(action));
    }
    std::string reason = m_guard.whyNot(action, platform());
    m_isRefused = !reason.empty() && !isForced(action);
    return reason;
}

void ServedRadio::begin() {
    m_session = std::make_unique<Session>(m_board, *m_witness, m_shownTrace, m_hardware);
    m_session->setGuard([this](const Action& action) { return whyNot(action); });
    m_session->setRefusing(true);
}

bool ServedRadio::startUp() {
    m_phases.clear();
    m_session->boot();
    return std::all_of(m_phases.begin(), m_phases.end(),
                       [](const auto& phase) { return phase.second.succeeded(); });
}

bool ServedRadio::boot(const Carriers& carriers) {
    if (!startUp()) {
        return false;
    }
    if (m_hardware != nullptr) {
        sense(m_hardware->readSensor());
        m_hardware->startSensor();
    }
    takeUp(carriers);
    return true;
}

/** Carriers come one after the other; those that are kept are all of them, before and after. */
void ServedRadio::takeUp(const Carriers& carriers) {
    m_isTakingUp = true;
    std::optional<Result> last;
    for (const auto& [channel, khz] : carriers) {
        const auto& [direction, number] = channel;
        Result result = carryOut(Tune{direction, number, khz, false},
                                 "tune " + std::string(toString(direction)) + " " + std::to_string(number) +
                                     " " + std::to_string(khz));
        if (result.isRefused) {
            m_refused[channel] = khz;
            m_witness->warned(std::string(toString(direction)) + " " + std::to_string(number) +
                              " does not come back at " + std::to_string(khz) +
                              " kHz, which is refused; it is kept until there is another carrier");
        } else {
            last = std::move(result);
        }
    }
    m_isTakingUp = false;
    if (last) {
        keepCarriers(*last);
    }
}

bool ServedRadio::lend(const std::function<void()>& work, const std::function<bool()>& isToGoOn) {
    const Carriers before = carriers();
    const std::optional<int> degrees = platform().temperature().temperature();
    m_faults = platform().calls().faults();
    std::map<std::string, std::vector<std::int32_t>> values;
    for (const auto& [name, variable] : platform().variables().variables()) {
        values[name] = variable->values();
    }
    m_session.reset();
    work();
    if (m_hardware != nullptr) {
        m_hardware->setForced(false);
    }
    begin();
    for (const auto& [name, content] : values) {
        platform().variables().find(name)->set(content);
    }
    if (!startUp()) {
        return false;
    }
    const std::optional<int> sensed = m_hardware != nullptr ? m_hardware->readSensor() : std::nullopt;
    if (sensed) {
        sense(sensed);
    } else if (degrees) {
        m_session->sense(*degrees);
    }
    m_livedUntil = std::chrono::steady_clock::now();
    if (isToGoOn()) {
        takeUp(before);
        std::for_each(m_faults.begin(), m_faults.end(),
                      [this](const Standalone::Fault& fault) { platform().calls().inject(fault); });
    }
    return true;
}

void ServedRadio::show(RadioUnit* radio) {
    if (radio != nullptr) {
        m_shown = radio;
        std::for_each(m_faults.begin(), m_faults.end(),
                      [this](const Standalone::Fault& fault) { platform().calls().inject(fault); });
    } else if (m_shown != nullptr) {
        m_faults = platform().calls().faults(); // some of them have been used up
        m_shown = nullptr;
    }
}

void ServedRadio::idle() {
    const auto now = std::chrono::steady_clock::now();
    const auto passed = std::chrono::duration_cast<std::chrono::microseconds>(now - m_livedUntil);
    m_livedUntil = now;
    if (m_session == nullptr) {
        return;
    }
    if (m_hardware != nullptr) {
        sense(m_hardware->poll());
        return;
    }
    constexpr std::chrono::microseconds most = std::chrono::minutes(1);
    radio().clock().advance(static_cast<std::uint32_t>(std::min(passed, most).count()));
}

void ServedRadio::sense(std::optional<int> degrees) {
    if (degrees && degrees != platform().temperature().temperature()) {
        m_hardware->setForced(false);
        const std::size_t observers = m_session->sense(*degrees);
        m_sensed(*degrees, observers);
    }
}

Result ServedRadio::carryOut(const Action& action, const std::string& text) {
    m_check.check(action);
    Result result;
    m_isRefused = false;
    m_witness->setResult(&result);
    m_session->execute({{}, text, action});
    m_witness->setResult(nullptr);
    result.isRefused = m_isRefused;
    if (const auto* const tune = std::get_if<Tune>(&action)) {
        if (!result.isRefused && !m_isTakingUp) {
            keepCarriers(result);
        }
        m_tuned[tune->channel] = result;
    }
    return result;
}

Carriers ServedRadio::carriers() {
    Carriers carriers;
    for (const ChannelDescription& channel : m_board.channels) {
        for (const Direction direction : {Direction::tx, Direction::rx}) {
            const auto khz = static_cast<std::uint32_t>(radio().frequency(direction, channel.number));
            if (khz != 0) {
                carriers[{direction, channel.number}] = khz;
            }
        }
    }
    return carriers;
}

/** What cannot be kept is no reason to say that the carrier was not set. */
void ServedRadio::keepCarriers(Result& result) {
    try {
        Carriers kept = carriers();
        kept.insert(m_refused.begin(), m_refused.end());
        m_state.keep(kept);
    } catch (const InputError& error) {
        const std::string warning = std::string("the carriers are not kept: ") + error.what();
        m_witness->warned(warning);
        result.warnings.push_back(warning);
    }
}

const Result* ServedRadio::lastTuned(int channel) const {
    const auto tuned = m_tuned.find(channel);
    return tuned == m_tuned.end() ? nullptr : &tuned->second;
}

} // namespace Radio::Service
