#ifndef SERVICE_RADIO_SERVEDRADIO_H
#define SERVICE_RADIO_SERVEDRADIO_H

#include "devices/Hardware.h"
#include "radio/board/Board.h"
#include "radio/language/CommandCheck.h"
#include "radio/plan/Guard.h"
#include "radio/session/Session.h"
#include "service/radio/StateFile.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace Radio::Service {

/** What came of something that was done to the radio, as the library and the platform answered it. */
struct Result {
    std::int32_t code = 0;
    std::string note{};
    /** The board does not allow it, as the last warning says: nothing was done. */
    bool isRefused = false;
    std::vector<std::string> warnings{};
    /** What reached the hardware, in order. */
    std::vector<std::pair<std::string, std::int64_t>> writes{};
    /** Writes and reads that failed. */
    std::vector<Standalone::Call> failures{};
    /** Those that are shown. */
    std::vector<Standalone::TraceMessage> traces{};
    std::vector<Notification> notifications{};
    /** What was read. */
    std::optional<std::int64_t> value{};
};

/**
 * A radio that is up for as long as it is served. It does nothing that its board does not allow unless it is
 * forced, keeps its carriers in a file, and lives in real time. Belongs to one thread.
 */
class ServedRadio {
public:
    /** Is told a temperature that the sensor gave, and how many observers were told of it. */
    using Sensed = std::function<void(int degrees, std::size_t observers)>;

    /** All that is given must outlive the object. `hardware` is null for a radio that is simulated. */
    ServedRadio(const Board& board, SessionListener& listener, Sensed sensed, OrbiTraceLevel shownTrace,
                Devices::Hardware* hardware, StateFile& state);
    ServedRadio(const ServedRadio&) = delete;
    ServedRadio& operator=(const ServedRadio&) = delete;
    ~ServedRadio();

    /** Runs the start-up, and then tunes to `carriers`; false when the radio does not boot. */
    bool boot(const Carriers& carriers);
    /** To be called every 250 ms or so, and between two requests. */
    void idle();

    /** Throws WordError when `action` names what the board does not have. `text` is what is told of it. */
    Result carryOut(const Action& action, const std::string& text);

    /**
     * Leaves board and hardware to `work`, which makes a radio of its own. Then this one starts up again, has
     * its variables, its temperature and its faults back, and, if `isToGoOn` says so then, its carriers;
     * false when it does not boot any more. Meanwhile nothing is carried out, and idle() does nothing.
     */
    bool lend(const std::function<void()>& work, const std::function<bool()>& isToGoOn);
    /** During lend(): the radio that is looked at, which gets the faults; null: it goes. */
    void show(RadioUnit* radio);

    const Board& board() const { return m_board; }
    bool isOnHardware() const { return m_hardware != nullptr; }
    Standalone::Platform& platform() { return radio().platform(); }
    /** During lend() that which is shown. */
    RadioUnit& radio() { return m_session != nullptr ? m_session->radio() : *m_shown; }

    /** What came of tuning a channel the last time, in either direction; null when nobody has. */
    const Result* lastTuned(int channel) const;
    /** What of the hardware failed, and how: operation, object and code. */
    struct Failure {
        Standalone::Operation operation;
        std::string object;
        std::int32_t code;

        bool operator<(const Failure& other) const {
            return std::tie(operation, object, code) < std::tie(other.operation, other.object, other.code);
        }
    };
    /** How often each did since the service began; of 1,000 at most, and what is more counts as one of no
     * object. */
    const std::map<Failure, std::uint64_t>& failures() const { return m_failures; }
    /** How the last run of each phase went. */
    const std::map<unsigned long, Standalone::PhaseReport>& phases() const { return m_phases; }

private:
    class Witness;

    void begin();
    bool startUp();
    void takeUp(const Carriers& carriers);
    std::string whyNot(const Action& action);
    Carriers carriers();
    void sense(std::optional<int> degrees);
    void keepCarriers(Result& result);

    const Board& m_board;
    Sensed m_sensed;
    OrbiTraceLevel m_shownTrace;
    Devices::Hardware* m_hardware;
    StateFile& m_state;
    CommandCheck m_check;
    Plan::Guard m_guard;
    std::map<unsigned long, Standalone::PhaseReport> m_phases;
    std::map<Failure, std::uint64_t> m_failures;
    std::map<int, Result> m_tuned;
    /** Those that were kept and are refused now: they stay kept until there is another of their direction. */
    Carriers m_refused;
    std::unique_ptr<Witness> m_witness;
    /** Null while the radio is lent. */
    std::unique_ptr<Session> m_session;
    RadioUnit* m_shown = nullptr;
    /** Those of a radio that is lent. */
    std::vector<Standalone::Fault> m_faults;
    bool m_isTakingUp = false;
    bool m_isRefused = false;
    std::chrono::steady_clock::time_point m_livedUntil = std::chrono::steady_clock::now();
};

} // namespace Radio::Service

#endif
