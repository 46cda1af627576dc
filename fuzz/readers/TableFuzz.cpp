// Calibration tables as CSV files, whether a calibration wrote them or a person.

#include "Rules.h"
#include "radio/board/TableFile.h"
#include "radio/calibration/ResultFile.h"
#include "radio/files/CsvFile.h"
#include "radio/tables/Lint.h"
#include "radio/tables/Lookup.h"
#include "standalone/Interpolation.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <sstream>

namespace {

using namespace Radio;

const std::string fileName = "tables.csv";

CsvFile read(std::string_view text) {
    return {text, fileName, "a calibration table"};
}

bool ascends(const std::vector<std::int32_t>& axis) {
    return std::adjacent_find(axis.begin(), axis.end(), std::greater_equal<>()) == axis.end();
}

/** Points at which a table may be asked, whether it has nodes there or not. */
std::vector<std::int32_t> probesOf(const std::vector<std::int32_t>& axis) {
    using Limits = std::numeric_limits<std::int32_t>;
    const std::int64_t middle = (std::int64_t{axis.front()} + axis.back()) / 2;
    return {Limits::min(), axis.front(), static_cast<std::int32_t>(middle), axis.back(), Limits::max()};
}

void requireSameValues(const CalibrationTable& table) {
    for (const std::int32_t x1 : probesOf(table.axis1)) {
        for (const std::int32_t x2 : probesOf(table.axis2)) {
            Fuzz::require(
                Tables::lookUp(table, x1, x2).value.rounded() ==
                    Standalone::Interpolation::bilinear(table.axis1, table.axis2, table.values, x1, x2),
                "what radioctl tables why explains is what the platform answers");
        }
    }
}

void requireTables(const CsvFile& csv, std::string_view text) {
    for (const std::string& column : csv.columns()) {
        Fuzz::accepts(fileName, text, [&] {
            const CalibrationTable table = readTableFile({csv, gridOf(csv)}, "table", column);
            Fuzz::require(!table.axis1.empty() && !table.axis2.empty(), "a table has two axes", text);
            Fuzz::require(ascends(table.axis1) && ascends(table.axis2), "axes ascend", text);
            Fuzz::require(table.values.size() == table.axis1.size() * table.axis2.size(),
                          "every node has a value", text);
            requireSameValues(table);
        });
    }
}

void requireFindings(const CsvFile& csv, std::string_view text) {
    Fuzz::accepts(fileName, text, [&] {
        for (const Finding& finding : Tables::lintCsv(csv)) {
            Fuzz::requireMessage(toString(finding.place) + ": " + finding.text, fileName, text);
        }
    });
}

std::string written(const Calibration::Result& result) {
    std::ostringstream stream;
    writeResult(stream, result);
    return stream.str();
}

void requireResult(const CsvFile& csv, std::string_view text) {
    Fuzz::accepts(fileName, text, [&] {
        const std::string once = written(Calibration::readResult(csv));
        const std::string twice = written(Calibration::readResult(read(once)));
        Fuzz::require(once == twice, "what was read and written again reads the same", once);
    });
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::optional<CsvFile> csv;
    if (Fuzz::accepts(fileName, text, [&] { csv = read(text); })) {
        requireTables(*csv, text);
        requireFindings(*csv, text);
        requireResult(*csv, text);
    }
    return 0;
}
