#include "PlanCommandLine.h"

#include "CommandError.h"
#include "Frequency.h"
#include "Output.h"
#include "Programs.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <tuple>

namespace Radioctl::Plan {

namespace {

/** Has the value of an option checked with the rest of the command line. */
std::string whyNoFrequency(const std::string& word) {
    try {
        parseFrequency(word, "");
        return {};
    } catch (const CommandError& error) {
        return error.what();
    }
}

bool isUnit(std::string word) {
    std::transform(word.begin(), word.end(), word.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return word == "khz" || word == "mhz" || word == "ghz";
}

bool isFrequencyOption(const std::string& word) {
    return word == "--tx" || word == "--rx" || word == "--carrier" || word == "--frequency";
}

} // namespace

PlanCommandLine::PlanCommandLine(CLI::App& app)
    : m_plan(*app.add_subcommand("plan", "Explain and audit the frequency plan of a board")) {
    m_plan.require_subcommand(1);
    addExplain();
    addAudit();
}

void PlanCommandLine::addExplain() {
    m_explain = m_plan.add_subcommand(
        "explain", "Show how one carrier becomes words for the\nhardware, and what these produce");
    m_explain->add_option("BOARD", m_explainOptions.board, "Board description (TOML)")
        ->required()
        ->type_name("FILE");
    m_explain->add_option("--channel", m_explainOptions.channel, "Radio channel")
        ->required()
        ->type_name("N")
        ->check(CLI::Range(0, std::numeric_limits<int>::max()));
    CLI::Option_group& direction = *m_explain->add_option_group("Carrier", "The carrier, and its direction");
    direction.require_option(1);
    for (const auto& [name, value, help] :
         {std::tuple("--tx", &m_tx, "Transmit carrier: kHz, or with a unit\nbehind it, such as 18.00025 GHz"),
          std::tuple("--rx", &m_rx, "Receive carrier")}) {
        direction.add_option(name, *value, help)->type_name("F")->check(whyNoFrequency);
    }
    m_explain->add_flag("--json", m_explainOptions.json, "One JSON object per event and line");
}

void PlanCommandLine::addAudit() {
    m_audit = m_plan.add_subcommand(
        "audit", "Tune every carrier of the boards' rasters and\nsay what is outside its limits");
    m_audit->add_option("BOARD", m_auditOptions.boards, "Board descriptions (TOML)")
        ->required()
        ->type_name("FILE");
    m_audit->add_option("--csv", m_auditOptions.csv, "Write a line for each carrier; - is\nstandard output")
        ->type_name("FILE");
    m_audit->add_flag("--json", m_auditOptions.json, "One JSON object per event and line");
}

int PlanCommandLine::run(bool json) {
    m_auditOptions.json |= json;
    m_explainOptions.json |= json;
    if (m_audit->parsed()) {
        if (m_auditOptions.json && m_auditOptions.csv == "-") {
            complain("--json and --csv - both want standard output");
            return ExitCode::wrongCommandLine;
        }
        return runAudit(m_auditOptions);
    }
    m_explainOptions.direction = m_tx.empty() ? Direction::rx : Direction::tx;
    m_explainOptions.carrier = parseFrequency(m_tx.empty() ? m_rx : m_tx, "");
    return runExplain(m_explainOptions);
}

std::vector<std::string> withUnitsJoined(int argumentCount, const char* const* arguments) {
    std::vector<std::string> words;
    for (int i = 1; i < argumentCount; ++i) {
        const std::string word = arguments[i];
        const std::size_t count = words.size();
        const bool isBehindFrequency = count >= 2 && isFrequencyOption(words[count - 2]);
        if (isBehindFrequency && isUnit(word)) {
            words.back() += word;
        } else {
            words.push_back(word);
        }
    }
    return words;
}

} // namespace Radioctl::Plan
