#include "radio/laboratory/LaboratoryReader.h"

#include "radio/board/BoardCheck.h"
#include "radio/board/BoardNames.h"
#include "radio/board/CalibrationReader.h"
#include "radio/board/LimitsReader.h"
#include "radio/board/TomlItem.h"
#include "radio/board/TomlText.h"
#include "radio/calibration/Settings.h"
#include "radio/files/Fingerprint.h"
#include "radio/files/TextFile.h"
#include "radio/model/ModelNumbers.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace Radio::Laboratory {

namespace {

constexpr std::size_t largestFile = std::size_t{16} * 1024 * 1024;
constexpr const char* distributionText =
    "a number, or one of { uniform = [LOW, HIGH] }, { normal = [MEAN, DEVIATION] }, { values = [...] } and "
    "{ quantiles = [...] }";

std::string numberText(double number) {
    return toText(Json(number));
}

std::vector<double> numbersOf(const TomlItem& item) {
    std::vector<double> numbers;
    for (const TomlItem& element : item.elements()) {
        numbers.push_back(element.number(largestNumber));
    }
    return numbers;
}

/** Two numbers, the second of which is not below the first. */
std::pair<double, double> readEnds(const TomlItem& item) {
    const std::vector<double> ends = numbersOf(item);
    item.requireCount(ends.size(), 2, "the lowest and the highest value");
    if (ends[0] > ends[1]) {
        item.fail("expected the lowest value first, found " + numberText(ends[0]) + " and " +
                  numberText(ends[1]));
    }
    return {ends[0], ends[1]};
}

Distribution readNormal(const TomlItem& item, const TomlItem& normal) {
    const std::vector<double> terms = numbersOf(normal);
    normal.requireCount(terms.size(), 2, "the mean and the standard deviation");
    if (terms[1] < 0.0) {
        normal.fail("expected a standard deviation that is not negative, found " + numberText(terms[1]));
    }
    std::optional<std::pair<double, double>> within;
    if (const std::optional<TomlItem> ends = item.find("within")) {
        within = readEnds(*ends);
        if (terms[0] < within->first || terms[0] > within->second) {
            ends->fail("expected a range with the mean " + numberText(terms[0]) + " in it");
        }
    }
    return Distribution::normal(terms[0], terms[1], within);
}

Distribution readDistribution(const TomlItem& item) {
    if (!item.isTable()) {
        if (item.isText() || item.isArray()) {
            item.failExpecting(distributionText);
        }
        return Distribution::fixed(item.number(largestNumber));
    }
    item.entries({"uniform", "normal", "within", "values", "quantiles"});
    const std::vector<std::string_view> kinds{"uniform", "normal", "values", "quantiles"};
    const auto count = std::count_if(kinds.begin(), kinds.end(),
                                     [&item](std::string_view kind) { return item.find(kind).has_value(); });
    if (count != 1) {
        item.failExpecting(distributionText);
    }
    const std::optional<TomlItem> normal = item.find("normal");
    if (const std::optional<TomlItem> within = item.find("within"); within && !normal) {
        within->fail("expected it beside normal");
    }
    if (normal) {
        return readNormal(item, *normal);
    }
    if (const std::optional<TomlItem> uniform = item.find("uniform")) {
        const auto [low, high] = readEnds(*uniform);
        return Distribution::uniform(low, high);
    }
    if (const std::optional<TomlItem> values = item.find("values")) {
        return Distribution::oneOf(numbersOf(*values));
    }
    const TomlItem quantiles = *item.find("quantiles");
    std::vector<double> numbers = numbersOf(quantiles);
    if (numbers.size() < 2 || !std::is_sorted(numbers.begin(), numbers.end())) {
        quantiles.fail("expected two values or more, from the least to the greatest");
    }
    return Distribution::quantiles(std::move(numbers));
}

/** What a quantity may be. */
enum class Bounds : std::uint8_t { any, notNegative, notZero, skew };

void requireWithin(const TomlItem& item, const Distribution& distribution, Bounds bounds) {
    const double low = distribution.lowest();
    const double high = distribution.highest();
    const std::string found = ", found " + numberText(low) + (low == high ? "" : " to " + numberText(high));
    if (std::max(std::abs(low), std::abs(high)) > largestNumber) {
        item.fail("expected values from " + numberText(-largestNumber) + " to " + numberText(largestNumber) +
                  found);
    }
    if (bounds == Bounds::notNegative && low < 0.0) {
        item.fail("expected values that are not negative" + found);
    }
    if (bounds == Bounds::notZero && low <= 0.0 && high >= 0.0) {
        item.fail("expected values other than 0, all of one sign" + found);
    }
    if (bounds == Bounds::skew && (low < -largestSkew || high > largestSkew)) {
        item.fail("expected values from " + numberText(-largestSkew) + " to " + numberText(largestSkew) +
                  found);
    }
}

/** Reads what differs between the transmitters. */
class PopulationReader {
public:
    explicit PopulationReader(const LeakageDescription& base) : m_population(base) {}

    Population read(const TomlItem& item);

private:
    void readPaths(const TomlItem& item);
    void readPath(const TomlItem& item, std::size_t path, bool isNew);
    void readBranch(const TomlItem& item, const char* key, CorrectionBranch LeakageDescription::*branch);
    void readDetector(const TomlItem& item, const std::string& key,
                      const std::function<DetectorDescription&(LeakageDescription&)>& detector);
    void readQuantity(const TomlItem& table, const char* key, const std::string& name, Bounds bounds,
                      std::function<double&(LeakageDescription&)> of);

    Population m_population;
};

Population PopulationReader::read(const TomlItem& item) {
    item.entries({"paths", "skew", "i", "q", "detector", "high_detector"});
    readPaths(item);
    readQuantity(item, "skew", "skew", Bounds::skew,
                 [](LeakageDescription& leakage) -> double& { return leakage.skew; });
    readBranch(item, "i", &LeakageDescription::i);
    readBranch(item, "q", &LeakageDescription::q);
    if (const std::optional<TomlItem> detector = item.find("detector")) {
        readDetector(*detector, "detector",
                     [](LeakageDescription& leakage) -> DetectorDescription& { return leakage.detector; });
    }
    if (const std::optional<TomlItem> detector = item.find("high_detector")) {
        if (!m_population.base().highDetector) {
            detector->fail("the board's [[leakage]] has no high_detector, expected one there");
        }
        readDetector(*detector, "high_detector", [](LeakageDescription& leakage) -> DetectorDescription& {
            return *leakage.highDetector;
        });
    }
    return std::move(m_population);
}

void PopulationReader::readPaths(const TomlItem& item) {
    const std::optional<TomlItem> list = item.find("paths");
    if (!list) {
        return;
    }
    const std::vector<TomlItem> paths = list->elements();
    const std::size_t known = m_population.base().paths.size();
    m_population.setPaths(paths.size());
    for (std::size_t path = 0; path < paths.size(); ++path) {
        readPath(paths[path], path, path >= known);
    }
}

void PopulationReader::readPath(const TomlItem& item, std::size_t path, bool isNew) {
    item.entries(
        {"level", "level_per_degree", "level_per_ghz", "phase", "phase_per_degree", "delay", "chance"});
    if (isNew) {
        static_cast<void>(item.get("level", "the level in dBc, of a path that the board does not have"));
        static_cast<void>(item.get("phase", "the phase in degrees, of a path that the board does not have"));
    }
    const std::string name = "paths." + std::to_string(path + 1) + ".";
    for (const auto& [key, member] :
         {std::pair("level", &LeakagePath::level),
          std::pair("level_per_degree", &LeakagePath::levelPerDegree),
          std::pair("level_per_ghz", &LeakagePath::levelPerGHz), std::pair("phase", &LeakagePath::phase),
          std::pair("phase_per_degree", &LeakagePath::phasePerDegree),
          std::pair("delay", &LeakagePath::delay)}) {
        readQuantity(item, key, name + key, Bounds::any,
                     [path, member = member](LeakageDescription& leakage) -> double& {
                         return leakage.paths[path].*member;
                     });
    }
    if (const std::optional<TomlItem> chance = item.find("chance")) {
        const double part = chance->number(1.0);
        if (part < 0.0) {
            chance->failExpecting("the part of the transmitters that have this path, from 0 to 1");
        }
        m_population.addChance(path, part);
    }
}

void PopulationReader::readBranch(const TomlItem& item, const char* key,
                                  CorrectionBranch LeakageDescription::*branch) {
    if (const std::optional<TomlItem> table = item.find(key)) {
        table->entries({"gain"});
        readQuantity(*table, "gain", std::string(key) + ".gain", Bounds::notZero,
                     [branch](LeakageDescription& leakage) -> double& { return (leakage.*branch).gain; });
    }
}

void PopulationReader::readDetector(
    const TomlItem& item, const std::string& key,
    const std::function<DetectorDescription&(LeakageDescription&)>& detector) {
    item.entries({"slope", "zero", "floor", "noise", "settling"});
    const auto add = [&](const char* name, Bounds bounds, double DetectorDescription::*member) {
        readQuantity(
            item, name, key + "." + name, bounds,
            [detector, member](LeakageDescription& leakage) -> double& { return detector(leakage).*member; });
    };
    add("slope", Bounds::any, &DetectorDescription::slope);
    add("zero", Bounds::any, &DetectorDescription::zero);
    add("floor", Bounds::any, &DetectorDescription::floor);
    add("noise", Bounds::notNegative, &DetectorDescription::noise);
    add("settling", Bounds::notNegative, &DetectorDescription::settling);
}

void PopulationReader::readQuantity(const TomlItem& table, const char* key, const std::string& name,
                                    Bounds bounds, std::function<double&(LeakageDescription&)> of) {
    if (const std::optional<TomlItem> item = table.find(key)) {
        Distribution distribution = readDistribution(*item);
        requireWithin(*item, distribution, bounds);
        m_population.add({name, std::move(distribution), std::move(of)});
    }
}

double readTime(const TomlItem& item, std::string_view key, double most) {
    const std::optional<TomlItem> time = item.find(key);
    const double found = time ? time->number(most) : 0.0;
    if (found < 0.0) {
        time->failExpecting("a time that is not negative");
    }
    return found;
}

TimeTerms readTimes(const TomlItem& root) {
    constexpr double day = 86400.0;
    constexpr double minute = 60000.0;
    const std::optional<TomlItem> item = root.find("time");
    if (!item) {
        return {};
    }
    item->entries({"temperature_change", "probe"});
    return {readTime(*item, "temperature_change", day), readTime(*item, "probe", minute)};
}

NamedSettings readSettings(const TomlItem& item, const Description& laboratory,
                           std::set<std::string>& names) {
    item.entries({"name", "method", "probes", "band", "step", "temperatures", "i_range", "q_range",
                  "shrink_factor", "min_delta", "max_iterations", "settle_time", "detector", "qualify"});
    constexpr std::size_t longest = 60;
    NamedSettings settings;
    const TomlItem name = item.get("name", "a name of its own");
    settings.name = name.nonEmptyText("a name of its own");
    if (settings.name.size() > longest || harmless(settings.name) != settings.name) {
        name.failExpecting("1 to 60 printable characters");
    }
    if (!names.insert(settings.name).second) {
        name.fail(inQuotes(settings.name) + " is the name of others, expected one of its own");
    }
    settings.wishes = readCalibrationSettings(item);
    settings.wishes.channel = laboratory.channel;
    if (const std::optional<TomlItem> qualify = item.find("qualify")) {
        settings.qualifies = qualify->boolean();
    }
    Calibration::Settings chosen;
    try {
        chosen = Calibration::settingsFor(laboratory.board, settings.wishes);
    } catch (const ChoiceError& error) {
        item.fail("expected the key " + error.choice() + " here or in the board: " + error.what());
    } catch (const InputError& error) {
        item.fail(error.text());
    }
    const bool isFit = chosen.method == CalibrationMethod::fit;
    if (const std::optional<TomlItem> useless = item.find(isFit ? "step" : "probes")) {
        useless->fail("does nothing with the method " + std::string(toString(chosen.method)) +
                      ", expected it with " + (isFit ? "search" : "fit") + " alone");
    }
    return settings;
}

std::string fingerprintOf(const Description& laboratory, const std::string& text,
                          const std::filesystem::path& units) {
    Fingerprint fingerprint;
    fingerprint.add(Json(text));
    fingerprint.add(Json(readTextFile(laboratory.board.file, largestFile, "a board")));
    if (!units.empty()) {
        fingerprint.add(Json(readTextFile(units, largestUnitsFile, "units of a laboratory")));
    }
    return fingerprint.text();
}

/** What differs between transmitters, which are like units if `file` names some. */
Population readPopulation(const TomlItem& root, const LeakageDescription& base,
                          const std::filesystem::path& units) {
    const std::optional<TomlItem> item = root.find("population");
    if (!item) {
        return Population(base);
    }
    if (const std::optional<TomlItem> paths = item->isTable() ? item->find("paths") : std::nullopt;
        paths && !units.empty()) {
        paths->fail("the paths are those of the units, expected none here");
    }
    return PopulationReader(base).read(*item);
}

/** How many transmitters there are: of units all, unless somebody says. */
std::uint32_t readCount(const TomlItem& root, const std::vector<Unit>& units) {
    std::optional<TomlItem> count = root.find("count");
    if (!count && !units.empty()) {
        return static_cast<std::uint32_t>(units.size());
    }
    count = root.get("count", "how many transmitters are drawn");
    const std::int32_t transmitters = count->integer(1);
    if (transmitters > mostTransmitters) {
        count->failExpecting("an integer from 1 to " + std::to_string(mostTransmitters));
    }
    if (!units.empty() && static_cast<std::size_t>(transmitters) > units.size()) {
        count->failExpecting("an integer from 1 to " + std::to_string(units.size()) +
                             ", since there are so many units");
    }
    return static_cast<std::uint32_t>(transmitters);
}

} // namespace

Description loadLaboratory(const std::filesystem::path& file) {
    const std::string text = readTextFile(file, largestFile, "a laboratory file");
    if (text.size() > largestFile) {
        throw InputError({file.string(), 0}, "has more than 16 MiB, expected a laboratory file");
    }
    const toml::table table = parseToml(text, file.string());
    const TomlItem root(table, "", {file.string(), 0});
    root.entries({"board", "channel", "count", "seed", "units", "failures", "limits", "time", "population",
                  "settings"});
    Description laboratory;
    laboratory.file = file;
    const TomlItem board = root.get("board", "the board file of the design");
    laboratory.board = loadUsableBoard(file.parent_path() / board.nonEmptyText("the name of a board file"));
    const TomlItem channel = root.get("channel", "the number of the channel that is calibrated");
    laboratory.channel = channel.integer(0);
    const LeakageDescription* const leakage = findLeakage(laboratory.board, laboratory.channel);
    if (leakage == nullptr) {
        channel.fail("expected a channel with a [[leakage]] in " + harmless(laboratory.board.file.string()) +
                     ", found " + std::to_string(laboratory.channel));
    }
    std::filesystem::path units;
    if (const std::optional<TomlItem> item = root.find("units")) {
        units = file.parent_path() / item->nonEmptyText("the name of a file with units");
        laboratory.units = readUnits(units, laboratory.board, laboratory.channel);
    }
    laboratory.count = readCount(root, laboratory.units);
    laboratory.seed =
        static_cast<std::uint64_t>(root.get("seed", "where the random numbers begin").integer(0));
    if (const std::optional<TomlItem> failures = root.find("failures")) {
        laboratory.mostFailures = failures->number(1.0);
        if (laboratory.mostFailures < 0.0) {
            failures->failExpecting("the part of the transmitters that may fail, from 0 to 1");
        }
    }
    if (const std::optional<TomlItem> limits = root.find("limits")) {
        limits->entries({"leakage", "leakage_at_nodes", "leakage_improvement"});
        const Limits read = readLimits(root);
        laboratory.board.limits.leakage = read.leakage;
        laboratory.board.limits.leakageAtNodes = read.leakageAtNodes;
        laboratory.board.limits.leakageImprovement = read.leakageImprovement;
    }
    laboratory.time = readTimes(root);
    laboratory.population = readPopulation(root, *leakage, units);
    std::set<std::string> names;
    for (const TomlItem& item : root.tables("settings", "set of settings")) {
        laboratory.settings.push_back(readSettings(item, laboratory, names));
    }
    if (laboratory.settings.empty() || laboratory.settings.size() > mostSettings) {
        throw InputError({file.string(), 0}, "settings: expected 1 to " + std::to_string(mostSettings) +
                                                 " tables [[settings]], found " +
                                                 std::to_string(laboratory.settings.size()));
    }
    laboratory.fingerprint = fingerprintOf(laboratory, text, units);
    return laboratory;
}

} // namespace Radio::Laboratory
