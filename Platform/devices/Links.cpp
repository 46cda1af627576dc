#include "devices/Links.h"

#include <cerrno>
#include <vector>

#ifdef RADIO_DEVICES_IIO
#include "devices/IioLink.h"
#endif
#ifdef RADIO_DEVICES_SCPI
#include "devices/ScpiLink.h"
#endif
#ifdef RADIO_DEVICES_HWMON
#include "devices/HwmonSource.h"
#endif

namespace Devices {

namespace {

#if !defined(RADIO_DEVICES_IIO) || !defined(RADIO_DEVICES_SCPI)
Opened leftOut(const std::string& kind, const std::string& package) {
    return {nullptr, ENOTSUP, "this build is without " + kind + ", which needs the package " + package};
}
#endif

#ifndef RADIO_DEVICES_HWMON
/** Stands where a sensor of the hardware monitors would. */
class NoSource : public SensorSource {
public:
    std::string read(double& /*number*/) override {
        return "this build is without hwmon, which needs the package libsensors-dev";
    }
};
#endif

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

} // namespace

Opened openLink(const DeviceDescription& device) {
    switch (device.kind) {
    case DeviceDescription::Kind::iio:
#ifdef RADIO_DEVICES_IIO
        return openIio(device);
#else
        return leftOut("iio", "libiio-dev");
#endif
    case DeviceDescription::Kind::scpi:
#ifdef RADIO_DEVICES_SCPI
        return openScpi(device);
#else
        return leftOut("scpi", "libasio-dev");
#endif
    }
    return {nullptr, EINVAL, "this kind of device is unknown"};
}

std::unique_ptr<SensorSource> makeHwmonSource(const std::string& chip, const std::string& feature) {
#ifdef RADIO_DEVICES_HWMON
    return std::make_unique<HwmonSource>(chip, feature);
#else
    static_cast<void>(chip);
    static_cast<void>(feature);
    return std::make_unique<NoSource>();
#endif
}

std::string kindsThereAre() {
    std::vector<std::string> kinds;
#ifdef RADIO_DEVICES_IIO
    kinds.push_back("iio " + iioVersion());
#endif
#ifdef RADIO_DEVICES_HWMON
    kinds.emplace_back("hwmon");
#endif
#ifdef RADIO_DEVICES_SCPI
    kinds.emplace_back("scpi");
#endif
    kinds.emplace_back("file");
    return joined(kinds);
}

std::string kindsLeftOut() {
    return joined({
#ifndef RADIO_DEVICES_IIO
        "iio (package libiio-dev)",
#endif
#ifndef RADIO_DEVICES_HWMON
        "hwmon (package libsensors-dev)",
#endif
#ifndef RADIO_DEVICES_SCPI
        "scpi (package libasio-dev)",
#endif
    });
}

} // namespace Devices
