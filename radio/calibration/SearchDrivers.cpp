#include "radio/calibration/SearchDrivers.h"

#include "radio/board/BoardDemand.h"

#include <algorithm>

namespace Radio::Calibration {

namespace {

/** The module takes no notice of a driver that it could not write. */
bool isUsable(const Board& board, const std::string& name, unsigned words) {
    return std::any_of(board.drivers.begin(), board.drivers.end(), [&](const DriverDescription& driver) {
        return driver.name == name && (driver.missingWords & words) == 0;
    });
}

bool applies(const Board& board, const Demand& demand) {
    return std::all_of(demand.conditions.begin(), demand.conditions.end(), [&](const Condition& condition) {
        return isUsable(board, condition.driver, writableDriver) == condition.isThere;
    });
}

/** What becomes of the demand for the driver `preferred`; empty: nothing. */
std::string taken(const Board& board, const std::vector<Demand>& demands, const std::string& preferred) {
    const auto demand = std::find_if(demands.begin(), demands.end(), [&](const Demand& candidate) {
        return candidate.kind == ObjectKind::driver && candidate.candidates.front().name == preferred;
    });
    if (demand == demands.end() || !applies(board, *demand)) {
        return {};
    }
    const auto usable =
        std::find_if(demand->candidates.begin(), demand->candidates.end(), [&](const Candidate& candidate) {
            return isUsable(board, candidate.name, demand->words);
        });
    return usable == demand->candidates.end() ? "" : usable->name;
}

} // namespace

SearchDrivers driversOf(const LeakageDescription& leakage) {
    return {leakage.i.driver, leakage.q.driver, leakage.detector.driver,
            leakage.highDetector ? leakage.highDetector->driver : ""};
}

SearchDrivers driversOf(const Board& board, int channel) {
    const std::vector<Demand> demands = demandsOf(board);
    const std::string prefix = "channel." + std::to_string(channel) + ".tx.rf.";
    return {taken(board, demands, prefix + "mixer.i"), taken(board, demands, prefix + "mixer.q"),
            taken(board, demands, prefix + "detector.v"),
            taken(board, demands, prefix + "detector.high.v.detect")};
}

} // namespace Radio::Calibration
