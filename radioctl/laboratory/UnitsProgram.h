#ifndef RADIOCTL_LABORATORY_UNITSPROGRAM_H
#define RADIOCTL_LABORATORY_UNITSPROGRAM_H

#include "radio/store/Database.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Radio::Laboratory {

struct UnitsOptions {
    std::string board;
    std::int32_t channel = 0;
    /** Journals and recordings. */
    std::vector<std::string> files;
    /** Empty: no runs of a store. */
    std::string store;
    Store::Selection selection{};
    std::string out;
    bool json = false;
};

/** "radioctl laboratory units": makes a file of units out of what was measured of them. Gives the exit code.
 */
int runUnits(const UnitsOptions& options);

} // namespace Radio::Laboratory

#endif
