#ifndef PYTHON_BINDING_RADIOHANDLE_H
#define PYTHON_BINDING_RADIOHANDLE_H

#include "devices/Hardware.h"
#include "python/binding/Events.h"
#include "python/binding/Patience.h"
#include "python/binding/Stage.h"
#include "radio/board/Board.h"
#include "radio/language/CommandCheck.h"
#include "radio/plan/Guard.h"
#include "radio/session/Bench.h"
#include "radio/session/Session.h"
#include "radio/session/SessionListener.h"

#include <unistd.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Radio::Python {

/** What came of one command. */
struct Report {
    std::int32_t code = 0;
    std::string note{};
    std::vector<Event> events{};
    std::optional<Reading> reading{};
    std::optional<Judgement> judgement{};
    std::optional<Listing> listing{};
    /** What Python raised meanwhile, or None. */
    py::object raised = py::none();
};

/** What the end of a radio came to. */
struct Farewell {
    std::vector<Devices::ExitWrite> writes{};
    std::vector<Event> events{};
};

/**
 * A radio that is up, driven from Python by any thread, but by one at a time: who comes meanwhile is turned
 * away. What happens is gathered, and told when the command is done, with the interpreter's lock. All of it
 * is called with that lock.
 *
 * In a child of the process that booted it, the radio is closed, and its hardware is the parent's.
 */
class RadioHandle final : public SessionListener, public Devices::HardwareListener {
public:
    /** Boots, on hardware if so, and lets the interpreter's lock go meanwhile. `calls`: all calls to the
     * platform are told, not just writes. Throws Busy, InputError and what a signal raised meanwhile. */
    RadioHandle(std::shared_ptr<const Board> board, bool isHardware, OrbiTraceLevel trace, bool calls);
    RadioHandle(const RadioHandle&) = delete;
    RadioHandle& operator=(const RadioHandle&) = delete;
    /** Closes, if nobody did. */
    ~RadioHandle() override;

    /** What the start-up was. */
    Report takeBoot() { return std::move(m_boot); }
    /** Carries out one command of the language, given as its words. Throws WordError for one that makes no
     * sense, or that is for people. */
    Report execute(std::vector<std::string> words);
    /** The same for a tune, without words. */
    Report tune(Direction direction, int channel, std::uint32_t carrier, bool isForced);
    /** Looks what became of real hardware and its sensor since. */
    std::vector<Event> poll();
    /** Ends what another thread drives, leaves the hardware, if there is any, and gives back what was written
     * then. Nothing the second time. Throws Busy when the thread itself is in the middle of something. */
    Farewell close();

    bool isClosed() const { return m_isClosed || m_process != getpid(); }
    bool isOnHardware() const { return m_isOnHardware; }
    /** What the start-up phases came to. */
    bool isUp() const { return m_isUp; }
    /** In a child, after the process was forked: leaves the parent's hardware alone. */
    static void forgetInChild();

    /** Looks at the radio, which nobody else does meanwhile; throws Closed and Busy. */
    template <typename Look>
    auto look(const Look& work) {
        const Use use(*this);
        return work(m_session->radio());
    }
    const Board& board() const { return *m_board; }

private:
    /** The one that drives the radio has this. */
    class Use {
    public:
        /** Throws Closed and Busy. */
        explicit Use(RadioHandle& handle);
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        ~Use() { m_handle.m_user = {}; }

    private:
        RadioHandle& m_handle;
    };

    /** What is asked whether to go on with a command, as long as the object lives. */
    class Asking {
    public:
        Asking(RadioHandle& handle, Patience& patience)
            : m_handle(handle),
              m_waiting([&handle] { return handle.goesOn(); }) {
            handle.m_patience = &patience;
        }
        Asking(const Asking&) = delete;
        Asking& operator=(const Asking&) = delete;
        ~Asking() { m_handle.m_patience = nullptr; }

    private:
        RadioHandle& m_handle;
        const Waiting m_waiting;
    };

    Report carryOut(const Command& command);
    void boot(bool isHardware, OrbiTraceLevel trace);
    void begin();
    bool goesOn();
    void awaitUser();
    /** Takes the radio down and leaves its hardware to the parent. */
    void abandon();
    void idle();
    void sense(std::optional<int> degrees);
    std::string whyNot(const Action& action);
    Devices::Hardware* hardware() { return m_bench ? &m_bench->hardware() : nullptr; }

    void phaseStarted(unsigned long /*phase*/) override {}
    void phaseFinished(const Standalone::PhaseReport& report) override {
        m_report.events.emplace_back(report);
    }
    void booted(bool succeeded) override { m_isUp = succeeded; }
    void commandStarted(const ScriptLine& /*line*/) override {}
    void commandFinished(std::int32_t code, const std::string& note) override;
    void called(const Standalone::Call& call) override;
    void traced(const Standalone::TraceMessage& message) override { m_report.events.emplace_back(message); }
    void notified(const Notification& notification) override { m_report.events.emplace_back(notification); }
    void valueRead(const Reading& reading) override { m_report.reading = reading; }
    void warned(const std::string& text) override { m_report.events.emplace_back(Warning{text}); }
    void judged(const ScriptLine& /*line*/, const Judgement& judgement) override {
        m_report.judgement = judgement;
    }
    void listed(const Listing& listing) override { m_report.listing = listing; }
    void helpWanted(const std::string& /*about*/) override {}

    void lost(const std::string& device, const std::string& why) override {
        m_report.events.emplace_back(HardwareNews{"lost", device, why});
    }
    void back(const std::string& device) override {
        m_report.events.emplace_back(HardwareNews{"back", device, ""});
    }
    void failed(const std::string& driver, const std::string& attribute, std::int32_t code) override {
        m_report.events.emplace_back(HardwareNews{"failed", driver, attribute, code});
    }
    void sensorFailed(const std::string& why) override {
        m_report.events.emplace_back(HardwareNews{"sensor", "", why});
    }

    const std::shared_ptr<const Board> m_board;
    const bool m_tellsCalls;
    const bool m_isOnHardware;
    const pid_t m_process;
    /** The thread that drives the radio; that of nobody, when nobody does. */
    std::thread::id m_user;
    bool m_isClosed = false;
    /** Whoever drives the radio is to come to an end. */
    std::atomic<bool> m_isClosing{false};
    /** For that reason a command has come to its end. */
    bool m_isCutShort = false;
    Report m_report;
    Report m_boot;
    bool m_isUp = false;
    Patience* m_patience = nullptr;
    CommandCheck m_check;
    std::optional<Stage> m_stage;
    std::unique_ptr<Bench> m_bench;
    Plan::Guard m_guard;
    std::unique_ptr<Session> m_session;
};

} // namespace Radio::Python

#endif
