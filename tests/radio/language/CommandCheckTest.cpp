#include "radio/language/CommandCheck.h"

#include "radio/language/CommandParser.h"
#include "radio/text/WordError.h"

#include <gtest/gtest.h>

#include <string>

namespace Radio {
namespace {

/** A board with an RF-module channel 1 and a RAU channel 2. */
class CommandCheckTest : public testing::Test {
protected:
    CommandCheckTest() {
        m_board.channels = {{1, ::FrequencyHandler::RfModule, {}}, {2, ::FrequencyHandler::Rau, {}}};
        m_board.drivers = {{"channel.1.tx.rf.frequency", 0, 0, {}}, {"channel.1.rx.rf.frequency", 0, 0, {}}};
        m_board.variables = {{"Channel.Spacing", {28000}, false, {}}, {"Offsets", {1, 2, 3}, true, {}}};
        m_board.interfaces = {{"IRauHandler_2", Standalone::Presence::present, {}}};
    }

    std::string complaintAbout(const std::string& line) const {
        try {
            CommandCheck(m_board, m_hasKeys).check(*parseCommand(line));
        } catch (const WordError& error) {
            return error.what();
        }
        return "";
    }

    Board m_board;
    bool m_hasKeys = false;
};

TEST_F(CommandCheckTest, AcceptsNamesOfTheBoard) {
    for (const char* const line :
         {"tune tx 1 7442000", "observe rx 2", "set Offsets 1,2,3",
          "expect driver channel.1.tx.rf.frequency 0", "fault driver-write channel.1.rx.rf.frequency 0x8000",
          "fault broker-lookup IRauHandler_1 5", "fault rau-tx IRauHandler_2 5",
          "interface IDriverLayer null", "interface IRauHandler_2 absent", "expect rau tx 2 1",
          "expect writes IRauHandler_2.tx=1 channel.1.tx.rf.frequency=2", "read channel.1.tx.rf.frequency",
          "write channel.1.rx.rf.frequency 5", "watch channel.1.rx.rf.frequency for 1 s",
          "sweep rx 2 1000 2000 500", "repeat 2 tune tx 2 1000", "wait 1", "include other.script"}) {
        EXPECT_EQ(complaintAbout(line), "") << line;
    }
}

TEST_F(CommandCheckTest, RefusesUnknownChannel) {
    for (const char* const line :
         {"tune tx 3 7442000", "observe tx 3", "expect frequency rx 3 0", "expect notified rx 3 0",
          "sweep tx 3 1 2 1", "repeat 2 tune tx 3 7442000"}) {
        EXPECT_EQ(complaintAbout(line), "the board has no channel 3, expected 1 or 2") << line;
    }
}

TEST_F(CommandCheckTest, OffersTheNearestName) {
    EXPECT_EQ(complaintAbout("expect driver channel.1.tx.rf.frequenzy 0"),
              "the board has no driver \"channel.1.tx.rf.frequenzy\" (did you mean "
              "\"channel.1.tx.rf.frequency\"?)");
    for (const std::string line : {"read", "write", "watch channel.1.rx.rf.frequency", "repeat 2 read"}) {
        EXPECT_EQ(complaintAbout(line + " channel.1.tx.rf.frequenzy" + (line == "write" ? " 1" : "")),
                  "the board has no driver \"channel.1.tx.rf.frequenzy\" (did you mean "
                  "\"channel.1.tx.rf.frequency\"?)");
    }
    EXPECT_EQ(complaintAbout("set Offset 1"),
              "the board has no variable \"Offset\" (did you mean \"Offsets\"?)");
    EXPECT_EQ(complaintAbout("interface IDriverLayr absent"),
              "the board has no interface \"IDriverLayr\" (did you mean \"IDriverLayer\"?)");
    EXPECT_EQ(complaintAbout("expect writes IRauHandler_2.dx=1"),
              "the board has no driver \"IRauHandler_2.dx\" (did you mean \"IRauHandler_2.tx\"?)");
}

TEST_F(CommandCheckTest, RefusesWatchThatNothingEndsUnlessThereAreKeys) {
    EXPECT_EQ(complaintAbout("watch channel.1.tx.rf.frequency"),
              "a watch is ended by a key at the prompt alone, expected \"for TIME\" at the end");
    EXPECT_EQ(complaintAbout("repeat 2 watch channel.1.tx.rf.frequency"),
              "a watch is ended by a key at the prompt alone, expected \"for TIME\" at the end");
    m_hasKeys = true;
    EXPECT_EQ(complaintAbout("watch channel.1.tx.rf.frequency"), "");
}

TEST_F(CommandCheckTest, RefusesFaultThatCouldNeverStrike) {
    EXPECT_EQ(complaintAbout("fault driver-write channel.1.xx.rf.frequency 0x8000"),
              "the board has no driver \"channel.1.xx.rf.frequency\" (did you mean "
              "\"channel.1.tx.rf.frequency\"?)");
    EXPECT_EQ(complaintAbout("fault table-lookup Channel.1.Table 0x8000"),
              "the board has no table \"Channel.1.Table\": it has no table at all");
    EXPECT_EQ(complaintAbout("clear variable-get Something.else"),
              "the board has no variable \"Something.else\", expected one such as \"Channel.Spacing\"");
}

TEST_F(CommandCheckTest, RefusesMoreValuesThanPlaces) {
    EXPECT_EQ(complaintAbout("set Channel.Spacing 1,2"),
              "2 values for \"Channel.Spacing\", expected at most 1");
}

TEST_F(CommandCheckTest, RefusesSizeThatTheOffsetArrayDoesNotHave) {
    m_board.variables = {{"channel.2.rx.rf.frequency.cs.offset.array", {27, 15000, 55, 29000}, true, {}},
                         {"channel.2.rx.rf.frequency.cs.offset.arraysize", {4}, false, {}}};
    EXPECT_EQ(complaintAbout("set channel.2.rx.rf.frequency.cs.offset.arraysize 5"),
              "5 for \"channel.2.rx.rf.frequency.cs.offset.arraysize\": the array has 4 places");
    EXPECT_EQ(complaintAbout("set channel.2.rx.rf.frequency.cs.offset.arraysize 4"), "");
    EXPECT_EQ(complaintAbout("set channel.2.rx.rf.frequency.cs.offset.arraysize -2"), "");
}

TEST_F(CommandCheckTest, RefusesLeakageThatIsNotModelled) {
    EXPECT_EQ(complaintAbout("expect leakage 3 below -50"), "the board has no channel 3, expected 1 or 2");
    EXPECT_EQ(complaintAbout("expect leakage 1 below -50"),
              "the board models no LO leakage of channel 1, expected a board with [[leakage]]");
    m_board.leakages.emplace_back().channel = 2;
    EXPECT_EQ(complaintAbout("expect leakage 1 below -50"),
              "the board models no LO leakage of channel 1, expected channel 2");
    EXPECT_EQ(complaintAbout("expect leakage 2 below -50"), "");
}

TEST_F(CommandCheckTest, RefusesChannelWithoutRemoteRadioUnit) {
    EXPECT_EQ(complaintAbout("expect rau tx 1 0"), "the board has no IRauHandler_1, expected IRauHandler_2");
}

} // namespace
} // namespace Radio
