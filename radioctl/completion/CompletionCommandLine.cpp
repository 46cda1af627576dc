#include "radioctl/completion/CompletionCommandLine.h"

#include "radioctl/completion/CompletionScript.h"
#include "radioctl/options/ExitCode.h"

#include <iostream>

namespace Radio {

CompletionCommandLine::CompletionCommandLine(CommandLine::Command program)
    : m_completion(program.command("completion", "Print the completion script for a shell")) {
    m_completion.option("SHELL", m_shell, "bash").required().oneOf({"bash"});
}

int CompletionCommandLine::run(bool /*json*/) {
    std::cout << bashCompletionScript;
    return ExitCode::good;
}

} // namespace Radio
