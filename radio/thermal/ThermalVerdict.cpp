#include "radio/thermal/ThermalVerdict.h"

#include <string_view>
#include <vector>

namespace Radio::Thermal {

namespace {

JudgedLimit judge(std::string_view name, double limit, const ChannelTotals& channel,
                  WorstFigure WorstFigures::*figure) {
    JudgedLimit judged{name, limit};
    judged.channel = channel.channel;
    judged.frequency = channel.carrier;
    if (channel.worst) {
        const WorstFigure& worst = *channel.worst.*figure;
        judged.found = toHundredth(worst.dBc);
        judged.temperature = worst.degrees;
    } else {
        judged.whyUnknown = "the board does not describe its transmitter";
    }
    return judged;
}

/** What is found to be bad counts before what is not known, and that before what is good. */
bool isWorse(const JudgedLimit& one, const JudgedLimit& other) {
    if (one.found && other.found) {
        return *one.found > *other.found;
    }
    return other.found ? other.isHeld() : one.found && !one.isHeld();
}

/** The worst of all channels. */
JudgedLimit judge(std::string_view name, double limit, const std::vector<ChannelTotals>& channels,
                  WorstFigure WorstFigures::*figure) {
    JudgedLimit worst = judge(name, limit, channels.front(), figure);
    for (const ChannelTotals& channel : channels) {
        const JudgedLimit judged = judge(name, limit, channel, figure);
        if (isWorse(judged, worst)) {
            worst = judged;
        }
    }
    return worst;
}

} // namespace

Verdict verdictOn(const ReplayResult& result, const Limits& limits) {
    Verdict verdict;
    if (!limits.image && !limits.carrierLeakage) {
        verdict.whyNone = "the board states no image and no carrier leakage in its [limits]";
        return verdict;
    }
    const std::vector<ChannelTotals>& channels = result.totals.channels;
    if (!result.isComplete || channels.empty()) {
        verdict.whyNone = "not all of the log was replayed";
        return verdict;
    }
    if (limits.image) {
        verdict.limits.push_back(judge("image", *limits.image, channels, &WorstFigures::image));
    }
    if (limits.carrierLeakage) {
        verdict.limits.push_back(
            judge("carrier_leakage", *limits.carrierLeakage, channels, &WorstFigures::leakage));
    }
    return verdict;
}

} // namespace Radio::Thermal
