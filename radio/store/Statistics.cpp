#include "radio/store/Statistics.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace Radio::Store {

void Moments::add(double value) {
    m_least = m_count == 0 ? value : std::min(m_least, value);
    m_most = m_count == 0 ? value : std::max(m_most, value);
    ++m_count;
    const double distance = value - m_mean;
    m_mean += distance / static_cast<double>(m_count);
    m_squares += distance * (value - m_mean);
}

std::optional<double> Moments::deviation() const {
    return m_count < 2 ? std::nullopt
                       : std::optional<double>(std::sqrt(m_squares / static_cast<double>(m_count - 1)));
}

namespace {

/** Values are told apart as finely as this, and lie within as much as that. */
constexpr int finest = -30;
constexpr double largest = 1e15;

std::int64_t binOf(double value, int exponent) {
    return static_cast<std::int64_t>(std::floor(std::ldexp(value, -exponent)));
}

std::int64_t half(std::int64_t number) {
    return number >= 0 ? number / 2 : -((1 - number) / 2);
}

} // namespace

void Histogram::widen() {
    const std::int64_t first = half(m_first);
    std::array<std::uint64_t, bins> counts{};
    for (std::size_t n = 0; n < bins; ++n) {
        counts[static_cast<std::size_t>(half(m_first + static_cast<std::int64_t>(n)) - first)] += m_counts[n];
    }
    m_counts = counts;
    m_first = first;
    ++m_exponent;
}

void Histogram::add(double value) {
    value = std::clamp(value, -largest, largest);
    if (m_total == 0) {
        // As fine as a number of this size is told apart.
        m_exponent = std::max(finest, value == 0.0 ? finest : std::ilogb(value) - 40);
        m_first = binOf(value, m_exponent);
    }
    // Numbers of bins have 64 bits.
    while (value != 0.0 && m_exponent < std::ilogb(value) - 50) {
        widen();
    }
    constexpr auto count = static_cast<std::int64_t>(bins);
    for (;;) {
        const std::int64_t bin = binOf(value, m_exponent);
        if (bin >= m_first && bin < m_first + count) {
            ++m_counts[static_cast<std::size_t>(bin - m_first)];
            ++m_total;
            return;
        }
        // Empty bins at the ends make room; otherwise all become wider.
        std::int64_t low = 0;
        while (m_counts[static_cast<std::size_t>(low)] == 0) {
            ++low;
        }
        std::int64_t high = count - 1;
        while (m_counts[static_cast<std::size_t>(high)] == 0) {
            --high;
        }
        const std::int64_t first = std::min(bin, m_first + low);
        if (std::max(bin, m_first + high) - first < count) {
            std::array<std::uint64_t, bins> counts{};
            for (std::int64_t n = low; n <= high; ++n) {
                counts[static_cast<std::size_t>(m_first + n - first)] = m_counts[static_cast<std::size_t>(n)];
            }
            m_counts = counts;
            m_first = first;
        } else {
            widen();
        }
    }
}

double Histogram::width() const {
    return std::ldexp(1.0, m_exponent);
}

double Histogram::begin() const {
    std::size_t low = 0;
    while (low + 1 < bins && m_counts[low] == 0) {
        ++low;
    }
    return std::ldexp(static_cast<double>(m_first + static_cast<std::int64_t>(low)), m_exponent);
}

std::vector<std::uint64_t> Histogram::counts() const {
    const auto isThere = [](std::uint64_t count) { return count != 0; };
    const auto first = std::find_if(m_counts.begin(), m_counts.end(), isThere);
    const auto last = std::find_if(m_counts.rbegin(), m_counts.rend(), isThere).base();
    return first < last ? std::vector<std::uint64_t>(first, last) : std::vector<std::uint64_t>();
}

std::optional<double> Histogram::quantile(double part) const {
    if (m_total == 0) {
        return std::nullopt;
    }
    const double wanted = part * static_cast<double>(m_total);
    double below = 0.0;
    double edge = begin();
    for (const std::uint64_t count : counts()) {
        const auto inside = static_cast<double>(count);
        if (below + inside >= wanted && count != 0) {
            return edge + width() * std::clamp((wanted - below) / inside, 0.0, 1.0);
        }
        below += inside;
        edge += width();
    }
    return edge;
}

std::optional<double> Yield::part() const {
    const std::uint64_t judged = passed + failed;
    return judged == 0 ? std::nullopt
                       : std::optional<double>(static_cast<double>(passed) / static_cast<double>(judged));
}

/** What is known of one thing that is measured while runs come. */
struct Statistics::Accumulator {
    MeasurandReport report;
    std::map<std::string, Moments> stations;
    /** The least first, and the greatest first. */
    std::vector<Extreme> least;
    std::vector<Extreme> greatest;

    template <typename Before>
    static void keep(std::vector<Extreme>& some, double value, const Run& run, Before before) {
        if (some.size() == mostExtremes && !before(value, some.back().value)) {
            return;
        }
        const auto place = std::find_if(some.begin(), some.end(),
                                        [&](const Extreme& other) { return before(value, other.value); });
        some.insert(place, {value, run.serial, run.id});
        if (some.size() > mostExtremes) {
            some.pop_back();
        }
    }
    void add(double value, const Run& run) {
        report.values.add(value);
        report.histogram.add(value);
        stations[run.station].add(value);
        keep(least, value, run, std::less<>());
        keep(greatest, value, run, std::greater<>());
    }
    MeasurandReport conclude() const;
};

namespace {

void countIn(Yield& yield, VerdictKind verdict) {
    ++yield.runs;
    yield.passed += verdict == VerdictKind::pass ? 1U : 0U;
    yield.failed += verdict == VerdictKind::fail ? 1U : 0U;
}

std::optional<double> cpkOf(const Measurand& measurand, const Moments& values) {
    const std::optional<double> deviation = values.deviation();
    if (!deviation || *deviation <= 0.0 || (!measurand.lowest && !measurand.highest)) {
        return std::nullopt;
    }
    std::optional<double> least;
    if (measurand.highest) {
        least = *measurand.highest - values.mean();
    }
    if (measurand.lowest) {
        const double room = values.mean() - *measurand.lowest;
        least = least ? std::min(*least, room) : room;
    }
    return *least / (3.0 * *deviation);
}

/** Both of the same, and where the one is without the other. */
bool isSame(const Measurand& measurand, const Measurement& measurement) {
    return measurand.name == measurement.name && measurand.channel == measurement.channel &&
           measurand.frequency == measurement.frequency && measurand.temperature == measurement.temperature &&
           measurand.lowest == measurement.lowest && measurand.highest == measurement.highest &&
           measurand.unit == measurement.unit;
}

template <typename Value>
std::string part(const std::optional<Value>& value) {
    return (value ? std::to_string(*value) : "-") + "|";
}

std::string keyOf(const Run& run, const Measurement& one) {
    return run.kind + "|" + run.board + "|" + one.name + "|" + one.unit + "|" + part(one.channel) +
           part(one.frequency) + part(one.temperature) + part(one.lowest) + part(one.highest);
}

/** A station against all others together, whose moments are those of all without it. */
std::optional<StationDifference> differenceOf(const std::string& station, const Moments& of,
                                              const std::map<std::string, Moments>& all) {
    double count = 0.0;
    double sum = 0.0;
    for (const auto& [name, moments] : all) {
        if (name != station) {
            count += static_cast<double>(moments.count());
            sum += static_cast<double>(moments.count()) * moments.mean();
        }
    }
    if (count < 2.0 || of.count() < 2) {
        return std::nullopt;
    }
    const double mean = sum / count;
    double squares = 0.0;
    for (const auto& [name, moments] : all) {
        if (name != station) {
            const auto here = static_cast<double>(moments.count());
            const double deviation = moments.deviation().value_or(0.0);
            squares += deviation * deviation * (here - 1.0) +
                       here * (moments.mean() - mean) * (moments.mean() - mean);
        }
    }
    const double varianceOfOthers = squares / (count - 1.0);
    const double deviation = of.deviation().value_or(0.0);
    const double error =
        std::sqrt(deviation * deviation / static_cast<double>(of.count()) + varianceOfOthers / count);
    const double distance = of.mean() - mean;
    if (error <= 0.0 || std::abs(distance) < differentDeviations * std::sqrt(varianceOfOthers) ||
        std::abs(distance) < differentErrors * error) {
        return std::nullopt;
    }
    return StationDifference{station, of.count(), of.mean(), mean, distance / error};
}

} // namespace

MeasurandReport Statistics::Accumulator::conclude() const {
    MeasurandReport result = report;
    result.cpk = cpkOf(result.measurand, result.values);
    // One that is far off makes the others differ from all with it: the farthest is taken out first.
    std::map<std::string, Moments> left = stations;
    for (bool goesOn = true; goesOn;) {
        std::optional<StationDifference> farthest;
        for (const auto& [station, moments] : left) {
            const auto difference = differenceOf(station, moments, left);
            if (difference && (!farthest || std::abs(difference->errors) > std::abs(farthest->errors))) {
                farthest = difference;
            }
        }
        goesOn = farthest.has_value();
        if (farthest) {
            left.erase(farthest->station);
            result.stations.push_back(*farthest);
        }
    }
    const std::optional<double> low = result.histogram.quantile(0.25);
    const std::optional<double> high = result.histogram.quantile(0.75);
    if (low && high) {
        // A bin is as near as quartiles are known.
        const double beyond = outlierRanges * std::max(*high - *low, result.histogram.width());
        for (const Extreme& one : least) {
            if (one.value < *low - beyond) {
                result.outliers.push_back(one);
            }
        }
        for (const Extreme& one : greatest) {
            if (one.value > *high + beyond) {
                result.outliers.push_back(one);
            }
        }
    }
    return result;
}

Statistics::Statistics() = default;
Statistics::~Statistics() = default;

std::size_t Statistics::indexOf(const Run& run, std::size_t place) {
    std::vector<std::size_t>& places = m_places[{run.kind, run.board}];
    const Measurement& one = run.measurements[place];
    if (place < places.size() && isSame(m_accumulators[places[place]].report.measurand, one)) {
        return places[place];
    }
    const auto [found, isNew] = m_indexes.emplace(keyOf(run, one), m_accumulators.size());
    if (isNew) {
        if (m_accumulators.size() == mostMeasurands) {
            throw std::length_error("there are more than " + std::to_string(mostMeasurands) +
                                    " different measurements");
        }
        Accumulator accumulator;
        accumulator.report.measurand = {run.kind,      run.board,       one.name,   one.unit,   one.channel,
                                        one.frequency, one.temperature, one.lowest, one.highest};
        m_accumulators.push_back(accumulator);
    }
    if (place == places.size()) {
        places.push_back(found->second);
    } else if (place < places.size()) {
        places[place] = found->second;
    }
    return found->second;
}

void Statistics::add(const Run& run) {
    if (m_report.runs == 0 || run.serial != m_serial) {
        m_serial = run.serial;
        m_before.clear();
        ++m_report.units;
    }
    ++m_report.runs;
    countIn(m_report.all, run.verdict);
    constexpr std::size_t day = 10;
    countIn(m_report.yields[{run.begun.substr(0, day), run.station}], run.verdict);
    for (std::size_t place = 0; place < run.measurements.size(); ++place) {
        const Measurement& one = run.measurements[place];
        const std::size_t index = indexOf(run, place);
        Accumulator& accumulator = m_accumulators[index];
        accumulator.report.judged += one.isHeld ? 1U : 0U;
        accumulator.report.missed += one.isHeld == std::optional<bool>(false) ? 1U : 0U;
        if (!one.value || !std::isfinite(*one.value)) {
            continue;
        }
        accumulator.add(*one.value, run);
        const auto [before, isFirst] = m_before.emplace(index, std::pair(m_report.runs, *one.value));
        if (!isFirst && before->second.first != m_report.runs) {
            const double change = *one.value - before->second.second;
            MeasurandReport& report = accumulator.report;
            report.drift.add(change);
            if (!report.largestDrift || std::abs(change) > std::abs(report.largestDrift->value)) {
                report.largestDrift = Extreme{change, run.serial, run.id};
            }
            before->second = {m_report.runs, *one.value};
        }
    }
}

StatisticsReport Statistics::report() const {
    StatisticsReport report = m_report;
    for (const Accumulator& accumulator : m_accumulators) {
        report.measurands.push_back(accumulator.conclude());
    }
    return report;
}

} // namespace Radio::Store
