#ifndef SERVICE_RADIO_CALIBRATIONS_H
#define SERVICE_RADIO_CALIBRATIONS_H

#include "radio/board/Board.h"
#include "radio/calibration/CalibrationRun.h"
#include "radio/files/Json.h"
#include "service/radio/CalibrationBody.h"
#include "service/radio/Metrics.h"
#include "service/radio/ServedRadio.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace Radio::Service {

/**
 * The calibrations of a served radio, one at a time: what begins them, what cancels them, and how they are.
 * While one goes on it has the radio. They keep journals and store tables as "radioctl calibrate" does, in
 * the usual places. Belongs to the thread of the radio.
 */
class Calibrations {
public:
    struct Setting {
        /** What stands behind the board's drivers; null for a radio that is simulated. */
        Devices::Hardware* hardware = nullptr;
        /** Of the program, for files. */
        std::string version{};
        /** Is told events, those of "radioctl calibrate --json" with the number of the run. */
        std::function<void(const Json&)> tell{};
        /** Is told in a line what becomes of a run. */
        std::function<void(const std::string&)> note{};
    };

    /** All that is given must outlive the object. `board` gets the tables that are stored. */
    Calibrations(Board& board, ServedRadio& radio, Setting setting);
    Calibrations(const Calibrations&) = delete;
    Calibrations& operator=(const Calibrations&) = delete;
    ~Calibrations();

    /** Sees that a calibration can be had, and opens its journal; its number. It begins with carryOut().
     * Throws Problem, or std::invalid_argument for what makes no sense. */
    std::uint64_t begin(WantedCalibration wanted);
    /** One was begun that is not over. */
    bool goesOn() const { return m_current != nullptr; }
    /** Throws Problem if one goes on. */
    void requireNone() const;
    /**
     * Carries out what was begun, to its end. `goOn` is asked all the while, and may use this object and look
     * at the radio. False when the radio does not boot any more afterwards.
     */
    bool carryOut(const std::function<bool()>& goOn);

    /** Has a run end after its probe; what is measured is kept. False when it is over already. The functions
     * with a number throw Problem for a run that there is not, or that was too long ago. */
    bool cancel(std::uint64_t number);
    /** A temperature that a person brings about is there, and is so many degrees; nothing: those that were
     * asked for. Throws Problem when nobody waits for that. */
    void tellTemperature(std::uint64_t number, std::optional<int> degrees);

    /** A run, with its points from `firstPoint` on. */
    Json state(std::uint64_t number, std::size_t firstPoint) const;
    /** All runs that are remembered, and how far they are. */
    Json list() const;
    void addTo(Metrics& metrics) const;

private:
    struct Run;
    class Listener;

    Run& named(std::uint64_t number) const;
    void prepare(Run& run);
    void measure(Run& run, const std::function<bool()>& goOn);
    void conclude(Run& run, const Calibration::CalibrationOutcome& outcome);
    void takeTables(Run& run, const std::string& file);
    void tell(const Run& run, Json event) const;

    Board& m_board;
    ServedRadio& m_radio;
    const Setting m_setting;
    std::deque<std::unique_ptr<Run>> m_runs;
    /** That which goes on; null: none does. */
    Run* m_current = nullptr;
    std::uint64_t m_last = 0;
    /** How many ended so, and whether the last of a channel was good. */
    std::map<std::string, std::uint64_t> m_ended;
    std::map<int, bool> m_good;
};

} // namespace Radio::Service

#endif
