#include "devices/FileAttribute.h"

#include "devices/DeviceCodes.h"
#include "devices/Threads.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <string_view>

namespace Devices {

namespace {

using Clock = std::chrono::steady_clock;

/** An open file, or why it is none. */
class File {
public:
    File(const std::string& path, int flags)
        : m_descriptor(::open(path.c_str(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)),
          m_error(m_descriptor < 0 ? errno : 0) {
        if (m_descriptor >= 0 && ::fstat(m_descriptor, &m_status) != 0) {
            m_error = errno;
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }

    int error() const { return m_error; }
    int descriptor() const { return m_descriptor; }
    bool isRegular() const { return S_ISREG(m_status.st_mode); }
    bool isPipe() const { return S_ISFIFO(m_status.st_mode); }
    off_t size() const { return m_status.st_size; }

    /** Waits for what poll() calls `events`; 0, or an error number. `found` is what there is. */
    int await(short events, Clock::time_point deadline, short& found) const {
        while (true) {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
            pollfd waiting{m_descriptor, events, 0};
            const int count = ::poll(&waiting, 1, left > 0 ? static_cast<int>(left) : 0);
            if (count > 0) {
                found = waiting.revents;
                return 0;
            }
            if (count == 0) {
                return ETIMEDOUT;
            }
            if (errno != EINTR) {
                return errno;
            }
        }
    }

private:
    int m_descriptor;
    int m_error;
    struct stat m_status {};
};

/** Writes everything: at once, where the file takes it. */
int writeAll(const File& file, std::string_view text) {
    const Clock::time_point deadline = Clock::now() + fileTimeLimit;
    while (!text.empty()) {
        const ssize_t count = ::write(file.descriptor(), text.data(), text.size());
        short found = 0;
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EAGAIN) {
            if (const int error = file.await(POLLOUT, deadline, found); error != 0) {
                return error;
            }
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

constexpr std::size_t longestText = 4096;

/** What a read adds to `text`: how much, nothing where there is nothing yet; or an error number. */
int readMore(const File& file, std::string& text, std::optional<std::size_t>& count) {
    std::array<char, longestText> bytes{};
    ssize_t got = 0;
    do {
        got = ::read(file.descriptor(), bytes.data(), bytes.size());
    } while (got < 0 && errno == EINTR);
    if (got < 0) {
        return errno == EAGAIN ? 0 : errno;
    }
    count = static_cast<std::size_t>(got);
    text.append(bytes.data(), *count);
    return 0;
}

/** Reads the first line of a pipe or a terminal, as soon as it is whole or nobody is left to end it. */
int readLine(const File& file, std::string& text) {
    const Clock::time_point deadline = Clock::now() + fileTimeLimit;
    while (true) {
        std::optional<std::size_t> count;
        if (const int error = readMore(file, text, count); error != 0) {
            return error;
        }
        if (const std::size_t end = text.find('\n'); end != std::string::npos) {
            text.resize(end);
            return 0;
        }
        if (text.size() > longestText) {
            return EPROTO;
        }
        if (count == std::optional<std::size_t>{0} && !text.empty()) {
            return 0;
        }
        short found = 0;
        if (const int error = file.await(POLLIN, deadline, found); error != 0) {
            return error;
        }
        if ((found & POLLIN) == 0) {
            return text.empty() ? ENODATA : 0; // who wrote it has gone
        }
    }
}

} // namespace

AttributeLook lookAtFile(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        return {{}, {}, path + ": " + meaningOf(codeOf(errno))};
    }
    if (S_ISDIR(status.st_mode)) {
        return {{}, {}, path + " is a directory"};
    }
    AttributeLook look{::access(path.c_str(), R_OK) == 0, ::access(path.c_str(), W_OK) == 0, {}};
    if (path.rfind("/sys/", 0) == 0) {
        // The kernel holds even root to the mode of an attribute.
        look.isReadable = *look.isReadable && (status.st_mode & (S_IRUSR | S_IRGRP | S_IROTH)) != 0;
        look.isWritable = *look.isWritable && (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) != 0;
    }
    return look;
}

int FileAttribute::write(const std::string& number) {
    const File file(m_path, O_WRONLY);
    if (file.error() != 0) {
        return file.error();
    }
    const std::string line = number + '\n';
    int error = 0;
    if (file.isPipe()) {
        BrokenPipeGuard guard;
        error = writeAll(file, line);
        if (error != 0) {
            guard.failed();
        }
    } else {
        error = writeAll(file, line);
    }
    if (error == 0 && file.isRegular() && file.size() > static_cast<off_t>(line.size()) &&
        ::ftruncate(file.descriptor(), static_cast<off_t>(line.size())) != 0) {
        // A longer number was there, and its end would be left. Only then, so that a write that fails leaves
        // what was there. In sysfs, where every file claims a size of its own, there is nothing to be cut
        // off.
        error = m_path.rfind("/sys/", 0) == 0 ? 0 : errno;
    }
    return error;
}

int FileAttribute::read(std::string& text) {
    const File file(m_path, O_RDONLY);
    if (file.error() != 0) {
        return file.error();
    }
    std::string got;
    std::optional<std::size_t> count;
    const int error = file.isRegular() ? readMore(file, got, count) : readLine(file, got);
    if (error == 0) {
        text = std::move(got);
    }
    return error;
}

} // namespace Devices
