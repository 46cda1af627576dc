// The tables of virtual operations of the shared library and of objects that it built, entry by entry.

#include "CTxIQImbalanceHandler.h"
#include "FrequencyHandler.h"
#include "FrequencyHandler_MicrowaveBoard.h"
#include "FrequencyHandler_Rau.h"
#include "FrequencyHandler_RfModule.h"
#include "LoCancellation.h"
#include "RadioTest.h"

#include <dlfcn.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

namespace MicrowaveBoard = RL::FrequencyHandler::MicrowaveBoard;
namespace Rau = RL::FrequencyHandler::Rau;
namespace RfModule = RL::FrequencyHandler::RfModule;

using Word = std::uintptr_t;

Word wordAt(const void* address, std::ptrdiff_t index) {
    Word word{};
    std::memcpy(&word, static_cast<const char*>(address) + index * static_cast<std::ptrdiff_t>(sizeof word),
                sizeof word);
    return word;
}

/** The table of the object or base at `address`; slot 0 is its first operation. */
const void* tableOf(const void* address) {
    const void* table = nullptr;
    std::memcpy(&table, address, sizeof table);
    return table;
}

/** Those of `symbols`, one for each slot of the table, that do not stand in their slot. An empty one is any.
 */
std::vector<std::string> misplacedIn(const void* table, const std::vector<std::string>& symbols) {
    std::vector<std::string> names;
    for (std::size_t slot = 0; slot < symbols.size(); ++slot) {
        const Word found = wordAt(table, static_cast<std::ptrdiff_t>(slot));
        const auto wanted = reinterpret_cast<Word>(dlsym(RTLD_DEFAULT, symbols[slot].c_str()));
        if (!symbols[slot].empty() && (wanted == 0 || found != wanted)) {
            names.push_back(std::to_string(slot) + " " + symbols[slot]);
        }
    }
    return names;
}

/** The same for the table of the object or base at `address`. */
std::vector<std::string> misplaced(const void* address, const std::vector<std::string>& symbols) {
    return misplacedIn(tableOf(address), symbols);
}

/** How far behind the object its virtual base lies, as the table tells those who know the object only. */
std::ptrdiff_t offsetOfVirtualBase(const void* object) {
    return static_cast<std::ptrdiff_t>(wordAt(tableOf(object), -3));
}

std::ptrdiff_t distance(const void* from, const void* to) {
    return static_cast<const char*>(to) - static_cast<const char*>(from);
}

/** The form of a destructor that is entered through a virtual base: "_ZTv0_n12_" + ... with words of 4 bytes.
 */
std::string thunk(const std::string& symbol) {
    return "_ZTv0_n" + std::to_string(3 * sizeof(Word)) + "_" + symbol.substr(2);
}

/** An operation as a linker names it: behind its class, its name and what stands for its parameters. */
std::string operation(const std::string& owner, const std::string& name,
                      const std::string& parameters = "v") {
    return owner + std::to_string(name.size()) + name + "E" + parameters;
}

const std::string common = "_ZN2RL16FrequencyHandler6Common16FrequencyHandler";
const std::string registerObserver = operation(common, "registerObserver", "P8ObserverI17IFrequencyHandlerE");
const std::string getFrequency = "_ZNK2RL16FrequencyHandler6Common16FrequencyHandler12getFrequencyEv";
const std::string getFFVariables = operation(common, "getFFVariablesFromDatabase");
const std::string getCStruct;   // not exported; called instead
const std::string noDestructor; // of a class of which there is no object

/** Calls what stands in a slot of the object's table. */
template <typename Result, typename... Arguments>
Result throughSlot(std::ptrdiff_t slot, void* object, Arguments... arguments) {
    using Operation = Result (*)(void*, Arguments...);
    return reinterpret_cast<Operation>(wordAt(tableOf(object), slot))(object, arguments...);
}

/** Whether slot 2 gives the object's record, whose first word leads back to it. */
bool givesItsRecord(IFrequencyHandler& handler) {
    const void* const record = throughSlot<void*>(2, &handler);
    return record != nullptr && wordAt(record, 0) == reinterpret_cast<Word>(&handler);
}

void expectTableLeadsTo(const IInterface* interface, const void* object) {
    const std::ptrdiff_t offset = distance(object, interface);
    EXPECT_EQ(offsetOfVirtualBase(object), offset);
    EXPECT_EQ(static_cast<std::ptrdiff_t>(wordAt(tableOf(interface), -2)), -offset); // back to the object
    EXPECT_EQ(static_cast<std::ptrdiff_t>(wordAt(tableOf(interface), -3)), -offset); // for its destructor
    EXPECT_EQ(static_cast<std::ptrdiff_t>(wordAt(tableOf(object), -2)), 0);
}

class VtableWalkTest : public RadioTest {};

/** What an observer in C was told. */
struct Heard {
    unsigned long channel = 0;
    unsigned long frequency = 0;
};
void hear(void* context, unsigned long channel, unsigned long frequency) {
    *static_cast<Heard*>(context) = {channel, frequency};
}

} // namespace

TEST_F(VtableWalkTest, MicrowaveBoard) {
    MicrowaveBoard::FrequencyHandler handler("Tx", 1, true, false, false, false);
    const std::string own = "_ZN2RL16FrequencyHandler14MicrowaveBoard16FrequencyHandler";
    EXPECT_THAT(
        misplaced(&handler,
                  {own + "D1Ev", own + "D0Ev", getCStruct, registerObserver, getFrequency,
                   operation(own, "onModuleInit"), operation(own, "getVariablesFromDatabase"),
                   operation(own, "getFFVariablesFromDatabase"), operation(own, "writeFrequencyToHW", "m")}),
        testing::IsEmpty());
    EXPECT_THAT(misplaced(static_cast<IInterface*>(&handler), {thunk(own + "D1Ev"), thunk(own + "D0Ev")}),
                testing::IsEmpty());
}

TEST_F(VtableWalkTest, RfModule) {
    RfModule::FrequencyHandler handler("Tx", 1);
    const std::string own = "_ZN2RL16FrequencyHandler8RfModule16FrequencyHandler";
    EXPECT_THAT(
        misplaced(&handler, {own + "D1Ev", own + "D0Ev", getCStruct, registerObserver, getFrequency,
                             operation(own, "onModuleInit"), operation(own, "getVariablesFromDatabase"),
                             getFFVariables, operation(own, "writeFrequencyToHW", "m")}),
        testing::IsEmpty());
    EXPECT_THAT(misplaced(static_cast<IInterface*>(&handler), {thunk(own + "D1Ev"), thunk(own + "D0Ev")}),
                testing::IsEmpty());
}

TEST_F(VtableWalkTest, Rau) {
    Rau::FrequencyHandler handler("Rx", 1);
    const std::string own = "_ZN2RL16FrequencyHandler3Rau16FrequencyHandler";
    EXPECT_THAT(
        misplaced(&handler, {own + "D1Ev", own + "D0Ev", getCStruct, registerObserver, getFrequency,
                             operation(own, "onModuleInit"), operation(own, "getVariablesFromDatabase"),
                             getFFVariables, operation(own, "writeFrequencyToHW", "m")}),
        testing::IsEmpty());
    EXPECT_THAT(misplaced(static_cast<IInterface*>(&handler), {thunk(own + "D1Ev"), thunk(own + "D0Ev")}),
                testing::IsEmpty());
}

TEST_F(VtableWalkTest, ThirdSlotOfAHandlerGivesItsRecord) {
    MicrowaveBoard::FrequencyHandler board("Tx", 1, true, false, false, false);
    RfModule::FrequencyHandler rfModule("Tx", 2);
    Rau::FrequencyHandler rau("Rx", 1);
    EXPECT_TRUE(givesItsRecord(board));
    EXPECT_TRUE(givesItsRecord(rfModule));
    EXPECT_TRUE(givesItsRecord(rau));
}

// There is no object of it: the table as the library exports it, behind the way to its virtual base, the way
// to the object, and its type.
TEST_F(VtableWalkTest, CommonHandler) {
    const auto* const exported =
        static_cast<const char*>(dlsym(RTLD_DEFAULT, "_ZTVN2RL16FrequencyHandler6Common16FrequencyHandlerE"));
    ASSERT_NE(exported, nullptr);
    EXPECT_THAT(misplacedIn(exported + 3 * sizeof(Word),
                            {noDestructor, noDestructor, getCStruct, registerObserver, getFrequency,
                             operation(common, "onModuleInit"), operation(common, "getVariablesFromDatabase"),
                             getFFVariables, "__cxa_pure_virtual"}),
                testing::IsEmpty());
}

// An interface without a handler behind it, which is of the header alone.
TEST_F(VtableWalkTest, InterfaceKeepsNobodyAndKnowsNoFrequency) {
    IFrequencyHandler interface;
    Observer<IFrequencyHandler>* const nobody = nullptr;
    EXPECT_EQ(throughSlot<void*>(2, &interface), nullptr);
    EXPECT_EQ(throughSlot<std::int32_t>(3, &interface, nobody), 0);
    EXPECT_EQ(throughSlot<unsigned long>(4, &interface), 0UL);
}

// Nobody deletes it while the process lives; who did would find the destructor that frees it in slot 1.
TEST_F(VtableWalkTest, WrapperOfCObservers) {
    Heard heard;
    IFrequencyObserver observer{&heard, &hear};
    RfModule::FrequencyHandler handler("Tx", 3);
    EXPECT_EQ(IFrequencyHandler::registerObserver(static_cast<IFrequencyHandler*>(&handler), &observer), 0);
    handler.setRfFrequency(7442000);
    heard = {};
    void* const firstObserver = *reinterpret_cast<void**>(wordAt(&handler, 2));
    throughSlot<void>(2, firstObserver, static_cast<IFrequencyHandler*>(&handler));
    EXPECT_EQ(heard.channel, 3UL);
    EXPECT_EQ(heard.frequency, 7442000UL);
    EXPECT_NE(wordAt(tableOf(firstObserver), 0), wordAt(tableOf(firstObserver), 1));
    throughSlot<void>(1, firstObserver);
}

TEST_F(VtableWalkTest, Module) {
    const ::FrequencyHandler module(1, ::FrequencyHandler::RfModule);
    const std::string base = "_ZN15ModuleInterface";
    const std::string own = "_ZN16FrequencyHandler";
    EXPECT_THAT(
        misplaced(&module,
                  {own + "D1Ev", own + "D0Ev", operation(base, "onPhaseActivation", "m17ECallbackPriority"),
                   operation(own, "onModuleInit"), operation(own, "onPhaseModuleStorageObjectsRetreived"),
                   operation(own, "onPhasePostFrameformatLoad"), operation(base, "onPhaseEndFrameformatLoad"),
                   operation(base, "onPhaseStart"), operation(base, "onPhaseStop"),
                   operation(base, "onPhaseFrameformatLoad"), operation(base, "onPhasePreFrameformatLoad"),
                   operation(base, "onPhaseSetRadioChannelNearEndFinished"),
                   operation(own, "setTxFrequency", "m"), operation(own, "setRxFrequency", "m")}),
        testing::IsEmpty());
}

TEST_F(VtableWalkTest, Canceller) {
    const LoCancellation canceller(1);
    const std::string own = "_ZN14LoCancellation";
    const std::vector<std::string> symbols = {
        own + "D1Ev", own + "D0Ev", operation(own, "onModuleInit"), operation(own, "setLoCancellation", "ji"),
        operation(own, "calibrateLoCancellation", "iiiidijjPiS0_S0_Pjb")};
    EXPECT_THAT(misplaced(&canceller, symbols), testing::IsEmpty());
    EXPECT_THAT(misplaced(static_cast<const ILoCancellation*>(&canceller), symbols), testing::IsEmpty());
    EXPECT_THAT(
        misplaced(static_cast<const IInterface*>(&canceller), {thunk(own + "D1Ev"), thunk(own + "D0Ev")}),
        testing::IsEmpty());
}

TEST_F(VtableWalkTest, IQImbalanceHandler) {
    const CTxIQImbalanceHandler handler(1);
    const std::string own = "_ZN21CTxIQImbalanceHandler";
    EXPECT_THAT(misplaced(&handler, {own + "D1Ev", own + "D0Ev", operation(own, "doImbalanceCompensation"),
                                     operation(own, "onTxFrequencyChanged", "m"),
                                     operation(own, "testSetIQCompensationBar", "j"),
                                     operation(own, "testGetIQCompensationBar", "Pj"),
                                     operation(own, "testSetIQMode", "7EIQMode"),
                                     operation(own, "testGetIQMode", "P7EIQMode"),
                                     operation(own, "testSetSimulatorMode", "14ESimulatorMode"),
                                     operation(own, "testGetSimulatorMode", "P14ESimulatorMode"),
                                     operation(own, "testGetAdaptiveIQCompEnabled", "Pj")}),
                testing::IsEmpty());
}

// A client that was handed an object finds the IInterface in it through the table, and the other way round.
TEST_F(VtableWalkTest, TableLeadsToTheVirtualBaseAndBack) {
    const MicrowaveBoard::FrequencyHandler board("Tx", 1, true, false, false, false);
    const RfModule::FrequencyHandler rfModule("Tx", 2);
    const Rau::FrequencyHandler rau("Rx", 1);
    const LoCancellation canceller(1);
    expectTableLeadsTo(&board, &board);
    expectTableLeadsTo(&rfModule, &rfModule);
    expectTableLeadsTo(&rau, &rau);
    expectTableLeadsTo(&canceller, &canceller);
}

TEST_F(VtableWalkTest, IQImbalanceHandlerIsItsInterfaceWithoutAnOffset) {
    const CTxIQImbalanceHandler handler(1);
    EXPECT_EQ(distance(&handler, static_cast<const IInterface*>(&handler)), 0);
}
