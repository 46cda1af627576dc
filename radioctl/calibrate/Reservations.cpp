#include "radioctl/calibrate/Reservations.h"

#include "radio/board/BoardNames.h"
#include "radio/plan/TuneCheck.h"
#include "radio/session/BootedRadio.h"
#include "radio/text/Words.h"

#include <cstddef>
#include <utility>

namespace Radio::Calibration {

namespace {

/** Keeps the first of several, and counts the others. */
class Reservations {
public:
    void add(std::string reservation) {
        if (reservation.empty()) {
            return;
        }
        if (m_first.empty()) {
            m_first = std::move(reservation);
        } else {
            ++m_others;
        }
    }
    std::string text() const {
        return m_first + (m_others == 0 ? "" : "; and " + std::to_string(m_others) + " more");
    }

private:
    std::string m_first;
    std::size_t m_others = 0;
};

/** A node of a table may lie between the carriers of a raster, but not beyond them. */
std::string whyNotCalibrate(const Board& board, Standalone::Platform& platform, int channel,
                            std::uint32_t carrier) {
    const std::optional<Range> band = transmitBand(board, channel);
    const bool isWithin = band && carrier >= band->low && carrier <= band->high;
    return (isWithin ? Plan::whyNotProduce : Plan::whyNotTune)(board, platform, Direction::tx, channel,
                                                               carrier);
}

std::string whyNotTemperature(const Board& board, std::int32_t degrees) {
    const std::optional<Range>& range = board.limits.temperature;
    if (!range || (degrees >= range->low && degrees <= range->high)) {
        return {};
    }
    return std::to_string(degrees) + " degrees are outside the board's " + std::to_string(range->low) +
           " to " + std::to_string(range->high);
}

} // namespace

std::string reservationAgainst(const Board& board, const Settings& settings) {
    BootedRadio booted(board);
    booted.requireUp();
    Reservations reservations;
    for (const std::uint32_t carrier : settings.frequencies) {
        reservations.add(whyNotCalibrate(board, booted.radio().platform(), settings.channel, carrier));
    }
    for (const std::int32_t temperature : settings.temperatures) {
        reservations.add(whyNotTemperature(board, temperature));
    }
    return reservations.text();
}

} // namespace Radio::Calibration
