#include "radio/calibration/Qualification.h"

#include "radio/calibration/QualificationFigures.h"
#include "radio/calibration/Slope.h"
#include "radio/calibration/StepResponse.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Radio::Calibration {

namespace {

/** From a correction to a reading when nobody knows yet how fast the detector is, in ms. */
constexpr double rest = 400.0;
/** The same once it is known that there is hardly a difference. */
constexpr double shortRest = 100.0;
constexpr int noiseReadings = 8;
/** After how many ms a step is looked at until it is over. */
constexpr std::array<double, 13> moments{1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096};
/** Before this one a slow detector has hardly begun to move. */
constexpr double firstEnd = 256.0;
constexpr int placesOfI = 7;
constexpr int placesOfQ = 5;
/** More than what was found, for the other steps of a search. */
constexpr double margin = 1.25;
constexpr double unknownSettleTime = 5.0;

std::int32_t within(const Range& range, std::int64_t value) {
    return static_cast<std::int32_t>(std::clamp(value, range.low, range.high));
}

/** One qualification, from the first reading to the last. */
class Qualifier {
public:
    Qualifier(const MeasuringChain& chain, const ChainDescription& description, const TellTaken& tell)
        : m_chain(chain),
          m_description(description),
          m_tell(tell),
          m_middle{within(description.i, 0), within(description.q, 0)} {}

    Qualification run() {
        try {
            surveyEnds();
            measureNoise();
            measureStep();
            takeLines();
            judge();
        } catch (const ChainFailure& failure) {
            m_figures.result.isInterrupted = failure.isInterruption();
            m_figures.result.refusal = failure.isInterruption() ? "" : failure.what();
        }
        return std::move(m_figures.result);
    }

private:
    double read() {
        const std::int32_t reading = m_chain.read();
        count();
        return reading;
    }
    void count() {
        ++m_figures.result.taken;
        if (m_tell) {
            m_tell(m_figures.result.taken);
        }
    }
    double readAt(const LoCorrections& corrections, double time) {
        m_chain.set(corrections);
        m_chain.wait(time);
        return read();
    }

    void surveyEnds() {
        m_lowEnd = {within(m_description.i, m_description.i.low),
                    within(m_description.q, m_description.q.low)};
        m_highEnd = {within(m_description.i, m_description.i.high),
                     within(m_description.q, m_description.q.high)};
        m_figures.lowEnd = readAt(m_lowEnd, rest);
        m_figures.highEnd = readAt(m_highEnd, rest);
        m_figures.middle = readAt(m_middle, rest);
    }

    void measureNoise() {
        std::vector<double> readings{m_figures.middle};
        while (readings.size() < noiseReadings) {
            m_chain.wait(betweenReadings);
            readings.push_back(read());
        }
        m_figures.setNoise(readings);
    }

    /** From the end that is farther away, as the detector sees it, to the middle. */
    void measureStep() {
        const bool isLow =
            std::abs(m_figures.lowEnd - m_figures.middle) >= std::abs(m_figures.highEnd - m_figures.middle);
        const double before = isLow ? m_figures.lowEnd : m_figures.highEnd;
        if (std::abs(before - m_figures.middle) <= 2 * m_figures.noiseBound()) {
            return;
        }
        m_chain.set(isLow ? m_lowEnd : m_highEnd);
        m_chain.wait(rest);
        StepResponse step(before, m_figures.noiseBound());
        m_chain.set(m_middle);
        const double begin = m_chain.now();
        for (const double moment : moments) {
            const double elapsed = m_chain.now() - begin;
            // Reading takes its time as well.
            if (elapsed > moment) {
                continue;
            }
            m_chain.wait(moment - elapsed);
            const double time = m_chain.now() - begin;
            step.add(time, read());
            if (moment >= firstEnd && step.isOver()) {
                break;
            }
        }
        m_figures.step = step;
    }

    /** How long is waited for the readings of the lines. */
    double lineTime() const {
        if (!m_figures.step) {
            return shortRest;
        }
        return std::max(m_figures.step->timeTo(StepResponse::settledPart) * margin,
                        m_description.settleTime.value_or(0) * 1.0);
    }

    void takeLines() {
        m_figures.i = takeLine(m_description.i, placesOfI, [&](std::int32_t i) {
            return LoCorrections{i, m_middle.q};
        });
        const auto least = std::min_element(m_figures.i.begin(), m_figures.i.end(),
                                            [](const auto& a, const auto& b) { return a.second < b.second; });
        const auto best = static_cast<std::int32_t>(least->first);
        m_figures.q = takeLine(m_description.q, placesOfQ, [&](std::int32_t q) {
            return LoCorrections{best, q};
        });
    }

    template <typename Corrections>
    ReadingLine takeLine(const Range& range, int places, Corrections corrections) {
        ReadingLine line;
        for (int n = 0; n < places; ++n) {
            const std::int32_t place = within(range, range.low + (range.high - range.low) * n / (places - 1));
            line.emplace_back(place, readAt(corrections(place), lineTime()));
        }
        return line;
    }

    void judge() {
        m_figures.refuse(m_description, [this] { return otherSees(); });
        if (m_figures.result.refusal.empty()) {
            m_figures.conclude(m_description);
        }
        Qualification& result = m_figures.result;
        const double found = result.settled ? std::ceil(*result.settled * margin) : unknownSettleTime;
        result.settleTime = m_description.settleTime.value_or(
            static_cast<std::uint32_t>(std::clamp(found, 1.0, moments.back())));
    }

    /** What the other detector reads at both ends of the ranges, if that is not the same. */
    std::optional<std::pair<std::int32_t, std::int32_t>> otherSees() {
        if (!m_chain.readOther) {
            return std::nullopt;
        }
        std::array<std::int32_t, 2> readings{};
        std::size_t n = 0;
        for (const LoCorrections& corrections : {m_lowEnd, m_middle}) {
            m_chain.set(corrections);
            m_chain.wait(rest);
            readings.at(n++) = m_chain.readOther();
            count();
        }
        const bool isSame = std::abs(readings[0] - readings[1]) <= 2 * m_figures.noiseBound();
        return isSame ? std::nullopt : std::optional(std::pair(readings[0], readings[1]));
    }

    const MeasuringChain& m_chain;
    const ChainDescription& m_description;
    const TellTaken& m_tell;
    const LoCorrections m_middle;
    LoCorrections m_lowEnd;
    LoCorrections m_highEnd;
    QualificationFigures m_figures;
};

} // namespace

std::int32_t readMean(const MeasuringChain& chain, const LoCorrections& corrections, std::uint32_t settleTime,
                      std::uint32_t readings) {
    chain.set(corrections);
    chain.wait(settleTime);
    double sum = chain.read();
    for (std::uint32_t n = 1; n < readings; ++n) {
        chain.wait(betweenReadings);
        sum += chain.read();
    }
    return static_cast<std::int32_t>(std::lround(sum / readings));
}

Qualification qualify(const MeasuringChain& chain, const ChainDescription& description,
                      const TellTaken& tell) {
    return Qualifier(chain, description, tell).run();
}

} // namespace Radio::Calibration
