#include "radio/plan/AuditFinding.h"

namespace Radio::Plan {

namespace {

std::string withUnit(std::int64_t number, std::string_view unit) {
    return std::to_string(number) + " " + std::string(unit);
}

std::string rangeText(const CarrierFinding& finding) {
    return std::to_string(finding.limits.low) + " to " + withUnit(finding.limits.high, finding.unit);
}

} // namespace

std::string_view toString(FindingKind kind) {
    switch (kind) {
    case FindingKind::failed:
        return "failed";
    case FindingKind::unhandledSpacing:
        return "unhandled-spacing";
    case FindingKind::noCarrier:
        return "no-carrier";
    case FindingKind::ifPllOutOfRange:
        return "if-pll-out-of-range";
    case FindingKind::rfPllOutOfRange:
        return "rf-pll-out-of-range";
    case FindingKind::wordOverflow:
        return "word-overflow";
    case FindingKind::chargePumpClamped:
        return "charge-pump-clamped";
    case FindingKind::carrierOff:
        return "carrier-off";
    case FindingKind::retuneDiffers:
        break;
    }
    return "retune-differs";
}

std::string describe(const CarrierFinding& finding) {
    switch (finding.kind) {
    case FindingKind::unhandledSpacing:
        return "channel spacing " + std::to_string(finding.value) + " is not handled: nothing is written";
    case FindingKind::noCarrier:
        return "no carrier: not all words for it are written";
    case FindingKind::ifPllOutOfRange:
    case FindingKind::rfPllOutOfRange:
        return std::string(toString(finding.word)) + " " + withUnit(finding.value, finding.unit) +
               " is outside " + rangeText(finding);
    case FindingKind::wordOverflow:
        return std::string(toString(finding.word)) + " " +
               withUnit(static_cast<std::uint32_t>(finding.value), finding.unit) +
               " does not fit the driver's 32-bit word, which becomes " + std::to_string(finding.value);
    case FindingKind::chargePumpClamped:
        return "charge pump read at " + withUnit(finding.value, finding.unit) + ", outside its table's " +
               rangeText(finding);
    case FindingKind::carrierOff:
        return "carrier off by " + signedText(finding.value) + " Hz, allowed are " +
               withUnit(finding.limits.high, finding.unit) +
               (finding.text.empty() ? "" : ": " + finding.text);
    case FindingKind::failed:
    case FindingKind::retuneDiffers:
        break;
    }
    return finding.text;
}

} // namespace Radio::Plan
