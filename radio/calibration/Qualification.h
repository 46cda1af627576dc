#ifndef RADIO_CALIBRATION_QUALIFICATION_H
#define RADIO_CALIBRATION_QUALIFICATION_H

#include "radio/board/Board.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace Radio::Calibration {

/** What a chain is measured with cannot go on: a driver failed, or somebody wants to leave. */
class ChainFailure : public std::runtime_error {
public:
    explicit ChainFailure(const std::string& why, bool isInterruption = false)
        : std::runtime_error(why),
          m_isInterruption(isInterruption) {}

    bool isInterruption() const { return m_isInterruption; }

private:
    bool m_isInterruption;
};

/** From two corrections to the reading of a detector. Each of its functions may throw ChainFailure. */
struct MeasuringChain {
    std::function<void(const LoCorrections& corrections)> set;
    /** Lets this time pass, in ms. */
    std::function<void(double)> wait;
    /** A time in ms that goes on also while something is read. */
    std::function<double()> now;
    std::function<std::int32_t()> read;
    /** Of the detector for the other range; empty: there is none. */
    std::function<std::int32_t()> readOther{};
};

/** What is known of a chain before it is measured with. */
struct ChainDescription {
    /** Where the corrections are searched. */
    Range i{};
    Range q{};
    bool isHighDetector = false;
    /** In ms; nothing when nobody said. */
    std::optional<std::uint32_t> settleTime{};
    /** Units of the reading for each dB, if the board states it. */
    std::optional<double> slope{};
    /** The limits of the detector, if they are known. */
    std::optional<std::int64_t> lowest{};
    std::optional<std::int64_t> highest{};
};

/** What a measuring chain is good for. */
struct Qualification {
    /** From a correction to its reading, in ms: what was stated, else what was found with a margin. */
    std::uint32_t settleTime = 0;
    /** So many readings make the reading of one probe. */
    std::uint32_t readings = 1;
    /** After this time, in ms, the detector shows a step to 2 %; nothing when there was no step to be seen.
     */
    std::optional<double> settled{};
    /** Root mean square of one reading's noise, in units. */
    double noise = 0.0;
    /** Units of the reading for each dB, as they were found; nothing when readings do not follow a logarithm.
     */
    std::optional<double> slope{};
    /** Readings that it took. */
    std::uint32_t taken = 0;
    /** What the user should know, each as one clause. */
    std::vector<std::string> warnings{};
    /** Why nothing can be measured with it, as one clause; empty: it can. */
    std::string refusal{};
    /** Somebody wanted to leave; nothing else is of use then. */
    bool isInterrupted = false;

    bool isGood() const { return refusal.empty() && !isInterrupted; }
};

/** The most readings that a probe is the mean of, and ms between two of them. */
constexpr std::uint32_t mostReadings = 16;
constexpr std::uint32_t betweenReadings = 1;

/** The most readings that a qualification takes. */
constexpr std::uint32_t mostReadingsTaken = 38;
/** Told how many readings were taken, after each. */
using TellTaken = std::function<void(std::uint32_t taken)>;

/** Sets corrections, waits `settleTime` ms, and gives the mean of so many readings, rounded. */
std::int32_t readMean(const MeasuringChain& chain, const LoCorrections& corrections, std::uint32_t settleTime,
                      std::uint32_t readings);

/**
 * Measures with a chain how fast it settles, how noisy it is, and whether its readings follow the
 * corrections: both ends of the ranges and the middle, repeated readings, a step, and a line along I and one
 * along Q. Takes 32 readings, at most mostReadingsTaken. Leaves the corrections anywhere within the ranges.
 */
Qualification qualify(const MeasuringChain& chain, const ChainDescription& description,
                      const TellTaken& tell = {});

} // namespace Radio::Calibration

#endif
