#include "radioctl/thermal/ThermalPrograms.h"

#include "radio/board/Board.h"
#include "radio/board/BoardCheck.h"
#include "radio/files/AtomicFile.h"
#include "radio/files/InputError.h"
#include "radio/files/Json.h"
#include "radio/session/BootedRadio.h"
#include "radio/text/Words.h"
#include "radio/thermal/ThermalLog.h"
#include "radio/thermal/ThermalVerdict.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/keep/Keeper.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/page/Gnuplot.h"
#include "radioctl/report/Output.h"
#include "radioctl/report/Progress.h"
#include "radioctl/thermal/ThermalPage.h"
#include "radioctl/thermal/ThermalReport.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

namespace Radio::Thermal {

namespace {

/** What is wrong with the channels of --carrier; empty when nothing is. Throws InputError for a board without
 * any. */
std::string whyNoCarriers(const Board& board, const Carriers& carriers) {
    const std::vector<int> channels = compensatedChannels(board);
    for (const auto& [channel, carrier] : carriers) {
        if (std::find(channels.begin(), channels.end(), channel) == channels.end()) {
            std::vector<std::string> numbers;
            std::transform(channels.begin(), channels.end(), std::back_inserter(numbers),
                           [](int number) { return std::to_string(number); });
            return "--carrier: " + board.file.string() + " has no channel " + std::to_string(channel) +
                   " with IQ compensation; it has: " + joined(numbers, ", ");
        }
    }
    return {};
}

/** Why what is written and what is read cannot all be meant; empty when it can. */
std::string whyNoFiles(const ThermalOptions& options) {
    struct Named {
        const char* name;
        const std::string& file;
    };
    const std::array<Named, 4> files{{{"the board", options.board},
                                      {"the log", options.log},
                                      {"--html", options.html},
                                      {"--csv", options.csv}}};
    for (std::size_t output = 2; output < files.size(); ++output) {
        if (files[output].file.empty() || files[output].file == "-") {
            continue;
        }
        for (std::size_t other = 0; other < output; ++other) {
            if (!files[other].file.empty() && isSameFile(files[output].file, files[other].file)) {
                return std::string(files[output].name) + ": " + files[output].file + " is " +
                       files[other].name + ", expected a file of its own";
            }
        }
    }
    return {};
}

/** The replay as the store keeps it: the worst figures of each channel, and the limits they were held
 * against.
 */
void record(const ReplayResult& result, const Verdict& verdict, Store::Run& run) {
    run.measurements = measurementsOf(verdict);
    Store::Measurement complaints{"complaints"};
    complaints.value = static_cast<double>(result.totals.complaints);
    complaints.highest = 0.0;
    complaints.isHeld = result.totals.complaints == 0;
    run.measurements.push_back(complaints);
    for (const ChannelTotals& channel : result.totals.channels) {
        if (!channel.worst) {
            continue;
        }
        const WorstFigures& worst = *channel.worst;
        for (const auto& [name, figure] :
             {std::pair("worst_image_without", &worst.imageWithout), std::pair("worst_image", &worst.image),
              std::pair("worst_leakage_without", &worst.leakageWithout),
              std::pair("worst_leakage", &worst.leakage)}) {
            Store::Measurement measurement{name, "dBc"};
            measurement.channel = channel.channel;
            if (channel.carrier) {
                measurement.frequency = *channel.carrier;
            }
            measurement.temperature = figure->degrees;
            measurement.value = figure->dBc;
            run.measurements.push_back(measurement);
        }
    }
}

/** One replay from the command line to the exit code. */
class ThermalRun {
public:
    explicit ThermalRun(const ThermalOptions& options) : m_options(options) {}

    /** Throws InputError for what cannot be used, and RadioError when the radio does not come up. */
    int run();

private:
    int replayOn(const Subject& subject);
    std::unique_ptr<ThermalReport> makeReport(const Subject& subject) const;
    void openFiles(const Subject& subject);
    /** Puts the files in their places, unless the user wants to leave. Gives what went wrong, or nothing. */
    std::string commit(const ReplayTotals& totals, const Verdict& verdict);

    const ThermalOptions& m_options;
    const Interrupt m_interrupt;
    Keeper m_keeper{m_options.keep, m_options.json, m_options.csv == "-" ? std::cerr : std::cout};
    std::optional<AtomicFile> m_csvFile;
    std::optional<AtomicFile> m_htmlFile;
    std::optional<ThermalCsv> m_csv;
    std::optional<ThermalPage> m_page;
};

int ThermalRun::run() {
    std::string wrong = whyNoFiles(m_options);
    if (!wrong.empty()) {
        return refuse(wrong, m_options.json, ExitCode::wrongCommandLine);
    }
    const Board board = loadUsableBoard(m_options.board);
    wrong = whyNoCarriers(board, m_options.carriers);
    if (!wrong.empty()) {
        return refuse(wrong, m_options.json, ExitCode::wrongCommandLine);
    }
    const ThermalLog log = readThermalLog(m_options.log);
    return replayOn({board, m_options.log, log, m_options.station, Store::utcNow(), RADIOCTL_VERSION});
}

std::unique_ptr<ThermalReport> ThermalRun::makeReport(const Subject& subject) const {
    if (m_options.json) {
        return std::make_unique<ThermalJson>(std::cout, subject);
    }
    // With the timeline on standard output, what a person reads goes elsewhere.
    return std::make_unique<ThermalText>(m_options.csv == "-" ? std::cerr : std::cout, subject);
}

void ThermalRun::openFiles(const Subject& subject) {
    if (!m_options.html.empty()) {
        Page::requireGnuplot();
        m_htmlFile.emplace(m_options.html);
        m_page.emplace(subject);
    }
    if (m_options.csv == "-") {
        m_csv.emplace(std::cout);
    } else if (!m_options.csv.empty()) {
        m_csvFile.emplace(m_options.csv);
        m_csv.emplace(m_csvFile->stream());
    }
}

std::string ThermalRun::commit(const ReplayTotals& totals, const Verdict& verdict) {
    try {
        if (m_page) {
            m_page->write(m_htmlFile->stream(), totals, verdict);
        }
        // Ctrl-C reaches gnuplot too, which then has drawn nothing.
        if (m_interrupt.signal() == 0 && m_csvFile) {
            m_csvFile->commit();
        }
        if (m_interrupt.signal() == 0 && m_htmlFile) {
            m_htmlFile->commit();
        }
        return {};
    } catch (const InputError& error) {
        return m_interrupt.signal() == 0 ? error.what() : "";
    }
}

int ThermalRun::replayOn(const Subject& subject) {
    openFiles(subject);
    const std::unique_ptr<ThermalReport> report = makeReport(subject);
    std::vector<ReplayListener*> listeners{report.get()};
    if (m_csv) {
        listeners.push_back(&*m_csv);
    }
    if (m_page) {
        listeners.push_back(&*m_page);
    }
    BootedRadio booted(subject.board);
    booted.requireUp();
    ReplayResult result;
    {
        Progress progress(subject.log.size(), "samples");
        result = replay(booted, subject.board, subject.log, m_options.carriers, listeners,
                        [&](std::uint64_t done) {
                            progress.update(done);
                            return m_interrupt.signal() == 0;
                        });
    }
    ReplayEnd end;
    end.seconds = result.seconds;
    end.verdict = verdictOn(result, subject.board.limits);
    const std::string notWritten = result.isComplete ? commit(result.totals, end.verdict) : "";
    end.signal = m_interrupt.signal();
    const bool isGood = result.totals.complaints == 0 && end.verdict.kind() != VerdictKind::fail;
    end.exitCode = end.signal != 0       ? ExitCode::signalBase + end.signal
                   : !notWritten.empty() ? ExitCode::unusableInput
                   : isGood              ? ExitCode::good
                                         : ExitCode::outsideLimits;
    report->finished(result.totals, end);
    if (m_keeper.isWanted() && result.isComplete && end.signal == 0) {
        Store::Run run = m_keeper.begin("thermal", subject.board);
        record(result, end.verdict, run);
        run.verdict = isGood ? end.verdict.kind() : VerdictKind::fail;
        run.exitCode = end.exitCode;
        run.settings = toText({{"log", m_options.log}, {"samples", result.totals.samples}});
        addFile(run, "page", m_options.html);
        end.exitCode = m_keeper.keep(std::move(run), subject.board.file.parent_path(), end.exitCode);
    }
    if (!notWritten.empty()) {
        return refuse(notWritten, m_options.json, end.exitCode);
    }
    return end.exitCode;
}

} // namespace

int runThermal(const ThermalOptions& options) {
    return refusing(options.json, [&] { return ThermalRun(options).run(); });
}

} // namespace Radio::Thermal
