#include "radio/fit/Surface.h"

#include <Eigen/Dense>
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Radio::Fit {

namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

constexpr int carrierDegree = 12;
constexpr int temperatureDegree = 5;

struct Degrees {
    int carrier;
    int temperature;
};

/** The degrees of the terms: high ones of both do not come together. */
const std::vector<Degrees>& degrees() {
    static const std::vector<Degrees> all = [] {
        std::vector<Degrees> terms;
        for (int a = 0; a <= carrierDegree; ++a) {
            for (int b = 0; b <= temperatureDegree; ++b) {
                if (a * (temperatureDegree + 1) + b * (carrierDegree + 1) <=
                    (carrierDegree + 1) * (temperatureDegree + 1)) {
                    terms.push_back({a, b});
                }
            }
        }
        return terms;
    }();
    return all;
}

/** From -1 to 1 over a range; 0 where there is none. */
double within(double value, double low, double high) {
    return high > low ? (2.0 * value - low - high) / (high - low) : 0.0;
}

template <int Degree>
std::array<double, Degree + 1> chebyshev(double x) {
    std::array<double, Degree + 1> values{1.0, x};
    for (std::size_t n = 2; n < values.size(); ++n) {
        values[n] = 2.0 * x * values[n - 1] - values[n - 2];
    }
    return values;
}

/** What each coefficient is expected to be at most. */
VectorXd expected(const Decay& decay, double range) {
    VectorXd sizes(static_cast<Index>(degrees().size()));
    Index row = 0;
    for (const Degrees& term : degrees()) {
        sizes(row++) =
            range * std::pow(decay.carrier, term.carrier) * std::pow(decay.temperature, term.temperature);
    }
    return sizes;
}

Eigen::Map<const VectorXd> mapOf(const std::vector<double>& values) {
    return {values.data(), static_cast<Index>(values.size())};
}

std::vector<double> listOf(const VectorXd& values) {
    return {values.data(), values.data() + values.size()};
}

} // namespace

Surface::Surface(const Order& order, double range)
    : m_order(order),
      m_range(range),
      m_i(degrees().size(), 0.0),
      m_q(degrees().size(), 0.0) {
    const VectorXd sizes = expected(m_decay, m_range);
    const MatrixXd covariance = sizes.cwiseAbs2().asDiagonal();
    m_covariance = {covariance.data(), covariance.data() + covariance.size()};
}

std::vector<double> Surface::termsAt(const Place& place) const {
    const auto carrier =
        chebyshev<carrierDegree>(within(place.carrier, m_order.lowCarrier, m_order.highCarrier));
    const auto temperature = chebyshev<temperatureDegree>(
        within(place.temperature, m_order.lowTemperature, m_order.highTemperature));
    std::vector<double> terms;
    terms.reserve(degrees().size());
    for (const Degrees& term : degrees()) {
        terms.push_back(carrier[static_cast<std::size_t>(term.carrier)] *
                        temperature[static_cast<std::size_t>(term.temperature)]);
    }
    return terms;
}

Forecast Surface::at(const Place& place) const {
    const std::vector<double> terms = termsAt(place);
    const auto row = mapOf(terms);
    const Index size = row.size();
    const Eigen::Map<const MatrixXd> covariance(m_covariance.data(), size, size);
    const double variance = row.dot(covariance * row);
    return {{row.dot(mapOf(m_i)), row.dot(mapOf(m_q))}, m_excess * std::sqrt(std::max(variance, 0.0))};
}

std::vector<Pair> Surface::bottomsAt(std::int32_t temperature,
                                     const std::vector<std::uint32_t>& carriers) const {
    const auto ofTemperature =
        chebyshev<temperatureDegree>(within(temperature, m_order.lowTemperature, m_order.highTemperature));
    std::array<Pair, carrierDegree + 1> coefficients{};
    for (std::size_t n = 0; n < degrees().size(); ++n) {
        const double value = ofTemperature[static_cast<std::size_t>(degrees()[n].temperature)];
        Pair& coefficient = coefficients[static_cast<std::size_t>(degrees()[n].carrier)];
        coefficient.i += value * m_i[n];
        coefficient.q += value * m_q[n];
    }
    std::vector<Pair> bottoms(carriers.size());
    for (std::size_t n = 0; n < carriers.size(); ++n) {
        const auto ofCarrier =
            chebyshev<carrierDegree>(within(carriers[n], m_order.lowCarrier, m_order.highCarrier));
        for (std::size_t degree = 0; degree < coefficients.size(); ++degree) {
            bottoms[n].i += ofCarrier[degree] * coefficients[degree].i;
            bottoms[n].q += ofCarrier[degree] * coefficients[degree].q;
        }
    }
    return bottoms;
}

void Surface::fit(const std::vector<Sample>& samples, bool isDecayChosen) {
    if (isDecayChosen) {
        choose(samples);
    }
    solve(samples, m_decay);
}

void Surface::choose(const std::vector<Sample>& samples) {
    constexpr double least = 0.08;
    constexpr double most = 0.9;
    double best = solve(samples, m_decay);
    for (const double step : {1.6, 1.25}) {
        for (bool isBetter = true; isBetter;) {
            isBetter = false;
            for (const auto& [carrier, temperature] :
                 {std::pair{step, 1.0}, {1.0 / step, 1.0}, {1.0, step}, {1.0, 1.0 / step}}) {
                const Decay tried{std::clamp(m_decay.carrier * carrier, least, most),
                                  std::clamp(m_decay.temperature * temperature, least, most)};
                const double badness = solve(samples, tried);
                if (badness < best - 1e-3) {
                    best = badness;
                    m_decay = tried;
                    isBetter = true;
                }
            }
        }
    }
}

double Surface::solve(const std::vector<Sample>& samples, const Decay& decay) {
    const auto count = static_cast<Index>(samples.size());
    const VectorXd sizes = expected(decay, m_range);
    MatrixXd terms(count, sizes.size());
    MatrixXd wanted(count, 2);
    for (Index row = 0; row < count; ++row) {
        const Sample& sample = samples[static_cast<std::size_t>(row)];
        const std::vector<double> values = termsAt(sample.place);
        terms.row(row) = mapOf(values).cwiseProduct(sizes).transpose() / sample.deviation;
        wanted.row(row) << sample.bottom.i / sample.deviation, sample.bottom.q / sample.deviation;
    }
    MatrixXd normal = terms.transpose() * terms;
    normal.diagonal().array() += 1.0;
    const MatrixXd inverse = normal.llt().solve(MatrixXd::Identity(sizes.size(), sizes.size()));
    const MatrixXd coefficients = inverse * (terms.transpose() * wanted);
    const MatrixXd misses = wanted - terms * coefficients;
    const MatrixXd leverage = terms * inverse;
    double badness = 0.0;
    double square = 0.0;
    double worst = 0.0;
    for (Index row = 0; row < count; ++row) {
        // A sample foretold from all others misses by miss / rest, of which the variance is 1 / rest.
        const double rest = std::max(1.0 - leverage.row(row).dot(terms.row(row)), 1e-9);
        const double miss = misses.row(row).squaredNorm() / rest;
        square += miss / 2.0;
        worst = std::max(worst, miss / 2.0);
        badness += miss - 2.0 * std::log(rest);
    }
    // One sample that is missed by far tells of a surface that is not smooth there.
    constexpr double usualWorst = 2.2;
    const double mean = square / static_cast<double>(std::max<Index>(count, 1));
    m_excess = std::sqrt(std::max({1.0, mean, worst / (usualWorst * usualWorst)}));
    m_i = listOf(sizes.cwiseProduct(coefficients.col(0)));
    m_q = listOf(sizes.cwiseProduct(coefficients.col(1)));
    const MatrixXd covariance = sizes.asDiagonal() * inverse * sizes.asDiagonal();
    m_covariance = {covariance.data(), covariance.data() + covariance.size()};
    return badness;
}

} // namespace Radio::Fit
