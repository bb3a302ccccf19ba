#include "refusals.h"

#include <cctype>
#include <stdexcept>

#include "texts.h"

namespace orxpy {

namespace {

namespace py = pybind11;

// Names of files, and of fields in them, stay as they are.
bool isOfFile(orx::TRefusalCode code) { return code >= orx::rcFileName && code <= orx::rcFileFormat; }

// Without the C++ function's name in front, which tells a user of Python nothing.
std::string textOf(const orx::TRefusal& refusal) {
    const std::string front = refusal.function + ": ";
    const bool named = !refusal.function.empty() && refusal.text.compare(0, front.size(), front) == 0;
    const std::string text = named ? refusal.text.substr(front.size()) : refusal.text;
    return isOfFile(refusal.code) ? text : pythonName(text);
}

PyObject* kindOf(orx::TRefusalCode code) {
    switch (code) {
        case orx::rcImageType:
        case orx::rcImageDimensions:
            return PyExc_TypeError;
        case orx::rcFileMissing:
            return PyExc_FileNotFoundError;
        case orx::rcFileName:
        case orx::rcFileUnreadable:
        case orx::rcFileUnwritable:
            return PyExc_OSError;
        case orx::rcTimeout:
            return PyExc_TimeoutError;
        case orx::rcMemory:
            return PyExc_MemoryError;
        case orx::rcNone:
        case orx::rcNotReady:
        case orx::rcDriver:
        case orx::rcNoCamera:
        case orx::rcNoDisplay:
        case orx::rcFailed:
            return PyExc_RuntimeError;
        default:
            return PyExc_ValueError;
    }
}

}  // namespace

std::string pythonName(const std::string& text) {
    std::string name;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto here = static_cast<unsigned char>(text[i]);
        const bool hump =
            i > 0 && std::isupper(here) != 0 && std::islower(static_cast<unsigned char>(text[i - 1])) != 0;
        if (hump) {
            name += '_';
            name += static_cast<char>(std::tolower(here));
        } else {
            name += text[i];
        }
    }
    return name;
}

void raiseRefusal() {
    const orx::TRefusal refusal = orx::lastRefusal();
    const std::string text =
        refusal.code == orx::rcNone ? "the library refused without a reason" : textOf(refusal);
    PyErr_SetObject(kindOf(refusal.code), textFrom(text).ptr());
    throw py::error_already_set();
}

void raiseUnlessNothingFound() {
    if (orx::lastRefusal().code != orx::rcNoResult) raiseRefusal();
}

}  // namespace orxpy
