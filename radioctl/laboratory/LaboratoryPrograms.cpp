#include "radioctl/laboratory/LaboratoryPrograms.h"

#include "radio/files/AtomicFile.h"
#include "radio/files/Backup.h"
#include "radio/files/InputError.h"
#include "radio/laboratory/LaboratoryReader.h"
#include "radio/laboratory/Workers.h"
#include "radio/text/Words.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/laboratory/LaboratoryPage.h"
#include "radioctl/laboratory/LaboratoryReport.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/page/Gnuplot.h"
#include "radioctl/report/Output.h"
#include "radioctl/report/Progress.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <thread>

namespace Radio::Laboratory {

namespace {

namespace fs = std::filesystem;

/** lab.toml: lab.results, or lab.3-of-8.results. */
fs::path resultsFor(const LaboratoryOptions& options) {
    if (!options.out.empty()) {
        return options.out;
    }
    fs::path file = options.file;
    file.replace_extension();
    if (options.isShard) {
        file += "." + std::to_string(options.shard.number) + "-of-" + std::to_string(options.shard.count);
    }
    return file += ".results";
}

/** What all processes took that are over. */
double processorSeconds() {
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    rusage usage{};
    static_cast<void>(getrusage(RUSAGE_CHILDREN, &usage));
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::unique_ptr<LaboratoryReport> reportFor(bool json) {
    if (json) {
        return std::make_unique<LaboratoryJson>(std::cout);
    }
    return std::make_unique<LaboratoryText>(std::cout);
}

void writeHtml(const std::string& place, const Results& results, const Study& study) {
    if (!place.empty()) {
        AtomicFile file(place);
        writePage(file.stream(), results, study);
        file.commit();
    }
}

/** One laboratory from the command line to the exit code. */
class Program {
public:
    explicit Program(const LaboratoryOptions& options) : m_options(options), m_place(resultsFor(options)) {}

    int run();

private:
    /** What is there already of this laboratory, all of it. Throws InputError for what is of something else.
     */
    std::optional<Results> found(const Heading& heading) const;
    /** Nothing when a signal came. */
    std::optional<Results> carryOut(const Description& laboratory, const Heading& heading);
    void putAway(const fs::path& file) const;

    const LaboratoryOptions& m_options;
    const fs::path m_place;
    const Interrupt m_interrupt;
    LaboratoryEnd m_end;
};

int Program::run() {
    const Description laboratory = loadLaboratory(m_options.file);
    for (const auto& [name, file] : {std::pair("--out", m_place), {"--html", fs::path(m_options.html)}}) {
        for (const fs::path& read : {laboratory.file, laboratory.board.file}) {
            if (!file.empty() && isSameFile(file, read)) {
                return refuse(std::string(name) + ": " + harmless(file.string()) +
                                  " is what the laboratory reads, expected another file",
                              m_options.json, ExitCode::wrongCommandLine);
            }
        }
    }
    if (!m_options.html.empty()) {
        if (isSameFile(m_place, m_options.html)) {
            return refuse("--html: the results are to be there, expected another file", m_options.json,
                          ExitCode::wrongCommandLine);
        }
        Page::requireGnuplot();
    }
    requireWritable(m_place);
    requireWritable(m_options.html);
    const Heading heading = headingOf(laboratory, RADIOCTL_VERSION);
    const std::unique_ptr<LaboratoryReport> report = reportFor(m_options.json);
    report->begins(heading, m_options.isShard ? std::optional(m_options.shard) : std::nullopt,
                   tasksOf(heading, m_options.shard).size());
    m_end.results = m_place.string();
    std::optional<Results> results = m_options.restarts ? std::nullopt : found(heading);
    if (!results) {
        results = carryOut(laboratory, heading);
    }
    if (!results) {
        m_end.signal = m_interrupt.signal();
        m_end.exitCode = ExitCode::signalBase + m_end.signal;
        report->finished(m_end);
        return m_end.exitCode;
    }
    if (!m_options.isShard) {
        const Study study = studyOf(*results);
        writeHtml(m_options.html, *results, study);
        m_end.page = m_options.html;
        report->studied(*results, study);
        m_end.exitCode = study.isNoneGood ? ExitCode::outsideLimits : ExitCode::good;
    }
    report->finished(m_end);
    return m_end.exitCode;
}

std::optional<Results> Program::found(const Heading& heading) const {
    std::error_code none;
    if (!fs::is_regular_file(m_place, none) || fs::exists(runningFile(m_place), none)) {
        return std::nullopt;
    }
    Results results = readResults(m_place);
    if (headingLine(results.heading, results.shard) != headingLine(heading, m_options.shard)) {
        throw ChoiceError({m_place.string(), 0},
                          "of another laboratory file, board, shard or version, expected no other results "
                          "there",
                          "restart");
    }
    return results;
}

void Program::putAway(const fs::path& file) const {
    std::error_code none;
    if (fs::is_regular_file(file, none)) {
        const fs::path backup = moveToBackup(file);
        complain("what was in " + file.string() + " is now in " + backup.string());
    }
}

std::optional<Results> Program::carryOut(const Description& laboratory, const Heading& heading) {
    if (m_options.restarts) {
        putAway(m_place);
        putAway(runningFile(m_place));
    }
    RunningResults running(m_place, heading, m_options.shard);
    const std::vector<Task> all = tasksOf(heading, m_options.shard);
    Results results{heading, m_options.shard, running.known()};
    std::set<Task> done;
    for (const Trial& trial : results.trials) {
        done.insert(trial.task);
    }
    std::vector<Task> tasks;
    std::copy_if(all.begin(), all.end(), std::back_inserter(tasks),
                 [&done](const Task& task) { return done.count(task) == 0; });
    m_end.known = all.size() - tasks.size();
    m_end.jobs = m_options.jobs.value_or(std::max(1U, std::thread::hardware_concurrency()));
    Progress bar(all.size(), "calibrations");
    bar.beginAt(m_end.known);
    const auto start = std::chrono::steady_clock::now();
    const double before = processorSeconds();
    const bool isWhole = carryOutAll(laboratory, tasks, m_end.jobs,
                                     {[&](const Trial& trial) {
                                          running.add(trial);
                                          results.trials.push_back(trial);
                                          m_end.probes += trial.probes;
                                          ++m_end.made;
                                      },
                                      [&] {
                                          bar.update(results.trials.size());
                                          return m_interrupt.signal() == 0;
                                      }});
    m_end.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    m_end.processorSeconds = processorSeconds() - before;
    if (!isWhole) {
        return std::nullopt;
    }
    std::sort(results.trials.begin(), results.trials.end(),
              [](const Trial& one, const Trial& other) { return one.task < other.task; });
    AtomicFile file(m_place);
    file.stream() << textOf(results);
    file.commit();
    running.remove();
    return results;
}

} // namespace

int runLaboratory(const LaboratoryOptions& options) {
    return refusing(options.json, [&] { return Program(options).run(); });
}

int runMerge(const MergeOptions& options) {
    return refusing(options.json, [&] {
        for (const std::string& file : options.files) {
            for (const auto& [name, place] : {std::pair("--out", options.out), {"--html", options.html}}) {
                if (!place.empty() && isSameFile(place, file)) {
                    return refuse(std::string(name) + ": " + harmless(place) +
                                      " is one of the shards, expected another file",
                                  options.json, ExitCode::wrongCommandLine);
                }
            }
        }
        if (!options.html.empty()) {
            Page::requireGnuplot();
        }
        requireWritable(options.out);
        requireWritable(options.html);
        const Results results = merged({options.files.begin(), options.files.end()});
        const Study study = studyOf(results);
        if (!options.out.empty()) {
            AtomicFile file(options.out);
            file.stream() << textOf(results);
            file.commit();
        }
        writeHtml(options.html, results, study);
        const std::unique_ptr<LaboratoryReport> report = reportFor(options.json);
        report->begins(results.heading, std::nullopt, results.trials.size());
        report->studied(results, study);
        LaboratoryEnd end;
        end.results = options.out;
        end.page = options.html;
        end.exitCode = study.isNoneGood ? ExitCode::outsideLimits : ExitCode::good;
        report->finished(end);
        return end.exitCode;
    });
}

} // namespace Radio::Laboratory
