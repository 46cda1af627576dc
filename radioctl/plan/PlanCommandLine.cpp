#include "radioctl/plan/PlanCommandLine.h"

#include "radio/board/PlatformWords.h"
#include "radio/files/AtomicFile.h"
#include "radio/text/Frequency.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/options/Values.h"
#include "radioctl/report/Output.h"

#include <limits>
#include <tuple>

namespace Radio::Plan {

PlanCommandLine::PlanCommandLine(CommandLine::Command program)
    : m_plan(program.command("plan", "Explain and audit the frequency plan of a board")),
      m_explain(m_plan.command(
          "explain", "Show how one carrier becomes words for the\nhardware, and what these produce")),
      m_audit(m_plan.command(
          "audit", "Tune every carrier of the boards' rasters and\nsay what is outside its limits")) {
    m_plan.requireCommand();
    addExplain();
    addAudit();
}

void PlanCommandLine::addExplain() {
    m_explain.option("BOARD", m_explainOptions.board, "Board description (TOML)").required().file({".toml"});
    m_explain.option("--channel", m_explainOptions.channel, "Radio channel")
        .required()
        .named("N")
        .within(0, std::numeric_limits<int>::max());
    CommandLine::Command direction = m_explain.alternatives("Carrier", "The carrier, and its direction");
    for (const auto& [name, value, help] :
         {std::tuple("--tx", &m_tx, "Transmit carrier: kHz, or with a unit\nbehind it, such as 18.00025 GHz"),
          std::tuple("--rx", &m_rx, "Receive carrier")}) {
        direction.option(name, *value, help).named("F").check(whyNoFrequency);
    }
    m_explain.json(m_explainOptions.json);
}

void PlanCommandLine::addAudit() {
    m_audit.option("BOARD", m_auditOptions.boards, "Board descriptions (TOML)").required().file({".toml"});
    m_audit.option("--csv", m_auditOptions.csv, "Write a line for each carrier; - is\nstandard output")
        .file();
    addStoreOptions(m_audit, m_auditOptions.keep);
    addUnitOptions(m_audit, m_auditOptions.keep);
    addHardwareOption(m_audit, m_auditOptions.hardware);
    m_audit.json(m_auditOptions.json);
}

int PlanCommandLine::run(bool json) {
    m_auditOptions.json |= json;
    m_explainOptions.json |= json;
    if (m_audit.isCalled()) {
        if (isStandardOutput(m_auditOptions.csv)) {
            m_auditOptions.csv = "-";
        }
        if (m_auditOptions.json && m_auditOptions.csv == "-") {
            complain("--json and --csv - both want standard output");
            return ExitCode::wrongCommandLine;
        }
        if (m_auditOptions.boards.size() > 1 && !m_auditOptions.keep.serial.empty()) {
            return refuse("--serial: there are several boards, expected one unit", m_auditOptions.json,
                          ExitCode::wrongCommandLine);
        }
        return runAudit(m_auditOptions);
    }
    m_explainOptions.direction = m_tx.empty() ? Direction::rx : Direction::tx;
    m_explainOptions.carrier = parseFrequency(m_tx.empty() ? m_rx : m_tx, "");
    return runExplain(m_explainOptions);
}

} // namespace Radio::Plan
