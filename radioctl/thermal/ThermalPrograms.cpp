#include "radioctl/thermal/ThermalPrograms.h"

#include "radio/board/Board.h"
#include "radio/board/BoardCheck.h"
#include "radio/files/AtomicFile.h"
#include "radio/files/InputError.h"
#include "radio/session/BootedRadio.h"
#include "radio/text/Words.h"
#include "radio/thermal/ThermalLog.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/page/Gnuplot.h"
#include "radioctl/report/ExitCode.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/Output.h"
#include "radioctl/report/Progress.h"
#include "radioctl/thermal/ThermalPage.h"
#include "radioctl/thermal/ThermalReport.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>

namespace Radio::Thermal {

namespace {

/** Reads a board on which every channel finds what it needs, and at least one follows the temperature. */
Board loadCompensatedBoard(const std::string& file) {
    Board board = loadUsableBoard(file);
    if (std::none_of(board.channels.begin(), board.channels.end(),
                     [](const ChannelDescription& channel) { return channel.iqCompensation; })) {
        throw InputError({file, 0}, "nothing to replay; expected \"iq_compensation = true\" in at least one "
                                    "[[channel]]");
    }
    return board;
}

/** What is wrong with the channels of --carrier; empty when nothing is. */
std::string whyNoCarriers(const Board& board, const Carriers& carriers) {
    std::vector<std::string> numbers;
    for (const ChannelDescription& channel : board.channels) {
        if (channel.iqCompensation) {
            numbers.push_back(std::to_string(channel.number));
        }
    }
    for (const auto& [channel, carrier] : carriers) {
        if (std::find(numbers.begin(), numbers.end(), std::to_string(channel)) == numbers.end()) {
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

/** One replay from the command line to the exit code. */
class ThermalRun {
public:
    explicit ThermalRun(const ThermalOptions& options) : m_options(options) {}

    /** Throws InputError for what cannot be used. */
    int run();

private:
    int replay(const Subject& subject);
    std::unique_ptr<ThermalReport> makeReport(const Subject& subject) const;
    void openFiles(const Subject& subject);
    bool play(Replay& replay, const ThermalLog& log) const;
    /** Puts the files in their places, unless the user wants to leave. Gives what went wrong, or nothing. */
    std::string commit(const ReplayTotals& totals);

    const ThermalOptions& m_options;
    const Interrupt m_interrupt;
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
    const Board board = loadCompensatedBoard(m_options.board);
    wrong = whyNoCarriers(board, m_options.carriers);
    if (!wrong.empty()) {
        return refuse(wrong, m_options.json, ExitCode::wrongCommandLine);
    }
    const ThermalLog log = readThermalLog(m_options.log);
    return replay({board, m_options.log, log});
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

bool ThermalRun::play(Replay& replay, const ThermalLog& log) const {
    Progress progress(log.size(), "samples");
    return replay.play(log, [&](std::uint64_t done) {
        progress.update(done);
        return m_interrupt.signal() == 0;
    });
}

std::string ThermalRun::commit(const ReplayTotals& totals) {
    try {
        if (m_page) {
            m_page->write(m_htmlFile->stream(), totals);
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

int ThermalRun::replay(const Subject& subject) {
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
    if (!booted.isUp()) {
        const std::vector<std::string>& complaints = booted.complaints();
        return refuse(subject.board.file.string() + ": the radio did not boot" +
                          (complaints.empty() ? "" : ": " + complaints.front()),
                      m_options.json, ExitCode::notBooted);
    }
    Carriers carriers = m_options.carriers;
    carriers.merge(rasterCarriers(subject.board));
    const auto start = std::chrono::steady_clock::now();
    Replay replay(booted, subject.board, carriers, listeners);
    const bool isComplete = play(replay, subject.log);
    ReplayEnd end;
    end.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const std::string notWritten = isComplete ? commit(replay.totals()) : "";
    end.signal = m_interrupt.signal();
    end.exitCode = end.signal != 0                   ? ExitCode::signalBase + end.signal
                   : !notWritten.empty()             ? ExitCode::unusableInput
                   : replay.totals().complaints != 0 ? ExitCode::outsideLimits
                                                     : ExitCode::good;
    report->finished(replay.totals(), end);
    if (!notWritten.empty()) {
        return refuse(notWritten, m_options.json, end.exitCode);
    }
    return end.exitCode;
}

} // namespace

int runThermal(const ThermalOptions& options) {
    try {
        return ThermalRun(options).run();
    } catch (const InputError& error) {
        return refuse(error.what(), options.json, ExitCode::unusableInput);
    }
}

} // namespace Radio::Thermal
