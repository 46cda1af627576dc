#include "radio/thermal/Replay.h"

#include "ResultCode.h"
#include "radio/board/PlatformWords.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <utility>

namespace Radio::Thermal {

namespace {

/** Between two questions whether to go on; a power of two. */
constexpr std::uint64_t samplesPerQuestion = 1024;

struct DriverName {
    /** What follows "channel.N." */
    std::string_view name;
    Correction correction;
};

/** The drivers that follow the temperature. A channel has one pair for the LO: mixer inputs, or in place of
 * them the coarse DC adjustment. */
constexpr std::array<DriverName, 8> driverNames{{
    {"dsp.tx.dc.compensation.i", Correction::dcI},
    {"dsp.tx.dc.compensation.q", Correction::dcQ},
    {"dsp.tx.quadrature.gain.offset.compensation", Correction::gain},
    {"dsp.tx.quadrature.phase.offset.compensation", Correction::phase},
    {"tx.rf.mixer.i", Correction::loI},
    {"tx.rf.mixer.q", Correction::loQ},
    {"tx.bb.iq.coarse.dc.i.v.adjust", Correction::loI},
    {"tx.bb.iq.coarse.dc.q.v.adjust", Correction::loQ},
}};

void setWord(IqCorrections& words, Correction correction, std::int32_t value) {
    switch (correction) {
    case Correction::dcI:
        words.dcI = value;
        break;
    case Correction::dcQ:
        words.dcQ = value;
        break;
    case Correction::gain:
        words.gain = value;
        break;
    case Correction::phase:
        words.phase = value;
        break;
    case Correction::loI:
    case Correction::loQ:
        break; // the model of the transmitter begins behind the mixer's correction
    }
}

/** The totals of a driver; new ones stand in the order of the corrections. */
DriverTotals& totalsOf(std::vector<DriverTotals>& drivers, std::string_view driver, Correction correction) {
    const auto place = std::find_if(drivers.begin(), drivers.end(), [&](const DriverTotals& candidate) {
        return candidate.correction >= correction;
    });
    if (place != drivers.end() && place->correction == correction) {
        return *place;
    }
    return *drivers.insert(place, {std::string(driver), correction, 0, 0, {}, {}});
}

void raise(WorstFigure& worst, double dBc, const Moment& moment) {
    if (dBc > worst.dBc) {
        worst = {dBc, moment.seconds, moment.degrees};
    }
}

void raise(std::optional<WorstFigures>& worst, const Moment& moment) {
    const Figures& figures = *moment.figures;
    const auto here = [&](double dBc) { return WorstFigure{dBc, moment.seconds, moment.degrees}; };
    if (!worst) {
        worst = {here(figures.without.image), here(figures.with.image), here(figures.without.carrierLeakage),
                 here(figures.with.carrierLeakage)};
        return;
    }
    raise(worst->imageWithout, figures.without.image, moment);
    raise(worst->image, figures.with.image, moment);
    raise(worst->leakageWithout, figures.without.carrierLeakage, moment);
    raise(worst->leakage, figures.with.carrierLeakage, moment);
}

template <typename Count>
std::uint64_t sum(const std::vector<DriverTotals>& drivers, Count DriverTotals::*count) {
    std::uint64_t total = 0;
    for (const DriverTotals& driver : drivers) {
        total += driver.*count;
    }
    return total;
}

/** Plays one log. */
class Player {
public:
    /** Tunes the channels. What is borrowed must outlive the object; `booted` is up. */
    Player(BootedRadio& booted, const Board& board, const Carriers& carriers,
           const std::vector<ReplayListener*>& listeners);

    /** False when `goOn` said no. */
    bool play(const ThermalLog& log, const std::function<bool(std::uint64_t)>& goOn);

    ReplayTotals takeTotals() { return std::move(m_totals); }

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
    const std::vector<ReplayListener*>& m_listeners;
    /** The channel, as its place in the totals, and the correction that a driver is for. */
    std::map<std::string, std::pair<std::size_t, Correction>, std::less<>> m_watched;
    /** For each channel of the totals. */
    std::vector<Transmitter> m_transmitters;
    ReplayTotals m_totals;
};

Player::Player(BootedRadio& booted, const Board& board, const Carriers& carriers,
               const std::vector<ReplayListener*>& listeners)
    : m_booted(booted),
      m_listeners(listeners) {
    for (const ChannelDescription& channel : board.channels) {
        if (channel.iqCompensation) {
            watch(board, channel);
        }
    }
    tune(carriers);
}

void Player::watch(const Board& board, const ChannelDescription& channel) {
    const std::size_t index = m_totals.channels.size();
    const std::string prefix = "channel." + std::to_string(channel.number) + ".";
    for (const DriverName& driver : driverNames) {
        m_watched.emplace(prefix + std::string(driver.name), std::pair(index, driver.correction));
    }
    m_totals.channels.emplace_back().channel = channel.number;
    const auto described = std::find_if(
        board.transmitters.begin(), board.transmitters.end(),
        [&](const TransmitterDescription& candidate) { return candidate.channel == channel.number; });
    m_transmitters.emplace_back().description = described == board.transmitters.end() ? nullptr : &*described;
}

void Player::tune(const Carriers& carriers) {
    m_booted.forget();
    for (ChannelTotals& channel : m_totals.channels) {
        const auto carrier = carriers.find(channel.channel);
        if (carrier != carriers.end()) {
            m_booted.radio().tune(Direction::tx, channel.channel, carrier->second);
            channel.carrier = carrier->second;
        }
    }
    noteComplaints();
}

bool Player::play(const ThermalLog& log, const std::function<bool(std::uint64_t)>& goOn) {
    for (const Sample& sample : log) {
        if (m_totals.samples % samplesPerQuestion == 0 && !goOn(m_totals.samples)) {
            return false;
        }
        ++m_totals.samples;
        tell(sample);
    }
    return true;
}

void Player::tell(const Sample& sample) {
    Standalone::TemperatureService& service = m_booted.radio().platform().temperature();
    if (service.temperature() == sample.degrees) {
        return; // the platform tells changes only, and nothing else happens
    }
    m_booted.forget();
    for (Transmitter& transmitter : m_transmitters) {
        transmitter.moment.seconds = sample.seconds;
        transmitter.moment.degrees = sample.degrees;
        transmitter.moment.writes.clear();
    }
    service.set(sample.degrees);
    ++m_totals.notifications;
    for (const Standalone::Call& call : m_booted.writes()) {
        note(call, sample);
    }
    noteComplaints();
    for (std::size_t index = 0; index < m_transmitters.size(); ++index) {
        Moment& moment = m_transmitters[index].moment;
        ChannelTotals& channel = m_totals.channels[index];
        if (const TransmitterDescription* const description = m_transmitters[index].description) {
            moment.figures = {cleanlinessOf(*description, sample.degrees, {}),
                              cleanlinessOf(*description, sample.degrees, moment.words)};
            raise(channel.worst, moment);
        }
        for (ReplayListener* const listener : m_listeners) {
            listener->told(channel, moment);
        }
    }
}

void Player::note(const Standalone::Call& call, const Sample& sample) {
    const auto watched = m_watched.find(call.object);
    if (watched == m_watched.end() || isFailure(call.code)) {
        return;
    }
    const auto& [index, correction] = watched->second;
    const auto value = static_cast<std::int32_t>(call.value);
    DriverTotals& totals = totalsOf(m_totals.channels[index].drivers, call.object, correction);
    ++totals.writes;
    std::optional<std::int64_t> step;
    if (totals.value) {
        step = std::int64_t{value} - *totals.value;
        totals.unchanged += *step == 0 ? 1 : 0;
        if (!totals.largestStep || std::abs(*step) > std::abs(totals.largestStep->size)) {
            totals.largestStep = {*step, sample.seconds, sample.degrees};
        }
    }
    totals.value = value;
    Moment& moment = m_transmitters[index].moment;
    moment.writes.push_back({correction, watched->first, value, step});
    setWord(moment.words, correction, value);
}

void Player::noteComplaints() {
    const std::vector<std::string>& complaints = m_booted.complaints();
    if (m_totals.complaints == 0 && !complaints.empty()) {
        m_totals.firstComplaint = complaints.front();
    }
    m_totals.complaints += complaints.size();
}

} // namespace

std::string_view toString(Correction correction) {
    constexpr std::array<std::string_view, correctionCount> names{"dc_i",  "dc_q", "gain",
                                                                  "phase", "lo_i", "lo_q"};
    return names[static_cast<std::size_t>(correction)];
}

std::uint64_t ChannelTotals::writes() const {
    return sum(drivers, &DriverTotals::writes);
}

std::uint64_t ChannelTotals::unchanged() const {
    return sum(drivers, &DriverTotals::unchanged);
}

Carriers rasterCarriers(const Board& board) {
    Carriers carriers;
    for (const RasterDescription& raster : board.rasters) {
        const auto row =
            std::find_if(raster.rows.begin(), raster.rows.end(), [](const CarrierRow& candidate) {
                return candidate.transmit && candidate.count != 0;
            });
        if (row != raster.rows.end()) {
            for (const int channel : raster.channels) {
                carriers.emplace(channel, row->first);
            }
        }
    }
    return carriers;
}

std::vector<int> compensatedChannels(const Board& board) {
    std::vector<int> channels;
    for (const ChannelDescription& channel : board.channels) {
        if (channel.iqCompensation) {
            channels.push_back(channel.number);
        }
    }
    if (channels.empty()) {
        throw InputError(
            {board.file.string(), 0},
            "nothing to replay; expected \"iq_compensation = true\" in at least one [[channel]]");
    }
    return channels;
}

ReplayResult replay(BootedRadio& booted, const Board& board, const ThermalLog& log, Carriers carriers,
                    const std::vector<ReplayListener*>& listeners,
                    const std::function<bool(std::uint64_t)>& goOn) {
    carriers.merge(rasterCarriers(board));
    ReplayResult result;
    const auto start = std::chrono::steady_clock::now();
    Player player(booted, board, carriers, listeners);
    result.isComplete = player.play(log, goOn);
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    result.totals = player.takeTotals();
    return result;
}

} // namespace Radio::Thermal
