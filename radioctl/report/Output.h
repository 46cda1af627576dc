#ifndef RADIOCTL_REPORT_OUTPUT_H
#define RADIOCTL_REPORT_OUTPUT_H

#include "radio/board/Board.h"
#include "radio/files/InputError.h"
#include "radioctl/report/Reporter.h"

#include <functional>
#include <memory>
#include <string>

namespace Radio {

/** True when standard output is a terminal that wants colours: NO_COLOR is not set, and TERM is set to
 * something other than "dumb". */
bool wantsColour();

/** One that writes to standard output, in JSON or for people. `verbose` and `echo`: see TextStyle. */
std::unique_ptr<Reporter> makeReporter(bool json, bool verbose, bool echo);

/** Tells people, on standard error, what is wrong with their input. */
void complain(const std::string& message);

/** Tells people, on standard error, what they should know; the same thing once. */
void warnOnce(const std::string& remark);

/** Complains, with `json` as an "error" event on standard output as well; gives `exitCode`. */
int refuse(const std::string& message, bool json, int exitCode);

/**
 * What `action` gives. When it throws because of input that cannot be used, or because of a radio that does
 * not come up, people are told as by refuse(), and the exit code says which of the two it was.
 */
int refusing(bool json, const std::function<int()>& action);

/** How the message of an error goes on that another choice on the command line would have avoided. */
std::string adviceOf(const ChoiceError& error);

/** Why the value of --channel cannot be taken, and which can. */
std::string noSuchChannel(const Board& board, int number);

/** `exitCode`, unless what the program wrote did not arrive: then it complains, and the exit code says so. */
int checkedOutput(int exitCode);

} // namespace Radio

#endif
