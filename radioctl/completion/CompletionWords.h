#ifndef RADIOCTL_COMPLETION_COMPLETIONWORDS_H
#define RADIOCTL_COMPLETION_COMPLETIONWORDS_H

#include "radioctl/options/Options.h"

namespace Radio {

/** True for what the completion scripts of the shells ask, "radioctl completion-words WORD...". */
bool asksForCompletionWords(int argumentCount, const char* const* arguments);

/**
 * Answers it: for each word that can stand in the place of the last WORD a line with the word, a tab and what
 * it does; where a file can stand, ":files" and how the names of these files end. Gives the exit code.
 */
int printCompletionWords(const CommandLine::Parser& parser, int argumentCount, const char* const* arguments);

} // namespace Radio

#endif
