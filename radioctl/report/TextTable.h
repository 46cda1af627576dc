#ifndef RADIOCTL_REPORT_TEXTTABLE_H
#define RADIOCTL_REPORT_TEXTTABLE_H

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace Radio {

/** Lines whose cells stand below each other. */
class TextTable {
public:
    /** Adds a line; its cells may be fewer than those of other lines. */
    void add(std::vector<std::string> cells) { m_lines.push_back(std::move(cells)); }
    /** Has the cells of a column, counted from 0, end below each other: for numbers. */
    void alignRight(std::size_t column) { m_rightColumns.push_back(column); }
    /** Writes the lines, two spaces in front of each. */
    void write(std::ostream& out) const;

private:
    bool isRight(std::size_t column) const;

    std::vector<std::vector<std::string>> m_lines;
    std::vector<std::size_t> m_rightColumns;
};

} // namespace Radio

#endif
