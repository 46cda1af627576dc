#ifndef RADIO_RECORDING_COMPARED_H
#define RADIO_RECORDING_COMPARED_H

#include "radio/recording/RecordingFile.h"

#include <cstdint>
#include <vector>

namespace Radio::Recordings {

/** What of a record counts when two are compared, as numbers; equal ones mean equal things. */
struct Compared {
    /** What was done with what. */
    std::uint64_t rough = 0;
    /** With which arguments, too. */
    std::uint64_t full = 0;
    /** And what was answered. */
    std::uint64_t outcome = 0;
};

/**
 * Says what of the records of a file counts. Neither times and threads do, nor numbers of objects, which each
 * recording gives in an order of its own, nor what stood in the place of an answer, nor where in the sources
 * a message was written.
 */
class Comparing {
public:
    explicit Comparing(const RecordingFile& file);

    Compared of(const Record& record) const;

private:
    const RecordingFile& m_file;
    /** What each object is known by, in the order in which the file has them. */
    std::vector<std::uint64_t> m_identities;
};

/** `numbers`, of which one more counts. */
std::uint64_t mixed(std::uint64_t numbers, std::uint64_t another);

/** The record says that something was looked up. */
bool isLookup(const Record& record);
/** And that it was found. */
bool isFound(const Record& record);

} // namespace Radio::Recordings

#endif
