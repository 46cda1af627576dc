#ifndef RADIO_CALIBRATION_CHANNELCHAIN_H
#define RADIO_CALIBRATION_CHANNELCHAIN_H

#include "radio/calibration/Calibration.h"
#include "radio/calibration/Qualification.h"
#include "radio/calibration/SearchDrivers.h"
#include "radio/session/ModelClock.h"
#include "standalone/Platform.h"

#include <functional>

namespace Radio::Calibration {

/** What a measuring chain of a channel is made of. What is borrowed must outlive the chain. */
struct ChannelChain {
    Standalone::Platform& platform;
    ModelClock& clock;
    SearchDrivers drivers;
    bool useHighDetector = false;
    /** Times are waited for. */
    bool isRealTime = false;
    /** Asked meanwhile whether to go on; never empty. */
    std::function<bool()> goOn;
};

/** Goes through the same drivers as a search does. */
MeasuringChain chainOf(const ChannelChain& channel);

/** What is known of a channel's chain. `leakage` is that of its modelled transmitter, null on hardware.
 * `settleTime` and the `slope` of a real detector are what somebody stated. */
ChainDescription describeChain(const Settings& settings, const LeakageDescription* leakage,
                               std::optional<std::uint32_t> settleTime, std::optional<double> slope);

} // namespace Radio::Calibration

#endif
