#include "Exceptions.h"

#include "Numbers.h"

#include <algorithm>
#include <vector>

namespace {

/** A table of four to eight nodes on each axis, at uneven distances, with values that a radio could have. */
void growTable(Bytes& bytes, Told::Table& table) {
    for (std::vector<std::int32_t>* const axis : {&table.axis1, &table.axis2}) {
        if (axis->size() > 1) {
            const std::int64_t first = axis->front();
            const std::int64_t span = axis->back() - first;
            const auto nodes = static_cast<std::int64_t>(4 + bytes.below(5));
            axis->clear();
            for (std::int64_t node = 0; node < nodes; ++node) {
                const auto shift = static_cast<std::int64_t>(bytes.below(8));
                axis->push_back(static_cast<std::int32_t>(first + span * (16 * node + shift) / (16 * nodes)));
            }
        }
    }
    const std::size_t columns = std::max<std::size_t>(table.axis2.size(), 1);
    table.values.clear();
    for (std::size_t row = 0; row < table.axis1.size(); ++row) {
        auto value = static_cast<std::int32_t>(bytes.byte()) * 16 - 2048;
        const auto slope = columns > 1 ? static_cast<std::int32_t>(bytes.byte()) - 128 : 0;
        for (std::size_t column = 0; column < columns; ++column) {
            table.values.push_back(value);
            value += slope;
        }
    }
}

} // namespace

void addException(Bytes& bytes, Told::Board& board) {
    const std::size_t what = bytes.below(13);
    const std::uint32_t how = bytes.byte();
    const auto pick = [&](auto& list) -> auto& {
        return list[bytes.byte() % list.size()];
    };
    const auto remove = [&](auto& list) {
        if (list.size() > 1) {
            list.erase(list.begin() + static_cast<std::ptrdiff_t>(bytes.byte() % list.size()));
        }
    };
    const auto presence = presenceFor(how);
    switch (what) {
    case 0:
    case 1:
        return remove(board.drivers);
    case 2:
        pick(board.drivers).missingWords = how % 16;
        return;
    case 3:
        pick(board.drivers).nullRecord = true;
        return;
    case 4:
        return remove(board.variables);
    case 5:
        pick(board.variables).noContent = true;
        return;
    case 6:
        pick(board.variables).nullRecord = true;
        return;
    case 7:
        return remove(board.tables);
    case 8:
        if (how >= 128) {
            return growTable(bytes, pick(board.tables));
        }
        pick(board.tables).axis2.clear();
        pick(board.tables).axis2 = {0};
        for (Told::Table& table : board.tables) {
            table.values.resize(table.axis1.size() * std::max<std::size_t>(table.axis2.size(), 1), 5);
        }
        return;
    case 9: {
        Told::Table& table = pick(board.tables);
        table.values[how % table.values.size()] = anyNumber(bytes);
        table.axis1.front() = how % 2 != 0 ? lowest : table.axis1.front();
        table.axis1.back() = how % 3 != 0 ? highest : table.axis1.back();
        return;
    }
    case 10:
        board.driverLayer = presence;
        return;
    case 11:
        board.temperatureHandler = presence;
        return;
    default:
        pick(board.remoteRadios).presence = presence;
        return;
    }
}
