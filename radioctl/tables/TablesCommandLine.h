#ifndef RADIOCTL_TABLES_TABLESCOMMANDLINE_H
#define RADIOCTL_TABLES_TABLESCOMMANDLINE_H

#include "tables/TablesPrograms.h"

#include <CLI/CLI.hpp>

#include <string>

namespace Radioctl::Tables {

/** The command line of "radioctl tables". */
class TablesCommandLine {
public:
    /** Adds "tables" with its commands to the program's. Must outlive the parsing. */
    explicit TablesCommandLine(CLI::App& app);
    TablesCommandLine(const TablesCommandLine&) = delete;
    TablesCommandLine& operator=(const TablesCommandLine&) = delete;

    bool parsed() const { return m_tables.parsed(); }
    /** Does what was asked for; gives the exit code. `json`: also asked for in front of the command. */
    int run(bool json);

private:
    void addLint();
    void addDiff();
    void addWhy();

    CLI::App& m_tables;
    CLI::App* m_lint = nullptr;
    CLI::App* m_diff = nullptr;
    CLI::App* m_why = nullptr;
    LintOptions m_lintOptions;
    DiffOptions m_diffOptions;
    WhyOptions m_whyOptions;
    std::string m_frequency;
};

} // namespace Radioctl::Tables

#endif
