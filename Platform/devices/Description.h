#ifndef PLATFORM_DEVICES_DESCRIPTION_H
#define PLATFORM_DEVICES_DESCRIPTION_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** What is connected to a radio, and which driver is which attribute of it. Plain values. */
namespace Devices {

/** Something that is connected, and how it is reached. */
struct DeviceDescription {
    enum class Kind : std::uint8_t {
        iio,  ///< Industrial I/O: devices with channels and attributes, local or behind a server
        scpi, ///< an instrument that takes commands as lines over TCP
    };
    /** As drivers refer to it. */
    std::string name;
    Kind kind = Kind::iio;
    /** A URI, "local:" or "ip:192.168.2.1" for example; of an instrument the host and its port,
     * "192.168.2.9:5025". */
    std::string address;
    /** How long a write, a read or a connection may take. At least 1 ms. */
    std::chrono::milliseconds timeLimit{1000};
    /** Of an instrument: what is asked after each write, "SYST:ERR?" for example; an answer that does not
     * begin with the number 0 fails the write. Empty: nothing is asked. */
    std::string errorQuery{};
};

/** One attribute, that takes or gives a number as text. */
struct AttributeName {
    /** One of the devices; empty: a file. */
    std::string device{};
    /**
     * Of an IIO device "DEVICE/ATTRIBUTE", where DEVICE is a name, a label or an identifier such as
     * "iio:device0", and ATTRIBUTE the name of its file, as the kernel documents it; or
     * "DEVICE/CHANNEL/ATTRIBUTE", where CHANNEL is an identifier or a name, an output and an input with one
     * identifier being told apart by "out:" or "in:" before it. Of an instrument the command with "{}" where
     * the value stands, or the query. Of a file its path.
     */
    std::string attribute{};
};

/** How a number of a driver becomes one of the attribute: attribute = driver * scale + offset. */
struct Conversion {
    enum class Rounding : std::uint8_t { nearest, down, up };
    /** Not 0. */
    double scale = 1;
    double offset = 0;
    /** Of what has more decimals than the attribute takes; halves go away from zero. */
    Rounding rounding = Rounding::nearest;
    /** How many decimals the attribute takes, 0 to 9. */
    int decimals = 0;
};

/** What a driver is in hardware. */
struct DriverHardware {
    /** The driver's name. */
    std::string driver;
    /** What a write goes to; nothing: the driver is only read. */
    std::optional<AttributeName> write{};
    /**
     * The driver is the offset between two attributes: `write` takes the values above 0, this one those
     * below 0 without their sign, and the other of the two is 0. The one that becomes 0 is written first.
     */
    std::optional<AttributeName> negative{};
    /** What a read asks. Nothing: what is written, or the difference of the two; of an instrument, what was
     * written last. */
    std::optional<AttributeName> read{};
    Conversion conversion{};
    /** The lowest and the highest value that may be written, in the driver's unit. */
    std::optional<std::int64_t> lowest{};
    std::optional<std::int64_t> highest{};
    /** What is written when the radio is left, in the driver's unit. */
    std::optional<std::int64_t> onExit{};
};

/** Where the temperature comes from: an attribute, or a sensor of the hardware monitors. */
struct SensorDescription {
    /** Not with a chip. */
    std::optional<AttributeName> attribute{};
    /** A chip of the hardware monitors, as libsensors names it ("tmp102-i2c-1-48", wildcards allowed), and
     * its feature, "temp1" for example. */
    std::string chip{};
    std::string feature{};
    /** degrees Celsius = number * scale + offset; rounded to the nearest whole degree. */
    double scale = 1;
    double offset = 0;
    /** How often it is read. */
    std::chrono::milliseconds interval{1000};
    /** How long a read of a chip may take. */
    std::chrono::milliseconds timeLimit{1000};
};

struct HardwareDescription {
    std::vector<DeviceDescription> devices{};
    std::vector<DriverHardware> drivers{};
    std::optional<SensorDescription> sensor{};

    bool isEmpty() const { return drivers.empty() && !sensor; }
};

} // namespace Devices

#endif
