#ifndef RADIOCTL_RECORD_RECORDPROGRAMS_H
#define RADIOCTL_RECORD_RECORDPROGRAMS_H

#include "radioctl/record/Selection.h"

#include <string>

/** What "radioctl record" does, one function for each of its commands. They give the exit code. */
namespace Radio::Recordings {

struct ShowOptions {
    bool json = false;
    /** Every call. */
    bool verbose = false;
    std::string file;
    Wanted wanted;
};

/** Shows what happened. */
int runShow(const ShowOptions& options);

} // namespace Radio::Recordings

#endif
