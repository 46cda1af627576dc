#include "radio/board/HardwareRanges.h"

#include "radio/board/BoardNames.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace Radio {

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

/** A table of a channel and the driver that its values go to, both without the channel. */
constexpr std::array<std::pair<const char*, const char*>, 12> destinations{{
    {"Tx.Rf.Pll.Frequency.To.Chargepump.Setting", "tx.rf.pll.config"},
    {"Rx.Rf.Pll.Frequency.To.Chargepump.Setting", "rx.rf.pll.config"},
    {"Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I", "tx.rf.mixer.i"},
    {"Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q", "tx.rf.mixer.q"},
    {"Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I", "tx.bb.iq.coarse.dc.i.v.adjust"},
    {"Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q", "tx.bb.iq.coarse.dc.q.v.adjust"},
    {"Tx.Bb.Frequency.To.Coarse.Dc.I.Compensation", "tx.bb.iq.coarse.dc.i.v.adjust"},
    {"Tx.Bb.Frequency.To.Coarse.Dc.Q.Compensation", "tx.bb.iq.coarse.dc.q.v.adjust"},
    {"Tx.Dsp.Temperature.To.Dc.I.Compensation", "dsp.tx.dc.compensation.i"},
    {"Tx.Dsp.Temperature.To.Dc.Q.Compensation", "dsp.tx.dc.compensation.q"},
    {"Tx.Dsp.Temperature.To.Gain.Offset.Compensation", "dsp.tx.quadrature.gain.offset.compensation"},
    {"Tx.Dsp.Temperature.To.Phase.Offset.Compensation", "dsp.tx.quadrature.phase.offset.compensation"},
}};

/** The tables and drivers of a channel, in full. */
Pairs pairsOf(const ChannelDescription& channel) {
    const std::string number = std::to_string(channel.number);
    Pairs pairs;
    for (const auto& [table, driver] : destinations) {
        pairs.emplace_back("Channel." + number + "." + table, "channel." + number + "." + driver);
    }
    // Where a channel has no charge-pump table of its own, the first one's does.
    for (const std::string direction : {"Tx", "Rx"}) {
        const std::string lower = direction == "Tx" ? "tx" : "rx";
        pairs.emplace_back("Channel.1." + direction + ".Rf.Pll.Frequency.To.Chargepump.Setting.Pdb",
                           "channel." + number + "." + lower + ".rf.pll.config");
    }
    return pairs;
}

/** Of hardware that has a range. */
bool isOutside(std::int64_t value, const Devices::DriverHardware& hardware) {
    return value < *hardware.lowest || value > *hardware.highest;
}

std::string rangeOf(const Devices::DriverHardware& hardware) {
    return std::to_string(*hardware.lowest) + " to " + std::to_string(*hardware.highest);
}

void check(const TableDescription& table, const Devices::DriverHardware& hardware,
           std::vector<Finding>& findings) {
    const std::vector<std::int32_t>& values = table.table.values;
    const auto wrong = std::find_if(values.begin(), values.end(),
                                    [&](std::int32_t value) { return isOutside(value, hardware); });
    if (wrong != values.end()) {
        findings.push_back({Severity::error, table.place,
                            "table " + inQuotes(table.table.name) + " has the value " +
                                std::to_string(*wrong) + ", outside the range of driver " +
                                inQuotes(hardware.driver) + ", " + rangeOf(hardware)});
    }
}

} // namespace

std::vector<Finding> checkHardwareRanges(const Board& board) {
    std::vector<Finding> findings;
    for (const ChannelDescription& channel : board.channels) {
        for (const auto& [tableName, driver] : pairsOf(channel)) {
            const auto table =
                std::find_if(board.tables.begin(), board.tables.end(),
                             [&name = tableName](const auto& one) { return one.table.name == name; });
            const Devices::DriverHardware* const hardware = findHardware(board, driver);
            if (table != board.tables.end() && hardware != nullptr && hardware->lowest) {
                check(*table, *hardware, findings);
            }
        }
    }
    return findings;
}

std::string whyNotWrite(const Board& board, const std::string& driver, std::int64_t value) {
    const Devices::DriverHardware* const hardware = findHardware(board, driver);
    if (hardware == nullptr || !hardware->lowest || !isOutside(value, *hardware)) {
        return {};
    }
    return inQuotes(driver) + " takes " + rangeOf(*hardware) + ", not " + std::to_string(value);
}

} // namespace Radio
