#ifndef RADIO_CALIBRATION_OWNFILES_H
#define RADIO_CALIBRATION_OWNFILES_H

#include "radio/board/Board.h"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

/** What a calibration writes is to be nothing that it reads. Touches no radio; may be called on any thread.
 */
namespace Radio::Calibration {

/** Which of the files, each with what a message calls it, are one and the same; empty when none are. Those
 * without a name do not count. */
std::string whyNotOwnFiles(const std::vector<std::pair<const char*, std::filesystem::path>>& files);

/** A journal that makes room is not to be one of the files that the board needs; empty when it is none. */
std::string whyNoJournal(const Board& board, const std::filesystem::path& journal);

} // namespace Radio::Calibration

#endif
