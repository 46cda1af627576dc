#ifndef RADIOCTL_COMMANDLINE_H
#define RADIOCTL_COMMANDLINE_H

namespace Radio {

/** Reads the command line and does what it says; gives the exit code. */
int runCommandLine(int argumentCount, const char* const* arguments);

} // namespace Radio

#endif
