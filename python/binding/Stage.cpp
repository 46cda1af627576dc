#include "python/binding/Stage.h"

#include "python/binding/Errors.h"

#include <unistd.h>

namespace Radio::Python {

namespace {

/** Empty: nobody is there. */
std::string occupant;
/** In which process that is. */
pid_t occupied = 0;

} // namespace

Stage::Stage(const std::string& what) : m_process(getpid()) {
    if (!occupant.empty() && occupied != m_process) {
        throw Busy("this process was forked in the middle of " + occupant +
                   ", expected one that is started anew, as by the method \"spawn\"");
    }
    if (!occupant.empty()) {
        throw Busy("there is one radio at a time in a process, and it is " + occupant +
                   ", expected that to be closed or done first");
    }
    occupant = what;
    occupied = m_process;
}

Stage::~Stage() {
    if (m_process == getpid()) {
        occupant.clear();
    }
}

void Stage::adopt() {
    m_process = getpid();
}

} // namespace Radio::Python
