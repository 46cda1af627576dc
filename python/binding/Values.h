#ifndef PYTHON_BINDING_VALUES_H
#define PYTHON_BINDING_VALUES_H

#include "radio/files/InputError.h"

#include <pybind11/pybind11.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** What the engines have, as values of Python. All of it needs the interpreter's lock. */
namespace Radio::Python {

namespace py = pybind11;

/** A text of whatever bytes: those that are not UTF-8 become what Python makes of them in file names. */
py::str text(std::string_view bytes);
py::list texts(const std::vector<std::string>& items);
/** Null texts of records count as empty. */
inline py::object orNone(std::string_view bytes) {
    return bytes.empty() ? py::object(py::none()) : py::object(text(bytes));
}

inline py::object toPython(std::int64_t number) {
    return py::int_(number);
}
inline py::object toPython(double number) {
    return py::float_(number);
}

template <typename Number>
py::object orNone(const std::optional<Number>& number) {
    if (!number) {
        return py::none();
    }
    if constexpr (std::is_floating_point_v<Number>) {
        return py::float_(*number);
    } else {
        return py::int_(*number);
    }
}

/** A list of whole numbers. */
template <typename Number>
py::list numbers(const std::vector<Number>& items) {
    py::list list;
    for (const Number item : items) {
        list.append(py::int_(item));
    }
    return list;
}

/** Has `type(...)` and `type.__new__(type)` refuse: objects without anything in them would be made. */
void madeByTheModuleAlone(const py::object& type);

/** (file, line), of which either may be None. */
py::tuple toPython(const Place& place);

} // namespace Radio::Python

#endif
