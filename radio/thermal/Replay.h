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
#include <utility>
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
    /** The driver's name; lives as long as the replay. */
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

/** Is told of a replay while it goes on. */
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

/** Plays a temperature log to a booted radio, and watches the channels that have the IQ compensation. */
class Replay {
public:
    /** Tunes the channels. What is borrowed must outlive the object; `booted` is up. */
    Replay(BootedRadio& booted, const Board& board, const Carriers& carriers,
           std::vector<ReplayListener*> listeners);

    /**
     * Plays the whole log. `goOn` is asked from time to time, with the number of samples done, whether to go
     * on. False when it said no.
     */
    bool play(const ThermalLog& log, const std::function<bool(std::uint64_t)>& goOn);

    const ReplayTotals& totals() const { return m_totals; }

private:
    /** One channel at work. */
    struct Transmitter {
        const TransmitterDescription* description = nullptr;
        Moment moment;
    };

    void watch(const Board& board, const ChannelDescription& channel);
    void tune(const Carriers& carriers);
    void tell(const Sample& sample);
    void note(const Standalone::Call& call, const Sample& sample);
    void noteComplaints();

    BootedRadio& m_booted;
    std::vector<ReplayListener*> m_listeners;
    /** The channel, as its place in the totals, and the correction that a driver is for. */
    std::map<std::string, std::pair<std::size_t, Correction>, std::less<>> m_watched;
    /** For each channel of the totals. */
    std::vector<Transmitter> m_transmitters;
    ReplayTotals m_totals;
};

} // namespace Radio::Thermal

#endif
