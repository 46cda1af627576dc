#include "tables/Levels.h"

#include <iomanip>
#include <sstream>

namespace Radioctl::Tables {

std::string decimals(double number, int places) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(places) << number;
    const std::string result = text.str();
    const bool isZero = result.find_first_not_of("-0.") == std::string::npos;
    return isZero && result.front() == '-' ? result.substr(1) : result;
}

std::string levelText(double level) {
    return decimals(level, 2) + " dBc";
}

} // namespace Radioctl::Tables
