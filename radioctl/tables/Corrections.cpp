#include "tables/Corrections.h"

#include "BoardNames.h"
#include "CsvFile.h"
#include "InputError.h"
#include "Words.h"
#include "standalone/Interpolation.h"
#include "tables/TableFile.h"

#include <algorithm>
#include <limits>

namespace Radioctl::Tables {

namespace {

std::int32_t valueAt(const CalibrationTable& table, std::int32_t carrier, std::int32_t temperature) {
    return Standalone::Interpolation::bilinear(table.axis1, table.axis2, table.values, carrier, temperature);
}

bool hasTwoAxes(const TableDescription* table) {
    return table != nullptr && table->isThere() && !table->table.axis2.empty();
}

Source readBoardSource(const std::filesystem::path& file) {
    Source source{file, {}, loadBoard(file)};
    for (const ChannelDescription& channel : source.board->channels) {
        const TableDescription* const i = findCancellationTable(*source.board, channel.number, "I");
        const TableDescription* const q = findCancellationTable(*source.board, channel.number, "Q");
        if (hasTwoAxes(i) && hasTwoAxes(q)) {
            source.channels.push_back({channel.number, i->table, q->table});
        }
    }
    if (source.channels.empty()) {
        throw InputError({file.string(), 0}, "no channel has LO-cancellation tables for both I and Q, with "
                                             "two axes");
    }
    return source;
}

Source readCsvSource(const std::filesystem::path& file) {
    const CsvFile csv(file, "a calibration table");
    std::optional<int> channel;
    if (const std::optional<CsvItem> item = csv.findProperty("channel")) {
        channel = static_cast<int>(item->integer(0, std::numeric_limits<int>::max()));
    }
    return {file, {{channel, readTableFile(csv, "i", "i"), readTableFile(csv, "q", "q")}}, {}};
}

} // namespace

const TableDescription* findCancellationTable(const Board& board, int channel, std::string_view branch) {
    const std::string name = cancellationTableName(channel, branch);
    const auto found =
        std::find_if(board.tables.begin(), board.tables.end(),
                     [&name](const TableDescription& table) { return table.table.name == name; });
    return found == board.tables.end() ? nullptr : &*found;
}

LoCorrections Corrections::at(std::int32_t carrier, std::int32_t temperature) const {
    return {valueAt(i, carrier, temperature), valueAt(q, carrier, temperature)};
}

bool isBoardFile(const std::filesystem::path& file) {
    return file.extension() == ".toml";
}

Source readSource(const std::filesystem::path& file) {
    return isBoardFile(file) ? readBoardSource(file) : readCsvSource(file);
}

} // namespace Radioctl::Tables
