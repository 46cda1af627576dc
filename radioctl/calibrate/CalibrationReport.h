#ifndef RADIOCTL_CALIBRATE_CALIBRATIONREPORT_H
#define RADIOCTL_CALIBRATE_CALIBRATIONREPORT_H

#include "radio/board/Board.h"
#include "radio/calibration/CalibrationRun.h"

#include <ostream>
#include <string>

namespace Radio::Calibration {

/** How a run of the program ended that calibrated. */
struct CalibrationEnd {
    /** The page, if there is one. */
    std::string page;
    /** What went wrong, if anything did; empty: nothing. */
    std::string trouble;
    /** The signal that came; 0 for none. */
    int signal = 0;
    int exitCode = 0;
};

/** Whether tables were stored, and why not: so that nobody takes a calibration for another one. */
std::string storedText(const CalibrationOutcome& outcome, const CalibrationEnd& end);

/** "waiting for 25 degrees, now 21", or what is to be done for it. */
std::string awaitedText(const AwaitedTemperature& awaited);

/** Tells whoever runs the program how a calibration goes. */
class CalibrationReport {
public:
    CalibrationReport() = default;
    CalibrationReport(const CalibrationReport&) = delete;
    CalibrationReport& operator=(const CalibrationReport&) = delete;
    virtual ~CalibrationReport() = default;

    /** Something speaks against what is calibrated all the same. */
    virtual void warns(const std::string& reservation) = 0;
    /** What was called `file` had to make room for the journal. */
    virtual void makesRoom(const std::string& file, const PutAway& putAway) = 0;
    virtual void begins(const Board& board, const Result& result, std::size_t knownProbes) = 0;
    virtual void qualified(const Qualification& qualification) = 0;
    /** The sensor says something new. `isBeginning`: of a temperature that nobody waited for before. */
    virtual void awaits(const AwaitedTemperature& awaited, bool isBeginning) = 0;
    virtual void calibrated(const Point& point) = 0;
    virtual void finished(const CalibrationOutcome& outcome, const CalibrationEnd& end) = 0;
};

/** For people. */
class CalibrationText final : public CalibrationReport {
public:
    /** `out` must outlive the object. `showsAll`: every point is shown, not only those with a remark. */
    CalibrationText(std::ostream& out, bool showsAll) : m_out(out), m_showsAll(showsAll) {}

    void warns(const std::string& reservation) override;
    void makesRoom(const std::string& file, const PutAway& putAway) override;
    void begins(const Board& board, const Result& result, std::size_t knownProbes) override;
    void qualified(const Qualification& qualification) override;
    void awaits(const AwaitedTemperature& awaited, bool isBeginning) override;
    void calibrated(const Point& /*point*/) override {}
    void finished(const CalibrationOutcome& outcome, const CalibrationEnd& end) override;

private:
    void showPoints(const Result& result);
    void showFit(const Result& result);
    void showWorst(const LeakageSummary& summary, bool isFit);

    std::ostream& m_out;
    bool m_showsAll;
};

/** For programs: one JSON object for the beginning, each point and the end. */
class CalibrationJson final : public CalibrationReport {
public:
    /** `out` must outlive the object. */
    explicit CalibrationJson(std::ostream& out) : m_out(out) {}

    void warns(const std::string& reservation) override;
    void makesRoom(const std::string& file, const PutAway& putAway) override;
    void begins(const Board& board, const Result& result, std::size_t knownProbes) override;
    void qualified(const Qualification& qualification) override;
    void awaits(const AwaitedTemperature& awaited, bool isBeginning) override;
    void calibrated(const Point& point) override;
    void finished(const CalibrationOutcome& outcome, const CalibrationEnd& end) override;

private:
    std::ostream& m_out;
    /** Points of a fit have no iterations. */
    bool m_isFit = false;
};

} // namespace Radio::Calibration

#endif
