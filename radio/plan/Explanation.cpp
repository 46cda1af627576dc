#include "radio/plan/Explanation.h"

#include "ResultCode.h"
#include "radio/board/PlatformWords.h"
#include "radio/plan/Forecast.h"
#include "radio/plan/HardwareWords.h"
#include "radio/plan/PlanSteps.h"
#include "radio/plan/ProducedCarrier.h"
#include "radio/plan/StepList.h"
#include "radio/plan/TuneCheck.h"
#include "radio/session/HardwareWrite.h"

#include <algorithm>

namespace Radio::Plan {

namespace {

std::string wordOrNothing(const std::optional<std::int64_t>& word) {
    return word ? std::to_string(*word) : "nothing";
}

/** In which words of the plan `written` is not as `expected`. */
std::vector<std::string> differences(const HardwareWords& expected, const HardwareWords& written,
                                     const WordSources& sources) {
    std::vector<std::string> result;
    for (const Word word : {Word::dspOffset, Word::ifPll, Word::rfPll, Word::chargePump, Word::carrier}) {
        const std::string driver = sources.nameOf(word);
        if (!driver.empty() && expected[word] != written[word]) {
            result.push_back(driver + ": the steps give " + wordOrNothing(expected[word]) +
                             ", the library wrote " + wordOrNothing(written[word]));
        }
    }
    return result;
}

/** A board with an LO configuration driver has no use for the charge pump. */
bool usesLoConfiguration(Standalone::Platform& platform, int channel, Direction direction) {
    const auto* const driver = platform.drivers().find(driverPrefix(channel, direction) + "rf.lo.config");
    constexpr unsigned needed = Standalone::wordContext | Standalone::wordWrite;
    return driver != nullptr && (driver->missingWords() & needed) == 0;
}

/** What a handler takes for the temperature before the temperature service has told it one. */
constexpr std::int32_t untoldDegrees = 0;

/** Whether corrections by temperature were among what was written. */
bool correctsMixer(const Explanation& explanation) {
    const std::string mixer = driverPrefix(explanation.channel.number, explanation.direction) + "rf.mixer.";
    return std::any_of(
        explanation.writes.begin(), explanation.writes.end(),
        [&](const ExplainedWrite& write) { return write.driver.compare(0, mixer.size(), mixer) == 0; });
}

/** Adds the steps of a microwave board, and what they expect in hardware. */
HardwareWords explainMicrowaveBoard(Explanation& explanation, Standalone::Platform& platform,
                                    const Parameters& parameters) {
    const SpacingShift shift = spacingShiftOf(parameters);
    StepList list(parameters, explanation.carrier);
    explanation.variables = parameters.variables;
    list.addSpacing(shift);
    if (shift.isUnhandled || parameters.factor == 0) {
        explanation.steps = list.take();
        return {};
    }
    const PlanSteps steps = stepsFor(explanation.carrier, shift, parameters);
    list.addSynthesisers(steps);
    HardwareWords expected = expectedWords(shift, steps, parameters);
    const int channel = explanation.channel.number;
    if (!usesLoConfiguration(platform, channel, explanation.direction)) {
        const CalibrationTable* const table =
            chargePumpTable(platform.tables(), channel, explanation.direction);
        expected[Word::chargePump] = list.addChargePump(table, steps.adjusted);
    }
    explanation.steps = list.take();
    return expected;
}

} // namespace

std::optional<std::int64_t> Explanation::error() const {
    return produced ? std::optional(*produced - std::int64_t{carrier} * 1000) : std::nullopt;
}

Explanation explain(BootedRadio& booted, const Board& board, const ChannelDescription& channel,
                    Direction direction, std::uint32_t carrier) {
    Standalone::Platform& platform = booted.radio().platform();
    Explanation explanation{channel, direction, carrier, {}, {}, {}, {}, {}, {}, {}, {}, {}};
    explanation.forbidden = whyNotTune(board, platform, direction, channel.number, carrier);
    WordSources sources(platform, channel, direction);
    booted.forget();
    sources.mark();
    booted.radio().tune(direction, channel.number, carrier);

    const HardwareWords written = sources.read();
    for (const Standalone::Call& call : booted.writes()) {
        explanation.writes.push_back({destination(call), call.value, call.code});
    }
    if (correctsMixer(explanation)) {
        explanation.assumedDegrees = untoldDegrees;
    }
    explanation.complaints = booted.complaints();
    std::optional<ProducedCarrier> produced;
    HardwareWords expected;
    if (const auto build = buildOf(channel.type, direction)) {
        const Parameters parameters = readParameters(platform.variables(), channel.number, direction, *build);
        expected = explainMicrowaveBoard(explanation, platform, parameters);
        produced = producedCarrier(written, parameters);
        if (produced) {
            explanation.whyOff = whyCarrierIsOff(spacingShiftOf(parameters), parameters);
            explanation.production = productionSteps(written, *produced, parameters);
        }
    } else {
        expected[Word::carrier] = static_cast<std::int32_t>(carrier);
        produced = passedOnCarrier(written);
    }
    explanation.disagreements = differences(expected, written, sources);
    if (produced) {
        explanation.produced = produced->carrier;
    }
    return explanation;
}

} // namespace Radio::Plan
