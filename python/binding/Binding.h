#ifndef PYTHON_BINDING_BINDING_H
#define PYTHON_BINDING_BINDING_H

#include <pybind11/pybind11.h>

/** What the extension module is made of. Each adds its names to `module`; how they are used well is said by
 * the package around it, which is what people call. */
namespace Radio::Python {

void bindBoards(pybind11::module_& module);
void bindRadios(pybind11::module_& module);
void bindPlan(pybind11::module_& module);
void bindTables(pybind11::module_& module);
void bindThermal(pybind11::module_& module);
void bindCalibration(pybind11::module_& module);
void bindRecordings(pybind11::module_& module);
void bindDescriptions(pybind11::module_& module);

} // namespace Radio::Python

#endif
