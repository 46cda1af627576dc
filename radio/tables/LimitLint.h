#ifndef RADIO_TABLES_LIMITLINT_H
#define RADIO_TABLES_LIMITLINT_H

#include "radio/board/Board.h"
#include "radio/board/Finding.h"

#include <vector>

namespace Radio::Tables {

/**
 * Holds both tables of a channel, which have two axes, against what the board allows of leakage: at their
 * nodes as their file has it in "before_dbc" and "after_dbc", otherwise as the model of the channel has it;
 * and between the nodes as the model has it. Throws InputError when a level in the file is no number.
 */
void lintLimits(const Board& board, int channel, const TableDescription& i, const TableDescription& q,
                std::vector<Finding>& findings);

} // namespace Radio::Tables

#endif
