#ifndef RADIOCTL_CALIBRATE_PAGE_POINTLISTS_H
#define RADIOCTL_CALIBRATE_PAGE_POINTLISTS_H

#include "radio/calibration/Calibration.h"

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace Radio::Calibration {

/** "18000000 kHz, -10 °C" */
std::string pointPlace(std::uint32_t frequency, std::int32_t temperature);

/** A row of a table: what it is, and its value; both are fit for a page. */
void writeLine(std::ostream& out, const std::string& what, const std::string& value);

/** Names the points that a person should look at before the tables are used. */
void writeWarnings(std::ostream& out, const std::vector<const Point*>& points);

/** The table of all points, or of as many as a browser can show. */
void writePoints(std::ostream& out, std::vector<const Point*> points, bool isHardware);

} // namespace Radio::Calibration

#endif
