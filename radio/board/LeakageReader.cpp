#include "radio/board/LeakageReader.h"

#include "radio/board/ChannelReader.h"
#include "radio/model/ModelNumbers.h"
#include "radio/text/NearestName.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string>

namespace Radio {

namespace {

double numberOr(const TomlItem& table, std::string_view key, double otherwise) {
    const std::optional<TomlItem> item = table.find(key);
    return item ? item->number(largestNumber) : otherwise;
}

double notNegativeOr0(const TomlItem& table, std::string_view key) {
    const double number = numberOr(table, key, 0.0);
    if (number < 0.0) {
        table.find(key)->failExpecting("a number that is not negative");
    }
    return number;
}

double requiredNumber(const TomlItem& table, std::string_view key, const std::string& what) {
    return table.get(key, what).number(largestNumber);
}

std::int32_t stepOr1(const TomlItem& table) {
    const std::optional<TomlItem> step = table.find("step");
    return step ? step->integer(1) : 1;
}

/** The values that a converter has: from `low` to `high`. */
void readRange(const TomlItem& table, std::int32_t& low, std::int32_t& high) {
    const std::string what = "the lowest and the highest value";
    const TomlItem item = table.get("range", what);
    const std::vector<TomlItem> ends = item.elements();
    item.requireCount(ends.size(), 2, what);
    low = ends[0].integer();
    high = ends[1].integer();
    if (low > high) {
        item.fail("expected the lowest value first, found " + std::to_string(high) + " after " +
                  std::to_string(low));
    }
}

LeakagePath readPath(const TomlItem& item) {
    item.entries({"level", "level_per_degree", "level_per_ghz", "phase", "phase_per_degree", "delay"});
    LeakagePath path;
    path.level = requiredNumber(item, "level", "the level of the path in dBc");
    path.levelPerDegree = numberOr(item, "level_per_degree", 0.0);
    path.levelPerGHz = numberOr(item, "level_per_ghz", 0.0);
    path.phase = requiredNumber(item, "phase", "the phase of the path in degrees");
    path.phasePerDegree = numberOr(item, "phase_per_degree", 0.0);
    path.delay = numberOr(item, "delay", 0.0);
    return path;
}

/** Reads [[leakage]] tables, and sees to it that no channel and no driver has two uses. */
class Reader {
public:
    Reader(const std::vector<ChannelDescription>& channels, const std::vector<DriverDescription>& drivers)
        : m_channel(channels, "leakage") {
        std::transform(drivers.begin(), drivers.end(), std::back_inserter(m_drivers),
                       [](const DriverDescription& driver) { return driver.name; });
    }

    LeakageDescription read(const TomlItem& item);

private:
    std::string readDriver(const TomlItem& owner);
    CorrectionBranch readBranch(const TomlItem& item);
    DetectorDescription readDetector(const TomlItem& item);

    ChannelReader m_channel;
    std::vector<std::string> m_drivers;
    std::map<std::string, unsigned> m_lineOfDriver;
};

LeakageDescription Reader::read(const TomlItem& item) {
    item.entries({"channel", "reference", "paths", "skew", "seed", "i", "q", "detector", "high_detector"});
    LeakageDescription leakage;
    leakage.channel = m_channel.read(item);
    leakage.reference = static_cast<std::uint32_t>(
        item.get("reference", "the carrier in kHz for which levels and phases are given").integer(1));
    for (const TomlItem& path :
         item.get("paths", "the ways of the leakage, each with level and phase").elements()) {
        leakage.paths.push_back(readPath(path));
    }
    if (const std::optional<TomlItem> skew = item.find("skew")) {
        leakage.skew = skew->number(largestSkew);
    }
    if (const std::optional<TomlItem> seed = item.find("seed")) {
        leakage.seed = static_cast<std::uint32_t>(seed->integer(0));
    }
    leakage.i = readBranch(item.get("i", "what the correction of I does"));
    leakage.q = readBranch(item.get("q", "what the correction of Q does"));
    leakage.detector = readDetector(item.get("detector", "the detector of the channel"));
    if (const std::optional<TomlItem> detector = item.find("high_detector")) {
        leakage.highDetector = readDetector(*detector);
    }
    return leakage;
}

std::string Reader::readDriver(const TomlItem& owner) {
    const std::string what = "the name of a driver in [drivers]";
    const TomlItem item = owner.get("driver", what);
    std::string name = item.text();
    if (std::find(m_drivers.begin(), m_drivers.end(), name) == m_drivers.end()) {
        item.fail("expected " + what + ", found " + inQuotes(name) + didYouMean(name, m_drivers));
    }
    const auto [first, isNew] = m_lineOfDriver.emplace(name, item.place().line);
    if (!isNew) {
        item.fail(inQuotes(name) + " is in use on line " + std::to_string(first->second) +
                  ", expected a driver of its own");
    }
    return name;
}

CorrectionBranch Reader::readBranch(const TomlItem& item) {
    item.entries({"driver", "gain", "step", "range"});
    CorrectionBranch branch;
    branch.driver = readDriver(item);
    branch.gain = requiredNumber(item, "gain", "what one unit adds, as a fraction of the signal's amplitude");
    if (branch.gain == 0.0) {
        item.find("gain")->failExpecting("a number other than 0");
    }
    branch.step = stepOr1(item);
    readRange(item, branch.low, branch.high);
    return branch;
}

DetectorDescription Reader::readDetector(const TomlItem& item) {
    constexpr double nothingElse = -120.0;
    item.entries({"driver", "slope", "zero", "floor", "noise", "step", "range", "settling"});
    DetectorDescription detector;
    detector.driver = readDriver(item);
    detector.slope = requiredNumber(item, "slope", "the units of the reading for each dB");
    detector.zero = requiredNumber(item, "zero", "the level in dBc at which the reading is 0");
    detector.floor = numberOr(item, "floor", nothingElse);
    detector.noise = notNegativeOr0(item, "noise");
    detector.step = stepOr1(item);
    readRange(item, detector.low, detector.high);
    detector.settling = notNegativeOr0(item, "settling");
    return detector;
}

} // namespace

std::vector<LeakageDescription> readLeakages(const TomlItem& root,
                                             const std::vector<ChannelDescription>& channels,
                                             const std::vector<DriverDescription>& drivers) {
    std::vector<LeakageDescription> result;
    Reader reader(channels, drivers);
    for (const TomlItem& item : root.tables("leakage", "modelled LO leakage")) {
        result.push_back(reader.read(item));
    }
    return result;
}

} // namespace Radio
