#ifndef RADIOCTL_TABLES_LEVELS_H
#define RADIOCTL_TABLES_LEVELS_H

#include <string>

namespace Radioctl::Tables {

/** A number with so many decimals, for example "-71.20"; never "-0.00". */
std::string decimals(double number, int places);

/** A level with its unit, for example "-71.20 dBc". */
std::string levelText(double level);

} // namespace Radioctl::Tables

#endif
