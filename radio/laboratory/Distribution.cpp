#include "radio/laboratory/Distribution.h"

#include <algorithm>

namespace Radio::Laboratory {

namespace {

/** Farther off its mean is nothing that Draws::normal() gives, in standard deviations. */
constexpr double farthestDraw = 6.0;

/** At least half of what is drawn lies on the side of the mean that is inside: so many draws all miss it
 * once in 10^30. */
constexpr int mostDraws = 100;

} // namespace

Distribution Distribution::fixed(double value) {
    return {Kind::oneOf, {value}, value, value};
}

Distribution Distribution::uniform(double low, double high) {
    return {Kind::uniform, {low, high}, low, high};
}

Distribution Distribution::normal(double mean, double deviation,
                                  std::optional<std::pair<double, double>> within) {
    double lowest = mean - farthestDraw * deviation;
    double highest = mean + farthestDraw * deviation;
    if (within) {
        lowest = std::max(lowest, within->first);
        highest = std::min(highest, within->second);
    }
    return {Kind::normal, {mean, deviation}, lowest, highest};
}

Distribution Distribution::oneOf(std::vector<double> values) {
    const auto [least, most] = std::minmax_element(values.begin(), values.end());
    const double lowest = *least;
    const double highest = *most;
    return {Kind::oneOf, std::move(values), lowest, highest};
}

Distribution Distribution::quantiles(std::vector<double> values) {
    const double lowest = values.front();
    const double highest = values.back();
    return {Kind::quantiles, std::move(values), lowest, highest};
}

double Distribution::draw(Draws draws) const {
    switch (m_kind) {
    case Kind::uniform:
        return m_numbers[0] + (m_numbers[1] - m_numbers[0]) * draws.uniform();
    case Kind::normal: {
        double drawn = m_numbers[0];
        for (int n = 0; n < mostDraws; ++n) {
            drawn = m_numbers[0] + m_numbers[1] * draws.normal();
            if (drawn >= m_lowest && drawn <= m_highest) {
                break;
            }
        }
        return std::clamp(drawn, m_lowest, m_highest);
    }
    case Kind::oneOf:
        return m_numbers[static_cast<std::size_t>(draws.uniform() * static_cast<double>(m_numbers.size()))];
    case Kind::quantiles:
        break;
    }
    const double place = draws.uniform() * static_cast<double>(m_numbers.size() - 1);
    const auto before = static_cast<std::size_t>(place);
    return m_numbers[before] +
           (m_numbers[before + 1] - m_numbers[before]) * (place - static_cast<double>(before));
}

} // namespace Radio::Laboratory
