#include "radio/calibration/Reservations.h"

#include "radio/plan/TuneCheck.h"
#include "radio/session/BootedRadio.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

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

/** A fit chooses its carriers out of so many, which lie evenly in its band, both ends among them. */
constexpr std::uint64_t cellsOfBand = 48;

/** What may be tuned to. A fit is asked for the ends of its band, and probes between them as well. */
std::vector<std::uint32_t> carriersOf(const Settings& settings) {
    if (settings.method != CalibrationMethod::fit) {
        return settings.frequencies;
    }
    const std::uint64_t low = settings.frequencies.front();
    const std::uint64_t width = settings.frequencies.back() - low;
    std::vector<std::uint32_t> carriers;
    for (std::uint64_t cell = 0; cell <= cellsOfBand; ++cell) {
        const auto carrier = static_cast<std::uint32_t>(low + (width * cell + cellsOfBand / 2) / cellsOfBand);
        if (carriers.empty() || carriers.back() != carrier) {
            carriers.push_back(carrier);
        }
    }
    return carriers;
}

/** What the unit may be brought to; of a fit every whole degree from the lowest to the highest. */
std::vector<std::int32_t> temperaturesOf(const Settings& settings) {
    if (settings.method != CalibrationMethod::fit) {
        return settings.temperatures;
    }
    std::vector<std::int32_t> temperatures;
    for (std::int32_t degrees = settings.temperatures.front(); degrees <= settings.temperatures.back();
         ++degrees) {
        temperatures.push_back(degrees);
    }
    return temperatures;
}

/** A fit goes on until the limit is held; of a real transmitter nobody ever knows that without the detector's
 * zero. */
std::string whyNotHeld(const Board& board, const Settings& settings) {
    const bool isStated =
        std::any_of(board.calibrations.begin(), board.calibrations.end(), [&settings](const auto& described) {
            return described.channel == settings.channel && described.detectorZero.has_value();
        });
    return !settings.limit || isStated
               ? ""
               : "the limit leakage is in dBc, and channel " + std::to_string(settings.channel) +
                     " states no detector_zero: nobody will know whether it is held";
}

} // namespace

std::string reservationAgainst(const Board& board, const Settings& settings, bool wantsZero) {
    BootedRadio booted(board);
    booted.requireUp();
    return reservationAgainst(board, booted.radio().platform(), settings, wantsZero);
}

std::string reservationAgainst(const Board& board, Standalone::Platform& platform, const Settings& settings,
                               bool wantsZero) {
    Reservations reservations;
    for (const std::uint32_t carrier : carriersOf(settings)) {
        reservations.add(Plan::whyNotTune(board, platform, Direction::tx, settings.channel, carrier));
    }
    for (const std::int32_t temperature : temperaturesOf(settings)) {
        reservations.add(Plan::whyNotTemperature(board, temperature));
    }
    if (wantsZero) {
        reservations.add(whyNotHeld(board, settings));
    }
    return reservations.text();
}

} // namespace Radio::Calibration
