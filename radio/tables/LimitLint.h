#ifndef RADIO_TABLES_LIMITLINT_H
#define RADIO_TABLES_LIMITLINT_H

#include "radio/board/Board.h"
#include "radio/board/Finding.h"
#include "radio/files/CsvFile.h"

#include <vector>

namespace Radio::Tables {

/**
 * Holds both tables of a channel, which have two axes, against what the board allows of leakage: at their
 * nodes as their file has it in "before_dbc" and "after_dbc", otherwise as the model of the channel has it;
 * and between the nodes as the model has it. Tables of a real transmitter have no model; where their file
 * has the claim of a fit, that is what is known of them anywhere. Throws InputError when a level in the file
 * is no number.
 */
void lintLimits(const Board& board, int channel, const TableDescription& i, const TableDescription& q,
                std::vector<Finding>& findings);

/** Holds what a fit claims of its tables against what the board allows of leakage anywhere. Throws InputError
 * when the claim is no number. */
void lintClaim(const Board& board, int channel, const CsvFile& file, std::vector<Finding>& findings);

} // namespace Radio::Tables

#endif
