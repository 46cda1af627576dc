#include "Comparison.h"

#include "Model.h"
#include "Runner.h"

namespace Told {

std::string differenceIn(const Story& story) {
    static Transcript played; // kept for their memory
    static Transcript told;
    played.clear();
    told.clear();
    Runner(story.board, played).play(story);
    Model(story.board, told).tell(story);
    return firstDifference(played, told);
}

} // namespace Told
