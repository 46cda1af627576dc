#include "FullBoard.h"

#include <map>
#include <utility>

namespace Told {

namespace {

/** A board with one channel. */
Board channelOf(std::int32_t channel, bool alternatives) {
    Board board;
    const std::string driver = "channel." + std::to_string(channel) + ".";
    const std::string table = "Channel." + std::to_string(channel) + ".";
    for (const std::string direction : {"tx", "rx"}) {
        for (const char* const name :
             {"rf.frequency", "rf.lo.frequency", "rf.lo.frequency.in.hz", "if.frequency", "rf.pll.config"}) {
            board.drivers.push_back({driver + direction + "." + name});
        }
        board.variables.push_back({driver + direction + ".mixer.multiplicationfactor", {2}});
        board.variables.push_back({driver + direction + ".rf.spectruminverted", {0}});
        board.variables.push_back({driver + direction + ".baseband.spectruminverted", {1}});
        board.variables.push_back({driver + direction + ".if.frequency", {140000}});
    }
    for (const char* const direction : {"Tx", "Rx"}) {
        board.tables.push_back({table + direction + ".Rf.Pll.Frequency.To.Chargepump.Setting",
                                {17000000, 18000000, 19000000},
                                {},
                                {3, 1000003, -7}});
    }
    for (const char* const name :
         {"dsp.rx.freq.offset", "tx.rf.mixer.i", "tx.rf.mixer.q", "tx.rf.detector.v",
          "dsp.tx.dc.compensation.i", "dsp.tx.dc.compensation.q",
          "dsp.tx.quadrature.gain.offset.compensation", "dsp.tx.quadrature.phase.offset.compensation"}) {
        board.drivers.push_back({driver + name});
    }
    board.variables.push_back({driver + "rx.rf.frequency.cs.offset.arraysize", {6}});
    board.variables.push_back(
        {driver + "rx.rf.frequency.cs.offset.array", {50, 2000, 100, -4000, 250, 0, 600, 17, 0, 0}});
    for (const std::string branch : {"I", "Q"}) {
        board.tables.push_back({table + "Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer." + branch,
                                {17000000, 19000000},
                                {-20, 60},
                                {0, 100, branch == "I" ? 2000 : -2000, 2100}});
    }
    std::int32_t value = 10;
    for (const char* const name : {"Dc.I", "Dc.Q", "Gain.Offset", "Phase.Offset"}) {
        board.tables.push_back({table + "Tx.Dsp.Temperature.To." + name + ".Compensation",
                                {-30, 25, 80},
                                {},
                                {value, -3 * value, 4 * value}});
        ++value;
    }
    board.remoteRadios.push_back({channel});
    if (!alternatives) {
        return board;
    }
    for (const char* const name :
         {"tx.rf.lo.config", "rx.rf.lo.config", "tx.bb.iq.coarse.dc.i.v.adjust",
          "tx.bb.iq.coarse.dc.q.v.adjust", "tx.rf.detector.low.v.detect", "tx.rf.detector.high.v.detect"}) {
        board.drivers.push_back({driver + name});
    }
    for (const std::string branch : {"I", "Q"}) {
        board.tables.push_back(
            {table + "Tx.Bb.Frequency.To.Coarse.Dc." + branch + ".Compensation", {0, 100}, {}, {5, 6}});
    }
    return board;
}

/** What all channels share. */
Board sharedOnes() {
    Board board;
    for (const std::string direction : {"Tx", "Rx"}) {
        board.variables.push_back({direction + "IfBb", {3}});
        board.tables.push_back({"Channel.1." + direction + ".Rf.Pll.Frequency.To.Chargepump.Setting.Pdb",
                                {16000000, 20000000},
                                {},
                                {44, 88}});
    }
    board.variables.push_back({"HwCodeDsp", {3}});
    board.variables.push_back({"ChannelSpacing", {100}});
    return board;
}

void add(Board& board, const Board& other) {
    const auto append = [](auto& list, const auto& more) {
        list.insert(list.end(), more.begin(), more.end());
    };
    append(board.drivers, other.drivers);
    append(board.variables, other.variables);
    append(board.tables, other.tables);
    append(board.remoteRadios, other.remoteRadios);
}

} // namespace

// Made once and copied: names are put together of many pieces.

void addChannel(Board& board, std::int32_t channel, bool alternatives) {
    static std::map<std::pair<std::int32_t, bool>, Board> made;
    const auto [entry, isNew] = made.try_emplace({channel, alternatives});
    if (isNew) {
        entry->second = channelOf(channel, alternatives);
    }
    add(board, entry->second);
}

void addShared(Board& board) {
    static const Board made = sharedOnes();
    add(board, made);
}

} // namespace Told
