#include "OrbiTrace.h"
#include "PlatformFixture.h"

#include <iomanip>
#include <limits>
#include <memory>

namespace {

using Standalone::TraceMessage;
using ::testing::IsEmpty;
using ::testing::SizeIs;
namespace TraceLevel = Standalone::TraceLevel;

constexpr OrbiTraceLevel level3{3};

/** Built before main, as those of a library are. */
OrbiTrace earlyTrace("QVX.FH", level3);

class TraceTest : public PlatformFixture {
protected:
    void emit(const std::string& text) {
        earlyTrace.beginLogMsg(TraceLevel::error, "File.cpp", 12) << text << std::endl;
        earlyTrace.endLogMsg();
    }
    const std::vector<TraceMessage>& messages() { return platform.trace().messages(); }
};

TEST_F(TraceTest, MessageCarriesAllThatItWasOpenedWith) {
    emit("onModuleInit");
    ASSERT_THAT(messages(), SizeIs(1));
    EXPECT_EQ(messages()[0].source, "QVX.FH");
    EXPECT_EQ(messages()[0].level, TraceLevel::error);
    EXPECT_EQ(messages()[0].file, "File.cpp");
    EXPECT_EQ(messages()[0].line, 12);
    EXPECT_EQ(messages()[0].text, "onModuleInit");
    EXPECT_TRUE(messages()[0].ended);
}

TEST_F(TraceTest, MessageNeverEndedIsDeliveredWhenItsLineIsComplete) {
    earlyTrace.beginLogMsg(TraceLevel::error, "File.cpp", 1) << "on"
                                                             << "ModuleInit" << std::endl;
    ASSERT_THAT(messages(), SizeIs(1));
    EXPECT_EQ(messages()[0].text, "onModuleInit");
    EXPECT_FALSE(messages()[0].ended);
}

TEST_F(TraceTest, EndingAMessageDoesNotEndTheOneBefore) {
    earlyTrace.beginLogMsg(TraceLevel::error, "File.cpp", 1) << "unended" << std::endl;
    emit("ended");
    ASSERT_THAT(messages(), SizeIs(2));
    EXPECT_FALSE(messages()[0].ended);
    EXPECT_TRUE(messages()[1].ended);
}

TEST_F(TraceTest, TextNeverFlushedIsDeliveredWithTheNextMessage) {
    earlyTrace.beginLogMsg(TraceLevel::notice, "First.cpp", 1) << "first";
    emit("second");
    ASSERT_THAT(messages(), SizeIs(2));
    EXPECT_EQ(messages()[0].text, "first");
    EXPECT_EQ(messages()[0].file, "First.cpp");
    EXPECT_EQ(messages()[1].text, "second");
}

TEST_F(TraceTest, TextNotFlushedIsDeliveredWhenTheMessageIsEnded) {
    earlyTrace.beginLogMsg(TraceLevel::notice, "File.cpp", 1) << "text";
    earlyTrace.endLogMsg();
    ASSERT_THAT(messages(), SizeIs(1));
    EXPECT_TRUE(messages()[0].ended);
}

TEST_F(TraceTest, MessageWithoutTextIsNone) {
    earlyTrace.beginLogMsg(TraceLevel::notice, "File.cpp", 1);
    earlyTrace.endLogMsg();
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(TraceTest, LongTextIsNotCut) {
    emit(std::string(5000, 'x'));
    EXPECT_THAT(messages().at(0).text, SizeIs(5000));
}

TEST_F(TraceTest, NumberBaseOfOneMessageDoesNotReachTheNext) {
    earlyTrace.beginLogMsg(TraceLevel::error, "File.cpp", 1)
        << std::hex << std::setfill('0') << std::setw(4) << 255 << std::endl;
    earlyTrace.beginLogMsg(TraceLevel::error, "File.cpp", 1) << std::setw(4) << 255 << std::endl;
    EXPECT_EQ(messages().at(0).text, "00ff");
    EXPECT_EQ(messages().at(1).text, " 255");
}

TEST_F(TraceTest, StreamErrorOfOneMessageDoesNotReachTheNext) {
    earlyTrace.beginLogMsg(TraceLevel::error, "File.cpp", 1).setstate(std::ios::failbit);
    emit("next");
    EXPECT_EQ(messages().at(0).text, "next");
}

TEST_F(TraceTest, SinkIsToldOfEveryMessage) {
    std::vector<std::string> seen;
    platform.trace().setSink([&](const TraceMessage& message) { seen.push_back(message.text); });
    emit("one");
    earlyTrace.beginLogMsg(TraceLevel::error, "File.cpp", 1) << "two" << std::endl;
    EXPECT_THAT(seen, ::testing::ElementsAre("one", "two"));
}

TEST_F(TraceTest, SinkMayTraceItself) {
    platform.trace().setSink([&](const TraceMessage& message) {
        if (message.text == "outer") {
            emit("inner");
        }
    });
    emit("outer");
    ASSERT_THAT(messages(), SizeIs(2));
    EXPECT_EQ(messages()[1].text, "inner");
}

TEST_F(TraceTest, WhatTheSinkThrowsReachesTheOneWhoWritesAndTheNextMessageIsDelivered) {
    int told = 0;
    platform.trace().setSink([&](const TraceMessage&) { told++ == 0 ? throw 7 : void(); });
    EXPECT_THROW(emit("one"), int);
    emit("two");
    EXPECT_EQ(told, 2);
    EXPECT_EQ(messages().back().text, "two");
}

TEST_F(TraceTest, RecordingCanBeTurnedOffWhileTheSinkIsStillTold) {
    int told = 0;
    platform.trace().setSink([&](const TraceMessage&) { ++told; });
    platform.trace().setRecording(false);
    emit("text");
    EXPECT_THAT(messages(), IsEmpty());
    EXPECT_EQ(told, 1);
}

TEST_F(TraceTest, EndOfAMessageThatWasNotKeptEndsNoOther) {
    earlyTrace.beginLogMsg(TraceLevel::error, "File.cpp", 1) << "kept, not ended" << std::endl;
    platform.trace().setRecording(false);
    emit("not kept");
    EXPECT_FALSE(messages().at(0).ended);
}

TEST_F(TraceTest, MessagesCanBeCleared) {
    emit("text");
    platform.trace().clear();
    EXPECT_THAT(messages(), IsEmpty());
}

TEST(TraceObjectTest, KeepsItsNameAndItsInitialLevel) {
    EXPECT_STREQ(earlyTrace.getName(), "QVX.FH");
    EXPECT_EQ(earlyTrace.getLevel(), 3);
}

TEST(TraceObjectTest, ThresholdCanBeSetOnOneObject) {
    OrbiTrace one("ONE", level3);
    OrbiTrace other("OTHER", level3);
    one.setLevel(TraceLevel::error);
    EXPECT_EQ(one.getLevel(), TraceLevel::error);
    EXPECT_EQ(other.getLevel(), 3);
}

TEST_F(TraceTest, ThresholdReachesEveryObject) {
    OrbiTrace late("LATE", TraceLevel::error);
    platform.trace().setThreshold(TraceLevel::information);
    EXPECT_EQ(earlyTrace.getLevel(), TraceLevel::information);
    EXPECT_EQ(late.getLevel(), TraceLevel::information);
}

TEST(TraceObjectTest, EndOfThePlatformGivesTheInitialLevelsBack) {
    OrbiTrace late("LATE", TraceLevel::error);
    {
        Standalone::Platform platform;
        platform.trace().setThreshold(TraceLevel::off);
    }
    EXPECT_EQ(earlyTrace.getLevel(), 3);
    EXPECT_EQ(late.getLevel(), TraceLevel::error);
}

TEST(TraceObjectTest, DestroyedObjectIsNotSet) {
    Standalone::Platform platform;
    auto gone = std::make_unique<OrbiTrace>("GONE", level3);
    gone.reset();
    platform.trace().setThreshold(TraceLevel::error);
    EXPECT_EQ(earlyTrace.getLevel(), TraceLevel::error);
}

TEST(TraceObjectTest, TextWithoutPlatformIsDiscarded) {
    earlyTrace.beginLogMsg(TraceLevel::error, "File.cpp", 1) << "to nobody" << std::endl;
    earlyTrace.endLogMsg();
    Standalone::Platform platform;
    earlyTrace.beginLogMsg(TraceLevel::error, "File.cpp", 1) << "to the platform" << std::endl;
    ASSERT_THAT(platform.trace().messages(), SizeIs(1));
    EXPECT_EQ(platform.trace().messages()[0].text, "to the platform");
}

TEST(TraceObjectTest, TextNeverFlushedDoesNotReachTheNextPlatform) {
    {
        Standalone::Platform before;
        earlyTrace.beginLogMsg(TraceLevel::error, "File.cpp", 1) << "left over";
    }
    Standalone::Platform platform;
    earlyTrace.beginLogMsg(TraceLevel::error, "File.cpp", 1) << "new" << std::endl;
    ASSERT_THAT(platform.trace().messages(), SizeIs(1));
    EXPECT_EQ(platform.trace().messages()[0].text, "new");
}

TEST(TraceLevelTest, InitialThresholdLetsNoticesThroughAndKeepsInformationBack) {
    EXPECT_LE(CZulTraceHandler_DmLevel2GtLevel(32768), level3);
    EXPECT_LE(CZulTraceHandler_DmLevel2GtLevel(32773), level3);
    EXPECT_LE(CZulTraceHandler_DmLevel2GtLevel(256), level3);
    EXPECT_GT(CZulTraceHandler_DmLevel2GtLevel(2048), level3);
}

TEST(TraceLevelTest, FailingCodesAreErrors) {
    EXPECT_EQ(CZulTraceHandler_DmLevel2GtLevel(0x8000), TraceLevel::error);
    EXPECT_EQ(CZulTraceHandler_DmLevel2GtLevel(0x8005), TraceLevel::error);
    EXPECT_EQ(CZulTraceHandler_DmLevel2GtLevel(0x7FFFFFFF), TraceLevel::error);
}

TEST(TraceLevelTest, SuccessCodesAreWarnings) {
    EXPECT_EQ(CZulTraceHandler_DmLevel2GtLevel(0), TraceLevel::warning);
    EXPECT_EQ(CZulTraceHandler_DmLevel2GtLevel(0x7FFF), TraceLevel::warning);
}

TEST(TraceLevelTest, AllBitsSetIsMinusOneAndSoASuccess) {
    EXPECT_EQ(CZulTraceHandler_DmLevel2GtLevel(-1), TraceLevel::warning);
    EXPECT_EQ(CZulTraceHandler_DmLevel2GtLevel(std::numeric_limits<int>::min()), TraceLevel::warning);
}

TEST(TraceLevelTest, NoticeAndInformationHaveLevelsOfTheirOwn) {
    EXPECT_EQ(CZulTraceHandler_DmLevel2GtLevel(256), TraceLevel::notice);
    EXPECT_EQ(CZulTraceHandler_DmLevel2GtLevel(2048), TraceLevel::information);
}

TEST_F(TraceTest, SinkThatWritesAMessageLeavesTheOuterOneItsOriginAndItsFormat) {
    OrbiTrace other("OTHER", level3);
    bool isNested = false;
    platform.trace().setSink([&](const TraceMessage&) {
        if (!isNested) {
            isNested = true;
            other.beginLogMsg(TraceLevel::warning, "Other.cpp", 99) << "nested" << std::endl;
            other.endLogMsg();
        }
    });
    std::ostream& stream = earlyTrace.beginLogMsg(TraceLevel::error, "File.cpp", 12);
    stream << std::hex << std::setfill('0') << "first line" << std::endl;
    stream << std::setw(4) << 255 << std::endl;
    earlyTrace.endLogMsg();
    ASSERT_THAT(messages(), SizeIs(3));
    EXPECT_EQ(messages()[1].source, "OTHER");
    EXPECT_EQ(messages()[2].source, "QVX.FH");
    EXPECT_EQ(messages()[2].file, "File.cpp");
    EXPECT_EQ(messages()[2].line, 12);
    EXPECT_EQ(messages()[2].level, TraceLevel::error);
    EXPECT_EQ(messages()[2].text, "00ff");
}

TEST_F(TraceTest, SinkThatWritesAMessageLeavesTheOuterOneItsEnd) {
    OrbiTrace other("OTHER", level3);
    bool isNested = false;
    platform.trace().setSink([&](const TraceMessage&) {
        if (!isNested) {
            isNested = true;
            other.beginLogMsg(TraceLevel::warning, "Other.cpp", 99) << "nested" << std::endl;
        }
    });
    earlyTrace.beginLogMsg(TraceLevel::error, "File.cpp", 12) << "outer" << std::endl;
    ASSERT_THAT(messages(), SizeIs(2));
    EXPECT_FALSE(messages()[0].ended);
    earlyTrace.endLogMsg();
    EXPECT_TRUE(messages()[0].ended);
    EXPECT_FALSE(messages()[1].ended);
}

TEST_F(TraceTest, SinkThatWritesAMessageAndThrowsLeavesTheOuterOneItsEndAndOrigin) {
    OrbiTrace other("OTHER", level3);
    bool isNested = false;
    platform.trace().setSink([&](const TraceMessage&) {
        if (!isNested) {
            isNested = true;
            other.beginLogMsg(TraceLevel::warning, "Other.cpp", 99) << "nested" << std::endl;
            throw std::runtime_error("told");
        }
    });
    std::ostream& stream = earlyTrace.beginLogMsg(TraceLevel::error, "File.cpp", 12);
    EXPECT_THROW(stream << "outer" << std::endl, std::runtime_error);
    stream.clear();
    stream << "goes on" << std::endl;
    earlyTrace.endLogMsg();
    ASSERT_THAT(messages(), SizeIs(3));
    EXPECT_FALSE(messages()[0].ended);
    EXPECT_EQ(messages()[2].source, "QVX.FH");
    EXPECT_EQ(messages()[2].line, 12);
    EXPECT_TRUE(messages()[2].ended);
}

TEST_F(TraceTest, SinkMayTakeItselfAway) {
    std::vector<std::string> seen;
    const std::string name = "a name that is too long to be kept without memory of its own";
    platform.trace().setSink([this, &seen, name](const TraceMessage& message) {
        platform.trace().setSink({});
        seen.push_back(name + message.text);
    });
    emit("once");
    emit("twice");
    EXPECT_EQ(seen, std::vector<std::string>{name + "once"});
}

} // namespace
