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

/** How many frequencies stand behind `word`, which may have the first behind an equals sign; 0 when it is no
 * option for them. */
int frequenciesBehind(const std::string& word) {
    const std::string option = word.substr(0, word.find('='));
    if (option == "--band") {
        return 2;
    }
    return option == "--tx" || option == "--rx" || option == "--carrier" || option == "--frequency" ||
                   option == "--step"
               ? 1
               : 0;
}

bool isOption(const std::string& word) {
    return word.substr(0, 2) == "--";
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
    int frequenciesToCome = 0;
    bool isBehindFrequency = false;
    for (int i = 1; i < argumentCount; ++i) {
        const std::string word = arguments[i];
        if (isBehindFrequency && isUnit(word)) {
            words.back() += word;
            isBehindFrequency = false;
            continue;
        }
        if (isOption(word)) {
            frequenciesToCome = frequenciesBehind(word);
        }
        isBehindFrequency = frequenciesToCome > 0 && (!isOption(word) || word.find('=') != std::string::npos);
        frequenciesToCome -= isBehindFrequency ? 1 : 0;
        words.push_back(word);
    }
    return words;
}

} // namespace Radio
