#ifndef RADIOCTL_RECORD_RECORDCOMMANDLINE_H
#define RADIOCTL_RECORD_RECORDCOMMANDLINE_H

#include "radioctl/options/Options.h"
#include "radioctl/record/RecordPrograms.h"

#include <string>

namespace Radio::Recordings {

/** The command line of "radioctl record". */
class RecordCommandLine final : public CommandLine::Verb {
public:
    /** Adds "record" with its commands to the program's. Must outlive the parsing. */
    explicit RecordCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_record.isCalled(); }
    int run(bool json) override;

private:
    /** The options that say what is wanted of a recording. */
    void addFilters(CommandLine::Command& command, Wanted& wanted);

    CommandLine::Command m_record;
    CommandLine::Command m_show;
    CommandLine::Command m_diff;
    ShowOptions m_showOptions;
    DiffOptions m_diffOptions;
    std::string m_from;
    std::string m_to;
};

} // namespace Radio::Recordings

#endif
