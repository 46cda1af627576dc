#ifndef RADIO_LABORATORY_DISTRIBUTION_H
#define RADIO_LABORATORY_DISTRIBUTION_H

#include "radio/laboratory/Draws.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace Radio::Laboratory {

/** How one quantity is spread over the transmitters of a population. */
class Distribution {
public:
    /** The same for all. */
    static Distribution fixed(double value);
    /** Anything from `low` to `high` alike; `low` is not above `high`. */
    static Distribution uniform(double low, double high);
    /** By mean and standard deviation, which is not negative; with `within`, in which the mean lies, what
     * falls outside is drawn again. */
    static Distribution normal(double mean, double deviation,
                               std::optional<std::pair<double, double>> within = std::nullopt);
    /** Each of them alike; there are some. */
    static Distribution oneOf(std::vector<double> values);
    /** Quantiles at equal distances from the least to the greatest value, at least two, none below the one
     * before it; straight lines between them. */
    static Distribution quantiles(std::vector<double> values);

    double draw(Draws draws) const;
    /** What is drawn lies between these. */
    double lowest() const { return m_lowest; }
    double highest() const { return m_highest; }

private:
    enum class Kind : std::uint8_t { uniform, normal, oneOf, quantiles };
    Distribution(Kind kind, std::vector<double> numbers, double lowest, double highest)
        : m_kind(kind),
          m_numbers(std::move(numbers)),
          m_lowest(lowest),
          m_highest(highest) {}

    Kind m_kind;
    std::vector<double> m_numbers;
    double m_lowest;
    double m_highest;
};

} // namespace Radio::Laboratory

#endif
