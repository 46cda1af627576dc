#include "radio/files/Label.h"

#include "radio/files/Json.h"
#include "radio/text/Words.h"

namespace Radio {

std::string whyNoLabel(const std::string& word) {
    constexpr std::size_t longest = 100;
    const bool isPrintable = !word.empty() && word.size() <= longest && harmless(word) == word;
    if (!isUtf8(word)) {
        return inQuotes(word) + ", expected UTF-8";
    }
    return isPrintable ? "" : inQuotes(word) + ", expected 1 to 100 printable characters";
}

} // namespace Radio
