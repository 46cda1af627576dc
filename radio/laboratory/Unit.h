#ifndef RADIO_LABORATORY_UNIT_H
#define RADIO_LABORATORY_UNIT_H

#include "radio/board/Board.h"
#include "radio/calibration/Journal.h"
#include "radio/model/LeakageModel.h"
#include "radio/recording/RecordingFile.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/** Real units as transmitters: what was once measured of a unit says how it leaks, and so what another
 * calibration would have made of it. */
namespace Radio::Laboratory {

/** What was measured of a unit. */
struct Measured {
    /** Its serial number; "unknown" when nobody said. */
    std::string unit;
    /** Where it comes from, for people: "run 0b5e2d4c-...", or a file. */
    std::string source;
    /** When it was measured, "2026-03-01T09:30:00Z"; empty when nobody knows. */
    std::string date;
    bool useHighDetector = false;
    /** Of the detector, if anybody looked. */
    std::optional<Calibration::Qualification> qualification{};
    Calibration::KnownProbes probes{};
};

/** What a journal has. Throws InputError, with the source for a place, for one of another channel. */
Measured measuredIn(const Calibration::JournalContent& journal, int channel, const std::string& source);

/**
 * What a recording has of searches that the library made for the channel: its corrections, and what was read
 * of its detector, as the board calls them. Carrier and temperature are those that the radio was told last
 * before a search; of several searches at a place the last one counts. Throws InputError for a recording in
 * which there is none, and for what RecordingFile throws.
 */
Measured measuredIn(Recordings::RecordingFile& recording, const LeakageDescription& board,
                    const std::string& source);

/** A unit, and how it leaks. */
struct Unit {
    std::string name;
    std::string source;
    std::string date;
    /** So many places told of it. */
    std::size_t places = 0;
    /** By how much its leakage is other there than what was measured, root mean square, in dBc. */
    double misfit = 0.0;
    LeakageDescription leakage;
};

/**
 * How a unit leaks, by least squares: what it has of its own are paths, gains, skew, and of the detector that
 * was read slope, floor and noise; all else is as in `board`. Throws InputError, with the source for a place,
 * when what was measured does not tell.
 */
Unit unitFrom(const Measured& measured, const LeakageDescription& board);

// Units in a file: a line of JSON about all, then one for each.

std::string unitsText(const std::vector<Unit>& units, const Board& board, int channel,
                      const std::string& version);
/** Throws InputError for a file that unitsText() did not make of a board of this name and the channel, and
 * for units that a [[leakage]] could not describe. */
std::vector<Unit> readUnits(const std::filesystem::path& file, const Board& board, int channel);

} // namespace Radio::Laboratory

#endif
