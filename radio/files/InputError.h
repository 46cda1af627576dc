#ifndef RADIO_FILES_INPUTERROR_H
#define RADIO_FILES_INPUTERROR_H

#include <stdexcept>
#include <string>

namespace Radio {

/** A place in an input file. Line 0 stands for the file as a whole. */
struct Place {
    std::string file;
    unsigned line = 0;
};

/** "FILE:LINE", or the file alone when there is no line; safe to be shown, and "" for an empty name. */
std::string toString(const Place& place);

/**
 * Input that cannot be used. The message is for people: it names the file, the line and the key, and says
 * what was expected.
 */
class InputError : public std::runtime_error {
public:
    InputError(const Place& place, const std::string& message)
        : std::runtime_error(toString(place) + ": " + message) {}
};

} // namespace Radio

#endif
