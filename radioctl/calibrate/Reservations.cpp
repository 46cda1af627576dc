#include "radioctl/calibrate/Reservations.h"

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

} // namespace

std::string reservationAgainst(const Board& board, const Settings& settings) {
    BootedRadio booted(board);
    booted.requireUp();
    Reservations reservations;
    for (const std::uint32_t carrier : settings.frequencies) {
        reservations.add(
            Plan::whyNotTune(board, booted.radio().platform(), Direction::tx, settings.channel, carrier));
    }
    for (const std::int32_t temperature : settings.temperatures) {
        reservations.add(Plan::whyNotTemperature(board, temperature));
    }
    return reservations.text();
}

} // namespace Radio::Calibration
