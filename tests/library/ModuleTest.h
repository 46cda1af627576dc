#ifndef TESTS_LIBRARY_MODULETEST_H
#define TESTS_LIBRARY_MODULETEST_H

#include "FrequencyHandler.h"
#include "RadioTest.h"

#include <memory>
#include <string>
#include <vector>

/**
 * A frequency module on channel 1 of a radio that has whatever any handler type asks for: both directions
 * with IF 140 MHz and all drivers, a canceller that corrects with I = 11 and Q = 12, and a remote radio unit.
 */
class ModuleTest : public RadioTest {
protected:
    ModuleTest();

    /** Makes the module, in place of the one that is there. */
    void build(int type, unsigned long channel = 1);
    /** Makes the module, runs its three phases and forgets all that. */
    void boot(int type);
    /** Gives a channel what an IQ compensation asks for; its tables give 1 at any temperature. */
    void addCompensation(int channel);
    /** Runs a phase; true when no module failed. */
    bool run(unsigned long phase) { return platform.modules().run(phase).succeeded(); }
    /** The frequency of the published handler of a direction. */
    unsigned long frequencyOf(const std::string& direction);

    /** The objects, without "channel.1.", of the calls of `operation`, in order. */
    Lines objectsOf(Standalone::Operation operation) const;
    /** Which table was asked at which frequency and temperature: "I at 7442000, 25". */
    Lines corrections() const;
    /** From now on, calls and trace messages are told one after the other in `story`. */
    void startStory();

    Lines story;
    std::unique_ptr<::FrequencyHandler> module;

private:
    void addDirection(const std::string& direction, const std::string& tableDirection);
};

/** Tests over handler types. */
class ModuleTypeTest : public ModuleTest, public testing::WithParamInterface<int> {};

#endif
