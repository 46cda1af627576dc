#ifndef RADIO_CALIBRATION_CLAIM_H
#define RADIO_CALIBRATION_CLAIM_H

#include <cstdint>
#include <filesystem>
#include <string>

namespace Radio::Calibration {

/**
 * Keeps something to one program at a time that belongs to a file or a folder: a number of it, whatever that
 * stands for. The claim ends with the object, and with the program however it ends; it leaves no file
 * behind, and whoever can read can claim.
 */
class Claim {
public:
    /** Looks up what is at `path` at once, where symbolic links lead; claims nothing yet. */
    explicit Claim(const std::filesystem::path& path);
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;
    ~Claim();

    enum class Answer : std::uint8_t {
        taken,
        heldByAnother,
        impossible, ///< nothing is there that can be read, or its file system has no locks; errno says why
    };
    /** Claims `number`, which is not negative, until the object is destroyed. */
    Answer take(std::int32_t number);

private:
    Answer tryOnce(std::int32_t number);

    int m_descriptor;
    int m_whyClosed;
};

/** A number for a name, always the same. */
std::int32_t numberOf(const std::string& name);

} // namespace Radio::Calibration

#endif
