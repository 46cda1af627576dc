#include "python/binding/Binding.h"
#include "python/binding/Errors.h"
#include "python/binding/Patience.h"

PYBIND11_MODULE(_engine, module) {
    module.doc() = "The engines behind the package frequencyhandler, which is what programs use.";
    module.attr("version") = FREQUENCYHANDLER_VERSION_TEXT;
    Radio::Python::translateErrors();
    Radio::Python::Waiting::begin();
    Radio::Python::bindBoards(module);
    Radio::Python::bindRadios(module);
    Radio::Python::bindPlan(module);
    Radio::Python::bindTables(module);
    Radio::Python::bindThermal(module);
    Radio::Python::bindCalibration(module);
    Radio::Python::bindRecordings(module);
    Radio::Python::bindDescriptions(module);
}
