#ifndef RADIOCTL_THERMAL_THERMALREPORT_H
#define RADIOCTL_THERMAL_THERMALREPORT_H

#include "radio/board/Board.h"
#include "radio/board/Verdict.h"
#include "radio/thermal/Replay.h"
#include "radio/thermal/ThermalLog.h"

#include <ostream>
#include <string>

namespace Radio::Thermal {

/** What a report is about. */
struct Subject {
    const Board& board;
    /** The log as the user calls it. */
    std::string logFile;
    const ThermalLog& log;
    /** Where it is replayed; empty when nobody said. */
    std::string station{};
    /** When, in UTC, for example "2026-03-01T09:30:00Z", and by which version of the program. */
    std::string date{};
    std::string version{};

    /** "unknown" when the board does not say. */
    std::string serial() const { return board.serial.empty() ? "unknown" : board.serial; }
};

/** How a replay ended, and how long it took. */
struct ReplayEnd {
    /** What the limits of the board make of it. */
    Verdict verdict;
    /** The signal that ended it early; 0 for none. */
    int signal = 0;
    double seconds = 0;
    int exitCode = 0;
};

/** "-33 to 55 degrees". */
std::string temperatureSpan(const ThermalLog& log);
/** The driver's largest step, for example "-12"; "-" before there was one. */
std::string stepText(const DriverTotals& driver);

/** Tells whoever runs the program what came of a log. */
class ThermalReport : public ReplayListener {
public:
    virtual void finished(const ReplayTotals& totals, const ReplayEnd& end) = 0;
};

/** For people: what came of each channel. */
class ThermalText final : public ThermalReport {
public:
    /** What is borrowed must outlive the object. */
    ThermalText(std::ostream& out, const Subject& subject) : m_out(out), m_subject(subject) {}

    void told(const ChannelTotals& /*channel*/, const Moment& /*moment*/) override {}
    void finished(const ReplayTotals& totals, const ReplayEnd& end) override;

private:
    void showDrivers(const ChannelTotals& channel);
    void showWorst(const ChannelTotals& channel);

    std::ostream& m_out;
    const Subject& m_subject;
};

/** For programs: one JSON object for each moment of a channel, each channel and the end. */
class ThermalJson final : public ThermalReport {
public:
    /** What is borrowed must outlive the object. */
    ThermalJson(std::ostream& out, const Subject& subject) : m_out(out), m_subject(subject) {}

    void told(const ChannelTotals& channel, const Moment& moment) override;
    void finished(const ReplayTotals& totals, const ReplayEnd& end) override;

private:
    std::ostream& m_out;
    const Subject& m_subject;
};

/** One line for each moment of a channel. The constructor writes the names of the columns. */
class ThermalCsv final : public ReplayListener {
public:
    explicit ThermalCsv(std::ostream& out);

    void told(const ChannelTotals& channel, const Moment& moment) override;

private:
    std::ostream& m_out;
};

} // namespace Radio::Thermal

#endif
