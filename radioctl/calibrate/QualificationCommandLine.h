#ifndef RADIOCTL_CALIBRATE_QUALIFICATIONCOMMANDLINE_H
#define RADIOCTL_CALIBRATE_QUALIFICATIONCOMMANDLINE_H

#include "radioctl/calibrate/QualificationPrograms.h"
#include "radioctl/options/Options.h"

#include <string>

namespace Radio::Calibration {

/** The command line of "radioctl qualify". */
class QualificationCommandLine final : public CommandLine::Verb {
public:
    /** Adds "qualify" to the program's commands. Must outlive the parsing. */
    explicit QualificationCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_qualify.isCalled(); }
    int run(bool json) override;

private:
    CommandLine::Command m_qualify;
    QualificationOptions m_options;
    std::string m_detector;
};

} // namespace Radio::Calibration

#endif
