#ifndef RADIO_MODEL_LEAKAGEMODEL_H
#define RADIO_MODEL_LEAKAGEMODEL_H

#include <complex>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Radio {

/** Under which conditions a transmitter works. */
struct Surroundings {
    /** Transmit carrier in kHz. */
    std::uint32_t carrier = 0;
    /** In degrees Celsius. */
    double temperature = 25.0;
};

/** One way on which the LO gets to the output of a transmitter. */
struct LeakagePath {
    /** In dBc, at the reference carrier and 25 degrees. */
    double level = 0.0;
    /** In dB. */
    double levelPerDegree = 0.0;
    double levelPerGHz = 0.0;
    /** In degrees, at the reference carrier and 25 degrees Celsius. */
    double phase = 0.0;
    double phasePerDegree = 0.0;
    /** In ns, against the way of the signal: a path turns by -360 degrees for each GHz and ns. */
    double delay = 0.0;
};

/** What a correction voltage does. */
struct CorrectionBranch {
    std::string driver;
    /** What one unit of the driver adds, as a fraction of the signal's amplitude. Not 0. */
    double gain = 0.0;
    /** Units of the driver from one value of its DAC to the next; at least 1. */
    std::int32_t step = 1;
    /** The lowest and the highest value that the DAC can give; what is beyond is cut off. */
    std::int32_t low = 0;
    std::int32_t high = 0;
};

/** A logarithmic power detector. */
struct DetectorDescription {
    std::string driver;
    /** Units of the reading for each dB; 0 for a detector that is stuck. */
    double slope = 0.0;
    /** The level at which the reading is 0, in dBc. */
    double zero = 0.0;
    /** What the detector sees besides the leakage, in dBc: lower levels drown in it. */
    double floor = 0.0;
    /** Root mean square of the reading's noise, in units. */
    double noise = 0.0;
    /** Units from one value of its converter to the next; at least 1. */
    std::int32_t step = 1;
    /** The lowest and the highest reading: the detector saturates there. */
    std::int32_t low = 0;
    std::int32_t high = 0;
    /** Time constant with which the output follows, in ms. 0: at once. */
    double settling = 0.0;
};

/** The LO leakage of one channel's transmitter, what corrects it and what measures it. */
struct LeakageDescription {
    /** The radio channel. */
    int channel = 0;
    /** The carrier for which levels and phases are given, in kHz. */
    std::uint32_t reference = 0;
    /** At least one. */
    std::vector<LeakagePath> paths;
    CorrectionBranch i;
    CorrectionBranch q;
    /** By how many degrees the effect of Q is off 90 degrees to that of I. */
    double skew = 0.0;
    /** The only detector, or that of the low range. */
    DetectorDescription detector;
    std::optional<DetectorDescription> highDetector;
    /** Where the noise begins. */
    std::uint32_t seed = 0;
};

/** Both corrections, in units of their drivers. */
struct LoCorrections {
    std::int32_t i = 0;
    std::int32_t q = 0;
};

/** What leaks at the output with these corrections, as a fraction of the signal's amplitude and a phase. */
std::complex<double> residualOf(const LeakageDescription& leakage, const Surroundings& surroundings,
                                const LoCorrections& corrections);

/** The power of a leakage relative to the signal, from -120 to 120 dBc. */
double leakageLevel(const std::complex<double>& residual);

/** leakageLevel of residualOf. */
double leakageLevel(const LeakageDescription& leakage, const Surroundings& surroundings,
                    const LoCorrections& corrections);

/** The corrections that serve best, each of them a value that its DAC can give. */
LoCorrections idealLoCorrections(const LeakageDescription& leakage, const Surroundings& surroundings);

/** What a detector gives in the long run, before noise, limits and conversion, in units. */
double detectorOutput(const DetectorDescription& detector, double level);

/** The reading for an output: within the limits, and one that the converter can give. */
std::int32_t detectorReading(const DetectorDescription& detector, double output);

} // namespace Radio

#endif
