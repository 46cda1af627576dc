#ifndef PYTHON_BINDING_STAGE_H
#define PYTHON_BINDING_STAGE_H

#include <string>

namespace Radio::Python {

/**
 * The process has room for one radio, since the library finds its platform through singletons. Who boots one
 * has this as long as it is there.
 */
class Stage {
public:
    /** `what` is said to the next who comes meanwhile, for example "a radio of board.toml". Throws Busy. May
     * be called on any thread. */
    explicit Stage(const std::string& what);
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    ~Stage();
};

} // namespace Radio::Python

#endif
