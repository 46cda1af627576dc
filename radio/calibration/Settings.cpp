#include "radio/calibration/Settings.h"

#include "radio/board/BoardNames.h"
#include "radio/board/CalibrationBounds.h"
#include "radio/calibration/SearchDrivers.h"
#include "radio/text/Words.h"

#include <algorithm>

namespace Radio::Calibration {

namespace {

constexpr double usualShrinkFactor = 0.75;
/** A range of 3 loses less than 1 to this factor, and nothing once its ends are whole numbers again. */
constexpr std::int32_t usualMinDelta = 3;
constexpr std::uint32_t usualMaxIterations = 40;
constexpr std::uint32_t usualSettleTime = 5;
constexpr std::uint32_t usualBudget = 400;

/** What one of the board's channels is asked for, from one source after the other. */
class Choice {
public:
    Choice(const Board& board, const CalibrationDescription& wishes) : m_board(board), m_wishes(wishes) {
        const auto found =
            std::find_if(board.calibrations.begin(), board.calibrations.end(),
                         [&](const auto& candidate) { return candidate.channel == wishes.channel; });
        if (found != board.calibrations.end()) {
            m_described = *found;
        }
    }

    template <typename Value>
    std::optional<Value> of(std::optional<Value> CalibrationDescription::*member) const {
        return (m_wishes.*member) ? m_wishes.*member : m_described.*member;
    }

    const std::vector<std::int32_t>& temperatures() const {
        return m_wishes.temperatures.empty() ? m_described.temperatures : m_wishes.temperatures;
    }

    /** `key` is both the key in the board and the choice. */
    [[noreturn]] void lacks(const std::string& what, const char* key) const { lacks(what, key, key); }
    [[noreturn]] void lacks(const std::string& what, const char* key, const char* choice) const {
        throw ChoiceError({m_board.file.string(), 0},
                          "channel " + std::to_string(m_wishes.channel) + ": no " + what + ", expected " +
                              key + " in its [[calibration]]",
                          choice);
    }

private:
    const Board& m_board;
    const CalibrationDescription& m_wishes;
    CalibrationDescription m_described;
};

/** The carriers of a band; its last one is among them, also when it does not fall on a step. */
std::vector<std::uint32_t> carriersOf(const Range& band, std::int64_t step, const Place& place) {
    if ((band.high - band.low) / step >= static_cast<std::int64_t>(maxPoints)) {
        throw InputError(place, "expected at most " + std::to_string(maxPoints) + " carriers, found " +
                                    std::to_string((band.high - band.low) / step + 1));
    }
    std::vector<std::uint32_t> carriers;
    for (std::int64_t carrier = band.low; carrier < band.high; carrier += step) {
        carriers.push_back(static_cast<std::uint32_t>(carrier));
    }
    carriers.push_back(static_cast<std::uint32_t>(band.high));
    return carriers;
}

/** What a driver takes in hardware, as far as corrections go. */
std::optional<Range> rangeOf(const Devices::DriverHardware* hardware) {
    if (hardware == nullptr || !hardware->lowest) {
        return std::nullopt;
    }
    return Range{std::max(*hardware->lowest, correctionBounds.low),
                 std::min(*hardware->highest, correctionBounds.high)};
}

/** Where the corrections of a real radio are searched. */
void chooseHardwareRanges(const Board& board, const Choice& choice, Settings& settings) {
    const SearchDrivers drivers = driversOf(board, settings.channel);
    const auto choose = [&](std::optional<Range> CalibrationDescription::*member, const std::string& driver,
                            const std::string& branch, const char* key, const char* option) {
        std::optional<Range> range = choice.of(member);
        if (!range) {
            range = rangeOf(findHardware(board, driver));
        }
        if (!range) {
            choice.lacks("range for " + branch + ", and no range of " + inQuotes(driver) + " in [hardware]",
                         key, option);
        }
        return *range;
    };
    settings.i = choose(&CalibrationDescription::iRange, drivers.i, "I", "i_range", "i-range");
    settings.q = choose(&CalibrationDescription::qRange, drivers.q, "Q", "q_range", "q-range");
}

/** Where those of a modelled one are. */
void chooseModelledRanges(const Board& board, const Choice& choice, Settings& settings) {
    const LeakageDescription& leakage = *findLeakage(board, settings.channel);
    settings.i = choice.of(&CalibrationDescription::iRange).value_or(Range{leakage.i.low, leakage.i.high});
    settings.q = choice.of(&CalibrationDescription::qRange).value_or(Range{leakage.q.low, leakage.q.high});
}

Json rangeJson(const Range& range) {
    return Json::array({range.low, range.high});
}

/** Every carrier at every temperature. */
void choosePoints(const Choice& choice, const Range& band, const Place& place, Settings& settings) {
    const auto step = choice.of(&CalibrationDescription::step);
    if (!step) {
        choice.lacks("distance of two carriers", "step");
    }
    if (choice.temperatures().empty()) {
        choice.lacks("temperatures", "temperatures");
    }
    settings.frequencies = carriersOf(band, *step, place);
    settings.temperatures = choice.temperatures();
    if (settings.frequencies.size() * settings.temperatures.size() > maxPoints) {
        throw InputError(place, "expected at most " + std::to_string(maxPoints) + " points, found " +
                                    std::to_string(settings.frequencies.size()) + " carriers at " +
                                    std::to_string(settings.temperatures.size()) + " temperatures");
    }
}

/** Between which carriers and temperatures a fit finds its own points. */
void chooseEnds(const Choice& choice, const Range& band, Settings& settings) {
    if (choice.temperatures().empty()) {
        choice.lacks("temperatures", "temperatures");
    }
    const auto ends = [](auto low, auto high) {
        std::vector<decltype(low)> both{low};
        if (high != low) {
            both.push_back(high);
        }
        return both;
    };
    settings.frequencies = ends(static_cast<std::uint32_t>(band.low), static_cast<std::uint32_t>(band.high));
    settings.temperatures = ends(choice.temperatures().front(), choice.temperatures().back());
}

} // namespace

Settings settingsFor(const Board& board, const CalibrationDescription& wishes, bool isHardware) {
    const Choice choice(board, wishes);
    const Place place{board.file.string(), 0};
    auto band = choice.of(&CalibrationDescription::band);
    if (!band) {
        band = transmitBand(board, wishes.channel);
    }
    if (!band) {
        choice.lacks("band, and no [[raster]] with transmit carriers", "band");
    }
    Settings settings;
    settings.channel = wishes.channel;
    settings.method = choice.of(&CalibrationDescription::method).value_or(CalibrationMethod::fit);
    if (settings.method == CalibrationMethod::fit) {
        chooseEnds(choice, *band, settings);
        settings.budget = choice.of(&CalibrationDescription::probes).value_or(usualBudget);
        settings.limit = board.limits.leakage;
    } else {
        choosePoints(choice, *band, place, settings);
    }
    (isHardware ? chooseHardwareRanges : chooseModelledRanges)(board, choice, settings);
    settings.shrinkFactor = choice.of(&CalibrationDescription::shrinkFactor).value_or(usualShrinkFactor);
    settings.minDelta = choice.of(&CalibrationDescription::minDelta).value_or(usualMinDelta);
    settings.maxIterations = choice.of(&CalibrationDescription::maxIterations).value_or(usualMaxIterations);
    settings.settleTime = choice.of(&CalibrationDescription::settleTime).value_or(usualSettleTime);
    settings.useHighDetector = choice.of(&CalibrationDescription::useHighDetector).value_or(false);
    return settings;
}

CalibrationDescription asBegun(const CalibrationDescription& wishes, const Settings& begun) {
    CalibrationDescription result = wishes;
    const auto complete = [](auto& wished, const auto& value) {
        if (!wished) {
            wished = value;
        }
    };
    complete(result.method, begun.method);
    complete(result.band, Range{begun.frequencies.front(), begun.frequencies.back()});
    if (begun.method == CalibrationMethod::fit) {
        complete(result.probes, begun.budget);
    } else {
        const bool isOne = begun.frequencies.size() == 1;
        complete(result.step, isOne ? 1 : begun.frequencies[1] - begun.frequencies[0]);
    }
    if (result.temperatures.empty()) {
        result.temperatures = begun.temperatures;
    }
    complete(result.iRange, begun.i);
    complete(result.qRange, begun.q);
    complete(result.shrinkFactor, begun.shrinkFactor);
    complete(result.minDelta, begun.minDelta);
    complete(result.maxIterations, begun.maxIterations);
    complete(result.settleTime, begun.settleTime);
    complete(result.useHighDetector, begun.useHighDetector);
    return result;
}

std::optional<std::uint32_t> statedSettleTime(const Board& board, const CalibrationDescription& wishes) {
    return Choice(board, wishes).of(&CalibrationDescription::settleTime);
}

Json toJson(const Settings& settings) {
    Json json = {{"channel", settings.channel}, {"method", toString(settings.method)}};
    if (settings.method == CalibrationMethod::fit) {
        json["probes"] = settings.budget;
        json["limit_dbc"] = settings.limit ? Json(*settings.limit) : Json(nullptr);
    }
    const Json common = {{"frequencies_khz", settings.frequencies},
                         {"temperatures_c", settings.temperatures},
                         {"i_range", rangeJson(settings.i)},
                         {"q_range", rangeJson(settings.q)},
                         {"shrink_factor", settings.shrinkFactor},
                         {"min_delta", settings.minDelta},
                         {"max_iterations", settings.maxIterations},
                         {"settle_time_ms", settings.settleTime},
                         {"detector", settings.useHighDetector ? "high" : "low"}};
    for (const auto& [key, value] : common.members()) {
        json[key] = value;
    }
    return json;
}

} // namespace Radio::Calibration
