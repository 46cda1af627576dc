#include "radio/files/Rename.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace Radio {

namespace {

namespace fs = std::filesystem;

/** The name is taken by an empty file, which the other then replaces. */
bool reserveAndRename(const fs::path& from, const fs::path& to) {
    const int place = open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (place == -1) {
        return false;
    }
    close(place);
    if (rename(from.c_str(), to.c_str()) == 0) {
        return true;
    }
    const int reason = errno;
    unlink(to.c_str());
    errno = reason;
    return false;
}

} // namespace

bool renameToNew(const fs::path& from, const fs::path& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    const bool isUnknown = errno == EINVAL || errno == ENOSYS || errno == ENOTSUP;
    if (!isUnknown) {
        return false;
    }
    if (link(from.c_str(), to.c_str()) == 0) {
        return unlink(from.c_str()) == 0;
    }
    return hasNoLinks(errno) && reserveAndRename(from, to);
}

bool syncDirectoryOf(const fs::path& file) {
    const fs::path parent = file.parent_path();
    const int directory = open(parent.empty() ? "." : parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool isSynced = directory != -1 && fsync(directory) == 0;
    if (directory != -1) {
        close(directory);
    }
    return isSynced;
}

bool hasNoLinks(int reason) {
    return reason == EPERM || reason == ENOTSUP || reason == EMLINK || reason == ENOSYS;
}

} // namespace Radio
