#include "radio/calibration/FitProber.h"

#include <utility>

namespace Radio::Calibration {

FitProber::FitProber(Calibrator& calibrator, const KnownProbes& known, bool isReal, Caller caller)
    : m_calibrator(calibrator),
      m_known(known),
      m_isReal(isReal),
      m_caller(std::move(caller)) {}

bool FitProber::goTo(const Fit::Place& place) {
    leave();
    m_place = place;
    m_probed.clear();
    m_isFromJournal = true;
    m_isThere = false;
    if (m_isReal && isNextKnown()) {
        m_calibrator.begin(place.carrier, place.temperature, known(), true);
        return true;
    }
    return arrive();
}

std::optional<std::int32_t> FitProber::probe(const Fit::Corrections& corrections) {
    if (!isNextKnown()) {
        m_isFromJournal = false;
        if (!m_isThere && !arrive()) {
            return std::nullopt;
        }
    }
    m_probed.push_back(corrections);
    ++m_count;
    const std::optional<std::int32_t> reading = m_calibrator.probe(corrections.i, corrections.q);
    if (!reading && m_calibrator.whyStopped().empty()) {
        fails(m_calibrator.whyNotProbed());
    }
    return reading;
}

bool FitProber::goOn() {
    return m_caller.goOn(*this) && m_calibrator.whyStopped().empty() && m_trouble.empty();
}

Fit::Searched FitProber::search(const Fit::Place& place) {
    // The library's search is not asked for one probe after the other: a real radio has to be there.
    if (!m_isThere && !arrive()) {
        return {};
    }
    Point point;
    point.frequency = place.carrier;
    point.temperature = place.temperature;
    const std::size_t before = m_calibrator.probes().size();
    const bool isFound = m_calibrator.search(point);
    if (!isFound && m_calibrator.whyStopped().empty()) {
        fails(m_calibrator.firstComplaint());
    }
    const std::size_t probes = m_calibrator.probes().size() - before;
    m_isFromJournal = m_isFromJournal && m_calibrator.probes().size() <= known().size();
    m_count += probes;
    return {isFound ? std::optional(Fit::Corrections{point.i, point.q}) : std::nullopt,
            static_cast<std::uint32_t>(probes)};
}

void FitProber::fitted(const Fit::Point& point) {
    m_caller.fitted(point, m_calibrator.probes());
}

void FitProber::tried(const Fit::Verification& verification) {
    m_caller.tried(verification);
}

void FitProber::leave() {
    if (m_place) {
        static_cast<void>(m_calibrator.end());
        m_place.reset();
    }
}

const JournaledProbes& FitProber::known() const {
    static const JournaledProbes none;
    const auto found = m_known.find({m_place->temperature, m_place->carrier});
    return found == m_known.end() ? none : found->second;
}

bool FitProber::fails(const std::string& why) {
    m_trouble = std::to_string(m_place->carrier) + " kHz, " + std::to_string(m_place->temperature) +
                " degrees: " + why;
    return false;
}

bool FitProber::arrive() {
    static_cast<void>(m_calibrator.end());
    const std::string whyNotThere = m_calibrator.goTo(m_place->carrier, m_place->temperature);
    if (!whyNotThere.empty()) {
        return fails(whyNotThere);
    }
    m_isThere = true;
    m_calibrator.begin(m_place->carrier, m_place->temperature, known(), false);
    for (const Fit::Corrections& corrections : m_probed) {
        static_cast<void>(m_calibrator.probe(corrections.i, corrections.q));
    }
    return true;
}

} // namespace Radio::Calibration
