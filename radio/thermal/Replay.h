#ifndef RADIO_THERMAL_REPLAY_H
#define RADIO_THERMAL_REPLAY_H

#include "radio/board/Board.h"
#include "radio/model/TransmitterModel.h"
#include "radio/session/BootedRadio.h"
#include "radio/thermal/ThermalLog.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Radio::Thermal {

/** What a write that follows the temperature corrects. */
enum class Correction : std::uint8_t { dcI, dcQ, gain, phase, loI, loQ };
constexpr std::size_t correctionCount = 6;

/** "dc_i", "dc_q", "gain", "phase", "lo_i" or "lo_q". */
std::string_view toString(Correction correction);

/** A transmitter at one moment, as it is without compensation (all words 0) and with it. */
struct Figures {
    IqCleanliness without;
    IqCleanliness with;
};

/** One value that reached a driver. */
struct Write {
    Correction correction;
    /** The driver's name; valid while the replay goes on. */
    std::string_view driver;
    std::int32_t value;
    /** From the value before it; nothing for the first one. */
    std::optional<std::int64_t> step;
};

/** What one channel did when it was told a temperature. */
struct Moment {
    std::int64_t seconds = 0;
    std::int32_t degrees = 0;
    /** In their order. */
    std::vector<Write> writes;
    /** The words that are in force afterwards. */
    IqCorrections words;
    /** For a channel whose transmitter is described. */
    std::optional<Figures> figures;
};

/** The step of largest magnitude, and the first moment at which it was made. */
struct LargestStep {
    std::int64_t size;
    std::int64_t seconds;
    std::int32_t degrees;
};

/** What was written to one driver. */
struct DriverTotals {
    std::string driver;
    Correction correction;
    std::uint64_t writes = 0;
    /** Writes of the value that was written before. */
    std::uint64_t unchanged = 0;
    std::optional<std::int32_t> value;
    /** Nothing before the second write. */
    std::optional<LargestStep> largestStep;
};

/** The highest value of a figure, and the first moment at which it was reached. */
struct WorstFigure {
    double dBc;
    std::int64_t seconds;
    std::int32_t degrees;
};

struct WorstFigures {
    WorstFigure imageWithout;
    WorstFigure image;
    WorstFigure leakageWithout;
    WorstFigure leakage;
};

/** What came of one channel. */
struct ChannelTotals {
    int channel = 0;
    /** In kHz; nothing for a channel that was not tuned. */
    std::optional<std::uint32_t> carrier;
    /** Those that were written, in the order of the corrections. */
    std::vector<DriverTotals> drivers;
    std::optional<WorstFigures> worst;

    std::uint64_t writes() const;
    std::uint64_t unchanged() const;
};

/** What came of a log. */
struct ReplayTotals {
    std::uint64_t samples = 0;
    /** How often the temperature was told: once at the beginning, and for every change. */
    std::uint64_t notifications = 0;
    std::vector<ChannelTotals> channels;
    /** Errors that the library traced, and the first of them. */
    std::uint64_t complaints = 0;
    std::string firstComplaint;
};

/** Is told of a replay while it goes on, on its thread; what it is given is valid during the call. */
class ReplayListener {
public:
    ReplayListener() = default;
    ReplayListener(const ReplayListener&) = delete;
    ReplayListener& operator=(const ReplayListener&) = delete;
    virtual ~ReplayListener() = default;

    /** A channel was told a temperature; `channel` has what was written up to now. */
    virtual void told(const ChannelTotals& channel, const Moment& moment) = 0;
};

/** Transmit carriers in kHz, by channel. */
using Carriers = std::map<int, std::uint32_t>;

/** The first transmit carrier of the first raster of each channel that has one. */
Carriers rasterCarriers(const Board& board);

/** What a replay came to. */
struct ReplayResult {
    ReplayTotals totals;
    /** All of the log was played. */
    bool isComplete = false;
    /** How long it took. */
    double seconds = 0;
};

/** The channels that a replay watches. Throws InputError for a board on which none follows the temperature.
 */
std::vector<int> compensatedChannels(const Board& board);

/**
 * Plays a temperature log to a radio of `board` that is up, and watches the channels that have the IQ
 * compensation. They are tuned to `carriers` first; those that it leaves out to rasterCarriers(), or not at
 * all. Carriers of other channels are ignored. What `booted` noted before is forgotten, and the radio is left
 * with these carriers and the temperature of the last sample that was played.
 *
 * `goOn` is asked before the first sample, with 0, and after every 1024, with the number of those done,
 * whether to; it is not empty.
 *
 * To be called on the thread that drives `booted`. What is given is borrowed during the call only; none of
 * the `listeners` is null.
 */
ReplayResult replay(BootedRadio& booted, const Board& board, const ThermalLog& log, Carriers carriers,
                    const std::vector<ReplayListener*>& listeners,
                    const std::function<bool(std::uint64_t)>& goOn);

} // namespace Radio::Thermal

#endif
