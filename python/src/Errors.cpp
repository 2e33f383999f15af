#include "Session.h"

#include <coordsys/Error.h>

#include <stdexcept>

namespace nivora::python {
namespace {

PyObject *errorType = nullptr; // the module keeps it

void raise(const std::exception &error)
{
    const py::object instance =
        py::reinterpret_borrow<py::object>(errorType)(py::reinterpret_steal<py::object>(PyUnicode_DecodeUTF8(
            error.what(), static_cast<Py_ssize_t>(std::string(error.what()).size()), "replace")));
    instance.attr("code") = cs::Error::nameOf(cs::Error::codeOf(error));
    PyErr_SetObject(errorType, instance.ptr());
}

/// What this module throws of Python's own types is left to pybind11.
void translate(std::exception_ptr thrown)
{
    try {
        std::rethrow_exception(thrown);
    } catch (const py::builtin_exception &) {
        throw;
    } catch (const std::logic_error &error) {
        raise(error);
    } catch (const std::runtime_error &error) {
        raise(error);
    }
}

} // namespace

void defineErrors(py::module_ &module)
{
    errorType = PyErr_NewExceptionWithDoc(
        "nivora_cs.Error",
        "What the library refuses. str() is the reason for people; code is the same in every language:\n"
        "\"unknown-code\", \"not-understood\", \"no-operation\", \"missing-grid\", \"point-failed\" ...",
        nullptr, nullptr);
    const py::object type = py::reinterpret_steal<py::object>(errorType);
    type.attr("code") = "other";
    module.attr("Error") = type;
    py::register_exception_translator(translate);
}

} // namespace nivora::python
