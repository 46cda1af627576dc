#ifndef RADIO_LABORATORY_LABORATORY_H
#define RADIO_LABORATORY_LABORATORY_H

#include "radio/board/Board.h"
#include "radio/laboratory/Population.h"
#include "radio/laboratory/Unit.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/** Which settings calibrate a design best: transmitters drawn from a population, each calibrated with each
 * set of settings. */
namespace Radio::Laboratory {

/** One of the ways to calibrate that are tried. */
struct NamedSettings {
    /** Printable, one of its own. */
    std::string name;
    CalibrationDescription wishes;
    /** The detector is qualified first, as a calibration does. */
    bool qualifies = true;
};

/** What a calibration takes beside what the model knows of. */
struct TimeTerms {
    /** To bring a transmitter to a temperature, the first one included, in s. */
    double temperatureChange = 0.0;
    /** For each probe beside the settle time, in ms. */
    double probe = 0.0;
};

/** What a laboratory file describes. */
struct Description {
    std::filesystem::path file;
    /** With the limits by which transmitters are judged. */
    Board board;
    int channel = 0;
    /** How many transmitters. */
    std::uint32_t count = 0;
    std::uint64_t seed = 0;
    /** The part of the transmitters that may fail with settings that are recommended. */
    double mostFailures = 0.01;
    TimeTerms time{};
    Population population{};
    /** Units that the transmitters are like, at least as many as transmitters; empty: they are drawn. */
    std::vector<Unit> units{};
    /** At least one. */
    std::vector<NamedSettings> settings;
    /** Sixteen hexadecimal digits that change with what the files say. */
    std::string fingerprint;
};

} // namespace Radio::Laboratory

#endif
