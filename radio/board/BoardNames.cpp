#include "radio/board/BoardNames.h"

#include "radio/text/Numbers.h"

#include <algorithm>

namespace Radio {

namespace {

constexpr std::string_view rauBase = "IRauHandler";

void append(std::vector<std::string>& names, const std::vector<std::string>& more) {
    names.insert(names.end(), more.begin(), more.end());
}

} // namespace

const ChannelDescription* findChannel(const Board& board, int number) {
    const auto channel =
        std::find_if(board.channels.begin(), board.channels.end(),
                     [number](const ChannelDescription& candidate) { return candidate.number == number; });
    return channel == board.channels.end() ? nullptr : &*channel;
}

const LeakageDescription* findLeakage(const Board& board, int channel) {
    const auto leakage =
        std::find_if(board.leakages.begin(), board.leakages.end(),
                     [channel](const LeakageDescription& candidate) { return candidate.channel == channel; });
    return leakage == board.leakages.end() ? nullptr : &*leakage;
}

std::string_view toString(CalibrationMethod method) {
    return method == CalibrationMethod::fit ? "fit" : "search";
}

std::optional<CalibrationMethod> calibrationMethodFromString(std::string_view word) {
    for (const CalibrationMethod method : {CalibrationMethod::search, CalibrationMethod::fit}) {
        if (word == toString(method)) {
            return method;
        }
    }
    return std::nullopt;
}

const Devices::DriverHardware* findHardware(const Board& board, std::string_view driver) {
    const std::vector<Devices::DriverHardware>& all = board.hardware.description.drivers;
    const auto found =
        std::find_if(all.begin(), all.end(), [driver](const auto& one) { return one.driver == driver; });
    return found == all.end() ? nullptr : &*found;
}

std::optional<Range> transmitBand(const Board& board, int channel) {
    std::optional<Range> band;
    for (const RasterDescription& raster : board.rasters) {
        if (std::find(raster.channels.begin(), raster.channels.end(), channel) == raster.channels.end()) {
            continue;
        }
        for (const CarrierRow& row : raster.rows) {
            const std::int64_t first = row.first;
            const std::int64_t last = first + std::int64_t{row.step} * (std::int64_t{row.count} - 1);
            if (row.transmit) {
                band =
                    band ? Range{std::min(band->low, first), std::max(band->high, last)} : Range{first, last};
            }
        }
    }
    return band;
}

std::string channelName(std::string_view base, int channel) {
    return std::string(base) + (channel == 0 ? "" : "_" + std::to_string(channel));
}

std::string handlerName(Direction direction, int channel) {
    return channelName(direction == Direction::tx ? "IFrequencyHandler_Tx" : "IFrequencyHandler_Rx", channel);
}

std::string rauName(int channel) {
    return channelName(rauBase, channel);
}

std::string rauCarrierName(std::string_view rau, Direction direction) {
    return std::string(rau) + "." + std::string(toString(direction));
}

std::optional<int> rauChannel(std::string_view name) {
    if (name == rauBase) {
        return 0;
    }
    if (name.size() < rauBase.size() + 2) {
        return std::nullopt;
    }
    const auto number = parseInteger(name.substr(rauBase.size() + 1));
    const auto channel = static_cast<int>(number.value_or(0));
    return channel != 0 && rauName(channel) == name ? std::optional(channel) : std::nullopt;
}

std::string cancellationTableName(int channel, std::string_view branch) {
    return "Channel." + std::to_string(channel) + ".Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer." +
           std::string(branch);
}

const TableDescription* findCancellationTable(const Board& board, int channel, std::string_view branch) {
    const std::string name = cancellationTableName(channel, branch);
    const auto found =
        std::find_if(board.tables.begin(), board.tables.end(),
                     [&name](const TableDescription& table) { return table.table.name == name; });
    return found == board.tables.end() ? nullptr : &*found;
}

const VariableDescription* arraySizedBy(std::string_view name, const Board& board) {
    constexpr std::string_view ending = ".rx.rf.frequency.cs.offset.arraysize";
    if (name.size() < ending.size() || name.substr(name.size() - ending.size()) != ending) {
        return nullptr;
    }
    name.remove_suffix(std::string_view("size").size());
    const auto array =
        std::find_if(board.variables.begin(), board.variables.end(),
                     [name](const VariableDescription& variable) { return variable.name == name; });
    return array == board.variables.end() ? nullptr : &*array;
}

BoardNames::BoardNames(const Board& board) : platformInterfaces{"IDriverLayer", "ITemperatureHandler"} {
    for (const DriverDescription& driver : board.drivers) {
        drivers.push_back(driver.name);
    }
    for (const VariableDescription& variable : board.variables) {
        variables.push_back(variable.name);
    }
    for (const TableDescription& table : board.tables) {
        tables.push_back(table.table.name);
    }
    for (const InterfaceDescription& interface : board.interfaces) {
        if (rauChannel(interface.name).has_value()) {
            raus.push_back(interface.name);
        }
    }
    append(platformInterfaces, raus);
    brokerNames = platformInterfaces;
    for (const ChannelDescription& channel : board.channels) {
        channels.push_back(std::to_string(channel.number));
        append(brokerNames, {handlerName(Direction::tx, channel.number),
                             handlerName(Direction::rx, channel.number), rauName(channel.number)});
    }
    hardware = drivers;
    for (const std::string& rau : raus) {
        append(hardware, {rauCarrierName(rau, Direction::tx), rauCarrierName(rau, Direction::rx)});
    }
}

} // namespace Radio
