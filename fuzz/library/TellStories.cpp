// Plays the story for which the bytes stand with the library and prints what happened.

#include "Decoder.h"
#include "FuzzTarget.h"
#include "Runner.h"

#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t count) {
    Told::Transcript played;
    const Told::Story story = decode(bytes, count);
    Told::Runner(story.board, played).play(story);
    std::fwrite(played.text().data(), 1, played.text().size(), stdout);
    return 0;
}
