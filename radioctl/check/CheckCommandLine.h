#ifndef RADIOCTL_CHECK_CHECKCOMMANDLINE_H
#define RADIOCTL_CHECK_CHECKCOMMANDLINE_H

#include "radioctl/options/Options.h"

#include <string>
#include <vector>

namespace Radio {

/** "radioctl check": holds boards against what their channels ask for. */
class CheckCommandLine final : public CommandLine::Verb {
public:
    /** Adds "check" to the program's commands. Must outlive the parsing. */
    explicit CheckCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_check.isCalled(); }
    int run(bool json) override;

private:
    CommandLine::Command m_check;
    std::vector<std::string> m_boards;
    bool m_hardware = false;
    bool m_json = false;
};

} // namespace Radio

#endif
