#ifndef RADIOCTL_COMMANDERROR_H
#define RADIOCTL_COMMANDERROR_H

#include <stdexcept>

namespace Radioctl {

/** A line that is no command of this radio. The message says what was expected, but not where the line
 * stands. */
class CommandError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace Radioctl

#endif
