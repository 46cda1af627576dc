#ifndef RADIO_MODEL_MODELNUMBERS_H
#define RADIO_MODEL_MODELNUMBERS_H

namespace Radio {

/** What a model is told holds at this temperature, in degrees. */
constexpr double referenceTemperature = 25.0;

constexpr double radiansPerDegree = 3.14159265358979323846 / 180.0;

/** Nothing that can be measured is farther off the signal, in dB. */
constexpr double farthest = 120.0;

/** In degrees: with more skew the branches point nearly the same way and correct nothing across it. */
constexpr double largestSkew = 60.0;

/** Beyond anything physical, and so small that no result of a model leaves the range of a double. */
constexpr double largestNumber = 1000000.0;

} // namespace Radio

#endif
