#ifndef RADIO_SESSION_LEAKINGTRANSMITTER_H
#define RADIO_SESSION_LEAKINGTRANSMITTER_H

#include "radio/model/LeakageModel.h"
#include "standalone/DriverBank.h"

#include <cstdint>
#include <functional>
#include <random>
#include <vector>

namespace Radio {

/**
 * A modelled transmitter at work: it takes its corrections from drivers of the platform, and gives the
 * drivers of its detectors what they read. A detector follows with time; time goes on when it is told so.
 *
 * Belongs to a radio, whose drivers it borrows.
 */
class LeakingTransmitter {
public:
    /** `surroundings` says under which conditions it works at the moment. `drivers` must outlive the object,
     * and has all those that `leakage` names. It begins at rest. */
    LeakingTransmitter(LeakageDescription leakage, Standalone::DriverBank& drivers,
                       std::function<Surroundings()> surroundings);
    LeakingTransmitter(const LeakingTransmitter&) = delete;
    LeakingTransmitter& operator=(const LeakingTransmitter&) = delete;
    ~LeakingTransmitter();

    const LeakageDescription& description() const { return m_leakage; }
    Surroundings surroundings() const { return m_surroundings(); }
    /** What the drivers of the corrections have now. */
    LoCorrections corrections() const;
    /** In dBc, with the corrections that the drivers have now. */
    double level() const;

    /** Has the detectors follow for a while, in ms. */
    void elapse(double milliseconds);
    /** As after a long rest under these surroundings without corrections, whatever the drivers have: the
     * detectors have settled, and the noise begins where it always begins for this carrier and temperature.
     */
    void rest();

private:
    struct Detector {
        const DetectorDescription& description;
        Standalone::Driver& driver;
        /** Before noise, limits and conversion, in units. */
        double output;
    };

    std::int64_t read(Detector& detector);
    /** The next number of a distribution that is nearly normal, with mean 0 and variance 1. */
    double noise();

    const LeakageDescription m_leakage;
    std::function<Surroundings()> m_surroundings;
    const Standalone::Driver& m_i;
    const Standalone::Driver& m_q;
    std::vector<Detector> m_detectors;
    std::mt19937_64 m_random;
};

} // namespace Radio

#endif
