#ifndef RADIO_CALIBRATION_MEASUREMENT_H
#define RADIO_CALIBRATION_MEASUREMENT_H

#include "radio/board/Board.h"
#include "radio/calibration/CalibrationBench.h"
#include "radio/calibration/CalibrationRun.h"
#include "radio/calibration/Journal.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

namespace Radio::Calibration {

class Calibrator;

/** The points of a calibration, measured one after the other by a radio that is booted for it. */
class Measurement {
public:
    /** What is borrowed must outlive the object. `known` is what the journal has already; `journal` takes
     * what is new, null: nothing is measured. `outcome` has the settings, and gets points and what went
     * wrong. */
    Measurement(const Board& board, const CalibrationOrder& order, JournalContent& known, Journal* journal,
                CalibrationOutcome& outcome)
        : m_board(board),
          m_order(order),
          m_known(known),
          m_journal(journal),
          m_outcome(outcome) {}

    /** To be called once. Throws as CalibrationRun::run() does. */
    void run(CalibrationListener& listener, const CalibrationBench& bench);

private:
    bool isOffline() const { return m_order.beginning == Beginning::offline; }
    void takeDetector();
    /** The temperatures in the order in which they are gone through. */
    void chooseRoute(const CalibrationBench& bench);
    /** False when nothing can be measured. */
    bool qualify(Calibrator& calibrator, CalibrationListener& listener);
    /** These two give whether all points were calibrated. */
    bool searchAll(Calibrator& calibrator, CalibrationListener& listener);
    bool fitAll(Calibrator& calibrator, CalibrationListener& listener);
    void analyse(Calibrator& calibrator, Point& point, const std::function<bool()>& bring);
    void note(const Point& point, bool isFromJournal);
    void stopFor(const Calibrator& calibrator);
    CalibrationProgress progress() const;

    const Board& m_board;
    const CalibrationOrder& m_order;
    JournalContent& m_known;
    Journal* const m_journal;
    CalibrationOutcome& m_outcome;
    std::optional<double> m_worst;
    std::optional<std::int32_t> m_highestReading;
    bool m_isFromJournal = true;
    /** Asks the listener whether to go on, and what it said last. */
    std::function<bool()> m_goOn;
    bool m_goesOn = true;
    /** Of a fit, so far. */
    std::size_t m_fitProbes = 0;
};

/** What a qualification found is how a calibration goes on. */
void adopt(Result& result, const Qualification& qualification);

} // namespace Radio::Calibration

#endif
