#include "radio/language/Usage.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <iterator>
#include <set>
#include <sstream>

namespace Radio {

namespace {

using Names = std::vector<std::string>;

/** A place for a word. */
struct WordPlace {
    /** What can stand there. */
    Names choices;
    /** It may be taken by several words. */
    bool repeats = false;
    /** The places at which the line may go on instead, since what begins here can be left out. */
    std::vector<std::size_t> others{};
};

Names splitAt(char separator, std::string_view text) {
    std::istringstream stream{std::string(text)};
    Names names;
    for (std::string name; std::getline(stream, name, separator);) {
        if (!name.empty()) {
            names.push_back(std::move(name));
        }
    }
    return names;
}

bool hasName(const Names& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/** The units that can stand behind what the user fills in there. */
Names unitsBehind(const std::string& placeholder) {
    if (hasName({"FROM", "TO", "STEP"}, placeholder)) {
        return {"kHz", "MHz", "GHz"};
    }
    return placeholder == "DWELL" ? Names{"ms", "s", "min"} : Names();
}

std::size_t countOf(std::string_view text, char character) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), character));
}

/** The alternatives of one word of a usage: "[PATTERN]" is PATTERN, "tx|rx" is tx and rx. */
WordPlace placeOf(std::string word) {
    constexpr std::string_view dots = "...";
    word.erase(std::remove_if(word.begin(), word.end(),
                              [](char character) { return character == '[' || character == ']'; }),
               word.end());
    const bool repeats = word.size() > dots.size() && word.find(',') == std::string::npos &&
                         word.compare(word.size() - dots.size(), dots.size(), dots) == 0;
    if (repeats) {
        word.resize(word.size() - dots.size());
    }
    return {splitAt('|', word), repeats};
}

std::vector<WordPlace> placesOf(std::string_view usage) {
    std::vector<WordPlace> places;
    std::vector<std::size_t> open;
    for (const std::string& word : splitAt(' ', usage)) {
        const std::size_t leading = std::min(word.find_first_not_of('['), word.size());
        open.insert(open.end(), leading, places.size());
        places.push_back(placeOf(word));
        const Names units = unitsBehind(places.back().choices.front());
        if (!units.empty()) {
            places.push_back({units, false, {places.size() + 1}});
        }
        // "VALUE[,VALUE...]" opens and closes within the word.
        for (std::size_t closing = countOf(word, ']') + leading - countOf(word, '['); closing > 0;
             --closing) {
            places[open.back()].others.push_back(places.size());
            open.pop_back();
        }
    }
    return places;
}

/** The places where the next word can stand, if it can stand at `place`. */
void reach(std::size_t place, const std::vector<WordPlace>& places, std::set<std::size_t>& reached) {
    if (reached.insert(place).second && place < places.size()) {
        for (const std::size_t other : places[place].others) {
            reach(other, places, reached);
        }
    }
}

} // namespace

bool isPlaceholder(std::string_view word) {
    const auto isUpper = [](unsigned char character) { return std::isupper(character) != 0; };
    const auto isLower = [](unsigned char character) { return std::islower(character) != 0; };
    return std::any_of(word.begin(), word.end(), isUpper) && std::none_of(word.begin(), word.end(), isLower);
}

std::vector<std::string> choicesBehind(std::string_view usage, const std::vector<std::string>& before) {
    const std::vector<WordPlace> places = placesOf(usage);
    std::set<std::size_t> current;
    reach(0, places, current);
    for (const std::string& word : before) {
        std::set<std::size_t> literally;
        std::set<std::size_t> filledIn;
        for (const std::size_t place : current) {
            if (place == places.size()) {
                continue;
            }
            const Names& choices = places[place].choices;
            const bool isLiteral = hasName(choices, word);
            if (isLiteral || std::any_of(choices.begin(), choices.end(), isPlaceholder)) {
                std::set<std::size_t>& next = isLiteral ? literally : filledIn;
                reach(place + 1, places, next);
                if (places[place].repeats) {
                    reach(place, places, next);
                }
            }
        }
        // A word that stands for itself is not what the user fills in elsewhere.
        current = literally.empty() ? filledIn : literally;
    }
    Names choices;
    for (const std::size_t place : current) {
        if (place < places.size()) {
            std::copy(places[place].choices.begin(), places[place].choices.end(),
                      std::back_inserter(choices));
        }
    }
    return choices;
}

} // namespace Radio
