#include "radioctl/report/TextTable.h"

#include "radio/text/Words.h"
#include "radioctl/report/Wrapped.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <utility>

namespace Radio {

namespace {

/** In front of each column. */
constexpr std::size_t gap = 2;
/** In front of a remark that stands below its line. */
constexpr std::size_t remarkIndent = 6;
/** A column is not made narrower than this; what then does not fit does not fit. */
constexpr std::size_t narrowest = 16;

/** As harmless(), but for the space that is put in place of others. */
std::string harmlessCell(std::string_view cell) {
    std::string text;
    for (std::size_t begin = 0; begin <= cell.size();) {
        const std::size_t end = std::min(cell.find(unbreakableSpace, begin), cell.size());
        text += harmless(cell.substr(begin, end - begin));
        text.append(end == cell.size() ? 0 : 1, unbreakableSpace);
        begin = end + 1;
    }
    return text;
}

} // namespace

void TextTable::add(std::vector<std::string> cells) {
    for (std::string& cell : cells) {
        cell = harmlessCell(cell);
    }
    m_lines.push_back({std::move(cells), false});
}

bool TextTable::isRight(std::size_t column) const {
    return std::find(m_rightColumns.begin(), m_rightColumns.end(), column) != m_rightColumns.end();
}

void TextTable::fit(std::size_t remark, std::optional<std::size_t> flexible) {
    m_remark = remark;
    m_flexible = flexible;
}

std::vector<std::size_t> TextTable::columnWidths() const {
    std::vector<std::size_t> widths;
    for (const Line& line : m_lines) {
        widths.resize(std::max(widths.size(), line.isHeading ? 0 : line.cells.size()));
        for (std::size_t column = 0; !line.isHeading && column < line.cells.size(); ++column) {
            widths[column] = std::max(widths[column], line.cells[column].size());
        }
    }
    if (m_flexible && *m_flexible < widths.size()) {
        const std::size_t columns = std::min(m_remark.value_or(widths.size()), widths.size());
        const std::size_t all = std::accumulate(
            widths.begin(), widths.begin() + static_cast<std::ptrdiff_t>(columns), columns * gap);
        std::size_t& width = widths[*m_flexible];
        const std::size_t excess = all > terminalWidth ? all - terminalWidth : 0;
        width = std::max(std::min(width, narrowest), width - std::min(width, excess));
    }
    return widths;
}

void TextTable::write(std::ostream& out) const {
    const std::vector<std::size_t> widths = columnWidths();
    for (const Line& line : m_lines) {
        if (line.isHeading) {
            writeWrapped(out, line.cells.front(), gap, gap + gap);
        } else if (m_remark) {
            writeFitted(out, line.cells, widths);
        } else {
            writeCells(out, line.cells, widths);
        }
    }
}

void TextTable::writeCells(std::ostream& out, const std::vector<std::string>& cells,
                           const std::vector<std::size_t>& widths) const {
    std::string text;
    for (std::size_t column = 0; column < cells.size(); ++column) {
        const std::size_t size = cells[column].size();
        const std::string filler(widths[column] > size ? widths[column] - size : 0, ' ');
        text += std::string(gap, ' ') + (isRight(column) ? filler + cells[column] : cells[column] + filler);
    }
    std::replace(text.begin(), text.end(), unbreakableSpace, ' ');
    text.erase(text.find_last_not_of(' ') + 1);
    out << text << "\n";
}

void TextTable::writeFitted(std::ostream& out, std::vector<std::string> cells,
                            const std::vector<std::size_t>& widths) const {
    std::string remark;
    if (*m_remark < cells.size()) {
        remark = std::exchange(cells[*m_remark], {});
        const std::size_t lead = std::accumulate(
            widths.begin(), widths.begin() + static_cast<std::ptrdiff_t>(*m_remark), (*m_remark + 1) * gap);
        if (lead + remark.size() <= terminalWidth) {
            cells[*m_remark] = std::exchange(remark, {});
        }
    }
    if (m_flexible && *m_flexible < cells.size()) {
        const std::vector<std::string> pieces = brokenLines(cells[*m_flexible], widths[*m_flexible]);
        // What stands in front goes with the first piece, and what stands behind with the last.
        for (std::size_t piece = 0; piece + 1 < pieces.size(); ++piece) {
            std::vector<std::string> front(cells.begin(),
                                           cells.begin() + static_cast<std::ptrdiff_t>(*m_flexible));
            front.push_back(pieces[piece]);
            writeCells(out, front, widths);
            std::fill(cells.begin(), cells.begin() + static_cast<std::ptrdiff_t>(*m_flexible), "");
        }
        cells[*m_flexible] = pieces.back();
    }
    writeCells(out, cells, widths);
    if (!remark.empty()) {
        writeWrapped(out, remark, remarkIndent, remarkIndent);
    }
}

} // namespace Radio
