#include "radioctl/laboratory/LaboratoryCommandLine.h"

#include "radio/laboratory/LaboratoryReader.h"
#include "radio/text/Numbers.h"
#include "radio/text/Words.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/report/Output.h"

#include <limits>
#include <optional>

namespace Radio::Laboratory {

namespace {

constexpr std::int64_t mostJobs = 1024;

/** "3/8". */
std::optional<Shard> shardFrom(const std::string& word) {
    const std::size_t slash = word.find('/');
    if (slash == std::string::npos) {
        return std::nullopt;
    }
    const auto number = parseInteger(word.substr(0, slash));
    const auto count = parseInteger(word.substr(slash + 1));
    if (!number || !count || *number < 1 || *count < *number || *count > mostTransmitters) {
        return std::nullopt;
    }
    return Shard{static_cast<std::uint32_t>(*number), static_cast<std::uint32_t>(*count)};
}

std::string whyNoShard(const std::string& word) {
    return shardFrom(word) ? ""
                           : inQuotes(word) + ", expected the number of a shard and how many there are, "
                                              "such as 3/8";
}

} // namespace

LaboratoryCommandLine::LaboratoryCommandLine(CommandLine::Command program)
    : m_laboratory(program.command(
          "laboratory",
          "Try settings of the calibration on transmitters\ndrawn at random, and say which are best")),
      m_merge(m_laboratory.command("merge", "Put the results of all shards together")),
      m_units(m_laboratory.command(
          "units",
          "Make transmitters like units that were once\nmeasured, from runs, journals and recordings")) {
    m_laboratory.option("FILE", m_options.file, "Laboratory file (TOML)").file({".toml"});
    m_laboratory
        .option("--jobs", m_options.jobs,
                "So many processes at once; otherwise as many as\nthere are processors")
        .named("N")
        .within(1, mostJobs);
    m_laboratory
        .option("--shard", m_shard,
                "Only part K of N, for one machine of several;\n\"laboratory merge\" has the whole")
        .named("K/N")
        .check(whyNoShard);
    m_laboratory
        .option("--out", m_options.out,
                "Where the results go; otherwise FILE.results,\nof a shard FILE.K-of-N.results")
        .file();
    m_laboratory.option("--html", m_options.html, "Write a page with plots (needs gnuplot)").file();
    m_laboratory.flag("--restart", m_options.restarts,
                      "Begin anew, whatever results there are; they\nare kept as a backup");
    m_laboratory.json(m_options.json);
    m_merge.option("FILE", m_mergeOptions.files, "Results of one shard, each once")
        .required()
        .file({".results"});
    m_merge.option("--out", m_mergeOptions.out, "Where the results of the whole go").file();
    m_merge.option("--html", m_mergeOptions.html, "Write a page with plots (needs gnuplot)").file();
    m_merge.json(m_mergeOptions.json);
    addUnits();
}

void LaboratoryCommandLine::addUnits() {
    constexpr int mostChannels = std::numeric_limits<int>::max();
    Store::Selection& selection = m_unitsOptions.selection;
    m_units.option("BOARD", m_unitsOptions.board, "Board file of the design").required().file({".toml"});
    m_units
        .option("FILE", m_unitsOptions.files,
                "Journals of calibrations, and recordings of\nsearches that the library made")
        .file({".journal", ".rec"});
    m_units.option("--channel", m_unitsOptions.channel, "The radio channel")
        .required()
        .named("N")
        .within(0, mostChannels);
    m_units.option("--out", m_unitsOptions.out, "Where the units go").required().file();
    m_units
        .option("--store", m_unitsOptions.store,
                "Also of the calibrations in this store:\nsqlite:FILE, postgresql://USER@HOST/DATABASE or "
                "default")
        .named("URL")
        .check(Store::whyNoAddress);
    m_units.option("--serial", selection.serial, "Of the store runs of this unit alone").named("TEXT");
    m_units.option("--station", selection.station, "Of this station").named("TEXT");
    m_units.option("--from", selection.from, "That began on this day or later, such as\n2026-03-01")
        .named("DAY")
        .check(Store::whyNoDay);
    m_units.option("--to", selection.to, "That began on this day or before")
        .named("DAY")
        .check(Store::whyNoDay);
    m_units.json(m_unitsOptions.json);
}

std::string LaboratoryCommandLine::takeOptions() {
    if (m_merge.isCalled() || m_units.isCalled()) {
        for (const char* const option : {"FILE", "--jobs", "--shard", "--out", "--html", "--restart"}) {
            if (m_laboratory.has(option)) {
                return std::string(option) + " in front of " + (m_merge.isCalled() ? "merge" : "units") +
                       ", expected it behind it or not at all";
            }
        }
        if (m_units.isCalled() && m_unitsOptions.store.empty()) {
            for (const char* const option : {"--serial", "--station", "--from", "--to"}) {
                if (m_units.has(option)) {
                    return std::string(option) + " chooses runs of a store, expected --store with it";
                }
            }
            return m_unitsOptions.files.empty() ? "FILE or --store is required: where units come from" : "";
        }
        return {};
    }
    if (m_options.file.empty()) {
        return "FILE is required";
    }
    if (!m_shard.empty()) {
        m_options.shard = *shardFrom(m_shard);
        m_options.isShard = true;
        if (!m_options.html.empty()) {
            return "--html: not together with --shard; \"laboratory merge\" writes the page of the whole";
        }
    }
    return {};
}

int LaboratoryCommandLine::run(bool json) {
    m_options.json |= json;
    m_mergeOptions.json |= json || m_options.json;
    m_unitsOptions.json |= json || m_options.json;
    const std::string wrong = takeOptions();
    if (!wrong.empty()) {
        return refuse(wrong, m_mergeOptions.json || m_unitsOptions.json, ExitCode::wrongCommandLine);
    }
    if (m_units.isCalled()) {
        return runUnits(m_unitsOptions);
    }
    return m_merge.isCalled() ? runMerge(m_mergeOptions) : runLaboratory(m_options);
}

} // namespace Radio::Laboratory
