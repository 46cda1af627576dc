#ifndef RADIO_PLAN_STEPLIST_H
#define RADIO_PLAN_STEPLIST_H

#include "radio/plan/Explanation.h"
#include "radio/plan/HardwareWords.h"
#include "radio/plan/PlanSteps.h"
#include "radio/plan/ProducedCarrier.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Radio::Plan {

/** Writes the steps of the plan down for a person. */
class StepList {
public:
    /** `parameters` must outlive the object; `carrier` is in kHz. */
    StepList(const Parameters& parameters, std::uint32_t carrier)
        : m_parameters(parameters),
          m_carrier(carrier) {}

    void addSpacing(const SpacingShift& shift);
    void addSynthesisers(const PlanSteps& steps);
    /** Adds how the setting was found at a carrier, and returns it. A null table stands for none. */
    std::int32_t addChargePump(const CalibrationTable* table, std::uint32_t carrier);

    std::vector<ExplainedStep> take() { return std::move(m_steps); }

private:
    void add(std::string name, std::string formula, std::int64_t value, std::string unit,
             std::string note = "");
    void addOffset(const SpacingOffset& offset);
    /** Adds the carrier moved by so much. */
    void addMoved(std::string name, std::int32_t byKHz, std::string note);
    void addLo(const PlanSteps& steps);
    void addIfPll(const PlanSteps& steps);
    void addRfPll(const PlanSteps& steps);

    const Parameters& m_parameters;
    std::uint32_t m_carrier;
    std::vector<ExplainedStep> m_steps;
};

/** The way back from the words to the carrier, in Hz. */
std::vector<ExplainedStep> productionSteps(const HardwareWords& words, const ProducedCarrier& produced,
                                           const Parameters& parameters);

} // namespace Radio::Plan

#endif
