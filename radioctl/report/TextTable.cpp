#include "radioctl/report/TextTable.h"

#include <algorithm>

namespace Radio {

bool TextTable::isRight(std::size_t column) const {
    return std::find(m_rightColumns.begin(), m_rightColumns.end(), column) != m_rightColumns.end();
}

void TextTable::write(std::ostream& out) const {
    std::vector<std::size_t> widths;
    for (const auto& line : m_lines) {
        widths.resize(std::max(widths.size(), line.size()));
        for (std::size_t column = 0; column < line.size(); ++column) {
            widths[column] = std::max(widths[column], line[column].size());
        }
    }
    for (const auto& line : m_lines) {
        std::string text;
        for (std::size_t column = 0; column < line.size(); ++column) {
            const std::string filler(widths[column] - line[column].size(), ' ');
            text += "  " + (isRight(column) ? filler + line[column] : line[column] + filler);
        }
        text.erase(text.find_last_not_of(' ') + 1);
        out << text << "\n";
    }
}

} // namespace Radio
