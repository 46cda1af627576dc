#include "radio/session/HardwareMark.h"

#include "radio/files/InputError.h"
#include "radio/text/Words.h"

#include <fcntl.h>
#include <sys/file.h>
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

} // namespace

HardwareMark::HardwareMark(const std::string& device, const fs::path& board, const fs::path& folder)
    : m_file(folder / markName(device)),
      m_text(device + "\n" + board.string() + "\n") {
    std::error_code error;
    fs::create_directories(folder, error);
    errno = error ? error.value() : 0;
    constexpr mode_t ownersAlone = S_IRUSR | S_IWUSR;
    m_descriptor = error ? -1 : open(m_file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, ownersAlone);
    if (m_descriptor == -1) {
        fail("cannot be written");
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
