#include "python/binding/RadioHandle.h"

#include "ResultCode.h"
#include "python/binding/BoardHandle.h"
#include "python/binding/Errors.h"
#include "radio/language/CommandParser.h"
#include "radio/session/HardwareWrite.h"
#include "radio/text/WordError.h"

#include <chrono>

namespace Radio::Python {

namespace {

/** The radio of the process, if it has one. */
RadioHandle* theRadio = nullptr;

constexpr std::chrono::milliseconds turn(2);

/** What is for people at a prompt, or has no meaning here. */
void requireCarriedOut(const Command& command) {
    if (std::holds_alternative<Include>(command)) {
        throw WordError("\"include\" stands in scripts, expected a command");
    }
    const auto* const action = std::get_if<Action>(&command);
    if (action != nullptr && std::holds_alternative<Quit>(*action)) {
        throw WordError("\"quit\" ends a script or a prompt, expected close()");
    }
    if (action != nullptr && std::holds_alternative<Help>(*action)) {
        throw WordError("\"help\" is for a prompt, expected a command that the radio carries out");
    }
}

} // namespace

RadioHandle::RadioHandle(std::shared_ptr<const Board> board, bool isHardware, OrbiTraceLevel trace,
                         bool calls)
    : m_board(std::move(board)),
      m_tellsCalls(calls),
      m_isOnHardware(isHardware),
      m_process(getpid()),
      m_check(*m_board),
      m_stage(named("a radio", *m_board)),
      m_guard(*m_board, isHardware && m_board->hardware.description.sensor.has_value()) {
    Patience patience;
    const Asking asking(*this, patience);
    try {
        waiting(patience, [&] { boot(isHardware, trace); });
        m_boot = std::move(m_report);
        patience.throwRaised();
    } catch (...) { // the hardware is left by its bench, as long as somebody is asked how long that may take
        m_session.reset();
        m_bench.reset();
        throw;
    }
    theRadio = this;
}

void RadioHandle::boot(bool isHardware, OrbiTraceLevel trace) {
    if (isHardware) {
        m_bench = std::make_unique<Bench>(*m_board, *this, folderOfMarks());
        if (const std::string whom = m_bench->leftBehind(); !whom.empty()) {
            warned("the radio was left as it was by " + whom + ": nothing was switched off then");
        }
        m_bench->begin();
    }
    m_session = std::make_unique<Session>(*m_board, *this, trace, hardware());
    m_session->setGuard([this](const Action& action) { return whyNot(action); });
    m_session->setRefusing(isHardware);
    m_session->setGoOn([this] { return goesOn(); });
    m_session->setIdle([this] { idle(); });
    begin();
}

RadioHandle::~RadioHandle() {
    try {
        static_cast<void>(close());
    } catch (const std::exception&) { // nobody is left to be told
    }
    if (theRadio == this) {
        theRadio = nullptr;
    }
}

bool RadioHandle::goesOn() {
    m_isCutShort = m_isCutShort || m_isClosing;
    return !m_isCutShort && (m_patience == nullptr || m_patience->goOn());
}

/** The start-up, and the temperature that the radio really has. */
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

RadioHandle::Use::Use(RadioHandle& handle) : m_handle(handle) {
    if (handle.isClosed() || handle.m_isClosing) {
        throw Closed(named("the radio", *handle.m_board) + " is closed");
    }
    if (handle.m_user != std::thread::id()) {
        throw Busy(named("the radio", *handle.m_board) +
                   " is in the middle of something, expected that to be done first");
    }
    handle.m_user = std::this_thread::get_id();
}

Report RadioHandle::execute(std::vector<std::string> words) {
    if (words.empty()) {
        throw WordError("no words, expected a command");
    }
    const Command command = parseWords(std::move(words));
    requireCarriedOut(command);
    m_check.check(command);
    return carryOut(command);
}

Report RadioHandle::tune(Direction direction, int channel, std::uint32_t carrier, bool isForced) {
    const Command command = Action{Tune{direction, channel, carrier, isForced}};
    m_check.check(command);
    return carryOut(command);
}

Report RadioHandle::carryOut(const Command& command) {
    const Use use(*this);
    Patience patience;
    m_report = {};
    m_isCutShort = false;
    {
        const Asking asking(*this, patience);
        unlocked([&] { m_session->execute({{}, {}, command}); });
    }
    m_report.raised = patience.raised();
    if (m_isCutShort && m_report.raised.is_none()) {
        m_report.raised = py::module_::import("frequencyhandler.errors")
                              .attr("ClosedError")(named("the radio", *m_board) + " was closed meanwhile");
    }
    return std::exchange(m_report, {});
}

std::vector<Event> RadioHandle::poll() {
    if (!m_isOnHardware) {
        return {};
    }
    const Use use(*this);
    m_report = {};
    unlocked([this] { idle(); });
    return std::exchange(m_report, {}).events;
}

/** Gives up its place to the thread that drives the radio, until that is done. */
void RadioHandle::awaitUser() {
    if (m_user == std::this_thread::get_id()) {
        throw Busy(named("the radio", *m_board) +
                   " is in the middle of something, expected that to be done first");
    }
    m_isClosing = true;
    while (m_user != std::thread::id()) {
        unlocked([] { std::this_thread::sleep_for(turn); });
    }
}

Farewell RadioHandle::close() {
    Farewell farewell;
    if (isClosed()) {
        if (!m_isClosed) {
            abandon();
        }
        return farewell;
    }
    awaitUser();
    unlocked([] {});  // who may not do that any more leaves the radio to the end of the interpreter
    if (isClosed()) { // another thread did
        return farewell;
    }
    m_isClosed = true;
    m_user = std::this_thread::get_id();
    m_report = {};
    unlocked([&] {
        if (m_bench) {
            farewell.writes = m_bench->leave();
        }
        m_session.reset();
        m_bench.reset();
    });
    m_stage.reset();
    farewell.events = std::exchange(m_report, {}).events;
    return farewell;
}

void RadioHandle::abandon() {
    m_isClosed = true;
    // Never destroyed: the connections, their threads and the marks are those of the parent.
    static std::vector<Bench*> left;
    left.push_back(m_bench.release());
    if (m_user == std::thread::id()) {
        m_session.reset();
        m_stage->adopt();
    } else { // somebody is, or was, in the middle of it
        static std::vector<Session*> sessions;
        sessions.push_back(m_session.release());
    }
    m_stage.reset();
}

void RadioHandle::forgetInChild() {
    if (theRadio != nullptr && !theRadio->m_isClosed) {
        theRadio->abandon();
    }
}

} // namespace Radio::Python
