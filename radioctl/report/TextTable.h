#ifndef RADIOCTL_REPORT_TEXTTABLE_H
#define RADIOCTL_REPORT_TEXTTABLE_H

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace Radio {

/** Lines whose cells stand below each other. */
class TextTable {
public:
    /** Adds a line; its cells may be fewer than those of other lines. Whatever is in them is made harmless.
     */
    void add(std::vector<std::string> cells);
    /** Adds a line that stands above what is added next, with no columns of its own. */
    void addHeading(std::string text) { m_lines.push_back({{std::move(text)}, true}); }
    /** Has the cells of a column, counted from 0, end below each other: for numbers. */
    void alignRight(std::size_t column) { m_rightColumns.push_back(column); }
    /**
     * Has the lines fit a terminal. Column `remark`, the last one, is text that goes below its line where it
     * does not fit behind it; column `flexible`, if there is one, is broken where the columns in front of the
     * remarks do not fit.
     */
    void fit(std::size_t remark, std::optional<std::size_t> flexible = std::nullopt);
    /** Writes the lines, two spaces in front of each. */
    void write(std::ostream& out) const;

private:
    struct Line {
        std::vector<std::string> cells;
        bool isHeading;
    };

    bool isRight(std::size_t column) const;
    std::vector<std::size_t> columnWidths() const;
    void writeCells(std::ostream& out, const std::vector<std::string>& cells,
                    const std::vector<std::size_t>& widths) const;
    void writeFitted(std::ostream& out, std::vector<std::string> cells,
                     const std::vector<std::size_t>& widths) const;

    std::vector<Line> m_lines;
    std::vector<std::size_t> m_rightColumns;
    std::optional<std::size_t> m_remark;
    std::optional<std::size_t> m_flexible;
};

} // namespace Radio

#endif
