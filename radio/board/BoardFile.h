#ifndef RADIO_BOARD_BOARDFILE_H
#define RADIO_BOARD_BOARDFILE_H

#include "radio/board/Board.h"
#include "radio/board/TableFile.h"

#include <filesystem>
#include <string_view>

/** Boards, read from files. Touches no radio; may be called on any thread. */
namespace Radio {

/** Reads a board file. Throws InputError, and nothing else, for a file that cannot be read or used. */
Board loadBoard(const std::filesystem::path& file);
/** The same for `text`, the content of `file`, with tables out of `csv`, which is called during the call
 * only, and on its thread. */
Board readBoard(std::string_view text, const std::filesystem::path& file, const CsvSource& csv);

} // namespace Radio

#endif
