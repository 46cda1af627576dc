#include "radio/tables/Misfits.h"

#include "radio/text/Median.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace Radio::Tables {

namespace {

/** Rounding and the steps of a converter make so much, and nobody cares. */
constexpr double leastDeviation = 5.0;
constexpr double outlierFactor = 8.0;
/**
 * A corner's guess rests on single values, of which each may be the wrong one. So it counts less than that of
 * the node beside it, and still more than what a wrong corner does to the nodes beside it, which is half.
 */
constexpr double cornerWeight = 0.75;
constexpr std::size_t mostOutliers = 20;

/** The values of a table, of which some are put right on the way. */
class Surface {
public:
    explicit Surface(const CalibrationTable& table)
        : m_axis1(table.axis1),
          m_axis2(table.axis2),
          m_values(table.values.begin(), table.values.end()) {}

    std::size_t nodes() const { return m_values.size(); }
    double value(std::size_t node) const { return m_values[node]; }
    void setValue(std::size_t node, double value) { m_values[node] = value; }

    /** The values beside a node, along both axes. */
    std::vector<double> neighbours(std::size_t node) const;
    /** What the neighbours make likely; nothing when they are too few. */
    std::optional<double> suggested(std::size_t node) const;
    bool isCorner(std::size_t node) const;
    /** Distances in value of all nodes beside each other. */
    std::vector<double> steps() const;

private:
    std::size_t index1(std::size_t node) const { return node / m_axis2.size(); }
    std::size_t index2(std::size_t node) const { return node % m_axis2.size(); }
    static bool isInner(const std::vector<std::int32_t>& axis, std::size_t index) {
        return index > 0 && index + 1 < axis.size();
    }
    /** On the line through both neighbours, `stride` values before and behind the node. */
    double between(const std::vector<std::int32_t>& axis, std::size_t index, std::size_t node,
                   std::size_t stride) const;
    double onPlane(std::size_t node) const;

    const std::vector<std::int32_t>& m_axis1;
    const std::vector<std::int32_t>& m_axis2;
    std::vector<double> m_values;
};

std::vector<double> Surface::neighbours(std::size_t node) const {
    const std::size_t width = m_axis2.size();
    std::vector<double> values;
    if (index1(node) > 0) {
        values.push_back(m_values[node - width]);
    }
    if (index1(node) + 1 < m_axis1.size()) {
        values.push_back(m_values[node + width]);
    }
    if (index2(node) > 0) {
        values.push_back(m_values[node - 1]);
    }
    if (index2(node) + 1 < width) {
        values.push_back(m_values[node + 1]);
    }
    return values;
}

std::optional<double> Surface::suggested(std::size_t node) const {
    const bool isInner1 = isInner(m_axis1, index1(node));
    const bool isInner2 = isInner(m_axis2, index2(node));
    const auto along1 = [&] { return between(m_axis1, index1(node), node, m_axis2.size()); };
    const auto along2 = [&] { return between(m_axis2, index2(node), node, 1); };
    if (isInner1 && isInner2) {
        return (along1() + along2()) / 2;
    }
    if (isInner1 || isInner2) {
        return isInner1 ? along1() : along2();
    }
    return isCorner(node) ? std::optional(onPlane(node)) : std::nullopt;
}

bool Surface::isCorner(std::size_t node) const {
    return m_axis1.size() > 1 && m_axis2.size() > 1 && !isInner(m_axis1, index1(node)) &&
           !isInner(m_axis2, index2(node));
}

std::vector<double> Surface::steps() const {
    const std::size_t width = m_axis2.size();
    std::vector<double> steps;
    for (std::size_t node = 0; node < nodes(); ++node) {
        if (index2(node) + 1 < width) {
            steps.push_back(std::abs(m_values[node + 1] - m_values[node]));
        }
        if (index1(node) + 1 < m_axis1.size()) {
            steps.push_back(std::abs(m_values[node + width] - m_values[node]));
        }
    }
    return steps;
}

double Surface::between(const std::vector<std::int32_t>& axis, std::size_t index, std::size_t node,
                        std::size_t stride) const {
    const double width = static_cast<double>(axis[index + 1]) - axis[index - 1];
    const double weight = (static_cast<double>(axis[index]) - axis[index - 1]) / width;
    return m_values[node - stride] * (1 - weight) + m_values[node + stride] * weight;
}

double Surface::onPlane(std::size_t node) const {
    const std::size_t width = m_axis2.size();
    const std::size_t beside1 = index1(node) == 0 ? node + width : node - width;
    const bool isFirst = index2(node) == 0;
    const std::size_t beside2 = isFirst ? node + 1 : node - 1;
    const std::size_t diagonal = isFirst ? beside1 + 1 : beside1 - 1;
    return m_values[beside1] + m_values[beside2] - m_values[diagonal];
}

/** Looks for nodes that do not fit, and puts each right before it looks for the next. */
class Search {
public:
    explicit Search(const CalibrationTable& table) : m_table(table), m_surface(table) {}

    Misfits run() {
        takeSignFlips();
        takeOutliers();
        return std::move(m_result);
    }

private:
    void takeSignFlips();
    void takeOutliers();
    bool isSignFlip(std::size_t node, double suggested, double usualStep) const;
    /** By how much a node is off, for comparison with others. */
    double deviation(std::size_t node) const;
    void take(std::size_t node, bool isSignFlip);

    const CalibrationTable& m_table;
    Surface m_surface;
    Misfits m_result;
};

bool Search::isSignFlip(std::size_t node, double suggested, double usualStep) const {
    const double value = m_surface.value(node);
    const auto isOpposite = [value](double other) { return value < 0 ? other > 0 : other < 0; };
    const std::vector<double> neighbours = m_surface.neighbours(node);
    return std::abs(value) > usualStep && isOpposite(suggested) &&
           std::all_of(neighbours.begin(), neighbours.end(), isOpposite);
}

void Search::takeSignFlips() {
    const double usualStep = std::max(leastDeviation, median(m_surface.steps()));
    std::vector<std::size_t> flipped;
    for (std::size_t node = 0; node < m_surface.nodes(); ++node) {
        const std::optional<double> suggested = m_surface.suggested(node);
        if (suggested && isSignFlip(node, *suggested, usualStep)) {
            flipped.push_back(node);
        }
    }
    for (const std::size_t node : flipped) {
        take(node, true);
    }
}

double Search::deviation(std::size_t node) const {
    const double off =
        std::abs(m_surface.value(node) - m_surface.suggested(node).value_or(m_surface.value(node)));
    return m_surface.isCorner(node) ? off * cornerWeight : off;
}

void Search::takeOutliers() {
    std::vector<double> deviations;
    for (std::size_t node = 0; node < m_surface.nodes(); ++node) {
        if (m_surface.suggested(node)) {
            deviations.push_back(deviation(node));
        }
    }
    m_result.usualDeviation = median(deviations);
    const double most = std::max(leastDeviation, outlierFactor * m_result.usualDeviation);
    for (std::size_t taken = 0;; ++taken) {
        std::size_t worst = 0;
        double worstDeviation = 0.0;
        for (std::size_t node = 0; node < m_surface.nodes(); ++node) {
            const double candidate = deviation(node);
            if (candidate > worstDeviation) {
                worst = node;
                worstDeviation = candidate;
            }
        }
        if (worstDeviation <= most) {
            return;
        }
        if (taken == mostOutliers) {
            m_result.isCut = true;
            return;
        }
        take(worst, false);
    }
}

void Search::take(std::size_t node, bool isSignFlip) {
    const double suggested = *m_surface.suggested(node);
    const auto known = std::find_if(m_result.nodes.begin(), m_result.nodes.end(),
                                    [node](const Misfit& misfit) { return misfit.node == node; });
    if (known == m_result.nodes.end()) {
        m_result.nodes.push_back({node, m_table.values[node], suggested, isSignFlip});
    } else {
        // What was suggested before came from a neighbour that was wrong itself.
        known->suggested = suggested;
    }
    m_surface.setValue(node, suggested);
}

} // namespace

Misfits findMisfits(const CalibrationTable& table) {
    return Search(table).run();
}

} // namespace Radio::Tables
