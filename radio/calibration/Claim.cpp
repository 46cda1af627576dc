#include "radio/calibration/Claim.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <random>
#include <thread>

namespace Radio::Calibration {

namespace {

/**
 * Locks of the open file, not of the process: closing the file elsewhere in the program does not end them,
 * and two objects in one program exclude each other as two programs do.
 */
int lock(int descriptor, int command, short kind, std::int32_t number, struct flock& there) {
    there = {};
    there.l_type = kind;
    there.l_whence = SEEK_SET;
    there.l_start = number;
    there.l_len = 1;
    return fcntl(descriptor, command, &there);
}

} // namespace

Claim::Claim(const std::filesystem::path& path)
    : m_descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)),
      m_whyClosed(m_descriptor == -1 ? errno : 0) {}

Claim::~Claim() {
    if (m_descriptor != -1) {
        close(m_descriptor);
    }
}

Claim::Answer Claim::take(std::int32_t number) {
    // Two that begin at the same moment both see the other one, and would both leave.
    constexpr int attempts = 5;
    constexpr unsigned longestPause = 20;
    std::random_device random;
    Answer answer = tryOnce(number);
    for (int n = 1; n < attempts && answer == Answer::heldByAnother; ++n) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1 + random() % longestPause));
        answer = tryOnce(number);
    }
    return answer;
}

/**
 * A lock that excludes others wants a file that can be written, which a board that was installed need not be.
 * Therefore each takes one that it may share, and then asks whether it does: then another was first.
 */
Claim::Answer Claim::tryOnce(std::int32_t number) {
    if (m_descriptor == -1) {
        errno = m_whyClosed;
        return Answer::impossible;
    }
    struct flock there {};
    if (lock(m_descriptor, F_OFD_SETLK, F_RDLCK, number, there) != 0) {
        return errno == EAGAIN || errno == EACCES ? Answer::heldByAnother : Answer::impossible;
    }
    if (lock(m_descriptor, F_OFD_GETLK, F_WRLCK, number, there) != 0) {
        return Answer::impossible;
    }
    if (there.l_type == F_UNLCK) {
        return Answer::taken;
    }
    static_cast<void>(lock(m_descriptor, F_OFD_SETLK, F_UNLCK, number, there));
    return Answer::heldByAnother;
}

std::int32_t numberOf(const std::string& name) {
    constexpr std::uint32_t basis = 0x811c9dc5U; // FNV-1a
    constexpr std::uint32_t prime = 0x01000193U;
    std::uint32_t number = basis;
    for (const char letter : name) {
        number = (number ^ static_cast<unsigned char>(letter)) * prime;
    }
    return static_cast<std::int32_t>(number >> 1U);
}

} // namespace Radio::Calibration
