#ifndef RADIO_CALIBRATION_LOCKFILE_H
#define RADIO_CALIBRATION_LOCKFILE_H

#include <cstdint>
#include <filesystem>

namespace Radio::Calibration {

/**
 * Keeps a file to one program at a time of those that may write it. A lock of the file itself could be held
 * by whoever may only read it; this one is that of a file beside it, NAME.lock, which who may not write the
 * other may not even open. It goes with the object, and is taken over when it was left behind.
 */
class LockFile {
public:
    LockFile() = default;
    LockFile(LockFile&& other) noexcept;
    LockFile& operator=(LockFile&& other) noexcept;
    ~LockFile();

    enum class Answer : std::uint8_t {
        taken,
        heldByAnother,
        notAllowed, ///< somebody else left it, who alone may open it
        impossible, ///< no file can be made there; errno says why
    };
    /** Takes the lock of what is open as `descriptor`, and called `file`. */
    Answer take(const std::filesystem::path& file, int descriptor);

private:
    void release();

    std::filesystem::path m_path;
    int m_descriptor = -1;
};

} // namespace Radio::Calibration

#endif
