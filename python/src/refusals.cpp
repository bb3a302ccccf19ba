#include "refusals.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "texts.h"

namespace orxpy {

namespace {

namespace py = pybind11;

// Names of files, and of fields in them, stay as they are, and so do the words of others.
bool isQuoted(orx::TRefusalCode code) {
    return (code >= orx::rcFileName && code <= orx::rcFileFormat) || code == orx::rcFailed;
}

// Without the C++ function's name in front, which tells a user of Python nothing.
std::string textOf(const orx::TRefusal& refusal) {
    const std::string front = refusal.function + ": ";
    const bool named = !refusal.function.empty() && refusal.text.compare(0, front.size(), front) == 0;
    const std::string text = named ? refusal.text.substr(front.size()) : refusal.text;
    return isQuoted(refusal.code) ? text : pythonName(text);
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
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    std::string name;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t end = i;
        while (end < text.size() && std::isalnum(at(end)) != 0) ++end;
        if (end == i || std::islower(at(i)) == 0) {  // no word, or one such as "MiB"
            end = std::max(end, i + 1);
            name.append(text, i, end - i);
            i = end;
            continue;
        }
        for (const std::size_t first = i; i < end; ++i) {
            if (i > first && std::isupper(at(i)) != 0 && std::isupper(at(i - 1)) == 0) name += '_';
            name += static_cast<char>(std::tolower(at(i)));
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

std::nullopt_t nothingFound() {
    raiseUnlessNothingFound();
    return std::nullopt;
}

}  // namespace orxpy
