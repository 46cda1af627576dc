#include "radio/session/HardwareMark.h"

#include "radio/files/InputError.h"
#include "radio/text/Words.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <system_error>

namespace Radio {

namespace {

namespace fs = std::filesystem;

/** One name for each device: a number made of its address. */
std::string markName(const std::string& device) {
    constexpr std::uint64_t basis = 0xcbf29ce484222325U; // FNV-1a
    constexpr std::uint64_t prime = 0x100000001b3U;
    std::uint64_t number = basis;
    for (const char letter : device) {
        number = (number ^ static_cast<unsigned char>(letter)) * prime;
    }
    std::ostringstream name;
    name << std::hex << std::setw(16) << std::setfill('0') << number << ".hardware";
    return name.str();
}

std::string now() {
    const std::time_t time = std::time(nullptr);
    std::tm local{};
    localtime_r(&time, &local);
    std::ostringstream text;
    text << std::put_time(&local, "%Y-%m-%d at %H:%M:%S");
    return text.str();
}

/** The first line of a small file. */
std::string firstLine(int descriptor) {
    std::array<char, 256> bytes{};
    const ssize_t count = pread(descriptor, bytes.data(), bytes.size(), 0);
    std::string text(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    return text.substr(0, text.find('\n'));
}

/** Makes a directory for its owner alone; those above it as any other. */
std::error_code makeFolder(const fs::path& folder) {
    std::error_code error;
    const bool isThere = fs::is_directory(folder, error);
    if (!isThere && folder.has_parent_path()) {
        fs::create_directories(folder.parent_path(), error);
    }
    if (isThere || mkdir(folder.c_str(), S_IRWXU) == 0 || errno == EEXIST) {
        return {};
    }
    return {errno, std::generic_category()};
}

/** Whether writing to a file writes no other one, and nobody else's. */
bool isOwnAlone(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1 &&
           (status.st_uid == geteuid() || geteuid() == 0);
}

} // namespace

HardwareMark::HardwareMark(const std::string& device, const fs::path& board, const fs::path& folder)
    : m_file(folder / markName(device)),
      m_text(device + "\n" + board.string() + "\n") {
    const std::error_code error = makeFolder(folder);
    errno = error.value();
    constexpr int flags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    constexpr mode_t ownersAlone = S_IRUSR | S_IWUSR;
    m_descriptor = error ? -1 : open(m_file.c_str(), flags, ownersAlone);
    const bool isLink = m_descriptor == -1 && errno == ELOOP;
    if (m_descriptor == -1 && !isLink) {
        fail("cannot be written");
    }
    if (isLink || !isOwnAlone(m_descriptor)) {
        if (!isLink) {
            close(m_descriptor);
        }
        throw InputError({m_file.string(), 0}, "is a link or somebody else's, expected an ordinary file of "
                                               "this user's for the mark that the hardware is in use");
    }
    const bool isHeld = flock(m_descriptor, LOCK_EX | LOCK_NB) != 0;
    const std::string holder = harmless(firstLine(m_descriptor));
    if (isHeld) {
        close(m_descriptor);
        throw InputError({board.string(), 0}, harmless(device) + " is driven by " +
                                                  (holder.empty() ? std::string("another program") : holder) +
                                                  ", expected one program at a time");
    }
    m_leftBehind = holder;
}

HardwareMark::~HardwareMark() {
    close(m_descriptor);
}

void HardwareMark::set() {
    // The file may be new: after a power cut its name has to be there as well.
    const int folder = open(m_file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool isNamed = folder != -1 && fsync(folder) == 0;
    if (folder != -1) {
        close(folder);
    }
    if (!isNamed || !write("process " + std::to_string(getpid()) + " on " + now() + "\n" + m_text)) {
        fail("could not be written");
    }
}

void HardwareMark::takeBack() {
    static_cast<void>(write(""));
}

/** What was there before stays until the new text is there. */
bool HardwareMark::write(const std::string& text) {
    return pwrite(m_descriptor, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()) &&
           ftruncate(m_descriptor, static_cast<off_t>(text.size())) == 0 && fsync(m_descriptor) == 0;
}

void HardwareMark::fail(const char* what) const {
    throw InputError({m_file.string(), 0}, what + (": " + std::generic_category().message(errno)) +
                                               ", expected a place for the mark that the hardware is in use");
}

} // namespace Radio
