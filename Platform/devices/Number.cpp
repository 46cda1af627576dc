#include "devices/Number.h"

#include "devices/Hardware.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <system_error>

namespace Devices {

namespace {

/** Up to here a double holds every whole number. */
constexpr double exactLimit = 9007199254740992.0;
/** Four roundings to half of a last bit are between a driver's value and the number of its attribute. */
constexpr double relativeError = 1.0 / 2251799813685248.0; // 2^-51

bool isExact(double number) {
    return std::abs(number) <= exactLimit; // false for what is no number
}

double powerOfTen(int exponent) {
    static constexpr std::array<double, 10> powers{1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
    return powers.at(static_cast<std::size_t>(exponent));
}

/**
 * `number` as a whole one. What lies as close to a whole or half number as its own error is meant to be
 * there: 3 * 0.05 is 0.15, and no binary fraction beside it.
 */
double rounded(double number, double error, Conversion::Rounding rounding) {
    const double half = std::round(number * 2) / 2;
    if (std::abs(number - half) <= error) {
        number = half;
    }
    switch (rounding) {
    case Conversion::Rounding::down:
        return std::floor(number);
    case Conversion::Rounding::up:
        return std::ceil(number);
    case Conversion::Rounding::nearest:
        break;
    }
    return std::round(number);
}

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\0';
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

} // namespace

std::optional<double> numberIn(std::string_view text) {
    text = trimmed(text);
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    double number = 0;
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const auto [rest, error] = std::from_chars(begin, end, number);
    const std::string_view behind(rest, static_cast<std::size_t>(end - rest));
    if (error != std::errc{} || !std::isfinite(number) || !(behind.empty() || behind == " dB")) {
        return std::nullopt;
    }
    return number;
}

std::optional<std::string> textFor(std::int64_t value, const Conversion& conversion) {
    const auto driverNumber = static_cast<double>(value);
    const double unit = powerOfTen(conversion.decimals);
    const double product = driverNumber * conversion.scale * unit;
    const double offset = conversion.offset * unit;
    const double number = rounded(product + offset, (std::abs(product) + std::abs(offset)) * relativeError,
                                  conversion.rounding);
    // Beyond 2^53, what becomes of `value` as a double may be 2^53 itself.
    if (value > static_cast<std::int64_t>(exactLimit) || value < -static_cast<std::int64_t>(exactLimit) ||
        !isExact(product) || !isExact(number)) {
        return std::nullopt;
    }
    std::array<char, 24> digits{};
    const auto whole = static_cast<std::int64_t>(std::abs(number));
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), whole).ptr;
    const auto count = static_cast<std::size_t>(end - digits.data());
    const auto decimals = static_cast<std::size_t>(conversion.decimals);

    std::string text = number < 0 ? "-" : "";
    if (decimals == 0) {
        return text.append(digits.data(), count);
    }
    const std::size_t before = count > decimals ? count - decimals : 0;
    text.append(before > 0 ? std::string_view(digits.data(), before) : "0").append(".");
    text.append(decimals - (count - before), '0');
    return text.append(digits.data() + before, count - before);
}

std::optional<std::int64_t> valueOf(std::string_view text, const Conversion& conversion) {
    const std::optional<double> number = numberIn(text);
    if (!number) {
        return std::nullopt;
    }
    const double error =
        std::abs((std::abs(*number) + std::abs(conversion.offset)) / conversion.scale) * relativeError;
    const double value =
        rounded((*number - conversion.offset) / conversion.scale, error, Conversion::Rounding::nearest);
    if (!isExact(value)) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(value);
}

} // namespace Devices
