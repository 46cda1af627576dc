// What registrations with the platform do when there is no memory for them, and what its phases and
// notifications take.

#include "CModuleManager.h"
#include "CModuleManager_c.h"
#include "FailingMemory.h"
#include "ITemperatureHandler.h"
#include "PlatformFixture.h"

#include <array>

namespace {

using ::testing::ElementsAre;
namespace Codes = Standalone::Codes;

constexpr std::array<unsigned long, 1> onlyPhase11{11};
/** So long that a string takes memory for it. */
constexpr const char* longName = "a name that is longer than what a string has room for";

class RegistrationMemoryTest : public PlatformFixture {
protected:
    RegistrationMemoryTest() { platform.calls().setRecording(false); }

    /**
     * Has each allocation of `registration` fail in turn, until there is none that could; `isNotThere` sees
     * what has become of it. Returns how many allocations there were.
     */
    template <typename Registration, typename Check>
    static unsigned failEach(const Registration& registration, const Check& isNotThere) {
        for (unsigned failing = 1;; ++failing) {
            SCOPED_TRACE(failing);
            FailingMemory::failAt(failing);
            const std::int32_t code = registration();
            const bool hasFailed = FailingMemory::failures() != 0;
            FailingMemory::failAt(0);
            if (!hasFailed) {
                EXPECT_EQ(code, 0);
                return failing - 1;
            }
            EXPECT_EQ(code, Codes::outOfMemory);
            isNotThere();
        }
    }

    /** The names of the modules that have a turn in phase 11. */
    std::vector<std::string> turns() {
        std::vector<std::string> names;
        for (const Standalone::PhaseStep& step : platform.modules().run(11).steps) {
            names.push_back(step.moduleName);
        }
        return names;
    }

    template <typename Operation>
    static std::size_t taken(const Operation& operation) {
        const std::size_t before = FailingMemory::taken();
        operation();
        return FailingMemory::taken() - before;
    }

    CModuleManager& manager = CModuleManager::GetInstance();
    ModuleInterface first{19000, "first", 1, 0, onlyPhase11.data(), 1};
    ModuleInterface second{19000, longName, 2, 0, onlyPhase11.data(), 1};
};

} // namespace

TEST_F(RegistrationMemoryTest, ModuleWithoutMemoryForItIsNotRegistered) {
    EXPECT_EQ(manager.RegisterModule(&first), 0);
    const unsigned allocations = failEach([&] { return manager.RegisterModule(&second); },
                                          [&] {
                                              EXPECT_EQ(platform.modules().moduleCount(), 1U);
                                              EXPECT_THAT(turns(), ElementsAre("first"));
                                              EXPECT_EQ(manager.UnRegisterModule(&second), Codes::notFound);
                                          });
    EXPECT_GT(allocations, 1U);
    EXPECT_THAT(turns(), ElementsAre("first", longName));
}

TEST_F(RegistrationMemoryTest, ModuleThatIsThereNeedsNoMemoryToBeRefusedOrToLeave) {
    EXPECT_EQ(manager.RegisterModule(&first), 0);
    EXPECT_EQ(taken([&] { EXPECT_EQ(manager.RegisterModule(&first), Codes::alreadyThere); }), 0U);
    EXPECT_EQ(taken([&] { EXPECT_EQ(manager.UnRegisterModule(&first), 0); }), 0U);
}

TEST_F(RegistrationMemoryTest, ModuleOfTheCViewWithoutMemoryForItIsNotRegistered) {
    ModuleCallbackRecord callback{nullptr, [](void*, unsigned long, ECallbackPriority) { return ResultOk; }};
    const auto addCallback = [&] {
        return CModuleManager_RegisterCallback(83000, "callback", 0, &callback, ECallbackPriority{0}, 0,
                                               onlyPhase11.data(), 1);
    };
    EXPECT_EQ(manager.RegisterModule(&first), 0);
    const unsigned allocations = failEach([] { return CModuleManager_RegisterModule(83000, longName); },
                                          [&] {
                                              EXPECT_EQ(platform.modules().moduleCount(), 1U);
                                              EXPECT_EQ(addCallback(), Codes::notFound);
                                          });
    EXPECT_GT(allocations, 1U);
    EXPECT_EQ(failEach(addCallback, [&] { EXPECT_THAT(turns(), ElementsAre("first")); }), 1U);
    EXPECT_THAT(turns(), ElementsAre("first", longName));
}

TEST_F(RegistrationMemoryTest, ObserverWithoutMemoryForItIsNotRegistered) {
    int told = 0;
    const auto count = [](void* context, int /*temperature*/) { ++*static_cast<int*>(context); };
    ITemperatureObserver early{&told, count};
    ITemperatureObserver late{&told, count};
    EXPECT_EQ(ITemperatureHandler::registerObserver(&early), 0);
    int temperature = 0;
    const unsigned allocations = failEach([&] { return ITemperatureHandler::registerObserver(&late); },
                                          [&] {
                                              EXPECT_EQ(platform.temperature().observerCount(), 1U);
                                              EXPECT_EQ(platform.temperature().set(++temperature), 1U);
                                          });
    EXPECT_GT(allocations, 1U);
    EXPECT_EQ(told, temperature);
    EXPECT_EQ(platform.temperature().set(++temperature), 2U);
    EXPECT_EQ(taken([&] { EXPECT_EQ(ITemperatureHandler::registerObserver(&late), 0); }), 0U);
}

TEST_F(RegistrationMemoryTest, PhaseTakesMemoryForItsTurnsItsReportAndLongNames) {
    EXPECT_EQ(taken([&] { platform.modules().run(11); }), 0U);
    manager.RegisterModule(&first);
    EXPECT_EQ(taken([&] { platform.modules().run(5); }), 1U);  // the turns
    EXPECT_EQ(taken([&] { platform.modules().run(11); }), 2U); // and the report
    manager.RegisterModule(&second);
    EXPECT_EQ(taken([&] { platform.modules().run(11); }), 4U); // which grows, and a name
}

TEST_F(RegistrationMemoryTest, ChangeOfTheTemperatureTakesMemoryOnce) {
    ITemperatureObserver observer{nullptr, [](void*, int) {}};
    EXPECT_EQ(taken([&] { platform.temperature().set(1); }), 0U);
    ITemperatureHandler::registerObserver(&observer);
    EXPECT_EQ(taken([&] { platform.temperature().set(1); }), 0U);
    EXPECT_EQ(taken([&] { platform.temperature().set(2); }), 1U);
}
