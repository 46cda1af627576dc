#include "radio/board/RasterReader.h"

#include "radio/board/WordList.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <limits>
#include <numeric>

namespace Radio {

namespace {

/** Enough for every kHz of several bands, and gone through in seconds. */
constexpr std::int64_t maxCarriers = 10000000;
constexpr std::size_t mostRasters = 10000;

enum class RowDirection : std::uint8_t { tx, rx, both };

constexpr std::array<Word<RowDirection>, 3> rowDirections{{
    {"tx", RowDirection::tx},
    {"rx", RowDirection::rx},
    {"both", RowDirection::both},
}};

std::optional<RowDirection> rowDirectionFromString(std::string_view word) {
    return valueOf(rowDirections, word);
}

/** `count` carriers from `first` on, each of which has to be one that a channel can be tuned to. */
CarrierRow makeRow(const TomlItem& raster, bool transmit, std::int64_t first, std::int64_t step,
                   std::int64_t count) {
    const std::int64_t last = first + (count - 1) * step;
    if (first < 1 || last > std::numeric_limits<std::uint32_t>::max()) {
        raster.fail("expected carriers from 1 to 4294967295 kHz, found " + std::to_string(first) + " to " +
                    std::to_string(last));
    }
    return {transmit, static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(step),
            static_cast<std::uint32_t>(count)};
}

std::vector<CarrierRow> readArrangement(const TomlItem& raster) {
    const std::int64_t centre = raster.get("centre", "the centre of the arrangement, in kHz").integer(1);
    const std::int64_t spacing = raster.get("spacing", "the spacing of the carriers, in kHz").integer(1);
    const std::int64_t count = raster.get("count", "the number of carriers in one direction").integer(1);
    std::vector<CarrierRow> rows;
    for (const std::string_view direction : {"tx", "rx"}) {
        if (const std::optional<TomlItem> offset = raster.find(direction)) {
            const std::int64_t first = centre + offset->integer() + spacing;
            rows.push_back(makeRow(raster, direction == "tx", first, spacing, count));
        }
    }
    if (rows.empty()) {
        raster.fail("expected tx, rx or both, found neither");
    }
    return rows;
}

std::vector<CarrierRow> readPlainRow(const TomlItem& raster) {
    const std::vector<std::string_view> words = wordsOf(rowDirections);
    const RowDirection direction = raster.get("direction", "one of the words " + joined(words, ", "))
                                       .word(rowDirectionFromString, words);
    const std::int32_t first = raster.get("first", "the first carrier, in kHz").integer(1);
    const std::int64_t last = raster.get("last", "the last carrier, in kHz").integer(first);
    const std::int64_t step = raster.get("step", "the distance of two carriers, in kHz").integer(1);
    const std::int64_t count = (last - first) / step + 1;
    std::vector<CarrierRow> rows;
    if (direction != RowDirection::rx) {
        rows.push_back(makeRow(raster, true, first, step, count));
    }
    if (direction != RowDirection::tx) {
        rows.push_back(makeRow(raster, false, first, step, count));
    }
    return rows;
}

std::vector<CarrierRow> readRows(const TomlItem& raster) {
    const std::optional<std::string_view> ofArrangement =
        raster.firstOf({"centre", "spacing", "count", "tx", "rx"});
    const std::optional<std::string_view> ofPlainRow = raster.firstOf({"direction", "first", "last", "step"});
    if (ofArrangement.has_value() == ofPlainRow.has_value()) {
        raster.fail(
            "expected either centre, spacing, count, tx and rx, or direction, first, last and step, found " +
            (ofArrangement ? std::string(*ofArrangement) + " and " + std::string(*ofPlainRow)
                           : std::string("neither")));
    }
    std::vector<CarrierRow> rows = ofArrangement ? readArrangement(raster) : readPlainRow(raster);
    const auto carriers =
        std::accumulate(rows.begin(), rows.end(), std::int64_t{0},
                        [](std::int64_t sum, const CarrierRow& row) { return sum + row.count; });
    if (carriers > maxCarriers) {
        raster.fail("expected at most " + std::to_string(maxCarriers) + " carriers, found " +
                    std::to_string(carriers));
    }
    return rows;
}

/** The channels of a raster; all of the board unless it says which. */
std::vector<int> readRasterChannels(const TomlItem& raster, const std::vector<ChannelDescription>& channels) {
    std::vector<int> numbers;
    std::transform(channels.begin(), channels.end(), std::back_inserter(numbers),
                   [](const ChannelDescription& channel) { return channel.number; });
    const std::optional<TomlItem> item = raster.find("channels");
    if (!item) {
        return numbers;
    }
    std::vector<int> chosen = item->distinctIntegers();
    for (const int number : chosen) {
        if (std::find(numbers.begin(), numbers.end(), number) == numbers.end()) {
            item->fail("expected numbers of the board's channels, found " + std::to_string(number));
        }
    }
    return chosen;
}

} // namespace

std::vector<RasterDescription> readRasters(const TomlItem& root,
                                           const std::vector<ChannelDescription>& channels) {
    std::vector<RasterDescription> result;
    const std::vector<TomlItem> items = root.tables("raster", "raster");
    if (items.size() > mostRasters) {
        items[mostRasters].fail("expected at most " + std::to_string(mostRasters) + " rasters");
    }
    for (const TomlItem& item : items) {
        item.entries({"name", "channels", "centre", "spacing", "count", "tx", "rx", "direction", "first",
                      "last", "step", "channel_spacings"});
        RasterDescription raster;
        raster.name = item.get("name", "the name of the raster").nonEmptyText("the name of the raster");
        raster.channels = readRasterChannels(item, channels);
        raster.rows = readRows(item);
        if (const std::optional<TomlItem> spacings = item.find("channel_spacings")) {
            raster.channelSpacings = spacings->distinctIntegers();
        }
        raster.place = item.place();
        result.push_back(raster);
    }
    return result;
}

} // namespace Radio
