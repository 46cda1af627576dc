#ifndef PYTHON_BINDING_STAGE_H
#define PYTHON_BINDING_STAGE_H

#include <sys/types.h>

#include <string>

namespace Radio::Python {

/**
 * The process has room for one radio, since the library finds its platform through singletons. Who boots one
 * has this as long as it is there. Made and destroyed with the interpreter's lock.
 */
class Stage {
public:
    /** `what` is said to the next who comes meanwhile, for example "a radio of board.toml". Throws Busy. */
    explicit Stage(const std::string& what);
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    /** In a child of the process that made it, the stage stays taken: nobody took the radio down there. */
    ~Stage();

    /** The radio was taken down in this process, whichever made it. */
    void adopt();

private:
    pid_t m_process;
};

} // namespace Radio::Python

#endif
