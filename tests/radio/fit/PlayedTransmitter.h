#ifndef TESTS_RADIO_FIT_PLAYEDTRANSMITTER_H
#define TESTS_RADIO_FIT_PLAYEDTRANSMITTER_H

#include "radio/fit/Fit.h"
#include "radio/fit/TableMaker.h"
#include "radio/model/LeakageModel.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Radio::Fit {

/** What a transmitter can have that the model does not know. */
struct Nastiness {
    /** From this carrier on, in kHz, the leakage has another delay, in ns, and another phase, in radians; 0:
     * none. */
    double kinkAt = 0.0;
    double kinkDelay = 0.0;
    double jump = 0.0;
    /** By how many dB for each dB squared the detector is off, counted from -55 dBc. */
    double bend = 0.0;
    /** Where I really ends. */
    std::int32_t hiddenLow = -100000;
    std::int32_t hiddenHigh = 100000;
};

/** A modelled transmitter that is probed: with noise, steps, and a detector that follows with time. */
class PlayedTransmitter : public Prober {
public:
    explicit PlayedTransmitter(LeakageDescription leakage, const Nastiness& nastiness = {})
        : m_leakage(std::move(leakage)),
          m_nastiness(nastiness) {}

    bool goTo(const Place& place) override {
        m_places.push_back(place);
        m_starts.push_back(m_probes.size());
        m_now = {place.carrier, static_cast<double>(place.temperature)};
        m_output = target(level(m_now, {0, 0}));
        std::seed_seq seeds{m_leakage.seed, static_cast<std::uint32_t>(m_leakage.channel), place.carrier,
                            static_cast<std::uint32_t>(place.temperature)};
        m_random.seed(seeds);
        return place.carrier != unreachable;
    }

    std::optional<std::int32_t> probe(const Corrections& corrections) override {
        m_probes.push_back(corrections);
        if (m_probes.size() > readable) {
            return std::nullopt;
        }
        const bool isDeaf = m_places.back().carrier == deafAt && m_probes.size() - m_starts.back() <= deafFor;
        if (m_probes.size() > freezesAfter || isDeaf) {
            return frozenAt;
        }
        constexpr double settleTime = 5.0;
        const double settling = m_leakage.detector.settling;
        const double followed = settling > 0.0 ? -std::expm1(-settleTime / settling) : 1.0;
        m_output += (target(level(m_now, corrections)) - m_output) * followed;
        return detectorReading(m_leakage.detector, m_output + m_leakage.detector.noise * noise());
    }

    bool goOn() override { return m_probes.size() < patience; }

    Searched search(const Place&) override {
        ++searches;
        return {knows ? std::optional(ideal()) : std::nullopt, probesOfSearch};
    }

    /** What really leaks. */
    double level(const Surroundings& surroundings, const Corrections& corrections) const {
        const std::int32_t i = std::clamp(corrections.i, m_nastiness.hiddenLow, m_nastiness.hiddenHigh);
        std::complex<double> residual = residualOf(m_leakage, surroundings, {i, corrections.q});
        if (m_nastiness.kinkAt > 0.0 && surroundings.carrier > m_nastiness.kinkAt) {
            constexpr double turn = 6.283185307179586;
            const double gigahertz = (surroundings.carrier - m_nastiness.kinkAt) / 1.0e6;
            const std::complex<double> turned =
                std::polar(1.0, m_nastiness.jump - turn * m_nastiness.kinkDelay * gigahertz);
            residual += residualOf(m_leakage, surroundings, {0, 0}) * (turned - 1.0);
        }
        return leakageLevel(residual);
    }

    /** The most that a table leaves, at `carriers` carriers and all temperatures. */
    double worst(const Order& order, const Table& table, std::uint32_t carriers) const {
        double most = -200.0;
        const double width = static_cast<double>(order.highCarrier) - order.lowCarrier;
        for (std::uint32_t n = 0; n < carriers; ++n) {
            const auto carrier = order.lowCarrier + static_cast<std::uint32_t>(width * n / (carriers - 1));
            for (std::int32_t t = order.lowTemperature; t <= order.highTemperature; ++t) {
                const Corrections set = correctionsAt(table, {carrier, t});
                most = std::max(most, level({carrier, static_cast<double>(t)}, set));
            }
        }
        return most;
    }

    const LeakageDescription& leakage() const { return m_leakage; }
    const std::vector<Place>& places() const { return m_places; }
    const std::vector<Corrections>& probes() const { return m_probes; }
    /** How many probes had been made when each of the places was gone to. */
    const std::vector<std::size_t>& starts() const { return m_starts; }

    /** After so many probes the detector cannot be read, and the caller does not go on. */
    std::size_t readable = 1000000;
    std::size_t patience = 1000000;
    /** After so many probes the detector reads this whatever is set. */
    std::size_t freezesAfter = 1000000;
    std::int32_t frozenAt = 0;
    /** At this carrier it does so for so many probes. */
    std::uint32_t deafAt = 0;
    std::size_t deafFor = 0;
    /** A carrier to which the transmitter cannot be tuned. */
    std::uint32_t unreachable = 0;
    /** A search finds what there is to find. */
    bool knows = false;
    int searches = 0;
    std::uint32_t probesOfSearch = 92;

private:
    Corrections ideal() const {
        const LoCorrections found = idealLoCorrections(m_leakage, m_now);
        return {found.i, found.q};
    }
    double target(double leaking) const {
        const double output = detectorOutput(m_leakage.detector, leaking);
        const double slope = m_leakage.detector.slope;
        if (slope == 0.0) {
            return output;
        }
        const double beyond = output / slope + m_leakage.detector.zero + 55.0;
        return output + slope * m_nastiness.bend * beyond * beyond;
    }
    double noise() {
        double sum = -6.0;
        for (int n = 0; n < 12; ++n) {
            sum += static_cast<double>(m_random() >> 11U) / 9007199254740992.0;
        }
        return sum;
    }

    LeakageDescription m_leakage;
    Nastiness m_nastiness;
    Surroundings m_now{};
    double m_output = 0.0;
    std::mt19937_64 m_random; // NOLINT(cert-msc51-cpp): seeded at each place
    std::vector<Place> m_places;
    std::vector<std::size_t> m_starts;
    std::vector<Corrections> m_probes;
};

/** What a calibration of the band of the demonstration board would be asked for. */
inline Order orderFor(const LeakageDescription& leakage, double limit, std::uint32_t budget) {
    Order order;
    order.lowCarrier = 17'727'500;
    order.highCarrier = 18'662'500;
    order.lowTemperature = -33;
    order.highTemperature = 55;
    order.i = {leakage.i.low, leakage.i.high, leakage.i.step};
    order.q = {leakage.q.low, leakage.q.high, leakage.q.step};
    order.detector = {leakage.detector.slope, leakage.detector.zero, leakage.detector.low,
                      leakage.detector.high, leakage.detector.floor};
    order.limit = limit;
    order.budget = budget;
    return order;
}

} // namespace Radio::Fit

#endif
