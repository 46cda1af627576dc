#include "radio/board/BoardNames.h"
#include "radio/files/TextFile.h"
#include "radio/laboratory/JsonMembers.h"
#include "radio/laboratory/LaboratoryReader.h"
#include "radio/laboratory/Unit.h"
#include "radio/model/ModelNumbers.h"
#include "radio/text/Words.h"

#include <cmath>

namespace Radio::Laboratory {

namespace {

constexpr int unitsForm = 1;
constexpr const char* unitsLine = "a line of a laboratory's units";
constexpr double steepestSkew = 60.0;
/** More paths nobody fits. */
constexpr std::size_t mostUnitPaths = 100;

const std::vector<std::pair<const char*, double LeakagePath::*>>& pathKeys() {
    static const std::vector<std::pair<const char*, double LeakagePath::*>> keys{
        {"level", &LeakagePath::level},
        {"level_per_degree", &LeakagePath::levelPerDegree},
        {"level_per_ghz", &LeakagePath::levelPerGHz},
        {"phase", &LeakagePath::phase},
        {"phase_per_degree", &LeakagePath::phasePerDegree},
        {"delay", &LeakagePath::delay}};
    return keys;
}

Json detectorJson(const DetectorDescription& detector) {
    return {{"slope", detector.slope}, {"floor", detector.floor}, {"noise", detector.noise}};
}

std::string unitLine(const Unit& unit) {
    Json paths = Json::array();
    for (const LeakagePath& path : unit.leakage.paths) {
        Json json = Json::object();
        for (const auto& [key, member] : pathKeys()) {
            json[key] = path.*member;
        }
        paths.push_back(std::move(json));
    }
    return toText({{"unit", unit.name},
                   {"source", unit.source},
                   {"date", unit.date.empty() ? Json(nullptr) : Json(unit.date)},
                   {"places", unit.places},
                   {"misfit_dbc", unit.misfit},
                   {"paths", std::move(paths)},
                   {"skew", unit.leakage.skew},
                   {"i_gain", unit.leakage.i.gain},
                   {"q_gain", unit.leakage.q.gain},
                   {"detector", detectorJson(unit.leakage.detector)},
                   {"high_detector",
                    unit.leakage.highDetector ? detectorJson(*unit.leakage.highDetector) : Json(nullptr)}});
}

double numberWithin(const JsonMembers& members, const char* key, double least, double most) {
    const double number = members.requiredReal(key);
    if (!(number >= least && number <= most)) {
        members.refuse(std::string(key) + " is not from " + toText(Json(least)) + " to " +
                       toText(Json(most)));
    }
    return number;
}

double anyNumber(const JsonMembers& members, const char* key) {
    return numberWithin(members, key, -largestNumber, largestNumber);
}

double gainOf(const JsonMembers& members, const char* key) {
    const double gain = anyNumber(members, key);
    if (gain == 0.0) {
        members.refuse(std::string(key) + " is 0");
    }
    return gain;
}

void readDetector(DetectorDescription& detector, const JsonMembers& members) {
    detector.slope = anyNumber(members, "slope");
    detector.floor = anyNumber(members, "floor");
    detector.noise = numberWithin(members, "noise", 0.0, largestNumber);
}

Unit unitIn(const std::string& line, const Place& place, const LeakageDescription& board) {
    const JsonMembers members(line, place, unitsLine);
    Unit unit;
    unit.name = members.text("unit");
    unit.source = members.text("source");
    unit.date = members.of("date").is_null() ? "" : members.text("date");
    unit.places = members.number32("places", static_cast<std::uint32_t>(mostTransmitters));
    unit.misfit = anyNumber(members, "misfit_dbc");
    unit.leakage = board;
    unit.leakage.paths.clear();
    const ParsedJson& paths = members.of("paths");
    if (!paths.is_array() || paths.empty() || paths.size() > mostUnitPaths) {
        members.refuse("paths are missing");
    }
    for (const ParsedJson& one : paths) {
        const JsonMembers keys(one, place, unitsLine);
        LeakagePath& path = unit.leakage.paths.emplace_back();
        for (const auto& [key, member] : pathKeys()) {
            path.*member = anyNumber(keys, key);
        }
    }
    unit.leakage.skew = numberWithin(members, "skew", -steepestSkew, steepestSkew);
    unit.leakage.i.gain = gainOf(members, "i_gain");
    unit.leakage.q.gain = gainOf(members, "q_gain");
    readDetector(unit.leakage.detector, members.below("detector"));
    if (unit.leakage.highDetector && !members.of("high_detector").is_null()) {
        readDetector(*unit.leakage.highDetector, members.below("high_detector"));
    }
    return unit;
}

} // namespace

std::string unitsText(const std::vector<Unit>& units, const Board& board, int channel,
                      const std::string& version) {
    std::string text = toText({{"units", unitsForm},
                               {"version", version},
                               {"board", board.name},
                               {"channel", channel},
                               {"count", units.size()}}) +
                       "\n";
    for (const Unit& unit : units) {
        text += unitLine(unit) + "\n";
    }
    return text;
}

std::vector<Unit> readUnits(const std::filesystem::path& file, const Board& board, int channel) {
    const std::string text = readTextFile(file, largestUnitsFile, "units of a laboratory");
    if (text.size() > largestUnitsFile) {
        throw InputError({file.string(), 0}, "has more than 1 GiB, expected units of a laboratory");
    }
    const LeakageDescription* const leakage = findLeakage(board, channel);
    Place place{file.string(), 1};
    std::vector<Unit> units;
    std::uint64_t count = 0;
    std::size_t from = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', from)) {
        const std::string line = text.substr(from, end - from);
        from = end + 1;
        if (place.line == 1) {
            const JsonMembers members(line, place, unitsLine);
            if (members.number("units", unitsForm) != unitsForm) {
                members.refuse("of another form");
            }
            if (members.text("board") != board.name ||
                members.number("channel", static_cast<std::uint64_t>(mostTransmitters)) !=
                    static_cast<std::uint64_t>(channel)) {
                throw InputError(place, "units of " + inQuotes(members.text("board")) + ", channel " +
                                            members.of("channel").dump() + ", expected such of " +
                                            inQuotes(board.name) + ", channel " + std::to_string(channel));
            }
            count = members.number("count", static_cast<std::uint64_t>(mostTransmitters));
        } else {
            units.push_back(unitIn(line, place, *leakage));
        }
        ++place.line;
    }
    if (from != text.size() || units.empty() || units.size() != count) {
        throw InputError({file.string(), 0}, "is damaged: expected " + counted(count, "unit") + ", found " +
                                                 std::to_string(units.size()));
    }
    return units;
}

} // namespace Radio::Laboratory
