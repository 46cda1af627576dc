#include "radio/files/AtomicFile.h"

#include "radio/files/InputError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace Radio {

namespace {

namespace fs = std::filesystem;

/** The permissions that a file has after it was written anew: those it had, or those of any new file. */
mode_t permissionsFor(const fs::path& place) {
    struct stat status {};
    if (stat(place.c_str(), &status) == 0) {
        return status.st_mode & 07777U;
    }
    const mode_t mask = umask(0);
    umask(mask);
    return 0666U & ~mask;
}

/** Has everything that was written to a file or a directory reach the disk. */
bool sync(const fs::path& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool synced = descriptor != -1 && fsync(descriptor) == 0;
    if (descriptor != -1) {
        close(descriptor);
    }
    return synced;
}

/** Has the names in the directory of a file reach the disk. */
bool syncDirectoryOf(const fs::path& file) {
    const fs::path directory = file.parent_path();
    return sync(directory.empty() ? fs::path(".") : directory);
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
    const bool hasLinks = errno != EPERM && errno != ENOTSUP && errno != EMLINK && errno != ENOSYS;
    return !hasLinks && copyToNew(file, other);
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

AtomicFile::AtomicFile(const fs::path& place) : m_name(place) {
    std::error_code error;
    const fs::file_status status = fs::status(place, error);
    m_place = fs::weakly_canonical(place, error);
    if (error) {
        m_place = place;
    }
    errno = 0;
    if (fs::is_directory(status)) {
        errno = EISDIR;
        fail("cannot be written");
    }
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        m_stream.open(place, std::ios::binary);
    } else {
        createBeside();
    }
    if (!m_stream.is_open()) {
        fail("cannot be written");
    }
}

AtomicFile::~AtomicFile() {
    if (!m_beside.empty()) {
        unlink(m_beside.c_str());
    }
}

void AtomicFile::createBeside() {
    std::string name = m_place.string() + ".XXXXXX";
    const int descriptor = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor == -1) {
        fail("cannot be written");
    }
    m_beside = name;
    fchmod(descriptor, permissionsFor(m_place));
    m_stream.open(m_beside, std::ios::binary);
    close(descriptor);
    if (!m_stream.is_open()) {
        unlink(m_beside.c_str());
    }
}

void AtomicFile::commit() {
    putInPlace(0);
}

void AtomicFile::commitNew() {
    putInPlace(RENAME_NOREPLACE);
}

void AtomicFile::putInPlace(unsigned flags) {
    errno = 0;
    m_stream.close();
    if (!m_stream) {
        fail("could not be written");
    }
    if (m_beside.empty()) {
        return;
    }
    if (!sync(m_beside) || renameat2(AT_FDCWD, m_beside.c_str(), AT_FDCWD, m_place.c_str(), flags) != 0) {
        fail("could not be written");
    }
    m_beside.clear();
    // The name is there in any case; that it stays there after a power failure is asked for, not insisted on.
    static_cast<void>(syncDirectoryOf(m_place));
}

void AtomicFile::fail(const char* what) const {
    const int reason = errno;
    throw InputError({m_name.string(), 0},
                     what + (reason == 0 ? "" : ": " + std::generic_category().message(reason)));
}

std::filesystem::path keepBackup(const std::filesystem::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) {
        return {};
    }
    // Beside the file itself, where a link to it may lead from somewhere else.
    const fs::path place = fs::is_symlink(file, error) ? fs::canonical(file, error) : file;
    return firstFree(place, [&](const fs::path& backup) { return linkOrCopy(place, backup); });
}

std::filesystem::path moveToBackup(const std::filesystem::path& file) {
    return firstFree(file, [&](const fs::path& backup) {
        return renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, backup.c_str(), RENAME_NOREPLACE) == 0;
    });
}

void moveBack(const std::filesystem::path& backup, const std::filesystem::path& file) {
    // What cannot be renamed once more is not lost: it is the backup that it was to be.
    static_cast<void>(renameat2(AT_FDCWD, backup.c_str(), AT_FDCWD, file.c_str(), RENAME_NOREPLACE));
    static_cast<void>(syncDirectoryOf(file));
}

void requireWritable(const fs::path& file) {
    if (!file.empty()) {
        const AtomicFile attempt(file);
    }
}

bool isSameFile(const std::filesystem::path& one, const std::filesystem::path& other) {
    std::error_code error;
    if (fs::exists(one, error) && fs::exists(other, error)) {
        return fs::is_regular_file(one, error) && fs::equivalent(one, other, error);
    }
    const fs::path first = fs::weakly_canonical(one, error);
    return !error && first == fs::weakly_canonical(other, error);
}

} // namespace Radio
