#ifndef RADIO_SESSION_SCRIPTLINE_H
#define RADIO_SESSION_SCRIPTLINE_H

#include "radio/files/InputError.h"
#include "radio/session/Command.h"

#include <string>

namespace Radio {

/** One command as it was written. */
struct ScriptLine {
    /** Without a file at the prompt. */
    Place place;
    /** The line without the white space around it. */
    std::string text;
    Command command;
};

} // namespace Radio

#endif
