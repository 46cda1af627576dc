// A module from its construction to its end, with each allocation failing in turn: nothing is thrown, what
// cannot be done answers 0x8000 with an error message, and no memory is lost.

#include "CTxIQImbalanceHandler.h"
#include "CallingObserver.h"
#include "FailingMemory.h"
#include "ILoCancellation.h"
#include "InterfaceBroker.h"
#include "ModuleTest.h"

#include <array>
#include <cstddef>
#include <functional>
#include <new>

namespace {

/** Where an object is built without an allocation of its own. */
template <typename Object>
class Place {
public:
    template <typename... Arguments>
    explicit Place(Arguments... arguments) : m_object(new (m_memory.data()) Object(arguments...)) {}
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    ~Place() { m_object->~Object(); }
    Object* operator->() const { return m_object; }

private:
    alignas(Object) std::array<std::byte, sizeof(Object)> m_memory{};
    Object* m_object;
};

/** What an IQ compensation answers whose module the platform does not take. */
constexpr auto moduleRefused = static_cast<EAFResult>(0x8005);

/** How a run ended. */
struct Outcome {
    std::array<EAFResult, 8> results{};
    std::size_t count = 0;
    std::size_t lost = 0;
    bool hasFailed = false;

    void add(EAFResult result) { results[count++] = result; }
    bool isGood() const {
        return std::all_of(results.begin(), results.end(),
                           [](EAFResult result) { return result == ResultOk; });
    }
    bool hasOnlyDocumentedCodes() const {
        return std::all_of(results.begin(), results.end(), [](EAFResult result) {
            return result == ResultOk || result == ResultFailed || result == moduleRefused;
        });
    }
};

class AllocationFailureTest : public ModuleTest {
protected:
    AllocationFailureTest() {
        platform.calls().setRecording(false);
        // The log has its room before anything is counted.
        OrbiTrace trace("test", Standalone::TraceLevel::error);
        for (int message = 0; message < 100; ++message) {
            trace.beginLogMsg(Standalone::TraceLevel::error, __FILE__, __LINE__)
                << std::string(300, 'x') << std::endl;
            trace.endLogMsg();
        }
        platform.trace().setThreshold(Standalone::TraceLevel::error);
    }

    /** Runs `scenario`; the allocation of that number fails. Nothing that it throws is caught. */
    template <typename Scenario>
    Outcome run(unsigned failing, bool forGood, const Scenario& scenario) noexcept {
        Outcome outcome;
        platform.trace().clear();
        const std::size_t before = FailingMemory::inUse();
        FailingMemory::failAt(failing, forGood);
        scenario(outcome);
        outcome.hasFailed = FailingMemory::hasFailed();
        FailingMemory::failAt(0);
        const bool isTraced = !platform.trace().messages().empty();
        platform.trace().clear();
        // The platform may keep what it needs for itself, once.
        outcome.lost = FailingMemory::inUse() - before;
        EXPECT_TRUE(outcome.isGood() || isTraced || forGood) << "allocation " << failing;
        return outcome;
    }

    /** Has each allocation of `scenario` fail in turn, until there is none that could. */
    template <typename Scenario>
    void failEach(const Scenario& scenario) {
        ASSERT_TRUE(run(0, false, scenario).isGood());
        const std::size_t kept = run(0, false, scenario).lost;
        for (const bool forGood : {false, true}) {
            unsigned failing = 1;
            for (Outcome outcome = run(failing, forGood, scenario); outcome.hasFailed;
                 outcome = run(++failing, forGood, scenario)) {
                ASSERT_TRUE(outcome.hasOnlyDocumentedCodes()) << "allocation " << failing;
                ASSERT_LE(outcome.lost, kept) << "allocation " << failing;
            }
            EXPECT_GT(failing, 10U); // there was something to fail
            ASSERT_TRUE(run(0, false, scenario).isGood()) << "memory is back";
        }
    }
};

class ModuleAllocationFailureTest : public AllocationFailureTest, public testing::WithParamInterface<int> {};

} // namespace

TEST_P(ModuleAllocationFailureTest, EachAllocationOfAModulesLifeMayFail) {
    const std::string txName = "IFrequencyHandler_Tx_1";
    const std::string cancellationName = "ILoCancellation_1";
    failEach([&](Outcome& outcome) {
        Place<FrequencyHandler> radio(1UL, static_cast<FrequencyHandler::FrequencyHandlerType>(GetParam()));
        outcome.add(radio->onModuleInit());
        outcome.add(radio->onPhaseModuleStorageObjectsRetreived());
        outcome.add(radio->onPhasePostFrameformatLoad());
        auto* const handler = InterfaceBroker::getInstance().getInterface<IFrequencyHandler>(txName);
        CallingObserver observer([](IFrequencyHandler*) {});
        if (handler != nullptr) {
            outcome.add(handler->registerObserver(&observer));
        }
        outcome.add(radio->setTxFrequency(7442000));
        outcome.add(radio->setRxFrequency(7596000));
        radio->notifyTemperature(30);
        auto* const cancellation =
            InterfaceBroker::getInstance().getInterface<ILoCancellation>(cancellationName);
        if (cancellation != nullptr) {
            int i = 0;
            int q = 0;
            int delta = 0;
            unsigned iterations = 0;
            outcome.add(cancellation->calibrateLoCancellation(0, 10, 0, 10, 0.75, 5, 3, 0, &i, &q, &delta,
                                                              &iterations, false));
        }
        platform.temperature().forgetObservers();
    });
}

INSTANTIATE_TEST_SUITE_P(AllTypes, ModuleAllocationFailureTest, testing::Range(0, 6));

TEST_F(AllocationFailureTest, EachAllocationOfAnIqCompensationsLifeMayFail) {
    // The platform knows an initialised compensation for good, so that each has a channel of its own.
    std::vector<std::unique_ptr<CTxIQImbalanceHandler>> compensations;
    for (int channel = 1; channel <= 60; ++channel) {
        addCompensation(channel);
        compensations.push_back(std::make_unique<CTxIQImbalanceHandler>(static_cast<unsigned long>(channel)));
    }
    for (std::size_t life = 0; life < compensations.size(); ++life) {
        CTxIQImbalanceHandler* const compensation = compensations[life].get();
        const auto failing = static_cast<unsigned>(life / 2 + 1);
        const Outcome outcome = run(failing, life % 2 != 0, [&](Outcome& parts) {
            parts.add(compensation->initialize());
            parts.add(CTxIQImbalanceHandler::onPhaseActivation(compensation, 11, ECallbackPriority{3}));
            CTxIQImbalanceHandler::notifyTemperature(compensation, 30);
        });
        EXPECT_TRUE(outcome.hasOnlyDocumentedCodes()) << failing;
        EXPECT_TRUE(outcome.hasFailed || failing > 5) << failing;
        EXPECT_FALSE(outcome.hasFailed && failing > 20) << failing;
    }
    platform.temperature().forgetObservers();
}
