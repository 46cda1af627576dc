#include "radio/files/CsvFile.h"

#include "radio/files/TextFile.h"
#include "radio/text/Numbers.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <new>
#include <sstream>

namespace Radio {

namespace {

constexpr std::size_t maxFileSize = std::size_t{4} * 1024 * 1024;
/** Far beyond any row; a file that is no table at all is not shown as one endless line. */
constexpr std::size_t maxRowLength = 65535;

bool isUnwanted(char c) {
    return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F;
}

} // namespace

const std::string& CsvItem::nonEmptyText(const std::string& what) const {
    if (m_text.empty()) {
        failExpecting(what);
    }
    return m_text;
}

std::int64_t CsvItem::integer(std::int64_t least, std::int64_t most, const std::string& remark) const {
    const auto value = parseNumber(withoutPlus(m_text), least, most);
    if (!value) {
        failExpecting("a whole number from " + std::to_string(least) + " to " + std::to_string(most) +
                      remark);
    }
    return *value;
}

double CsvItem::number(double most) const {
    const auto value = parseNumber(withoutPlus(m_text), -most, most);
    if (!value) {
        std::ostringstream limit;
        limit << most;
        failExpecting("a number from -" + limit.str() + " to " + limit.str());
    }
    return *value;
}

void CsvItem::failExpecting(const std::string& what) const {
    throw InputError(m_place, harmless(m_name) + ": " + inQuotes(m_text) + ", expected " + what);
}

CsvFile::CsvFile(const std::filesystem::path& file, const std::string& what) try
    : CsvFile(readTextFile(file, maxFileSize, what), file.string(), what) {
} catch (const std::bad_alloc&) {
    throw InputError({file.string(), 0}, "needs more memory than there is");
}

CsvFile::CsvFile(std::string_view content, std::string name, const std::string& what)
    : m_name(std::move(name)) {
    if (content.size() > maxFileSize) {
        fail(0, "is larger than 4 MiB, expected " + what);
    }
    CsvLines lines(m_name, maxRowLength, "values with commas between them");
    for (std::size_t begin = 0, end = 0; begin < content.size(); begin = end + 1) {
        end = std::min(content.find('\n', begin), content.size());
        take(lines.take(content.substr(begin, end - begin)), lines);
    }
    if (m_columns.empty()) {
        fail(0, "empty, expected " + what + " with a line of column names");
    }
    if (m_lines.empty()) {
        fail(m_headingLine, "no rows, expected them below the column names");
    }
}

void CsvFile::take(CsvLine kind, const CsvLines& lines) {
    const unsigned number = lines.place().line;
    const std::string_view line = lines.text();
    const std::vector<std::string_view>& cells = lines.cells();
    if (std::any_of(line.begin(), line.end(), isUnwanted)) {
        fail(number, inQuotes(line) + ", expected text without control characters");
    }
    if (kind == CsvLine::property) {
        m_properties.push_back({std::string(cells[0]), std::string(cells[1]), number});
    } else if (kind != CsvLine::nothing && line.find('"') != std::string_view::npos) {
        fail(number, inQuotes(line) + ", expected values without quotation marks");
    } else if (kind == CsvLine::heading) {
        takeHeading(cells, number);
    } else if (kind == CsvLine::row && cells.size() != m_columns.size()) {
        fail(number, inQuotes(line) + " has " + counted(cells.size(), "value") +
                         ", expected one for each of the " + counted(m_columns.size(), "column"));
    } else if (kind == CsvLine::row) {
        m_values.insert(m_values.end(), cells.begin(), cells.end());
        m_lines.push_back(number);
    }
}

void CsvFile::takeHeading(const std::vector<std::string_view>& names, unsigned number) {
    m_headingLine = number;
    for (const std::string_view name : names) {
        if (name.empty()) {
            fail(number, "column " + std::to_string(m_columns.size() + 1) +
                             " has no name, expected one for each column");
        }
        if (hasColumn(name)) {
            fail(number, "two columns " + inQuotes(name) + ", expected each name once");
        }
        m_columns.emplace_back(name);
    }
}

bool CsvFile::hasColumn(std::string_view name) const {
    return std::find(m_columns.begin(), m_columns.end(), name) != m_columns.end();
}

std::size_t CsvFile::column(std::string_view name) const {
    const auto found = std::find(m_columns.begin(), m_columns.end(), name);
    if (found == m_columns.end()) {
        fail(m_headingLine,
             "no column " + inQuotes(name) + "; there are: " + harmless(joined(m_columns, ", ")));
    }
    return static_cast<std::size_t>(found - m_columns.begin());
}

CsvItem CsvFile::item(std::size_t row, std::size_t column) const {
    return {m_columns[column], m_values[row * m_columns.size() + column], {m_name, m_lines[row]}};
}

std::optional<CsvItem> CsvFile::findProperty(std::string_view key) const {
    std::optional<CsvItem> found;
    for (const Property& property : m_properties) {
        if (property.key == key && found) {
            fail(property.line, "a second " + inQuotes(key) + ", expected it once");
        }
        if (property.key == key) {
            found = CsvItem(key, property.value, {m_name, property.line});
        }
    }
    return found;
}

CsvItem CsvFile::property(std::string_view key) const {
    std::optional<CsvItem> found = findProperty(key);
    if (!found) {
        fail(0, "no line \"# " + std::string(key) + ": ...\", expected it above the column names");
    }
    return *std::move(found);
}

void CsvFile::fail(unsigned line, const std::string& message) const {
    throw InputError({m_name, line}, message);
}

} // namespace Radio
