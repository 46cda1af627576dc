#include "devices/HwmonSource.h"

#include "devices/NearNames.h"

#include <sensors/error.h>
#include <sensors/sensors.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace Devices {

namespace {

/** The library of the sensors has one state for all of the process, and nothing that keeps threads apart. */
std::mutex& sensorsMutex() {
    static std::mutex mutex;
    return mutex;
}

/**
 * The chips that there are now, as long as the object lives: one that comes later is found by the next
 * object. A mistake in the configuration of the sensors is no concern of who asks for one of them.
 */
class Sensors {
public:
    Sensors() {
        const auto parseError = std::exchange(sensors_parse_error, [](const char*, int) {});
        const auto parseErrorWithFile =
            std::exchange(sensors_parse_error_wfn, [](const char*, const char*, int) {});
        m_error = sensors_init(nullptr);
        sensors_parse_error = parseError;
        sensors_parse_error_wfn = parseErrorWithFile;
    }
    Sensors(const Sensors&) = delete;
    Sensors& operator=(const Sensors&) = delete;
    ~Sensors() {
        if (m_error == 0) {
            sensors_cleanup();
        }
    }

    int error() const { return m_error; }

private:
    int m_error = 0;
};

std::string nameOf(const sensors_chip_name& chip) {
    std::array<char, 200> name{};
    return sensors_snprintf_chip_name(name.data(), name.size(), &chip) > 0 ? name.data() : "";
}

/** The first chip that `pattern` fits, wildcards and all; null, and why. */
const sensors_chip_name* findChip(const std::string& pattern, std::string& problem) {
    sensors_chip_name wanted{};
    if (sensors_parse_chip_name(pattern.c_str(), &wanted) != 0) {
        problem = pattern + " names no chip of the hardware monitors";
        return nullptr;
    }
    int number = 0;
    const sensors_chip_name* const found = sensors_get_detected_chips(&wanted, &number);
    sensors_free_chip_name(&wanted);
    if (found == nullptr) {
        std::vector<std::string> names;
        number = 0;
        while (const sensors_chip_name* const chip = sensors_get_detected_chips(nullptr, &number)) {
            names.push_back(nameOf(*chip));
        }
        problem = "there is no chip " + pattern + alternatives(pattern, std::move(names));
    }
    return found;
}

/** The number of what gives the temperature of a feature; less than 0, and why. */
int findTemperature(const sensors_chip_name& chip, const std::string& name, std::string& problem) {
    std::vector<std::string> names;
    int number = 0;
    while (const sensors_feature* const feature = sensors_get_features(&chip, &number)) {
        const sensors_subfeature* const temperature =
            sensors_get_subfeature(&chip, feature, SENSORS_SUBFEATURE_TEMP_INPUT);
        if (temperature == nullptr) {
            continue;
        }
        const std::unique_ptr<char, decltype(&std::free)> label(sensors_get_label(&chip, feature),
                                                                &std::free);
        if (name == feature->name || (label != nullptr && name == label.get())) {
            return temperature->number;
        }
        names.emplace_back(feature->name);
    }
    problem = nameOf(chip) + " has no temperature " + name + alternatives(name, std::move(names));
    return -1;
}

} // namespace

HwmonSource::HwmonSource(std::string chip, std::string feature)
    : m_chip(std::move(chip)),
      m_feature(std::move(feature)) {}

HwmonSource::~HwmonSource() = default;

std::string HwmonSource::read(double& number) {
    const std::lock_guard lock(sensorsMutex());
    const Sensors sensors;
    if (sensors.error() != 0) {
        return std::string("the hardware monitors: ") + sensors_strerror(sensors.error());
    }
    std::string problem;
    const sensors_chip_name* const chip = findChip(m_chip, problem);
    if (chip == nullptr) {
        return problem;
    }
    const int temperature = findTemperature(*chip, m_feature, problem);
    if (temperature < 0) {
        return problem;
    }
    double value = 0;
    if (const int error = sensors_get_value(chip, temperature, &value); error < 0) {
        return m_chip + ", " + m_feature + ": " + sensors_strerror(error);
    }
    number = value;
    return {};
}

} // namespace Devices
