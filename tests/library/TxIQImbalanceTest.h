#ifndef TESTS_LIBRARY_TXIQIMBALANCETEST_H
#define TESTS_LIBRARY_TXIQIMBALANCETEST_H

#include "CTxIQImbalanceHandler.h"
#include "RadioTest.h"

#include <functional>
#include <string>

/**
 * The IQ-imbalance handler of channel 1 on a radio that has its four drivers and tables. At T degrees the
 * tables of DC I, DC Q, gain and phase give 10 T + 1, 10 T + 2, 10 T + 3 and 10 T + 4.
 */
class TxIQImbalanceTest : public RadioTest {
protected:
    using Operation = Standalone::Operation;
    using Presence = Standalone::Presence;

    // What follows "channel.1." and "Channel.1.", in the order of the compensations.
    static const Lines driverNames;
    static const Lines tableNames;

    TxIQImbalanceTest();

    /** Gives the radio drivers and tables of another channel too. */
    void equip(unsigned long channel);
    Standalone::Driver& driver(const std::string& name) {
        return platform.drivers().add("channel.1." + name);
    }

    EAFResult activate(unsigned long phase) {
        return CTxIQImbalanceHandler::onPhaseActivation(&handler, phase, ECallbackPriority{0});
    }
    /** Phase 11, which succeeds; then forgets what happened. */
    void setUp();
    /** Notifies the handler of a temperature. */
    void heat(int temperature) { CTxIQImbalanceHandler::notifyTemperature(&handler, temperature); }
    /** Forgets what happened, compensates, and gives what happened meanwhile. */
    Lines compensate(EAFResult expected);

    /** The first line of `story` that begins with `start` and is entered from now on has `operation` fail. */
    void failAfter(const std::string& start, Operation operation, const std::string& object,
                   std::int32_t code);

    /** The writes to drivers of channel 1, without "channel.1.": "dsp.tx.dc.compensation.i=251". */
    Lines written() const;
    /** The compensations of all four drivers at once, as written() shows them. */
    static Lines all(const std::string& dcI, const std::string& dcQ, const std::string& gain,
                     const std::string& phase);

    /** Calls of the platform and, with their numeric levels, messages: "0x800: Entering initialize". */
    Lines story;
    CTxIQImbalanceHandler handler{1};

private:
    void enter(const std::string& line);

    std::string m_trigger;
    std::function<void()> m_triggered;
};

#endif
