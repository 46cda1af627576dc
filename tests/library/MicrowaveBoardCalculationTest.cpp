// The frequency plan as the microwave-board handler offers it, and what each calculation says in the trace.

#include "MicrowaveRadioTest.h"

namespace {

class MicrowaveBoardCalculationTest : public MicrowaveRadioTest {
protected:
    /** The receiver of the healthy radio with all its parameters read. */
    Board& receiver() { return boot("Rx", withIf); }
};

} // namespace

TEST_F(MicrowaveBoardCalculationTest, ParametersComeFromTheDatabase) {
    const Board& board = receiver();
    EXPECT_EQ(board.calculaterRfLoFrequency(18'000'250), 17'860'250U);
    EXPECT_EQ(board.calculateIfPllFrequency(18'000'250), 140'250U);
    EXPECT_EQ(board.calculateRfPllFrequency(18'000'250, false), 8'930'000U);
    EXPECT_EQ(board.calculateRfPllFrequency(18'000'250, true), 9'000'125'000U);
}

TEST_F(MicrowaveBoardCalculationTest, BeforeTheDatabaseIsReadThereIsNoIfAndTheFactorIsOne) {
    const Board& board = make("Rx", withIf);
    EXPECT_EQ(board.calculaterRfLoFrequency(18'000'250), 18'000'250U);
    EXPECT_EQ(board.calculateIfPllFrequency(18'000'250), 250U);
    EXPECT_EQ(board.calculateRfPllFrequency(18'000'250, false), 18'000'000U);
    EXPECT_EQ(board.getBbFrequency(), 0U);
}

TEST_F(MicrowaveBoardCalculationTest, StepRoundsToWholeMegaHertz) {
    const Board& board = make("Rx", withIf);
    EXPECT_EQ(board.calculateFrequencyStep(1499), 1U);
    EXPECT_EQ(board.calculateFrequencyStep(1500), 2U);
}

TEST_F(MicrowaveBoardCalculationTest, BasebandOffsetIsGivenInKiloHertz) {
    set("RxIfBb", {56});
    EXPECT_EQ(receiver().getBbFrequency(), 56'000U);
}

TEST_F(MicrowaveBoardCalculationTest, IfPllWritesOneLine) {
    receiver().calculateIfPllFrequency(18'000'250);
    EXPECT_EQ(traces(), (Lines{"information: channel.1.Rx.if.pll 140250"}));
}

TEST_F(MicrowaveBoardCalculationTest, RfPllWritesOneLine) {
    receiver().calculateRfPllFrequency(18'000'250, false);
    EXPECT_EQ(traces(), (Lines{"information: channel.1.Rx.rf.pll 8930000"}));
}

TEST_F(MicrowaveBoardCalculationTest, ExactRfPllIsTracedWithAll64Bits) {
    receiver().calculateRfPllFrequency(18'000'250, true);
    EXPECT_EQ(traces(), (Lines{"information: channel.1.Rx.rf.pll 9000125000"}));
}

TEST_F(MicrowaveBoardCalculationTest, IfPllBeyondTheSignedRangeIsTracedUnsigned) {
    set("channel.1.rx.if.frequency",
        {-2'147'483'647 - 1}); // with 648 kHz the LO is 2147483 MHz: no remainder
    EXPECT_EQ(receiver().calculateIfPllFrequency(648), 2'147'483'648U);
    EXPECT_EQ(traces(), (Lines{"information: channel.1.Rx.if.pll 2147483648"}));
}

TEST_F(MicrowaveBoardCalculationTest, LoStepAndBasebandWriteNoLine) {
    const Board& board = receiver();
    board.calculaterRfLoFrequency(18'000'250);
    board.calculateFrequencyStep(18'000'250);
    board.getBbFrequency();
    EXPECT_EQ(traces(), Lines{});
}

TEST_F(MicrowaveBoardCalculationTest, ResultsDoNotDependOnTracing) {
    const Board& board = receiver();
    platform.trace().setThreshold(Standalone::TraceLevel::notice);
    EXPECT_EQ(board.calculateIfPllFrequency(18'000'250), 140'250U);
    EXPECT_EQ(board.calculateRfPllFrequency(18'000'250, false), 8'930'000U);
    EXPECT_EQ(board.calculateRfPllFrequency(18'000'250, true), 9'000'125'000U);
    EXPECT_EQ(traces(), Lines{});
}

TEST_F(MicrowaveBoardCalculationTest, ChannelIsTracedAsASignedNumber) {
    make("Tx", plainBoard, -1).calculateIfPllFrequency(1000);
    EXPECT_EQ(traces(), (Lines{"information: channel.-1.Tx.if.pll 0"}));
}

TEST_F(MicrowaveBoardCalculationTest, FactorZeroGivesZeroAndOneError) {
    set("channel.1.rx.mixer.multiplicationfactor", {0});
    EXPECT_EQ(receiver().calculateRfPllFrequency(18'000'250, false), 0U);
    EXPECT_EQ(traces(),
              (Lines{"error: channel.1.Rx.rf.pll needs a mixer multiplication factor other than 0"}));
}

TEST_F(MicrowaveBoardCalculationTest, FactorZeroIsRefusedInTheExactFormToo) {
    set("channel.1.rx.mixer.multiplicationfactor", {0});
    EXPECT_EQ(receiver().calculateRfPllFrequency(18'000'250, true), 0U);
    EXPECT_EQ(traces(),
              (Lines{"error: channel.1.Rx.rf.pll needs a mixer multiplication factor other than 0"}));
}

TEST_F(MicrowaveBoardCalculationTest, NegativeFactorGivesZeroWithoutComplaint) {
    set("channel.1.rx.mixer.multiplicationfactor", {-2});
    EXPECT_EQ(receiver().calculateRfPllFrequency(18'000'250, true), 0U);
    EXPECT_EQ(traces(), (Lines{"information: channel.1.Rx.rf.pll 0"}));
}
