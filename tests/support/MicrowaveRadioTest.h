#ifndef TESTS_SUPPORT_MICROWAVERADIOTEST_H
#define TESTS_SUPPORT_MICROWAVERADIOTEST_H

#include "FrequencyHandler_MicrowaveBoard.h"
#include "LoCancellation.h"
#include "RadioTest.h"

#include <memory>

/** The flags of the microwave-board handler, in the order of its constructor. */
struct BoardFlags {
    bool useIfFrequency;
    bool useDspRxFreqOffset;
    bool useCsOffsetArray;
    bool loFrequencyInHz;
};

/** A carrier, in kHz, that needs every step of a microwave board. */
constexpr unsigned long carrier = 18'000'250;
constexpr const char* tableI = "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I";
constexpr const char* tableQ = "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q";

/**
 * A test on the healthy microwave radio of channel 1: whatever its handlers and its canceller may ask for is
 * there, apart from what boards have instead of something else (the LO configuration driver, the coarse DC
 * drivers, the detectors of two ranges). A test takes away, changes or adds the one thing that it is about.
 *
 * Both directions have an IF of 140 MHz, a multiplication factor of 2, the LO below the carrier (RF sideband
 * -1) and an inverted baseband (IF sideband +1). A charge-pump table gives the frequency less 17 GHz, in kHz:
 * the value written tells at which frequency it was read. The I table gives MHz above 17 GHz plus the
 * temperature, the Q table the same with a minus sign.
 */
class MicrowaveRadioTest : public RadioTest {
protected:
    using Board = RL::FrequencyHandler::MicrowaveBoard::FrequencyHandler;
    using Operation = Standalone::Operation;

    static constexpr BoardFlags plainBoard{false, false, false, false};
    static constexpr BoardFlags withIf{true, false, false, false};
    static constexpr BoardFlags withHalfSpacing{false, true, false, false};
    static constexpr BoardFlags withOffsetArray{false, false, true, true};
    static constexpr BoardFlags withHz{false, false, false, true};
    static constexpr BoardFlags withEverything{true, true, true, true};

    MicrowaveRadioTest() {
        describeDirection("Tx", "channel.1.tx.");
        describeDirection("Rx", "channel.1.rx.");
        addDriver("channel.1.dsp.rx.freq.offset");
        platform.variables().add("HwCodeDsp", {0});
        platform.variables().add("channel.1.rx.rf.frequency.cs.offset.arraysize", {4});
        platform.variables().add("channel.1.rx.rf.frequency.cs.offset.array", {50, 2000, 100, -4000, 0, 0});
        platform.variables().add("ChannelSpacing", {100});

        addDriver("channel.1.tx.rf.mixer.i");
        addDriver("channel.1.tx.rf.mixer.q");
        addDriver("channel.1.tx.rf.detector.v");
        const std::string table = "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.";
        platform.tables().add({table + "I", {17'000'000, 19'000'000}, {0, 100}, {0, 100, 2000, 2100}});
        platform.tables().add({table + "Q", {17'000'000, 19'000'000}, {0, 100}, {0, -100, -2000, -2100}});
    }

    Standalone::Driver& addDriver(const std::string& name) { return platform.drivers().add(name); }
    Standalone::Driver& driver(const std::string& name) { return *platform.drivers().find(name); }

    /** Changes the live content of a variable. */
    void set(const std::string& name, const std::vector<std::int32_t>& values) {
        ASSERT_TRUE(platform.variables().find(name)->set(values));
    }
    /** Changes the offset array to `pairs`, all of which count. */
    void setOffsetArray(const std::vector<std::int32_t>& pairs) {
        set("channel.1.rx.rf.frequency.cs.offset.array", pairs);
        set("channel.1.rx.rf.frequency.cs.offset.arraysize", {static_cast<std::int32_t>(pairs.size())});
    }

    void takeAwayDriver(const std::string& name) { fail(Operation::driverLookup, name, 0x8001); }
    void takeAwayTable(const std::string& name) { fail(Operation::tableLookup, name, 0x8001); }
    void takeAwayVariable(const std::string& name) {
        fail(Operation::variableGet, name, 0x8001);
        fail(Operation::variableAddress, name, 0x8001);
    }

    /** A handler fresh from its constructor; nothing that happened so far is remembered. */
    Board& make(const std::string& direction, const BoardFlags& flags, int channel = 1) {
        m_boards.push_back(std::make_unique<Board>(direction, channel, flags.useIfFrequency,
                                                   flags.useDspRxFreqOffset, flags.useCsOffsetArray,
                                                   flags.loFrequencyInHz));
        forget();
        return *m_boards.back();
    }
    /** A handler that went through all phases; nothing that happened so far is remembered. */
    Board& boot(const std::string& direction, const BoardFlags& flags) {
        Board& board = make(direction, flags);
        EXPECT_EQ(board.onModuleInit(), ResultOk);
        EXPECT_EQ(board.getVariablesFromDatabase(), ResultOk);
        EXPECT_EQ(board.getFFVariablesFromDatabase(), ResultOk);
        forget();
        return board;
    }

    /** A published canceller that has not looked for its hardware yet. */
    LoCancellation& makeCanceller(unsigned channel = 1) {
        m_cancellers.push_back(std::make_unique<LoCancellation>(channel));
        EXPECT_EQ(m_cancellers.back()->initialize(), ResultOk);
        forget();
        return *m_cancellers.back();
    }
    /** A canceller that found its hardware. */
    LoCancellation& bootCanceller() {
        LoCancellation& canceller = makeCanceller();
        EXPECT_EQ(canceller.onModuleInit(), ResultOk);
        forget();
        return canceller;
    }

private:
    void describeDirection(const std::string& direction, const std::string& prefix) {
        for (const char* const name :
             {"rf.lo.frequency", "rf.lo.frequency.in.hz", "if.frequency", "rf.pll.config"}) {
            addDriver(prefix + name);
        }
        platform.variables().add(prefix + "mixer.multiplicationfactor", {2});
        platform.variables().add(prefix + "rf.spectruminverted", {0});
        platform.variables().add(prefix + "baseband.spectruminverted", {1});
        platform.variables().add(prefix + "if.frequency", {140'000});
        platform.variables().add(direction + "IfBb", {0});
        platform.tables().add({"Channel.1." + direction + ".Rf.Pll.Frequency.To.Chargepump.Setting",
                               {17'000'000, 19'000'000},
                               {},
                               {0, 2'000'000}});
    }

    std::vector<std::unique_ptr<Board>> m_boards;
    std::vector<std::unique_ptr<LoCancellation>> m_cancellers;
};

#endif
