#ifndef FUZZ_LIBRARY_DECODER_H
#define FUZZ_LIBRARY_DECODER_H

#include "Story.h"

#include <cstddef>
#include <cstdint>

/** The story for which some bytes stand; any bytes stand for one, and few for a short one. */
Told::Story decode(const std::uint8_t* bytes, std::size_t count);

#endif
