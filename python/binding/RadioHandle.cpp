#include "python/binding/RadioHandle.h"

#include "ResultCode.h"
#include "python/binding/BoardHandle.h"
#include "python/binding/Errors.h"
#include "radio/language/CommandParser.h"
#include "radio/session/HardwareWrite.h"
#include "radio/text/WordError.h"

#include <algorithm>

namespace Radio::Python {

RadioHandle::RadioHandle(std::shared_ptr<const Board> board, bool isHardware, OrbiTraceLevel trace,
                         bool calls)
    : m_board(std::move(board)),
      m_tellsCalls(calls),
      m_check(*m_board),
      m_stage(named("a radio", *m_board)),
      m_guard(*m_board, isHardware && m_board->hardware.description.sensor.has_value()) {
    unlocked([&] {
        if (isHardware) {
            m_bench = std::make_unique<Bench>(*m_board, *this, folderOfMarks());
            m_bench->begin();
        }
        m_session = std::make_unique<Session>(*m_board, *this, trace, hardware());
        m_session->setGuard([this](const Action& action) { return whyNot(action); });
        m_session->setRefusing(isHardware);
        m_session->setGoOn([this] { return m_patience == nullptr || m_patience->goOn(); });
        m_session->setIdle([this] { idle(); });
        begin();
    });
    m_boot = std::move(m_report);
}

RadioHandle::~RadioHandle() {
    try {
        static_cast<void>(close());
    } catch (const std::exception&) { // nobody is left to be told
    }
}

/** What Drive does for radioctl: the start-up, and the temperature that the radio really has. */
void RadioHandle::begin() {
    m_session->boot();
    m_report.code = m_isUp ? ResultOk : ResultFailed;
    if (m_bench) {
        sense(m_bench->hardware().readSensor());
        m_bench->hardware().startSensor();
    }
}

void RadioHandle::idle() {
    if (m_bench) {
        sense(m_bench->hardware().poll());
    }
}

void RadioHandle::sense(std::optional<int> degrees) {
    if (degrees && degrees != m_session->radio().platform().temperature().temperature()) {
        m_bench->hardware().setForced(false);
        const std::size_t told = m_session->sense(*degrees);
        m_report.events.emplace_back(Sensed{*degrees, told});
    }
}

std::string RadioHandle::whyNot(const Action& action) {
    if (m_bench) {
        m_bench->hardware().setForced(isForced(action));
    }
    return m_guard.whyNot(action, m_session->radio().platform());
}

void RadioHandle::commandFinished(std::int32_t code, const std::string& note) {
    // Of a repetition, which ends last, the last turn's words stay.
    m_report.code = code;
    m_report.note = note;
}

void RadioHandle::called(const Standalone::Call& call) {
    if (m_tellsCalls || isWrite(call)) {
        m_report.events.emplace_back(call);
    }
}

std::unique_lock<std::mutex> RadioHandle::take() {
    std::unique_lock<std::mutex> use(m_use, std::try_to_lock);
    if (!use.owns_lock()) {
        throw Busy(named("the radio", *m_board) +
                   " is in the middle of something, expected that to be done first");
    }
    if (isClosed()) {
        throw Closed(named("the radio", *m_board) + " is closed");
    }
    return use;
}

Report RadioHandle::execute(std::vector<std::string> words) {
    if (words.empty()) {
        throw WordError("no words, expected a command");
    }
    const Command command = parseWords(std::move(words));
    if (std::holds_alternative<Include>(command)) {
        throw WordError("\"include\" stands in scripts, expected a command");
    }
    m_check.check(command);
    return carryOut(command);
}

Report RadioHandle::tune(Direction direction, int channel, std::uint32_t carrier, bool isForced) {
    const Command command = Action{Tune{direction, channel, carrier, isForced}};
    m_check.check(command);
    return carryOut(command);
}

Report RadioHandle::carryOut(const Command& command) {
    const std::unique_lock<std::mutex> use = take();
    Patience patience;
    m_report = {};
    {
        const py::gil_scoped_release release;
        m_patience = &patience;
        m_session->execute({{}, {}, command});
        m_patience = nullptr;
    }
    m_report.raised = patience.raised();
    return std::exchange(m_report, {});
}

std::vector<Devices::ExitWrite> RadioHandle::close() {
    std::vector<Devices::ExitWrite> writes;
    if (isClosed()) {
        return writes;
    }
    const std::unique_lock<std::mutex> use = take();
    m_isClosed = true;
    const py::gil_scoped_release release;
    if (m_bench) {
        writes = m_bench->leave();
    }
    m_session.reset();
    m_bench.reset();
    m_stage.reset();
    return writes;
}

} // namespace Radio::Python
