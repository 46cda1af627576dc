#include "radio/model/TransmitterModel.h"

#include "radio/model/ModelNumbers.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>

namespace Radio {

namespace {

/** A ratio of powers in dB. */
double decibels(double ratio) {
    return std::clamp(10.0 * std::log10(ratio), -farthest, farthest);
}

/** The word of 32 bits nearest to `steps`. */
std::int32_t nearestWord(double steps) {
    return static_cast<std::int32_t>(
        std::round(std::clamp(steps, static_cast<double>(std::numeric_limits<std::int32_t>::min()),
                              static_cast<double>(std::numeric_limits<std::int32_t>::max()))));
}

/**
 * Power of the image over that of the signal. With the gain G of Q over I and the quadrature error phi, the
 * modulator makes K1 s + K2 s* of the signal s.
 */
double imageRatio(double gain, double phase) {
    const std::complex<double> i(1.0);
    const double powerOfSignal = std::norm(i + std::polar(1.0, -phase) * gain);
    const double powerOfImage = std::norm(i - std::polar(1.0, phase) * gain);
    return powerOfImage / powerOfSignal;
}

} // namespace

double ThermalCurve::at(double temperature) const {
    const double difference = temperature - referenceTemperature;
    return at25 + (perDegree + perDegree2 * difference) * difference;
}

IqCleanliness cleanlinessOf(const TransmitterDescription& transmitter, double temperature,
                            const IqCorrections& corrections) {
    const double gain =
        (1.0 + transmitter.gainImbalance.at(temperature)) * (1.0 + corrections.gain * transmitter.gainStep);
    const double phase =
        transmitter.phaseImbalance.at(temperature) + corrections.phase * transmitter.phaseStep;
    const std::complex<double> dc(
        transmitter.dcOffsetI.at(temperature) + corrections.dcI * transmitter.dcStep,
        transmitter.dcOffsetQ.at(temperature) + corrections.dcQ * transmitter.dcStep);
    return {decibels(imageRatio(gain, phase * radiansPerDegree)), decibels(std::norm(dc))};
}

IqCorrections idealCorrections(const TransmitterDescription& transmitter, double temperature) {
    const double gain = 1.0 + transmitter.gainImbalance.at(temperature);
    return {nearestWord(-transmitter.dcOffsetI.at(temperature) / transmitter.dcStep),
            nearestWord(-transmitter.dcOffsetQ.at(temperature) / transmitter.dcStep),
            nearestWord((1.0 / gain - 1.0) / transmitter.gainStep),
            nearestWord(-transmitter.phaseImbalance.at(temperature) / transmitter.phaseStep)};
}

} // namespace Radio
