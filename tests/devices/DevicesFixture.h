#ifndef TESTS_DEVICES_DEVICESFIXTURE_H
#define TESTS_DEVICES_DEVICESFIXTURE_H

#include "devices/DeviceCodes.h"
#include "devices/Hardware.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace DeviceTests {

using Lines = std::vector<std::string>;
using std::chrono::milliseconds;

/** Keeps what it is told, in short lines. */
class Listener : public Devices::HardwareListener {
public:
    void lost(const std::string& device, const std::string& why) override {
        lines.push_back("lost " + device + ": " + why);
    }
    void back(const std::string& device) override { lines.push_back("back " + device); }
    void failed(const std::string& driver, const std::string& attribute, std::int32_t code) override {
        lines.push_back("failed " + driver + " at " + attribute + ": " + Devices::meaningOf(code));
    }
    void sensorFailed(const std::string& why) override { lines.push_back("sensor: " + why); }

    /** What was told since the last call. */
    Lines told() { return std::exchange(lines, {}); }

    Lines lines;
};

inline milliseconds elapsed(const std::function<void()>& action) {
    const auto begin = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - begin);
}

/** Files of its own, hardware to be described, and a listener. */
class DevicesFixture : public ::testing::Test {
protected:
    DevicesFixture() {
        std::string pattern = (std::filesystem::temp_directory_path() / "devices-test-XXXXXX").string();
        directory = mkdtemp(pattern.data());
    }
    ~DevicesFixture() override {
        hardware.reset();
        std::filesystem::remove_all(directory);
    }

    std::string file(const std::string& name, const std::string& content) const {
        std::string path = directory / name;
        std::ofstream(path) << content;
        return path;
    }
    static std::string contentOf(const std::string& path) {
        std::ifstream stream(path);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    Devices::DriverHardware& addDriver(const std::string& name, const std::string& device,
                                       const std::string& attribute) {
        Devices::DriverHardware driver;
        driver.driver = name;
        driver.write = Devices::AttributeName{device, attribute};
        description.drivers.push_back(driver);
        return description.drivers.back();
    }

    Devices::Hardware& up() {
        hardware = std::make_unique<Devices::Hardware>(description, listener);
        return *hardware;
    }
    std::int32_t write(const std::string& driver, std::int64_t value) const {
        return hardware->backing(driver)->write(value);
    }
    /** What a read gives; nothing when it fails, which must leave the place for it as it was. */
    std::optional<std::int64_t> read(const std::string& driver) {
        std::int64_t value = -12345;
        code = hardware->backing(driver)->read(value);
        if (code != 0) {
            EXPECT_EQ(value, -12345);
            return std::nullopt;
        }
        return value;
    }
    /** Polls until the listener was told something, or for five seconds. */
    void awaitNews() {
        for (int i = 0; i < 500 && listener.lines.empty(); ++i) {
            std::this_thread::sleep_for(milliseconds(10));
            hardware->poll();
        }
    }

    std::filesystem::path directory;
    Devices::HardwareDescription description;
    Listener listener;
    std::unique_ptr<Devices::Hardware> hardware;
    /** Of the last read. */
    std::int32_t code = 0;
};

/** Devices that umockdev makes up in sysfs. */
class MockedDevices : public DevicesFixture {
protected:
    void SetUp() override {
        if (mocked().empty()) {
            GTEST_SKIP() << "only umockdev-run makes up devices, and this program runs without it";
        }
    }

    /** Where umockdev keeps what the program finds in /sys. */
    static std::string mocked() {
        const char* const top = std::getenv("UMOCKDEV_DIR");
        return top != nullptr ? std::string(top) + "/sys" : "";
    }
    static std::string attributePath(const std::string& device, const std::string& attribute) {
        return mocked() + "/bus/iio/devices/" + device + "/" + attribute;
    }
    static void set(const std::string& path, const std::string& content) { std::ofstream(path) << content; }
    static void replaceByLink(const std::string& path, const std::string& target) {
        std::filesystem::remove(path);
        std::filesystem::create_symlink(target, path);
    }
    static void restore(const std::string& path, const std::string& content) {
        std::filesystem::remove_all(path);
        set(path, content);
    }
};

} // namespace DeviceTests

#endif
