#include "radioctl/tables/TablesCommandLine.h"

#include "radio/board/CalibrationBounds.h"
#include "radio/text/Frequency.h"
#include "radioctl/options/Values.h"

#include <limits>

namespace Radio::Tables {

TablesCommandLine::TablesCommandLine(CommandLine::Command program)
    : m_tables(program.command("tables", "Check, compare and explain the tables of the LO\ncancellation")),
      m_lint(m_tables.command("lint", "Look for holes, outliers and whatever else is not\nas it should be")),
      m_diff(m_tables.command("diff", "Show where corrections moved, and what that does\nto the leakage")),
      m_why(m_tables.command("why", "Show how one carrier at one temperature comes to\nits corrections")) {
    m_tables.requireCommand();
    addLint();
    addDiff();
    addWhy();
}

void TablesCommandLine::addLint() {
    m_lint.option("FILE", m_lintOptions.files, "Board descriptions (TOML) and calibrations\n(CSV)")
        .required()
        .file({".toml", ".csv"});
    m_lint.json(m_lintOptions.json);
}

void TablesCommandLine::addDiff() {
    m_diff.option("A", m_diffOptions.before, "Board description or calibration")
        .required()
        .file({".toml", ".csv"});
    m_diff.option("B", m_diffOptions.after, "Another one").required().file({".toml", ".csv"});
    m_diff.option("--board", m_diffOptions.board, "Board that describes the leakage; B or A if\nthat is one")
        .file({".toml"});
    m_diff.option("--channel", m_diffOptions.channel, "Radio channel; all that both have")
        .named("N")
        .within(0, std::numeric_limits<int>::max());
    m_diff.flag("-v,--all", m_diffOptions.all, "Show all nodes that moved, not only ten");
    m_diff.json(m_diffOptions.json);
}

void TablesCommandLine::addWhy() {
    m_why.option("BOARD", m_whyOptions.board, "Board description (TOML)").required().file({".toml"});
    m_why.option("--channel", m_whyOptions.channel, "Radio channel")
        .required()
        .named("N")
        .within(0, std::numeric_limits<int>::max());
    m_why
        .option("--frequency", m_frequency,
                "Transmit carrier: kHz, or with a unit\nbehind it, such as 18.7 GHz")
        .required()
        .named("F")
        .check(whyNoFrequency);
    m_why.option("--temperature", m_whyOptions.temperature, "In degrees Celsius")
        .required()
        .named("T")
        .within(temperatureBounds.low, temperatureBounds.high, "degrees");
    m_why.json(m_whyOptions.json);
}

int TablesCommandLine::run(bool json) {
    m_lintOptions.json |= json;
    m_diffOptions.json |= json;
    m_whyOptions.json |= json;
    if (m_lint.isCalled()) {
        return runLint(m_lintOptions);
    }
    if (m_diff.isCalled()) {
        return runDiff(m_diffOptions);
    }
    m_whyOptions.carrier = parseFrequency(m_frequency, "");
    return runWhy(m_whyOptions);
}

} // namespace Radio::Tables
