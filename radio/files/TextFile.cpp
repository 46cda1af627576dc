#include "radio/files/TextFile.h"

#include "radio/files/FileWait.h"
#include "radio/files/InputError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <system_error>

namespace Radio {

namespace {

constexpr std::size_t pieceSize = std::size_t{256} * 1024;

[[noreturn]] void refuse(const Place& place) {
    throw InputError(place, "cannot be read: " + std::generic_category().message(errno));
}

/** A file that is open for reading; nobody waits for the other end of a pipe to be opened. */
class OpenFile {
public:
    explicit OpenFile(const std::filesystem::path& file)
        : m_descriptor(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {
        struct stat status {};
        m_mayKeepWaiting = isOpen() && fstat(m_descriptor, &status) == 0 && !S_ISREG(status.st_mode);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() {
        if (m_descriptor != -1) {
            close(m_descriptor);
        }
    }

    /** As read(), but waits until there is something. Throws GivenUp. */
    ssize_t readInto(char* to, std::size_t most, const Place& place) const {
        for (;;) {
            if (const int signal = m_mayKeepWaiting ? waitForFile(FileUse::reading, m_descriptor) : 0) {
                throw GivenUp(place, signal);
            }
            const ssize_t count = read(m_descriptor, to, most);
            if (count >= 0 || (errno != EINTR && errno != EAGAIN)) {
                return count;
            }
        }
    }
    bool isOpen() const { return m_descriptor != -1; }

private:
    int m_descriptor;
    bool m_mayKeepWaiting = false;
};

} // namespace

std::string readTextFile(const std::filesystem::path& file, std::size_t most, const std::string& what) try {
    const Place whole{file.string(), 0};
    std::error_code ignored;
    if (std::filesystem::is_directory(file, ignored)) {
        throw InputError(whole, "is a directory, expected " + what);
    }
    const OpenFile input(file);
    if (!input.isOpen()) {
        refuse(whole);
    }
    std::string text;
    ssize_t count = 1;
    while (count != 0 && text.size() <= most) {
        const std::size_t before = text.size();
        text.resize(std::min(before + pieceSize, most + 1));
        count = input.readInto(&text[before], text.size() - before, whole);
        if (count < 0) {
            refuse(whole);
        }
        text.resize(before + static_cast<std::size_t>(count));
    }
    return text;
} catch (const std::bad_alloc&) {
    throw InputError({file.string(), 0}, "needs more memory than there is");
}

OrdinaryFile::OrdinaryFile(const std::filesystem::path& file)
    : m_descriptor(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)),
      m_reason(m_descriptor == -1 ? errno : 0) {
    struct stat status {};
    m_isOrdinary = isOpen() && fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode);
    if (!m_isOrdinary) {
        m_stream.setstate(std::ios::failbit);
    }
}

OrdinaryFile::~OrdinaryFile() {
    if (isOpen()) {
        close(m_descriptor);
    }
}

OrdinaryFile::Buffer::int_type OrdinaryFile::Buffer::underflow() {
    ssize_t count = 0;
    do {
        count = read(m_descriptor, m_read.data(), m_read.size());
    } while (count == -1 && errno == EINTR);
    if (count == -1) {
        throw std::system_error(errno, std::generic_category()); // which makes the stream bad
    }
    setg(m_read.data(), m_read.data(), m_read.data() + count);
    return count == 0 ? traits_type::eof() : traits_type::to_int_type(m_read[0]);
}

} // namespace Radio
