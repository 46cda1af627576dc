#include "radioctl/completion/CompletionCommandLine.h"

#include "radioctl/completion/CompletionScripts.h"
#include "radioctl/options/ExitCode.h"

#include <iostream>

namespace Radio {

CompletionCommandLine::CompletionCommandLine(CommandLine::Command program)
    : m_completion(program.command("completion", "Print the completion script for a shell")) {
    m_completion.option("SHELL", m_shell, "Whose").required().oneOf({"bash", "zsh", "fish"});
}

int CompletionCommandLine::run(bool /*json*/) {
    std::cout << completionScripts().at(m_shell);
    return ExitCode::good;
}

} // namespace Radio
