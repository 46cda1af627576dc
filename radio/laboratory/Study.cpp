#include "radio/laboratory/Study.h"

#include "radio/text/Words.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace Radio::Laboratory {

namespace {

constexpr double everything = std::numeric_limits<double>::infinity();
constexpr std::size_t nineOfTen = 1;
constexpr std::size_t ninetyNine = 2;

Tally tallyOf(const Results& results, std::uint32_t settings) {
    Tally tally;
    std::vector<std::optional<double>> probes;
    std::vector<std::optional<double>> seconds;
    std::vector<std::optional<double>> worst;
    for (const Trial& trial : results.trials) {
        if (trial.task.settings == settings) {
            ++tally.transmitters;
            ++tally.ends[trial.end];
            tally.allProbes += trial.probes;
            probes.emplace_back(static_cast<double>(trial.probes));
            seconds.emplace_back(trial.seconds);
            worst.push_back(trial.worst);
        }
    }
    tally.probes = quantilesOf(std::move(probes));
    tally.seconds = quantilesOf(std::move(seconds));
    tally.worst = quantilesOf(std::move(worst));
    return tally;
}

std::string ofAll(const Tally& tally) {
    return std::to_string(tally.failures()) + " of " + counted(tally.transmitters, "transmitter") + " (" +
           percentText(tally.failurePart()) + ")";
}

std::string reasonFor(const Study& study, const Heading& heading) {
    const Tally& best = study.tallies[study.recommended];
    const std::string allowed = percentText(heading.mostFailures);
    if (study.isNoneGood) {
        return "more than " + allowed + " fail with all settings; with these it is fewest, " + ofAll(best);
    }
    std::string reason = ofAll(best) + (best.failures() == 1 ? " fails" : " fail") + ", where " + allowed +
                         " may, and nine of ten are done in " + durationText(*best.seconds[nineOfTen]);
    for (std::size_t n = 0; n < study.tallies.size(); ++n) {
        if (n == study.recommended) {
            continue;
        }
        const Tally& other = study.tallies[n];
        reason += "; " + heading.settings[n].name + ": " +
                  (other.failurePart() > heading.mostFailures ? ofAll(other) + " fail"
                                                              : durationText(*other.seconds[nineOfTen]));
    }
    return reason;
}

} // namespace

Quantiles quantilesOf(std::vector<std::optional<double>> values) {
    Quantiles quantiles;
    if (values.empty()) {
        return quantiles;
    }
    std::sort(values.begin(), values.end(), [](const auto& one, const auto& other) {
        return one.value_or(everything) < other.value_or(everything);
    });
    for (std::size_t n = 0; n < quantiles.size(); ++n) {
        quantiles[n] = values[(values.size() * quantileRanks[n] + 99) / 100 - 1];
    }
    return quantiles;
}

std::uint64_t Tally::failures() const {
    const auto held = ends.find(TrialEnd::held);
    return transmitters - (held == ends.end() ? 0 : held->second);
}

double Tally::failurePart() const {
    return transmitters == 0 ? 0.0 : static_cast<double>(failures()) / static_cast<double>(transmitters);
}

std::pair<double, double> Tally::failureRange() const {
    constexpr double z = 1.959964;
    const auto n = static_cast<double>(std::max<std::uint64_t>(transmitters, 1));
    const double p = failurePart();
    const double middle = (p + z * z / (2.0 * n)) / (1.0 + z * z / n);
    const double half = z * std::sqrt(p * (1.0 - p) / n + z * z / (4.0 * n * n)) / (1.0 + z * z / n);
    return {std::max(0.0, middle - half), std::min(1.0, middle + half)};
}

Study studyOf(const Results& results) {
    Study study;
    for (std::uint32_t n = 0; n < results.heading.settings.size(); ++n) {
        study.tallies.push_back(tallyOf(results, n));
    }
    const auto isGood = [&](const Tally& tally) {
        return tally.failurePart() <= results.heading.mostFailures;
    };
    study.isNoneGood = std::none_of(study.tallies.begin(), study.tallies.end(), isGood);
    const auto rankOf = [&](const Tally& tally) {
        return std::tuple(study.isNoneGood ? tally.failures()
                          : isGood(tally)  ? 0
                                           : 1,
                          tally.seconds[nineOfTen].value_or(everything),
                          tally.probes[nineOfTen].value_or(everything),
                          tally.worst[ninetyNine].value_or(everything));
    };
    for (std::size_t n = 1; n < study.tallies.size(); ++n) {
        if (rankOf(study.tallies[n]) < rankOf(study.tallies[study.recommended])) {
            study.recommended = n;
        }
    }
    study.reason = reasonFor(study, results.heading);
    return study;
}

std::string durationText(double seconds) {
    constexpr double minute = 60.0;
    constexpr double hour = 3600.0;
    if (seconds < minute) {
        return inDecimals(seconds, seconds < 10.0 ? 2 : 1) + " s";
    }
    const auto whole = static_cast<std::uint64_t>(std::llround(seconds));
    if (seconds < hour) {
        return std::to_string(whole / 60) + " min " + std::to_string(whole % 60) + " s";
    }
    return std::to_string(whole / 3600) + " h " + std::to_string(whole % 3600 / 60) + " min";
}

std::string percentText(double part) {
    return inTwoDecimals(part * 100.0) + " %";
}

} // namespace Radio::Laboratory
