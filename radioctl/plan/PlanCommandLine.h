#ifndef RADIOCTL_PLAN_PLANCOMMANDLINE_H
#define RADIOCTL_PLAN_PLANCOMMANDLINE_H

#include "PlanPrograms.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace Radioctl::Plan {

/** The command line of "radioctl plan". */
class PlanCommandLine {
public:
    /** Adds "plan" with its commands to the program's. Must outlive the parsing. */
    explicit PlanCommandLine(CLI::App& app);
    PlanCommandLine(const PlanCommandLine&) = delete;
    PlanCommandLine& operator=(const PlanCommandLine&) = delete;

    bool parsed() const { return m_plan.parsed(); }
    /** Does what was asked for; gives the exit code. `json`: also asked for in front of the command. */
    int run(bool json);

private:
    void addExplain();
    void addAudit();

    CLI::App& m_plan;
    CLI::App* m_explain = nullptr;
    CLI::App* m_audit = nullptr;
    ExplainOptions m_explainOptions;
    std::string m_tx;
    std::string m_rx;
    AuditOptions m_auditOptions;
};

/** The words of a command line, a frequency and its unit put together: "--tx 18 GHz" as "--tx" "18GHz". */
std::vector<std::string> withUnitsJoined(int argumentCount, const char* const* arguments);

} // namespace Radioctl::Plan

#endif
