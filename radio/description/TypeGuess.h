#ifndef RADIO_DESCRIPTION_TYPEGUESS_H
#define RADIO_DESCRIPTION_TYPEGUESS_H

#include "radio/board/Board.h"

#include <optional>

namespace Radio::Describing {

class Inventory;

/** The type that asks for what the channel asked for; nothing: it asked for nothing that tells. */
std::optional<::FrequencyHandler::FrequencyHandlerType> guessType(const Inventory& inventory, int channel);

} // namespace Radio::Describing

#endif
