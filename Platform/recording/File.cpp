#include "File.h"

#include "recording/RecordingFormat.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cinttypes>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace Recording::File {

namespace {

constexpr const char* self = "librecordingplatform.so";

std::array<char, PATH_MAX> s_path;
/** Where it is made. */
std::array<char, PATH_MAX> s_beside;

void tellError(int error) {
    tell(std::strerror(error)); // NOLINT(concurrency-mt-unsafe)
}

/** A text for a terminal, of bounded length: whatever is no printable ASCII as \xNN. */
class Shown {
public:
    explicit Shown(const char* text) {
        constexpr std::string_view digits = "0123456789abcdef";
        constexpr std::size_t longest = 4;
        for (; *text != '\0' && m_length + longest < m_text.size(); ++text) {
            const auto byte = static_cast<unsigned char>(*text);
            if (byte >= ' ' && byte < 0x7FU) {
                add(*text);
                continue;
            }
            add('\\');
            add('x');
            add(digits[byte / 16U]);
            add(digits[byte % 16U]);
        }
    }
    const char* text() const { return m_text.data(); }

private:
    void add(char letter) { m_text[m_length++] = letter; }

    std::size_t m_length = 0;
    std::array<char, 4096> m_text{};
};

/** RADIO_RECORDING_SIZE: a number of bytes, with K or M behind it if wished. */
std::size_t sizeWanted() {
    const char* const text = environment("RADIO_RECORDING_SIZE");
    if (text == nullptr) {
        return usualFile;
    }
    char* end = nullptr;
    errno = 0;
    std::uintmax_t bytes = std::strtoumax(text, &end, 10);
    if (*end == 'K' || *end == 'M') {
        const unsigned shift = *end == 'K' ? 10 : 20;
        bytes = bytes <= largestFile ? bytes << shift : bytes;
        ++end;
    }
    if (*text < '0' || *text > '9' || *end != '\0' || errno != 0 || bytes < smallestFile ||
        bytes > largestFile) {
        static_cast<void>(dprintf(STDERR_FILENO,
                                  "%s: RADIO_RECORDING_SIZE is \"%s\", expected 64K to 256M; taken as 4M\n",
                                  self, Shown(text).text()));
        return usualFile;
    }
    return static_cast<std::size_t>(bytes) / slotBytes * slotBytes;
}

/** Adds a text to another one; false when there is no room. */
template <typename Room>
bool add(Room& room, std::size_t& length, std::string_view text) {
    if (length + text.size() >= room.size()) {
        return false;
    }
    length += text.copy(&room[length], text.size());
    room[length] = '\0';
    return true;
}

/** RADIO_RECORDING, with the number of the process in the place of each "%p"; false when it is too long. */
bool fillInPath(std::string_view text) {
    std::array<char, 16> process{};
    static_cast<void>(std::snprintf(process.data(), process.size(), "%d", static_cast<int>(getpid())));
    std::size_t length = 0;
    for (std::size_t mark = text.find("%p"); mark != std::string_view::npos; mark = text.find("%p")) {
        if (!add(s_path, length, text.substr(0, mark)) || !add(s_path, length, process.data())) {
            return false;
        }
        text.remove_prefix(mark + 2);
    }
    return add(s_path, length, text);
}

/** Whether there is nothing at the place, or a file that may be replaced. */
bool isFree() {
    struct stat there {};
    return lstat(s_path.data(), &there) != 0 || S_ISREG(there.st_mode);
}

/** Makes a file that nobody else has; -1 and errno. One of these names may have been left by a process that
 * was killed just then. */
int openBeside() {
    constexpr unsigned most = 16;
    int file = -1;
    errno = EEXIST;
    for (unsigned attempt = 0; file < 0 && errno == EEXIST && attempt < most; ++attempt) {
        const int length = std::snprintf(s_beside.data(), s_beside.size(), "%s.%d-%u.new", s_path.data(),
                                         static_cast<int>(getpid()), attempt);
        if (length < 0 || static_cast<std::size_t>(length) >= s_beside.size()) {
            errno = ENAMETOOLONG;
            return -1;
        }
        file = ::open(s_beside.data(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    }
    return file;
}

/** Has the disk keep so much room; what was wrong otherwise. */
int reserve(int file, std::size_t bytes) {
    rlimit limit{};
    if (getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY && limit.rlim_cur < bytes) {
        return EFBIG; // found out by trying, it would be a signal
    }
    return posix_fallocate(file, 0, static_cast<off_t>(bytes));
}

/** Null and errno. */
char* map(int file, std::size_t bytes) {
    void* const mapped = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    return mapped != MAP_FAILED ? static_cast<char*>(mapped) : nullptr;
}

char* makeBeside(std::size_t bytes) {
    const int file = openBeside();
    if (file < 0) {
        tellError(errno);
        return nullptr;
    }
    int error = reserve(file, bytes);
    char* const memory = error == 0 ? map(file, bytes) : nullptr;
    if (memory == nullptr) {
        error = error != 0 ? error : errno;
        static_cast<void>(unlink(s_beside.data()));
        tellError(error);
    }
    static_cast<void>(close(file));
    return memory;
}

} // namespace

const char* environment(const char* name) {
    const char* const value = secure_getenv(name);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

char* make(std::size_t& bytes) {
    const char* const wanted = environment("RADIO_RECORDING");
    if (wanted == nullptr) {
        return nullptr;
    }
    if (!fillInPath(wanted)) {
        tellError(ENAMETOOLONG);
        return nullptr;
    }
    if (!isFree()) {
        tell("no regular file, and left as it is");
        return nullptr;
    }
    bytes = sizeWanted();
    return makeBeside(bytes);
}

bool keep() {
    if (rename(s_beside.data(), s_path.data()) == 0) {
        return true;
    }
    const int error = errno;
    static_cast<void>(unlink(s_beside.data()));
    tellError(error);
    return false;
}

void tell(const char* what, const char* then) {
    static_cast<void>(
        dprintf(STDERR_FILENO, "%s: %s: %s; %s\n", self, Shown(s_path.data()).text(), what, then));
}

} // namespace Recording::File
