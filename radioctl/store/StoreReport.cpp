#include "radioctl/store/StoreReport.h"

#include "radio/store/RunText.h"
#include "radio/text/Words.h"
#include "radioctl/report/TextTable.h"

#include <cmath>
#include <map>
#include <tuple>

namespace Radio::Store {

namespace {

constexpr std::size_t idShown = 8;

std::string verdictText(VerdictKind verdict) {
    return verdict == VerdictKind::none ? "-" : std::string(toString(verdict));
}

std::string limitsText(const Measurement& measurement) {
    std::string text;
    if (measurement.lowest) {
        text += "from " + valueText(measurement.lowest);
    }
    if (measurement.highest) {
        text += std::string(text.empty() ? "" : " ") + "to " + valueText(measurement.highest);
    }
    return text.empty() ? "-" : text;
}

/** What is the same of two measurements of the same thing, and how many of it the run had before. */
using Key = std::tuple<std::string, std::optional<std::int64_t>, std::optional<std::int64_t>,
                       std::optional<std::int64_t>, std::size_t>;

/** Each measurement by its key, in the run's order. */
std::vector<std::pair<Key, const Measurement*>> keysOf(const Run& run) {
    std::map<Key, std::size_t> seen;
    std::vector<std::pair<Key, const Measurement*>> keys;
    for (const Measurement& one : run.measurements) {
        Key key{one.name, one.channel, one.frequency, one.temperature, 0};
        std::get<4>(key) = seen[key]++;
        keys.emplace_back(key, &one);
    }
    return keys;
}

} // namespace

Json runEvent(const RunHead& head) {
    Json event = {{"event", "run"}};
    const Json told = toJson(head);
    for (const auto& [name, value] : told.members()) {
        event[name] = value;
    }
    return event;
}

std::string valueText(const std::optional<double>& value) {
    if (!value) {
        return "-";
    }
    const bool isWhole = std::abs(*value) < 1e15 && *value == std::round(*value);
    return isWhole ? inDecimals(*value, 0) : inTwoDecimals(*value);
}

std::string placeText(const Measurement& measurement) {
    std::vector<std::string> parts;
    if (measurement.channel) {
        parts.push_back("channel " + std::to_string(*measurement.channel));
    }
    if (measurement.frequency) {
        parts.push_back(std::to_string(*measurement.frequency) + " kHz");
    }
    if (measurement.temperature) {
        parts.push_back(std::to_string(*measurement.temperature) + " degrees");
    }
    return joined(parts, ", ");
}

void writeHeads(std::ostream& out, const std::vector<RunHead>& heads) {
    TextTable table;
    table.add({"run", "begun", "unit", "kind", "verdict", "station", "board"});
    for (const RunHead& head : heads) {
        table.add({head.id.substr(0, idShown), head.begun, head.serial, head.kind, verdictText(head.verdict),
                   head.station.empty() ? "-" : head.station, head.board});
    }
    table.write(out);
}

void writeRun(std::ostream& out, const Run& run) {
    out << "Run " << run.id << ", " << run.kind << (run.isHardware ? " on hardware" : ", simulated") << ", "
        << run.begun << " to " << run.ended << "\n"
        << "Unit " << harmless(run.serial) << ", board " << harmless(run.board) << " ("
        << harmless(run.fingerprint) << "), radioctl " << harmless(run.version) << "\n";
    if (!run.station.empty() || !run.operatorName.empty()) {
        out << "Station " << (run.station.empty() ? "-" : harmless(run.station)) << ", operator "
            << (run.operatorName.empty() ? "-" : harmless(run.operatorName)) << "\n";
    }
    out << "Verdict " << verdictText(run.verdict) << ", exit code " << run.exitCode << "\n";
    TextTable table;
    table.add({"measurement", "value", "unit", "limits", "held", "where"});
    table.alignRight(1);
    for (const Measurement& one : run.measurements) {
        table.add({one.name, valueText(one.value), one.unit.empty() ? "-" : one.unit, limitsText(one),
                   one.isHeld ? (*one.isHeld ? "yes" : "NO") : "-", placeText(one)});
    }
    table.write(out);
    for (const RunFile& file : run.files) {
        out << "File " << harmless(file.name) << ", " << counted(file.content.size(), "byte") << "\n";
    }
}

std::vector<MeasuredPair> pairsOf(const Run& before, const Run& after) {
    std::map<Key, const Measurement*> others;
    for (const auto& [key, measurement] : keysOf(after)) {
        others.emplace(key, measurement);
    }
    std::vector<MeasuredPair> pairs;
    for (const auto& [key, measurement] : keysOf(before)) {
        const auto other = others.find(key);
        pairs.push_back({measurement, other == others.end() ? nullptr : other->second});
        if (other != others.end()) {
            others.erase(other);
        }
    }
    for (const auto& [key, measurement] : keysOf(after)) {
        if (others.count(key) != 0) {
            pairs.push_back({nullptr, measurement});
        }
    }
    return pairs;
}

namespace {

std::optional<double> changeOf(const MeasuredPair& pair) {
    const bool both =
        pair.before != nullptr && pair.after != nullptr && pair.before->value && pair.after->value;
    return both ? std::optional<double>(*pair.after->value - *pair.before->value) : std::nullopt;
}

std::string sideText(const Measurement* side) {
    if (side == nullptr) {
        return "none";
    }
    return side->value || !side->isHeld ? valueText(side->value) : *side->isHeld ? "held" : "NOT HELD";
}

} // namespace

void writePairs(std::ostream& out, const std::vector<MeasuredPair>& pairs) {
    TextTable table;
    table.add({"measurement", "A", "B", "change", "unit", "where"});
    for (const std::size_t column : {1U, 2U, 3U}) {
        table.alignRight(column);
    }
    for (const MeasuredPair& pair : pairs) {
        const Measurement& either = pair.before != nullptr ? *pair.before : *pair.after;
        table.add({either.name, sideText(pair.before), sideText(pair.after), valueText(changeOf(pair)),
                   either.unit.empty() ? "-" : either.unit, placeText(either)});
    }
    table.write(out);
}

Json pairEvent(const MeasuredPair& pair) {
    const Measurement& either = pair.before != nullptr ? *pair.before : *pair.after;
    const auto side = [](const Measurement* one) { return one == nullptr ? Json(nullptr) : toJson(*one); };
    return {{"event", "compared_measurement"},
            {"name", either.name},
            {"unit", either.unit},
            {"channel", orNull(either.channel)},
            {"khz", orNull(either.frequency)},
            {"degrees", orNull(either.temperature)},
            {"before", side(pair.before)},
            {"after", side(pair.after)},
            {"change", orNull(changeOf(pair))}};
}

} // namespace Radio::Store
