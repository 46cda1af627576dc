#ifndef RADIO_DESCRIPTION_BOARDTEXT_H
#define RADIO_DESCRIPTION_BOARDTEXT_H

#include "radio/description/Inventory.h"

#include <string>
#include <vector>

namespace Radio::Describing {

/** A board file. `origin` are lines that say what it was described from; what cannot be described goes to
 * `notes`. */
std::string boardText(const Inventory& inventory, const Recordings::Header& header,
                      const std::vector<std::string>& origin, std::vector<std::string>& notes);

} // namespace Radio::Describing

#endif
