#include "DevicesFixture.h"
#include "Instrument.h"
#include "Server.h"

namespace {

using namespace DeviceTests;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class ScpiTest : public DevicesFixture {
protected:
    ScpiTest() {
        description.devices.push_back(
            {"generator", Devices::DeviceDescription::Kind::scpi, instrument.address(), milliseconds(300)});
        addDriver("lo", "generator", "FREQ {}HZ").read = Devices::AttributeName{"generator", "FREQ?"};
        description.drivers.back().conversion.scale = 1000;
    }
    void answer(const Reaction& reaction) {
        instrument.setScript(
            [reaction](const std::string& line) { return line.back() == '?' ? reaction : Reaction{}; });
    }
    /** What it heard, at the latest after a second. */
    Lines heard() {
        Lines lines;
        for (int i = 0; i < 100 && lines.empty(); ++i) {
            lines = instrument.heard();
            std::this_thread::sleep_for(milliseconds(10));
        }
        return lines;
    }

    Instrument instrument{[](const std::string&) { return Reaction{}; }};
};

TEST_F(ScpiTest, WriteIsTheCommandWithTheValueInIt) {
    up();
    EXPECT_EQ(write("lo", 6300000), 0);
    EXPECT_EQ(heard(), (Lines{"FREQ 6300000000HZ"}));
    EXPECT_EQ(listener.told(), Lines{});
}

TEST_F(ScpiTest, ReadIsTheQueryWhoseAnswerIsANumber) {
    answer({"6.3000000000E+09\n"});
    up();
    EXPECT_EQ(read("lo"), 6300000);
    EXPECT_EQ(heard(), (Lines{"FREQ?"}));
    answer({"+7100000000\r\n"});
    EXPECT_EQ(read("lo"), 7100000);
    EXPECT_EQ(instrument.connections(), 1);
}

TEST_F(ScpiTest, WithoutAQueryAReadGivesWhatWasWrittenLast) {
    description.drivers[0].read.reset();
    up();
    EXPECT_EQ(read("lo"), std::nullopt);
    EXPECT_EQ(code, 0x8100 + ENODATA);
    write("lo", 6300000);
    EXPECT_EQ(read("lo"), 6300000);
}

TEST_F(ScpiTest, ErrorQueryThatAnswersZeroConfirmsTheWrite) {
    description.devices[0].errorQuery = "SYST:ERR?";
    answer({"+0,\"No error\"\n"});
    up();
    EXPECT_EQ(write("lo", 6300000), 0);
    EXPECT_EQ(heard(), (Lines{"FREQ 6300000000HZ", "SYST:ERR?"}));
}

TEST_F(ScpiTest, ErrorInTheQueueFailsTheWriteAndKeepsTheConnection) {
    description.devices[0].errorQuery = "SYST:ERR?";
    answer({"-222,\"Data out of range\"\n"});
    up();
    EXPECT_EQ(write("lo", 6300000), 0x8100 + EREMOTEIO);
    EXPECT_EQ(listener.told(), (Lines{"failed lo at generator: FREQ {}HZ: remote I/O error (EREMOTEIO)"}));
    answer({"0,\"No error\"\n"});
    EXPECT_EQ(write("lo", 6300000), 0);
    EXPECT_EQ(instrument.connections(), 1);
}

TEST_F(ScpiTest, GarbledAnswerIsAProtocolError) {
    answer({"6.3.0\n"});
    up();
    EXPECT_EQ(read("lo"), std::nullopt);
    EXPECT_EQ(code, 0x8100 + EPROTO);
    EXPECT_EQ(instrument.connections(), 1);
}

TEST_F(ScpiTest, TwoLinesForOneQuestionPutTheStreamOutOfStep) {
    answer({"1000\n2000\n"});
    up();
    EXPECT_EQ(read("lo"), std::nullopt);
    EXPECT_EQ(code, 0x8100 + EPROTO);
    EXPECT_THAT(listener.told().at(0), StartsWith("lost generator"));
}

TEST_F(ScpiTest, AnswerWithoutAnEndDropsTheConnection) {
    answer({std::string(5000, '1')});
    up();
    EXPECT_EQ(read("lo"), std::nullopt);
    EXPECT_EQ(code, 0x8100 + EPROTO);
    EXPECT_EQ(listener.told().at(0), "lost generator: protocol error (EPROTO)");
}

TEST_F(ScpiTest, LateAnswerIsNeverTakenForThatOfTheNextQuestion) {
    answer({"1000\n", milliseconds(500)});
    up();
    const milliseconds time = elapsed([&] { EXPECT_EQ(read("lo"), std::nullopt); });
    EXPECT_EQ(code, 0x8100 + ETIMEDOUT);
    EXPECT_GE(time, milliseconds(290));
    EXPECT_LT(time, milliseconds(900));
    EXPECT_EQ(listener.told(), (Lines{"lost generator: connection timed out (ETIMEDOUT)",
                                      "failed lo at generator: FREQ?: connection timed out (ETIMEDOUT)"}));
    answer({"2000\n"});
    awaitNews();
    EXPECT_EQ(listener.told(), (Lines{"back generator"}));
    EXPECT_EQ(read("lo"), 2);
    EXPECT_EQ(instrument.connections(), 2);
}

TEST_F(ScpiTest, WhatIsSaidUnaskedIsNoAnswer) {
    instrument.setScript([](const std::string&) { return Reaction{"1000\n"}; });
    up();
    EXPECT_EQ(write("lo", 5), 0); // to which nothing should be said
    heard();
    std::this_thread::sleep_for(milliseconds(50));
    EXPECT_EQ(read("lo"), std::nullopt);
    EXPECT_EQ(code, 0x8100 + EPROTO);
}

TEST_F(ScpiTest, AnswerThatIsCutOffIsALostConnection) {
    answer({"6.3000", milliseconds(0), true});
    up();
    EXPECT_EQ(read("lo"), std::nullopt);
    EXPECT_EQ(code, 0x8100 + ECONNRESET);
    EXPECT_EQ(listener.told().at(0), "lost generator: connection reset by peer (ECONNRESET)");
}

TEST_F(ScpiTest, InstrumentThatIsGoneIsToldOnceAndComesBackByItself) {
    up();
    EXPECT_EQ(write("lo", 1), 0);
    heard();
    instrument.switchOff();
    EXPECT_EQ(write("lo", 2), 0x8100 + ECONNRESET);
    EXPECT_LT(elapsed([&] { EXPECT_EQ(write("lo", 3), 0x8100 + ENOTCONN); }), milliseconds(250));
    EXPECT_EQ(listener.told(),
              (Lines{"lost generator: connection reset by peer (ECONNRESET)",
                     "failed lo at generator: FREQ {}HZ: connection reset by peer (ECONNRESET)",
                     "failed lo at generator: FREQ {}HZ: not connected (ENOTCONN)"}));
    instrument.switchOn();
    awaitNews();
    EXPECT_EQ(listener.told(), (Lines{"back generator"}));
    EXPECT_EQ(write("lo", 4), 0);
    EXPECT_EQ(heard(), (Lines{"FREQ 4000HZ"}));
}

TEST_F(ScpiTest, ExaminationSendsNoCommand) {
    answer({"6300\n"});
    const auto found = up().examine(true);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].attribute, "generator: FREQ {}HZ");
    EXPECT_EQ(found[0].isReadable, false);
    EXPECT_EQ(found[0].isWritable, std::nullopt);
    EXPECT_EQ(found[0].problem, "");
    EXPECT_EQ(found[1].isReadable, true);
    EXPECT_EQ(found[1].value, "6300");
    EXPECT_EQ(heard(), (Lines{"FREQ?"}));
}

TEST_F(ScpiTest, CommandWithoutAPlaceForTheValueCannotBeWritten) {
    description.drivers[0].write->attribute = "FREQ 5";
    EXPECT_EQ(up().examine(false).at(0).problem, "cannot be written");
    EXPECT_EQ(write("lo", 1), 0x8100 + EPERM);
}

TEST_F(ScpiTest, InstrumentThatCannotBeReachedIsToldWithEachAttribute) {
    instrument.switchOff();
    const auto found = up().examine(true);
    ASSERT_EQ(found.size(), 2U);
    for (const auto& finding : found) {
        EXPECT_EQ(finding.problem, "generator cannot be reached at " + instrument.address() +
                                       ": connection refused (ECONNREFUSED)");
    }
    EXPECT_EQ(write("lo", 1), 0x8100 + ENOTCONN);
    instrument.switchOn();
    listener.told();
    awaitNews();
    EXPECT_EQ(listener.told(), (Lines{"back generator"}));
}

TEST_F(ScpiTest, AddressHasToBeHostAndPort) {
    description.devices[0].address = "192.168.2.9";
    EXPECT_THAT(up().examine(true).at(0).problem, HasSubstr("is not of the form HOST:PORT"));
}

TEST_F(ScpiTest, SilentHostDelaysNeitherTheCallerNorTheEnd) {
    description.devices[0].address = "192.0.2.1:5025"; // nobody's
    up();
    EXPECT_LT(elapsed([&] { EXPECT_NE(write("lo", 1), 0); }), milliseconds(1000));
    EXPECT_LT(elapsed([&] { hardware.reset(); }), milliseconds(1000));
}

} // namespace
