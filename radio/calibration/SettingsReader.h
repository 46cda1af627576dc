#ifndef RADIO_CALIBRATION_SETTINGSREADER_H
#define RADIO_CALIBRATION_SETTINGSREADER_H

#include "radio/board/Board.h"
#include "radio/calibration/Calibration.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

/** Reads the settings of a calibration, and numbers, out of a journal. */
namespace Radio::Calibration {

/** JSON that was read. */
using ParsedJson = nlohmann::ordered_json;

/** A whole number of a file, within `bounds`; throws std::runtime_error for anything else. */
template <typename Number>
Number wholeNumber(const ParsedJson& json, const Range& bounds = {std::numeric_limits<Number>::min(),
                                                                  std::numeric_limits<Number>::max()}) {
    const bool isWhole =
        json.is_number_integer() &&
        (!json.is_number_unsigned() || json.get<std::uint64_t>() <= std::numeric_limits<std::int64_t>::max());
    const std::int64_t number = isWhole ? json.get<std::int64_t>() : 0;
    if (!isWhole || number < bounds.low || number > bounds.high) {
        throw std::runtime_error("expected a whole number from " + std::to_string(bounds.low) + " to " +
                                 std::to_string(bounds.high) + ", found " + std::string(json.type_name()));
    }
    return static_cast<Number>(number);
}

/** Reads what toJson() of settings gives; throws nlohmann's exceptions or std::runtime_error for anything
 * else. */
Settings settingsFromJson(const ParsedJson& json);
/** The temperatures of `settings` in another order, likewise. */
std::vector<std::int32_t> routeFromJson(const ParsedJson& json, const Settings& settings);
/** The same for a qualification. */
Qualification qualificationFromJson(const ParsedJson& json);

} // namespace Radio::Calibration

#endif
