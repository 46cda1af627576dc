#ifndef RADIOCTL_BOARDCHECK_H
#define RADIOCTL_BOARDCHECK_H

#include "Board.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Radioctl {

enum class Severity : std::uint8_t {
    warning, ///< the radio starts, but something will not work as described
    error,   ///< a channel does not start, or what is described cannot be meant
};

/** "warning" or "error". */
std::string_view toString(Severity severity);

/** Something about a board that will not work, or that is not used. */
struct Finding {
    Severity severity;
    /** The line that is to be looked at. */
    Place place;
    std::string text;
};

/**
 * Holds the board against what its channels will ask the platform for. The findings come in the order of
 * their lines; there are none for a board on which everything fits.
 */
std::vector<Finding> checkBoard(const Board& board);

/** Reads a board and throws InputError also for the first error that checkBoard finds. */
Board loadUsableBoard(const std::filesystem::path& file);

} // namespace Radioctl

#endif
