#ifndef RADIOCTL_TABLES_TABLESCOMMANDLINE_H
#define RADIOCTL_TABLES_TABLESCOMMANDLINE_H

#include "radioctl/options/Options.h"
#include "radioctl/tables/TablesPrograms.h"

#include <string>

namespace Radio::Tables {

/** The command line of "radioctl tables". */
class TablesCommandLine final : public CommandLine::Verb {
public:
    /** Adds "tables" with its commands to the program's. Must outlive the parsing. */
    explicit TablesCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_tables.isCalled(); }
    int run(bool json) override;

private:
    void addLint();
    void addDiff();
    void addWhy();

    CommandLine::Command m_tables;
    CommandLine::Command m_lint;
    CommandLine::Command m_diff;
    CommandLine::Command m_why;
    LintOptions m_lintOptions;
    DiffOptions m_diffOptions;
    WhyOptions m_whyOptions;
    std::string m_frequency;
};

} // namespace Radio::Tables

#endif
