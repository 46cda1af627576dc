#ifndef RADIOCTL_CALIBRATE_CALIBRATIONCOMMANDLINE_H
#define RADIOCTL_CALIBRATE_CALIBRATIONCOMMANDLINE_H

#include "radioctl/calibrate/CalibrationPrograms.h"
#include "radioctl/options/Options.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Radio::Calibration {

/** The command line of "radioctl calibrate". */
class CalibrationCommandLine final : public CommandLine::Verb {
public:
    /** Adds "calibrate" to the program's commands. Must outlive the parsing. */
    explicit CalibrationCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_calibrate.isCalled(); }
    int run(bool json) override;

private:
    void addSettings();
    void addFiles();
    /** What is wrong with the options as a whole; empty: nothing. */
    std::string takeOptions();

    CommandLine::Command m_calibrate;
    CalibrationOptions m_options;
    std::vector<std::string> m_band;
    std::string m_step;
    std::vector<std::int64_t> m_iRange;
    std::vector<std::int64_t> m_qRange;
    std::string m_method;
    std::string m_detector;
    std::string m_journal;
    std::string m_tables;
    std::string m_offline;
    bool m_resumes = false;
    bool m_restarts = false;
    bool m_isNotQualified = false;
};

} // namespace Radio::Calibration

#endif
