#include "radio/files/AtomicFile.h"

#include "radio/files/InputError.h"
#include "radio/files/Rename.h"

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

/** The permissions of any new file. */
mode_t usualPermissions() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666U & ~mask;
}

bool isSame(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/** In a directory in which everybody may make files, only its owner and that of a file may replace it. */
bool mayReplace(const fs::path& place, const struct stat& file) {
    const fs::path parent = place.parent_path();
    struct stat directory {};
    if (stat(parent.empty() ? "." : parent.c_str(), &directory) != 0 || (directory.st_mode & S_ISVTX) == 0) {
        return true;
    }
    const uid_t user = geteuid();
    return user == 0 || user == file.st_uid || user == directory.st_uid;
}

} // namespace

AtomicFile::AtomicFile(const fs::path& place) : m_name(place) {
    std::error_code error;
    m_place = fs::weakly_canonical(place, error);
    if (error) {
        m_place = place;
    }
    struct stat status {};
    const bool isThere = stat(place.c_str(), &status) == 0;
    if (isThere && S_ISDIR(status.st_mode)) {
        fail("cannot be written", EISDIR);
    }
    if (isThere && isStandardOutput(place)) {
        openDirectly(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0));
    } else if (isThere && !S_ISREG(status.st_mode)) {
        openDirectly(open(place.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC));
    } else if (isThere && !mayReplace(m_place, status)) {
        fail("belongs to somebody else, in a directory where only its owner may replace it", 0);
    } else {
        createBeside();
    }
}

AtomicFile::~AtomicFile() {
    if (!m_beside.empty() && isStillBeside()) {
        unlink(m_beside.c_str());
    }
    if (m_descriptor != -1) {
        close(m_descriptor);
    }
}

void AtomicFile::openDirectly(int descriptor) {
    if (descriptor == -1) {
        fail("cannot be written", errno);
    }
    m_descriptor = descriptor;
    m_stream.attach(m_descriptor);
}

void AtomicFile::createBeside() {
    std::string name = m_place.string() + ".XXXXXX";
    openDirectly(mkostemp(name.data(), O_CLOEXEC));
    m_beside = name;
}

/** Has the file the owner, the group and the permissions of the one that it replaces, or of any new one. */
void AtomicFile::takeOver() {
    struct stat old {};
    if (stat(m_place.c_str(), &old) != 0) {
        static_cast<void>(fchmod(m_descriptor, usualPermissions()));
        return;
    }
    // Who may not give a file away keeps it; the group is asked for by itself.
    if (fchown(m_descriptor, old.st_uid, old.st_gid) != 0) {
        static_cast<void>(fchown(m_descriptor, static_cast<uid_t>(-1), old.st_gid) == 0);
    }
    struct stat now {};
    const bool isOwners =
        fstat(m_descriptor, &now) == 0 && now.st_uid == old.st_uid && now.st_gid == old.st_gid;
    static_cast<void>(fchmod(m_descriptor, old.st_mode & (isOwners ? 07777U : 01777U)));
}

void AtomicFile::commit() {
    writeAll();
    if (!m_beside.empty()) {
        if (rename(m_beside.c_str(), m_place.c_str()) != 0) {
            fail("could not be written", errno);
        }
        m_beside.clear();
        // The name is there in any case; that it stays there after a power failure is asked for, not insisted
        // on.
        static_cast<void>(syncDirectoryOf(m_place));
    }
}

void AtomicFile::commitNew() {
    writeAll();
    if (!m_beside.empty()) {
        if (!renameToNew(m_beside, m_place)) {
            fail("could not be written", errno);
        }
        m_beside.clear();
        static_cast<void>(syncDirectoryOf(m_place));
    }
}

void AtomicFile::writeAll() {
    if (!m_stream.flush()) {
        fail("could not be written", m_stream.reason());
    }
    if (m_beside.empty()) {
        return;
    }
    takeOver();
    if (fsync(m_descriptor) != 0) {
        fail("could not be written", errno);
    }
    if (!isStillBeside()) {
        fail("could not be written: " + m_beside.string() + " is another file by now", 0);
    }
}

bool AtomicFile::isStillBeside() const {
    struct stat written {};
    struct stat named {};
    return fstat(m_descriptor, &written) == 0 && lstat(m_beside.c_str(), &named) == 0 &&
           isSame(written, named);
}

void AtomicFile::fail(const std::string& what, int reason) const {
    throw InputError({m_name.string(), 0},
                     what + (reason == 0 ? "" : ": " + std::generic_category().message(reason)));
}

void requireWritable(const fs::path& file) {
    if (!file.empty()) {
        const AtomicFile attempt(file);
    }
}

bool isStandardOutput(const fs::path& file) {
    struct stat named {};
    struct stat output {};
    return stat(file.c_str(), &named) == 0 && fstat(STDOUT_FILENO, &output) == 0 && isSame(named, output);
}

bool isSameFile(const fs::path& one, const fs::path& other) {
    std::error_code error;
    if (fs::exists(one, error) && fs::exists(other, error)) {
        return fs::is_regular_file(one, error) && fs::equivalent(one, other, error);
    }
    const fs::path first = fs::weakly_canonical(one, error);
    return !error && first == fs::weakly_canonical(other, error);
}

} // namespace Radio
