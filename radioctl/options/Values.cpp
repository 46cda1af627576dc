#include "radioctl/options/Values.h"

#include "radio/text/Frequency.h"
#include "radio/text/WordError.h"

#include <algorithm>
#include <cctype>

namespace Radio {

namespace {

bool isUnit(std::string word) {
    std::transform(word.begin(), word.end(), word.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return word == "khz" || word == "mhz" || word == "ghz";
}

bool isFrequencyOption(const std::string& word) {
    return word == "--tx" || word == "--rx" || word == "--carrier" || word == "--frequency";
}

} // namespace

std::string whyNoFrequency(const std::string& word) {
    try {
        parseFrequency(word, "");
        return {};
    } catch (const WordError& error) {
        return error.what();
    }
}

std::vector<std::string> withUnitsJoined(int argumentCount, const char* const* arguments) {
    std::vector<std::string> words;
    for (int i = 1; i < argumentCount; ++i) {
        const std::string word = arguments[i];
        const std::size_t count = words.size();
        const bool isBehindFrequency = count >= 2 && isFrequencyOption(words[count - 2]);
        if (isBehindFrequency && isUnit(word)) {
            words.back() += word;
        } else {
            words.push_back(word);
        }
    }
    return words;
}

} // namespace Radio
