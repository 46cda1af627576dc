#ifndef RADIOCTL_COMPLETIONSCRIPT_H
#define RADIOCTL_COMPLETIONSCRIPT_H

namespace Radioctl {

/** The file radioctl.bash, as it is installed. */
extern const char* const bashCompletionScript;

} // namespace Radioctl

#endif
