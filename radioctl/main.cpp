#include "radioctl/CommandLine.h"
#include "radioctl/report/ExitCode.h"
#include "radioctl/report/Output.h"

#include <csignal>
#include <exception>
#include <iostream>

int main(int argc, char** argv) {
    // "radioctl ... | head" is to end quietly, also when whoever started it ignores broken pipes.
    static_cast<void>(std::signal(SIGPIPE, SIG_DFL));
    try {
        return Radio::checkedOutput(Radio::runCommandLine(argc, argv));
    } catch (const std::exception& error) {
        Radio::complain(error.what());
        return Radio::ExitCode::unusableInput;
    }
}
