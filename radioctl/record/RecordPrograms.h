#ifndef RADIOCTL_RECORD_RECORDPROGRAMS_H
#define RADIOCTL_RECORD_RECORDPROGRAMS_H

#include "radio/recording/Selection.h"

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

struct DiffOptions {
    bool json = false;
    /** All calls of operations that only one has. */
    bool verbose = false;
    std::string before;
    std::string after;
    Wanted wanted;
    /** Of operations, and of calls in each, so many that differ. */
    int limit = 100;
};

/** Shows what happened. */
int runShow(const ShowOptions& options);

/** Shows what differs between two. */
int runDiff(const DiffOptions& options);

} // namespace Radio::Recordings

#endif
