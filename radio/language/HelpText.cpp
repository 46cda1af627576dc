#include "radio/language/HelpText.h"

#include "radio/language/CommandTable.h"

#include <algorithm>

namespace Radio {

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

/** `text` in lines that a terminal of 80 columns shows as they are. */
std::string wrapped(std::string_view text) {
    constexpr std::size_t width = 79;
    std::string lines;
    while (text.size() > width) {
        const std::size_t space = text.rfind(' ', width);
        lines += std::string(text.substr(0, space)) + "\n";
        text.remove_prefix(space + 1);
    }
    return lines + std::string(text) + "\n";
}

std::string explanation(const CommandInfo& info) {
    std::string text = wrapped(info.usage) + std::string(info.help) + "\n";
    if (!info.details.empty()) {
        text += wrapped(info.details);
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

} // namespace Radio
