#include "radioctl/plan/PlanPrograms.h"

#include "radio/board/Board.h"
#include "radio/board/BoardCheck.h"
#include "radio/board/BoardNames.h"
#include "radio/files/AtomicFile.h"
#include "radio/plan/Audit.h"
#include "radio/session/BootedRadio.h"
#include "radioctl/bench/HardwareUse.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/plan/AuditReport.h"
#include "radioctl/plan/ExplanationReport.h"
#include "radioctl/report/Output.h"
#include "radioctl/report/Progress.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>

namespace Radio::Plan {

namespace {

/** Where the lines of --csv go: a file that is there when all is done, or standard output. */
class CsvOutput {
public:
    explicit CsvOutput(const std::string& place) {
        if (!place.empty() && place != "-") {
            m_file.emplace(place);
        }
        if (!place.empty()) {
            AuditCsv::writeHeading(stream());
        }
    }
    std::ostream& stream() { return m_file.has_value() ? m_file->stream() : std::cout; }
    void commit() {
        if (m_file.has_value()) {
            m_file->commit();
        }
    }

private:
    std::optional<AtomicFile> m_file;
};

/** Audits boards one after the other. */
class AuditRun {
public:
    explicit AuditRun(const AuditOptions& options) : m_options(options), m_csv(options.csv) {}

    int run();

private:
    int audit(const Board& board);
    std::unique_ptr<AuditReport> makeReport(const Board& board) const;

    const AuditOptions& m_options;
    const Interrupt m_interrupt;
    CsvOutput m_csv;
};

int AuditRun::run() {
    int worst = ExitCode::good;
    for (const std::string& file : m_options.boards) {
        worst = std::max(worst, refusing(m_options.json, [&] { return audit(loadUsableBoard(file)); }));
        if (m_interrupt.signal() != 0) {
            return ExitCode::signalBase + m_interrupt.signal();
        }
    }
    m_csv.commit();
    return worst;
}

std::unique_ptr<AuditReport> AuditRun::makeReport(const Board& board) const {
    if (m_options.json) {
        return std::make_unique<AuditJson>(std::cout, board);
    }
    // With the carriers on standard output, what a person reads goes elsewhere.
    return std::make_unique<AuditText>(m_options.csv == "-" ? std::cerr : std::cout, board);
}

int AuditRun::audit(const Board& board) {
    const std::uint64_t total = carriersToAudit(board);
    HardwareUse use(board, m_options.hardware, m_options.csv == "-" ? std::cerr : std::cout, m_options.json);
    BootedRadio booted(board, use.hardware());
    booted.requireUp();
    const std::unique_ptr<AuditReport> report = makeReport(board);
    AuditCsv csv(m_csv.stream(), board);
    std::vector<AuditListener*> listeners{report.get()};
    if (!m_options.csv.empty()) {
        listeners.push_back(&csv);
    }
    AuditResult result;
    {
        Progress progress(total);
        result = auditBoard(booted, board, listeners, [&](std::uint64_t done) {
            progress.update(done);
            return m_interrupt.signal() == 0;
        });
    }
    if (result.end == AuditEnd::phaseFailed) {
        booted.fail("the radio did not take a channel spacing");
    }
    AuditSummary summary;
    summary.signal = result.end == AuditEnd::stopped ? m_interrupt.signal() : 0;
    summary.seconds = result.seconds;
    summary.exitCode = summary.signal != 0   ? ExitCode::signalBase + summary.signal
                       : result.outside != 0 ? ExitCode::outsideLimits
                                             : ExitCode::good;
    if (!use.leave() && summary.exitCode == ExitCode::good) {
        summary.exitCode = ExitCode::outsideLimits;
    }
    report->finished(summary);
    return summary.exitCode;
}

} // namespace

int runExplain(const ExplainOptions& options) {
    return refusing(options.json, [&] {
        const Board board = loadUsableBoard(options.board);
        const ChannelDescription* const channel = findChannel(board, options.channel);
        if (channel == nullptr) {
            return refuse(noSuchChannel(board, options.channel), options.json, ExitCode::wrongCommandLine);
        }
        BootedRadio booted(board);
        booted.requireUp();
        const Explanation explanation = explain(booted, board, *channel, options.direction, options.carrier);
        (options.json ? writeJson : writeText)(std::cout, board, explanation);
        return explanation.isGood() ? ExitCode::good : ExitCode::outsideLimits;
    });
}

int runAudit(const AuditOptions& options) {
    for (const std::string& board : options.boards) {
        if (!options.csv.empty() && options.csv != "-" && isSameFile(options.csv, board)) {
            return refuse("--csv: " + options.csv + " is a board, expected a file of its own", options.json,
                          ExitCode::wrongCommandLine);
        }
    }
    return refusing(options.json, [&] { return AuditRun(options).run(); });
}

} // namespace Radio::Plan
