#include "python/binding/Values.h"

namespace Radio::Python {

py::str text(std::string_view bytes) {
    PyObject* const decoded =
        PyUnicode_DecodeUTF8(bytes.data(), static_cast<py::ssize_t>(bytes.size()), "surrogateescape");
    if (decoded == nullptr) {
        throw py::error_already_set();
    }
    return py::reinterpret_steal<py::str>(decoded);
}

py::list texts(const std::vector<std::string>& items) {
    py::list list;
    for (const std::string& item : items) {
        list.append(text(item));
    }
    return list;
}

void madeByTheModuleAlone(const py::object& type) {
    auto* const made = reinterpret_cast<PyTypeObject*>(type.ptr());
    made->tp_new = [](PyTypeObject* wanted, PyObject* /*arguments*/, PyObject* /*keywords*/) -> PyObject* {
        PyErr_Format(PyExc_TypeError, "%s: cannot be made by itself", wanted->tp_name);
        return nullptr;
    };
}

py::tuple toPython(const Place& place) {
    return py::make_tuple(orNone(std::string_view(place.file)),
                          place.line == 0 ? py::object(py::none()) : py::object(py::int_(place.line)));
}

} // namespace Radio::Python
