#ifndef RADIOCTL_OPTIONS_EXITCODE_H
#define RADIOCTL_OPTIONS_EXITCODE_H

/** With what the program ends; the numbers are part of its manual. */
namespace Radio::ExitCode {

constexpr int good = 0;
constexpr int expectationFailed = 1;
constexpr int outsideLimits = 1;
constexpr int different = 1;
constexpr int wrongCommandLine = 2;
constexpr int unusableInput = 3;
constexpr int notBooted = 4;
/** Plus the number of the signal that ended it. */
constexpr int signalBase = 128;

} // namespace Radio::ExitCode

#endif
