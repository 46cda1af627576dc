#include "radio/board/TransmitterReader.h"

#include "radio/board/ChannelReader.h"
#include "radio/model/ModelNumbers.h"

namespace Radio {

namespace {

ThermalCurve readCurve(const TomlItem& transmitter, std::string_view key) {
    const std::string what = "the value at 25 degrees, its change per degree, and per degree squared";
    const TomlItem item = transmitter.get(key, what);
    const std::vector<TomlItem> elements = item.elements();
    item.requireCount(elements.size(), 3, what);
    return {elements[0].number(largestNumber), elements[1].number(largestNumber),
            elements[2].number(largestNumber)};
}

double readStep(const TomlItem& transmitter, std::string_view key) {
    const TomlItem item = transmitter.get(key, "what one step of the correction changes");
    const double step = item.number(largestNumber);
    if (step == 0.0) {
        item.failExpecting("a number other than 0");
    }
    return step;
}

} // namespace

std::vector<TransmitterDescription> readTransmitters(const TomlItem& root,
                                                     const std::vector<ChannelDescription>& channels) {
    std::vector<TransmitterDescription> result;
    ChannelReader channel(channels, "transmitter");
    for (const TomlItem& item : root.tables("transmitter", "transmitter")) {
        item.entries({"channel", "gain_imbalance", "phase_imbalance", "dc_offset_i", "dc_offset_q",
                      "gain_step", "phase_step", "dc_step"});
        TransmitterDescription transmitter;
        transmitter.channel = channel.read(item);
        transmitter.gainImbalance = readCurve(item, "gain_imbalance");
        transmitter.phaseImbalance = readCurve(item, "phase_imbalance");
        transmitter.dcOffsetI = readCurve(item, "dc_offset_i");
        transmitter.dcOffsetQ = readCurve(item, "dc_offset_q");
        transmitter.gainStep = readStep(item, "gain_step");
        transmitter.phaseStep = readStep(item, "phase_step");
        transmitter.dcStep = readStep(item, "dc_step");
        result.push_back(transmitter);
    }
    return result;
}

} // namespace Radio
