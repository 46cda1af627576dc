#ifndef RADIO_LABORATORY_TRIAL_H
#define RADIO_LABORATORY_TRIAL_H

#include "radio/laboratory/Laboratory.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace Radio::Laboratory {

/** What a transmitter came to with a set of settings. */
enum class TrialEnd : std::uint8_t {
    held,    ///< it has tables, and all limits are held
    missed,  ///< it has tables that miss a limit, or that a fit does not vouch for
    edge,    ///< its best corrections lie beyond what can be set
    failed,  ///< there are no tables
    refused, ///< the detector was found to be no good, and nothing was calibrated
};

/** "held", "missed" and so on. */
std::string_view toString(TrialEnd end);
std::optional<TrialEnd> trialEndFromString(std::string_view word);

/** One transmitter of the population, and one of the sets of settings, by their numbers from 0. */
struct Task {
    std::uint32_t transmitter = 0;
    std::uint32_t settings = 0;

    bool operator<(const Task& other) const {
        return transmitter != other.transmitter ? transmitter < other.transmitter : settings < other.settings;
    }
    bool operator==(const Task& other) const {
        return transmitter == other.transmitter && settings == other.settings;
    }
};

/** One calibration in a laboratory. */
struct Trial {
    Task task{};
    /** The unit that the transmitter is like; empty: none, it was drawn. */
    std::string unit{};
    TrialEnd end = TrialEnd::failed;
    /** Why it is not held, as one clause; empty: it is. */
    std::string reason;
    /** Readings that were made, those to qualify the detector included. */
    std::uint64_t probes = 0;
    std::uint32_t temperatureChanges = 0;
    /** What it would have taken, in s: settle times as the model has them, and the TimeTerms. */
    double seconds = 0.0;
    /** What leaks at most without corrections at the points, and with the tables anywhere in band and
     * temperatures, in dBc; nothing when there are no tables. */
    std::optional<double> uncorrected;
    std::optional<double> worst;
};

/**
 * Draws the transmitter and calibrates it as `radioctl calibrate` would. Boots a radio: one at a time in a
 * process. `goOn` is asked after each probe; nothing when it said no. Throws InputError and RadioError.
 */
std::optional<Trial> carryOut(const Description& laboratory, const Task& task,
                              const std::function<bool()>& goOn);

} // namespace Radio::Laboratory

#endif
