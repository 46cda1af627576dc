#include "radio/description/TypeGuess.h"

#include "radio/board/BoardNames.h"
#include "radio/description/Inventory.h"

namespace Radio::Describing {

std::optional<::FrequencyHandler::FrequencyHandlerType> guessType(const Inventory& inventory, int channel) {
    using Type = ::FrequencyHandler;
    const std::string prefix = "channel." + std::to_string(channel) + ".";
    const auto asksFor = [&](const char* driver) { return inventory.driver(prefix + driver) != nullptr; };
    if (asksFor("tx.rf.frequency")) {
        return Type::RfModule;
    }
    if (inventory.interface(rauName(channel)) != nullptr) {
        return Type::Rau;
    }
    // The receiver is what tells the boards apart, and it is not asked when the transmitter failed.
    if (!asksFor("rx.rf.lo.frequency")) {
        return std::nullopt;
    }
    const bool shiftsDsp = asksFor("dsp.rx.freq.offset");
    if (asksFor("rx.rf.lo.frequency.in.hz")) {
        return shiftsDsp ? Type::MicrowaveBoardHzCsOffset : Type::MicrowaveBoardHz;
    }
    return shiftsDsp ? Type::MicrowaveBoardDspOffset : Type::MicrowaveBoardIf;
}

} // namespace Radio::Describing
