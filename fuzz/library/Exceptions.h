#ifndef FUZZ_LIBRARY_EXCEPTIONS_H
#define FUZZ_LIBRARY_EXCEPTIONS_H

#include "Bytes.h"
#include "Story.h"

/** Has something on the board not as it is on others: there, complete, of the usual kind, size and range. */
void addException(Bytes& bytes, Told::Board& board);

#endif
