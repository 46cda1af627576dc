#include "Comparison.h"

#include "Model.h"
#include "Runner.h"

#include <utility>

namespace Told {

std::string differenceIn(Story story) {
    static Transcript played; // kept for their memory
    static Transcript told;
    played.clear();
    told.clear();
    Runner(story.board, played).play(story);
    Model(std::move(story.board), told).tell(story);
    return firstDifference(played, told);
}

} // namespace Told
