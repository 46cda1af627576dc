#include "radio/files/AtomicFile.h"

#include "radio/files/FileWait.h"
#include "radio/files/InputError.h"
#include "radio/files/Rename.h"
#include "radio/text/Words.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string>
#include <string_view>
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

/** True for a link that somebody else made in a directory in which everybody may make files. */
bool isForeignLink(const fs::path& link, const struct stat& status) {
    const fs::path parent = link.parent_path();
    struct stat directory {};
    constexpr mode_t shared = S_ISVTX | S_IWOTH;
    return S_ISLNK(status.st_mode) && stat(parent.empty() ? "." : parent.c_str(), &directory) == 0 &&
           (directory.st_mode & shared) == shared && status.st_uid != geteuid() &&
           status.st_uid != directory.st_uid;
}

/** Whether one of the links by which a name leads to its file is such a one. */
bool leadsOverForeignLink(fs::path place) {
    constexpr int mostLinks = 40; // as the kernel follows
    for (int links = 0; links < mostLinks; ++links) {
        struct stat status {};
        std::error_code error;
        if (lstat(place.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
            return false;
        }
        if (isForeignLink(place, status)) {
            return true;
        }
        place = place.parent_path() / fs::read_symlink(place, error);
    }
    return false;
}

constexpr std::string_view ending = ".part";
constexpr std::size_t randomLetters = 6;

FileRemark toldTo = nullptr;

void tell(const std::string& remark) {
    if (toldTo != nullptr) {
        toldTo(harmless(remark));
    }
}

/** Whether a file is called as one that becomes `name` when it is whole. */
bool isPartOf(const std::string& file, const std::string& name) {
    return file.size() == name.size() + 1 + randomLetters + ending.size() && file.rfind(name + ".", 0) == 0 &&
           file.compare(file.size() - ending.size(), ending.size(), ending) == 0;
}

/** Whether a file is an ordinary one of this user's, which nobody writes any more. */
bool isLeft(const fs::path& file) {
    const int descriptor = open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    struct stat status {};
    const bool isOwn = descriptor != -1 && fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
                       status.st_uid == geteuid();
    const bool isFree = isOwn && flock(descriptor, LOCK_SH | LOCK_NB) == 0;
    if (descriptor != -1) {
        close(descriptor);
    }
    return isFree;
}

} // namespace

void setFileRemark(FileRemark remark) {
    toldTo = remark;
}

AtomicFile::AtomicFile(const fs::path& place) : m_name(place) {
    std::error_code error;
    m_place = fs::weakly_canonical(place, error);
    if (error) {
        m_place = place;
    }
    if (leadsOverForeignLink(place)) {
        fail("is a link that somebody else made, in a directory where everybody may make files", 0);
    }
    struct stat status {};
    const bool isThere = stat(place.c_str(), &status) == 0;
    if (isThere && S_ISDIR(status.st_mode)) {
        fail("cannot be written", EISDIR);
    }
    m_seen = {status.st_dev, status.st_ino};
    if (isThere && isStandardOutput(place)) {
        openDirectly(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0));
    } else if (isThere && !S_ISREG(status.st_mode)) {
        openDirectly(openPatiently(S_ISFIFO(status.st_mode)));
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

/** A pipe is waited for until somebody reads it, or a signal comes. Nothing but the file that was seen is
 * opened: whoever may write in its directory could have put a link in its place. */
int AtomicFile::openPatiently(bool isPipe) const {
    constexpr std::chrono::milliseconds pause(50);
    for (;;) {
        const int descriptor = open(m_name.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        const int reason = errno;
        struct stat status {};
        if (descriptor != -1 && fstat(descriptor, &status) == 0 && wasSeen(status)) {
            return descriptor;
        }
        if (descriptor != -1) {
            close(descriptor);
            fail("is another file by now", 0);
        }
        if (reason != ENXIO || !isPipe) {
            errno = reason;
            return -1;
        }
        if (stat(m_name.c_str(), &status) != 0 || !wasSeen(status)) {
            fail("is another file by now", 0);
        }
        if (const int signal = waitForFile(FileUse::writing, -1, pause)) {
            throw GivenUp({m_name.string(), 0}, signal);
        }
    }
}

bool AtomicFile::wasSeen(const struct stat& file) const {
    return std::pair(file.st_dev, file.st_ino) == m_seen;
}

void AtomicFile::openDirectly(int descriptor) {
    if (descriptor == -1) {
        fail("cannot be written", errno);
    }
    m_descriptor = descriptor;
    m_stream.attach(m_descriptor);
}

void AtomicFile::createBeside() {
    remarkOnWhatWasLeft();
    std::string name = m_place.string() + ".XXXXXX" + std::string(ending);
    openDirectly(mkostemps(name.data(), static_cast<int>(ending.size()), O_CLOEXEC));
    m_beside = name;
    // Until it is in its place, so that it is not taken for one that was left.
    static_cast<void>(flock(m_descriptor, LOCK_EX | LOCK_NB));
}

void AtomicFile::remarkOnWhatWasLeft() const {
    const fs::path parent = m_place.parent_path();
    std::error_code error;
    if (toldTo == nullptr) {
        return;
    }
    fs::directory_iterator entry(parent.empty() ? "." : parent, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const fs::path file = parent / entry->path().filename();
        if (isPartOf(file.filename().string(), m_place.filename().string()) && isLeft(file)) {
            tell(file.string() + " was left behind by a run that was killed while it wrote " +
                 m_name.string() + "; it may be deleted");
        }
    }
}

/** Has the file the owner, the group and the permissions of the one that it replaces, or of any new one and
 * those that its owner needs. Set-id bits are those of the file that was there from the beginning. */
void AtomicFile::takeOver(mode_t needed) {
    struct stat old {};
    if (lstat(m_place.c_str(), &old) != 0 || !S_ISREG(old.st_mode)) {
        static_cast<void>(fchmod(m_descriptor, usualPermissions() | needed));
        return;
    }
    // Who may not give a file away keeps it; the group is asked for by itself.
    if (fchown(m_descriptor, old.st_uid, old.st_gid) != 0) {
        static_cast<void>(fchown(m_descriptor, static_cast<uid_t>(-1), old.st_gid) == 0);
    }
    struct stat now {};
    const bool isOwners =
        fstat(m_descriptor, &now) == 0 && now.st_uid == old.st_uid && now.st_gid == old.st_gid;
    static_cast<void>(fchmod(m_descriptor, old.st_mode & (isOwners && wasSeen(old) ? 07777U : 01777U)));
    if (!isOwners) {
        remarkOnOwners({old.st_uid, old.st_gid});
    }
}

void AtomicFile::remarkOnOwners(const std::pair<unsigned, unsigned>& before) const {
    const auto text = [](const std::pair<unsigned, unsigned>& owners) {
        return "user " + std::to_string(owners.first) + " and group " + std::to_string(owners.second);
    };
    struct stat now {};
    if (fstat(m_descriptor, &now) == 0) {
        tell(m_name.string() + " belongs to " + text({now.st_uid, now.st_gid}) + " now, and no longer to " +
             text(before) + ", whom this user may not give it to");
    }
}

void AtomicFile::commit() {
    writeAll(0);
    if (!m_beside.empty()) {
        if (rename(m_beside.c_str(), m_place.c_str()) != 0) {
            fail("could not be written", errno);
        }
        m_beside.clear();
        static_cast<void>(flock(m_descriptor, LOCK_UN));
        // The name is there in any case; that it stays there after a power failure is asked for, not insisted
        // on.
        static_cast<void>(syncDirectoryOf(m_place));
    }
}

void AtomicFile::commitNew() {
    writeAll(S_IRUSR | S_IWUSR);
    if (!m_beside.empty()) {
        if (!renameToNew(m_beside, m_place)) {
            fail("could not be written", errno);
        }
        m_beside.clear();
        static_cast<void>(flock(m_descriptor, LOCK_UN));
        static_cast<void>(syncDirectoryOf(m_place));
    }
}

void AtomicFile::writeAll(mode_t needed) {
    if (!m_stream.flush()) {
        if (m_stream.signal() != 0) {
            throw GivenUp({m_name.string(), 0}, m_stream.signal());
        }
        fail("could not be written", m_stream.reason());
    }
    if (m_beside.empty()) {
        return;
    }
    takeOver(needed);
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
    struct stat status {};
    const bool isThere = !file.empty() && stat(file.c_str(), &status) == 0;
    if (isThere && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
        // Who reads a pipe would take the end of an attempt for that of what is to come.
        if (access(file.c_str(), W_OK) != 0) {
            throw InputError({file.string(), 0},
                             "cannot be written: " + std::generic_category().message(errno));
        }
    } else if (!file.empty()) {
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
