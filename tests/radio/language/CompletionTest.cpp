#include "radio/language/Completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Radio {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class CompletionTest : public testing::Test {
protected:
    CompletionTest() {
        m_board.channels = {{1, ::FrequencyHandler::RfModule, {}}};
        m_board.drivers = {{"channel.1.tx.rf.frequency", 0, 0, {}}, {"channel.1.rx.rf.frequency", 0, 0, {}}};
        m_board.variables = {{"Channel.Spacing", {28000}, false, {}}};
    }

    Completion at(const std::string& line) const { return complete(line, BoardNames(m_board)); }

    Board m_board;
};

TEST_F(CompletionTest, CompletesCommands) {
    EXPECT_THAT(at("t").candidates, ElementsAre("temperature", "trace", "tune"));
    EXPECT_THAT(at("tu").candidates, ElementsAre("tune"));
}

TEST_F(CompletionTest, CompletesFixedWordsOfAUsage) {
    EXPECT_THAT(at("tune ").candidates, ElementsAre("rx", "tx"));
    EXPECT_THAT(at("tune tx 1 7442 M").candidates, ElementsAre("MHz"));
    EXPECT_THAT(at("expect no ").candidates, ElementsAre("trace"));
    EXPECT_THAT(at("expect leakage 1 ").candidates, ElementsAre("below"));
    EXPECT_THAT(at("wait 5 ").candidates, ElementsAre("min", "ms", "s"));
    EXPECT_THAT(at("show l").candidates, ElementsAre("leakage"));
}

TEST_F(CompletionTest, CompletesNamesOfTheBoard) {
    EXPECT_THAT(at("tune tx ").candidates, ElementsAre("1"));
    EXPECT_THAT(at("expect driver channel.1.t").candidates, ElementsAre("channel.1.tx.rf.frequency"));
    EXPECT_THAT(at("set ").candidates, ElementsAre("Channel.Spacing"));
    EXPECT_THAT(at("interface ID").candidates, ElementsAre("IDriverLayer"));
    EXPECT_THAT(at("expect writes channel.1.r").candidates, ElementsAre("channel.1.rx.rf.frequency="));
}

TEST_F(CompletionTest, WhatATerminalWouldObeyIsNotOffered) {
    m_board.drivers.push_back({"channel.1.t\xC2\x9B"
                               "31m",
                               0,
                               0,
                               {}});
    m_board.drivers.push_back({"channel.1.t\xE2\x80\xAE", 0, 0, {}});
    EXPECT_THAT(at("expect driver channel.1.t").candidates, ElementsAre("channel.1.tx.rf.frequency"));
}

TEST_F(CompletionTest, CompletesOperationsAndTheirObjects) {
    EXPECT_THAT(at("fault driver-w").candidates, ElementsAre("driver-write", "driver-write-buffer"));
    EXPECT_THAT(at("clear a").candidates, ElementsAre("all"));
    EXPECT_THAT(at("fault broker-lookup ").candidates, Contains("IFrequencyHandler_Tx_1"));
}

TEST_F(CompletionTest, OffersWhatCanBeLeftOutAndWhatStandsBehindIt) {
    EXPECT_THAT(at("tune tx 1 7442 ").candidates, ElementsAre("GHz", "MHz", "force", "kHz"));
    EXPECT_THAT(at("tune tx 1 7442 MHz ").candidates, ElementsAre("force"));
    EXPECT_THAT(at("fault driver-write 0x8000 o").candidates, ElementsAre("once"));
    EXPECT_THAT(at("fault driver-write channel.1.tx.rf.frequency 0x8000 o").candidates, ElementsAre("once"));
}

TEST_F(CompletionTest, OffersUnitsBehindEachFrequencyOfASweep) {
    EXPECT_THAT(at("sweep tx 1 7442 ").candidates, ElementsAre("GHz", "MHz", "kHz"));
    EXPECT_THAT(at("sweep tx 1 7442 MHz 7470 ").candidates, ElementsAre("GHz", "MHz", "kHz"));
    EXPECT_THAT(at("sweep tx 1 7442 MHz 7470 MHz 28 ").candidates, ElementsAre("GHz", "MHz", "force", "kHz"));
    EXPECT_THAT(at("sweep tx 1 7442 MHz 7470 MHz 28 MHz 5 ").candidates,
                ElementsAre("force", "min", "ms", "s"));
}

TEST_F(CompletionTest, OffersDriversAsOftenAsTheyCanStand) {
    EXPECT_THAT(at("watch channel.1.tx.rf.frequency ").candidates,
                ElementsAre("channel.1.rx.rf.frequency", "channel.1.tx.rf.frequency", "for"));
    EXPECT_THAT(at("watch channel.1.tx.rf.frequency for 5 ").candidates, ElementsAre("min", "ms", "s"));
    EXPECT_THAT(at("watch channel.1.tx.rf.frequency for ").candidates, IsEmpty());
    EXPECT_THAT(at("expect writes channel.1.tx.rf.frequency=1 channel.1.r").candidates,
                ElementsAre("channel.1.rx.rf.frequency="));
}

TEST_F(CompletionTest, CompletesWhatIsRepeatedAsALineOfItsOwn) {
    EXPECT_THAT(at("repeat 3 tu").candidates, ElementsAre("tune"));
    EXPECT_THAT(at("repeat 3 tune tx ").candidates, ElementsAre("1"));
    EXPECT_THAT(at("repeat 3 e").candidates, ElementsAre("expect"));
    EXPECT_THAT(at("repeat 3 re").candidates, ElementsAre("read"));
}

TEST_F(CompletionTest, CompletesNamesOfFiles) {
    EXPECT_THAT(at("include " RADIO_BOARDS "/rf-module-7ghz.s").candidates,
                ElementsAre(RADIO_BOARDS "/rf-module-7ghz.script"));
    EXPECT_THAT(at("include " RADIO_DOCS "/spe").candidates,
                ElementsAre(RADIO_DOCS "/speed.md", RADIO_DOCS "/speed/"));
    EXPECT_THAT(at("include /no/such/folder/").candidates, IsEmpty());
}

TEST_F(CompletionTest, KnowsTheOtherNamesOfCommands) {
    EXPECT_THAT(at("ex").candidates, ElementsAre("exit", "expect"));
    EXPECT_THAT(at("? ex").candidates, ElementsAre("exit", "expect"));
}

TEST_F(CompletionTest, KnowsWhatAllCandidatesBeginWith) {
    const Completion completion = at("expect driver ch");
    EXPECT_EQ(completion.typed, 2U);
    EXPECT_EQ(completion.common, "channel.1.");
}

TEST_F(CompletionTest, OffersNothingWhereOnlyTheUserKnows) {
    EXPECT_THAT(at("temperature ").candidates, IsEmpty());
    EXPECT_THAT(at("expect leakage 1 below ").candidates, IsEmpty());
    EXPECT_THAT(at("frob ").candidates, IsEmpty());
    EXPECT_THAT(at("tune tx 1 7442 MHz force ").candidates, IsEmpty());
}

} // namespace
} // namespace Radio
