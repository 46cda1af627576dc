#ifndef RADIO_FIT_PROBER_H
#define RADIO_FIT_PROBER_H

#include "radio/fit/Order.h"
#include "radio/fit/Outcome.h"

#include <cstdint>
#include <optional>

namespace Radio::Fit {

/** What a search came to. */
struct Searched {
    /** Nothing: it found none. */
    std::optional<Corrections> found{};
    /** How many it made, at most Order::probesOfSearch. */
    std::uint32_t probes = 0;
};

/**
 * Makes the probes that a calibration asks for. Given the same answers, a calibration asks the same questions
 * in the same order: one that was interrupted is gone on with by answering from what was kept of it.
 *
 * A place is gone to once, and left for good.
 */
class Prober {
public:
    Prober() = default;
    Prober(const Prober&) = delete;
    Prober& operator=(const Prober&) = delete;
    virtual ~Prober() = default;

    /** Has the transmitter at a place for the probes that follow. False: it cannot be had there. */
    virtual bool goTo(const Place& place) = 0;
    /** What the detector reads with these corrections, once it has settled; nothing: it cannot be read. */
    virtual std::optional<std::int32_t> probe(const Corrections& corrections) = 0;
    /** Asked after each probe and each place whether to go on. */
    virtual bool goOn() = 0;
    /** The best corrections at the place of the last goTo(), found by other means, where no fit did. */
    virtual Searched search(const Place& place) = 0;

    /** For whoever shows how far it is: a place was fitted. */
    virtual void fitted(const Point& /*point*/) {}
    /** The table was tried at a place; what was set for it still is. */
    virtual void tried(const Verification& /*verification*/) {}
};

} // namespace Radio::Fit

#endif
