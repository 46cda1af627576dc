#ifndef RADIO_FILES_TEXTFILE_H
#define RADIO_FILES_TEXTFILE_H

#include <cstddef>
#include <filesystem>
#include <string>

namespace Radio {

/**
 * The content of a file; of one that is larger than `most` bytes, one byte more than these, so that the
 * caller sees it. `what` says what it should be. Throws InputError.
 */
std::string readTextFile(const std::filesystem::path& file, std::size_t most, const std::string& what);

} // namespace Radio

#endif
