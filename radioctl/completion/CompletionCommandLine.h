#ifndef RADIOCTL_COMPLETION_COMPLETIONCOMMANDLINE_H
#define RADIOCTL_COMPLETION_COMPLETIONCOMMANDLINE_H

#include "radioctl/options/Options.h"

#include <string>

namespace Radio {

/** "radioctl completion": prints the completion script for a shell. */
class CompletionCommandLine final : public CommandLine::Verb {
public:
    /** Adds "completion" to the program's commands. Must outlive the parsing. */
    explicit CompletionCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_completion.isCalled(); }
    int run(bool json) override;

private:
    CommandLine::Command m_completion;
    std::string m_shell;
};

} // namespace Radio

#endif
