#include "devices/Hardware.h"

#include "devices/AttributeSource.h"
#include "devices/Connection.h"
#include "devices/DeviceCodes.h"
#include "devices/DriverAttribute.h"
#include "devices/FileAttribute.h"
#include "devices/HeldListener.h"
#include "devices/Links.h"
#include "devices/Patience.h"
#include "devices/SensorReader.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <utility>

namespace Devices {

namespace {

/** Stands for an attribute of a device that nobody described. */
class MissingDevice : public Attribute {
public:
    explicit MissingDevice(std::string name) : m_name(std::move(name)) {}

    int write(const std::string& /*number*/) override { return ENODEV; }
    int read(std::string& /*text*/) override { return ENODEV; }
    AttributeLook look() override { return {{}, {}, "no device " + m_name + " is described"}; }

private:
    std::string m_name;
};

std::string labelOf(const AttributeName& name) {
    return name.device.empty() ? name.attribute : name.device + ": " + name.attribute;
}

} // namespace

class Hardware::State {
public:
    State(HardwareDescription description, HardwareListener& listener);
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State();

    std::vector<AttributeFinding> examine(bool reads);
    DriverAttribute* find(std::string_view driver);
    std::vector<ExitWrite> leave();
    std::optional<int> poll();
    std::optional<int> readSensor();
    void startSensor();

    const HardwareDescription description;
    bool isForced = false;

private:
    NamedAttribute make(const AttributeName& name);
    Connection* connection(const std::string& device);
    std::vector<Connection*> connectionsOf(const DriverHardware& hardware);
    bool isWithinReach(const DriverHardware& hardware);
    std::vector<Connection*> writeLast(DriverAttribute& driver, ExitWrite& write);
    void insist(const std::vector<DriverAttribute*>& drivers, const std::vector<std::size_t>& left);
    void writeAgain(DriverAttribute& driver, ExitWrite& write);
    std::unique_ptr<SensorReader> makeSensor() const;
    AttributeFinding examineChip(bool reads);
    std::optional<int> temperature(const SensorReading& reading);

    HeldListener m_listener;
    std::vector<std::unique_ptr<Connection>> m_connections;
    std::vector<std::unique_ptr<DriverAttribute>> m_drivers;
    std::unique_ptr<SensorReader> m_sensor;
    std::optional<NamedAttribute> m_sensorAttribute;
    std::uint64_t m_sensorCount = 0;
    bool m_isSensorFailureTold = false;
};

Hardware::State::State(HardwareDescription whole, HardwareListener& listener)
    : description(std::move(whole)),
      m_listener(listener) {
    for (const DeviceDescription& device : description.devices) {
        m_connections.push_back(std::make_unique<Connection>(device, m_listener));
    }
    const auto makeAttribute = [this](const AttributeName& name) { return make(name); };
    for (const DriverHardware& driver : description.drivers) {
        m_drivers.push_back(std::make_unique<DriverAttribute>(driver, makeAttribute, m_listener, isForced));
    }
    if (description.sensor) {
        m_sensor = makeSensor();
        if (description.sensor->attribute) {
            m_sensorAttribute = make(*description.sensor->attribute);
        }
    }
}

/** All come to an end at the same time, so that two silent devices are waited for once. */
Hardware::State::~State() {
    for (const auto& device : m_connections) {
        device->stop();
    }
    if (m_sensor != nullptr) {
        m_sensor->stop();
    }
}

NamedAttribute Hardware::State::make(const AttributeName& name) {
    if (name.device.empty()) {
        return {labelOf(name), std::make_unique<FileAttribute>(name.attribute)};
    }
    Connection* const device = connection(name.device);
    if (device == nullptr) {
        return {labelOf(name), std::make_unique<MissingDevice>(name.device)};
    }
    const bool isWriteOnly = device->device().kind == DeviceDescription::Kind::scpi;
    return {labelOf(name), std::make_unique<DeviceAttribute>(*device, name.attribute), isWriteOnly};
}

Connection* Hardware::State::connection(const std::string& device) {
    for (const auto& candidate : m_connections) {
        if (candidate->device().name == device) {
            return candidate.get();
        }
    }
    return nullptr;
}

std::unique_ptr<SensorReader> Hardware::State::makeSensor() const {
    const SensorDescription sensor = description.sensor.value_or(SensorDescription{});
    if (!sensor.attribute) {
        return std::make_unique<SensorReader>(makeHwmonSource(sensor.chip, sensor.feature), sensor.interval,
                                              sensor.timeLimit);
    }
    std::optional<DeviceDescription> found;
    for (const DeviceDescription& device : description.devices) {
        if (device.name == sensor.attribute->device) {
            found = device;
        }
    }
    // A connection may have to be made before the read.
    const std::chrono::milliseconds limit = found ? 2 * found->timeLimit : fileTimeLimit;
    return std::make_unique<SensorReader>(
        std::make_unique<AttributeSource>(found, sensor.attribute->attribute), sensor.interval, limit);
}

std::vector<AttributeFinding> Hardware::State::examine(bool reads) {
    for (const auto& device : m_connections) {
        device->lookAgain();
        device->beginToConnect();
    }
    for (const auto& device : m_connections) {
        device->awaitConnection(false);
    }
    std::vector<AttributeFinding> findings;
    for (const auto& driver : m_drivers) {
        driver->examine(reads, findings);
    }
    if (m_sensorAttribute) {
        findings.push_back(examineAttribute({}, "temperature", *m_sensorAttribute, reads));
    } else if (m_sensor != nullptr) {
        findings.push_back(examineChip(reads));
    }
    return findings;
}

AttributeFinding Hardware::State::examineChip(bool reads) {
    const SensorDescription sensor = description.sensor.value_or(SensorDescription{});
    AttributeFinding finding{{}, sensor.chip + ": " + sensor.feature, "temperature"};
    // To find a chip is to read it.
    const SensorReading reading = m_sensor->readNow();
    finding.problem = reading.problem;
    finding.isReadable = reading.problem.empty();
    finding.isWritable = false;
    if (reads && reading.problem.empty()) {
        finding.value = textFor(std::llround(reading.number * 1000), {0.001, 0, {}, 3}).value_or("");
    }
    return finding;
}

DriverAttribute* Hardware::State::find(std::string_view driver) {
    for (const auto& candidate : m_drivers) {
        if (candidate->hardware().driver == driver) {
            return candidate.get();
        }
    }
    return nullptr;
}

std::vector<Connection*> Hardware::State::connectionsOf(const DriverHardware& hardware) {
    std::vector<Connection*> devices;
    for (const std::optional<AttributeName>* const name : {&hardware.write, &hardware.negative}) {
        if (Connection* const device = name->has_value() ? connection((*name)->device) : nullptr) {
            devices.push_back(device);
        }
    }
    return devices;
}

bool Hardware::State::isWithinReach(const DriverHardware& hardware) {
    const std::vector<Connection*> devices = connectionsOf(hardware);
    return std::all_of(devices.begin(), devices.end(), [](Connection* device) { return device->isUp(); });
}

/**
 * Gives the devices for want of which the write failed, their connections broken by it or not made: a write
 * may be what finds that. Whether there is a connection afterwards says nothing: another one may have been
 * made meanwhile, over which nothing was written.
 */
std::vector<Connection*> Hardware::State::writeLast(DriverAttribute& driver, ExitWrite& write) {
    const std::vector<Connection*> devices = connectionsOf(driver.hardware());
    std::vector<std::uint64_t> links(devices.size());
    std::transform(devices.begin(), devices.end(), links.begin(),
                   [](Connection* device) { return device->linkInUse(); });
    write.code = driver.write(write.value);
    std::vector<Connection*> missed;
    for (std::size_t i = 0; write.code != 0 && i < devices.size(); ++i) {
        if (links[i] == 0 || devices[i]->linkInUse() != links[i]) {
            missed.push_back(devices[i]);
        }
    }
    return missed;
}

/** Once more, and again for as long as connections break by it and there is time to make others. */
void Hardware::State::writeAgain(DriverAttribute& driver, ExitWrite& write) {
    const auto isOverdue = [](const Connection* device) { return device->isOverdue(); };
    std::vector<Connection*> missed;
    do {
        for (Connection* const device : missed) {
            device->awaitConnection(true);
        }
        m_listener.forget(write.driver);
        missed = writeLast(driver, write);
    } while (!missed.empty() && std::none_of(missed.begin(), missed.end(), isOverdue));
}

/** What is within reach is written before anything that is not is waited for, and nobody is told of either
 * before both were tried: a transmitter must not stay on for the sake of another, or of a terminal. */
std::vector<ExitWrite> Hardware::State::leave() {
    const Insistence insistence;
    m_listener.hold();
    std::vector<ExitWrite> writes;
    std::vector<DriverAttribute*> drivers;
    std::vector<std::size_t> left;
    for (const auto& driver : m_drivers) {
        const DriverHardware& hardware = driver->hardware();
        if (!hardware.onExit) {
            continue;
        }
        ExitWrite write{hardware.driver, *hardware.onExit, codeOf(ENOTCONN)};
        if (!isWithinReach(hardware) || !writeLast(*driver, write).empty()) {
            left.push_back(writes.size());
        }
        writes.push_back(std::move(write));
        drivers.push_back(driver.get());
    }
    insist(drivers, left);
    for (const std::size_t i : left) {
        writeAgain(*drivers[i], writes[i]);
    }
    m_listener.release();
    return writes;
}

/** Connects what the drivers that are `left` need. */
void Hardware::State::insist(const std::vector<DriverAttribute*>& drivers,
                             const std::vector<std::size_t>& left) {
    std::vector<Connection*> devices;
    for (const std::size_t i : left) {
        for (Connection* const device : connectionsOf(drivers[i]->hardware())) {
            devices.push_back(device);
        }
    }
    for (Connection* const device : devices) {
        device->beginToConnect();
    }
    for (Connection* const device : devices) {
        device->awaitConnection(true);
    }
}

void Hardware::State::startSensor() {
    if (m_sensor != nullptr) {
        m_sensor->start();
    }
}

std::optional<int> Hardware::State::poll() {
    for (const auto& device : m_connections) {
        device->poll();
    }
    if (m_sensor == nullptr) {
        return std::nullopt;
    }
    const SensorReading reading = m_sensor->last();
    if (reading.problem.empty() && reading.count == m_sensorCount) {
        return std::nullopt;
    }
    return temperature(reading);
}

std::optional<int> Hardware::State::readSensor() {
    return m_sensor != nullptr ? temperature(m_sensor->readNow()) : std::nullopt;
}

std::optional<int> Hardware::State::temperature(const SensorReading& reading) {
    m_sensorCount = reading.count;
    const SensorDescription sensor = description.sensor.value_or(SensorDescription{});
    const double degrees = std::round(reading.number * sensor.scale + sensor.offset);
    const bool isTemperature = std::abs(degrees) <= 1000000; // beyond, a scale is wrong
    if (reading.problem.empty() && isTemperature) {
        m_isSensorFailureTold = false;
        return static_cast<int>(degrees);
    }
    if (!m_isSensorFailureTold) {
        m_isSensorFailureTold = true;
        m_listener.sensorFailed(!isTemperature ? "it gives no temperature" : reading.problem);
    }
    return std::nullopt;
}

Hardware::Hardware(HardwareDescription description, HardwareListener& listener)
    : m_state(std::make_unique<State>(std::move(description), listener)) {}

Hardware::~Hardware() = default;

const HardwareDescription& Hardware::description() const {
    return m_state->description;
}

std::vector<AttributeFinding> Hardware::examine(bool reads) {
    return m_state->examine(reads);
}

Standalone::DriverBacking* Hardware::backing(std::string_view driver) {
    return m_state->find(driver);
}

void Hardware::setForced(bool isForced) {
    m_state->isForced = isForced;
}

void Hardware::startSensor() {
    m_state->startSensor();
}

std::optional<int> Hardware::readSensor() {
    return m_state->readSensor();
}

std::optional<int> Hardware::poll() {
    return m_state->poll();
}

std::vector<ExitWrite> Hardware::leave() {
    return m_state->leave();
}

std::string Hardware::kinds() {
    return kindsThereAre();
}

std::string Hardware::leftOut() {
    return kindsLeftOut();
}

} // namespace Devices
