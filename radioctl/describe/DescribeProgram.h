#ifndef RADIOCTL_DESCRIBE_DESCRIBEPROGRAM_H
#define RADIOCTL_DESCRIBE_DESCRIBEPROGRAM_H

#include <string>

/** What "radioctl describe" does. */
namespace Radio::Describing {

struct Options {
    bool json = false;
    std::string file;
    /** Where the script goes; empty: nobody wants one. */
    std::string script;
};

/** Describes the board; gives the exit code. */
int runDescribe(const Options& options);

} // namespace Radio::Describing

#endif
