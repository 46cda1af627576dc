#include "radio/calibration/LockFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace Radio::Calibration {

namespace {

namespace fs = std::filesystem;

/** Whoever may write the file may open the lock, and nobody else. */
mode_t permissionsFor(const struct stat& file) {
    const mode_t writers = file.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH);
    return S_IRUSR | S_IWUSR | writers | writers << 1U;
}

int openLock(const fs::path& path, const struct stat& file) {
    constexpr int usual = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const int made = open(path.c_str(), usual | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
    if (made != -1) {
        static_cast<void>(fchown(made, static_cast<uid_t>(-1), file.st_gid) == 0);
        struct stat lock {};
        const bool hasGroup = fstat(made, &lock) == 0 && lock.st_gid == file.st_gid;
        static_cast<void>(fchmod(made, permissionsFor(file) & (hasGroup ? 0666U : 0606U)));
        return made;
    }
    return errno == EEXIST ? open(path.c_str(), usual) : -1;
}

/** Whether a file still has its name: whoever held the lock takes the file away in the end. */
bool isStillThere(const fs::path& path, int descriptor) {
    struct stat opened {};
    struct stat named {};
    return fstat(descriptor, &opened) == 0 && lstat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

} // namespace

LockFile::LockFile(LockFile&& other) noexcept
    : m_path(std::move(other.m_path)),
      m_descriptor(std::exchange(other.m_descriptor, -1)) {}

LockFile& LockFile::operator=(LockFile&& other) noexcept {
    std::swap(m_path, other.m_path);
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

LockFile::~LockFile() {
    release();
}

void LockFile::release() {
    if (m_descriptor != -1) {
        // Before it is given up: nobody else has it then.
        static_cast<void>(unlink(m_path.c_str()));
        close(std::exchange(m_descriptor, -1));
    }
}

LockFile::Answer LockFile::take(const fs::path& file, int descriptor) {
    struct stat status {};
    std::error_code error;
    const fs::path place = fs::weakly_canonical(file, error);
    m_path = (error ? file : place).string() + ".lock";
    if (fstat(descriptor, &status) != 0) {
        return Answer::impossible;
    }
    // One that was let go while it was opened is not there any more.
    constexpr int attempts = 10;
    for (int n = 0; n < attempts; ++n) {
        const int lock = openLock(m_path, status);
        if (lock == -1 && errno == ENOENT) {
            continue;
        }
        if (lock == -1) {
            struct stat there {};
            const int reason = errno;
            const bool isThere = lstat(m_path.c_str(), &there) == 0;
            errno = reason;
            return isThere ? Answer::notAllowed : Answer::impossible;
        }
        if (flock(lock, LOCK_EX | LOCK_NB) != 0) {
            const int reason = errno;
            close(lock);
            errno = reason;
            return reason == EWOULDBLOCK ? Answer::heldByAnother : Answer::impossible;
        }
        if (isStillThere(m_path, lock)) {
            m_descriptor = lock;
            return Answer::taken;
        }
        close(lock);
    }
    return Answer::heldByAnother;
}

} // namespace Radio::Calibration
