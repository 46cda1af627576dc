#include "radio/fit/Plan.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace Radio::Fit {

namespace {

constexpr double halfTurn = 3.141592653589793;

} // namespace

std::vector<std::int32_t> fitTemperatures(const Order& order) {
    const double low = order.lowTemperature;
    const double high = order.highTemperature;
    if (order.lowTemperature == order.highTemperature) {
        return {order.lowTemperature};
    }
    // Leakage turns by some tenths of a degree for each degree: a cubic in each hundred, and one to tell.
    const int count = std::clamp(2 + static_cast<int>(std::ceil((high - low) / 30.0)), 3, 8);
    std::vector<std::int32_t> temperatures;
    for (int n = 0; n < count; ++n) {
        const double x = -std::cos(halfTurn * n / (count - 1));
        temperatures.push_back(static_cast<std::int32_t>(std::lround((low + high + x * (high - low)) / 2.0)));
    }
    temperatures.erase(std::unique(temperatures.begin(), temperatures.end()), temperatures.end());
    if (std::abs(order.startTemperature - high) < std::abs(order.startTemperature - low)) {
        std::reverse(temperatures.begin(), temperatures.end());
    }
    return temperatures;
}

std::vector<std::int32_t> triedTemperatures(const std::vector<std::int32_t>& fitted, std::size_t most) {
    std::vector<std::int32_t> tried;
    for (std::size_t n = fitted.size(); n-- > 1;) {
        const auto middle =
            static_cast<std::int32_t>(std::floor((static_cast<double>(fitted[n]) + fitted[n - 1]) / 2.0));
        if (middle != fitted[n] && middle != fitted[n - 1]) {
            tried.push_back(middle);
        }
    }
    // Of many, those that lie evenly on the way.
    std::vector<std::int32_t> chosen;
    const std::size_t count = std::min(most, tried.size());
    for (std::size_t n = 0; n < count; ++n) {
        chosen.push_back(tried[count == 1 ? 0 : n * (tried.size() - 1) / (count - 1)]);
    }
    return chosen;
}

std::vector<std::uint32_t> evenCarriers(const Order& order, std::size_t count) {
    std::vector<std::uint32_t> carriers;
    const double width = static_cast<double>(order.highCarrier) - order.lowCarrier;
    for (std::size_t n = 0; n < count; ++n) {
        const double part = count > 1 ? static_cast<double>(n) / static_cast<double>(count - 1) : 0.0;
        carriers.push_back(order.lowCarrier + static_cast<std::uint32_t>(std::lround(part * width)));
    }
    carriers.erase(std::unique(carriers.begin(), carriers.end()), carriers.end());
    return carriers;
}

} // namespace Radio::Fit
