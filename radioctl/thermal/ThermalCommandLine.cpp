#include "radioctl/thermal/ThermalCommandLine.h"

#include "radio/files/AtomicFile.h"
#include "radio/files/Label.h"
#include "radio/text/Frequency.h"
#include "radio/text/Numbers.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/report/Output.h"

#include <string_view>
#include <utility>

namespace Radio::Thermal {

namespace {

/** Throws WordError for anything but "CHANNEL=FREQUENCY". */
Carriers::value_type parseCarrier(std::string_view word) {
    const std::size_t equals = word.find('=');
    const auto channel = parseNumber<int>(word.substr(0, equals), 0);
    if (equals == std::string_view::npos || !channel) {
        throw WordError(inQuotes(word) + ", expected a channel and its carrier, such as \"1=18.00025GHz\"");
    }
    return {*channel, parseFrequency(word.substr(equals + 1), "")};
}

/** Has the value of an option checked with the rest of the command line. */
std::string whyNoCarrier(const std::string& word) {
    try {
        parseCarrier(word);
        return {};
    } catch (const WordError& error) {
        return error.what();
    }
}

} // namespace

ThermalCommandLine::ThermalCommandLine(CommandLine::Command program)
    : m_thermal(program.command(
          "thermal",
          "Replay a temperature log and show how the\ncorrections of the transmitters follow it")) {
    m_thermal.option("BOARD", m_options.board, "Board description (TOML)").required().file({".toml"});
    m_thermal.option("LOG", m_options.log, "Temperature log (CSV): seconds,degrees")
        .required()
        .file({".csv"});
    m_thermal
        .option("--carrier", m_carriers,
                "Transmit carrier of a channel, such as\n1=18.00025GHz; otherwise the first of its raster")
        .named("CHANNEL=F")
        .repeated()
        .check(whyNoCarrier);
    m_thermal
        .option("--csv", m_options.csv,
                "Write a line for each temperature and\nchannel; - is standard output")
        .file();
    m_thermal.option("--html", m_options.html, "Write a page with plots (needs gnuplot)").file();
    m_thermal.option("--station", m_options.station, "Where it is replayed; stands on the page")
        .named("TEXT")
        .check(whyNoLabel);
    addStoreOptions(m_thermal, m_options.keep);
    addUnitOptions(m_thermal, m_options.keep, false);
    m_thermal.json(m_options.json);
}

int ThermalCommandLine::run(bool json) {
    m_options.json |= json;
    m_options.keep.station = m_options.station;
    if (isStandardOutput(m_options.csv)) {
        m_options.csv = "-";
    }
    if (m_options.json && m_options.csv == "-") {
        complain("--json and --csv - both want standard output");
        return ExitCode::wrongCommandLine;
    }
    if (m_options.html == "-") {
        complain("--html - is no file; expected a name such as thermal.html");
        return ExitCode::wrongCommandLine;
    }
    for (const std::string& word : m_carriers) {
        const auto [channel, carrier] = parseCarrier(word);
        if (!m_options.carriers.emplace(channel, carrier).second) {
            complain("--carrier: channel " + std::to_string(channel) + " has two carriers, expected one");
            return ExitCode::wrongCommandLine;
        }
    }
    return runThermal(m_options);
}

} // namespace Radio::Thermal
