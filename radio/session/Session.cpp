#include "radio/session/Session.h"

#include "ResultCode.h"
#include "radio/board/BoardDemand.h"
#include "radio/board/HardwareRanges.h"
#include "radio/session/HardwareWrite.h"
#include "radio/session/Judge.h"
#include "radio/session/Listings.h"
#include "radio/session/PeekPoke.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <utility>

namespace Radio {

namespace {

constexpr std::size_t mostFaults = 1000;

} // namespace

Session::Session(const Board& board, SessionListener& listener, OrbiTraceLevel shownTrace,
                 Devices::Hardware* hardware)
    : m_board(board),
      m_listener(listener),
      m_shownTrace(shownTrace),
      m_isOnHardware(hardware != nullptr),
      m_expectedTrace(Standalone::TraceLevel::notice),
      m_failures(board),
      m_radio(board, events(), hardware) {
    m_radio.platform().calls().setRecording(false);
    m_radio.platform().trace().setRecording(false);
    applyTraceLevels();
}

RadioEvents Session::events() {
    RadioEvents events;
    events.called = [this](const Standalone::Call& call) {
        if (isWrite(call) && isSuccess(call.code)) {
            m_last.writes.emplace_back(destination(call), call.value);
            warnOfWrite(m_last.writes.back());
        }
        m_failures.note(call);
        if (m_heldCalls != nullptr) {
            m_heldCalls->push_back(call);
        } else {
            m_listener.called(call);
        }
    };
    events.traced = [this](const Standalone::TraceMessage& message) {
        m_failures.note(message);
        if (message.level <= m_expectedTrace) {
            m_last.traces.push_back(message.text);
        }
        if (message.level <= m_shownTrace) {
            m_listener.traced(message);
        }
    };
    events.notified = [this](const Notification& notification) {
        m_last.notifications.push_back(notification);
        m_listener.notified(notification);
    };
    return events;
}

void Session::applyTraceLevels() {
    // The last failure of a channel is known also where nobody wants to see it.
    m_radio.platform().trace().setThreshold(
        std::max({m_shownTrace, m_expectedTrace, Standalone::TraceLevel::error}));
}

void Session::boot() {
    m_summary.booted = runPhase(Standalone::phaseModuleInit) &&
                       runPhase(Standalone::phaseStorageObjectsRetrieved) &&
                       runPhase(Standalone::phasePostFrameformatLoad);
    m_last.code = m_summary.booted ? ResultOk : ResultFailed;
    m_failureOpen = !m_summary.booted;
    m_listener.booted(m_summary.booted);
}

bool Session::runPhase(Standalone::Phase phase) {
    m_listener.phaseStarted(phase);
    const Standalone::PhaseReport report = m_radio.runPhase(phase);
    m_listener.phaseFinished(report);
    return report.succeeded();
}

void Session::execute(const ScriptLine& line) {
    if (const auto* const action = std::get_if<Action>(&line.command)) {
        idle();
        act(line, *action);
    } else if (const auto* const expectation = std::get_if<Expectation>(&line.command)) {
        judge(line, *expectation);
    }
}

void Session::act(const ScriptLine& line, const Action& action) {
    const bool isForRadio = actsOnRadio(action);
    if (isForRadio) {
        beginActing();
        ++m_summary.commands;
    }
    m_place = line.place;
    m_listener.commandStarted(line);
    const Outcome outcome =
        refuses(action) ? refusal()
                        : std::visit([this](const auto& command) { return carryOut(command); }, action);
    if (isForRadio) {
        m_last.code = outcome.code;
        m_failureOpen = isFailure(outcome.code);
    }
    m_listener.commandFinished(outcome.code, outcome.note);
}

/** Tells what the guard has to say; true when the action is left undone. */
bool Session::refuses(const Action& action) {
    m_warning = m_guard ? m_guard(action) : std::string();
    if (!m_warning.empty()) {
        m_listener.warned(m_warning);
    }
    return !m_warning.empty() && m_isRefusing && !isForced(action);
}

/** What hardware with the board's ranges would have refused; once where the guard has said it. */
void Session::warnOfWrite(const std::pair<std::string, std::int64_t>& write) {
    if (m_isOnHardware) {
        return;
    }
    const std::string reason = whyNotWrite(m_board, write.first, write.second);
    if (!reason.empty() && m_warning.find(reason) == std::string::npos) {
        m_listener.warned(reason);
    }
}

Session::Outcome Session::refusal() {
    return {ResultFailed, "refused; \"force\" at the end of the line does it all the same"};
}

std::size_t Session::sense(int degrees) {
    LastCommand last;
    std::swap(last, m_last);
    const std::size_t told = m_radio.platform().temperature().set(degrees);
    std::swap(last, m_last);
    return told;
}

void Session::beginActing() {
    settleUnexpectedFailure();
    m_lastWasBoot = false;
    m_last = {};
}

/** A failure that no expectation has asked for by now was not expected. */
void Session::settleUnexpectedFailure() {
    if (m_failureOpen && m_lastWasBoot) {
        m_summary.bootAccepted = false;
    } else if (m_failureOpen) {
        ++m_summary.unexpectedFailures;
    }
    m_failureOpen = false;
}

void Session::judge(const ScriptLine& line, const Expectation& expectation) {
    if (std::holds_alternative<ExpectResult>(expectation)) {
        m_failureOpen = false;
    }
    const Judgement judgement = Radio::judge(expectation, m_radio, m_last);
    ++(judgement.held ? m_summary.held : m_summary.failed);
    m_listener.judged(line, judgement);
}

Summary Session::finish() {
    settleUnexpectedFailure();
    return m_summary;
}

Session::Outcome Session::carryOut(const Tune& command) {
    return {m_radio.tune(command.direction, command.channel, command.frequency), ""};
}

Session::Outcome Session::carryOut(const SetTemperature& command) {
    return {ResultOk, counted(m_radio.platform().temperature().set(command.degrees), "observer") + " told"};
}

Session::Outcome Session::carryOut(const SetVariable& command) {
    m_radio.platform().variables().find(command.name)->set(command.values);
    const std::string_view phase = phaseThatCopies(command.name, m_board);
    return {ResultOk, phase.empty() ? "" : "taken over by the next phase " + std::string(phase)};
}

Session::Outcome Session::carryOut(const RunPhase& command) {
    return {runPhase(command.phase) ? ResultOk : ResultFailed, ""};
}

Session::Outcome Session::carryOut(const InjectFault& command) {
    Standalone::Calls& calls = m_radio.platform().calls();
    // Every call of the radio looks through them.
    if (calls.faults().size() >= mostFaults) {
        return {ResultFailed, "expected at most " + std::to_string(mostFaults) +
                                  " faults at a time; \"clear\" takes them back"};
    }
    calls.inject(command.fault);
    return {};
}

Session::Outcome Session::carryOut(const ClearFaults& command) {
    Standalone::Calls& calls = m_radio.platform().calls();
    const std::size_t before = calls.faults().size();
    if (command.operation.has_value()) {
        calls.clear(*command.operation, command.object);
    } else {
        calls.clearAll();
    }
    return {ResultOk, counted(before - calls.faults().size(), "fault") + " cleared"};
}

Session::Outcome Session::carryOut(const SetPresence& command) {
    m_radio.setPresence(command.name, command.presence);
    return {};
}

Session::Outcome Session::carryOut(const Observe& command) {
    return {m_radio.observeThroughC(command.direction, command.channel), ""};
}

Session::Outcome Session::carryOut(const SetTrace& command) {
    m_shownTrace = command.level;
    m_expectedTrace = command.level;
    applyTraceLevels();
    return {};
}

Session::Outcome Session::carryOut(const Show& command) {
    m_listener.listed(makeListing(command, m_radio, m_failures));
    return {};
}

Session::Outcome Session::carryOut(const ReadDriver& command) {
    const DriverAnswer answer = readDriver(*m_radio.platform().drivers().find(command.name));
    if (isSuccess(answer.code)) {
        m_listener.valueRead({command.name, answer.value});
    }
    return {answer.code, answer.note};
}

Session::Outcome Session::carryOut(const WriteDriver& command) {
    const DriverAnswer answer = writeDriver(*m_radio.platform().drivers().find(command.name), command.value);
    return {answer.code, answer.note};
}

Session::Outcome Session::carryOut(const Help& command) {
    m_listener.helpWanted(command.about);
    return {};
}

Session::Outcome Session::carryOut(const Quit& /*command*/) {
    m_over = true;
    return {};
}

} // namespace Radio
