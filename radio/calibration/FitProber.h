#ifndef RADIO_CALIBRATION_FITPROBER_H
#define RADIO_CALIBRATION_FITPROBER_H

#include "radio/calibration/Calibration.h"
#include "radio/calibration/Calibrator.h"
#include "radio/calibration/Journal.h"
#include "radio/fit/Prober.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Radio::Calibration {

/**
 * Makes the probes of a fit through the drivers of a radio, each entered in the journal before the next is
 * set. What the journal has is answered from it; a real radio is neither brought to a temperature nor tuned
 * before the first probe at a place that the journal does not have.
 */
class FitProber final : public Fit::Prober {
public:
    /** What a fit asks its caller for; never empty. */
    struct Caller {
        /** Asked after each probe and each place whether to go on. */
        std::function<bool(const FitProber&)> goOn;
        /** Told of each point, once it is fitted. */
        std::function<void(const Fit::Point&, std::vector<Probe>)> fitted;
        /** Told of each place where the table was tried, with its corrections set. */
        std::function<void(const Fit::Verification&)> tried;
    };

    /** What is borrowed must outlive the object. `isReal`: it is a real radio that is probed. */
    FitProber(Calibrator& calibrator, const KnownProbes& known, bool isReal, Caller caller);
    ~FitProber() override { leave(); }

    bool goTo(const Fit::Place& place) override;
    std::optional<std::int32_t> probe(const Fit::Corrections& corrections) override;
    bool goOn() override;
    Fit::Searched search(const Fit::Place& place) override;

    void fitted(const Fit::Point& point) override;
    void tried(const Fit::Verification& verification) override;

    /** The radio is at the place; else only the journal is gone through. */
    bool isThere() const { return m_isThere; }
    /** Ends the last place; there is nothing to probe until the next. */
    void leave();
    std::size_t probes() const { return m_count; }
    /** Those at the last place were all in the journal. */
    bool isFromJournal() const { return m_isFromJournal; }
    /** Why the last place could not be had, or not be measured at; empty: neither. It goes no further then:
     * what comes after is not what would have come had it been measured. */
    const std::string& trouble() const { return m_trouble; }

private:
    const JournaledProbes& known() const;
    bool isNextKnown() const { return m_calibrator.probes().size() < known().size(); }
    /** Keeps why it goes no further; false. */
    bool fails(const std::string& why);
    /** Has the transmitter there, with all that was probed before taken from the journal once more. */
    bool arrive();

    Calibrator& m_calibrator;
    const KnownProbes& m_known;
    const bool m_isReal;
    const Caller m_caller;
    std::optional<Fit::Place> m_place;
    /** The radio is there; else the journal alone is gone through. */
    bool m_isThere = false;
    bool m_isFromJournal = true;
    std::size_t m_count = 0;
    std::vector<Fit::Corrections> m_probed;
    std::string m_trouble;
};

} // namespace Radio::Calibration

#endif
