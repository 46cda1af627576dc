#include "Trace.h"

#include "FrequencyHandler_Rau.h"
#include "FrequencyHandler_RfModule.h"
#include "LoCancellation.h"
#include "ModuleTest.h"
#include "NumericLevels.h"

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

/** The trace objects of the library, each through something that has it write one message. */
class TraceObjectTest : public testing::TestWithParam<void (*)()> {
protected:
    /** The names of the objects whose messages were emitted when every message has `level`. */
    std::vector<std::string> sourcesAt(int level) {
        NumericLevels::mapAllTo(OrbiTraceLevel{level});
        platform.trace().clear();
        GetParam()();
        NumericLevels::mapAllTo(std::nullopt);
        std::vector<std::string> names;
        for (const Standalone::TraceMessage& message : platform.trace().messages()) {
            names.push_back(message.source);
        }
        return names;
    }

    Standalone::Platform platform;
};

void messageOfTheHandlers() {
    RfModule::FrequencyHandler("Tx", 1).onModuleInit();
}
void messageOfTheModule() {
    const ::FrequencyHandler module(1, static_cast<::FrequencyHandler::FrequencyHandlerType>(6));
}
void messageOfTheCanceller() {
    const LoCancellation neverPublished(1);
}
void messageOfTheObserver() {
    IFrequencyHandler::registerObserver(nullptr, nullptr);
}

const std::string directory = "PlatformServices/FrequencyHandler/private/";

} // namespace

// Threshold

TEST_P(TraceObjectTest, HasTheNameOfAllAndStartsWithThreshold3) {
    EXPECT_EQ(sourcesAt(3), (std::vector<std::string>{"QVX.FH"}));
    EXPECT_EQ(sourcesAt(4), std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(HandlersModuleCancellerObserver, TraceObjectTest,
                         testing::Values(&messageOfTheHandlers, &messageOfTheModule, &messageOfTheCanceller,
                                         &messageOfTheObserver));

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

TEST_F(TraceTest, SourceFilesOfAModuleTraceUnderTheirPathsInTheProject) {
    fail(Operation::driverWrite, "channel.1.tx.rf.mixer.i", 0x8001);
    boot(0);
    module->setTxFrequency(7442000); // module, microwave board, canceller
    EXPECT_THAT(files(), UnorderedElementsAre(directory + "FrequencyHandler.cpp",
                                              directory + "FrequencyHandler_MicrowaveBoard.cpp",
                                              directory + "LoCancellation.cpp"));
}

TEST_F(TraceTest, DatabaseSourceTracesUnderItsPathInTheProject) {
    build(0);
    fail(Operation::variableGet, "TxIfBb", 0x8001);
    EXPECT_EQ(module->onPhasePostFrameformatLoad(), ResultFailed);
    EXPECT_THAT(files(), UnorderedElementsAre(directory + "FrequencyHandler.cpp",
                                              directory + "FrequencyHandler_MicrowaveBoardDatabase.cpp"));
}

TEST_F(TraceTest, CommonSourceTracesUnderItsPathInTheProject) {
    RfModule::FrequencyHandler handler("Tx", 7);
    handler.registerObserver(static_cast<Observer<IFrequencyHandler>*>(nullptr));
    platform.trace().setThreshold(TraceLevel::error); // nothing else that it tells is one
    handler.setRfFrequency(7442000);
    EXPECT_THAT(files(), ElementsAre(directory + "FrequencyHandler_Common.cpp"));
}

TEST_F(TraceTest, OtherSourceFilesTraceUnderTheirPathsInTheProject) {
    IFrequencyHandler::registerObserver(nullptr, nullptr);
    EXPECT_THAT(files(), ElementsAre(directory + "FrequencyObserverCWrapper.cpp"));
    forget();
    Rau::FrequencyHandler("Tx", 7).onModuleInit();
    EXPECT_THAT(files(), ElementsAre(directory + "FrequencyHandler_Rau.cpp"));
    forget();
    RfModule::FrequencyHandler handler("Tx", 7);
    handler.onModuleInit(); // its driver is missing
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
