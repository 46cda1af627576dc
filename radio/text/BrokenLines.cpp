#include "radio/text/BrokenLines.h"

namespace Radio {

std::vector<std::string> brokenLines(std::string_view text, std::size_t width) {
    std::vector<std::string> lines;
    while (text.size() > width) {
        std::size_t space = text.rfind(' ', width);
        if (space == std::string_view::npos) {
            space = text.find(' ', width);
        }
        if (space == std::string_view::npos) {
            break;
        }
        lines.emplace_back(text.substr(0, space));
        text.remove_prefix(space + 1);
    }
    lines.emplace_back(text);
    return lines;
}

} // namespace Radio
