#include "radio/tables/Corrections.h"

#include "radio/board/BoardFile.h"
#include "radio/board/BoardNames.h"
#include "radio/board/TableFile.h"
#include "radio/files/CsvFile.h"
#include "radio/files/InputError.h"
#include "standalone/Interpolation.h"

#include <limits>
#include <utility>

namespace Radio::Tables {

namespace {

std::int32_t valueAt(const CalibrationTable& table, std::int32_t carrier, std::int32_t temperature) {
    return Standalone::Interpolation::bilinear(table.axis1, table.axis2, table.values, carrier, temperature);
}

bool hasTwoAxes(const TableDescription* table) {
    return table != nullptr && table->isThere() && !table->table.axis2.empty();
}

Source sourceInside(Board board) {
    const std::filesystem::path file = board.file;
    Source source{file, {}, std::move(board)};
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
    const TableFile table{csv, gridOf(csv)};
    return {file, {{channel, readTableFile(table, "i", "i"), readTableFile(table, "q", "q")}}, {}};
}

} // namespace

LoCorrections Corrections::at(std::int32_t carrier, std::int32_t temperature) const {
    return {valueAt(i, carrier, temperature), valueAt(q, carrier, temperature)};
}

bool isBoardFile(const std::filesystem::path& file) {
    return file.extension() == ".toml";
}

Source readSource(const std::filesystem::path& file) {
    return isBoardFile(file) ? sourceInside(loadBoard(file)) : readCsvSource(file);
}

Source sourceOf(const Board& board) {
    return sourceInside(board);
}

} // namespace Radio::Tables
