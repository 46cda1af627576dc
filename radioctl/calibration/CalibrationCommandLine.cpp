#include "calibration/CalibrationCommandLine.h"

#include "CommandError.h"
#include "Frequency.h"
#include "JsonLine.h"
#include "Numbers.h"
#include "Output.h"
#include "Programs.h"
#include "Words.h"
#include "calibration/Settings.h"

#include <algorithm>
#include <limits>

namespace Radioctl::Calibration {

namespace {

/** Has a frequency checked with the rest of the command line. */
std::string whyNoFrequency(const std::string& word) {
    try {
        const Range& bounds = carrierBounds;
        const std::int64_t frequency = parseFrequency(word, "");
        if (frequency < bounds.low || frequency > bounds.high) {
            return inQuotes(word) + ", expected from " + std::to_string(bounds.low) + " to " +
                   std::to_string(bounds.high) + " kHz";
        }
        return {};
    } catch (const CommandError& error) {
        return error.what();
    }
}

std::string whyNoShrinkFactor(const std::string& word) {
    const std::optional<double> factor = parseOption(word);
    return factor && isShrinkFactor(*factor) ? "" : inQuotes(word) + ", expected " + shrinkFactorText;
}

/** A serial number goes into files that others read. */
std::string whyNoSerial(const std::string& word) {
    constexpr std::size_t longest = 100;
    const bool isPrintable = !word.empty() && word.size() <= longest && harmless(word) == word;
    try {
        static_cast<void>(Json(word).dump());
        return isPrintable ? "" : inQuotes(word) + ", expected 1 to 100 printable characters";
    } catch (const Json::exception&) {
        return inQuotes(word) + ", expected UTF-8";
    }
}

CLI::Range within(const Range& bounds) {
    return {bounds.low, bounds.high};
}

/** Takes a pair of ends; says what is wrong with them. */
std::string takeRange(const std::vector<std::int64_t>& ends, const char* option,
                      std::optional<Range>& range) {
    if (ends.empty()) {
        return {};
    }
    range = Range{ends[0], ends[1]};
    return ends[0] < ends[1]
               ? ""
               : std::string(option) + ": " + std::to_string(ends[0]) + " and " + std::to_string(ends[1]) +
                     ", expected the lowest value first and a higher one behind it";
}

} // namespace

CalibrationCommandLine::CalibrationCommandLine(CLI::App& app)
    : m_calibrate(*app.add_subcommand(
          "calibrate",
          "Search the corrections of the LO leakage over\nband and temperature, and store them")) {
    m_calibrate.add_option("BOARD", m_options.board, "Board description (TOML)")
        ->required()
        ->type_name("FILE");
    m_calibrate.add_option("--channel", m_options.wishes.channel, "The radio channel")
        ->required()
        ->type_name("N")
        ->check(CLI::Range(0, std::numeric_limits<int>::max()));
    addSettings();
    addFiles();
    m_calibrate.add_flag("--resume", m_resumes, "Go on with the calibration in the journal");
    m_calibrate.add_flag("--restart", m_restarts,
                         "Begin anew, whatever the journal has; it is\nkept as a backup");
    m_calibrate
        .add_option("--offline", m_offline,
                    "Go through this journal again and measure\nnothing; only --min-delta and\n"
                    "--max-iterations may differ")
        ->type_name("JOURNAL");
    m_calibrate.add_flag("--accept-edge", m_options.acceptsEdge,
                         "Store also points whose search ended at the\nedge of a range");
    m_calibrate.add_flag("--real-time", m_options.isRealTime, "Wait for each settle time");
    m_calibrate.add_flag("-v,--verbose", m_options.isVerbose, "Show every point");
    m_calibrate.add_flag("--json", m_options.json, "One JSON object per event and line");
}

void CalibrationCommandLine::addSettings() {
    CalibrationDescription& wishes = m_options.wishes;
    m_calibrate.add_option("--band", m_band, "First and last carrier; otherwise those of\nthe board")
        ->type_name("F F")
        ->expected(2)
        ->check(whyNoFrequency);
    m_calibrate.add_option("--step", m_step, "Distance of two carriers")
        ->type_name("F")
        ->check(whyNoFrequency);
    m_calibrate
        .add_option("--temperatures", wishes.temperatures,
                    "Degrees Celsius with commas between them,\nsuch as -33,0,55")
        ->type_name("LIST")
        ->delimiter(',')
        ->check(within(temperatureBounds));
    m_calibrate.add_option("--i-range", m_iRange, "Where I is searched, in units of its driver")
        ->type_name("LOW HIGH")
        ->expected(2)
        ->check(within(correctionBounds));
    m_calibrate.add_option("--q-range", m_qRange, "Where Q is searched")
        ->type_name("LOW HIGH")
        ->expected(2)
        ->check(within(correctionBounds));
    m_calibrate.add_option("--shrink", wishes.shrinkFactor, "The part of a range that an iteration keeps")
        ->type_name("FACTOR")
        ->check(whyNoShrinkFactor);
    m_calibrate.add_option("--min-delta", wishes.minDelta, "The range that is narrow enough")
        ->type_name("N")
        ->check(within(minDeltaBounds));
    m_calibrate
        .add_option("--max-iterations", wishes.maxIterations, "After how many iterations a search ends")
        ->type_name("N")
        ->check(within(iterationBounds));
    m_calibrate.add_option("--settle-time", wishes.settleTime, "From a correction to its reading")
        ->type_name("MS")
        ->check(within(settleTimeBounds));
    m_calibrate.add_option("--detector", m_detector, "low (also the only one) or high")
        ->type_name("RANGE")
        ->check(CLI::IsMember({"low", "high"}));
    m_calibrate
        .add_option("--serial", m_options.serial, "Serial number of the radio; otherwise the\nboard's")
        ->type_name("TEXT")
        ->check(whyNoSerial);
}

void CalibrationCommandLine::addFiles() {
    m_calibrate
        .add_option("--journal", m_options.journal,
                    "Where every probe is kept; otherwise\nBOARD.channel-N.journal beside the board")
        ->type_name("FILE");
    m_calibrate
        .add_option("--out", m_options.tables,
                    "Where the tables go; otherwise to the file\nfrom which the board takes them")
        ->type_name("FILE");
    m_calibrate.add_option("--html", m_options.html, "Write a page with plots (needs gnuplot)")
        ->type_name("FILE");
}

std::string CalibrationCommandLine::takeOptions() {
    CalibrationDescription& wishes = m_options.wishes;
    if (!m_band.empty()) {
        wishes.band = Range{parseFrequency(m_band[0], ""), parseFrequency(m_band[1], "")};
        if (wishes.band->low > wishes.band->high) {
            return "--band: " + m_band[0] + " and " + m_band[1] + ", expected the lowest carrier first";
        }
    }
    if (!m_step.empty()) {
        wishes.step = parseFrequency(m_step, "");
    }
    std::sort(wishes.temperatures.begin(), wishes.temperatures.end());
    const auto twice = std::adjacent_find(wishes.temperatures.begin(), wishes.temperatures.end());
    if (twice != wishes.temperatures.end()) {
        return "--temperatures: " + std::to_string(*twice) +
               " is there twice, expected each temperature once";
    }
    for (const std::string& wrong :
         {takeRange(m_iRange, "--i-range", wishes.iRange), takeRange(m_qRange, "--q-range", wishes.qRange)}) {
        if (!wrong.empty()) {
            return wrong;
        }
    }
    if (!m_detector.empty()) {
        wishes.useHighDetector = m_detector == "high";
    }
    if (m_resumes + m_restarts + (m_offline.empty() ? 0 : 1) > 1) {
        return "--resume, --restart and --offline exclude each other";
    }
    m_options.beginning = m_resumes ? Beginning::resume : m_restarts ? Beginning::restart : Beginning::fresh;
    if (m_offline.empty()) {
        return {};
    }
    m_options.beginning = Beginning::offline;
    for (const char* const option :
         {"--band", "--step", "--temperatures", "--i-range", "--q-range", "--shrink", "--settle-time",
          "--detector", "--serial", "--journal", "--real-time"}) {
        if (m_calibrate.count(option) != 0) {
            return std::string(option) + ": not together with --offline, whose journal says it";
        }
    }
    m_options.journal = m_offline;
    return {};
}

int CalibrationCommandLine::run(bool json) {
    m_options.json |= json;
    const std::string wrong = takeOptions();
    return wrong.empty() ? runCalibration(m_options)
                         : refuse(wrong, m_options.json, ExitCode::wrongCommandLine);
}

} // namespace Radioctl::Calibration
