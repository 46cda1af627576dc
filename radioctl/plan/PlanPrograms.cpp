#include "radioctl/plan/PlanPrograms.h"

#include "radio/board/Board.h"
#include "radio/board/BoardCheck.h"
#include "radio/board/BoardNames.h"
#include "radio/files/AtomicFile.h"
#include "radio/plan/Audit.h"
#include "radio/session/BootedRadio.h"
#include "radio/text/Words.h"
#include "radioctl/bench/HardwareUse.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/keep/Keeper.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/plan/AuditReport.h"
#include "radioctl/plan/ExplanationReport.h"
#include "radioctl/report/Output.h"
#include "radioctl/report/Progress.h"

#include <algorithm>
#include <cmath>
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

/** The audit as the store keeps it: of each row how far a carrier is off, and of all how many are outside. */
Store::Run recordOf(const Board& board, const AuditResult& result, bool isHardware, int exitCode,
                    const Keeper& keeper) {
    Store::Run run = keeper.begin("audit", board);
    run.isHardware = isHardware;
    run.verdict = exitCode == ExitCode::good ? VerdictKind::pass : VerdictKind::fail;
    run.exitCode = exitCode;
    Store::Measurement outside{"carriers_outside"};
    outside.value = static_cast<double>(result.outside);
    outside.highest = 0.0;
    outside.isHeld = result.outside == 0;
    run.measurements.push_back(outside);
    const auto limit = static_cast<double>(board.limits.carrierError.value_or(defaultCarrierError));
    for (const RowResult& row : result.rows) {
        Store::Measurement error{
            "carrier_error " + std::string(row.row.carriers.transmit ? "tx" : "rx") + " " + row.row.raster +
                (row.row.channelSpacing ? " " + std::to_string(*row.row.channelSpacing) : ""),
            "Hz"};
        error.channel = row.row.channel.number;
        if (row.worstError) {
            error.frequency = row.worstCarrier;
            error.value = static_cast<double>(*row.worstError);
            error.isHeld = std::abs(*error.value) <= limit;
        }
        error.lowest = -limit;
        error.highest = limit;
        run.measurements.push_back(error);
    }
    return run;
}

/** Audits boards one after the other. */
class AuditRun {
public:
    explicit AuditRun(const AuditOptions& options) : m_options(options), m_csv(options.csv) {}

    int run();

private:
    int audit(const Board& board);
    bool mayGoOn(HardwareUse& use) const;
    std::unique_ptr<AuditReport> makeReport(const Board& board) const;

    const AuditOptions& m_options;
    const Interrupt m_interrupt;
    CsvOutput m_csv;
    /** Not every carrier was audited. */
    bool m_isCutShort = false;
};

int AuditRun::run() {
    int worst = ExitCode::good;
    for (const std::string& file : m_options.boards) {
        worst = std::max(worst, refusing(m_options.json, [&] { return audit(loadUsableBoard(file)); }));
        if (m_interrupt.signal() != 0) {
            return ExitCode::signalBase + m_interrupt.signal();
        }
    }
    if (!m_isCutShort) {
        m_csv.commit();
    }
    return worst;
}

std::unique_ptr<AuditReport> AuditRun::makeReport(const Board& board) const {
    if (m_options.json) {
        return std::make_unique<AuditJson>(std::cout, board);
    }
    // With the carriers on standard output, what a person reads goes elsewhere.
    return std::make_unique<AuditText>(m_options.csv == "-" ? std::cerr : std::cout, board);
}

/** What nobody reads, or no hardware gets, is not worth the rest of the carriers. */
bool AuditRun::mayGoOn(HardwareUse& use) const {
    static_cast<void>(use.poll());
    return m_interrupt.signal() == 0 && use.lostDevice().empty() && (!use.isReal() || std::cout.good());
}

int AuditRun::audit(const Board& board) {
    Keeper keeper(m_options.keep, m_options.json, m_options.csv == "-" ? std::cerr : std::cout);
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
        const auto goOn = [&](std::uint64_t done) {
            progress.update(done);
            return mayGoOn(use);
        };
        result = use.isReal() ? auditBoard(booted, board, listeners, goOn, 1)
                              : auditBoard(booted, board, listeners, goOn);
    }
    m_isCutShort |= result.end == AuditEnd::stopped;
    if (result.end == AuditEnd::phaseFailed) {
        booted.fail("the radio did not take a channel spacing");
    }
    AuditSummary summary;
    summary.signal = result.end == AuditEnd::stopped ? m_interrupt.signal() : 0;
    summary.seconds = result.seconds;
    const bool isLost = !use.lostDevice().empty();
    summary.exitCode = summary.signal != 0             ? ExitCode::signalBase + summary.signal
                       : isLost || result.outside != 0 ? ExitCode::outsideLimits
                                                       : ExitCode::good;
    if (!use.leave() && summary.exitCode == ExitCode::good) {
        summary.exitCode = ExitCode::outsideLimits;
    }
    summary.isCutShort = result.end == AuditEnd::stopped;
    report->finished(summary);
    if (keeper.isWanted() && result.end == AuditEnd::complete) {
        summary.exitCode = keeper.keep(recordOf(board, result, use.isReal(), summary.exitCode, keeper),
                                       board.file.parent_path(), summary.exitCode);
    }
    return isLost && summary.signal == 0
               ? refuse("the connection to " + harmless(use.lostDevice()) + " was lost", m_options.json,
                        summary.exitCode)
               : summary.exitCode;
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
