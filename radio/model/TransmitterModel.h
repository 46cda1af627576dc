#ifndef RADIO_MODEL_TRANSMITTERMODEL_H
#define RADIO_MODEL_TRANSMITTERMODEL_H

#include <cstdint>

namespace Radio {

/** A quantity over temperature T in degrees: at25 + perDegree (T - 25) + perDegree2 (T - 25)^2. */
struct ThermalCurve {
    double at25 = 0.0;
    double perDegree = 0.0;
    double perDegree2 = 0.0;

    double at(double temperature) const;
};

/** What is wrong with a transmitter's IQ modulator, and what one step of each correction word does about it.
 */
struct TransmitterDescription {
    /** The radio channel. */
    int channel = 0;
    /** Gain of Q over I less 1, for example 0.02 for 2 %. */
    ThermalCurve gainImbalance;
    /** Quadrature error in degrees. */
    ThermalCurve phaseImbalance;
    /** DC offset of each branch, as a fraction of the signal's amplitude. */
    ThermalCurve dcOffsetI;
    ThermalCurve dcOffsetQ;
    /** What one step of the words adds: gain and DC as fractions, phase in degrees. Not 0. */
    double gainStep = 0.0;
    double phaseStep = 0.0;
    double dcStep = 0.0;
};

/** The four words that correct a transmitter; all 0 without compensation. */
struct IqCorrections {
    std::int32_t dcI = 0;
    std::int32_t dcQ = 0;
    std::int32_t gain = 0;
    std::int32_t phase = 0;
};

/** How clean the transmitter is; both relative to the wanted signal, in dBc, the lower the better. */
struct IqCleanliness {
    /** Power of the image. */
    double image = 0.0;
    /** Power of the leaking carrier. */
    double carrierLeakage = 0.0;
};

/** How clean a described transmitter is at `temperature`, in degrees, with these corrections. From -120 to
 * 120 dBc. */
IqCleanliness cleanlinessOf(const TransmitterDescription& transmitter, double temperature,
                            const IqCorrections& corrections);

/** The words that serve a described transmitter best at `temperature`, each rounded to the nearest step. */
IqCorrections idealCorrections(const TransmitterDescription& transmitter, double temperature);

} // namespace Radio

#endif
