#include "radio/fit/Bowl.h"
#include "radio/fit/Scale.h"
#include "radio/laboratory/Unit.h"
#include "radio/model/ModelNumbers.h"
#include "radio/text/Median.h"

#include <Eigen/Dense>
#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <utility>

namespace Radio::Laboratory {

namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;
using Complex = std::complex<double>;

/** A place with what is known of its leakage. */
struct Seen {
    /** Degrees from the reference temperature, and GHz from the reference carrier. */
    double degrees = 0.0;
    double gigahertz = 0.0;
    Complex leakage{};
    /** Its standard deviation. */
    double deviation = 0.0;
};

/** What the probes of all places say together. */
struct Bowls {
    Fit::Scale scale{};
    Fit::Curvature curvature{};
    std::vector<std::pair<Calibration::KnownProbes::key_type, Fit::Bowl>> places{};
    /** Root mean square of what probes miss their bowls by, as a fraction of the power. */
    double misfit = 0.0;
};

/** Fewer probes of a place say nothing of its bottom that could be doubted. */
constexpr std::size_t leastProbes = 4;

/** What the detector is taken to add by itself is within these, in dBc. */
constexpr double lowestFloor = -120.0;
constexpr double highestFloor = -40.0;

[[noreturn]] void refuse(const Measured& measured, const std::string& why) {
    throw InputError({measured.source, 0}, why);
}

/** At a place of a search the level changes by more than that, in dB, and a detector that works misses a bowl
 * by less than that part of the power. */
constexpr double leastChange = 3.0;
constexpr double largestMisfit = 0.5;

[[noreturn]] void refuseDetector(const Measured& measured) {
    refuse(measured, "what was read does not follow the corrections, expected a detector that does");
}

/** Those that the detector could show. */
std::vector<Fit::Reading> readingsOf(const Calibration::JournaledProbes& probes,
                                     const DetectorDescription& detector) {
    const Fit::Detector limits{{}, {}, detector.low, detector.high};
    std::vector<Fit::Reading> readings;
    for (const Calibration::JournaledProbe& known : probes) {
        const Calibration::Probe& probe = known.probe;
        if (probe.reading && Fit::isInside(limits, *probe.reading)) {
            readings.push_back({{probe.i, probe.q}, *probe.reading});
        }
    }
    return readings;
}

/** The highest by the lowest, in dB. */
double changeOf(const std::vector<Fit::PowerProbe>& probes) {
    const auto [low, high] =
        std::minmax_element(probes.begin(), probes.end(),
                            [](const auto& one, const auto& other) { return one.power < other.power; });
    return Fit::levelOf(high->power) - Fit::levelOf(low->power);
}

/** Units for each dB: as places tell whose probes differ by factors, else as it was found, else as it is
 * described. */
double slopeOf(const Measured& measured, const DetectorDescription& detector) {
    constexpr std::size_t enough = 9;
    constexpr double sure = 0.02;
    std::vector<double> slopes;
    for (const auto& [place, probes] : measured.probes) {
        const std::vector<Fit::Reading> readings = readingsOf(probes, detector);
        if (readings.size() < enough) {
            continue;
        }
        const std::optional<Fit::SlopeEstimate> estimate = Fit::estimateSlope(readings);
        if (estimate && estimate->deviation < sure) {
            slopes.push_back(estimate->slope);
        }
    }
    if (!slopes.empty()) {
        return median(std::move(slopes));
    }
    if (measured.qualification && measured.qualification->slope) {
        return *measured.qualification->slope;
    }
    return detector.slope;
}

Bowls bowlsOf(const Measured& measured, const DetectorDescription& detector) {
    Bowls bowls;
    bowls.scale = {slopeOf(measured, detector), detector.zero};
    if (!(std::abs(bowls.scale.slope) > 0.0)) {
        refuse(measured, "nobody knows how many units the detector has for each dB");
    }
    std::vector<std::vector<Fit::PowerProbe>> powers;
    std::vector<Calibration::KnownProbes::key_type> places;
    std::vector<double> changes;
    for (const auto& [place, probes] : measured.probes) {
        std::vector<Fit::PowerProbe> found;
        for (const Fit::Reading& reading : readingsOf(probes, detector)) {
            found.push_back({reading.at, bowls.scale.power(reading.reading)});
        }
        if (found.size() >= leastProbes) {
            changes.push_back(changeOf(found));
            powers.push_back(std::move(found));
            places.push_back(place);
        }
    }
    const std::optional<Fit::Curvature> curvature = Fit::fitCurvature(powers);
    if (!curvature || median(std::move(changes)) < leastChange) {
        refuseDetector(measured);
    }
    bowls.curvature = *curvature;
    double squares = 0.0;
    double freedom = 0.0;
    for (std::size_t n = 0; n < places.size(); ++n) {
        if (const std::optional<Fit::Bowl> bowl = Fit::fitBottom(powers[n], *curvature)) {
            bowls.places.emplace_back(places[n], *bowl);
            squares += bowl->misfit * bowl->misfit * std::max(1, bowl->freedom);
            freedom += std::max(1, bowl->freedom);
        }
    }
    if (bowls.places.empty()) {
        refuse(measured, "at no place are there probes that tell of the best corrections");
    }
    bowls.misfit = std::sqrt(squares / freedom);
    if (bowls.misfit > largestMisfit) {
        refuseDetector(measured);
    }
    return bowls;
}

double sameSign(double size, double sign) {
    return sign < 0.0 ? -size : size;
}

/** Paths as complex exponentials: what leaks is factor * exp(perDegree * degrees + perGHz * gigahertz). */
struct Wave {
    Complex factor{};
    Complex perDegree{};
    Complex perGHz{};

    Complex at(const Seen& place) const {
        return factor * std::exp(perDegree * place.degrees + perGHz * place.gigahertz);
    }
};

Complex sumAt(const std::vector<Wave>& waves, const Seen& place) {
    Complex sum = 0.0;
    for (const Wave& wave : waves) {
        sum += wave.at(place);
    }
    return sum;
}

// What a path does over temperature and carrier where nothing speaks against it: a level that changes by
// 0.1 dB for each degree and 3 dB for each GHz, a phase by 1 degree for each degree, and a delay of 1 ns.
const double neper = std::log(10.0) / 20.0;
const double levelPerDegree = 0.1 * neper;
const double levelPerGHz = 3.0 * neper;
const double phasePerDegree = radiansPerDegree;
const double phasePerGHz = 360.0 * radiansPerDegree;

constexpr Index unknowns = 6;
constexpr Index expectations = 4;

/** What waves miss the places by, in deviations, real and imaginary parts; then what they are beside what is
 * expected of them. */
VectorXd missesOf(const std::vector<Wave>& waves, const std::vector<Seen>& places) {
    const auto count = static_cast<Index>(places.size());
    VectorXd misses(2 * count + expectations * static_cast<Index>(waves.size()));
    for (Index n = 0; n < count; ++n) {
        const Seen& place = places[static_cast<std::size_t>(n)];
        const Complex miss = (sumAt(waves, place) - place.leakage) / place.deviation;
        misses(2 * n) = miss.real();
        misses(2 * n + 1) = miss.imag();
    }
    Index row = 2 * count;
    for (const Wave& wave : waves) {
        misses.segment(row, expectations) << wave.perDegree.real() / levelPerDegree,
            wave.perDegree.imag() / phasePerDegree, wave.perGHz.real() / levelPerGHz,
            wave.perGHz.imag() / phasePerGHz;
        row += expectations;
    }
    return misses;
}

MatrixXd slopesOf(const std::vector<Wave>& waves, const std::vector<Seen>& places) {
    const auto count = static_cast<Index>(places.size());
    const auto paths = static_cast<Index>(waves.size());
    MatrixXd slopes = MatrixXd::Zero(2 * count + expectations * paths, unknowns * paths);
    for (Index path = 0; path < paths; ++path) {
        const Wave& wave = waves[static_cast<std::size_t>(path)];
        const Index column = unknowns * path;
        for (Index n = 0; n < count; ++n) {
            const Seen& place = places[static_cast<std::size_t>(n)];
            const Complex whole = wave.at(place) / place.deviation;
            const std::array<Complex, 3> by{whole / wave.factor, whole * place.degrees,
                                            whole * place.gigahertz};
            for (std::size_t term = 0; term < by.size(); ++term) {
                const Index at = column + 2 * static_cast<Index>(term);
                slopes(2 * n, at) = by[term].real();
                slopes(2 * n + 1, at) = by[term].imag();
                slopes(2 * n, at + 1) = -by[term].imag();
                slopes(2 * n + 1, at + 1) = by[term].real();
            }
        }
        const Index row = 2 * count + expectations * path;
        slopes(row, column + 2) = 1.0 / levelPerDegree;
        slopes(row + 1, column + 3) = 1.0 / phasePerDegree;
        slopes(row + 2, column + 4) = 1.0 / levelPerGHz;
        slopes(row + 3, column + 5) = 1.0 / phasePerGHz;
    }
    return slopes;
}

std::vector<Wave> moved(std::vector<Wave> waves, const VectorXd& by) {
    Index at = 0;
    for (Wave& wave : waves) {
        wave.factor += Complex(by(at), by(at + 1));
        wave.perDegree += Complex(by(at + 2), by(at + 3));
        wave.perGHz += Complex(by(at + 4), by(at + 5));
        at += unknowns;
    }
    return waves;
}

/** Least squares by Levenberg and Marquardt; gives the sum of squares. */
double improve(std::vector<Wave>& waves, const std::vector<Seen>& places) {
    constexpr int mostRounds = 200;
    constexpr double nothing = 1e-9;
    VectorXd misses = missesOf(waves, places);
    double squares = misses.squaredNorm();
    double damping = 1e-3;
    for (int round = 0; round < mostRounds && damping < 1e12; ++round) {
        const MatrixXd slopes = slopesOf(waves, places);
        MatrixXd normal = slopes.transpose() * slopes;
        normal.diagonal() *= 1.0 + damping;
        const std::vector<Wave> tried =
            moved(waves, -normal.ldlt().solve(slopes.transpose() * misses).eval());
        const VectorXd left = missesOf(tried, places);
        const double found = left.squaredNorm();
        if (!(found < squares)) {
            damping *= 10.0;
            continue;
        }
        const bool isDone = squares - found < nothing * squares;
        waves = tried;
        misses = left;
        squares = found;
        damping = std::max(damping / 10.0, 1e-12);
        if (isDone) {
            break;
        }
    }
    return squares;
}

/** A wave for the strongest path that is left, of some delays and turns. */
Wave strongestOf(const std::vector<Wave>& waves, const std::vector<Seen>& places) {
    constexpr int delays = 30;
    constexpr int turns = 12;
    constexpr double step = 0.1;
    Wave best;
    for (int delay = -delays; delay <= delays; ++delay) {
        for (int turn = -turns; turn <= turns; ++turn) {
            Wave wave{1.0, {0.0, step * turn * phasePerDegree}, {0.0, -step * delay * phasePerGHz}};
            Complex sum = 0.0;
            for (const Seen& place : places) {
                sum += (place.leakage - sumAt(waves, place)) * std::conj(wave.at(place));
            }
            wave.factor = sum / static_cast<double>(places.size());
            if (std::norm(wave.factor) > std::norm(best.factor)) {
                best = wave;
            }
        }
    }
    return best;
}

/** As many paths as it takes, and no more than what was measured speaks for. */
std::vector<Wave> wavesOf(const std::vector<Seen>& places) {
    constexpr std::size_t mostPaths = 8;
    const double values = 2.0 * static_cast<double>(places.size());
    // By so much a path has to lower the sum of squares (Schwarz).
    const double worth = static_cast<double>(unknowns) * std::log(std::max(values, 2.0));
    std::vector<Wave> waves;
    double squares = 0.0;
    while (waves.size() < mostPaths) {
        std::vector<Wave> more = waves;
        more.push_back(strongestOf(waves, places));
        if (more.back().factor == 0.0) {
            break;
        }
        const double found = improve(more, places);
        if (!waves.empty() && squares - found < worth) {
            break;
        }
        waves = std::move(more);
        squares = found;
        if (static_cast<double>(unknowns * static_cast<Index>(waves.size() + 1)) > values) {
            break;
        }
    }
    return waves;
}

LeakagePath pathOf(const Wave& wave) {
    LeakagePath path;
    path.level = 20.0 * std::log10(std::abs(wave.factor));
    path.levelPerDegree = wave.perDegree.real() / neper;
    path.levelPerGHz = wave.perGHz.real() / neper;
    path.phase = std::arg(wave.factor) / radiansPerDegree;
    path.phasePerDegree = wave.perDegree.imag() / radiansPerDegree;
    path.delay = -wave.perGHz.imag() / phasePerGHz;
    return path;
}

} // namespace

Unit unitFrom(const Measured& measured, const LeakageDescription& board) {
    constexpr double kilohertzPerGigahertz = 1.0e6;
    Unit unit{measured.unit, measured.source, measured.date, 0, 0.0, board};
    if (measured.useHighDetector && !board.highDetector) {
        refuse(measured, "read the high detector, expected a board whose [[leakage]] has one");
    }
    DetectorDescription& detector =
        measured.useHighDetector ? *unit.leakage.highDetector : unit.leakage.detector;
    const Bowls bowls = bowlsOf(measured, detector);
    const Fit::Curvature& curvature = bowls.curvature;
    LeakageDescription& leakage = unit.leakage;
    leakage.i.gain = sameSign(std::sqrt(curvature.ii), board.i.gain);
    leakage.q.gain = sameSign(std::sqrt(curvature.qq), board.q.gain);
    leakage.skew = std::asin(std::clamp(-curvature.iq / (leakage.i.gain * leakage.q.gain), -1.0, 1.0)) /
                   radiansPerDegree;
    if (std::abs(leakage.skew) > largestSkew) {
        refuse(measured, "I and Q are more than 60 degrees off a right angle, as its readings tell");
    }
    const Complex effectQ = std::polar(1.0, (90.0 + leakage.skew) * radiansPerDegree) * leakage.q.gain;
    constexpr double leastDeviation = 1e-5;
    std::vector<Seen> places;
    std::vector<double> floors;
    for (const auto& [place, bowl] : bowls.places) {
        const auto& [temperature, carrier] = place;
        places.push_back({temperature - referenceTemperature,
                          (static_cast<double>(carrier) - board.reference) / kilohertzPerGigahertz,
                          -(leakage.i.gain * bowl.bottom.i + effectQ * bowl.bottom.q),
                          std::max(leastDeviation, curvature.amplitude() * bowl.spread * bowls.misfit)});
        floors.push_back(bowl.floor);
    }
    const std::vector<Wave> waves = wavesOf(places);
    if (waves.empty()) {
        refuse(measured, "leaks nothing");
    }
    leakage.paths.clear();
    std::transform(waves.begin(), waves.end(), std::back_inserter(leakage.paths), pathOf);
    double squares = 0.0;
    for (const Seen& place : places) {
        squares += std::norm(sumAt(waves, place) - place.leakage);
    }
    unit.places = places.size();
    unit.misfit = std::max(Fit::levelOf(squares / static_cast<double>(places.size())), -farthest);
    detector.slope = bowls.scale.slope;
    if (const double floor = median(std::move(floors)); floor > 0.0) {
        detector.floor = std::clamp(Fit::levelOf(floor), lowestFloor, highestFloor);
    }
    detector.noise =
        measured.qualification ? measured.qualification->noise : bowls.misfit / bowls.scale.relativeError();
    return unit;
}

} // namespace Radio::Laboratory
