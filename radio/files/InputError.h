#ifndef RADIO_FILES_INPUTERROR_H
#define RADIO_FILES_INPUTERROR_H

#include <stdexcept>
#include <string>
#include <utility>

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
    /** What is said of the place is made harmless. */
    InputError(const Place& place, const std::string& message);

    /** Where it is, for whoever shows places in a way of their own. */
    const Place& place() const { return m_place; }
    /** What the message says behind the place. */
    const std::string& text() const { return m_text; }

private:
    Place m_place;
    std::string m_text;
};

/** Input that was not waited for, since the process is to end: a signal came. */
class GivenUp : public InputError {
public:
    GivenUp(const Place& place, int signal) : InputError(place, "was not waited for"), m_signal(signal) {}

    int signal() const { return m_signal; }

private:
    int m_signal;
};

/**
 * Input that could be used if whoever asked had chosen otherwise. The message says what is wrong; how to
 * choose is known to those who took the choice, and differs between a command line, a page and a program.
 */
class ChoiceError : public InputError {
public:
    /** `choice` is what could be chosen, in the words of the engine's header; `among` says which values there
     * are. */
    ChoiceError(const Place& place, const std::string& message, std::string choice, std::string among = {})
        : InputError(place, message),
          m_choice(std::move(choice)),
          m_among(std::move(among)) {}
    /** What `error` says, where another choice would have avoided it. */
    ChoiceError(const InputError& error, std::string choice)
        : InputError(error),
          m_choice(std::move(choice)) {}

    const std::string& choice() const { return m_choice; }
    /** Empty: any. */
    const std::string& among() const { return m_among; }

private:
    std::string m_choice;
    std::string m_among;
};

} // namespace Radio

#endif
