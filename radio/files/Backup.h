#ifndef RADIO_FILES_BACKUP_H
#define RADIO_FILES_BACKUP_H

#include <filesystem>

namespace Radio {

/**
 * Gives what is at `file` a second name that nothing has yet: FILE.~1~, FILE.~2~ and so on. The file itself
 * stays where it is. Returns the new name, or an empty one when there is no ordinary file. Throws InputError.
 */
std::filesystem::path keepBackup(const std::filesystem::path& file);

/** The same, but the file is not there any more under its own name. Throws InputError. */
std::filesystem::path moveToBackup(const std::filesystem::path& file);

/** Gives a file that moveToBackup() renamed its own name back, unless something has that name by now. */
void moveBack(const std::filesystem::path& backup, const std::filesystem::path& file);

} // namespace Radio

#endif
