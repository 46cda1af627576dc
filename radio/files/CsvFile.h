#ifndef RADIO_FILES_CSVFILE_H
#define RADIO_FILES_CSVFILE_H

#include "radio/files/CsvLines.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Radio {

/** One text out of a CSV file, with what a message about it needs. What is not as asked for throws
 * InputError. */
class CsvItem {
public:
    /** `name` is that of the column or the property. */
    CsvItem(std::string_view name, std::string_view text, Place place)
        : m_name(name),
          m_text(text),
          m_place(std::move(place)) {}

    const Place& place() const { return m_place; }
    /** Without blanks around it; may be empty. */
    const std::string& text() const { return m_text; }
    /** The same, not empty; `what` says what it should be. */
    const std::string& nonEmptyText(const std::string& what) const;
    /** A whole number from `least` to `most`; `remark` is said about it. */
    std::int64_t integer(std::int64_t least, std::int64_t most, const std::string& remark = {}) const;
    std::int32_t integer() const { return static_cast<std::int32_t>(integer(INT32_MIN, INT32_MAX)); }
    /** A number, whole or not, from -`most` to `most`. */
    double number(double most) const;

    /** Throws "PLACE: NAME: "TEXT", expected WHAT". */
    [[noreturn]] void failExpecting(const std::string& what) const;

private:
    std::string m_name;
    std::string m_text;
    Place m_place;
};

/**
 * A small file of comma-separated values, as a whole in memory: properties, a heading with the names of the
 * columns, and rows with one value for each of them, as CsvLines tells them apart. A file with quotation
 * marks outside its comments is refused.
 */
class CsvFile {
public:
    /**
     * Reads a file of at most 4 MiB, with lines of at most 65535 characters. `what` says what it should be,
     * for example "a calibration table". Throws InputError, and nothing else, for one that cannot be used;
     * one without rows is such a file.
     */
    CsvFile(const std::filesystem::path& file, const std::string& what);
    /** The same for `content`, that of a file called `name`. */
    CsvFile(std::string_view content, std::string name, const std::string& what);

    /** The file as a whole. */
    Place place() const { return {m_name, 0}; }
    const std::vector<std::string>& columns() const { return m_columns; }
    /** The line with the names of the columns. */
    unsigned headingLine() const { return m_headingLine; }
    bool hasColumn(std::string_view name) const;
    /** The number of the column `name`, from 0. Throws InputError when there is none. */
    std::size_t column(std::string_view name) const;

    std::size_t rows() const { return m_lines.size(); }
    /** The line on which row `row` stands. */
    unsigned line(std::size_t row) const { return m_lines[row]; }
    CsvItem item(std::size_t row, std::size_t column) const;

    /** The property `key`, if it is there. Throws InputError when it is there twice. */
    std::optional<CsvItem> findProperty(std::string_view key) const;
    /** The property `key`. Throws InputError when it is not there exactly once. */
    CsvItem property(std::string_view key) const;

private:
    struct Property {
        std::string key;
        std::string value;
        unsigned line;
    };

    void take(CsvLine kind, const CsvLines& lines);
    void takeHeading(const std::vector<std::string_view>& names, unsigned number);
    [[noreturn]] void fail(unsigned line, const std::string& message) const;

    std::string m_name;
    std::vector<Property> m_properties;
    unsigned m_headingLine = 0;
    std::vector<std::string> m_columns;
    /** Row by row. */
    std::vector<std::string> m_values;
    std::vector<unsigned> m_lines;
};

} // namespace Radio

#endif
