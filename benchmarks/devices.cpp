// benchmark_devices URI...: what a tune costs whose drivers are attributes of IIO devices, over what writing
// the same attributes with libiio alone does. Both take turns in small blocks, so that whatever else the
// computer does meets both.

#include "BenchmarkRadio.h"
#include "devices/Hardware.h"

#include <iio.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Benchmarks::BenchmarkRadio;

constexpr int blocks = 400;
constexpr int tunesInABlock = 20;
constexpr unsigned long carriers[] = {18'000'000, 18'250'000};

/** Nothing may fail here. */
class Listener : public Devices::HardwareListener {
public:
    void lost(const std::string& device, const std::string& why) override { fail(device + ": " + why); }
    void back(const std::string& /*device*/) override {}
    void failed(const std::string& /*driver*/, const std::string& attribute, std::int32_t /*code*/) override {
        fail(attribute);
    }
    void sensorFailed(const std::string& why) override { fail(why); }

private:
    static void fail(const std::string& what) {
        std::fprintf(stderr, "%s\n", what.c_str());
        std::exit(EXIT_FAILURE);
    }
};

struct Write {
    std::string driver;
    long long value;
};

/** What a tune writes. */
std::vector<Write> writesOf(BenchmarkRadio& radio, unsigned long carrier) {
    Standalone::Calls& calls = radio.platform().calls();
    calls.setRecording(true);
    const std::size_t before = calls.journal().size();
    radio.module().setTxFrequency(carrier);
    std::vector<Write> writes;
    for (std::size_t i = before; i < calls.journal().size(); ++i) {
        const Standalone::Call& call = calls.journal()[i];
        if (call.operation == Standalone::Operation::driverWrite ||
            call.operation == Standalone::Operation::driverWriteBuffer) {
            writes.push_back({call.object, call.value});
        }
    }
    calls.setRecording(false);
    return writes;
}

struct Attribute {
    std::string driver;
    std::string channel;
};

/** An attribute for each driver that is written. */
std::vector<Attribute> attributesFor(const std::vector<Write>& writes) {
    std::vector<Attribute> attributes;
    for (const Write& write : writes) {
        if (std::none_of(attributes.begin(), attributes.end(),
                         [&](const Attribute& known) { return known.driver == write.driver; })) {
            attributes.push_back({write.driver, "altvoltage" + std::to_string(attributes.size())});
        }
    }
    return attributes;
}

/** The same writes with libiio alone, everything found beforehand. */
class Alone {
public:
    Alone(const std::string& uri, const std::vector<Attribute>& attributes) : m_uri(uri) {
        m_context = iio_create_context_from_uri(m_uri.data());
        const iio_device* const device =
            m_context != nullptr ? iio_context_find_device(m_context, "radio") : nullptr;
        if (device == nullptr) {
            throw std::runtime_error("there is no radio at " + uri);
        }
        for (const Attribute& attribute : attributes) {
            m_channels.push_back(iio_device_find_channel(device, attribute.channel.c_str(), true));
        }
    }
    Alone(const Alone&) = delete;
    Alone& operator=(const Alone&) = delete;
    ~Alone() { iio_context_destroy(m_context); }

    void write(const std::vector<std::pair<std::size_t, long long>>& writes) const {
        for (const auto& [channel, value] : writes) {
            if (iio_channel_attr_write_longlong(m_channels[channel], "raw", value) < 0) {
                std::fprintf(stderr, "a write failed\n");
                std::exit(EXIT_FAILURE);
            }
        }
    }

private:
    std::string m_uri;
    iio_context* m_context;
    std::vector<iio_channel*> m_channels;
};

template <typename Action>
double nanoseconds(Action action) {
    const Clock::time_point begin = Clock::now();
    for (int i = 0; i < tunesInABlock; ++i) {
        action(static_cast<std::size_t>(i % 2));
    }
    return std::chrono::duration<double, std::nano>(Clock::now() - begin).count() / tunesInABlock;
}

double medianOf(std::vector<double>& numbers) {
    const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
    std::nth_element(numbers.begin(), middle, numbers.end());
    return *middle;
}

void measure(const std::string& uri) {
    BenchmarkRadio radio({});
    std::vector<std::vector<Write>> writes;
    for (const unsigned long carrier : carriers) {
        writes.push_back(writesOf(radio, carrier));
    }
    const std::vector<Attribute> attributes = attributesFor(writes[0]);
    std::vector<std::vector<std::pair<std::size_t, long long>>> replayed(writes.size());
    for (std::size_t i = 0; i < writes.size(); ++i) {
        for (const Write& write : writes[i]) {
            const auto found =
                std::find_if(attributes.begin(), attributes.end(),
                             [&](const Attribute& known) { return known.driver == write.driver; });
            replayed[i].emplace_back(found - attributes.begin(), write.value);
        }
    }

    Devices::HardwareDescription description;
    description.devices.push_back({"iio", Devices::DeviceDescription::Kind::iio, uri});
    for (const Attribute& attribute : attributes) {
        Devices::DriverHardware driver;
        driver.driver = attribute.driver;
        driver.write = Devices::AttributeName{"iio", "radio/" + attribute.channel + "/raw"};
        description.drivers.push_back(driver);
    }
    Listener listener;
    Devices::Hardware hardware(description, listener);
    for (const Attribute& attribute : attributes) {
        radio.platform().drivers().find(attribute.driver)->setBacking(hardware.backing(attribute.driver));
    }

    const Alone alone(uri, attributes);
    std::vector<double> tunes;
    std::vector<double> bare;
    for (int block = 0; block < blocks; ++block) {
        tunes.push_back(nanoseconds([&](std::size_t i) { radio.module().setTxFrequency(carriers[i]); }));
        bare.push_back(nanoseconds([&](std::size_t i) { alone.write(replayed[i]); }));
    }
    const double tune = medianOf(tunes);
    const double writing = medianOf(bare);
    std::printf("%-24s %zu writes: a tune %.1f us, libiio alone %.1f us, ratio %.3f\n", uri.c_str(),
                replayed[0].size(), tune / 1000, writing / 1000, tune / writing);
}

} // namespace

int main(int argc, char** argv) {
    try {
        for (int i = 1; i < argc; ++i) {
            measure(argv[i]);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
