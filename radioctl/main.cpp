#include "CommandLine.h"
#include "Output.h"

#include <csignal>
#include <exception>
#include <iostream>

int main(int argc, char** argv) {
    // "radioctl ... | head" is to end quietly, also when whoever started it ignores broken pipes.
    static_cast<void>(std::signal(SIGPIPE, SIG_DFL));
    try {
        return Radioctl::checkedOutput(Radioctl::runCommandLine(argc, argv));
    } catch (const std::exception& error) {
        Radioctl::complain(error.what());
        return Radioctl::ExitCode::unusableInput;
    }
}
