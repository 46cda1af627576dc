#ifndef SERVICE_RADIO_CALIBRATIONBODY_H
#define SERVICE_RADIO_CALIBRATIONBODY_H

#include "radio/calibration/CalibrationRun.h"
#include "service/radio/Body.h"

#include <string>

namespace Radio::Service {

/** A calibration that somebody asks for. */
struct WantedCalibration {
    /** As far as the body says; whether it is on hardware is not for clients to say. */
    Calibration::CalibrationOrder order{};
    /** What the board forbids is calibrated on hardware all the same. */
    bool isForced = false;
};

/** What a body asks for. Throws std::invalid_argument for what makes no sense. */
WantedCalibration wantedCalibration(Body& body);

/** Why what was wished for does not go together with the method; empty when it does. */
std::string whyNotWithMethod(const CalibrationDescription& wishes, CalibrationMethod method);

} // namespace Radio::Service

#endif
