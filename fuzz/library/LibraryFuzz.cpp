// Plays the story for which the bytes stand with the library and tells it with the model. The first
// difference is printed and ends the program.

#include "Decoder.h"
#include "FuzzTarget.h"
#include "Model.h"
#include "Runner.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t count) {
    static Told::Transcript played;
    static Told::Transcript told;
    played.clear();
    told.clear();
    const Told::Story story = decode(bytes, count);
    Told::Runner(story.board, played).play(story);
    Told::Model(story.board, told).tell(story);
    const std::string difference = firstDifference(played, told);
    if (!difference.empty()) {
        std::fputs(difference.c_str(), stderr);
        std::abort();
    }
    return 0;
}
