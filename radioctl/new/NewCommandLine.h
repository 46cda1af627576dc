#ifndef RADIOCTL_NEW_NEWCOMMANDLINE_H
#define RADIOCTL_NEW_NEWCOMMANDLINE_H

#include "radio/board/Board.h"
#include "radioctl/options/Options.h"

#include <string>
#include <vector>

namespace Radio {

/** "radioctl new": writes a board file to begin with. */
class NewCommandLine final : public CommandLine::Verb {
public:
    /** Adds "new" to the program's commands. Must outlive the parsing. */
    explicit NewCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_new.isCalled(); }
    int run(bool json) override;

private:
    int create(Range band) const;

    CommandLine::Command m_new;
    std::string m_file;
    std::string m_type;
    std::vector<std::string> m_band;
    bool m_json = false;
};

} // namespace Radio

#endif
