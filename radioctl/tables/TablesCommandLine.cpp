#include "tables/TablesCommandLine.h"

#include "CommandError.h"
#include "Frequency.h"

#include <limits>

namespace Radioctl::Tables {

namespace {

const CLI::Range channels(0, std::numeric_limits<int>::max());

/** Has the value of an option checked with the rest of the command line. */
std::string whyNoFrequency(const std::string& word) {
    try {
        parseFrequency(word, "");
        return {};
    } catch (const CommandError& error) {
        return error.what();
    }
}

void addJson(CLI::App& command, bool& json) {
    command.add_flag("--json", json, "One JSON object per event and line");
}

} // namespace

TablesCommandLine::TablesCommandLine(CLI::App& app)
    : m_tables(
          *app.add_subcommand("tables", "Check, compare and explain the tables of the LO\ncancellation")) {
    m_tables.require_subcommand(1);
    addLint();
    addDiff();
    addWhy();
}

void TablesCommandLine::addLint() {
    m_lint =
        m_tables.add_subcommand("lint", "Look for holes, outliers and whatever else is not\nas it should be");
    m_lint->add_option("FILE", m_lintOptions.files, "Board descriptions (TOML) and calibrations\n(CSV)")
        ->required()
        ->type_name("FILE");
    addJson(*m_lint, m_lintOptions.json);
}

void TablesCommandLine::addDiff() {
    m_diff =
        m_tables.add_subcommand("diff", "Show where corrections moved, and what that does\nto the leakage");
    m_diff->add_option("A", m_diffOptions.before, "Board description or calibration")
        ->required()
        ->type_name("FILE");
    m_diff->add_option("B", m_diffOptions.after, "Another one")->required()->type_name("FILE");
    m_diff
        ->add_option("--board", m_diffOptions.board,
                     "Board that describes the leakage; B or A if\nthat is one")
        ->type_name("FILE");
    m_diff->add_option("--channel", m_diffOptions.channel, "Radio channel; all that both have")
        ->type_name("N")
        ->check(channels);
    m_diff->add_flag("-v,--all", m_diffOptions.all, "Show all nodes that moved, not only ten");
    addJson(*m_diff, m_diffOptions.json);
}

void TablesCommandLine::addWhy() {
    m_why =
        m_tables.add_subcommand("why", "Show how one carrier at one temperature comes to\nits corrections");
    m_why->add_option("BOARD", m_whyOptions.board, "Board description (TOML)")->required()->type_name("FILE");
    m_why->add_option("--channel", m_whyOptions.channel, "Radio channel")
        ->required()
        ->type_name("N")
        ->check(channels);
    m_why
        ->add_option("--frequency", m_frequency,
                     "Transmit carrier: kHz, or with a unit\nbehind it, such as 18.7 GHz")
        ->required()
        ->type_name("F")
        ->check(whyNoFrequency);
    m_why->add_option("--temperature", m_whyOptions.temperature, "In degrees Celsius")
        ->required()
        ->type_name("T");
    addJson(*m_why, m_whyOptions.json);
}

int TablesCommandLine::run(bool json) {
    m_lintOptions.json |= json;
    m_diffOptions.json |= json;
    m_whyOptions.json |= json;
    if (m_lint->parsed()) {
        return runLint(m_lintOptions);
    }
    if (m_diff->parsed()) {
        return runDiff(m_diffOptions);
    }
    m_whyOptions.carrier = parseFrequency(m_frequency, "");
    return runWhy(m_whyOptions);
}

} // namespace Radioctl::Tables
