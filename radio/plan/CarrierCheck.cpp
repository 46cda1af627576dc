#include "radio/plan/CarrierCheck.h"

#include "radio/board/PlatformWords.h"
#include "radio/plan/ProducedCarrier.h"

#include <cstdlib>

namespace Radio::Plan {

namespace {

/** How far `value` lies outside `range`; 0 inside. */
std::int64_t excessOver(std::int64_t value, const Range& range) {
    return value < range.low ? range.low - value : value > range.high ? value - range.high : 0;
}

std::string wordText(const std::optional<std::int64_t>& word) {
    return word ? std::to_string(*word) : "not written";
}

} // namespace

CarrierCheck::CarrierCheck(Standalone::Platform& platform, const Limits& limits,
                           const ChannelDescription& channel, Direction direction)
    : m_limits(limits),
      m_allowedError(limits.carrierError.value_or(defaultCarrierError)),
      m_sources(platform, channel, direction) {
    const std::optional<Build> build = buildOf(channel.type, direction);
    if (!build) {
        return;
    }
    m_parameters = readParameters(platform.variables(), channel.number, direction, *build);
    m_shift = spacingShiftOf(*m_parameters);
    m_whyOff = whyCarrierIsOff(m_shift, *m_parameters);
    const CalibrationTable* const table = chargePumpTable(platform.tables(), channel.number, direction);
    if (table != nullptr && table->axis2.empty()) {
        m_chargePumpAxis = {table->axis1.front(), table->axis1.back()};
    }
}

void CarrierCheck::check(CarrierResult& result, std::uint32_t carrier, const Visit& first, const Visit& again,
                         std::uint32_t other) const {
    result.carrier = carrier;
    result.words = first.words;
    result.findings.clear();
    const auto produced =
        m_parameters ? producedCarrier(first.words, *m_parameters) : passedOnCarrier(first.words);
    result.produced = produced ? std::optional(produced->carrier) : std::nullopt;
    result.error = produced ? std::optional(produced->carrier - std::int64_t{carrier} * 1000) : std::nullopt;

    checkComplaints(result, first, again);
    checkSynthesisers(result);
    checkChargePump(result);
    checkCarrier(result, !first.complaints.empty());
    checkRetune(result, again, other);
    for (CarrierFinding& finding : result.findings) {
        finding.carrier = carrier;
    }
}

void CarrierCheck::checkComplaints(CarrierResult& result, const Visit& first, const Visit& again) const {
    if (m_shift.isUnhandled) {
        CarrierFinding finding{FindingKind::unhandledSpacing};
        finding.value = m_parameters->channelSpacing;
        result.findings.push_back(finding);
        return;
    }
    const Visit& complaining = first.complaints.empty() ? again : first;
    for (const std::string& complaint : complaining.complaints) {
        CarrierFinding finding{FindingKind::failed};
        finding.text = complaint;
        result.findings.push_back(finding);
    }
}

void CarrierCheck::checkSynthesisers(CarrierResult& result) const {
    checkRange(result, FindingKind::ifPllOutOfRange, Word::ifPll, m_limits.ifPll, false);
    const bool inHz = m_parameters && m_parameters->build.hasLoInHz;
    checkRange(result, FindingKind::rfPllOutOfRange, Word::rfPll, m_limits.rfPll, inHz);
}

void CarrierCheck::checkRange(CarrierResult& result, FindingKind kind, Word word,
                              const std::optional<Range>& range, bool inHz) const {
    const std::optional<std::int64_t> written = result.words[word];
    if (!written) {
        return;
    }
    CarrierFinding finding{kind};
    finding.word = word;
    finding.unit = inHz ? "Hz" : "kHz";
    if (!inHz && *written < 0) {
        finding.kind = FindingKind::wordOverflow;
        finding.value = *written;
        result.findings.push_back(finding);
        finding.kind = kind;
    }
    if (range) {
        finding.value = inHz ? *written : std::int64_t{static_cast<std::uint32_t>(*written)};
        finding.limits = inHz ? Range{range->low * 1000, range->high * 1000} : *range;
        finding.excess = excessOver(finding.value, finding.limits);
        if (finding.excess != 0) {
            result.findings.push_back(finding);
        }
    }
}

void CarrierCheck::checkChargePump(CarrierResult& result) const {
    if (!m_chargePumpAxis || !result.words[Word::chargePump]) {
        return;
    }
    CarrierFinding finding{FindingKind::chargePumpClamped};
    finding.value = static_cast<std::int32_t>(m_shift.adjusted(result.carrier));
    finding.limits = *m_chargePumpAxis;
    finding.unit = "kHz";
    finding.excess = excessOver(finding.value, finding.limits);
    if (finding.excess != 0) {
        result.findings.push_back(finding);
    }
}

void CarrierCheck::checkCarrier(CarrierResult& result, bool complained) const {
    if (!result.error) {
        // What kept the words back was reported already, if it was a failure.
        if (!complained) {
            result.findings.push_back(CarrierFinding{FindingKind::noCarrier});
        }
        return;
    }
    if (std::abs(*result.error) > m_allowedError) {
        CarrierFinding finding{FindingKind::carrierOff};
        finding.value = *result.error;
        finding.limits = {-m_allowedError, m_allowedError};
        finding.unit = "Hz";
        finding.excess = std::abs(*result.error) - m_allowedError;
        finding.text = m_whyOff;
        result.findings.push_back(finding);
    }
}

void CarrierCheck::checkRetune(CarrierResult& result, const Visit& again, std::uint32_t other) const {
    const std::optional<Word> different = result.words.firstDifference(again.words);
    if (!different) {
        return;
    }
    CarrierFinding finding{FindingKind::retuneDiffers};
    finding.word = *different;
    finding.text = "back from " + std::to_string(other) + " kHz, " + m_sources.nameOf(*different) + " is " +
                   wordText(again.words[*different]) + ", at first " + wordText(result.words[*different]);
    result.findings.push_back(finding);
}

} // namespace Radio::Plan
