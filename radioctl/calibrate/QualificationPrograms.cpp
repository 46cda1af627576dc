#include "radioctl/calibrate/QualificationPrograms.h"

#include "radio/board/BoardCheck.h"
#include "radio/board/BoardNames.h"
#include "radio/calibration/QualificationJson.h"
#include "radio/calibration/Reservations.h"
#include "radio/text/Words.h"
#include "radioctl/bench/HardwareUse.h"
#include "radioctl/calibrate/QualificationReport.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/Output.h"

#include <iostream>

namespace Radio::Calibration {

namespace {

void report(const QualificationOptions& options, const Board& board, const ChannelQualification& found) {
    const Qualification& result = found.result;
    if (options.json) {
        Json event = qualificationEvent(result);
        event["khz"] = found.frequency;
        event["degrees"] = found.temperature;
        event["detector"] = found.detector;
        writeJsonLine(std::cout, event);
        return;
    }
    std::cout << harmless(board.name) << " (" << harmless(board.file.string()) << ")\nChannel "
              << options.order.wishes.channel << ": " << found.frequency << " kHz, " << found.temperature
              << " degrees, by " << harmless(found.detector) << "\n"
              << qualificationText(result) << counted(result.taken, "reading") << " taken.\n"
              << std::flush;
}

int qualifyOn(const Board& board, ChannelQualifier& qualifier, const QualificationOptions& options) {
    const Interrupt interrupt;
    HardwareUse use(board, options.hardware, std::cout, options.json);
    CalibrationBench bench;
    if (use.isReal()) {
        use.hardware()->setForced(options.isForced);
        bench = benchOf(*use.hardware());
    }
    const ChannelQualification found = qualifier.run([&] { return interrupt.signal() == 0; }, bench);
    const bool hasLeft = use.leave();
    if (found.result.isInterrupted) {
        return ExitCode::signalBase + interrupt.signal();
    }
    report(options, board, found);
    return found.result.isGood() && hasLeft ? ExitCode::good : ExitCode::outsideLimits;
}

int qualifyChannel(const QualificationOptions& options) {
    const Board board = loadUsableBoard(options.board);
    const int channel = options.order.wishes.channel;
    if (findChannel(board, channel) == nullptr) {
        return refuse(noSuchChannel(board, channel), options.json, ExitCode::wrongCommandLine);
    }
    ChannelQualifier qualifier(board, options.order);
    const std::string reservation = reservationAgainst(board, qualifier.settings(), false);
    if (options.hardware.hardware && !options.isForced && !reservation.empty()) {
        return refuse(harmless(board.file.string()) + ": " + reservation + "; --force measures all the same",
                      options.json, ExitCode::unusableInput);
    }
    return qualifyOn(board, qualifier, options);
}

} // namespace

int runQualification(const QualificationOptions& options) {
    return refusing(options.json, [&] { return qualifyChannel(options); });
}

} // namespace Radio::Calibration
