#ifndef PYTHON_BINDING_CALIBRATIONVALUES_H
#define PYTHON_BINDING_CALIBRATIONVALUES_H

#include "python/binding/Values.h"
#include "radio/calibration/CalibrationRun.h"

namespace Radio::Python {

py::dict toPython(const Calibration::Point& point);
py::dict toPython(const Calibration::Qualification& qualification);
py::dict toPython(const Calibration::CalibrationProgress& progress);
py::dict toPython(const Calibration::CalibrationOutcome& outcome);

} // namespace Radio::Python

#endif
