#ifndef RADIO_LANGUAGE_COMMANDPARSERS_H
#define RADIO_LANGUAGE_COMMANDPARSERS_H

#include "radio/language/Arguments.h"
#include "radio/session/Command.h"

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

} // namespace Radio

#endif
