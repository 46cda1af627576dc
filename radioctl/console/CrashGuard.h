#ifndef RADIOCTL_CONSOLE_CRASHGUARD_H
#define RADIOCTL_CONSOLE_CRASHGUARD_H

namespace Radio {

/**
 * Has the terminal of standard input look again as it does now when the program crashes; for whoever is about
 * to change that. What the program ends with stays the same, and a crash that somebody looks after already is
 * left to them.
 */
void keepTerminalThroughCrashes();

} // namespace Radio

#endif
