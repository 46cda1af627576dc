#include "radio/plan/TuneCheck.h"

#include "radio/board/BoardNames.h"
#include "radio/board/HardwareRanges.h"
#include "radio/plan/CarrierCheck.h"
#include "radio/plan/Forecast.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace Radio::Plan {

namespace {

/** All rows of carriers for one direction of a channel. */
std::vector<CarrierRow> rowsFor(const Board& board, Direction direction, int channel) {
    std::vector<CarrierRow> rows;
    for (const RasterDescription& raster : board.rasters) {
        const std::vector<int>& channels = raster.channels;
        if (std::find(channels.begin(), channels.end(), channel) == channels.end()) {
            continue;
        }
        std::copy_if(
            raster.rows.begin(), raster.rows.end(), std::back_inserter(rows),
            [direction](const CarrierRow& row) { return row.transmit == (direction == Direction::tx); });
    }
    return rows;
}

std::uint64_t lastOf(const CarrierRow& row) {
    return row.first + std::uint64_t{row.count - 1} * row.step;
}

/** Between the first and the last carrier of one of the rows. */
bool isWithin(const std::vector<CarrierRow>& rows, std::uint64_t carrier) {
    return std::any_of(rows.begin(), rows.end(), [carrier](const CarrierRow& row) {
        return carrier >= row.first && carrier <= lastOf(row);
    });
}

/** What may have been meant: people think in MHz and GHz. */
std::string meantBy(const std::vector<CarrierRow>& rows, std::uint32_t carrier) {
    constexpr std::array<std::pair<std::uint64_t, const char*>, 2> units{{{1000, "MHz"}, {1000000, "GHz"}}};
    for (const auto& [factor, unit] : units) {
        if (isWithin(rows, carrier * factor)) {
            return " (did you mean " + std::to_string(carrier) + " " + unit + "?)";
        }
    }
    return {};
}

/** "7428000 to 7582000", for each row that lies elsewhere. */
std::string spansOf(const std::vector<CarrierRow>& rows) {
    std::vector<std::string> spans;
    for (const CarrierRow& row : rows) {
        std::string span = std::to_string(row.first) + " to " + std::to_string(lastOf(row));
        if (std::find(spans.begin(), spans.end(), span) == spans.end()) {
            spans.push_back(std::move(span));
        }
    }
    return joined(spans, " and ");
}

std::string whyNotOnRaster(const Board& board, Direction direction, int channel, std::uint32_t carrier) {
    const std::vector<CarrierRow> rows = rowsFor(board, direction, channel);
    if (rows.empty() || isWithin(rows, carrier)) {
        return {};
    }
    return std::to_string(carrier) + " kHz is outside the rasters of the board for " +
           std::string(toString(direction)) + " " + std::to_string(channel) + meantBy(rows, carrier) + ": " +
           spansOf(rows) + " kHz";
}

/** Whether a finding of an audit is about what the board itself states; what may be off by how much when it
 * does not say is for an audit to decide. */
bool isStated(const CarrierFinding& finding, const Limits& limits) {
    return finding.kind == FindingKind::ifPllOutOfRange || finding.kind == FindingKind::rfPllOutOfRange ||
           finding.kind == FindingKind::wordOverflow ||
           (finding.kind == FindingKind::carrierOff && limits.carrierError.has_value());
}

/** The first finding of an audit of this carrier. */
std::string whyNotWithinLimits(const Board& board, Standalone::Platform& platform,
                               const ChannelDescription& channel, Direction direction, std::uint32_t carrier,
                               const HardwareWords& words) {
    const CarrierCheck check(platform, board.limits, channel, direction);
    CarrierResult result;
    const Visit visit{words, {}};
    check.check(result, carrier, visit, visit, carrier);
    const auto finding =
        std::find_if(result.findings.begin(), result.findings.end(),
                     [&board](const CarrierFinding& one) { return isStated(one, board.limits); });
    return finding == result.findings.end() ? "" : std::to_string(carrier) + " kHz: " + describe(*finding);
}

std::string whyNotInRanges(const Board& board, Standalone::Platform& platform,
                           const ChannelDescription& channel, Direction direction, std::uint32_t carrier,
                           const HardwareWords& words) {
    const WordSources sources(platform, channel, direction);
    for (const Word word : {Word::dspOffset, Word::ifPll, Word::rfPll, Word::carrier}) {
        const std::string driver = sources.nameOf(word);
        if (words[word] && !driver.empty()) {
            const std::string reason = whyNotWrite(board, driver, *words[word]);
            if (!reason.empty()) {
                return std::to_string(carrier) + " kHz: " + reason;
            }
        }
    }
    return {};
}

/** What speaks against the hardware producing a carrier. */
std::string whyNotProduce(const Board& board, Standalone::Platform& platform, Direction direction,
                          int channel, std::uint32_t carrier) {
    const ChannelDescription& description = *findChannel(board, channel);
    const std::optional<HardwareWords> words = forecast(platform, description, direction, carrier);
    if (!words) {
        return {};
    }
    const std::string reason = whyNotInRanges(board, platform, description, direction, carrier, *words);
    return reason.empty() ? whyNotWithinLimits(board, platform, description, direction, carrier, *words)
                          : reason;
}

} // namespace

std::string whyNotTune(const Board& board, Standalone::Platform& platform, Direction direction, int channel,
                       std::uint32_t carrier) {
    const std::string reason = whyNotOnRaster(board, direction, channel, carrier);
    return reason.empty() ? whyNotProduce(board, platform, direction, channel, carrier) : reason;
}

std::string whyNotTemperature(const Board& board, int degrees) {
    const std::optional<Range>& range = board.limits.temperature;
    if (!range || (degrees >= range->low && degrees <= range->high)) {
        return {};
    }
    return std::to_string(degrees) + " degrees are outside the board's " + std::to_string(range->low) +
           " to " + std::to_string(range->high);
}

} // namespace Radio::Plan
