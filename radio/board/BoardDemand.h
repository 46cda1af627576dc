#ifndef RADIO_BOARD_BOARDDEMAND_H
#define RADIO_BOARD_BOARDDEMAND_H

#include "radio/board/Board.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/** What the handlers of a board's channels will ask the platform for. */
namespace Radio {

enum class ObjectKind : std::uint8_t { driver, variable, table, interface };

/** "driver", "variable", "table" or "interface". */
std::string_view toString(ObjectKind kind);

/** What a channel does when it does not get what it asks for. */
enum class Need : std::uint8_t {
    optional, ///< it goes on in silence
    wanted,   ///< it starts, and reports an error where it would have used the thing
    required, ///< one of its start-up phases fails
};

/** How the content of a variable or a table is read. */
enum class Shape : std::uint8_t {
    any,
    integer,
    factor, ///< one integer by which is divided
    pairs,  ///< an array of pairs, whose length stands in the variable of this name followed by "size"
    oneAxis,
    twoAxes,
};

/** What has to be in the record of every driver that is written. */
constexpr unsigned writableDriver = Standalone::wordContext | Standalone::wordWrite;

/** A name under which something is asked for, and how its content is read then. */
struct Candidate {
    std::string name;
    Shape shape = Shape::any;
};

/** Asked for only when a writable driver of that name is there, or only when there is none. */
struct Condition {
    std::string driver;
    bool isThere;
};

/** One thing that channels ask for. */
struct Demand {
    ObjectKind kind;
    Need need;
    /** In the order in which they are tried. */
    std::vector<Candidate> candidates;
    /** A driver without these words of its record (Standalone::DriverWord) counts as not found. */
    unsigned words = 0;
    /** The words that are called later without another look. */
    unsigned laterWords = 0;
    /** All of them must hold. */
    std::vector<Condition> conditions;
    /** Of a variable, the phase (as scripts call it) that copies its value; empty when it is read where it is
     * used. */
    std::string_view copiedBy{};
    /** Where a channel takes this table for something else, it leaves the first candidate alone. */
    std::string idledBy;
    /** Who asks, of several with different needs only those with the greatest. The descriptions belong to the
     * board. */
    std::vector<const ChannelDescription*> channels;
};

/** What the board's channels ask for, in the order in which they do. What several ask for is there once. */
std::vector<Demand> demandsOf(const Board& board);

/** The phase, as scripts call it, that has to be run again before a new value of a variable counts; empty
 * when it counts at once, or for nobody. */
std::string_view phaseThatCopies(const std::string& variable, const Board& board);

} // namespace Radio

#endif
