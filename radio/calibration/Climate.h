#ifndef RADIO_CALIBRATION_CLIMATE_H
#define RADIO_CALIBRATION_CLIMATE_H

#include "radio/board/Board.h"
#include "radio/calibration/CalibrationBench.h"
#include "radio/calibration/ClimateTerms.h"
#include "standalone/Platform.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace Radio::Calibration {

/** A temperature that a calibration waits for. */
struct AwaitedTemperature {
    /** In degrees Celsius. */
    std::int32_t wanted = 0;
    /** What the sensor says; nothing when it has said nothing yet. */
    std::optional<int> now{};
    /** A person has to bring it about, since no chamber does. */
    bool isByHand = false;
    /** A person has to say that it is there, since no sensor does: an empty line, or what it is. */
    bool isByWord = false;
};

/**
 * The temperature of a real radio: it is what the sensor says, or who is there where there is none. A chamber
 * is told what it should be, if there is one; for the rest there is waiting.
 */
class Climate {
public:
    /** What is borrowed must outlive the object. */
    Climate(const Board& board, int channel, const ClimateTerms& terms, const CalibrationBench& bench)
        : m_board(board),
          m_channel(channel),
          m_terms(terms),
          m_bench(bench) {}

    /** Hears what the sensor says, or who is there. */
    void poll();
    /**
     * Has the radio at a temperature for the points that follow, and tells the platform what it really is:
     * waits as long as `goOn` says so, and at most as long as the board says. The second time for the same
     * temperature does not wait. Gives why the temperature is not there; empty: it is.
     */
    std::string reach(std::int32_t wanted, Standalone::Platform& platform, const std::function<bool()>& goOn);
    /** Why it is of no use to wait for any temperature; empty: it was of use so far. */
    const std::string& whyGivenUp() const { return m_whyGivenUp; }
    /** What is waited for now, if anything is. */
    const std::optional<AwaitedTemperature>& awaited() const { return m_awaited; }
    /** What is to be said of a point that was measured at `wanted` just now; empty: nothing. */
    std::string remark(std::int32_t wanted) const;

private:
    using Time = std::chrono::steady_clock::time_point;

    bool hasSensor() const { return m_board.hardware.description.sensor.has_value(); }
    bool isNear(std::int32_t wanted) const;
    /** It is near, and has been for as long as it is to be. */
    bool isThere(std::int32_t wanted);
    /** What a person said. */
    void hear(const PersonsWord& word);
    /** Gives why the temperature is not there; empty: it is. */
    std::string awaitIt(std::int32_t wanted, const std::function<bool()>& goOn);
    std::string overdue(std::int32_t wanted) const;
    bool tellChamber(std::int32_t wanted, Standalone::Platform& platform) const;

    const Board& m_board;
    const int m_channel;
    const ClimateTerms m_terms;
    const CalibrationBench& m_bench;
    std::optional<int> m_sensed;
    /** Since when it has been near. */
    std::optional<Time> m_nearSince;
    std::optional<std::int32_t> m_reached;
    std::optional<AwaitedTemperature> m_awaited;
    std::string m_whyGivenUp;
};

} // namespace Radio::Calibration

#endif
