#ifndef RADIO_FILES_RENAME_H
#define RADIO_FILES_RENAME_H

#include <filesystem>

namespace Radio {

/**
 * Gives a file a name that nothing has yet, and takes its old one; false, with the reason in errno, when it
 * cannot, EEXIST for a name that is taken. On file systems that know no such renaming (those of networks, for
 * example) the file has both names for a moment, or the new name an empty file: what loses the power there
 * loses nothing.
 */
bool renameToNew(const std::filesystem::path& from, const std::filesystem::path& to);

/** Has the names in the directory of a file reach the disk. */
bool syncDirectoryOf(const std::filesystem::path& file);

/** True for a link that cannot be made because the file system has none; `reason` is errno. */
bool hasNoLinks(int reason);

} // namespace Radio

#endif
