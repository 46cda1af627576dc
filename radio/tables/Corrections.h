#ifndef RADIO_TABLES_CORRECTIONS_H
#define RADIO_TABLES_CORRECTIONS_H

#include "radio/board/Board.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace Radio::Tables {

/** Both LO-cancellation tables of a channel. */
struct Corrections {
    /** Nothing when the file does not say. */
    std::optional<int> channel;
    /** With two axes, which may be others than those of the other table. */
    CalibrationTable i;
    CalibrationTable q;

    LoCorrections at(std::int32_t carrier, std::int32_t temperature) const;
};

/** Where tables were read. */
struct Source {
    std::filesystem::path file;
    /** At least one, no channel twice. */
    std::vector<Corrections> channels;
    /** The board, if it is one. */
    std::optional<Board> board;
};

/** True for the name of a board file; all others are taken for CSV files. */
bool isBoardFile(const std::filesystem::path& file);

/**
 * Reads the corrections of a board, or those of a CSV file with the columns "i" and "q". Throws InputError
 * for a file that has none.
 */
Source readSource(const std::filesystem::path& file);

/** The corrections of a board as it is in memory. Throws InputError when it has none. */
Source sourceOf(const Board& board);

} // namespace Radio::Tables

#endif
