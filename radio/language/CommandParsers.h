#ifndef RADIO_LANGUAGE_COMMANDPARSERS_H
#define RADIO_LANGUAGE_COMMANDPARSERS_H

#include "radio/language/Arguments.h"
#include "radio/session/Command.h"

#include <string_view>

/** Makes a command of the words behind its name: one function for each row of the command table. */
namespace Radio {

Command parseTune(Arguments& arguments);
Command parseTemperature(Arguments& arguments);
Command parseSet(Arguments& arguments);
Command parsePhase(Arguments& arguments);
Command parseFault(Arguments& arguments);
Command parseClear(Arguments& arguments);
Command parseInterface(Arguments& arguments);
Command parseObserve(Arguments& arguments);
Command parseTrace(Arguments& arguments);
Command parseShow(Arguments& arguments);
Command parseRead(Arguments& arguments);
Command parseWrite(Arguments& arguments);
Command parseWatch(Arguments& arguments);
Command parseWait(Arguments& arguments);
Command parseSweep(Arguments& arguments);
Command parseRepeat(Arguments& arguments);
Command parseInclude(Arguments& arguments);
Command parseHelp(Arguments& arguments);
Command parseQuit(Arguments& arguments);
Command parseExpectDriver(Arguments& arguments);
Command parseExpectFrequency(Arguments& arguments);
Command parseExpectRau(Arguments& arguments);
Command parseExpectNotified(Arguments& arguments);
Command parseExpectResult(Arguments& arguments);
Command parseExpectTrace(Arguments& arguments);
Command parseExpectNoTrace(Arguments& arguments);
Command parseExpectWrites(Arguments& arguments);
Command parseExpectLeakage(Arguments& arguments);

/** Whether "repeat" takes the command of that name. */
bool canBeRepeated(std::string_view command);
/** Takes "force" from the end of the line; whether it was there. */
bool takeForce(Arguments& arguments);

} // namespace Radio

#endif
