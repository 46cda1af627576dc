#include "radio/session/PeekPoke.h"

#include "ResultCode.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace Radio {

namespace {

DriverAnswer lacks(std::string_view word) {
    return {ResultFailed, 0, "the driver's record has no " + std::string(word)};
}

/** The bytes of a number, least significant first. */
std::array<std::uint8_t, 8> bytesOf(std::int64_t value) {
    std::array<std::uint8_t, 8> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes.at(i) = static_cast<std::uint8_t>(static_cast<std::uint64_t>(value) >> (8U * i));
    }
    return bytes;
}

} // namespace

bool takesHz(const std::string& driver) {
    constexpr std::string_view ending = ".in.hz";
    return driver.size() >= ending.size() &&
           driver.compare(driver.size() - ending.size(), ending.size(), ending) == 0;
}

DriverAnswer readDriver(Standalone::Driver& driver) {
    const DriverInterface& record = *driver.record();
    if (record.context == nullptr) {
        return lacks("context");
    }
    if (record.read == nullptr) {
        return lacks("read");
    }
    int value = 0;
    const EDriverResult code = record.read(record.context, &value);
    if (isFailure(code)) {
        return {code};
    }
    // A client gets 32 bits; of a number that has more, the driver knows them all.
    const bool isCut = static_cast<int>(driver.value()) == value;
    return {code, isCut ? driver.value() : std::int64_t{value}};
}

DriverAnswer writeDriver(Standalone::Driver& driver, std::int64_t value) {
    const DriverInterface& record = *driver.record();
    if (record.context == nullptr) {
        return lacks("context");
    }
    const bool isLong = value < INT32_MIN || value > INT32_MAX;
    if (isLong || (record.write == nullptr && takesHz(driver.name()))) {
        const auto bytes = bytesOf(value);
        return record.writeBuffer == nullptr
                   ? lacks("writeBuffer")
                   : DriverAnswer{record.writeBuffer(record.context, bytes.data(), bytes.size())};
    }
    return record.write == nullptr ? lacks("write")
                                   : DriverAnswer{record.write(record.context, static_cast<int>(value))};
}

} // namespace Radio
