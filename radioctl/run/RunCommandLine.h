#ifndef RADIOCTL_RUN_RUNCOMMANDLINE_H
#define RADIOCTL_RUN_RUNCOMMANDLINE_H

#include "radioctl/options/Options.h"
#include "radioctl/run/RunPrograms.h"

#include <string>

namespace Radio {

/** The command lines of "radioctl run" and "radioctl console". */
class RunCommandLine final : public CommandLine::Verb {
public:
    /** Adds "run" and "console" to the program's commands. Must outlive the parsing. */
    explicit RunCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_run.isCalled() || m_console.isCalled(); }
    int run(bool json) override;

private:
    /** Adds a command with what both have in common. */
    CommandLine::Command add(CommandLine::Command& program, const char* name, const char* help);

    RunOptions m_options;
    std::string m_trace = "notice";
    std::string m_script;
    CommandLine::Command m_run;
    CommandLine::Command m_console;
};

} // namespace Radio

#endif
