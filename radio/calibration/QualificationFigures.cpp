#include "radio/calibration/QualificationFigures.h"

#include "radio/text/Words.h"

#include <algorithm>
#include <cmath>

namespace Radio::Calibration {

namespace {

/** A reading, or a place on a line: both are whole numbers. */
std::string textOf(double reading) {
    return std::to_string(std::llround(reading));
}

std::string inOneDecimal(double number) {
    return inDecimals(number, 1);
}

double rounded(double figure) {
    return std::round(figure * 100) / 100;
}

bool isLess(const ReadingLine::value_type& one, const ReadingLine::value_type& other) {
    return one.second < other.second;
}

double spanOf(const ReadingLine& line) {
    const auto [least, most] = std::minmax_element(line.begin(), line.end(), isLess);
    return most->second - least->second;
}

std::string detectorText(const ChainDescription& description) {
    return description.isHighDetector ? "the high-range detector" : "the detector";
}

} // namespace

void QualificationFigures::setNoise(const std::vector<double>& readings) {
    double mean = 0.0;
    for (const double reading : readings) {
        mean += reading / static_cast<double>(readings.size());
    }
    double sum = 0.0;
    for (const double reading : readings) {
        sum += (reading - mean) * (reading - mean);
    }
    result.noise = std::sqrt(sum / static_cast<double>(readings.size() - 1));
    middle = mean;
}

double QualificationFigures::noiseBound() const {
    constexpr double sigmas = 4.0;
    return std::max(1.0, sigmas * result.noise);
}

std::vector<double> QualificationFigures::all() const {
    std::vector<double> readings{lowEnd, highEnd};
    for (const ReadingLine* const line : {&i, &q}) {
        for (const auto& [place, reading] : *line) {
            readings.push_back(reading);
        }
    }
    return readings;
}

void QualificationFigures::refuse(const ChainDescription& description, const OtherDetector& other) {
    for (const auto& why : {whyBlind(description, other), whySaturated(description), whyNotLow(description),
                            whyNotSettled(), whyNotFollowing(i, "I"), whyNotFollowing(q, "Q")}) {
        if (!why.empty()) {
            result.refusal = why;
            return;
        }
    }
}

std::string QualificationFigures::whyBlind(const ChainDescription& description,
                                           const OtherDetector& other) const {
    const std::vector<double> readings = all();
    const auto [least, most] = std::minmax_element(readings.begin(), readings.end());
    // So far apart are the lowest and the highest of some readings now and then.
    constexpr double ofNoise = 1.5;
    const bool isSame = *least == *most;
    if (*most - *least > ofNoise * noiseBound()) {
        return {};
    }
    const std::string which = detectorText(description);
    std::string why;
    if (isSame && description.highest && *least >= static_cast<double>(*description.highest)) {
        why = "every reading is " + textOf(*least) + ", the highest there is: " + which + " is saturated";
    } else if (isSame && description.lowest && *most <= static_cast<double>(*description.lowest)) {
        why = "every reading is " + textOf(*least) + ", the lowest there is: " + which + " sees nothing";
    } else if (isSame) {
        why = "every reading is " + textOf(*least) + ", whatever the corrections are: " + which + " is stuck";
    } else {
        why = "readings are " + textOf(*least) + " to " + textOf(*most) +
              " whatever the corrections are, with a noise of " + inOneDecimal(result.noise) + ": " + which +
              " is stuck, or sees nothing of them";
    }
    if (const auto seen = other()) {
        why += std::string(", but that of the ") + (description.isHighDetector ? "low" : "high") +
               " range does, " + textOf(seen->first) + " and " + textOf(seen->second);
    }
    return why;
}

/** Readings that cannot be told from each other say nothing about where less leaks. */
std::string QualificationFigures::whySaturated(const ChainDescription& description) const {
    const std::vector<double> readings = all();
    const double most = *std::max_element(readings.begin(), readings.end());
    const auto count = static_cast<std::size_t>(std::count(readings.begin(), readings.end(), most));
    if (2 * count <= readings.size()) {
        return {};
    }
    return std::to_string(count) + " of " + std::to_string(readings.size()) + " readings with different " +
           "corrections are " + textOf(most) + ", and none is more: " + detectorText(description) +
           " is saturated";
}

std::string QualificationFigures::whyNotLow(const ChainDescription& description) const {
    const std::vector<double> readings = all();
    const double least = *std::min_element(readings.begin(), readings.end());
    const auto count = static_cast<std::size_t>(std::count_if(
        readings.begin(), readings.end(), [&](double reading) { return reading <= least + noiseBound(); }));
    if (3 * count < 2 * readings.size()) {
        return {};
    }
    return std::to_string(count) + " of " + std::to_string(readings.size()) +
           " readings with different corrections are about " + textOf(least) +
           ", and none is less: " + detectorText(description) + " does not see so little" +
           (description.isHighDetector ? "" : "; it may be one for a high range");
}

/** Power has one minimum along any line, and nothing on the way to it is higher than what is beyond. */
std::string QualificationFigures::whyNotFollowing(const ReadingLine& line, const char* branch) const {
    const double bound = 2 * noiseBound();
    if (spanOf(line) <= noiseBound() && spanOf(line) * 8 < spanOf(&line == &i ? q : i)) {
        return std::string(branch) + " changes nothing: with it from " + textOf(line.front().first) + " to " +
               textOf(line.back().first) + " readings stay at " + textOf(line.front().second) + " but for " +
               textOf(spanOf(line));
    }
    const auto peak = std::max_element(line.begin() + 1, line.end() - 1, isLess);
    const auto before = std::min_element(line.begin(), peak, isLess);
    const auto after = std::min_element(peak, line.end(), isLess);
    if (std::max(before->second, after->second) >= peak->second - bound) {
        return {};
    }
    return "readings along " + std::string(branch) + " rise to " + textOf(peak->second) + " at " +
           textOf(peak->first) + ", between " + textOf(before->second) + " at " + textOf(before->first) +
           " and " + textOf(after->second) + " at " + textOf(after->first) +
           ": they do not rise with the leakage";
}

std::string QualificationFigures::whyNotSettled() const {
    if (!step || step->isOver()) {
        return {};
    }
    return "the detector does not settle: after a step of the corrections it reads " +
           textOf(step->secondLast()) + " after " + textOf(step->secondLastTime()) + " ms and " +
           textOf(step->last()) + " after " + textOf(step->lastTime()) + " ms";
}

void QualificationFigures::conclude(const ChainDescription& description) {
    judgeSettleTime(description);
    judgeSlope(description);
    chooseReadings(description);
    // As exact as they are, and the same when they come out of a journal.
    result.noise = rounded(result.noise);
    for (auto* const figure : {&result.settled, &result.slope}) {
        *figure = *figure ? std::optional(rounded(**figure)) : std::nullopt;
    }
    const std::vector<double> readings = all();
    const double most = *std::max_element(readings.begin(), readings.end());
    if (description.highest && lowEnd == most && highEnd == most &&
        most >= static_cast<double>(*description.highest)) {
        result.warnings.push_back("the detector is saturated, at " + textOf(most) +
                                  ", at both ends of the ranges: narrower ones serve better");
    }
}

void QualificationFigures::judgeSettleTime(const ChainDescription& description) {
    // What a search bears: it compares probes that lie on both sides of the middle.
    constexpr double bearable = 0.05;
    // More of what was set before than of what is.
    constexpr double hopeless = 0.5;
    if (!step) {
        if (!description.settleTime) {
            result.warnings.emplace_back("the ends of the ranges read the same as the middle: how fast the "
                                         "detector settles is not known, 5 ms are taken");
        }
        return;
    }
    result.settled = step->timeTo(StepResponse::settledPart);
    if (!description.settleTime || *description.settleTime >= *result.settled) {
        return;
    }
    const double left = step->partAfter(*description.settleTime);
    const std::string text = "the settle time of " + std::to_string(*description.settleTime) +
                             " ms is too short: " + textOf(left * 100) +
                             " % of a step of the detector is left then, and 2 % after " +
                             inOneDecimal(*result.settled) + " ms";
    if (left > hopeless) {
        result.refusal = text;
    } else if (left > bearable) {
        result.warnings.push_back(text);
    }
}

void QualificationFigures::judgeSlope(const ChainDescription& description) {
    // Noise, what a converter rounds, and detectors that are not quite logarithmic.
    constexpr double ofSpan = 0.005;
    constexpr double ofNoise = 1.5;
    constexpr double same = 0.25;
    constexpr double leastSlope = 0.5;
    const std::vector<double> readings = all();
    const auto [least, most] = std::minmax_element(readings.begin(), readings.end());
    const double tolerance = std::max({1.0, ofNoise * result.noise, ofSpan * (*most - *least)});
    result.slope = slopeOf({i, q}, tolerance);
    if (!result.slope) {
        return;
    }
    if (result.noise > std::max(1.0, std::abs(description.slope.value_or(*result.slope)))) {
        // Of readings that are more than a dB off nobody can say what a dB is.
        result.slope.reset();
        return;
    }
    const std::string text = "the detector shows " + inOneDecimal(*result.slope) + " units for each dB";
    const double wanted = description.slope ? std::abs(*description.slope) / 2 : leastSlope;
    if (std::abs(*result.slope) < wanted) {
        result.refusal =
            text +
            (description.slope ? ", not the " + inOneDecimal(*description.slope) + " that the board states"
                               : std::string()) +
            ": it is too slow, or sees something else";
    } else if (description.slope && std::abs(*result.slope / *description.slope - 1) > same) {
        result.warnings.push_back(text + ", not the " + inOneDecimal(*description.slope) +
                                  " that the board states");
    }
}

void QualificationFigures::chooseReadings(const ChainDescription& description) {
    constexpr double partOfDecibel = 0.1;
    constexpr double leastUnits = 0.5;
    const std::optional<double> slope = description.slope ? description.slope : result.slope;
    const double wanted = slope ? std::max(leastUnits, partOfDecibel * std::abs(*slope)) : 1.0;
    const double ratio = result.noise / wanted;
    const double readings = std::clamp(std::ceil(ratio * ratio), 1.0, 1.0 * mostReadings);
    result.readings = static_cast<std::uint32_t>(readings);
    const double left = result.noise / std::sqrt(readings);
    if (left > 2 * wanted) {
        result.warnings.push_back("the detector is noisy: of " + inOneDecimal(result.noise) + " units " +
                                  inOneDecimal(left) + " are left in the mean of " +
                                  std::to_string(mostReadings) + " readings");
    }
}

} // namespace Radio::Calibration
