#include "ModuleTest.h"

#include "IFrequencyHandler.h"
#include "InterfaceBroker.h"

using Standalone::Call;
using Standalone::Operation;

ModuleTest::ModuleTest() {
    addDirection("tx", "Tx");
    addDirection("rx", "Rx");
    for (const char* driver : {"dsp.rx.freq.offset", "tx.rf.mixer.i", "tx.rf.mixer.q", "tx.rf.detector.v"}) {
        platform.drivers().add(std::string("channel.1.") + driver);
    }
    platform.variables().add("ChannelSpacing", {100});
    platform.variables().add("HwCodeDsp", {0});
    platform.variables().add("channel.1.rx.rf.frequency.cs.offset.arraysize", {0});
    platform.variables().add("channel.1.rx.rf.frequency.cs.offset.array", {0});
    const std::string canceller = "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.";
    platform.tables().add({canceller + "I", {0}, {0}, {11}});
    platform.tables().add({canceller + "Q", {0}, {0}, {12}});
    platform.addRau(1);
}

void ModuleTest::addDirection(const std::string& direction, const std::string& tableDirection) {
    const std::string prefix = "channel.1." + direction + ".";
    for (const char* driver :
         {"rf.frequency", "rf.lo.frequency", "rf.lo.frequency.in.hz", "if.frequency", "rf.pll.config"}) {
        platform.drivers().add(prefix + driver);
    }
    platform.variables().add(prefix + "mixer.multiplicationfactor", {1});
    platform.variables().add(prefix + "rf.spectruminverted", {0});
    platform.variables().add(prefix + "baseband.spectruminverted", {0});
    platform.variables().add(prefix + "if.frequency", {140000});
    platform.variables().add(tableDirection + "IfBb", {0});
    platform.tables().add(
        {"Channel.1." + tableDirection + ".Rf.Pll.Frequency.To.Chargepump.Setting", {0}, {}, {5}});
}

void ModuleTest::addCompensation(int channel) {
    const std::string number = std::to_string(channel);
    for (const char* const name :
         {"dc.compensation.i", "dc.compensation.q", "quadrature.gain.offset.compensation",
          "quadrature.phase.offset.compensation"}) {
        platform.drivers().add("channel." + number + ".dsp.tx." + name);
    }
    for (const char* const name : {"Dc.I", "Dc.Q", "Gain.Offset", "Phase.Offset"}) {
        platform.tables().add(
            {"Channel." + number + ".Tx.Dsp.Temperature.To." + name + ".Compensation", {0}, {}, {1}});
    }
}

void ModuleTest::build(int type, unsigned long channel) {
    module.reset();
    forget();
    module = std::make_unique<::FrequencyHandler>(
        channel, static_cast<::FrequencyHandler::FrequencyHandlerType>(type));
}

void ModuleTest::boot(int type) {
    build(type);
    for (const unsigned long phase : {11UL, 5UL, 20UL}) {
        EXPECT_TRUE(run(phase)) << "phase " << phase;
    }
    EXPECT_EQ(complaints(), Lines{});
    forget();
}

unsigned long ModuleTest::frequencyOf(const std::string& direction) {
    auto& broker = InterfaceBroker::getInstance();
    const auto* const handler =
        broker.getInterface<IFrequencyHandler>("IFrequencyHandler_" + direction + "_1");
    return handler->getFrequency();
}

RadioTest::Lines ModuleTest::objectsOf(Operation operation) const {
    const std::string prefix = "channel.1.";
    Lines objects;
    for (const Call& call : platform.calls().journalOf(operation)) {
        objects.push_back(call.object.rfind(prefix, 0) == 0 ? call.object.substr(prefix.size())
                                                            : call.object);
    }
    return objects;
}

RadioTest::Lines ModuleTest::corrections() const {
    Lines lines;
    for (const Call& call : platform.calls().journalOf(Operation::tableBilinear)) {
        lines.push_back(call.object.substr(call.object.size() - 1) + " at " + std::to_string(call.at[0]) +
                        ", " + std::to_string(call.at[1]));
    }
    return lines;
}

void ModuleTest::startStory() {
    story.clear();
    platform.calls().setListener([this](const Call& call) {
        story.push_back(std::string(Standalone::toString(call.operation)) + " " + call.object);
    });
    platform.trace().setSink(
        [this](const Standalone::TraceMessage& message) { story.push_back("trace " + message.text); });
}
