#include "radioctl/calibrate/CalibrationCommandLine.h"

#include "radio/board/CalibrationBounds.h"
#include "radio/files/Label.h"
#include "radio/text/Frequency.h"
#include "radio/text/Numbers.h"
#include "radio/text/Words.h"
#include "radioctl/calibrate/Attendant.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/options/Values.h"
#include "radioctl/report/Output.h"

#include <algorithm>
#include <limits>

namespace Radio::Calibration {

namespace {

/** Has a carrier checked with the rest of the command line. */
std::string whyNoCarrier(const std::string& word) {
    std::string wrong = whyNoFrequency(word);
    if (!wrong.empty()) {
        return wrong;
    }
    const std::int64_t frequency = parseFrequency(word, "");
    return frequency >= carrierBounds.low && frequency <= carrierBounds.high
               ? ""
               : inQuotes(word) + ", expected from " + std::to_string(carrierBounds.low) + " to " +
                     std::to_string(carrierBounds.high) + " kHz";
}

std::string whyNoShrinkFactor(const std::string& word) {
    const std::optional<double> factor = parseOption(word);
    return factor && isShrinkFactor(*factor) ? "" : inQuotes(word) + ", expected " + shrinkFactorText;
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

CalibrationCommandLine::CalibrationCommandLine(CommandLine::Command program)
    : m_calibrate(program.command(
          "calibrate",
          "Search the corrections of the LO leakage over\nband and temperature, and store them")) {
    m_calibrate.option("BOARD", m_options.board, "Board description (TOML)").required().file({".toml"});
    m_calibrate.option("--channel", m_options.order.wishes.channel, "The radio channel")
        .required()
        .named("N")
        .within(0, std::numeric_limits<int>::max());
    addSettings();
    addFiles();
    m_calibrate.flag("--resume", m_resumes, "Go on with the calibration in the journal");
    m_calibrate.flag("--restart", m_restarts,
                     "Begin anew, whatever the journal has or is;\nit is kept as a backup");
    m_calibrate
        .option("--offline", m_offline,
                "Go through this journal again and measure\nnothing; only --min-delta and\n"
                "--max-iterations may differ")
        .file({".journal"})
        .named("JOURNAL");
    m_calibrate.flag("--accept-edge", m_options.order.acceptsEdge,
                     "Store also points whose search ended at the\nedge of a range");
    m_calibrate.flag("--accept-fail", m_options.order.acceptsFail,
                     "Store tables also when limits of the board\nare not held; they say so");
    m_calibrate.flag("--no-qualify", m_isNotQualified,
                     "Do not look first whether the detector\nfollows the corrections, and how fast");
    m_calibrate.flag("--real-time", m_options.order.isRealTime, "Wait for each settle time");
    addHardwareOption(m_calibrate, m_options.hardware);
    m_calibrate.flag("--force", m_options.isForced,
                     "On hardware, calibrate also what is outside\nthe board's rasters, limits and ranges");
    m_calibrate.flag("--attended", m_options.order.isAttended,
                     "On hardware: somebody brings temperatures\nabout; so it is at a terminal");
    m_calibrate.flag("-v,--verbose", m_options.isVerbose, "Show every point");
    m_calibrate.json(m_options.json);
}

void CalibrationCommandLine::addSettings() {
    CalibrationDescription& wishes = m_options.order.wishes;
    m_calibrate
        .option("--method", m_method,
                "fit (otherwise): few probes, and a surface\nthrough what they tell; search: the "
                "library's\nsearch at every node")
        .named("METHOD")
        .oneOf({"fit", "search"});
    m_calibrate
        .option("--probes", wishes.probes, "Of a fit: how many probes it may make in\nall; otherwise 400")
        .named("N")
        .within(budgetBounds.low, budgetBounds.high);
    m_calibrate.option("--band", m_band, "First and last carrier; otherwise those of\nthe board")
        .named("F F")
        .values(2)
        .check(whyNoCarrier);
    m_calibrate.option("--step", m_step, "Of a search: distance of two carriers")
        .named("F")
        .check(whyNoCarrier);
    m_calibrate
        .option("--temperatures", wishes.temperatures,
                "Degrees Celsius with commas between them,\nsuch as -33,0,55; of a fit the lowest and\nthe "
                "highest count")
        .named("LIST")
        .separatedBy(',')
        .within(temperatureBounds.low, temperatureBounds.high, "degrees");
    m_calibrate.option("--i-range", m_iRange, "Where I is searched, in units of its driver")
        .named("LOW HIGH")
        .values(2)
        .within(correctionBounds.low, correctionBounds.high);
    m_calibrate.option("--q-range", m_qRange, "Where Q is searched")
        .named("LOW HIGH")
        .values(2)
        .within(correctionBounds.low, correctionBounds.high);
    m_calibrate
        .option("--shrink", wishes.shrinkFactor,
                "The part of a range that an iteration\nkeeps; this and the next two are for\nsearches, and "
                "for a "
                "fit's where it cannot\nfit")
        .named("FACTOR")
        .check(whyNoShrinkFactor);
    m_calibrate.option("--min-delta", wishes.minDelta, "The range that is narrow enough")
        .named("N")
        .within(minDeltaBounds.low, minDeltaBounds.high);
    m_calibrate.option("--max-iterations", wishes.maxIterations, "After how many iterations a search ends")
        .named("N")
        .within(iterationBounds.low, iterationBounds.high);
    m_calibrate.option("--settle-time", wishes.settleTime, "From a correction to its reading")
        .named("MS")
        .within(settleTimeBounds.low, settleTimeBounds.high, "ms");
    m_calibrate.option("--detector", m_detector, "low (also the only one) or high")
        .named("RANGE")
        .oneOf({"low", "high"});
    m_calibrate.option("--tolerance", wishes.tolerance, "On hardware: how far from a temperature will do")
        .named("DEGREES")
        .within(toleranceBounds.low, toleranceBounds.high, "degrees");
    m_calibrate.option("--dwell", wishes.dwell, "On hardware: how long it has to last")
        .named("S")
        .within(dwellBounds.low, dwellBounds.high, "s");
    m_calibrate
        .option("--serial", m_options.order.serial, "Serial number of the radio; otherwise the\nboard's")
        .named("TEXT")
        .check(whyNoLabel);
    m_calibrate
        .option("--station", m_options.order.station,
                "Where it is calibrated; stands in the tables\nand on the page")
        .named("TEXT")
        .check(whyNoLabel);
}

void CalibrationCommandLine::addFiles() {
    m_calibrate
        .option("--journal", m_journal,
                "Where every probe is kept; otherwise\nBOARD.channel-N.journal beside the board")
        .file();
    m_calibrate
        .option("--out", m_tables,
                "Where the tables go; otherwise to the file\nfrom which the board takes them")
        .file();
    m_calibrate.option("--html", m_options.html, "Write a page with plots (needs gnuplot)").file();
    addStoreOptions(m_calibrate, m_options.keep);
}

std::string CalibrationCommandLine::takeOptions() {
    CalibrationDescription& wishes = m_options.order.wishes;
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
    wishes.method = calibrationMethodFromString(m_method);
    if (!m_detector.empty()) {
        wishes.useHighDetector = m_detector == "high";
    }
    m_options.keep.serial = m_options.order.serial;
    m_options.keep.station = m_options.order.station;
    m_options.order.journal = m_journal;
    m_options.order.tables = m_tables;
    m_options.order.version = RADIOCTL_VERSION;
    m_options.order.isHardware = m_options.hardware.hardware;
    m_options.order.qualifies = !m_isNotQualified;
    m_options.order.isAttended |= m_options.hardware.hardware && !m_options.json && isAttendedTerminal();
    if (m_resumes + m_restarts + (m_offline.empty() ? 0 : 1) > 1) {
        return "--resume, --restart and --offline exclude each other";
    }
    m_options.order.beginning = m_resumes    ? Beginning::resume
                                : m_restarts ? Beginning::restart
                                             : Beginning::fresh;
    if (m_offline.empty()) {
        return {};
    }
    m_options.order.beginning = Beginning::offline;
    for (const char* const option :
         {"--method", "--probes", "--band", "--step", "--temperatures", "--i-range", "--q-range", "--shrink",
          "--settle-time", "--detector", "--serial", "--journal", "--real-time", "--no-qualify", "--attended",
          "--tolerance", "--dwell", "--hardware", "--force"}) {
        if (m_calibrate.has(option)) {
            return std::string(option) + ": not together with --offline, whose journal says it";
        }
    }
    m_options.order.journal = m_offline;
    return {};
}

int CalibrationCommandLine::run(bool json) {
    m_options.json |= json;
    const std::string wrong = takeOptions();
    return wrong.empty() ? runCalibration(m_options)
                         : refuse(wrong, m_options.json, ExitCode::wrongCommandLine);
}

} // namespace Radio::Calibration
