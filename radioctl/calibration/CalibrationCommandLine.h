#ifndef RADIOCTL_CALIBRATION_CALIBRATIONCOMMANDLINE_H
#define RADIOCTL_CALIBRATION_CALIBRATIONCOMMANDLINE_H

#include "calibration/CalibrationPrograms.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace Radioctl::Calibration {

/** The command line of "radioctl calibrate". */
class CalibrationCommandLine {
public:
    /** Adds "calibrate" to the program's commands. Must outlive the parsing. */
    explicit CalibrationCommandLine(CLI::App& app);
    CalibrationCommandLine(const CalibrationCommandLine&) = delete;
    CalibrationCommandLine& operator=(const CalibrationCommandLine&) = delete;

    bool parsed() const { return m_calibrate.parsed(); }
    /** Does what was asked for; gives the exit code. `json`: also asked for in front of the command. */
    int run(bool json);

private:
    void addSettings();
    void addFiles();
    /** What is wrong with the options as a whole; empty: nothing. */
    std::string takeOptions();

    CLI::App& m_calibrate;
    CalibrationOptions m_options;
    std::vector<std::string> m_band;
    std::string m_step;
    std::vector<std::int64_t> m_iRange;
    std::vector<std::int64_t> m_qRange;
    std::string m_detector;
    std::string m_offline;
    bool m_resumes = false;
    bool m_restarts = false;
};

} // namespace Radioctl::Calibration

#endif
