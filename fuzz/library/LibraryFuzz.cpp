// Plays the story for which the bytes stand with the library and tells it with the model. The first
// difference is printed and ends the program.

#include "Comparison.h"
#include "Decoder.h"
#include "FuzzTarget.h"

#include <cstdio>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t count) {
    const std::string difference = differenceIn(decode(bytes, count));
    if (!difference.empty()) {
        std::fputs(difference.c_str(), stderr);
        std::abort();
    }
    return 0;
}
