#include "TxIQImbalanceTest.h"

#include "FlatCalls.h"
#include "NumericLevels.h"

#include <sstream>
#include <utility>

using Standalone::Call;

const RadioTest::Lines TxIQImbalanceTest::driverNames{"dsp.tx.dc.compensation.i", "dsp.tx.dc.compensation.q",
                                                      "dsp.tx.quadrature.gain.offset.compensation",
                                                      "dsp.tx.quadrature.phase.offset.compensation"};
const RadioTest::Lines TxIQImbalanceTest::tableNames{
    "Tx.Dsp.Temperature.To.Dc.I.Compensation", "Tx.Dsp.Temperature.To.Dc.Q.Compensation",
    "Tx.Dsp.Temperature.To.Gain.Offset.Compensation", "Tx.Dsp.Temperature.To.Phase.Offset.Compensation"};

TxIQImbalanceTest::TxIQImbalanceTest() {
    FlatCalls::reset();
    equip(1);
    platform.calls().setListener([this](const Call& call) {
        enter(std::string(Standalone::toString(call.operation)) +
              (call.object.empty() ? "" : " " + call.object));
    });
    platform.trace().setSink([this](const Standalone::TraceMessage& message) {
        std::ostringstream line;
        line << std::hex << std::showbase << NumericLevels::takeLast().value_or(-1) << ": " << message.text;
        enter(line.str());
    });
}

void TxIQImbalanceTest::equip(unsigned long channel) {
    for (const std::string& name : driverNames) {
        platform.drivers().add("channel." + std::to_string(channel) + "." + name);
    }
    std::int32_t atZero = 0;
    for (const std::string& name : tableNames) {
        ++atZero;
        platform.tables().add({"Channel." + std::to_string(channel) + "." + name,
                               {-100, 100},
                               {},
                               {atZero - 1000, atZero + 1000}});
    }
}

void TxIQImbalanceTest::setUp() {
    forget();
    EXPECT_EQ(activate(11), ResultOk);
    EXPECT_EQ(complaints(), Lines{});
    forget();
    story.clear();
}

RadioTest::Lines TxIQImbalanceTest::compensate(EAFResult expected) {
    forget();
    story.clear();
    EXPECT_EQ(handler.doImbalanceCompensation(), expected);
    return story;
}

void TxIQImbalanceTest::failAfter(const std::string& start, Operation operation, const std::string& object,
                                  std::int32_t code) {
    m_trigger = start;
    m_triggered = [this, operation, object, code] { fail(operation, object, code); };
}

RadioTest::Lines TxIQImbalanceTest::written() const {
    const std::string prefix = "channel.1.";
    Lines lines;
    for (const std::string& line : writes()) {
        lines.push_back(line.rfind(prefix, 0) == 0 ? line.substr(prefix.size()) : line);
    }
    return lines;
}

RadioTest::Lines TxIQImbalanceTest::all(const std::string& dcI, const std::string& dcQ,
                                        const std::string& gain, const std::string& phase) {
    return {"dsp.tx.dc.compensation.i=" + dcI, "dsp.tx.dc.compensation.q=" + dcQ,
            "dsp.tx.quadrature.gain.offset.compensation=" + gain,
            "dsp.tx.quadrature.phase.offset.compensation=" + phase};
}

void TxIQImbalanceTest::enter(const std::string& line) {
    story.push_back(line);
    if (m_triggered && line.rfind(m_trigger, 0) == 0) {
        std::exchange(m_triggered, nullptr)();
    }
}
