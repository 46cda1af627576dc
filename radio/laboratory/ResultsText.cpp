#include "radio/calibration/Settings.h"
#include "radio/files/TextFile.h"
#include "radio/laboratory/JsonMembers.h"
#include "radio/laboratory/LaboratoryReader.h"
#include "radio/laboratory/Results.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <limits>

namespace Radio::Laboratory {

namespace {

constexpr int form = 1;
/** A million transmitters with a few sets of settings. */
constexpr std::size_t largestResults = std::size_t{2} * 1024 * 1024 * 1024;

constexpr const char* resultsLine = "a line of a laboratory's results";

Heading headingFrom(const JsonMembers& members, const Place& place) {
    constexpr auto most32 = std::numeric_limits<std::int32_t>::max();
    if (members.number("laboratory", std::numeric_limits<std::uint32_t>::max()) != form) {
        members.refuse("of another form");
    }
    Heading heading;
    heading.version = members.text("version");
    heading.fingerprint = members.text("fingerprint");
    heading.name = members.text("board");
    heading.channel = static_cast<int>(members.number("channel", most32));
    heading.count = members.number32("transmitters", mostTransmitters);
    heading.seed = members.number("seed", std::numeric_limits<std::uint64_t>::max());
    heading.mostFailures = members.requiredReal("failures");
    heading.limit = members.real("limit_dbc");
    for (const ParsedJson& one : members.of("settings")) {
        const JsonMembers settings(one, place, resultsLine);
        heading.settings.push_back(
            {settings.text("name"), settings.text("method"), settings.of("calibration").dump()});
    }
    if (heading.settings.empty() || heading.settings.size() > mostSettings) {
        members.refuse("settings are missing");
    }
    return heading;
}

Shard shardFrom(const JsonMembers& members) {
    const JsonMembers shard = members.below("shard");
    const Shard found{shard.number32("number", mostTransmitters), shard.number32("of", mostTransmitters)};
    if (found.number < 1 || found.number > found.count) {
        shard.refuse("there is no such shard");
    }
    return found;
}

/** The lines of a text that have an end. */
std::vector<std::string> wholeLines(const std::string& text, std::size_t& size) {
    std::vector<std::string> lines;
    size = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', size)) {
        lines.push_back(text.substr(size, end - size));
        size = end + 1;
    }
    return lines;
}

void requireWhole(const Results& results, const std::filesystem::path& file) {
    const std::vector<Task> tasks = tasksOf(results.heading, results.shard);
    const bool isWhole = std::equal(tasks.begin(), tasks.end(), results.trials.begin(), results.trials.end(),
                                    [](const Task& task, const Trial& trial) { return task == trial.task; });
    if (!isWhole) {
        throw InputError({file.string(), 0}, "is damaged: expected " + counted(tasks.size(), "trial") +
                                                 " in their order, found " +
                                                 std::to_string(results.trials.size()));
    }
}

} // namespace

std::string headingLine(const Heading& heading, const Shard& shard) {
    // The settings are JSON already.
    std::string settings;
    for (const Heading::Settings& one : heading.settings) {
        settings += (settings.empty() ? "" : ",") + std::string("{\"name\":") + toText(Json(one.name)) +
                    ",\"method\":" + toText(Json(one.method)) + ",\"calibration\":" + one.text + "}";
    }
    const Json json = {{"laboratory", form},
                       {"version", heading.version},
                       {"fingerprint", heading.fingerprint},
                       {"board", heading.name},
                       {"channel", heading.channel},
                       {"transmitters", heading.count},
                       {"seed", heading.seed},
                       {"failures", heading.mostFailures},
                       {"limit_dbc", orNull(heading.limit)},
                       {"shard", Json{{"number", shard.number}, {"of", shard.count}}}};
    std::string text = toText(json);
    text.pop_back();
    return text + ",\"settings\":[" + settings + "]}";
}

std::string lineOf(const Trial& trial) {
    Json json = {{"transmitter", trial.task.transmitter},
                 {"settings", trial.task.settings},
                 {"end", toString(trial.end)},
                 {"probes", trial.probes},
                 {"seconds", trial.seconds},
                 {"temperature_changes", trial.temperatureChanges},
                 {"uncorrected_dbc", orNull(trial.uncorrected)},
                 {"worst_dbc", orNull(trial.worst)},
                 {"reason", trial.reason.empty() ? Json(nullptr) : Json(trial.reason)}};
    if (!trial.unit.empty()) {
        json["unit"] = trial.unit;
    }
    return toText(json);
}

std::string textOf(const Results& results) {
    std::string text = headingLine(results.heading, results.shard) + "\n";
    for (const Trial& trial : results.trials) {
        text += lineOf(trial) + "\n";
    }
    return text;
}

Trial trialFrom(const std::string& line, const Place& place) {
    constexpr auto most = std::numeric_limits<std::uint32_t>::max();
    const JsonMembers members(line, place, resultsLine);
    Trial trial;
    trial.unit = members.has("unit") ? members.text("unit") : "";
    trial.task = {members.number32("transmitter", mostTransmitters), members.number32("settings", most)};
    const std::optional<TrialEnd> end = trialEndFromString(members.text("end"));
    if (!end) {
        members.refuse("unknown end " + inQuotes(members.text("end")));
    }
    trial.end = *end;
    trial.probes = members.number("probes", std::numeric_limits<std::uint64_t>::max());
    trial.seconds = members.requiredReal("seconds");
    trial.temperatureChanges = members.number32("temperature_changes", most);
    trial.uncorrected = members.real("uncorrected_dbc");
    trial.worst = members.real("worst_dbc");
    trial.reason = members.of("reason").is_null() ? "" : members.text("reason");
    return trial;
}

Results readResults(const std::filesystem::path& file, bool isRunning, std::size_t* size) {
    const std::string text = readTextFile(file, largestResults, "results of a laboratory");
    if (text.size() > largestResults) {
        throw InputError({file.string(), 0}, "has more than 2 GiB, expected results of a laboratory");
    }
    std::size_t counting = 0;
    const std::vector<std::string> lines = wholeLines(text, counting);
    if (size != nullptr) {
        *size = counting;
    }
    Place place{file.string(), 1};
    if (lines.empty() || (!isRunning && counting != text.size())) {
        throw InputError(place, std::string(lines.empty() ? "there is nothing" : "the last line has no end") +
                                    ", expected " + resultsLine);
    }
    const JsonMembers first(lines.front(), place, resultsLine);
    Results results{headingFrom(first, place), shardFrom(first), {}};
    for (std::size_t n = 1; n < lines.size(); ++n) {
        place.line = static_cast<unsigned>(n + 1);
        results.trials.push_back(trialFrom(lines[n], place));
        const Task& task = results.trials.back().task;
        if (task.transmitter >= results.heading.count || task.settings >= results.heading.settings.size() ||
            task.transmitter % results.shard.count != results.shard.number - 1) {
            first.refuse("of a trial that is not of this shard");
        }
    }
    if (!isRunning) {
        requireWhole(results, file);
    }
    return results;
}

} // namespace Radio::Laboratory
