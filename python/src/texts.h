// Texts of the library as texts of Python.
#ifndef ORXFUNCTIONS_PYTHON_TEXTS_H
#define ORXFUNCTIONS_PYTHON_TEXTS_H

#include <pybind11/pybind11.h>

#include <optional>
#include <string>

namespace orxpy {

namespace py = pybind11;

// UTF-8. What is none, such as the bytes of a file's name, shows as the sign for that.
inline py::str textFrom(const std::string& text) {
    PyObject* decoded = PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace");
    if (decoded == nullptr) throw py::error_already_set();
    return py::reinterpret_steal<py::str>(decoded);
}

// None for an empty one.
inline std::optional<py::str> textOrNone(const std::string& text) {
    if (text.empty()) return std::nullopt;
    return textFrom(text);
}

}  // namespace orxpy

#endif
