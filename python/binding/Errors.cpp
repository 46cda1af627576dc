#include "python/binding/Errors.h"

#include "python/binding/Patience.h"
#include "python/binding/Values.h"
#include "radio/files/InputError.h"
#include "radio/session/BootedRadio.h"
#include "radio/text/WordError.h"

#include <exception>
#include <optional>

namespace Radio::Python {

namespace {

/** Raises the exception that `name` has in the package. */
template <typename... Arguments>
void raise(const char* name, const Arguments&... arguments) {
    const py::object type = py::module_::import("frequencyhandler.errors").attr(name);
    const py::object error = type(arguments...);
    PyErr_SetObject(type.ptr(), error.ptr());
}

void raiseKnown(const std::exception_ptr& thrown) {
    try {
        std::rethrow_exception(thrown);
    } catch (const GivenUp& error) {
        if (std::optional<py::error_already_set> raised = takeRaisedInWait()) {
            raised->restore();
        } else {
            raise("ClosedError", text(error.what()));
        }
    } catch (const ChoiceError& error) {
        raise("ChoiceError", text(error.what()), toPython(error.place()), text(error.text()),
              text(error.choice()), text(error.among()));
    } catch (const InputError& error) {
        raise("InputError", text(error.what()), toPython(error.place()), text(error.text()));
    } catch (const WordError& error) {
        raise("ArgumentError", text(error.what()));
    } catch (const RadioError& error) {
        raise("RadioError", text(error.what()));
    } catch (const Closed& error) {
        raise("ClosedError", text(error.what()));
    } catch (const Busy& error) {
        raise("BusyError", text(error.what()));
    }
}

} // namespace

void translateErrors() {
    // As pybind11 wants it. NOLINTNEXTLINE(performance-unnecessary-value-param)
    py::register_exception_translator([](std::exception_ptr thrown) {
        if (thrown) {
            raiseKnown(thrown);
        }
    });
}

} // namespace Radio::Python
