#include "radio/board/Board.h"
#include "radio/board/BoardNames.h"
#include "radio/board/CalibrationReader.h"
#include "radio/board/HardwareReader.h"
#include "radio/board/LeakageReader.h"
#include "radio/board/LimitsReader.h"
#include "radio/board/PlatformWords.h"
#include "radio/board/RasterReader.h"
#include "radio/board/TableReader.h"
#include "radio/board/TomlItem.h"
#include "radio/board/TomlText.h"
#include "radio/board/TransmitterReader.h"
#include "radio/board/WordList.h"
#include "radio/files/TextFile.h"
#include "radio/text/Words.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <map>
#include <new>

namespace Radio {

namespace {

using ::FrequencyHandler;

/** A radio with hundreds of channels has less than a tenth of this. */
constexpr std::size_t maxBoardSize = std::size_t{4} * 1024 * 1024;
/** All CSV files that a board refers to, together. */
constexpr std::uintmax_t maxTablesSize = std::uintmax_t{16} * 1024 * 1024;
constexpr std::size_t mostChannels = 1024;

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

std::optional<unsigned> driverWordFromString(std::string_view word) {
    return valueOf(driverWords, word);
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
        if (result.size() == mostChannels) {
            item.fail("expected at most " + std::to_string(mostChannels) + " channels");
        }
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

InterfaceDescription readInterface(const std::string& name, const TomlItem& item) {
    const std::vector<std::string_view> known = {"IDriverLayer", "ITemperatureHandler", "IRauHandler"};
    const bool isRau = rauChannel(name).value_or(-1) >= 0;
    if (!isRau && std::find(known.begin(), known.end(), name) == known.end()) {
        item.fail("unknown interface" + notAmong(known, name) + ", IRauHandler_1, IRauHandler_2 and so on");
    }
    return {name, item.word(presenceFromString, presenceWords()), item.place()};
}

/** What `read` makes of each entry of the section `key`; nothing when there is no such section. */
template <typename Read>
auto readSection(const TomlItem& root, std::string_view key, Read read) {
    std::vector<decltype(read(std::string(), root))> result;
    if (const std::optional<TomlItem> section = root.find(key)) {
        for (const auto& [name, item] : section->entries()) {
            result.push_back(read(name, item));
        }
    }
    return result;
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

std::string readText(const std::filesystem::path& file) {
    if (file == "-") {
        throw InputError({"-", 0}, "a board is not read from standard input, expected a file");
    }
    std::string text = readTextFile(file, maxBoardSize, "a board file");
    if (text.size() > maxBoardSize) {
        throw InputError({file.string(), 0}, "is larger than 4 MiB, expected a board file");
    }
    return text;
}

/** Reads the tables of one board from their files. */
class CsvFiles {
public:
    std::optional<CsvFile> readIfAny(const std::filesystem::path& file) {
        struct stat status {};
        // Only then has nothing been calibrated yet; a file that is there and cannot be read is another
        // matter.
        if (::stat(file.c_str(), &status) != 0 && errno == ENOENT) {
            return std::nullopt;
        }
        m_size += static_cast<std::uintmax_t>(std::max<off_t>(status.st_size, 0));
        if (m_size > maxTablesSize) {
            throw InputError({file.string(), 0}, "is one of the files of a board that have more than 16 MiB "
                                                 "together, expected fewer or shorter ones");
        }
        return CsvFile(file, "a calibration table");
    }

private:
    std::uintmax_t m_size = 0;
};

Board describe(const std::filesystem::path& file, const TomlItem& root, const CsvSource& csv) {
    root.entries({"name", "serial", "description", "channel", "transmitter", "leakage", "calibration",
                  "drivers", "variables", "tables", "interfaces", "raster", "limits", "devices", "hardware",
                  "sensor"});
    Board board;
    board.file = file;
    board.name = root.get("name", "the name of the radio").nonEmptyText("the name of the radio");
    if (const std::optional<TomlItem> serial = root.find("serial")) {
        board.serial = serial->nonEmptyText("the serial number of the radio");
    }
    if (const std::optional<TomlItem> description = root.find("description")) {
        board.description = description->text();
    }
    board.channels = readChannels(root);
    board.transmitters = readTransmitters(root, board.channels);
    board.drivers = readSection(root, "drivers", readDriver);
    board.leakages = readLeakages(root, board.channels, board.drivers);
    board.calibrations = readCalibrations(root, board.channels, board.drivers);
    board.variables = readSection(root, "variables", readVariable);
    refuseOverlongSizes(board);
    TableFiles files(csv);
    board.tables = readSection(root, "tables", [&files](const std::string& name, const TomlItem& item) {
        return readTable(name, item, files);
    });
    board.interfaces = readSection(root, "interfaces", readInterface);
    board.rasters = readRasters(root, board.channels);
    board.hardware = readHardware(root, board.drivers);
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

std::vector<std::string_view> handlerTypeWords() {
    return wordsOf(handlerTypes);
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
    try {
        CsvFiles files;
        return readBoard(readText(file), file,
                         [&files](const std::filesystem::path& table) { return files.readIfAny(table); });
    } catch (const std::bad_alloc&) {
        throw InputError({file.string(), 0}, "needs more memory than there is");
    }
}

Board readBoard(std::string_view text, const std::filesystem::path& file, const CsvSource& csv) {
    const toml::table root = parseToml(text, file.string());
    return describe(file, TomlItem(root, "", Place{file.string(), 0}), csv);
}

} // namespace Radio
