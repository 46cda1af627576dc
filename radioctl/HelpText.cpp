#include "HelpText.h"

#include "CommandTable.h"

#include <algorithm>

namespace Radioctl {

namespace {

std::string listOfCommands() {
    std::size_t width = 0;
    for (const CommandInfo& info : commandTable()) {
        width = std::max(width, info.name.size());
    }
    std::string text;
    for (const CommandInfo& info : commandTable()) {
        text += std::string(info.name) + std::string(width - info.name.size() + 2, ' ') +
                std::string(info.help) + "\n";
    }
    return text + "\nhelp COMMAND tells more about one of them.\n";
}

std::string explanation(const CommandInfo& info) {
    std::string text = std::string(info.usage) + "\n" + std::string(info.help) + "\n";
    if (!info.details.empty()) {
        text += std::string(info.details) + "\n";
    }
    return text;
}

} // namespace

std::string helpText(std::string_view about) {
    if (about.empty()) {
        return listOfCommands();
    }
    std::string text;
    for (const CommandInfo* const info : commandsNamed(about)) {
        text += (text.empty() ? "" : "\n") + explanation(*info);
    }
    return text;
}

} // namespace Radioctl
