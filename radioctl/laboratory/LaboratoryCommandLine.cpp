#include "radioctl/laboratory/LaboratoryCommandLine.h"

#include "radio/laboratory/LaboratoryReader.h"
#include "radio/text/Numbers.h"
#include "radio/text/Words.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/report/Output.h"

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
      m_merge(m_laboratory.command("merge", "Put the results of all shards together")) {
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
}

std::string LaboratoryCommandLine::takeOptions() {
    if (m_merge.isCalled()) {
        for (const char* const option : {"FILE", "--jobs", "--shard", "--out", "--html", "--restart"}) {
            if (m_laboratory.has(option)) {
                return std::string(option) + " in front of merge, expected it behind it or not at all";
            }
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
    const std::string wrong = takeOptions();
    if (!wrong.empty()) {
        return refuse(wrong, m_mergeOptions.json, ExitCode::wrongCommandLine);
    }
    return m_merge.isCalled() ? runMerge(m_mergeOptions) : runLaboratory(m_options);
}

} // namespace Radio::Laboratory
