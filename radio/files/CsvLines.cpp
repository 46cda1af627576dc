#include "radio/files/CsvLines.h"

#include "radio/text/PlainText.h"

#include <algorithm>

namespace Radio {

CsvLine CsvLines::take(std::string_view line) {
    line = m_place.line == 0 ? withoutByteOrderMark(line) : line;
    if (line.size() > m_longest) {
        refuseLongLine();
    }
    ++m_place.line;
    m_text = trimmed(line);
    m_cells.clear();
    const bool isComment = m_text.substr(0, 1) == "#";
    const std::size_t colon = isComment ? m_text.find(':') : std::string_view::npos;
    if (colon != std::string_view::npos) {
        m_cells = {trimmed(m_text.substr(1, colon - 1)), trimmed(m_text.substr(colon + 1))};
        return CsvLine::property;
    }
    if (isComment || m_text.empty()) {
        return CsvLine::nothing;
    }
    for (std::size_t begin = 0, end = 0; begin <= m_text.size(); begin = end + 1) {
        end = std::min(m_text.find(',', begin), m_text.size());
        m_cells.push_back(trimmed(m_text.substr(begin, end - begin)));
    }
    return std::exchange(m_hasHeading, true) ? CsvLine::row : CsvLine::heading;
}

void CsvLines::refuseLongLine() {
    ++m_place.line;
    throw InputError(m_place, "longer than " + std::to_string(m_longest) + " characters, expected " + m_what);
}

} // namespace Radio
