#include "radio/board/LimitsReader.h"

#include "radio/model/ModelNumbers.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace Radio {

namespace {

std::optional<Range> readLimitRange(const TomlItem& limits, std::string_view key, std::int32_t least = 0) {
    const std::optional<TomlItem> item = limits.find(key);
    if (!item) {
        return std::nullopt;
    }
    const std::vector<TomlItem> ends = item->elements();
    item->requireCount(ends.size(), 2, "the lowest and the highest value");
    const Range range{ends[0].integer(least), ends[1].integer(least)};
    if (range.low > range.high) {
        item->fail("expected the lowest value first, found " + std::to_string(range.high) + " after " +
                   std::to_string(range.low));
    }
    return range;
}

/** A sign that was forgotten would allow everything. */
std::optional<double> readLevel(const TomlItem& limits, std::string_view key) {
    const std::optional<TomlItem> item = limits.find(key);
    if (!item) {
        return std::nullopt;
    }
    const double level = item->number(largestNumber);
    if (level > 0.0) {
        item->failExpecting("a level in dBc that is not above 0");
    }
    return level;
}

std::optional<double> readImprovement(const TomlItem& limits) {
    const std::optional<TomlItem> item = limits.find("leakage_improvement");
    if (!item) {
        return std::nullopt;
    }
    const double improvement = item->number(largestNumber);
    if (improvement < 0.0) {
        item->failExpecting("a number of dB that is not negative");
    }
    return improvement;
}

} // namespace

Limits readLimits(const TomlItem& root) {
    Limits limits;
    if (const std::optional<TomlItem> item = root.find("limits")) {
        item->entries({"if_pll", "rf_pll", "carrier_error", "temperature", "leakage", "leakage_at_nodes",
                       "leakage_improvement", "image", "carrier_leakage"});
        limits.ifPll = readLimitRange(*item, "if_pll");
        limits.rfPll = readLimitRange(*item, "rf_pll");
        if (const std::optional<TomlItem> error = item->find("carrier_error")) {
            limits.carrierError = error->integer(0);
        }
        limits.temperature = readLimitRange(*item, "temperature", std::numeric_limits<std::int32_t>::min());
        limits.leakage = readLevel(*item, "leakage");
        limits.leakageAtNodes = readLevel(*item, "leakage_at_nodes");
        limits.leakageImprovement = readImprovement(*item);
        limits.image = readLevel(*item, "image");
        limits.carrierLeakage = readLevel(*item, "carrier_leakage");
    }
    return limits;
}

} // namespace Radio
