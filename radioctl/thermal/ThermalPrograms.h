#ifndef RADIOCTL_THERMAL_THERMALPROGRAMS_H
#define RADIOCTL_THERMAL_THERMALPROGRAMS_H

#include "radio/thermal/Replay.h"
#include "radioctl/keep/KeepOptions.h"

#include <string>

namespace Radio::Thermal {

/** What the user chose on the command line. */
struct ThermalOptions {
    std::string board;
    std::string log;
    /** Those that were given; other channels take the first of their raster. */
    Carriers carriers;
    bool json = false;
    /** A file, "-" for standard output, or empty. */
    std::string csv;
    /** A file, or empty. */
    std::string html;
    /** Where it is replayed; empty: nobody says. */
    std::string station;
    KeepOptions keep{};
};

/** Replays a temperature log on a board and reports what came of it; gives the exit code. */
int runThermal(const ThermalOptions& options);

} // namespace Radio::Thermal

#endif
