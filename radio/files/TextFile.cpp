#include "radio/files/TextFile.h"

#include "radio/files/InputError.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace Radio {

namespace {

constexpr std::size_t pieceSize = std::size_t{256} * 1024;

[[noreturn]] void refuse(const Place& place) {
    throw InputError(place, "cannot be read: " + std::generic_category().message(errno));
}

int waitForEver(int descriptor) {
    pollfd wanted{descriptor, POLLIN, 0};
    static_cast<void>(poll(&wanted, 1, -1));
    return 0;
}

ReadingWait readingWait = &waitForEver;

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
            if (const int signal = m_mayKeepWaiting ? readingWait(m_descriptor) : 0) {
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

std::string readTextFile(const std::filesystem::path& file, std::size_t most, const std::string& what) {
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
}

void setReadingWait(ReadingWait wait) {
    readingWait = wait;
}

} // namespace Radio
