#include "radioctl/tables/TablesPrograms.h"

#include "radio/board/Board.h"
#include "radio/board/BoardCheck.h"
#include "radio/board/BoardFile.h"
#include "radio/board/BoardNames.h"
#include "radio/session/BootedRadio.h"
#include "radio/tables/Corrections.h"
#include "radio/tables/Diff.h"
#include "radio/tables/Lint.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/report/FindingReport.h"
#include "radioctl/report/Output.h"
#include "radioctl/tables/DiffReport.h"
#include "radioctl/tables/WhyReport.h"

#include <algorithm>
#include <iostream>

namespace Radio::Tables {

namespace {

int explainOn(const Board& board, const WhyOptions& options) {
    const ChannelDescription* const channel = findChannel(board, options.channel);
    if (channel == nullptr) {
        return refuse(noSuchChannel(board, options.channel), options.json, ExitCode::wrongCommandLine);
    }
    BootedRadio booted(board);
    booted.requireUp();
    const Reason reason = explainCorrections(booted, board, *channel, options.carrier, options.temperature);
    if (options.json) {
        writeJson(std::cout, board, reason);
    } else {
        writeText(std::cout, board, reason);
    }
    return reason.disagreements.empty() ? ExitCode::good : ExitCode::outsideLimits;
}

} // namespace

int runLint(const LintOptions& options) {
    int worst = ExitCode::good;
    for (const std::string& file : options.files) {
        worst = std::max(
            worst, refusing(options.json, [&] { return showFindings(file, lintFile(file), options.json); }));
    }
    return worst;
}

int runDiff(const DiffOptions& options) {
    return refusing(options.json, [&] {
        const Source before = readSource(options.before);
        const Source after = readSource(options.after);
        const std::optional<Board> named =
            options.board.empty() ? std::nullopt : std::optional(loadBoard(options.board));
        const Difference difference = compare(before, after, modelOf(named, before, after), options.channel);
        if (options.json) {
            writeJson(std::cout, difference, options.before, options.after);
        } else {
            writeText(std::cout, difference, options.before, options.after, options.all);
        }
        return difference.isThere() ? ExitCode::different : ExitCode::good;
    });
}

int runWhy(const WhyOptions& options) {
    return refusing(options.json, [&] { return explainOn(loadUsableBoard(options.board), options); });
}

} // namespace Radio::Tables
