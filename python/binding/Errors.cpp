#include "python/binding/Errors.h"

#include "python/binding/Patience.h"
#include "python/binding/Values.h"
#include "radio/files/InputError.h"
#include "radio/session/BootedRadio.h"
#include "radio/text/WordError.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <string_view>

namespace Radio::Python {

namespace {

/** Raises the exception that `name` has in the package. */
template <typename... Arguments>
void raise(const char* name, const Arguments&... arguments) {
    const py::object type = py::module_::import("frequencyhandler.errors").attr(name);
    const py::object error = type(arguments...);
    PyErr_SetObject(type.ptr(), error.ptr());
}

/** The name that a message says was perhaps meant, or None. */
py::object meantIn(std::string_view message) {
    constexpr std::string_view question = "(did you mean \"";
    const std::size_t at = message.rfind(question);
    const std::size_t begin = at + question.size();
    const std::size_t end = at == std::string_view::npos ? at : message.find("\"?)", begin);
    return end == std::string_view::npos ? py::object(py::none())
                                         : py::object(text(message.substr(begin, end - begin)));
}

/** What a message says was expected, or None; not what somebody's own words say, which stand in quotes. */
py::object expectedIn(std::string_view message) {
    constexpr std::string_view word = "expected";
    const auto isQuoted = [message](std::size_t at) {
        return std::count(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(at), '"') % 2 != 0;
    };
    const auto isWord = [&](std::size_t at) {
        const std::string_view behind = message.substr(at + word.size());
        return (at == 0 || message[at - 1] == ' ') && !behind.empty() &&
               (behind[0] == ' ' || behind[0] == ':');
    };
    std::size_t at = message.rfind(word);
    while (at != std::string_view::npos && (isQuoted(at) || !isWord(at))) {
        at = at == 0 ? std::string_view::npos : message.rfind(word, at - 1);
    }
    if (at == std::string_view::npos) {
        return meantIn(message);
    }
    const std::size_t begin = message.find_first_not_of(": ", at + word.size());
    if (begin == std::string_view::npos) {
        return py::none();
    }
    std::size_t end = message.find(", found ", begin);
    while (end != std::string_view::npos && isQuoted(end)) {
        end = message.find(", found ", end + 1);
    }
    return text(message.substr(begin, end == std::string_view::npos ? end : end - begin));
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
              text(error.choice()), text(error.among()), expectedIn(error.text()));
    } catch (const InputError& error) {
        raise("InputError", text(error.what()), toPython(error.place()), text(error.text()),
              expectedIn(error.text()));
    } catch (const WordError& error) {
        raise("ArgumentError", text(error.what()), expectedIn(error.what()));
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
