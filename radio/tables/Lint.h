#ifndef RADIO_TABLES_LINT_H
#define RADIO_TABLES_LINT_H

#include "radio/board/Board.h"
#include "radio/board/Finding.h"
#include "radio/files/CsvFile.h"

#include <filesystem>
#include <vector>

/** Looking for mistakes in LO-cancellation tables. Touches no radio; may be called on any thread. What is
 * given is borrowed during the call only. */
namespace Radio::Tables {

/** The board has LO-cancellation tables, of whatever shape. */
bool hasTables(const Board& board);

/**
 * Looks at the LO-cancellation tables of all channels of a board, wherever they come from. Findings are
 * placed where the tables stand in the board, in the order of their lines, and behind them those about rows
 * of CSV files. Throws InputError for a board without such tables.
 */
std::vector<Finding> lintBoard(const Board& board);

/**
 * Looks at a CSV file of LO-cancellation tables, with the columns "i" and "q" behind its two axes. Findings
 * come in the order of their lines. Throws InputError for a file that is nothing of the kind.
 */
std::vector<Finding> lintCsv(const CsvFile& file);

/** One of the two, by the name of the file. Throws InputError also for a file that cannot be read. */
std::vector<Finding> lintFile(const std::filesystem::path& file);

} // namespace Radio::Tables

#endif
