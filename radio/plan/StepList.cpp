#include "radio/plan/StepList.h"

namespace Radio::Plan {

namespace {

/** " + 140000" or " - 140000": a number behind another one. */
std::string term(std::int64_t number) {
    return number < 0 ? " - " + std::to_string(-number) : " + " + std::to_string(number);
}

std::string whyOffset(const SpacingOffset& offset, const Parameters& parameters) {
    const std::string spacing = std::to_string(parameters.channelSpacing);
    switch (offset.source) {
    case SpacingOffset::Source::arrayEntry:
        return "array entry (" + spacing + ", " + std::to_string(offset.stored) +
               "), with the sign of the RF sideband";
    case SpacingOffset::Source::halfSpacing:
        return "no array entry for " + spacing + "; HwCodeDsp 3 has half the spacing stand in";
    case SpacingOffset::Source::byDefault:
        break;
    }
    return "no array entry for " + spacing + ", and half the spacing does not stand in: the default";
}

} // namespace

void StepList::add(std::string name, std::string formula, std::int64_t value, std::string unit,
                   std::string note) {
    m_steps.push_back({std::move(name), std::move(formula), value, std::move(unit), std::move(note)});
}

void StepList::addSpacing(const SpacingShift& shift) {
    if (shift.offset) {
        addOffset(*shift.offset);
    }
    const std::string spacing = std::to_string(m_parameters.channelSpacing);
    if (shift.isUnhandled) {
        add("DSP half spacing", "spacing " + spacing, 0, "",
            "not one of 50, 100, 150, 200, 250, 300, 350, 400, 450 and 600: nothing is written");
    } else if (shift.half) {
        add("DSP half spacing", "spacing " + spacing, *shift.half, "kHz");
        addMoved("carrier for the LO", -*shift.half, "the DSP shifts what is received back");
    }
    if (m_parameters.factor == 0) {
        add("RF PLL", "factor 0", 0, "", "nothing can be divided by 0: no synthesiser is written");
    }
}

void StepList::addOffset(const SpacingOffset& offset) {
    add("channel-spacing offset", "spacing " + std::to_string(m_parameters.channelSpacing), offset.kHz, "kHz",
        whyOffset(offset, m_parameters));
    add("DSP offset", "-(" + std::to_string(offset.kHz) + ")", offset.dspWord, "kHz",
        offset.dspWord == 0 ? "3000 is the one offset for which the DSP is told 0" : "");
    addMoved("carrier with offset", offset.kHz, "");
}

void StepList::addMoved(std::string name, std::int32_t byKHz, std::string note) {
    const std::uint32_t moved = m_carrier + static_cast<std::uint32_t>(byKHz);
    const bool wraps = moved != std::int64_t{m_carrier} + byKHz;
    add(std::move(name), std::to_string(m_carrier) + term(byKHz), moved, "kHz",
        wraps ? "wraps around at 32 bits" : std::move(note));
}

void StepList::addSynthesisers(const PlanSteps& steps) {
    if (!m_parameters.build.hasLoInHz) {
        addLo(steps);
    }
    if (steps.ifPll) {
        addIfPll(steps);
    }
    addRfPll(steps);
}

void StepList::addLo(const PlanSteps& steps) {
    const std::int64_t fromCarrier = std::int64_t{m_parameters.rfSideband} * m_parameters.ifFrequency;
    std::string note;
    if (steps.signedLo != steps.planned + fromCarrier) {
        note = "wraps around at 32 bits";
    } else if (steps.signedLo < 0) {
        note = "folded: the same words belong to the carrier " +
               std::to_string(-2 * fromCarrier - steps.planned) + " kHz";
    }
    const std::string sum =
        std::to_string(steps.planned) + (m_parameters.build.hasIfSynthesiser ? term(fromCarrier) : "");
    add("LO", "|" + sum + "|", steps.lo, "kHz", std::move(note));
    add("step", "(" + std::to_string(steps.lo) + " + 500) / 1000", steps.stepMHz, "MHz");
    add("residue", std::to_string(steps.lo) + " - " + std::to_string(std::int64_t{steps.stepMHz} * 1000),
        steps.residue, "kHz",
        steps.residue != 0 && !steps.ifPll ? "lost: there is no IF synthesiser to take it up" : "");
}

void StepList::addIfPll(const PlanSteps& steps) {
    const std::int64_t baseband = 1000 * std::int64_t{m_parameters.ifBb} * m_parameters.ifSideband;
    const std::int64_t residue = std::int64_t{-1} * m_parameters.rfSideband * steps.residue;
    const std::int64_t wide = m_parameters.ifFrequency + baseband + residue;
    std::string note = *steps.signedIfPll != wide ? "wraps around at 32 bits" : "";
    if (note.empty() && *steps.signedIfPll < 0) {
        note = "folded";
    }
    add("IF PLL", "|" + std::to_string(m_parameters.ifFrequency) + term(baseband) + term(residue) + "|",
        *steps.ifPll, "kHz", std::move(note));
}

void StepList::addRfPll(const PlanSteps& steps) {
    const bool inHz = m_parameters.build.hasLoInHz;
    const std::string unit = inHz ? "Hz" : "kHz";
    const std::string note =
        steps.remainder != 0 ? "the remainder " + std::to_string(static_cast<std::int64_t>(steps.remainder)) +
                                   " " + unit + " of the LO is cut off"
                             : "";
    add("RF PLL",
        std::to_string(inHz ? steps.planned : steps.stepMHz) + " x 1000 / " +
            std::to_string(m_parameters.factor),
        static_cast<std::int64_t>(steps.rfPll), unit, note);
}

std::int32_t StepList::addChargePump(const CalibrationTable* table, std::uint32_t carrier) {
    const std::string at = "at " + std::to_string(static_cast<std::int32_t>(carrier)) + " kHz";
    if (table == nullptr || !table->axis2.empty()) {
        add("charge pump", at, 0, "", "no table with one axis: 0 is written");
        return 0;
    }
    const ChargePumpStep step = chargePumpAt(*table, carrier);
    const std::string width = "/" + std::to_string(step.width);
    const std::int32_t low = table->values[step.low];
    const std::int32_t high = table->values[step.high];
    const std::uint32_t lowWeight = step.width - step.offset;
    const std::string cell = " kHz, weight ";
    add("cell", "at " + std::to_string(table->axis1[step.low]) + cell + std::to_string(lowWeight) + width,
        low, "");
    if (step.low == step.high) {
        add("charge pump", at, step.setting, "",
            table->name + (step.isClamped ? ": outside its axis, clamped to the end" : ""));
        return step.setting;
    }
    add("cell", "at " + std::to_string(table->axis1[step.high]) + cell + std::to_string(step.offset) + width,
        high, "");
    add("charge pump",
        at + ": (" + std::to_string(low) + " x " + std::to_string(lowWeight) + term(high) + " x " +
            std::to_string(step.offset) + ")" + width,
        step.setting, "", table->name);
    return step.setting;
}

std::vector<ExplainedStep> productionSteps(const HardwareWords& words, const ProducedCarrier& produced,
                                           const Parameters& parameters) {
    std::vector<ExplainedStep> steps;
    const bool inHz = parameters.build.hasLoInHz;
    const auto unsignedWord = [&](Word word) {
        return std::to_string(static_cast<std::int64_t>(static_cast<std::uint32_t>(*words[word])));
    };
    const std::string rfPll =
        inHz ? std::to_string(*words[Word::rfPll]) + " Hz" : unsignedWord(Word::rfPll) + " kHz";
    steps.push_back(
        {"LO", "RF PLL " + rfPll + " x " + std::to_string(parameters.factor), produced.lo, "Hz", ""});
    std::string formula = std::to_string(produced.lo);
    if (parameters.build.hasIfSynthesiser) {
        const std::int64_t baseband = std::int64_t{parameters.ifBb} * parameters.ifSideband;
        steps.push_back(
            {"IF",
             "IF PLL " + unsignedWord(Word::ifPll) + " kHz" + (baseband == 0 ? "" : term(-baseband) + " MHz"),
             produced.intermediate, "Hz", ""});
        const bool loIsAbove = parameters.rfSideband > 0;
        formula += term(loIsAbove ? -produced.intermediate : produced.intermediate);
    }
    if (words[Word::dspOffset]) {
        steps.push_back(
            {"DSP shift", std::to_string(*words[Word::dspOffset]) + " kHz", produced.dspShift, "Hz", ""});
        formula += term(produced.dspShift);
    }
    steps.push_back({"carrier", formula, produced.carrier, "Hz", ""});
    return steps;
}

} // namespace Radio::Plan
