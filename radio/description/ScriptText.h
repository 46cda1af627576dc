#ifndef RADIO_DESCRIPTION_SCRIPTTEXT_H
#define RADIO_DESCRIPTION_SCRIPTTEXT_H

#include "radio/description/Inventory.h"

#include <string>
#include <vector>

namespace Radio::Describing {

/**
 * A script that does with the described board what was done with the recorded one, and expects what was
 * written. `origin` are lines that say what it was made of; what no script can have goes to `notes`.
 */
std::string scriptText(const Inventory& inventory, RecordingFile& file,
                       const std::vector<std::string>& origin, std::vector<std::string>& notes);

} // namespace Radio::Describing

#endif
