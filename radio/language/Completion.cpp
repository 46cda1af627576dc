#include "radio/language/Completion.h"

#include "radio/language/CommandParsers.h"
#include "radio/language/CommandTable.h"
#include "radio/language/Usage.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <system_error>

namespace Radio {

namespace {

using Names = std::vector<std::string>;

Names splitAtSpace(std::string_view text) {
    std::istringstream stream{std::string(text)};
    return {std::istream_iterator<std::string>(stream), {}};
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

/** The files whose names begin with `word`, as far as they are typed without quotation marks, and folders
 * with a slash behind. */
Names fileNames(const std::string& word) {
    const std::filesystem::path typed(word);
    const std::string folder = word.substr(0, word.size() - typed.filename().string().size());
    Names names;
    std::error_code error;
    std::filesystem::directory_iterator entry(folder.empty() ? "." : folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        const bool isHidden = name.front() == '.' && typed.filename().string().substr(0, 1) != ".";
        if (!isHidden && name.find_first_of(" \t\"#") == std::string::npos && harmless(name) == name) {
            std::error_code unknown;
            names.push_back(folder + name + (entry->is_directory(unknown) ? "/" : ""));
        }
    }
    return names;
}

/** What can be filled in for a placeholder of which `word` is typed; nothing where only the user knows. */
Names fillings(const std::string& placeholder, const std::string& word, const BoardNames& names) {
    if (placeholder == "CHANNEL") {
        return names.channels;
    }
    if (placeholder == "DRIVER") {
        return names.drivers;
    }
    if (placeholder == "DRIVER=VALUE") {
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
    if (placeholder == "FILE") {
        return fileNames(word);
    }
    return placeholder == "COMMAND" ? commandNames() : Names();
}

/** What `usage` offers behind the words `before`; nothing when they do not fit it. */
Names offers(std::string_view usage, const Names& before, const std::string& word, const BoardNames& names) {
    Names result;
    for (const std::string& choice : choicesBehind(usage, before)) {
        const Names more = isPlaceholder(choice) ? fillings(choice, word, names) : Names{choice};
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
    // What is repeated is completed as a line of its own.
    const bool isRepeated = before.size() >= 2 && before.front() == "repeat";
    if (isRepeated) {
        before.erase(before.begin(), before.begin() + 2);
    }
    for (const CommandInfo& info : commandTable()) {
        if (isRepeated && !canBeRepeated(info.name)) {
            continue;
        }
        for (std::string& offer : offers(info.usage, before, word, names)) {
            if (offer.compare(0, word.size(), word) == 0 && harmless(offer) == offer) {
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
