#ifndef RADIO_CALIBRATION_CHANNELQUALIFICATION_H
#define RADIO_CALIBRATION_CHANNELQUALIFICATION_H

#include "radio/board/Board.h"
#include "radio/calibration/Calibration.h"
#include "radio/calibration/CalibrationBench.h"
#include "radio/calibration/Qualification.h"

#include <cstdint>
#include <functional>
#include <string>

namespace Radio::Calibration {

/** A channel whose measuring chain is to be qualified. */
struct QualificationOrder {
    /** As for a calibration; without carriers the first of the board's is taken. */
    CalibrationDescription wishes;
    bool isHardware = false;
    /** Times are waited for; on hardware they are in any case. */
    bool isRealTime = false;
};

/** Under which conditions it was qualified, and what came of it. */
struct ChannelQualification {
    /** In kHz. */
    std::uint32_t frequency = 0;
    /** In degrees Celsius. */
    std::int32_t temperature = 0;
    /** The driver that was read. */
    std::string detector{};
    Qualification result{};
};

/**
 * Qualifies the measuring chain of one of the board's channels, and nothing else: at its first carrier and,
 * on hardware, at the temperature that the sensor says, else at the first of those to be calibrated. Boots a
 * radio. Throws what CalibrationRun throws for an order that cannot be used. `goOn` is asked all the time; on
 * hardware `bench` is the radio; `tell` hears of each reading.
 */
class ChannelQualifier {
public:
    /** Settles what is to be done, and touches nothing. `board` must outlive the object. */
    ChannelQualifier(const Board& board, const QualificationOrder& order);

    /** At one carrier and one temperature. */
    const Settings& settings() const { return m_settings; }
    ChannelQualification run(const std::function<bool()>& goOn, const CalibrationBench& bench = {},
                             const TellTaken& tell = {});

private:
    const Board& m_board;
    const QualificationOrder m_order;
    Settings m_settings;
};

} // namespace Radio::Calibration

#endif
