#include "radioctl/calibrate/page/PlotScript.h"

namespace Radio::Calibration {

std::ostringstream beginScript(int width, int height) {
    std::ostringstream script;
    script.precision(10);
    script << "set terminal svg noenhanced dynamic size " << width << ',' << height
           << " font 'sans-serif,13'\n"
              "set encoding utf8\n"
              "set key outside top right horizontal\n"
              "set border 3\n"
              "set tics nomirror out\n"
              "set format '%.10g'\n";
    return script;
}

void writeBlock(std::ostream& script, const std::string& name, const std::vector<PlotPoint>& points) {
    script << '$' << name << " << END\n";
    for (const PlotPoint& point : points) {
        script << point.x << ' ' << point.y << '\n';
    }
    script << "END\n";
}

double inGHz(std::uint32_t frequency) {
    return frequency / 1e6;
}

void writeSingleTic(std::ostream& script, char axis, double value) {
    script << "set " << axis << "tics (" << value << ")\n";
}

} // namespace Radio::Calibration
