#include "Trace.h"

#include "FrequencyHandler_Rau.h"
#include "FrequencyHandler_RfModule.h"
#include "ModuleTest.h"

#include <set>
#include <string>
#include <vector>

using Standalone::Operation;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace Rau = RL::FrequencyHandler::Rau;
namespace RfModule = RL::FrequencyHandler::RfModule;
namespace TraceCode = RL::FrequencyHandler::TraceCode;
namespace TraceLevel = Standalone::TraceLevel;

namespace {

/** A trace object as every source file of the library has one. */
class TraceTest : public ModuleTest {
protected:
    /** The lengths of the texts so far. */
    std::vector<std::size_t> lengths() const {
        std::vector<std::size_t> sizes;
        for (const Standalone::TraceMessage& message : platform.trace().messages()) {
            sizes.push_back(message.text.size());
        }
        return sizes;
    }
    /** The source files of the messages so far. */
    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const Standalone::TraceMessage& message : platform.trace().messages()) {
            names.insert(message.file);
        }
        return names;
    }

    OrbiTrace trace{"QVX.FH", OrbiTraceLevel{3}};
};

const std::string directory = "PlatformServices/FrequencyHandler/private/";

} // namespace

// Threshold

TEST(TraceThreshold, IsThreeForEveryObjectOfTheLibraryUntilItIsChanged) {
    Standalone::Platform platform;
    RfModule::FrequencyHandler handler("Tx", 1);
    handler.writeFrequencyToHW(1); // information, which is level 4
    EXPECT_THAT(platform.trace().messages(), IsEmpty());
    platform.calls().inject({Operation::driverLookup, "", 256, {}, {}}); // 256 is a notice, which is level 3
    platform.drivers().add("channel.1.tx.rf.frequency", Standalone::wordContext);
    handler.onModuleInit();
    EXPECT_EQ(platform.trace().messages().size(), 1U);
}

TEST_F(TraceTest, MessageAtTheThresholdIsEmitted) {
    FH_TRACE(trace, TraceCode::notice, "at %d", 3);
    EXPECT_THAT(traces(), ElementsAre("notice: at 3"));
}

TEST_F(TraceTest, MessageAboveTheThresholdIsNotEmitted) {
    FH_TRACE(trace, TraceCode::information, "above");
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(TraceTest, ArgumentsOfAnUnwantedMessageAreNotComputed) {
    int computed = 0;
    FH_TRACE(trace, TraceCode::information, "%d", ++computed);
    EXPECT_EQ(computed, 0);
    FH_TRACE(trace, TraceCode::error, "%d", ++computed);
    EXPECT_EQ(computed, 1);
}

TEST_F(TraceTest, LevelIsMappedOnce) {
    int computed = 0;
    const auto code = [&] {
        ++computed;
        return TraceCode::error;
    };
    FH_TRACE(trace, code(), "text");
    EXPECT_EQ(computed, 1);
}

TEST_F(TraceTest, ThresholdIsThatOfTheObjectAtTheTimeOfTheMessage) {
    trace.setLevel(TraceLevel::information);
    FH_TRACE(trace, TraceCode::information, "wanted");
    trace.setLevel(TraceLevel::off);
    FH_TRACE(trace, TraceCode::error, "unwanted");
    EXPECT_THAT(traces(), ElementsAre("information: wanted"));
}

TEST_F(TraceTest, FailingCodesOfAnyValueAreErrors) {
    for (const int code : {0x8000, 0x8005, 0x7FFFFFFF}) {
        FH_TRACE(trace, code, "failed");
    }
    EXPECT_THAT(traces(), ElementsAre("error: failed", "error: failed", "error: failed"));
}

// Text

TEST_F(TraceTest, TextOf199CharactersIsKept) {
    FH_TRACE(trace, TraceCode::error, "%s", std::string(199, 'x').c_str());
    EXPECT_THAT(lengths(), ElementsAre(199U));
}

TEST_F(TraceTest, LongerTextIsCutAt199Characters) {
    FH_TRACE(trace, TraceCode::error, "%s%s", std::string(198, 'x').c_str(), "yz");
    EXPECT_THAT(traces(), ElementsAre("error: " + std::string(198, 'x') + "y"));
}

TEST_F(TraceTest, MuchLongerTextIsCutAt199Characters) {
    FH_TRACE(trace, TraceCode::error, "%s", std::string(100000, 'x').c_str());
    EXPECT_THAT(lengths(), ElementsAre(199U));
}

TEST_F(TraceTest, MessageOfAHandlerWithALongNameIsCutAt199Characters) {
    RfModule::FrequencyHandler handler(std::string(300, 't'), 1);
    handler.writeFrequencyToHW(7442000);
    EXPECT_EQ(platform.trace().messages().front().text,
              "Write frequency to HW 7442000 for direction " + std::string(155, 't'));
}

TEST_F(TraceTest, TextIsNotTakenForAFormat) {
    RfModule::FrequencyHandler handler("%s%n", 1);
    handler.writeFrequencyToHW(1);
    EXPECT_EQ(traces().front(), "information: Write frequency to HW 1 for direction %s%n");
}

// Origin

TEST_F(TraceTest, MessageCarriesSourceAndLineAndIsEnded) {
    FH_TRACE(trace, TraceCode::error, "text");
    const int line = __LINE__ - 1;
    const Standalone::TraceMessage& message = platform.trace().messages().front();
    EXPECT_EQ(message.source, "QVX.FH");
    EXPECT_EQ(message.file, "tests/library/TraceTest.cpp");
    EXPECT_EQ(message.line, line);
    EXPECT_TRUE(message.ended);
}

TEST_F(TraceTest, EverySourceFileTracesUnderItsPathInTheProject) {
    fail(Operation::driverWrite, "channel.1.tx.rf.mixer.i", 0x8001);
    boot(0);
    module->setTxFrequency(7442000); // module, microwave board, canceller
    EXPECT_THAT(files(), UnorderedElementsAre(directory + "FrequencyHandler.cpp",
                                              directory + "FrequencyHandler_MicrowaveBoard.cpp",
                                              directory + "LoCancellation.cpp"));
    forget();
    IFrequencyHandler::registerObserver(nullptr, nullptr);
    EXPECT_THAT(files(), ElementsAre(directory + "FrequencyObserverCWrapper.cpp"));
    forget();
    Rau::FrequencyHandler("Tx", 7).onModuleInit();
    EXPECT_THAT(files(), ElementsAre(directory + "FrequencyHandler_Rau.cpp"));
    forget();
    RfModule::FrequencyHandler handler("Tx", 7);
    handler.onModuleInit(); // its driver is missing, which the common part tells
    EXPECT_THAT(files(), ElementsAre(directory + "FrequencyHandler_Common.cpp"));
    forget();
    handler.writeFrequencyToHW(7442000);
    EXPECT_THAT(files(), ElementsAre(directory + "FrequencyHandler_RfModule.cpp"));
}

TEST_F(TraceTest, EveryMessageIsEmittedByAnObjectOfTheSameName) {
    boot(0);
    module->setTxFrequency(7442000);
    for (const Standalone::TraceMessage& message : platform.trace().messages()) {
        EXPECT_EQ(message.source, "QVX.FH") << message.text;
        EXPECT_TRUE(message.ended) << message.text;
        EXPECT_GT(message.line, 0) << message.text;
    }
}
