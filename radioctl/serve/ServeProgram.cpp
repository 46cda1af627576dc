#include "radioctl/serve/ServeProgram.h"

#include "radio/board/BoardFile.h"
#include "radio/files/InputError.h"
#include "radio/text/Words.h"
#include "radioctl/bench/HardwareUse.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/JsonReporter.h"
#include "radioctl/report/Output.h"
#include "radioctl/serve/EventLines.h"
#include "radioctl/serve/ServiceManager.h"
#include "service/http/Server.h"
#include "service/radio/Calibrations.h"
#include "service/radio/EventRing.h"
#include "service/radio/Resources.h"
#include "service/radio/ServedRadio.h"
#include "service/radio/WorkQueue.h"

#include <array>
#include <chrono>
#include <csignal>
#include <ctime>
#include <iostream>
#include <memory>
#include <optional>

namespace Radio::Serving {

namespace {

using namespace Service;

// What is kept for those who follow the events, and how many requests wait for the radio at most.
constexpr std::size_t mostEvents = 20000;
constexpr std::size_t mostEventBytes = std::size_t{4} * 1024 * 1024;
constexpr std::size_t mostRequests = 256;
constexpr std::chrono::milliseconds idleInterval(250);

/** In UTC, "2026-11-23T01:17:34Z". */
std::string nowText() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::array<char, 32> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

/** Different each time the program is started. */
std::uint64_t runNumber() {
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                          std::chrono::system_clock::now().time_since_epoch())
                                          .count());
}

/** A service from its beginning to its end. */
class Program {
public:
    explicit Program(const Options& options)
        : m_options(options),
          m_board(loadBoard(options.board)),
          m_lines(m_ring, options.json ? &std::cout : nullptr),
          m_events(&m_lines),
          m_reporter(m_events, false),
          m_state(options.state, m_board),
          m_carriers(m_state.read()),
          m_server(
              {options.listen, options.token, options.certificate, options.key, options.names},
              [this](Request request, std::function<void(Answer)> tell) {
                  return ask(std::move(request), std::move(tell));
              },
              m_ring),
          m_hardware(m_board, {options.hardware, false}, options.json ? m_events : std::cout, options.json,
                     options.json ? nullptr : &m_events),
          m_radio(
              m_board, m_reporter,
              [this](int degrees, std::size_t observers) { m_reporter.sensed(degrees, observers); },
              options.trace, m_hardware.hardware(), m_state),
          m_calibrations(m_board, m_radio,
                         {m_hardware.hardware(), RADIOCTL_VERSION,
                          [this](const Json& event) { writeJsonLine(m_events, event); },
                          [this](const std::string& line) { note(line); }}),
          m_resources(m_radio, m_calibrations, m_ring, [this](const Change& change) { tell(change); }) {}

    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program() {
        // Requests that wait hold connections, of which none may outlive the server.
        m_queue.close();
        m_server.stop();
        m_queue.forget();
    }

    int run() {
        m_reporter.boardLoaded(m_board);
        if (!m_radio.boot(m_carriers)) {
            leave();
            return refuse("the radio did not boot", false, ExitCode::notBooted);
        }
        m_server.start();
        writeJsonLine(m_events, {{"event", "serving"}, {"address", m_server.address()}});
        if (!m_options.json) {
            std::cout << "Serving " << harmless(m_board.name) << " at " << m_server.address() << std::endl;
        }
        m_manager.ready("serving " + harmless(m_board.name) + " at " + m_server.address());
        while (m_interrupt.signal() == 0 && std::cout.good()) {
            m_interrupt.waitForInput(m_queue.descriptor(), idleInterval);
            if (!goOn()) {
                break;
            }
            m_radio.idle();
            if (!m_calibrations.carryOut([this] { return goOn(); })) {
                leave();
                return refuse("the radio did not boot after a calibration", false, ExitCode::notBooted);
            }
        }
        return end();
    }

private:
    /** Answers who asks; false when the service is to end. */
    bool goOn() {
        m_queue.work();
        m_manager.alive();
        return m_interrupt.signal() == 0 && std::cout.good();
    }

    /** On the server's thread. */
    bool ask(Request request, std::function<void(Answer)> tell) {
        return m_queue.add([this, request = std::move(request), tell = std::move(tell)] {
            m_radio.idle();
            tell(m_resources.answer(request));
        });
    }

    void tell(const Change& change) {
        const std::string when = nowText();
        writeJsonLine(m_events, {{"event", "change"},
                                 {"when", when},
                                 {"who", change.who},
                                 {"request", change.request},
                                 {"body", change.body},
                                 {"status", change.status}});
        if (!m_options.json) {
            std::cout << when << "  " << harmless(change.who + "  " + change.request + " " + change.body)
                      << "  " << change.status << std::endl;
        }
    }

    void note(const std::string& line) {
        if (!m_options.json) {
            std::cout << nowText() << "  " << line << std::endl;
        }
    }

    /** Where it ends with something worse than what could not be written. */
    void leave() {
        const bool hasLeft = m_hardware.leave();
        static_cast<void>(hasLeft);
    }

    /** Requests that came before are answered, and then the radio is left. */
    int end() {
        m_manager.stopping();
        m_queue.close();
        m_queue.work();
        const bool hasLeft = m_hardware.leave();
        const int exitCode = hasLeft ? ExitCode::good : ExitCode::outsideLimits;
        writeJsonLine(m_events,
                      {{"event", "ended"}, {"signal", m_interrupt.signal()}, {"exit_code", exitCode}});
        m_server.stop();
        return exitCode;
    }

    const Options& m_options;
    const Interrupt m_interrupt;
    /** A calibration gives it new tables. */
    Board m_board;
    EventRing m_ring{runNumber(), mostEvents, mostEventBytes};
    EventLines m_lines;
    std::ostream m_events;
    JsonReporter m_reporter;
    WorkQueue m_queue{mostRequests};
    StateFile m_state;
    Carriers m_carriers;
    Server m_server;
    HardwareUse m_hardware;
    ServedRadio m_radio;
    Calibrations m_calibrations;
    Resources m_resources;
    ServiceManager m_manager;
};

} // namespace

int serve(const Options& options) {
    // Whoever has read enough of what the program says ends it as a closed connection does nobody else.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    return refusing(options.json, [&options] { return std::make_unique<Program>(options)->run(); });
}

} // namespace Radio::Serving
