#include "radio/board/BoardDemand.h"

#include "radio/board/BoardNames.h"

#include <map>
#include <utility>

namespace Radio {

namespace {

using ::FrequencyHandler;

/** The phases that copy variables, as scripts call them; and none. */
constexpr std::string_view storage = "storage";
constexpr std::string_view frameFormat = "frame-format";
constexpr std::string_view atOnce;

/** A direction as drivers and variables spell it, and as tables do. */
struct DirectionWords {
    std::string lower;
    std::string capital;
};

/** What sets the variants of the microwave board apart, for one direction. */
struct MicrowaveFlags {
    bool hasIfSynthesiser;
    bool shiftsDspBySpacing;
    bool hasOffsetArray;
    bool hasLoInHz;
};

/** Gathers the demands of one channel after the other. */
class DemandList {
public:
    void addChannel(const ChannelDescription& channel);
    std::vector<Demand> take() { return std::move(m_demands); }

private:
    Demand& add(ObjectKind kind, Need need, std::vector<Candidate> candidates);
    Demand& addDriver(Need need, std::vector<Candidate> candidates);
    void addVariable(Need need, const std::string& name, std::string_view copiedBy,
                     Shape shape = Shape::integer);
    void addInterface(Need need, const std::string& name);

    void addRfModule();
    void addRau();
    void addMicrowaveBoard(MicrowaveFlags tx, MicrowaveFlags rx);
    void addMicrowaveDirection(const DirectionWords& direction, MicrowaveFlags flags);
    void addMicrowaveVariables(const DirectionWords& direction, MicrowaveFlags flags);
    void addLoCancellation();
    void addIqCompensation();

    std::string driver(const std::string& name) const;
    std::string table(const std::string& name) const;

    std::vector<Demand> m_demands;
    /** Where in the list a demand stands, by what it asks for first. */
    std::map<std::pair<ObjectKind, std::string>, std::size_t> m_places;
    const ChannelDescription* m_channel = nullptr;
};

void DemandList::addChannel(const ChannelDescription& channel) {
    m_channel = &channel;
    switch (channel.type) {
    case FrequencyHandler::MicrowaveBoardIf:
        addMicrowaveBoard({true, false, false, false}, {true, false, false, false});
        break;
    case FrequencyHandler::RfModule:
        addRfModule();
        break;
    case FrequencyHandler::MicrowaveBoardDspOffset:
        addMicrowaveBoard({false, false, false, false}, {false, true, false, false});
        break;
    case FrequencyHandler::MicrowaveBoardHzCsOffset:
        addMicrowaveBoard({false, false, false, true}, {false, false, true, true});
        break;
    case FrequencyHandler::Rau:
        addRau();
        break;
    case FrequencyHandler::MicrowaveBoardHz:
        addMicrowaveBoard({false, false, false, true}, {false, false, false, true});
        break;
    }
    addInterface(Need::optional, "ITemperatureHandler");
    if (channel.iqCompensation) {
        addIqCompensation();
    }
}

Demand& DemandList::add(ObjectKind kind, Need need, std::vector<Candidate> candidates) {
    const auto [place, isNew] = m_places.emplace(std::pair(kind, candidates.front().name), m_demands.size());
    if (isNew) {
        m_demands.push_back({kind, need, std::move(candidates), 0, 0, {}, {}, {}, {}});
    }
    Demand& demand = m_demands[place->second];
    if (need > demand.need) {
        demand.need = need;
        demand.channels.clear();
    }
    if (need == demand.need && (demand.channels.empty() || demand.channels.back() != m_channel)) {
        demand.channels.push_back(m_channel);
    }
    return demand;
}

Demand& DemandList::addDriver(Need need, std::vector<Candidate> candidates) {
    Demand& demand = add(ObjectKind::driver, need, std::move(candidates));
    demand.words = writableDriver;
    return demand;
}

void DemandList::addVariable(Need need, const std::string& name, std::string_view copiedBy, Shape shape) {
    add(ObjectKind::variable, need, {{name, shape}}).copiedBy = copiedBy;
}

void DemandList::addInterface(Need need, const std::string& name) {
    add(ObjectKind::interface, need, {{name}});
}

std::string DemandList::driver(const std::string& name) const {
    return "channel." + std::to_string(m_channel->number) + "." + name;
}

std::string DemandList::table(const std::string& name) const {
    return "Channel." + std::to_string(m_channel->number) + "." + name;
}

void DemandList::addRfModule() {
    addInterface(Need::required, "IDriverLayer");
    addDriver(Need::required, {{driver("tx.rf.frequency")}});
    addDriver(Need::required, {{driver("rx.rf.frequency")}});
}

void DemandList::addRau() {
    addInterface(Need::required, rauName(m_channel->number));
}

void DemandList::addMicrowaveBoard(MicrowaveFlags tx, MicrowaveFlags rx) {
    const DirectionWords txWords{"tx", "Tx"};
    const DirectionWords rxWords{"rx", "Rx"};
    // The handlers themselves start without a driver layer; the canceller of the same channel does not.
    addInterface(Need::required, "IDriverLayer");
    addMicrowaveDirection(txWords, tx);
    addMicrowaveDirection(rxWords, rx);
    addLoCancellation();
    addMicrowaveVariables(txWords, tx);
    addMicrowaveVariables(rxWords, rx);
    if (rx.shiftsDspBySpacing || rx.hasOffsetArray) {
        addVariable(Need::required, "ChannelSpacing", frameFormat);
    }
}

void DemandList::addMicrowaveDirection(const DirectionWords& direction, MicrowaveFlags flags) {
    const std::string prefix = driver(direction.lower + ".");
    addDriver(Need::required, {{prefix + "rf.lo.frequency"}});
    if (flags.hasLoInHz) {
        addDriver(Need::required, {{prefix + "rf.lo.frequency.in.hz"}}).words =
            Standalone::wordContext | Standalone::wordWriteBuffer;
    }
    addDriver(flags.hasIfSynthesiser ? Need::required : Need::optional, {{prefix + "if.frequency"}});
    addDriver(Need::required, {{prefix + "rf.lo.config"}, {prefix + "rf.pll.config"}});
    if (flags.shiftsDspBySpacing || flags.hasOffsetArray) {
        addDriver(Need::required, {{driver("dsp.rx.freq.offset")}});
    }
    // A channel without a table of its own takes one of channel 1.
    const std::string chargePump = direction.capital + ".Rf.Pll.Frequency.To.Chargepump.Setting";
    add(ObjectKind::table, Need::wanted,
        {{table(chargePump), Shape::oneAxis}, {"Channel.1." + chargePump + ".Pdb", Shape::oneAxis}})
        .conditions = {{prefix + "rf.lo.config", false}};
}

void DemandList::addMicrowaveVariables(const DirectionWords& direction, MicrowaveFlags flags) {
    const std::string prefix = driver(direction.lower + ".");
    addVariable(Need::required, prefix + "mixer.multiplicationfactor", storage, Shape::factor);
    addVariable(Need::wanted, prefix + "rf.spectruminverted", storage);
    addVariable(Need::wanted, prefix + "baseband.spectruminverted", storage);
    if (flags.hasIfSynthesiser) {
        addVariable(Need::required, prefix + "if.frequency", storage);
    }
    // Copied by the phase storage, too.
    addVariable(Need::required, direction.capital + "IfBb", frameFormat);
    if (flags.hasOffsetArray) {
        addVariable(Need::required, "HwCodeDsp", atOnce);
        addVariable(Need::required, prefix + "rf.frequency.cs.offset.arraysize", atOnce);
        addVariable(Need::required, prefix + "rf.frequency.cs.offset.array", atOnce, Shape::pairs);
    }
}

void DemandList::addLoCancellation() {
    addDriver(Need::required, {{driver("tx.rf.mixer.i")}, {driver("tx.bb.iq.coarse.dc.i.v.adjust")}});
    addDriver(Need::required, {{driver("tx.rf.mixer.q")}, {driver("tx.bb.iq.coarse.dc.q.v.adjust")}});
    // Detectors are only ever read, yet one that cannot be written counts as not found.
    const std::string detector = driver("tx.rf.detector.v");
    const std::string lowDetector = driver("tx.rf.detector.low.v.detect");
    addDriver(Need::required, {{detector}, {lowDetector}}).laterWords = Standalone::wordRead;
    Demand& high = addDriver(Need::required, {{driver("tx.rf.detector.high.v.detect")}});
    high.laterWords = Standalone::wordRead;
    high.conditions = {{detector, false}, {lowDetector, true}};
    // A coarse-DC table only switches the correction off; nobody looks a value up in it.
    const auto coarseTable = [this](const std::string& branch) {
        return table("Tx.Bb.Frequency.To.Coarse.Dc." + branch + ".Compensation");
    };
    for (const auto& [branch, other] : {std::pair<std::string, std::string>("I", "Q"), {"Q", "I"}}) {
        add(ObjectKind::table, Need::wanted,
            {{cancellationTableName(m_channel->number, branch), Shape::twoAxes}, {coarseTable(branch)}})
            .idledBy = coarseTable(other);
    }
}

void DemandList::addIqCompensation() {
    addInterface(Need::required, "IDriverLayer");
    // The start-up only looks whether drivers are there; what they lack shows when they are written. The two
    // of the DC offset are written without their context.
    const unsigned dcWords = Standalone::wordWrite;
    for (const auto& [name, words] : {std::pair("dc.compensation.i", dcWords),
                                      {"dc.compensation.q", dcWords},
                                      {"quadrature.gain.offset.compensation", writableDriver},
                                      {"quadrature.phase.offset.compensation", writableDriver}}) {
        add(ObjectKind::driver, Need::required, {{driver(std::string("dsp.tx.") + name)}}).laterWords = words;
    }
    for (const std::string quantity : {"Dc.I", "Dc.Q", "Gain.Offset", "Phase.Offset"}) {
        add(ObjectKind::table, Need::required,
            {{table("Tx.Dsp.Temperature.To." + quantity + ".Compensation"), Shape::oneAxis}});
    }
    addInterface(Need::required, "ITemperatureHandler");
}

} // namespace

std::string_view toString(ObjectKind kind) {
    switch (kind) {
    case ObjectKind::driver:
        return "driver";
    case ObjectKind::variable:
        return "variable";
    case ObjectKind::table:
        return "table";
    case ObjectKind::interface:
        break;
    }
    return "interface";
}

std::vector<Demand> demandsOf(const Board& board) {
    DemandList list;
    for (const ChannelDescription& channel : board.channels) {
        list.addChannel(channel);
    }
    return list.take();
}

std::string_view phaseThatCopies(const std::string& variable, const Board& board) {
    for (const Demand& demand : demandsOf(board)) {
        if (demand.kind == ObjectKind::variable && demand.candidates.front().name == variable) {
            return demand.copiedBy;
        }
    }
    return {};
}

} // namespace Radio
