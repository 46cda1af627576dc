#ifndef FUZZ_LIBRARY_EXCEPTIONS_H
#define FUZZ_LIBRARY_EXCEPTIONS_H

#include "Bytes.h"
#include "Story.h"

/** How an interface of the platform shows itself, for a byte. */
inline Told::Presence presenceFor(std::uint32_t byte) {
    return byte >= 240 ? Told::Presence::wordless : static_cast<Told::Presence>(byte % 5);
}

/** Has something on the board not as it is on others: there, complete, of the usual kind, size and range. */
void addException(Bytes& bytes, Told::Board& board);

#endif
