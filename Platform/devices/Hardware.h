#ifndef PLATFORM_DEVICES_HARDWARE_H
#define PLATFORM_DEVICES_HARDWARE_H

#include "Visibility.h"
#include "devices/Description.h"
#include "standalone/DriverBank.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Devices {

/** Is told of connections and of the sensor, on the thread that drives the radio. */
class RADIO_API HardwareListener {
public:
    HardwareListener() = default;
    HardwareListener(const HardwareListener&) = delete;
    HardwareListener& operator=(const HardwareListener&) = delete;
    virtual ~HardwareListener() = default;

    /** The connection to a device is gone, told once; until it is back, every write and read fails at once.
     */
    virtual void lost(const std::string& device, const std::string& why) = 0;
    /** It is there again. */
    virtual void back(const std::string& device) = 0;
    /** A write or read failed; `attribute` says where, for people, and `code` how. */
    virtual void failed(const std::string& driver, const std::string& attribute, std::int32_t code) = 0;
    /** The sensor gives no temperature any more, told once until it does. */
    virtual void sensorFailed(const std::string& why) = 0;
};

/** How one attribute was found. */
struct AttributeFinding {
    /** Of the driver that it stands behind; empty for the temperature sensor. */
    std::string driver;
    /** For people, for example "synthesiser: adf4371/out:altvoltage0/frequency". */
    std::string attribute;
    /** What it is for: "write", "negative", "read" or "temperature". */
    std::string_view use;
    /** Nothing where only trying would tell. */
    std::optional<bool> isReadable{};
    std::optional<bool> isWritable{};
    /** What it has, in its own unit, as text; empty: it was not read. */
    std::string value{};
    /** Why it cannot be used as the description wants it; empty: it can. */
    std::string problem{};
};

/** What was written when the radio was left. */
struct ExitWrite {
    std::string driver;
    std::int64_t value;
    std::int32_t code;
};

/**
 * The real hardware of one radio: its connections, and what stands behind each driver that has hardware.
 *
 * Used on one thread, that which drives the radio; it owns threads of its own, which bring lost connections
 * back and read the sensor, and which touch nothing that a caller sees. A write or read takes no longer than
 * the time limit of its device, and as long as the kernel's driver needs for a local attribute or a file; a
 * server of IIO devices has that time for each part of its answer, so that one whose answer comes in drops is
 * waited for longer.
 *
 * While it connects through libiio or waits for such a server, the C library's `stderr` is replaced for the
 * whole process, as libiio prints there: what the library's thread prints is dropped, and what others print
 * is passed on to the stream that was there before. The program must not assign, close or reopen `stderr`
 * meanwhile. What is printed otherwise, through std::cerr or to descriptor 2, is not touched. With another C
 * library than GNU's nothing is replaced, and libiio's words are seen.
 */
class RADIO_API Hardware {
public:
    /** Connects nothing yet. `listener` must outlive the object. */
    Hardware(HardwareDescription description, HardwareListener& listener);
    Hardware(const Hardware&) = delete;
    Hardware& operator=(const Hardware&) = delete;
    /** Writes nothing: leave() is for that. */
    ~Hardware();

    const HardwareDescription& description() const;

    /**
     * Connects every device and finds every attribute, writing nothing. What is found comes in the order of
     * the description: for each driver what it writes, then its negative side, then what it reads.
     * `reads`: also reads what can be read. A device that cannot be reached is told with each of its
     * attributes. May be called again, and then also finds what has come since.
     */
    std::vector<AttributeFinding> examine(bool reads);

    /** What stands behind a driver; null when it has no hardware. The object's, as long as it lives. */
    Standalone::DriverBacking* backing(std::string_view driver);
    /** From now on values outside a driver's range are written, too; off at the start. */
    void setForced(bool isForced);

    /** Has the sensor read at its interval from now on. Nothing without a sensor. */
    void startSensor();
    /** The sensor read once, now; nothing when there is none or it fails. In degrees Celsius. */
    std::optional<int> readSensor();
    /** Tells the listener what happened on other threads since, and gives the temperature if it was read
     * since the last call. Returns at once. */
    std::optional<int> poll();

    /**
     * Writes what drivers are to have when the radio is left, even where a connection was lost and has to be
     * made first: what is connected before anything that is not, each in the order of the description. The
     * listener is told after the last write. What was written, and how it went, in the order of the
     * description. To be called at the end, any number of times.
     */
    std::vector<ExitWrite> leave();

    /** Which kinds of devices this library was built with, for people: "iio 0.24, hwmon, scpi, file". */
    static std::string kinds();
    /** What was left out, and the package it wants; empty when nothing was. */
    static std::string leftOut();

private:
    class State;
    std::unique_ptr<State> m_state;
};

/** Asked every now and then while a device is waited for, on any thread; false: nobody wants to wait any
 * longer. */
using GoesOn = bool (*)();
/**
 * How this process waits for devices: what it waits for is given up, as late, half a second after `goesOn`
 * says so, however long the device may take. What leave() writes is waited for all the same, as long as its
 * device may take: a transmitter must not stay on. Null, as at the beginning: every device has its time.
 */
RADIO_API void setPatience(GoesOn goesOn);

/** The attribute's text for a driver's value: "6300000000" for 6300000 with the scale 1000. Nothing when the
 * value cannot be said exactly enough, beyond 2^53. */
RADIO_API std::optional<std::string> textFor(std::int64_t value, const Conversion& conversion);

/** One write of several that a driver's value becomes. */
struct PlannedWrite {
    AttributeName attribute;
    /** A number, or the whole command of an instrument; empty when the value cannot be said. */
    std::string text;
};
/** What a driver's value becomes, in the order of writing; nothing for one that is only read. Where the value
 * cannot be said, no text is there, as nothing would be written. The range of the driver does not count. */
RADIO_API std::vector<PlannedWrite> plannedWrites(const DriverHardware& hardware, std::int64_t value);

/** The driver's value, rounded to the nearest, for what an attribute gave; nothing when that is no number, or
 * one that no driver takes. */
RADIO_API std::optional<std::int64_t> valueOf(std::string_view text, const Conversion& conversion);

} // namespace Devices

#endif
