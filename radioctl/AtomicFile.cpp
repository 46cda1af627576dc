#include "AtomicFile.h"

#include "InputError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace Radioctl {

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
}

void AtomicFile::commit() {
    errno = 0;
    m_stream.close();
    if (!m_stream) {
        fail("could not be written");
    }
    if (m_beside.empty()) {
        return;
    }
    if (!sync(m_beside) || std::rename(m_beside.c_str(), m_place.c_str()) != 0) {
        fail("could not be written");
    }
    m_beside.clear();
    // The name is there in any case; that it stays there after a power failure is asked for, not insisted on.
    static_cast<void>(sync(m_place.parent_path()));
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
    const fs::path place = fs::canonical(file, error);
    for (unsigned number = 1;; ++number) {
        const fs::path backup = place.string() + ".~" + std::to_string(number) + "~";
        if (link(place.c_str(), backup.c_str()) == 0) {
            return fs::is_symlink(file, error) ? backup
                                               : fs::path(file.string() + backup.extension().string());
        }
        if (errno != EEXIST) {
            throw InputError({backup.string(), 0},
                             "cannot be made: " + std::generic_category().message(errno));
        }
    }
}

bool isSameFile(const std::filesystem::path& one, const std::filesystem::path& other) {
    namespace fs = std::filesystem;
    std::error_code error;
    if (fs::exists(one, error) && fs::exists(other, error)) {
        return fs::is_regular_file(one, error) && fs::equivalent(one, other, error);
    }
    const fs::path first = fs::weakly_canonical(one, error);
    return !error && first == fs::weakly_canonical(other, error);
}

} // namespace Radioctl
