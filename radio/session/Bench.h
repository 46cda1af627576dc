#ifndef RADIO_SESSION_BENCH_H
#define RADIO_SESSION_BENCH_H

#include "devices/Hardware.h"
#include "radio/board/Board.h"
#include "radio/session/HardwareMark.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Radio {

/**
 * The real hardware of a board, held by one program at a time from begin() to leave(). Belongs to the thread
 * that drives the radio, and must outlive the radio that is bound to it.
 */
class Bench {
public:
    /**
     * Touches no hardware. `board` and `listener` must outlive the object; `marks` is the folder for the
     * marks in which is said who drives which device. Throws InputError when the board has no hardware, and
     * when another program drives it.
     */
    Bench(const Board& board, Devices::HardwareListener& listener, const std::filesystem::path& marks);
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;
    /** Leaves the hardware, if nobody did. */
    ~Bench();

    /** Who left some of the hardware as it was, the last time; empty: nobody. */
    std::string leftBehind() const;
    /** Looks at all devices and attributes, and writes nothing. */
    std::vector<Devices::AttributeFinding> examine(bool reads) { return m_hardware.examine(reads); }
    /**
     * Connects everything, and marks the hardware as in use. From then on it may be written. Throws
     * InputError for the first attribute that is missing or cannot be reached, and when a value of a table
     * lies outside the range of the driver that it goes to; then nothing was written.
     */
    void begin();
    /**
     * Writes what drivers are to have in the end, and takes the mark back if all of that went well. Nothing
     * before begin() and after the first call.
     */
    std::vector<Devices::ExitWrite> leave();

    Devices::Hardware& hardware() { return m_hardware; }

private:
    const Board& m_board;
    /** One for each device and each file. */
    std::vector<std::unique_ptr<HardwareMark>> m_marks;
    Devices::Hardware m_hardware;
    bool m_isHeld = false;
};

/** Where programs mark which devices they drive. Throws InputError where there is no home for that. */
std::filesystem::path folderOfMarks();

/** What an attribute gets when a driver is written. */
struct AttributeWrite {
    /** For people, "synthesiser: adf4371/out:altvoltage0/frequency" for example. */
    std::string attribute;
    /** A number as text, or a command of an instrument; empty when the value cannot be written. */
    std::string text;
};
/** What a value of a driver becomes in hardware, in the order of writing; nothing for one that has none. */
std::vector<AttributeWrite> attributeWrites(const Board& board, std::string_view driver, std::int64_t value);

/** The drivers of a board that have no hardware: they stay simulated on a bench. */
std::vector<std::string> driversWithoutHardware(const Board& board);

} // namespace Radio

#endif
