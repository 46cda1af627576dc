#include "radio/board/HardwareReader.h"

#include "radio/board/WordList.h"
#include "radio/text/NearestName.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <string_view>

namespace Radio {

namespace {

using Devices::AttributeName;
using Devices::DeviceDescription;
using Devices::DriverHardware;
using Rounding = Devices::Conversion::Rounding;

constexpr double mostNumber = 1e15;
constexpr std::int32_t longestWait = 600000; // ms

constexpr std::array<Word<Rounding>, 3> roundings{{
    {"nearest", Rounding::nearest},
    {"down", Rounding::down},
    {"up", Rounding::up},
}};

std::optional<Rounding> roundingFromString(std::string_view word) {
    return valueOf(roundings, word);
}

std::chrono::milliseconds readTime(const TomlItem& table, std::string_view key,
                                   std::chrono::milliseconds otherwise) {
    const std::optional<TomlItem> item = table.find(key);
    if (!item) {
        return otherwise;
    }
    const std::int32_t time = item->integer(1);
    if (time > longestWait) {
        item->failExpecting("a time from 1 to " + std::to_string(longestWait) + " ms");
    }
    return std::chrono::milliseconds(time);
}

/** "HOST:PORT", the port of instruments where none is said. */
std::string readInstrument(const TomlItem& item) {
    const std::string expected = "a host and its port, such as \"192.168.2.9:5025\"";
    std::string address = item.nonEmptyText(expected);
    const std::size_t colon = address.rfind(':');
    const bool isBareV6 = address.front() == '[' && address.back() == ']';
    if (colon == std::string::npos || isBareV6) {
        return address + ":5025";
    }
    const std::string port = address.substr(colon + 1);
    const bool isNumber =
        !port.empty() && port.size() <= 5 && port.find_first_not_of("0123456789") == std::string::npos;
    if (colon == 0 || !isNumber || std::stoi(port) < 1 || std::stoi(port) > 65535) {
        item.failExpecting(expected);
    }
    return address;
}

DeviceDescription readDevice(const std::string& name, const TomlItem& item) {
    item.entries({"uri", "scpi", "time_limit", "error_query"});
    DeviceDescription device;
    device.name = name;
    const std::optional<TomlItem> uri = item.find("uri");
    const std::optional<TomlItem> scpi = item.find("scpi");
    if (uri.has_value() == scpi.has_value()) {
        item.fail("expected either uri, of IIO devices, or scpi, of an instrument, found " +
                  std::string(uri ? "both" : "neither"));
    }
    if (uri) {
        const std::string expected = "a URI that begins with local:, ip:, usb:, serial: or xml:";
        device.address = uri->nonEmptyText(expected);
        const std::string scheme = device.address.substr(0, device.address.find(':') + 1);
        if (scheme != "local:" && scheme != "ip:" && scheme != "usb:" && scheme != "serial:" &&
            scheme != "xml:") {
            uri->failExpecting(expected);
        }
    } else {
        device.kind = DeviceDescription::Kind::scpi;
        device.address = readInstrument(*scpi);
    }
    device.timeLimit = readTime(item, "time_limit", device.timeLimit);
    if (const std::optional<TomlItem> query = item.find("error_query")) {
        if (uri) {
            query->fail("only instruments are asked for errors");
        }
        device.errorQuery = query->nonEmptyText("a query, such as \"SYST:ERR?\"");
    }
    return device;
}

/** Reads what stands behind drivers and the sensor. */
class AttributeReader {
public:
    explicit AttributeReader(const std::vector<DeviceDescription>& devices) : m_devices(devices) {}

    /** The attribute under `key`, if it is there, of the device under "device" or, before that, `own`. */
    std::optional<AttributeName> read(const TomlItem& table, std::string_view key,
                                      std::string_view own = {}) const {
        const std::optional<TomlItem> item = table.find(key);
        if (!item) {
            return std::nullopt;
        }
        std::optional<TomlItem> device = own.empty() ? std::nullopt : table.find(own);
        if (!device) {
            device = table.find("device");
        }
        AttributeName name;
        name.attribute = item->nonEmptyText("an attribute");
        if (!device) {
            if (name.attribute.front() != '/') {
                item->failExpecting("the path of a file from the root on, or a device beside it");
            }
            return name;
        }
        name.device = device->nonEmptyText("the name of a device");
        check(*item, name, findDevice(*device), key == "read");
        return name;
    }

private:
    const DeviceDescription& findDevice(const TomlItem& item) const {
        const std::string name = item.text();
        const auto found = std::find_if(m_devices.begin(), m_devices.end(),
                                        [&name](const auto& device) { return device.name == name; });
        if (found == m_devices.end()) {
            std::vector<std::string> names;
            for (const DeviceDescription& device : m_devices) {
                names.push_back(device.name);
            }
            item.fail("no device " + inQuotes(name) + didYouMean(name, names) + ", expected " +
                      (names.empty() ? "one of [devices]" : joined(names, " or ")));
        }
        return *found;
    }

    static void check(const TomlItem& item, const AttributeName& name, const DeviceDescription& device,
                      bool isRead) {
        const std::string& text = name.attribute;
        if (device.kind == DeviceDescription::Kind::iio) {
            const auto slashes = std::count(text.begin(), text.end(), '/');
            const bool isWhole =
                text.front() != '/' && text.back() != '/' && text.find("//") == std::string::npos;
            if (slashes < 1 || slashes > 2 || !isWhole) {
                item.failExpecting(R"("DEVICE/ATTRIBUTE" or "DEVICE/CHANNEL/ATTRIBUTE")");
            }
            return;
        }
        const bool hasValue = text.find("{}") != std::string::npos;
        if (isRead && (hasValue || text.back() != '?')) {
            item.failExpecting("a query that ends with \"?\"");
        }
        if (!isRead && !hasValue) {
            item.failExpecting("a command with \"{}\" where the value stands");
        }
        if (text.find('\n') != std::string::npos) {
            item.failExpecting("one line");
        }
    }

    const std::vector<DeviceDescription>& m_devices;
};

Devices::Conversion readConversion(const TomlItem& table) {
    Devices::Conversion conversion;
    if (const std::optional<TomlItem> scale = table.find("scale")) {
        conversion.scale = scale->number(mostNumber);
        if (conversion.scale == 0) {
            scale->failExpecting("a number other than 0");
        }
    }
    if (const std::optional<TomlItem> offset = table.find("offset")) {
        conversion.offset = offset->number(mostNumber);
    }
    if (const std::optional<TomlItem> rounding = table.find("rounding")) {
        conversion.rounding = rounding->word(roundingFromString, wordsOf(roundings));
    }
    if (const std::optional<TomlItem> decimals = table.find("decimals")) {
        conversion.decimals = decimals->integer(0);
        if (conversion.decimals > 9) {
            decimals->failExpecting("0 to 9 decimals");
        }
    }
    return conversion;
}

/** A number in a driver's unit: of 64 bits, for those in Hz. */
std::int64_t readValue(const TomlItem& item) {
    const double value = item.number(mostNumber);
    if (!item.isInteger()) {
        item.failExpecting("a whole number");
    }
    return static_cast<std::int64_t>(value);
}

void readRangeOf(DriverHardware& hardware, const TomlItem& table) {
    if (const std::optional<TomlItem> range = table.find("range")) {
        const std::vector<TomlItem> ends = range->elements();
        range->requireCount(ends.size(), 2, "the lowest and the highest value");
        hardware.lowest = readValue(ends[0]);
        hardware.highest = readValue(ends[1]);
        if (*hardware.lowest > *hardware.highest) {
            range->fail("expected the lowest value first, found " + std::to_string(*hardware.highest) +
                        " after " + std::to_string(*hardware.lowest));
        }
    }
}

DriverHardware readDriverHardware(const std::string& name, const TomlItem& item,
                                  const AttributeReader& attributes) {
    item.entries({"device", "write", "negative", "read", "read_device", "scale", "offset", "rounding",
                  "decimals", "range", "on_exit"});
    DriverHardware hardware;
    hardware.driver = name;
    hardware.write = attributes.read(item, "write");
    hardware.negative = attributes.read(item, "negative");
    hardware.read = attributes.read(item, "read", "read_device");
    if (!hardware.write && !hardware.read) {
        item.fail("expected write, read or both, found neither");
    }
    if (hardware.negative && !hardware.write) {
        item.fail("expected write for the values above 0 beside negative");
    }
    hardware.conversion = readConversion(item);
    readRangeOf(hardware, item);
    if (hardware.negative && hardware.conversion.offset != 0) {
        item.get("offset", "").fail("0 of the driver has to be 0 on both sides, expected no offset");
    }
    if (const std::optional<TomlItem> value = item.find("on_exit")) {
        hardware.onExit = readValue(*value);
        if (!hardware.write) {
            value->fail("a driver that is only read cannot be written");
        }
        if (*hardware.onExit < hardware.lowest.value_or(*hardware.onExit) ||
            *hardware.onExit > hardware.highest.value_or(*hardware.onExit)) {
            value->failExpecting("a value within the range");
        }
    }
    return hardware;
}

bool isSame(const std::optional<AttributeName>& one, const std::optional<AttributeName>& other) {
    return one && other && one->device == other->device && one->attribute == other->attribute;
}

/** Two drivers that write one attribute would undo each other; the last of `drivers` is the one at `item`. */
void refuseSharing(const TomlItem& item, const std::vector<DriverHardware>& drivers) {
    const DriverHardware& last = drivers.back();
    for (const DriverHardware& other : drivers) {
        const bool isShared = isSame(last.write, other.write) || isSame(last.write, other.negative) ||
                              isSame(last.negative, other.write) || isSame(last.negative, other.negative);
        if (&other != &last && isShared) {
            item.fail("writes what " + inQuotes(other.driver) + " writes, expected an attribute of its own");
        }
    }
}

Devices::SensorDescription readSensor(const TomlItem& item, const AttributeReader& attributes) {
    item.entries({"device", "read", "chip", "feature", "scale", "offset", "interval", "time_limit"});
    Devices::SensorDescription sensor;
    sensor.attribute = attributes.read(item, "read");
    const std::optional<TomlItem> chip = item.find("chip");
    if (sensor.attribute.has_value() == chip.has_value()) {
        item.fail("expected either read, an attribute, or chip and feature, found " +
                  std::string(chip ? "both" : "neither"));
    }
    if (chip) {
        sensor.chip = chip->nonEmptyText("a chip of the hardware monitors, such as \"tmp102-i2c-1-48\"");
        sensor.feature = item.get("feature", "a feature of the chip, such as \"temp1\"")
                             .nonEmptyText("a feature of the chip, such as \"temp1\"");
    }
    const Devices::Conversion conversion = readConversion(item);
    sensor.scale = conversion.scale;
    sensor.offset = conversion.offset;
    sensor.interval = readTime(item, "interval", sensor.interval);
    sensor.timeLimit = readTime(item, "time_limit", sensor.timeLimit);
    return sensor;
}

} // namespace

HardwareOnBench readHardware(const TomlItem& root, const std::vector<DriverDescription>& drivers) {
    HardwareOnBench result;
    if (const std::optional<TomlItem> devices = root.find("devices")) {
        for (const auto& [name, item] : devices->entries()) {
            result.description.devices.push_back(readDevice(name, item));
        }
    }
    const AttributeReader attributes(result.description.devices);
    if (const std::optional<TomlItem> hardware = root.find("hardware")) {
        std::vector<std::string> names;
        names.reserve(drivers.size());
        for (const DriverDescription& driver : drivers) {
            names.push_back(driver.name);
        }
        for (const auto& [name, item] : hardware->entries()) {
            if (std::find(names.begin(), names.end(), name) == names.end()) {
                item.fail("the board has no driver " + inQuotes(name) + didYouMean(name, names) +
                          ", expected one of [drivers]");
            }
            result.description.drivers.push_back(readDriverHardware(name, item, attributes));
            refuseSharing(item, result.description.drivers);
            result.places[name] = item.place();
        }
    }
    if (const std::optional<TomlItem> sensor = root.find("sensor")) {
        result.description.sensor = readSensor(*sensor, attributes);
        result.sensorPlace = sensor->place();
    }
    return result;
}

} // namespace Radio
