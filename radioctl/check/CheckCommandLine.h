#ifndef RADIOCTL_CHECK_CHECKCOMMANDLINE_H
#define RADIOCTL_CHECK_CHECKCOMMANDLINE_H

#include "radio/board/Board.h"
#include "radioctl/options/Options.h"

#include <string>
#include <vector>

namespace Radio {

/** "radioctl check": holds boards against what their channels ask for; and if wished, their tables and their
 * carriers against what is expected of them. */
class CheckCommandLine final : public CommandLine::Verb {
public:
    /** Adds "check" to the program's commands. Must outlive the parsing. */
    explicit CheckCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_check.isCalled(); }
    int run(bool json) override;

private:
    int check(const std::string& file) const;
    int audit(const std::string& file, const Board& board, bool hasErrors) const;
    void tellSkipped(const std::string& file, const char* part, const std::string& why) const;

    CommandLine::Command m_check;
    std::vector<std::string> m_boards;
    bool m_hardware = false;
    bool m_json = false;
    bool m_all = false;
    bool m_strict = false;
};

} // namespace Radio

#endif
