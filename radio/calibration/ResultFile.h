#ifndef RADIO_CALIBRATION_RESULTFILE_H
#define RADIO_CALIBRATION_RESULTFILE_H

#include "radio/calibration/Calibration.h"
#include "radio/files/CsvFile.h"

#include <filesystem>
#include <ostream>

/** Calibrations in files. Touches no radio; may be called on any thread. */
namespace Radio::Calibration {

/**
 * Writes a calibration as the CSV file that boards take their tables from: who, when and how as properties,
 * and a row for each point, in their order; of a calibration on hardware what the detector read, in place of
 * modelled leakage. Control characters of texts are written as escapes. Throws
 * std::logic_error for a point that failed: it has no corrections, and must not come into a table.
 */
void writeResult(std::ostream& out, const Result& result);

/**
 * Reads what writeResult wrote. Carriers and temperatures of the settings are those of the points. Remarks
 * and probes are not in the file. Throws InputError, and nothing else, for a file that cannot be used;
 * whether each point is there once is not looked at.
 */
Result readResult(const std::filesystem::path& file);
/** The same for a CSV file that has been read. */
Result readResult(const CsvFile& csv);

} // namespace Radio::Calibration

#endif
