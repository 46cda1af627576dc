#include "radio/language/Completion.h"

#include "radio/language/CommandTable.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <sstream>

namespace Radio {

namespace {

using Names = std::vector<std::string>;

Names splitAtSpace(std::string_view text) {
    std::istringstream stream{std::string(text)};
    return {std::istream_iterator<std::string>(stream), {}};
}

/** The alternatives of one word of a usage: "[PATTERN]" is PATTERN, "tx|rx" is tx and rx. */
Names alternatives(std::string word) {
    word.erase(std::remove_if(word.begin(), word.end(),
                              [](char character) { return character == '[' || character == ']'; }),
               word.end());
    std::replace(word.begin(), word.end(), '|', ' ');
    return splitAtSpace(word);
}

bool isLower(unsigned char character) {
    return std::islower(character) != 0;
}

bool isUpper(unsigned char character) {
    return std::isupper(character) != 0;
}

/** True for what the user fills in; the units of frequency have small letters, too. */
bool isPlaceholder(const std::string& word) {
    return std::any_of(word.begin(), word.end(), isUpper) && std::none_of(word.begin(), word.end(), isLower);
}

Names withSuffix(const Names& names, std::string_view suffix) {
    Names result;
    std::transform(names.begin(), names.end(), std::back_inserter(result),
                   [suffix](const std::string& name) { return name + std::string(suffix); });
    return result;
}

Names operationNames() {
    Names names;
    for (const Standalone::Operation operation : Standalone::allOperations()) {
        names.emplace_back(Standalone::toString(operation));
    }
    return names;
}

Names objectNames(const BoardNames& names) {
    Names all;
    for (const Names* const some : {&names.drivers, &names.variables, &names.tables, &names.brokerNames}) {
        all.insert(all.end(), some->begin(), some->end());
    }
    return all;
}

Names commandNames() {
    Names names;
    for (const CommandInfo& info : commandTable()) {
        names.push_back(splitAtSpace(info.name).front());
    }
    return names;
}

/** What can be filled in for a placeholder; nothing where only the user knows. */
Names fillings(const std::string& placeholder, const BoardNames& names) {
    if (placeholder == "CHANNEL") {
        return names.channels;
    }
    if (placeholder == "DRIVER") {
        return names.drivers;
    }
    if (placeholder == "DRIVER=VALUE...") {
        return withSuffix(names.hardware, "=");
    }
    if (placeholder == "VARIABLE") {
        return names.variables;
    }
    if (placeholder == "INTERFACE") {
        return names.platformInterfaces;
    }
    if (placeholder == "OPERATION") {
        return operationNames();
    }
    if (placeholder == "OBJECT") {
        return objectNames(names);
    }
    return placeholder == "COMMAND" ? commandNames() : Names();
}

/** Whether `word` can stand where the usage has these alternatives. */
bool fits(const std::string& word, const Names& choices) {
    return std::any_of(choices.begin(), choices.end(), [&word](const std::string& choice) {
        return choice == word || isPlaceholder(choice);
    });
}

/** What `usage` offers behind the words `before`; nothing when they do not fit it. */
Names offers(std::string_view usage, const Names& before, const BoardNames& names) {
    const Names places = splitAtSpace(usage);
    if (before.size() >= places.size()) {
        return {};
    }
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (!fits(before[i], alternatives(places[i]))) {
            return {};
        }
    }
    Names result;
    for (const std::string& choice : alternatives(places[before.size()])) {
        const Names more = isPlaceholder(choice) ? fillings(choice, names) : Names{choice};
        result.insert(result.end(), more.begin(), more.end());
    }
    return result;
}

std::string commonBeginning(const Names& names) {
    std::string common = names.empty() ? std::string() : names.front();
    for (const std::string& name : names) {
        const auto differs = std::mismatch(common.begin(), common.end(), name.begin(), name.end()).first;
        common.erase(differs, common.end());
    }
    return common;
}

} // namespace

Completion complete(std::string_view line, const BoardNames& names) {
    Names before = splitAtSpace(line);
    std::string word;
    if (!before.empty() && std::isspace(static_cast<unsigned char>(line.back())) == 0) {
        word = before.back();
        before.pop_back();
    }
    Completion completion;
    completion.typed = word.size();
    for (const CommandInfo& info : commandTable()) {
        for (std::string& offer : offers(info.usage, before, names)) {
            if (offer.compare(0, word.size(), word) == 0) {
                completion.candidates.push_back(std::move(offer));
            }
        }
    }
    std::sort(completion.candidates.begin(), completion.candidates.end());
    completion.candidates.erase(std::unique(completion.candidates.begin(), completion.candidates.end()),
                                completion.candidates.end());
    completion.common = commonBeginning(completion.candidates);
    return completion;
}

} // namespace Radio
