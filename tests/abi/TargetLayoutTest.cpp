// The objects and records of the shared library on the target, word by word of 4 bytes. A string takes 6
// words there (address, length, 4 words of text), a vector 3.

#include "CTxIQImbalanceHandler.h"
#include "FrequencyHandler.h"
#include "FrequencyHandler_MicrowaveBoard.h"
#include "FrequencyHandler_Rau.h"
#include "FrequencyHandler_RfModule.h"
#include "InterfaceBroker.h"
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

using Word = std::uint32_t;
static_assert(sizeof(void*) == sizeof(Word));

Word wordOf(const void* pointer) {
    return reinterpret_cast<Word>(pointer);
}

Word symbol(const char* name) {
    return wordOf(dlsym(RTLD_DEFAULT, name));
}

Word wordAt(const void* address, std::size_t index) {
    Word word{};
    std::memcpy(&word, static_cast<const char*>(address) + index * sizeof word, sizeof word);
    return word;
}

std::vector<Word> words(const void* address, std::size_t first, std::size_t count) {
    std::vector<Word> found(count);
    std::memcpy(found.data(), static_cast<const char*>(address) + first * sizeof(Word), count * sizeof(Word));
    return found;
}

/** The text of the string whose first word has the number `index`. */
std::string textAt(const void* address, std::size_t index) {
    return {reinterpret_cast<const char*>(wordAt(address, index)), wordAt(address, index + 1)};
}

/** What the broker knows begins `place` words into the object, with a table and the name, which is empty. */
void expectInterfaceAt(std::size_t place, const void* object, const IInterface* interface) {
    EXPECT_EQ(wordOf(interface), wordOf(object) + place * sizeof(Word));
    EXPECT_EQ(textAt(interface, 1), "");
}

constexpr Word minusOne = 0xFFFFFFFF;

class TargetLayoutTest : public RadioTest {
protected:
    /** Words 0 to 14, which every direction handler has: interface, observers, record, name, carrier. */
    static void expectCommonHandler(const void* handler, const std::string& name, Word channel) {
        EXPECT_EQ(wordAt(handler, 1), wordOf(handler) + 5 * 4); // the record's address
        EXPECT_THAT(words(handler, 2, 3), testing::Each(0U));   // no observers
        EXPECT_THAT(words(handler, 5, 3),
                    testing::ElementsAre(wordOf(handler), registerObserverEntry, channel));
        EXPECT_EQ(textAt(handler, 8), name);
        EXPECT_EQ(wordAt(handler, 14), 0U); // no carrier yet
    }

    /** Adds a driver of that name; its record's address. */
    Word driver(const std::string& name) { return wordOf(platform.drivers().add(name).record()); }

    /** Adds a variable of that name; where its content lies. */
    Word content(const std::string& name) {
        return wordOf(platform.variables().add(name, {0, 0}).record()->content);
    }

    /** Adds a table of one axis with that name; its handle. */
    Word table(const std::string& name) {
        platform.tables().add({name, {0}, {}, {0}});
        return handleOf(name);
    }
    /** The same with two axes. */
    Word tableOfTwo(const std::string& name) {
        platform.tables().add({name, {0}, {0}, {0}});
        return handleOf(name);
    }

    static const Word registerObserverEntry;

private:
    static Word handleOf(const std::string& name) {
        CalibrationTableHandle handle = nullptr;
        EXPECT_EQ(CCalibrationHandler_GetTable(name.c_str(), &handle), 0);
        return wordOf(handle);
    }
};

const Word TargetLayoutTest::registerObserverEntry =
    symbol("_ZN17IFrequencyHandler16registerObserverEPvP18IFrequencyObserver");

void ignoreFrequency(void* /*context*/, unsigned long /*channel*/, unsigned long /*frequency*/) {}

} // namespace

TEST_F(TargetLayoutTest, RfModule) {
    RfModule::FrequencyHandler handler("Tx", 3);
    expectCommonHandler(&handler, "Tx", 3);
    EXPECT_EQ(wordAt(&handler, 15), 0U);   // rfFrequencyDriver
    EXPECT_EQ(textAt(&handler, 16), "Tx"); // m_direction
    expectInterfaceAt(22, &handler, &handler);
    EXPECT_EQ(sizeof handler, 29U * 4);
}

TEST_F(TargetLayoutTest, RfModuleFillsTheWordsOfDriverAndCarrier) {
    platform.drivers().add("channel.3.rx.rf.frequency");
    RfModule::FrequencyHandler handler("Rx", 3);
    handler.onModuleInit();
    handler.setRfFrequency(7442000);
    EXPECT_EQ(wordAt(&handler, 14), 7442000U);
    EXPECT_EQ(wordAt(&handler, 15), wordOf(platform.drivers().add("channel.3.rx.rf.frequency").record()));
}

TEST_F(TargetLayoutTest, Rau) {
    Rau::FrequencyHandler handler("Rx", 4);
    expectCommonHandler(&handler, "Rx", 4);
    EXPECT_EQ(textAt(&handler, 15), "Rx");                           // m_direction
    EXPECT_THAT(words(&handler, 21, 2), testing::ElementsAre(4, 0)); // m_channel, m_pRauHandler
    expectInterfaceAt(23, &handler, &handler);
    EXPECT_EQ(sizeof handler, 30U * 4);
}

TEST_F(TargetLayoutTest, RauKeepsTheRemoteRadioUnitInItsWord) {
    IRauHandler& radio = platform.addRau(4);
    Rau::FrequencyHandler handler("Rx", 4);
    EXPECT_EQ(handler.onModuleInit(), ResultOk);
    EXPECT_EQ(wordAt(&handler, 22), wordOf(&radio));
}

TEST_F(TargetLayoutTest, MicrowaveBoard) {
    MicrowaveBoard::FrequencyHandler handler("Tx", 1, true, false, true, false);
    expectCommonHandler(&handler, "Tx", 1);
    // Sidebands, IF, mixer factor, baseband IF; variables; drivers and charge-pump table.
    EXPECT_THAT(words(&handler, 15, 5), testing::ElementsAre(minusOne, minusOne, 0, 1, 0));
    EXPECT_THAT(words(&handler, 20, 3), testing::Each(0U));
    EXPECT_THAT(words(&handler, 23, 6), testing::Each(0U));
    EXPECT_EQ(wordAt(&handler, 29), 0x01'00'01'01U); // IF 1, charge pump 1, DSP offset 0, offset array 1
    EXPECT_EQ(wordAt(&handler, 30) & 0xFFU, 0U);     // LO in Hz
    EXPECT_EQ(wordAt(&handler, 31), 3000U);          // m_channelSpacing
    expectInterfaceAt(32, &handler, &handler);
    EXPECT_EQ(sizeof handler, 39U * 4);
}

TEST_F(TargetLayoutTest, MicrowaveBoardWithTheOtherFlags) {
    const MicrowaveBoard::FrequencyHandler handler("Rx", 1, false, true, false, true);
    EXPECT_EQ(wordAt(&handler, 29), 0x00'01'01'00U);
    EXPECT_EQ(wordAt(&handler, 30) & 0xFFU, 1U);
}

TEST_F(TargetLayoutTest, MicrowaveBoardKeepsEachDatabaseVariableInItsWord) {
    platform.variables().add("channel.1.rx.mixer.multiplicationfactor", {3});
    platform.variables().add("channel.1.rx.rf.spectruminverted", {1});
    platform.variables().add("channel.1.rx.baseband.spectruminverted", {0});
    platform.variables().add("channel.1.rx.if.frequency", {350000});
    platform.variables().add("RxIfBb", {140});
    MicrowaveBoard::FrequencyHandler handler("Rx", 1, true, false, false, false);
    handler.getVariablesFromDatabase();
    EXPECT_THAT(words(&handler, 15, 5), testing::ElementsAre(minusOne, 1, 350000, 3, 140));
}

TEST_F(TargetLayoutTest, MicrowaveBoardKeepsEachContentInItsWord) {
    platform.variables().add("channel.1.rx.mixer.multiplicationfactor", {3});
    platform.variables().add("RxIfBb", {140});
    const Word size = content("channel.1.rx.rf.frequency.cs.offset.arraysize");
    const Word pairs = content("channel.1.rx.rf.frequency.cs.offset.array");
    const Word code = content("HwCodeDsp");
    MicrowaveBoard::FrequencyHandler handler("Rx", 1, false, false, true, true);
    EXPECT_EQ(handler.getVariablesFromDatabase(), ResultOk);
    EXPECT_THAT(words(&handler, 20, 3), testing::ElementsAre(size, pairs, code));
}

TEST_F(TargetLayoutTest, MicrowaveBoardKeepsEachDriverAndTheTableInItsWord) {
    const Word rfLo = driver("channel.1.rx.rf.lo.frequency");
    const Word rfLoInHz = driver("channel.1.rx.rf.lo.frequency.in.hz");
    const Word intermediate = driver("channel.1.rx.if.frequency");
    const Word pll = driver("channel.1.rx.rf.pll.config");
    const Word dsp = driver("channel.1.dsp.rx.freq.offset");
    const Word chargePump = table("Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting");
    MicrowaveBoard::FrequencyHandler handler("Rx", 1, true, true, false, true);
    EXPECT_EQ(handler.onModuleInit(), ResultOk);
    EXPECT_THAT(words(&handler, 23, 6),
                testing::ElementsAre(rfLo, rfLoInHz, intermediate, pll, dsp, chargePump));
}

TEST_F(TargetLayoutTest, MicrowaveBoardWithAnLoConfigurationNotesThatItHasNoChargePumpTable) {
    driver("channel.1.tx.rf.lo.frequency");
    const Word pll = driver("channel.1.tx.rf.lo.config");
    MicrowaveBoard::FrequencyHandler handler("Tx", 1, false, false, false, false);
    EXPECT_EQ(handler.onModuleInit(), ResultOk);
    EXPECT_EQ(wordAt(&handler, 26), pll);
    EXPECT_EQ(wordAt(&handler, 29), 0x00'00'00'00U); // the charge pump's byte is the second
}

TEST_F(TargetLayoutTest, Canceller) {
    const LoCancellation canceller(3);
    EXPECT_THAT(words(&canceller, 1, 6), testing::Each(0U)); // four drivers, two tables
    EXPECT_EQ(wordAt(&canceller, 7) & 0xFFU, 1U);            // m_useLoCancellationTables
    EXPECT_EQ(wordAt(&canceller, 8), 3U);                    // m_channel
    EXPECT_EQ(wordOf(static_cast<const ILoCancellation*>(&canceller)), wordOf(&canceller));
    expectInterfaceAt(9, &canceller, &canceller);
    EXPECT_EQ(sizeof canceller, 16U * 4);
}

TEST_F(TargetLayoutTest, CancellerKeepsEachDriverAndTableInItsWord) {
    const Word mixerI = driver("channel.3.tx.rf.mixer.i");
    const Word mixerQ = driver("channel.3.tx.rf.mixer.q");
    const Word low = driver("channel.3.tx.rf.detector.low.v.detect");
    const Word high = driver("channel.3.tx.rf.detector.high.v.detect");
    const Word tableI = tableOfTwo("Channel.3.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I");
    const Word tableQ = tableOfTwo("Channel.3.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q");
    LoCancellation canceller(3);
    EXPECT_EQ(canceller.onModuleInit(), ResultOk);
    EXPECT_THAT(words(&canceller, 1, 6), testing::ElementsAre(mixerI, mixerQ, low, high, tableI, tableQ));
}

TEST_F(TargetLayoutTest, CancellerWithACoarseTableNotesIt) {
    for (const char* const name : {"mixer.i", "mixer.q", "detector.v"}) {
        driver(std::string("channel.3.tx.rf.") + name);
    }
    table("Channel.3.Tx.Bb.Frequency.To.Coarse.Dc.I.Compensation");
    LoCancellation canceller(3);
    EXPECT_EQ(canceller.onModuleInit(), ResultOk);
    EXPECT_EQ(wordAt(&canceller, 7) & 0xFFU, 0U);
}

TEST_F(TargetLayoutTest, ModuleHoldsHandlersTemperatureAndObserverBehindItsBase) {
    ::FrequencyHandler module(5, ::FrequencyHandler::MicrowaveBoardIf);
    module.notifyTemperature(31);
    const auto published = [](const std::string& name) {
        return wordOf(dynamic_cast<void*>(InterfaceBroker::getInstance().findInterface(name)));
    };
    EXPECT_THAT(words(&module, sizeof(ModuleInterface) / 4, 6),
                testing::ElementsAre(published("IFrequencyHandler_Tx_5"), published("IFrequencyHandler_Rx_5"),
                                     published("ILoCancellation_5"), 31, wordOf(&module),
                                     symbol("_ZN16FrequencyHandler23staticNotifyTemperatureEPvi")));
    EXPECT_EQ(sizeof module, sizeof(ModuleInterface) + 6 * 4);
}

TEST_F(TargetLayoutTest, IQImbalanceHandler) {
    CTxIQImbalanceHandler handler(2);
    EXPECT_EQ(handler.initialize(), ResultOk);
    CTxIQImbalanceHandler::notifyTemperature(&handler, 31);
    EXPECT_EQ(textAt(&handler, 1), "");                                    // IInterface's name
    EXPECT_THAT(words(&handler, 7, 4), testing::ElementsAre(2, 0, 0, 31)); // channel, observer, temperature
    EXPECT_THAT(words(&handler, 11, 8), testing::Each(0U));                // four tables, four drivers
    EXPECT_THAT(
        words(&handler, 19, 2), // the callback's record
        testing::ElementsAre(wordOf(&handler),
                             symbol("_ZN21CTxIQImbalanceHandler17onPhaseActivationEPvm17ECallbackPriority")));
}

TEST_F(TargetLayoutTest, IQImbalanceHandlerKeepsItsObserverTablesAndDriversInTheirWords) {
    const Word dcI = driver("channel.2.dsp.tx.dc.compensation.i");
    const Word dcQ = driver("channel.2.dsp.tx.dc.compensation.q");
    const Word gain = driver("channel.2.dsp.tx.quadrature.gain.offset.compensation");
    const Word phase = driver("channel.2.dsp.tx.quadrature.phase.offset.compensation");
    const std::string prefix = "Channel.2.Tx.Dsp.Temperature.To.";
    const Word dcITable = table(prefix + "Dc.I.Compensation");
    const Word dcQTable = table(prefix + "Dc.Q.Compensation");
    const Word gainTable = table(prefix + "Gain.Offset.Compensation");
    const Word phaseTable = table(prefix + "Phase.Offset.Compensation");
    CTxIQImbalanceHandler handler(2);
    EXPECT_EQ(CTxIQImbalanceHandler::onPhaseActivation(&handler, 11, ECallbackPriority{}), ResultOk);
    EXPECT_THAT(
        words(&handler, 8, 2),
        testing::ElementsAre(wordOf(&handler), symbol("_ZN21CTxIQImbalanceHandler17notifyTemperatureEPvi")));
    EXPECT_THAT(words(&handler, 11, 8),
                testing::ElementsAre(dcITable, dcQTable, gainTable, phaseTable, dcI, dcQ, gain, phase));
}

TEST_F(TargetLayoutTest, WrapperOfCObservers) {
    RfModule::FrequencyHandler handler("Tx", 3);
    int context = 0;
    IFrequencyObserver observer{&context, &ignoreFrequency};
    IFrequencyHandler::registerObserver(&handler, &observer);
    const auto* const wrapper = reinterpret_cast<const void*>(
        wordAt(reinterpret_cast<const void*>(wordAt(&handler, 2)), 0)); // the first observer
    EXPECT_THAT(words(wrapper, 1, 3),
                testing::ElementsAre(3, wordOf(&context), reinterpret_cast<Word>(&ignoreFrequency)));
}
