#include "radio/model/LeakageModel.h"

#include "radio/model/ModelNumbers.h"

#include <algorithm>
#include <cmath>

namespace Radio {

namespace {

constexpr double kilohertzPerGigahertz = 1.0e6;

/** The value nearest to `wanted` that a converter from `low` to `high` has; of two, the higher. */
std::int32_t converterValue(double wanted, std::int32_t low, std::int32_t high, std::int32_t step) {
    const double last = std::floor((static_cast<double>(high) - low) / step);
    const double steps = std::floor((wanted - low) / step + 0.5);
    return static_cast<std::int32_t>(low + std::clamp(steps, 0.0, last) * step);
}

std::int32_t dacValue(const CorrectionBranch& branch, double wanted) {
    return converterValue(wanted, branch.low, branch.high, branch.step);
}

std::complex<double> leakageOf(const LeakagePath& path, double degrees, double gigahertz) {
    const double level = path.level + path.levelPerDegree * degrees + path.levelPerGHz * gigahertz;
    const double phase = path.phase + path.phasePerDegree * degrees - 360.0 * path.delay * gigahertz;
    return std::polar(std::pow(10.0, std::min(level, farthest) / 20.0), phase * radiansPerDegree);
}

/** What leaks without any correction. */
std::complex<double> leakageOf(const LeakageDescription& leakage, const Surroundings& surroundings) {
    const double degrees = surroundings.temperature - referenceTemperature;
    const double gigahertz =
        (static_cast<double>(surroundings.carrier) - leakage.reference) / kilohertzPerGigahertz;
    std::complex<double> sum = 0.0;
    for (const LeakagePath& path : leakage.paths) {
        sum += leakageOf(path, degrees, gigahertz);
    }
    return sum;
}

/** What one unit of I and one of Q add. */
std::complex<double> effectOfI(const LeakageDescription& leakage) {
    return leakage.i.gain;
}
std::complex<double> effectOfQ(const LeakageDescription& leakage) {
    return leakage.q.gain * std::polar(1.0, (90.0 + leakage.skew) * radiansPerDegree);
}

/** How much of a branch with `effect` leaves the least of `rest`. */
double bestAmount(const std::complex<double>& rest, const std::complex<double>& effect) {
    return -(rest * std::conj(effect)).real() / std::norm(effect);
}

} // namespace

std::complex<double> residualOf(const LeakageDescription& leakage, const Surroundings& surroundings,
                                const LoCorrections& corrections) {
    return leakageOf(leakage, surroundings) +
           effectOfI(leakage) * static_cast<double>(dacValue(leakage.i, corrections.i)) +
           effectOfQ(leakage) * static_cast<double>(dacValue(leakage.q, corrections.q));
}

double leakageLevel(const std::complex<double>& residual) {
    return std::clamp(10.0 * std::log10(std::norm(residual)), -farthest, farthest);
}

double leakageLevel(const LeakageDescription& leakage, const Surroundings& surroundings,
                    const LoCorrections& corrections) {
    return leakageLevel(residualOf(leakage, surroundings, corrections));
}

LoCorrections idealLoCorrections(const LeakageDescription& leakage, const Surroundings& surroundings) {
    const std::complex<double> rest = leakageOf(leakage, surroundings);
    const std::complex<double> effectI = effectOfI(leakage);
    const std::complex<double> effectQ = effectOfQ(leakage);
    // Both together cancel everything; I has no imaginary part.
    const double wholeQ = -rest.imag() / effectQ.imag();
    const double wholeI = bestAmount(rest + effectQ * wholeQ, effectI);

    // A converter offers only some values: one branch is rounded, or cut off, and the other one does the best
    // about what is left.
    LoCorrections best{dacValue(leakage.i, wholeI), dacValue(leakage.q, wholeQ)};
    double least = std::norm(residualOf(leakage, surroundings, best));
    const auto consider = [&](const LoCorrections& candidate) {
        const double left = std::norm(residualOf(leakage, surroundings, candidate));
        if (left < least) {
            best = candidate;
            least = left;
        }
    };
    for (const double steps : {-1.0, 0.0, 1.0}) {
        const std::int32_t i = dacValue(leakage.i, wholeI + steps * leakage.i.step);
        const std::int32_t q = dacValue(leakage.q, wholeQ + steps * leakage.q.step);
        consider({i, dacValue(leakage.q, bestAmount(rest + effectI * static_cast<double>(i), effectQ))});
        consider({dacValue(leakage.i, bestAmount(rest + effectQ * static_cast<double>(q), effectI)), q});
    }
    return best;
}

double detectorOutput(const DetectorDescription& detector, double level) {
    // The sum of both powers, by way of their ratio: no power of ten can then grow beyond all bounds.
    const double stronger = std::max(level, detector.floor);
    const double distance = std::abs(level - detector.floor);
    const double together = stronger + 10.0 * std::log10(1.0 + std::pow(10.0, -distance / 10.0));
    return detector.slope * (together - detector.zero);
}

std::int32_t detectorReading(const DetectorDescription& detector, double output) {
    return converterValue(output, detector.low, detector.high, detector.step);
}

} // namespace Radio
