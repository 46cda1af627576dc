#include "radio/files/AtomicFile.h"
#include "radio/files/FileWait.h"
#include "radioctl/calibrate/CalibrationCommandLine.h"
#include "radioctl/calibrate/QualificationCommandLine.h"
#include "radioctl/check/CheckCommandLine.h"
#include "radioctl/completion/CompletionCommandLine.h"
#include "radioctl/completion/CompletionWords.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/console/PatientOutput.h"
#include "radioctl/describe/DescribeCommandLine.h"
#include "radioctl/laboratory/LaboratoryCommandLine.h"
#include "radioctl/new/NewCommandLine.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/options/ExitCodes.h"
#include "radioctl/options/Values.h"
#include "radioctl/plan/PlanCommandLine.h"
#include "radioctl/record/RecordCommandLine.h"
#include "radioctl/replay/ReplayCommandLine.h"
#include "radioctl/report/Output.h"
#include "radioctl/run/RunCommandLine.h"
#include "radioctl/serve/ServeCommandLine.h"
#include "radioctl/store/StoreCommandLine.h"
#include "radioctl/tables/TablesCommandLine.h"
#include "radioctl/thermal/ThermalCommandLine.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <exception>
#include <iostream>
#include <new>

namespace Radio {

namespace {

/** Reads the command line and does what it says; gives the exit code. */
int runCommandLine(int argumentCount, const char* const* arguments) {
    CommandLine::Parser parser(
        "Boots a described radio, tunes it and shows every value that reaches its\nhardware.", "radioctl",
        "radioctl " RADIOCTL_VERSION);
    bool json = false;
    CommandLine::Command program = parser.top();
    program.json(json);
    RunCommandLine run(program);
    NewCommandLine create(program);
    CheckCommandLine check(program);
    Plan::PlanCommandLine plan(program);
    Thermal::ThermalCommandLine thermal(program);
    Calibration::QualificationCommandLine qualification(program);
    Calibration::CalibrationCommandLine calibration(program);
    Laboratory::LaboratoryCommandLine laboratory(program);
    Serving::ServeCommandLine serve(program);
    Tables::TablesCommandLine tables(program);
    Recordings::RecordCommandLine record(program);
    Replaying::ReplayCommandLine replay(program);
    Describing::DescribeCommandLine describe(program);
    Store::StoreCommandLine store(program);
    CompletionCommandLine completion(program);
    parser.endHelpWith(exitCodeHelp);

    if (asksForCompletionWords(argumentCount, arguments)) {
        return printCompletionWords(parser, argumentCount, arguments);
    }
    if (const auto isGood = parser.parse(withUnitsJoined(argumentCount, arguments))) {
        return *isGood ? ExitCode::good : ExitCode::wrongCommandLine;
    }
    const std::array<CommandLine::Verb*, 15> verbs{
        &run,   &create, &check,  &plan,   &thermal,  &qualification, &calibration, &laboratory,
        &serve, &tables, &record, &replay, &describe, &store,         &completion};
    for (CommandLine::Verb* const verb : verbs) {
        if (verb->isCalled()) {
            return verb->run(json);
        }
    }
    return ExitCode::wrongCommandLine;
}

/**
 * What is opened next must not become the standard output or error of a program that was started without
 * them: a message would be written into it. What was closed stays what cannot be read or written.
 */
void occupyStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) == -1) {
            // The lowest that is free, which is this one.
            static_cast<void>(open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
        }
    }
}

} // namespace
} // namespace Radio

int main(int argc, char** argv) {
    Radio::occupyStandardDescriptors();
    // "radioctl ... | head" is to end quietly, also when whoever started it ignores broken pipes.
    static_cast<void>(std::signal(SIGPIPE, SIG_DFL));
    // A file that may not become larger is to be told as a full disk is, and hardware left as usual.
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    // How a program ended that this one has started is to be learnt, also when whoever started it asks not to
    // be told.
    static_cast<void>(std::signal(SIGCHLD, SIG_DFL));
    Radio::setFileWait(&Radio::waitForFileOrSignal);
    Radio::setFileRemark(&Radio::warnOnce);
    // As long as signals are held back, nobody who does not read is waited for.
    const Radio::PatientOutput errors(std::cerr, STDERR_FILENO);
    const Radio::PatientOutput output(std::cout, STDOUT_FILENO);
    try {
        return Radio::checkedOutput(Radio::runCommandLine(argc, argv));
    } catch (const std::bad_alloc&) {
        Radio::complain("needs more memory than there is");
        return Radio::ExitCode::unusableInput;
    } catch (const std::exception& error) {
        Radio::complain(error.what());
        return Radio::ExitCode::unusableInput;
    }
}
