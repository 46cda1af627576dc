#ifndef RADIOCTL_COMPLETION_COMPLETIONSCRIPT_H
#define RADIOCTL_COMPLETION_COMPLETIONSCRIPT_H

namespace Radio {

/** The file radioctl.bash, as it is installed. */
extern const char* const bashCompletionScript;

} // namespace Radio

#endif
