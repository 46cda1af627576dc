#ifndef TESTS_RADIO_SUPPORT_PLANBOARDS_H
#define TESTS_RADIO_SUPPORT_PLANBOARDS_H

#include "radio/board/Board.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Radio {

/**
 * Boards for tests of the frequency plan, of one channel, 1. Both directions of the microwave boards have an
 * IF of 140 MHz where there is one, a multiplication factor of 2, the LO below the carrier (RF sideband -1)
 * and IF sideband +1. The charge-pump setting is the frequency above 17 GHz in units of 10 MHz, up to 19 GHz.
 * The mixer is corrected by 7 and -7 everywhere.
 */
class PlanBoards {
public:
    static Board microwave(::FrequencyHandler::FrequencyHandlerType type) {
        Board board;
        board.file = "board.toml";
        board.name = "Test radio";
        board.channels = {{1, type, {}}};
        addDirection(board, "tx", "Tx");
        addDirection(board, "rx", "Rx");
        addDrivers(board, {"tx.rf.mixer.i", "tx.rf.mixer.q", "tx.rf.detector.v", "dsp.rx.freq.offset"});
        set(board, "HwCodeDsp", {0});
        set(board, "ChannelSpacing", {100});
        setOffsetArray(board, {50, 2000, 100, -4000});
        const std::string table = "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.";
        board.tables.push_back({{table + "I", {18'000'000}, {0}, {7}}, {}});
        board.tables.push_back({{table + "Q", {18'000'000}, {0}, {-7}}, {}});
        return board;
    }

    static Board rfModule() {
        Board board;
        board.file = "board.toml";
        board.name = "Test radio";
        board.channels = {{1, ::FrequencyHandler::RfModule, {}}};
        addDrivers(board, {"tx.rf.frequency", "rx.rf.frequency"});
        return board;
    }

    static Board rau() {
        Board board;
        board.file = "board.toml";
        board.name = "Test radio";
        board.channels = {{1, ::FrequencyHandler::Rau, {}}};
        board.interfaces = {{"IRauHandler_1", Standalone::Presence::present, {}}};
        return board;
    }

    /**
     * The LO of channel 1 leaks with `level` dBc, in phase with I, at all carriers and temperatures. A unit
     * of either correction is `gain` of the signal's amplitude.
     */
    static LeakageDescription leakage(double level, double gain) {
        LeakageDescription leakage;
        leakage.channel = 1;
        leakage.reference = 18'000'000;
        leakage.paths.emplace_back().level = level;
        leakage.i = {"channel.1.tx.rf.mixer.i", gain, 1, -1000, 1000};
        leakage.q = {"channel.1.tx.rf.mixer.q", gain, 1, -1000, 1000};
        leakage.detector.driver = "channel.1.tx.rf.detector.v";
        return leakage;
    }

    static void set(Board& board, const std::string& name, const std::vector<std::int32_t>& values) {
        const auto found =
            std::find_if(board.variables.begin(), board.variables.end(),
                         [&](const VariableDescription& variable) { return variable.name == name; });
        if (found == board.variables.end()) {
            board.variables.push_back({name, values, values.size() > 1, {}});
        } else {
            found->values = values;
        }
    }
    static void setOffsetArray(Board& board, const std::vector<std::int32_t>& pairs) {
        set(board, "channel.1.rx.rf.frequency.cs.offset.array", pairs);
        set(board, "channel.1.rx.rf.frequency.cs.offset.arraysize",
            {static_cast<std::int32_t>(pairs.size())});
    }
    static void remove(Board& board, const std::string& name) {
        const auto hasName = [&](const auto& description) { return description.name == name; };
        board.drivers.erase(std::remove_if(board.drivers.begin(), board.drivers.end(), hasName),
                            board.drivers.end());
        board.variables.erase(std::remove_if(board.variables.begin(), board.variables.end(), hasName),
                              board.variables.end());
        board.tables.erase(std::remove_if(board.tables.begin(), board.tables.end(),
                                          [&](const auto& entry) { return entry.table.name == name; }),
                           board.tables.end());
    }
    static void addDrivers(Board& board, const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            board.drivers.push_back({"channel.1." + name, 0, 0, {}});
        }
    }

private:
    static void addDirection(Board& board, const std::string& direction, const std::string& capital) {
        addDrivers(board, {direction + ".rf.lo.frequency", direction + ".rf.lo.frequency.in.hz",
                           direction + ".if.frequency", direction + ".rf.pll.config"});
        const std::string prefix = "channel.1." + direction + ".";
        set(board, prefix + "mixer.multiplicationfactor", {2});
        set(board, prefix + "rf.spectruminverted", {0});
        set(board, prefix + "baseband.spectruminverted", {1});
        set(board, prefix + "if.frequency", {140'000});
        set(board, capital + "IfBb", {0});
        const std::string table = "Channel.1." + capital + ".Rf.Pll.Frequency.To.Chargepump.Setting";
        board.tables.push_back({{table, {17'000'000, 19'000'000}, {}, {0, 200}}, {}});
    }
};

} // namespace Radio

#endif
