#ifndef TESTS_MODEL_THROWER_H
#define TESTS_MODEL_THROWER_H

#include "Story.h"

#include <exception>
#include <stdexcept>

namespace Told {

/** What is to be thrown; null: nothing. */
inline std::exception_ptr thrownBy(Throws throws) {
    switch (throws) {
    case Throws::nothing:
        break;
    case Throws::exception:
        return std::make_exception_ptr(std::runtime_error(thrownText));
    case Throws::number:
        return std::make_exception_ptr(7);
    }
    return nullptr;
}

/** Throws it, if there is something to throw. */
inline void throwIt(Throws throws) {
    if (const std::exception_ptr thrown = thrownBy(throws)) {
        std::rethrow_exception(thrown);
    }
}

} // namespace Told

#endif
