#include "python/binding/Stage.h"

#include "python/binding/Errors.h"

#include <mutex>

namespace Radio::Python {

namespace {

std::mutex guard;
/** Empty: nobody is there. */
std::string current;

} // namespace

Stage::Stage(const std::string& what) {
    const std::lock_guard<std::mutex> lock(guard);
    if (!current.empty()) {
        throw Busy("there is one radio at a time in a process, and it is " + current +
                   ", expected that to be closed or done first");
    }
    current = what;
}

Stage::~Stage() {
    const std::lock_guard<std::mutex> lock(guard);
    current.clear();
}

} // namespace Radio::Python
