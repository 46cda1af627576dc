// A module and an IQ compensation from construction to end, with each allocation failing in turn: nothing is
// thrown, the operation in which it fails answers 0x8000 with an error message, and no memory is lost.

#include "CTxIQImbalanceHandler.h"
#include "CallingObserver.h"
#include "FailingMemory.h"
#include "ILoCancellation.h"
#include "InterfaceBroker.h"
#include "ModuleTest.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>

namespace {

/** A radio for one life: what its platform keeps goes with it. */
class Radio final : public ModuleTest {
public:
    Radio() {
        addCompensation(1);
        platform.calls().setRecording(false); // what the platform wants for its journal does not count
        platform.trace().setThreshold(Standalone::TraceLevel::error);
    }

    using ModuleTest::platform;

private:
    void TestBody() override {}
};

/** What an operation does when an allocation fails in it. */
enum class InWant {
    /** It answers 0x8000, and an error message says why. Whatever is not one of the others does. */
    answersAndSaysWhy,
    /** That the platform did not take its module, an IQ compensation answers with a code of its own. */
    answersThatItsModuleIsRefused,
    /** What the temperature service answers to the module is not looked at. */
    mayLackTheSubscription,
    /**
     * A constructor has no answer. What broker and module manager answer to it is not looked at: handlers
     * that nobody finds and a module that is not in the list work as ever. Of anything else a message tells.
     */
    isBuiltAllTheSame,
    /** Nor has a destructor; it withdraws under a name for which there was memory from the start. */
    isGoneAllTheSame,
    /** It answers 0 whatever the hardware does, and wants no memory but for messages. */
    wantsNoneButForMessages,
};

/** What came of one operation. */
struct Done {
    const char* name;
    InWant inWant;
    EAFResult result;
    /** How many allocations failed in it. */
    unsigned failures;
    bool isTraced;

    /** True when it did what is to be done in want of memory; a message takes memory too. */
    bool isRightInWant(bool forGood) const {
        const bool isToldOf = isTraced || forGood;
        switch (inWant) {
        case InWant::answersAndSaysWhy:
            return result == ResultFailed && isToldOf;
        case InWant::answersThatItsModuleIsRefused:
            return (result == ResultFailed || result == 0x8005) && isToldOf;
        case InWant::mayLackTheSubscription:
            return (result == ResultFailed && isToldOf) ||
                   (result == ResultOk &&
                    Standalone::Platform::current()->temperature().observerCount() == 0);
        case InWant::isBuiltAllTheSame:
        case InWant::isGoneAllTheSame:
            return true;
        case InWant::wantsNoneButForMessages:
            return forGood;
        }
        return false;
    }
};

/** A life, operation by operation. Takes no memory. */
class Life {
public:
    /** The allocation of that number fails; with `forGood` all behind it too. */
    Life(unsigned failing, bool forGood) : m_forGood(forGood) { FailingMemory::failAt(failing, forGood); }

    template <typename Operation>
    void add(const char* name, InWant inWant, const Operation& operation) {
        const Standalone::TraceLog& trace = Standalone::Platform::current()->trace();
        const std::size_t messages = trace.messages().size();
        const unsigned failures = FailingMemory::failures();
        const EAFResult result = operation();
        judge({name, inWant, result, FailingMemory::failures() - failures,
               trace.messages().size() != messages});
    }
    template <typename Operation>
    void add(const char* name, const Operation& operation) {
        add(name, InWant::answersAndSaysWhy, operation);
    }

    void end() {
        hasFailed = FailingMemory::failures() != 0;
        FailingMemory::failAt(0);
    }

    bool hasFailed = false;
    /** The first operation that did not do as it should; none: all is well. */
    std::optional<Done> mistake;
    std::size_t lost = 0;

private:
    void judge(const Done& done) {
        // Only after a want of which somebody was told may an operation fail that has all the memory it
        // wants.
        const bool isRight =
            done.failures != 0 ? done.isRightInWant(m_forGood) : done.result == ResultOk || m_isToldOf;
        if (!isRight && !mistake) {
            mistake = done;
        }
        m_isToldOf = m_isToldOf || (done.failures != 0 && (done.isTraced || m_forGood));
    }

    bool m_forGood;
    bool m_isToldOf = false;
};

/** The stream of the trace keeps its room from now on; of this message nobody is told. */
void makeRoomForMessages() {
    OrbiTrace trace("test", Standalone::TraceLevel::error);
    trace.beginLogMsg(Standalone::TraceLevel::error, __FILE__, __LINE__)
        << std::string(300, 'x') << std::endl;
    trace.endLogMsg();
}

/** Lives `story` on a radio of its own. Nothing that it throws is caught. */
template <typename Story>
Life live(unsigned failing, bool forGood, const Story& story) noexcept {
    makeRoomForMessages();
    const std::size_t before = FailingMemory::inUse();
    std::optional<Radio> radio(std::in_place);
    Life life(failing, forGood);
    story(*radio, life);
    life.end();
    radio.reset();
    makeRoomForMessages();
    life.lost = FailingMemory::inUse() - before;
    return life;
}

void expectGood(const Life& life) {
    if (life.mistake) {
        ADD_FAILURE() << life.mistake->name << " answered " << life.mistake->result << " with"
                      << (life.mistake->isTraced ? "" : "out") << " a message; " << life.mistake->failures
                      << " allocations failed in it";
    }
    EXPECT_EQ(life.lost, 0U) << "allocations lost";
}

/** Has each allocation of `story` fail in turn, until there is none that could. */
template <typename Story>
void failEach(const Story& story) {
    live(0, false, story); // makes what library and platform keep for good
    expectGood(live(0, false, story));
    for (const bool forGood : {false, true}) {
        unsigned failing = 1;
        for (Life life = live(failing, forGood, story); life.hasFailed;
             life = live(++failing, forGood, story)) {
            SCOPED_TRACE("allocation " + std::to_string(failing) + (forGood ? " and all behind it" : ""));
            expectGood(life);
            if (testing::Test::HasFailure()) {
                return; // the others would say the same
            }
        }
        EXPECT_GT(failing, 5U);            // there was something to fail
        expectGood(live(0, false, story)); // memory is back
    }
}

class ModuleAllocationFailureTest : public testing::TestWithParam<int> {};

} // namespace

TEST_P(ModuleAllocationFailureTest, EachAllocationOfAModulesLifeMayFail) {
    const std::string txName = "IFrequencyHandler_Tx_1";
    const std::string cancellationName = "ILoCancellation_1";
    failEach([&](Radio& radio, Life& life) {
        const std::size_t published = radio.platform.interfaces().entries().size();
        std::optional<FrequencyHandler> module;
        life.add("constructor", InWant::isBuiltAllTheSame, [&] {
            module.emplace(1UL, static_cast<FrequencyHandler::FrequencyHandlerType>(GetParam()));
            return ResultOk;
        });
        life.add("onModuleInit", InWant::mayLackTheSubscription, [&] { return module->onModuleInit(); });
        life.add("onPhaseModuleStorageObjectsRetreived",
                 [&] { return module->onPhaseModuleStorageObjectsRetreived(); });
        life.add("onPhasePostFrameformatLoad", [&] { return module->onPhasePostFrameformatLoad(); });
        auto& broker = InterfaceBroker::getInstance();
        CallingObserver observer([](IFrequencyHandler*) {});
        if (auto* const handler = broker.getInterface<IFrequencyHandler>(txName)) {
            life.add("registerObserver", [&] { return handler->registerObserver(&observer); });
        }
        life.add("setTxFrequency", InWant::wantsNoneButForMessages,
                 [&] { return module->setTxFrequency(7442000); });
        life.add("setRxFrequency", InWant::wantsNoneButForMessages,
                 [&] { return module->setRxFrequency(7596000); });
        life.add("notifyTemperature", InWant::wantsNoneButForMessages, [&] {
            module->notifyTemperature(30);
            return ResultOk;
        });
        if (auto* const cancellation = broker.getInterface<ILoCancellation>(cancellationName)) {
            life.add("calibrateLoCancellation", [&] {
                int i = 0;
                int q = 0;
                int delta = 0;
                unsigned iterations = 0;
                return cancellation->calibrateLoCancellation(0, 10, 0, 10, 0.75, 5, 3, 0, &i, &q, &delta,
                                                             &iterations, false);
            });
        }
        life.add("destructor", InWant::isGoneAllTheSame, [&] {
            radio.platform.temperature().forgetObservers();
            module.reset();
            return ResultOk;
        });
        EXPECT_EQ(radio.platform.interfaces().entries().size(), published);
    });
}

INSTANTIATE_TEST_SUITE_P(AllTypes, ModuleAllocationFailureTest, testing::Range(0, 6));

TEST(AllocationFailureTest, EachAllocationOfAnIqCompensationsLifeMayFail) {
    std::optional<CTxIQImbalanceHandler> compensation; // outlives the platform, which knows it for good
    failEach([&](Radio& /*radio*/, Life& life) {
        compensation.emplace(1UL);
        life.add("initialize", InWant::answersThatItsModuleIsRefused,
                 [&] { return compensation->initialize(); });
        life.add("onPhaseActivation", [&] {
            return CTxIQImbalanceHandler::onPhaseActivation(&*compensation, 11, ECallbackPriority{3});
        });
        life.add("notifyTemperature", InWant::wantsNoneButForMessages, [&] {
            CTxIQImbalanceHandler::notifyTemperature(&*compensation, 30);
            return ResultOk;
        });
        life.add("onTxFrequencyChanged", [&] { return compensation->onTxFrequencyChanged(18000000); });
    });
}
