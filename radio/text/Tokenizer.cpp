#include "radio/text/Tokenizer.h"

#include "radio/text/WordError.h"

#include <cctype>

namespace Radio {

namespace {

bool isSpace(char character) {
    return std::isspace(static_cast<unsigned char>(character)) != 0;
}

/** Reads the quotation that begins at `position` and moves `position` behind it. */
std::string readQuotation(std::string_view line, std::size_t& position) {
    const std::size_t begin = position++;
    std::string text;
    while (position < line.size() && line[position] != '"') {
        const bool escapes = line[position] == '\\' && position + 1 < line.size() &&
                             (line[position + 1] == '"' || line[position + 1] == '\\');
        position += escapes ? 1 : 0;
        text += line[position++];
    }
    if (position == line.size()) {
        throw WordError("the quotation that begins in column " + std::to_string(begin + 1) +
                        " is not closed, expected a second \"");
    }
    ++position;
    return text;
}

std::string readWord(std::string_view line, std::size_t& position) {
    std::string word;
    while (position < line.size() && !isSpace(line[position])) {
        if (line[position] == '"') {
            word += readQuotation(line, position);
        } else {
            word += line[position++];
        }
    }
    return word;
}

} // namespace

std::vector<std::string> splitIntoWords(std::string_view line) {
    std::vector<std::string> words;
    std::size_t position = 0;
    while (position < line.size() && line[position] != '#') {
        if (isSpace(line[position])) {
            ++position;
        } else {
            words.push_back(readWord(line, position));
        }
    }
    return words;
}

} // namespace Radio
