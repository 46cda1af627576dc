#ifndef RADIOCTL_PLAN_PLANCOMMANDLINE_H
#define RADIOCTL_PLAN_PLANCOMMANDLINE_H

#include "radioctl/options/Options.h"
#include "radioctl/plan/PlanPrograms.h"

#include <string>

namespace Radio::Plan {

/** The command line of "radioctl plan". */
class PlanCommandLine final : public CommandLine::Verb {
public:
    /** Adds "plan" with its commands to the program's. Must outlive the parsing. */
    explicit PlanCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_plan.isCalled(); }
    int run(bool json) override;

private:
    void addExplain();
    void addAudit();

    CommandLine::Command m_plan;
    CommandLine::Command m_explain;
    CommandLine::Command m_audit;
    ExplainOptions m_explainOptions;
    std::string m_tx;
    std::string m_rx;
    AuditOptions m_auditOptions;
};

} // namespace Radio::Plan

#endif
