#ifndef PYTHON_BINDING_ORDERS_H
#define PYTHON_BINDING_ORDERS_H

#include "python/binding/Values.h"
#include "radio/calibration/CalibrationRun.h"
#include "radio/calibration/ChannelQualification.h"

namespace Radio::Python {

/** What is asked of a calibration, out of a dictionary with a value or None for each key. Throws WordError
 * for what nobody can be asked for. */
CalibrationDescription wishesOf(const py::dict& given);
Calibration::CalibrationOrder calibrationOrderOf(const py::dict& given);
Calibration::QualificationOrder qualificationOrderOf(const py::dict& given);

/** For a message, "step" or "probes", which do nothing with the method that was chosen; empty: all do. */
std::string whyNotWithMethod(const CalibrationDescription& wishes, CalibrationMethod method);

} // namespace Radio::Python

#endif
