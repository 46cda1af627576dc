#include "radioctl/report/Wrapped.h"

#include "radio/text/Words.h"

namespace Radio {

void writeWrapped(std::ostream& out, std::string_view given, std::size_t margin, std::size_t hanging) {
    const std::string text = harmless(given);
    const std::string first = brokenLines(text, terminalWidth - margin).front();
    out << std::string(margin, ' ') << first << "\n";
    if (first.size() == text.size()) {
        return;
    }
    for (const std::string& line :
         brokenLines(std::string_view(text).substr(first.size() + 1), terminalWidth - hanging)) {
        out << std::string(hanging, ' ') << line << "\n";
    }
}

void writeBoardName(std::ostream& out, std::string_view name, std::string_view file) {
    const std::string place = "(" + harmless(file) + ")";
    const std::string line = harmless(name) + " " + place;
    if (line.size() <= terminalWidth) {
        out << line << "\n";
        return;
    }
    writeWrapped(out, name, 0, 2);
    // Broken nowhere, so that it can be copied.
    out << "  " << place << "\n";
}

} // namespace Radio
