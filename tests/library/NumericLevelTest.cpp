// The numeric level with which each message asks the platform whether it is wanted: for some failures the
// code that the platform answered, for all other messages one of three numbers.

#include "CalibrationTest.h"
#include "FrequencyHandler.h"
#include "FrequencyHandler_Rau.h"
#include "FrequencyHandler_RfModule.h"
#include "NumericLevels.h"

#include <sstream>

using Standalone::Presence;

namespace {

constexpr const char* transmitChargePumpTable = "Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting";

class NumericLevelTest : public CalibrationTest {
protected:
    using RfModule = RL::FrequencyHandler::RfModule::FrequencyHandler;
    using Rau = RL::FrequencyHandler::Rau::FrequencyHandler;

    NumericLevelTest() {
        addDriver("channel.1.tx.rf.frequency");
        platform.trace().setSink([this](const Standalone::TraceMessage& message) {
            const std::optional<int> level = NumericLevels::takeLast();
            if (level == 0x800) {
                information.push_back(message.text);
            } else {
                leveled.push_back((level ? hexadecimal(*level) : "not mapped") + ": " + message.text);
            }
        });
    }

    static std::string hexadecimal(int number) {
        std::ostringstream text;
        text << std::hex << std::showbase << number;
        return text.str();
    }

    /** The level and the message of the initialisation of `board`, which fails. */
    Lines initialise(Board& board) {
        leveled.clear();
        EXPECT_EQ(board.onModuleInit(), ResultFailed);
        return leveled;
    }
    /** The level and the message of a write of `board`, which fails. */
    Lines write(Board& board) {
        leveled.clear();
        EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed);
        return leveled;
    }
    /** The level and the message of the set-up of a canceller, which fails. */
    Lines setUp(LoCancellation& canceller) {
        leveled.clear();
        EXPECT_EQ(canceller.onModuleInit(), ResultFailed);
        return leveled;
    }

    /** The messages of another level than 0x800: "0x8000: Unable to get DriverLayer Interface". */
    Lines leveled;
    /** The messages of level 0x800. */
    Lines information;
};

} // namespace

// The failing code itself: RF module

TEST_F(NumericLevelTest, RfModuleTellsAFailedWriteAtItsCode) {
    RfModule handler("Tx", 1);
    handler.onModuleInit();
    fail(Operation::driverWrite, "channel.1.tx.rf.frequency", 0x8123);
    EXPECT_EQ(handler.writeFrequencyToHW(1), ResultFailed);
    EXPECT_EQ(leveled, (Lines{"0x8123: Write to driver failed for channel.1.Tx.rf.frequency "
                              "(EDriverResult = 0x8123)"}));
}

TEST_F(NumericLevelTest, RfModuleTellsAFailedLookupAtItsCode) {
    fail(Operation::driverLookup, "channel.1.tx.rf.frequency", 0x8124);
    EXPECT_EQ(RfModule("Tx", 1).onModuleInit(), ResultFailed);
    EXPECT_EQ(leveled, (Lines{"0x8124: onModuleInit failed to get driver interface "
                              "[channel.1.tx.rf.frequency] (EDriverResult = 0x8124)"}));
}

TEST_F(NumericLevelTest, RfModuleTellsAnIncompleteRecordAtTheSuccessCode) {
    driver("channel.1.tx.rf.frequency").setMissingWords(Standalone::wordContext);
    RfModule handler("Tx", 1);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    fail(Operation::driverLookup, "channel.1.tx.rf.frequency", 0x7FFF);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    EXPECT_EQ(leveled, (Lines{"0: onModuleInit failed to get driver interface [channel.1.tx.rf.frequency] "
                              "(EDriverResult = 0x0)",
                              "0x7fff: onModuleInit failed to get driver interface "
                              "[channel.1.tx.rf.frequency] (EDriverResult = 0x7fff)"}));
}

// Microwave board

TEST_F(NumericLevelTest, BoardTellsAFailedLookupAtItsCode) {
    for (const std::string name :
         {"channel.1.rx.rf.lo.frequency", "channel.1.rx.rf.lo.frequency.in.hz", "channel.1.rx.if.frequency",
          "channel.1.rx.rf.pll.config", "channel.1.dsp.rx.freq.offset"}) {
        fail(Operation::driverLookup, name, 0x8125);
        EXPECT_EQ(initialise(make("Rx", withEverything)),
                  (Lines{"0x8125: onModuleInit failed to get driver interface [" + name +
                         "] (EDriverResult = 0x8125)"}));
        platform.calls().clearAll();
    }
}

TEST_F(NumericLevelTest, BoardTellsAnIncompleteRecordAtTheSuccessCode) {
    for (const std::string name :
         {"channel.1.rx.rf.lo.frequency", "channel.1.rx.rf.lo.frequency.in.hz", "channel.1.rx.if.frequency",
          "channel.1.rx.rf.pll.config", "channel.1.dsp.rx.freq.offset"}) {
        driver(name).setMissingWords(Standalone::wordContext);
        EXPECT_EQ(
            initialise(make("Rx", withEverything)),
            (Lines{"0: onModuleInit failed to get driver interface [" + name + "] (EDriverResult = 0x0)"}));
        driver(name).setMissingWords(0);
    }
}

TEST_F(NumericLevelTest, BoardTellsAFailedDspWriteAtItsCode) {
    for (const BoardFlags& flags : {withOffsetArray, withHalfSpacing}) {
        Board& board = boot("Rx", flags);
        fail(Operation::driverWrite, "channel.1.dsp.rx.freq.offset", 0x8126);
        EXPECT_EQ(write(board), (Lines{"0x8126: Write to driver failed for channel.1.dsp.rx.freq.offset "
                                       "(EDriverResult = 0x8126)"}));
    }
}

TEST_F(NumericLevelTest, BoardTellsAFailedIfWriteAtItsCode) {
    Board& board = boot("Tx", withIf);
    fail(Operation::driverWrite, "channel.1.tx.if.frequency", 0x8127);
    EXPECT_EQ(write(board), (Lines{"0x8127: Write to driver failed for channel.1.Tx.if.frequency "
                                   "(EDriverResult = 0x8127)"}));
    EXPECT_EQ(initialise(board), leveled); // at the start value too
    EXPECT_EQ(leveled.size(), 1U);
}

TEST_F(NumericLevelTest, BoardTellsAFailedLoWriteAtItsCode) {
    Board& board = boot("Tx", plainBoard);
    fail(Operation::driverWrite, "channel.1.tx.rf.lo.frequency", 0x8128);
    EXPECT_EQ(write(board), (Lines{"0x8128: Write to driver failed for channel.1.Tx.rf.lo.frequency "
                                   "(EDriverResult = 0x8128)"}));
}

TEST_F(NumericLevelTest, BoardTellsAFailedLoWriteInHzAtItsCode) {
    Board& board = boot("Tx", withHz);
    fail(Operation::driverWriteBuffer, "channel.1.tx.rf.lo.frequency.in.hz", 0x8129);
    EXPECT_EQ(write(board), (Lines{"0x8129: Write to driver failed for channel.1.Tx.rf.lo.frequency.in.hz "
                                   "(EDriverResult = 0x8129)"}));
}

TEST_F(NumericLevelTest, BoardTellsAFailedChargePumpWriteAtItsCode) {
    Board& board = boot("Tx", plainBoard);
    fail(Operation::driverWrite, "channel.1.tx.rf.pll.config", 0x812A);
    EXPECT_EQ(write(board), (Lines{"0x812a: Unable to write to driver channel.1.Tx.rf.pll.config "
                                   "(EDriverResult = 0x812a)"}));
}

TEST_F(NumericLevelTest, BoardTellsAMissingChannelSpacingAtTheCode) {
    fail(Operation::variableAddress, "ChannelSpacing", 0x812B);
    EXPECT_EQ(make("Rx", withHalfSpacing).getFFVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(leveled, (Lines{"0x812b: Could not get the variable ChannelSpacing in the database"}));
}

// Canceller

TEST_F(NumericLevelTest, CancellerTellsTwoFailedLookupsAtTheCodeOfTheSecond) {
    fail(Operation::driverLookup, "channel.1.tx.rf.mixer.q", 0x812C);
    fail(Operation::driverLookup, "channel.1.tx.bb.iq.coarse.dc.q.v.adjust", 0x812D);
    EXPECT_EQ(setUp(makeCanceller()),
              (Lines{"0x812d: LoCancellation failed to get driver interface [channel.1.tx.rf.mixer.q] or "
                     "interface [channel.1.tx.bb.iq.coarse.dc.q.v.adjust] (EDriverResult = 0x812d)"}));
}

TEST_F(NumericLevelTest, CancellerTellsAnIncompleteAlternativeAtTheSuccessCode) {
    takeAwayDriver("channel.1.tx.rf.detector.v");
    addDriver("channel.1.tx.rf.detector.low.v.detect").setMissingWords(Standalone::wordWrite);
    EXPECT_EQ(setUp(makeCanceller()),
              (Lines{"0: LoCancellation failed to get driver interface [channel.1.tx.rf.detector.v] or "
                     "interface [channel.1.tx.rf.detector.low.v.detect] (EDriverResult = 0x0)"}));
}

TEST_F(NumericLevelTest, CancellerTellsAMissingHighDetectorAtTheCode) {
    takeAwayDriver("channel.1.tx.rf.detector.v");
    addDriver("channel.1.tx.rf.detector.low.v.detect");
    fail(Operation::driverLookup, "channel.1.tx.rf.detector.high.v.detect", 0x812E);
    EXPECT_EQ(setUp(makeCanceller()),
              (Lines{"0x812e: LoCancellation failed to get driver interface "
                     "[channel.1.tx.rf.detector.high.v.detect] (EDriverResult = 0x812e)"}));
}

TEST_F(NumericLevelTest, CancellerTellsAnIncompleteHighDetectorAtTheSuccessCode) {
    takeAwayDriver("channel.1.tx.rf.detector.v");
    addDriver("channel.1.tx.rf.detector.low.v.detect");
    addDriver("channel.1.tx.rf.detector.high.v.detect").setMissingWords(Standalone::wordContext);
    EXPECT_EQ(setUp(makeCanceller()),
              (Lines{"0: LoCancellation failed to get driver interface "
                     "[channel.1.tx.rf.detector.high.v.detect] (EDriverResult = 0x0)"}));
}

TEST_F(NumericLevelTest, CancellerTellsAFailedIWriteAtItsCode) {
    fail(Operation::driverWrite, driverI, 0x812F);
    EXPECT_EQ(bootCanceller().setIQ(5, 6), ResultFailed);
    EXPECT_EQ(leveled, (Lines{"0x812f: Unable to write to driver Channel.1.tx.rf.mixer.i "
                              "(EDriverResult = 0x812f)"}));
}

TEST_F(NumericLevelTest, CancellerTellsAFailedQWriteAtItsCode) {
    fail(Operation::driverWrite, driverQ, 0x8130);
    EXPECT_EQ(bootCanceller().setIQ(5, 6), ResultFailed);
    EXPECT_EQ(leveled, (Lines{"0x8130: Unable to write to driver Channel.1.tx.rf.mixer.q "
                              "(EDriverResult = 0x8130)"}));
}

// Errors, whatever the code

TEST_F(NumericLevelTest, FailedReadingOfTheDetectorIsAnError) {
    fail(Operation::driverRead, detector, 0x8131);
    EXPECT_EQ(calibrate({}), ResultFailed);
    EXPECT_EQ(leveled, (Lines{"0x8000: LoCancellation unable to read from detector driver (EDriverResult = "
                              "0x8131, RadioChannel: 1)"}));
}

TEST_F(NumericLevelTest, ProbeThatCouldNotBeSetIsAnErrorAfterThatOfTheWrite) {
    fail(Operation::driverWrite, driverI, 0x8132);
    EXPECT_EQ(calibrate({}), ResultFailed);
    EXPECT_EQ(leveled,
              (Lines{"0x8132: Unable to write to driver Channel.1.tx.rf.mixer.i (EDriverResult = 0x8132)",
                     "0x8000: Failed to set I and Q [for index 0 and RadioChannel 1]"}));
}

TEST_F(NumericLevelTest, ResultThatCouldNotBeSetIsAnErrorAfterThatOfTheWrite) {
    LoCancellation& canceller = bootCanceller();
    failAfter(4, Operation::driverWrite, driverI, 0x8133);
    EXPECT_EQ(calibrate(canceller, {}), ResultFailed);
    EXPECT_EQ(leveled,
              (Lines{"0x8133: Unable to write to driver Channel.1.tx.rf.mixer.i (EDriverResult = 0x8133)",
                     "0x8000: Failed to set I and Q [for RadioChannel 1]"}));
}

TEST_F(NumericLevelTest, FailedChargePumpLookupIsAnError) {
    fail(Operation::tableLinear, transmitChargePumpTable, 0x8134);
    EXPECT_EQ(boot("Tx", plainBoard).writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(leveled, (Lines{"0x8000: Unable to fetch value from table "
                              "Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting (ECHResult = 0x8134)"}));
}

TEST_F(NumericLevelTest, MissingChargePumpTableIsAnError) {
    fail(Operation::tableLookup, "", 0x8135);
    EXPECT_EQ(make("Tx", plainBoard).onModuleInit(), ResultOk);
    EXPECT_EQ(leveled, (Lines{"0x8000: Unable to fetch table "
                              "Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb "
                              "(EDriverResult = 0x8135)"}));
}

TEST_F(NumericLevelTest, MissingCancellationTablesAreErrors) {
    fail(Operation::tableLookup, "", 0x8136);
    EXPECT_EQ(makeCanceller().onModuleInit(), ResultOk);
    EXPECT_EQ(leveled, (Lines{"0x8000: Unable to fetch table "
                              "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I "
                              "(ECHResult = 0x8136)",
                              "0x8000: Unable to fetch table "
                              "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q "
                              "(ECHResult = 0x8136)"}));
}

TEST_F(NumericLevelTest, FailedCorrectionLookupIsAnError) {
    fail(Operation::tableBilinear, tableI, 0x8137);
    EXPECT_EQ(bootCanceller().setLoCancellation(18'000'000, 25), ResultOk);
    EXPECT_EQ(leveled, (Lines{"0x8000: Unable to fetch value from table "
                              "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I "
                              "(ECHResult = 0x8137)"}));
}

TEST_F(NumericLevelTest, VariableMissingFromTheDatabaseIsAnError) {
    fail(Operation::variableGet, "TxIfBb", 0x8138);
    EXPECT_EQ(make("Tx", plainBoard).getFFVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(leveled, (Lines{"0x8000: Could not get the variable TxIfBb from the database"}));
}

TEST_F(NumericLevelTest, UnknownChannelSpacingIsAnError) {
    set("ChannelSpacing", {500});
    EXPECT_EQ(write(boot("Rx", withHalfSpacing)), (Lines{"0x8000: Unhandled channelspacetype 500"}));
}

TEST_F(NumericLevelTest, MissingDriverLayerIsAnError) {
    platform.setPresence("IDriverLayer", Presence::absent);
    EXPECT_EQ(RfModule("Tx", 1).onModuleInit(), ResultFailed);
    EXPECT_EQ(makeCanceller().onModuleInit(), ResultFailed);
    EXPECT_EQ(leveled, (Lines{"0x8000: Unable to get DriverLayer Interface",
                              "0x8000: LoCancellation failed to get driverlayer interface"}));
}

TEST_F(NumericLevelTest, RefusedPublicationAndWithdrawalOfTheCancellerAreErrors) {
    fail(Operation::brokerRegister, "ILoCancellation_1", 0x8139);
    fail(Operation::brokerUnregister, "ILoCancellation_1", 0x813A);
    EXPECT_EQ(LoCancellation(1).initialize(), ResultFailed);
    EXPECT_EQ(leveled, (Lines{"0x8000: LoCancellation failed to register ILoCancellation interface "
                              "[ILoCancellation_1] (EAFResult = 0x8139)",
                              "0x8000: LoCancellation failed to unregister ILoCancellation interface "
                              "[ILoCancellation_1] (EAFResult = 0x813a)"}));
}

// Notices

TEST_F(NumericLevelTest, TableOfTheFirstChannelIsANotice) {
    platform.setPresence("IDriverLayer", Presence::absent);
    platform.tables().add({"Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb", {0}, {}, {5}});
    EXPECT_EQ(make("Tx", plainBoard, 2).onModuleInit(), ResultOk);
    EXPECT_EQ(leveled, (Lines{"0x100: TODO: Channel.2.Tx.Rf.Pll.Frequency.To.Chargepump.Setting.pdb uses "
                              "Channel.1 data for now"}));
}

TEST_F(NumericLevelTest, SuccessfulCalibrationIsANotice) {
    EXPECT_EQ(calibrate({}), ResultOk);
    EXPECT_EQ(leveled, (Lines{"0x100: Calibrated LO cancellation, TxRF LO (I) = 62, TxRf LO (Q) = 62, "
                              "maxDelta = 75"}));
}

// Information

TEST_F(NumericLevelTest, EveryStepOfOneWriteIsInformation) {
    Board& board = boot("Rx", withEverything);
    information.clear();
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(information.size(), 9U);
    EXPECT_EQ(leveled, Lines{});
}

TEST_F(NumericLevelTest, NewChannelSpacingIsInformation) {
    make("Rx", withHalfSpacing).getFFVariablesFromDatabase();
    EXPECT_EQ(information, (Lines{"getFFVariablesFromDatabase: New channel spacing = 100"}));
}

TEST_F(NumericLevelTest, WriteOfTheRfModuleIsInformationAlsoWithoutADriver) {
    RfModule("Tx", 1).writeFrequencyToHW(1);
    EXPECT_EQ(information, (Lines{"Write frequency to HW 1 for direction Tx",
                                  "Unable to write to rfFrequencyDriver for direction Tx"}));
}

TEST_F(NumericLevelTest, UnknownTypePhasesCarriersAndTemperatureAreInformation) {
    ::FrequencyHandler module(1, static_cast<::FrequencyHandler::FrequencyHandlerType>(6));
    module.onModuleInit();
    module.onPhaseModuleStorageObjectsRetreived();
    module.onPhasePostFrameformatLoad();
    module.setTxFrequency(1);
    module.setRxFrequency(2);
    module.notifyTemperature(25);
    EXPECT_EQ(information,
              (Lines{"Unknown FrequencyHandlerType", "onModuleInit", "onPhaseModuleStorageObjectsRetreived",
                     "onPhasePostFrameformatLoad", "setTxFrequency 1", "setRxFrequency 2",
                     "notifyTemperature called with temp = 25"}));
}

// Not mapped

TEST_F(NumericLevelTest, MissingRauIsNotMapped) {
    NumericLevels::takeLast();
    EXPECT_EQ(Rau("Tx", 0).onModuleInit(), ResultFailed);
    EXPECT_EQ(leveled, (Lines{"not mapped: onModuleInit(): Error getting interface to IRauHandler"}));
}
