#include "IRauHandler.h"
#include "InterfaceBroker.h"
#include "conformance/Rule.h"

namespace Conformance {

namespace {

constexpr const char* remote = "FrequencyHandler_Rau";

/** A remote radio unit of somebody else. */
class Foreign : public IRauHandler {
public:
    EAFResult setTxRadioFrequency(unsigned long /*frequency*/) override { return ResultOk; }
    EAFResult setRxRadioFrequency(unsigned long /*frequency*/) override { return ResultOk; }
};

void typeIsSeen(Adapter& /*adapter*/) {
    Foreign unit;
    hold(isSuccess(InterfaceBroker::getInstance().registerInterface("IRauHandler_97", &unit)),
         "publishing a remote radio unit fails");
    hold(InterfaceBroker::getInstance().getInterface<IRauHandler>("IRauHandler_97") == &unit,
         "it is not seen as one: is the type information of IRauHandler hidden?");
}

void isPublished(Adapter& adapter) {
    const std::string bare = "IRauHandler";
    for (const int channel : {0, 2}) {
        need(adapter.putRemoteUnit(channel), "publish a remote radio unit");
        const std::string name = channel == 0 ? bare : bare + "_" + std::to_string(channel);
        auto* const unit = InterfaceBroker::getInstance().getInterface<IRauHandler>(name);
        hold(unit != nullptr,
             "that of channel " + std::to_string(channel) + " is not found as \"" + name + '"');
        hold(isSuccess(unit->setTxRadioFrequency(7442000)) && isSuccess(unit->setRxRadioFrequency(7603000)),
             "setting a carrier fails");
        holdSame("its transmit carrier",
                 told(adapter.remoteCarrier(channel, true), "the carriers of a remote radio unit"),
                 7442000UL);
        holdSame("its receive carrier", adapter.remoteCarrier(channel, false).value_or(0), 7603000UL);
    }
}

} // namespace

Rules remoteUnitRules() {
    return {
        {"remote-units.type-is-seen", "What derives from IRauHandler is found as one.", remote, typeIsSeen},
        {"remote-units.are-published",
         "A unit is published as \"IRauHandler\", with _N on channel N, and takes both carriers.", remote,
         isPublished},
    };
}

} // namespace Conformance
