#include "CsvFile.h"

#include "Numbers.h"
#include "PlainText.h"
#include "TextFile.h"
#include "Words.h"

#include <algorithm>
#include <limits>
#include <sstream>

namespace Radioctl {

namespace {

constexpr std::size_t maxFileSize = std::size_t{4} * 1024 * 1024;
/** Far beyond any row; a file that is no table at all is not shown as one endless line. */
constexpr std::size_t maxRowLength = 65535;

bool isUnwanted(char c) {
    const auto code = static_cast<unsigned char>(c);
    return (code < 0x20 && c != '\t') || code == 0x7F;
}

/** Appends the values of a line to `values`; gives how many there are. */
std::size_t split(std::string_view line, std::vector<std::string>& values) {
    std::size_t count = 0;
    for (std::size_t begin = 0; begin <= line.size(); ++count) {
        const std::size_t end = std::min(line.find(',', begin), line.size());
        values.emplace_back(trimmed(line.substr(begin, end - begin)));
        begin = end + 1;
    }
    return count;
}

} // namespace

const std::string& CsvItem::nonEmptyText(const std::string& what) const {
    if (m_text.empty()) {
        failExpecting(what);
    }
    return m_text;
}

std::int64_t CsvItem::integer(std::int64_t least, std::int64_t most) const {
    const auto value = parseNumber(withoutPlus(m_text), least, most);
    if (!value) {
        failExpecting("a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return *value;
}

std::int32_t CsvItem::integer() const {
    using Integers = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(integer(Integers::min(), Integers::max()));
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

CsvFile::CsvFile(const std::filesystem::path& file, const std::string& what)
    : CsvFile(readTextFile(file, maxFileSize, what), file.string(), what) {}

CsvFile::CsvFile(std::string_view content, std::string name, const std::string& what)
    : m_name(std::move(name)) {
    if (content.size() > maxFileSize) {
        fail(0, "is larger than 4 MiB, expected " + what);
    }
    content = withoutByteOrderMark(content);
    unsigned number = 0;
    for (std::size_t begin = 0; begin < content.size();) {
        const std::size_t end = std::min(content.find('\n', begin), content.size());
        take(content.substr(begin, end - begin), ++number);
        begin = end + 1;
    }
    if (m_columns.empty()) {
        fail(0, "empty, expected " + what + " with a line of column names");
    }
    if (m_lines.empty()) {
        fail(m_headingLine, "no rows, expected them below the column names");
    }
}

void CsvFile::take(std::string_view line, unsigned number) {
    if (line.size() > maxRowLength) {
        fail(number, "longer than 65535 characters, expected values with commas between them");
    }
    line = trimmed(line);
    if (std::any_of(line.begin(), line.end(), isUnwanted)) {
        fail(number, inQuotes(line) + ", expected text without control characters");
    }
    if (line.empty()) {
        return;
    }
    if (line.front() == '#') {
        takeComment(line.substr(1), number);
        return;
    }
    if (line.find('"') != std::string_view::npos) {
        fail(number, inQuotes(line) + ", expected values without quotation marks");
    }
    if (m_columns.empty()) {
        split(line, m_columns);
        takeHeading(number);
        return;
    }
    const std::size_t count = split(line, m_values);
    if (count != m_columns.size()) {
        fail(number, inQuotes(line) + " has " + counted(count, "value") + ", expected one for each of the " +
                         counted(m_columns.size(), "column"));
    }
    m_lines.push_back(number);
}

void CsvFile::takeComment(std::string_view comment, unsigned number) {
    const std::size_t colon = comment.find(':');
    if (colon != std::string_view::npos) {
        m_properties.push_back({std::string(trimmed(comment.substr(0, colon))),
                                std::string(trimmed(comment.substr(colon + 1))), number});
    }
}

void CsvFile::takeHeading(unsigned number) {
    m_headingLine = number;
    for (auto name = m_columns.begin(); name != m_columns.end(); ++name) {
        if (name->empty()) {
            fail(number, "column " + std::to_string(name - m_columns.begin() + 1) +
                             " has no name, expected one for each column");
        }
        if (std::find(m_columns.begin(), name, *name) != name) {
            fail(number, "two columns " + inQuotes(*name) + ", expected each name once");
        }
    }
}

std::optional<std::size_t> CsvFile::findColumn(std::string_view name) const {
    const auto found = std::find(m_columns.begin(), m_columns.end(), name);
    return found == m_columns.end()
               ? std::nullopt
               : std::optional(static_cast<std::size_t>(std::distance(m_columns.begin(), found)));
}

std::size_t CsvFile::column(std::string_view name) const {
    const std::optional<std::size_t> found = findColumn(name);
    if (!found) {
        fail(m_headingLine,
             "no column " + inQuotes(name) + "; there are: " + harmless(joined(m_columns, ", ")));
    }
    return *found;
}

CsvItem CsvFile::item(std::size_t row, std::size_t column) const {
    return {m_columns[column], m_values[row * m_columns.size() + column], {m_name, m_lines[row]}};
}

std::optional<CsvItem> CsvFile::findProperty(std::string_view key) const {
    const auto hasKey = [key](const Property& property) { return property.key == key; };
    const auto found = std::find_if(m_properties.begin(), m_properties.end(), hasKey);
    if (found == m_properties.end()) {
        return std::nullopt;
    }
    const auto second = std::find_if(found + 1, m_properties.end(), hasKey);
    if (second != m_properties.end()) {
        fail(second->line, "a second " + inQuotes(key) + ", expected it once");
    }
    return CsvItem(found->key, found->value, {m_name, found->line});
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

} // namespace Radioctl
