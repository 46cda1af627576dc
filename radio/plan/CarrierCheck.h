#ifndef RADIO_PLAN_CARRIERCHECK_H
#define RADIO_PLAN_CARRIERCHECK_H

#include "radio/board/PlatformWords.h"
#include "radio/plan/Audit.h"
#include "radio/plan/PlanSteps.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Radio::Plan {

/** What the library did at one visit of a carrier. */
struct Visit {
    HardwareWords words;
    /** The errors that it reported. */
    std::vector<std::string> complaints;
};

/** Holds what came of carriers against the limits of a board, for one channel, direction and spacing. */
class CarrierCheck {
public:
    /** Reads what the handler has read; the platform must outlive the object. */
    CarrierCheck(Standalone::Platform& platform, const Limits& limits, const ChannelDescription& channel,
                 Direction direction);

    /**
     * Fills `result` for a carrier from its first visit and from a second one, before which the radio was on
     * the carrier `other`. In kHz.
     */
    void check(CarrierResult& result, std::uint32_t carrier, const Visit& first, const Visit& again,
               std::uint32_t other) const;

private:
    void checkComplaints(CarrierResult& result, const Visit& first, const Visit& again) const;
    void checkSynthesisers(CarrierResult& result) const;
    void checkRange(CarrierResult& result, FindingKind kind, Word word, const std::optional<Range>& range,
                    bool inHz) const;
    void checkChargePump(CarrierResult& result) const;
    void checkCarrier(CarrierResult& result, bool complained) const;
    void checkRetune(CarrierResult& result, const Visit& again, std::uint32_t other) const;

    Limits m_limits;
    std::int64_t m_allowedError;
    WordSources m_sources;
    std::optional<Parameters> m_parameters;
    SpacingShift m_shift;
    std::string m_whyOff;
    /** The carriers for which the charge-pump table has cells, in kHz. */
    std::optional<Range> m_chargePumpAxis;
};

} // namespace Radio::Plan

#endif
