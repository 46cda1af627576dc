#ifndef RADIOCTL_CALIBRATE_PAGE_PLOTSCRIPT_H
#define RADIOCTL_CALIBRATE_PAGE_PLOTSCRIPT_H

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

/** What the gnuplot scripts of a calibration have in common. They never have a text that comes from outside.
 */
namespace Radio::Calibration {

/** Where a plot has a mark, or a curve a corner. */
struct PlotPoint {
    double x;
    double y;
};

/** A script that draws a picture of this size. */
std::ostringstream beginScript(int width, int height);

/** Points as data block $name, in their order. */
void writeBlock(std::ostream& script, const std::string& name, const std::vector<PlotPoint>& points);

/** A carrier as plots show it, in GHz. `frequency` is in kHz. */
double inGHz(std::uint32_t frequency);

/** Has only the value of an axis marked that there is. */
void writeSingleTic(std::ostream& script, char axis, double value);

} // namespace Radio::Calibration

#endif
