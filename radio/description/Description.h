#ifndef RADIO_DESCRIPTION_DESCRIPTION_H
#define RADIO_DESCRIPTION_DESCRIPTION_H

#include "radio/recording/RecordingFile.h"

#include <cstddef>
#include <string>
#include <vector>

/** Boards, described from what a recorded radio did: docs/describe.md. */
namespace Radio::Describing {

struct Description {
    /** A board file. */
    std::string board;
    /** A script that does what was done, and expects what was written. */
    std::string script;
    std::size_t channels = 0;
    std::size_t drivers = 0;
    std::size_t variables = 0;
    std::size_t tables = 0;
    /** What board and script lack, as in "not known: the type of channel 2". */
    std::vector<std::string> unknown;
};

/**
 * Describes the board of which `file`, called `name`, was recorded. `when` says when that was. Throws
 * InputError for a recording of which nothing can be described, and what RecordingFile throws.
 */
Description describe(Recordings::RecordingFile& file, const std::string& name, const std::string& when);

} // namespace Radio::Describing

#endif
