#include "radio/board/TableCheck.h"

#include "radio/board/CalibrationBounds.h"
#include "radio/text/Spreadsheet.h"
#include "radio/text/Words.h"

namespace Radio {

namespace {

std::string endsOf(const std::vector<std::int32_t>& axis) {
    return std::to_string(axis.front()) + " to " + std::to_string(axis.back());
}

} // namespace

std::optional<std::string> swappedAxes(const CalibrationTable& table) {
    if (table.axis1.empty() || table.axis2.empty()) {
        return std::nullopt;
    }
    const bool hasTemperaturesFirst =
        table.axis1.front() >= temperatureBounds.low && table.axis1.back() <= temperatureBounds.high;
    if (!hasTemperaturesFirst || table.axis2.front() <= temperatureBounds.high) {
        return std::nullopt;
    }
    return "the axes are swapped: the first goes from " + endsOf(table.axis1) + " and the second from " +
           endsOf(table.axis2) + ", expected carriers in kHz and then degrees";
}

std::vector<Finding> findingsOfOrigin(const TableDescription& table, const Board& board, int channel) {
    std::vector<Finding> findings;
    for (const TableOrigin& origin : table.origins) {
        const std::string wanted = origin.key == "serial" ? board.serial : std::to_string(channel);
        // A serial stands in a file as it was written there.
        if (!wanted.empty() && origin.text != wanted && origin.text != asComment(wanted)) {
            findings.push_back({Severity::warning, origin.place,
                                origin.key + " " + inQuotes(origin.text) + ", but it is used for " +
                                    origin.key + " " + inQuotes(wanted)});
        }
    }
    return findings;
}

} // namespace Radio
