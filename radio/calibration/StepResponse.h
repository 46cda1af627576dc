#ifndef RADIO_CALIBRATION_STEPRESPONSE_H
#define RADIO_CALIBRATION_STEPRESPONSE_H

#include <vector>

namespace Radio::Calibration {

/** What a detector read after a step of the corrections. */
class StepResponse {
public:
    /** `before` is what it read before the step, `noise` by how many units readings may differ for no reason.
     */
    StepResponse(double before, double noise) : m_before(before), m_noise(noise) {}

    /** `time` in ms behind the step, later than the one before. */
    void add(double time, double reading) { m_readings.push_back({time, reading}); }

    /** The last two readings are the same, but for noise and the part of the step that is let pass. */
    bool isOver() const;
    /** How large the step was, once it is over. */
    double height() const;
    /** After which time, in ms, no more than `part` of the step is left; what noise hides is taken to fall as
     * what is seen does. The time of the first reading when there is no more than noise from there on. */
    double timeTo(double part) const;
    /** Which part of the step is left after a time, in ms; 0 for what is less than noise. */
    double partAfter(double time) const;

    double last() const { return m_readings.back().reading; }
    double secondLast() const { return m_readings[m_readings.size() - 2].reading; }
    double lastTime() const { return m_readings.back().time; }
    double secondLastTime() const { return m_readings[m_readings.size() - 2].time; }

    /** The part of a step behind which a detector counts as settled. */
    static constexpr double settledPart = 0.02;

private:
    struct Moment {
        double time;
        double reading;
    };

    double errorAt(const Moment& moment) const;

    double m_before;
    double m_noise;
    std::vector<Moment> m_readings;
};

} // namespace Radio::Calibration

#endif
