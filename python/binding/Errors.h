#ifndef PYTHON_BINDING_ERRORS_H
#define PYTHON_BINDING_ERRORS_H

#include <stdexcept>

namespace Radio::Python {

/** Something is used that was closed. */
class Closed : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/** There is one radio at a time in a process, and it does one thing at a time. */
class Busy : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/** Has exceptions of the engines and those above raised as the classes in frequencyhandler/errors.py. */
void translateErrors();

} // namespace Radio::Python

#endif
