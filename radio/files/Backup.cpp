#include "radio/files/Backup.h"

#include "radio/files/InputError.h"
#include "radio/files/Rename.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace Radio {

namespace {

namespace fs = std::filesystem;

/** Has all that was written to a file reach the disk. */
bool sync(const fs::path& file) {
    const int descriptor = open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    const bool isSynced = descriptor != -1 && fsync(descriptor) == 0;
    if (descriptor != -1) {
        close(descriptor);
    }
    return isSynced;
}

/** Copies `file` to a place where nothing is yet; false, with the reason in errno, when it cannot. */
bool copyToNew(const fs::path& file, const fs::path& copy) {
    std::error_code error;
    if (fs::copy_file(file, copy, fs::copy_options::none, error) && sync(copy)) {
        return true;
    }
    errno = error ? error.value() : errno;
    return false;
}

/** Gives a file a second name; on a file system without second names, a copy. */
bool linkOrCopy(const fs::path& file, const fs::path& other) {
    if (link(file.c_str(), other.c_str()) == 0) {
        return true;
    }
    return hasNoLinks(errno) && copyToNew(file, other);
}

/** The first of FILE.~1~, FILE.~2~ and so on for which `make` succeeds. Throws InputError when none does. */
template <typename Make>
fs::path firstFree(const fs::path& file, const Make& make) {
    for (unsigned number = 1;; ++number) {
        fs::path backup = file.string() + ".~" + std::to_string(number) + "~";
        if (make(backup)) {
            static_cast<void>(syncDirectoryOf(backup));
            return backup;
        }
        if (errno != EEXIST) {
            throw InputError({backup.string(), 0},
                             "cannot be made: " + std::generic_category().message(errno));
        }
    }
}

} // namespace

fs::path keepBackup(const fs::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) {
        return {};
    }
    // Beside the file itself, where a link to it may lead from somewhere else.
    const fs::path place = fs::is_symlink(file, error) ? fs::canonical(file, error) : file;
    return firstFree(place, [&](const fs::path& backup) { return linkOrCopy(place, backup); });
}

fs::path moveToBackup(const fs::path& file) {
    return firstFree(file, [&](const fs::path& backup) { return renameToNew(file, backup); });
}

void moveBack(const fs::path& backup, const fs::path& file) {
    // What cannot be renamed once more is not lost: it is the backup that it was to be.
    static_cast<void>(renameToNew(backup, file));
    static_cast<void>(syncDirectoryOf(file));
}

} // namespace Radio
