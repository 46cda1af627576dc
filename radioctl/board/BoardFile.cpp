#include "Board.h"
#include "BoardNames.h"
#include "TomlItem.h"
#include "Words.h"
#include "model/TransmitterReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <limits>
#include <map>
#include <numeric>

namespace Radioctl {

namespace {

using ::FrequencyHandler;

/** Enough for every kHz of several bands, and gone through in seconds. */
constexpr std::int64_t maxCarriers = 10000000;

/** One of the words that stand for a value in board files. */
template <typename Value>
struct Word {
    std::string_view word;
    Value value;
};

constexpr std::array<Word<FrequencyHandler::FrequencyHandlerType>, 6> handlerTypes{{
    {"microwave-if", FrequencyHandler::MicrowaveBoardIf},
    {"rf-module", FrequencyHandler::RfModule},
    {"microwave-dsp-offset", FrequencyHandler::MicrowaveBoardDspOffset},
    {"microwave-hz-cs-offset", FrequencyHandler::MicrowaveBoardHzCsOffset},
    {"rau", FrequencyHandler::Rau},
    {"microwave-hz", FrequencyHandler::MicrowaveBoardHz},
}};

constexpr std::array<Word<unsigned>, 4> driverWords{{
    {"context", Standalone::wordContext},
    {"write", Standalone::wordWrite},
    {"write-buffer", Standalone::wordWriteBuffer},
    {"read", Standalone::wordRead},
}};

enum class RowDirection : std::uint8_t { tx, rx, both };

constexpr std::array<Word<RowDirection>, 3> rowDirections{{
    {"tx", RowDirection::tx},
    {"rx", RowDirection::rx},
    {"both", RowDirection::both},
}};

template <typename Value, std::size_t count>
std::vector<std::string_view> wordsOf(const std::array<Word<Value>, count>& list) {
    std::vector<std::string_view> words;
    words.reserve(count);
    for (const auto& entry : list) {
        words.push_back(entry.word);
    }
    return words;
}

template <typename Value, std::size_t count>
std::optional<Value> valueOf(const std::array<Word<Value>, count>& list, std::string_view word) {
    for (const auto& entry : list) {
        if (entry.word == word) {
            return entry.value;
        }
    }
    return std::nullopt;
}

std::optional<unsigned> driverWordFromString(std::string_view word) {
    return valueOf(driverWords, word);
}

std::optional<RowDirection> rowDirectionFromString(std::string_view word) {
    return valueOf(rowDirections, word);
}

FrequencyHandler::FrequencyHandlerType readType(const TomlItem& item) {
    if (!item.isInteger()) {
        return item.word(handlerTypeFromString, wordsOf(handlerTypes));
    }
    const std::int32_t number = item.integer(0);
    for (const auto& entry : handlerTypes) {
        if (entry.value == number) {
            return entry.value;
        }
    }
    item.failExpecting("a type from 0 to 5 or one of the words " + joined(wordsOf(handlerTypes), ", "));
}

std::vector<ChannelDescription> readChannels(const TomlItem& root) {
    const std::optional<TomlItem> channels = root.find("channel");
    if (!channels) {
        throw InputError(root.place(), "no channel, expected at least one [[channel]] with number and type");
    }
    if (!channels->isArray()) {
        channels->failExpecting("[[channel]] tables, one for each channel");
    }
    std::vector<ChannelDescription> result;
    std::map<std::int32_t, unsigned> lineOfNumber;
    for (const TomlItem& item : channels->elements()) {
        item.entries({"number", "type", "iq_compensation"});
        const TomlItem number = item.get("number", "an integer from 0 to 2147483647");
        const TomlItem type = item.get("type", "one of the words " + joined(wordsOf(handlerTypes), ", "));
        ChannelDescription channel{number.integer(0), readType(type), item.place()};
        if (const std::optional<TomlItem> compensation = item.find("iq_compensation")) {
            channel.iqCompensation = compensation->boolean();
        }
        const auto [first, isNew] = lineOfNumber.emplace(channel.number, number.place().line);
        if (!isNew) {
            number.fail(std::to_string(channel.number) + " is taken by the channel on line " +
                        std::to_string(first->second) + ", expected a number of its own");
        }
        result.push_back(channel);
    }
    return result;
}

DriverDescription readDriver(const std::string& name, const TomlItem& item) {
    item.entries({"value", "without"});
    DriverDescription driver;
    driver.name = name;
    driver.place = item.place();
    if (const std::optional<TomlItem> value = item.find("value")) {
        driver.value = value->integer();
    }
    if (const std::optional<TomlItem> without = item.find("without")) {
        for (const TomlItem& word : without->elements()) {
            const unsigned missing = word.word(driverWordFromString, toStrings(~0U));
            if ((driver.missingWords & missing) != 0) {
                word.fail("expected each word once, found " + inQuotes(word.text()) + " twice");
            }
            driver.missingWords |= missing;
        }
    }
    return driver;
}

VariableDescription readVariable(const std::string& name, const TomlItem& item) {
    if (item.isTable()) {
        item.failExpecting("an integer or an array of integers (a name with dots stands in quotes)");
    }
    if (item.isArray()) {
        return {name, item.integers(), true, item.place()};
    }
    return {name, {item.integer()}, false, item.place()};
}

std::vector<std::int32_t> readAxis(const TomlItem& item) {
    std::vector<std::int32_t> axis = item.integers();
    const auto wrong = std::adjacent_find(
        axis.begin(), axis.end(), [](std::int32_t left, std::int32_t right) { return left >= right; });
    if (wrong != axis.end()) {
        item.fail("expected ascending nodes, found " + std::to_string(*(wrong + 1)) + " after " +
                  std::to_string(*wrong));
    }
    return axis;
}

TableDescription readTable(const std::string& name, const TomlItem& item) {
    item.entries({"axis", "axes", "values"});
    CalibrationTable table;
    table.name = name;
    const std::optional<TomlItem> axis = item.find("axis");
    const std::optional<TomlItem> axes = item.find("axes");
    if (axis.has_value() == axes.has_value()) {
        item.fail(std::string("expected either axis or axes, found ") + (axis ? "both" : "neither"));
    }
    const TomlItem values = item.get("values", axis ? "an array of integers" : "an array of rows");
    if (axis) {
        table.axis1 = readAxis(*axis);
        table.values = values.integers();
        values.requireCount(table.values.size(), table.axis1.size(), "one value for each node of the axis");
        return {table, item.place()};
    }
    const std::vector<TomlItem> both = axes->elements();
    axes->requireCount(both.size(), 2, "two axes");
    table.axis1 = readAxis(both[0]);
    table.axis2 = readAxis(both[1]);
    const std::vector<TomlItem> rows = values.elements();
    values.requireCount(rows.size(), table.axis1.size(), "one row for each node of the first axis");
    for (const TomlItem& row : rows) {
        const std::vector<std::int32_t> rowValues = row.integers();
        row.requireCount(rowValues.size(), table.axis2.size(),
                         "one value in each row for each node of the second axis");
        table.values.insert(table.values.end(), rowValues.begin(), rowValues.end());
    }
    return {table, item.place()};
}

InterfaceDescription readInterface(const std::string& name, const TomlItem& item) {
    const std::vector<std::string_view> known = {"IDriverLayer", "ITemperatureHandler", "IRauHandler"};
    const bool isRau = rauChannel(name).value_or(-1) >= 0;
    if (!isRau && std::find(known.begin(), known.end(), name) == known.end()) {
        item.fail("unknown interface" + notAmong(known, name) + ", IRauHandler_1, IRauHandler_2 and so on");
    }
    return {name, item.word(presenceFromString, presenceWords()), item.place()};
}

/** What `read` makes of each entry of the section `key`; nothing when there is no such section. */
template <typename Description>
std::vector<Description> readSection(const TomlItem& root, std::string_view key,
                                     Description (*read)(const std::string&, const TomlItem&)) {
    std::vector<Description> result;
    if (const std::optional<TomlItem> section = root.find(key)) {
        for (const auto& [name, item] : section->entries()) {
            result.push_back(read(name, item));
        }
    }
    return result;
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

std::vector<RasterDescription> readRasters(const TomlItem& root,
                                           const std::vector<ChannelDescription>& channels) {
    std::vector<RasterDescription> result;
    const std::optional<TomlItem> rasters = root.find("raster");
    if (!rasters) {
        return result;
    }
    if (!rasters->isArray()) {
        rasters->failExpecting("[[raster]] tables, one for each raster");
    }
    for (const TomlItem& item : rasters->elements()) {
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

std::optional<Range> readRange(const TomlItem& limits, std::string_view key) {
    const std::optional<TomlItem> item = limits.find(key);
    if (!item) {
        return std::nullopt;
    }
    const std::vector<TomlItem> ends = item->elements();
    item->requireCount(ends.size(), 2, "the lowest and the highest value");
    const Range range{ends[0].integer(0), ends[1].integer(0)};
    if (range.low > range.high) {
        item->fail("expected the lowest value first, found " + std::to_string(range.high) + " after " +
                   std::to_string(range.low));
    }
    return range;
}

Limits readLimits(const TomlItem& root) {
    Limits limits;
    if (const std::optional<TomlItem> item = root.find("limits")) {
        item->entries({"if_pll", "rf_pll", "carrier_error"});
        limits.ifPll = readRange(*item, "if_pll");
        limits.rfPll = readRange(*item, "rf_pll");
        if (const std::optional<TomlItem> error = item->find("carrier_error")) {
            limits.carrierError = error->integer(0);
        }
    }
    return limits;
}

/** Where the size says more than the array has, a receiver would read what lies behind the array. */
void refuseOverlongSizes(const Board& board) {
    for (const VariableDescription& size : board.variables) {
        const VariableDescription* const array = arraySizedBy(size.name, board);
        if (array != nullptr && size.values.front() > static_cast<std::int64_t>(array->values.size())) {
            throw InputError(size.place, "variable " + inQuotes(size.name) + " is " +
                                             std::to_string(size.values.front()) + ", but " +
                                             inQuotes(array->name) + " has " +
                                             counted(array->values.size(), "place"));
        }
    }
}

Board readBoard(const std::filesystem::path& file, const TomlItem& root) {
    root.entries({"name", "description", "channel", "transmitter", "drivers", "variables", "tables",
                  "interfaces", "raster", "limits"});
    Board board;
    board.file = file;
    board.name = root.get("name", "the name of the radio").nonEmptyText("the name of the radio");
    if (const std::optional<TomlItem> description = root.find("description")) {
        board.description = description->text();
    }
    board.channels = readChannels(root);
    board.transmitters = readTransmitters(root, board.channels);
    board.drivers = readSection(root, "drivers", readDriver);
    board.variables = readSection(root, "variables", readVariable);
    refuseOverlongSizes(board);
    board.tables = readSection(root, "tables", readTable);
    board.interfaces = readSection(root, "interfaces", readInterface);
    board.rasters = readRasters(root, board.channels);
    board.limits = readLimits(root);
    return board;
}

} // namespace

std::string_view toString(FrequencyHandler::FrequencyHandlerType type) {
    for (const auto& entry : handlerTypes) {
        if (entry.value == type) {
            return entry.word;
        }
    }
    return "unknown";
}

std::optional<FrequencyHandler::FrequencyHandlerType> handlerTypeFromString(std::string_view word) {
    return valueOf(handlerTypes, word);
}

std::vector<std::string_view> toStrings(unsigned words) {
    std::vector<std::string_view> result;
    for (const auto& entry : driverWords) {
        if ((words & entry.value) != 0) {
            result.push_back(entry.word);
        }
    }
    return result;
}

Board loadBoard(const std::filesystem::path& file) {
    const toml::table root = parseFile(file);
    return readBoard(file, TomlItem(root, "", Place{file.string(), 0}));
}

} // namespace Radioctl
