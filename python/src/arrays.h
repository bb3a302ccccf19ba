// Arrays of numpy as what the library takes, and back.
//
// What comes in is looked at, never converted silently: an image of another type, shape or kind is refused
// with a TypeError that names the argument, what is expected and what came. Pixels are not copied where a
// cv::Mat can describe them (regions, padded rows, arrays that can't be written); reversed, transposed and
// column-stepped views go through one copy. What goes out owns its memory.
//
// The functions here need Python's lock. What they give out as cv::Mat or std::vector does not: hold the
// arguments' own objects meanwhile (a bound function's parameters do), and release the lock for the call
// itself (`unlocked` of refusals.h).
#ifndef ORXFUNCTIONS_PYTHON_ARRAYS_H
#define ORXFUNCTIONS_PYTHON_ARRAYS_H

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <utility>
#include <vector>

namespace orxpy {

namespace py = pybind11;

// An argument of which the functions below make images or points; its name in signatures is "object".
using Argument = py::object;

using Pair = std::pair<double, double>;
inline Pair pairOf(cv::Point2d point) { return {point.x, point.y}; }

// Arrays that functions answer with. The names are what their signatures show, in the form that type checkers
// read.
template <typename T>
class ArrayOf : public py::object {
  public:
    using py::object::object;
    explicit ArrayOf(py::object array) : py::object(std::move(array)) {}
};
class AnyArray : public py::object {
  public:
    using py::object::object;
    explicit AnyArray(py::object array) : py::object(std::move(array)) {}
};

// 1 to 4 channels are (rows, columns) or (rows, columns, channels) arrays; an axis of one channel may be
// there or not.
enum ImageKind : int {
    ikGrey = 0,          // uint8, one channel
    ikBinary = 1,        // uint8 or bool, one channel
    ikAny = 2,           // uint8 or uint16, 1 to 4 channels
    ikGreyAnyDepth = 3,  // uint8 or uint16, one channel
    ikDrawable = 4,      // uint8, 1, 3 or 4 channels
    ikGradient = 5       // int16, one channel
};

// A picture to read. Valid while `array` is: keep the object.
struct Image {
    py::array array;
    cv::Mat mat;
};
Image imageOf(const Argument& argument, const char* name, ImageKind kind);

// A picture that is written to in place: one that would need a copy, or that can't be written, is refused.
Image imageToWrite(const Argument& argument, const char* name, ImageKind kind);

// (n, 2) or (n, 1, 2), x before y; sequences of pairs, too. Whole pixels take arrays of any integer type,
// within 32 bits; the others of integers or floating-point numbers. What is not finite passes: the library
// refuses it with its own words.
std::vector<cv::Point> pixelsOf(const Argument& argument, const char* name);
std::vector<cv::Point2f> pointsOf(const Argument& argument, const char* name);
std::vector<cv::Point2d> precisePointsOf(const Argument& argument, const char* name);
// (n, 3)
std::vector<cv::Point3d> spacePointsOf(const Argument& argument, const char* name);
// A list of contours, or any sequence of them.
std::vector<std::vector<cv::Point>> contoursOf(const Argument& argument, const char* name);
// One place: a pair of numbers.
cv::Point2d placeOf(const Argument& argument, const char* name);
// n numbers; None gives none.
std::vector<double> numbersOf(const Argument& argument, const char* name);
// A matrix of (rows, columns) numbers, one of (n,) as one row; a copy, float32 as such and all others as
// doubles.
cv::Mat matrixOf(const Argument& argument, const char* name);
// Whole pixels (x, y, width, height); None gives an empty one.
cv::Rect rectOf(const Argument& argument, const char* name);
// The seed of a generator: any whole number, of which the low 64 bits count.
std::uint64_t seedOf(const Argument& argument, const char* name);

// What can be walked through by an index, texts apart.
bool isSequence(const py::handle& object);
py::sequence sequenceOf(const py::handle& object, const std::string& name, const std::string& expected);

// "float64 array of shape (480, 640)", "list": what came, for a refusal.
std::string describe(const py::handle& object);
// TypeError: "NAME: expected ..., got ...".
[[noreturn]] void refuseType(const std::string& name, const std::string& expected, const py::handle& got);

// What frees an object of the heap with the last array over its memory.
template <typename T>
py::capsule ownerOf(T* held) {
    return py::capsule(held, [](void* memory) { delete static_cast<T*>(memory); });
}

// A square matrix of numbers, as a covariance is.
template <int Size>
cv::Matx<double, Size, Size> squareOf(const Argument& argument, const std::string& name) {
    using Doubles = py::array_t<double, py::array::c_style | py::array::forcecast>;
    const auto array = Doubles::ensure(argument);
    if (!array) PyErr_Clear();
    if (!array || array.ndim() != 2 || array.shape(0) != Size || array.shape(1) != Size) {
        const std::string size = std::to_string(Size);
        refuseType(name, "an array of shape (" + size + ", " + size + ")", argument);
    }
    return cv::Matx<double, Size, Size>(array.data());
}

// An array over the memory of `values`, which it owns, of the given shape; as long as `values` where none is
// told.
template <typename T>
ArrayOf<T> arrayFrom(std::vector<T>&& values, std::vector<py::ssize_t> shape = {}) {
    auto* held = new std::vector<T>(std::move(values));
    const py::capsule owner = ownerOf(held);
    if (shape.empty()) shape = {static_cast<py::ssize_t>(held->size())};
    return ArrayOf<T>(py::array_t<T>(shape, held->data(), owner));
}
// (n, 2): points of whole or broken coordinates.
ArrayOf<int> arrayFrom(std::vector<cv::Point>&& points);
ArrayOf<float> arrayFrom(std::vector<cv::Point2f>&& points);
ArrayOf<double> arrayFrom(std::vector<cv::Point2d>&& points);
// (rows, columns) or (rows, columns, channels); owns the matrix.
AnyArray arrayFrom(cv::Mat mat);
// The same for what is known to be 8-bit.
ArrayOf<unsigned char> bytesFrom(cv::Mat mat);
// Of numbers that are 0 or 1.
ArrayOf<bool> truthsFrom(std::vector<unsigned char>&& truths, std::vector<py::ssize_t> shape = {});
// A matrix of doubles, (rows, columns).
template <int Rows, int Columns>
ArrayOf<double> arrayFrom(const cv::Matx<double, Rows, Columns>& matrix) {
    py::array_t<double> array({Rows, Columns});
    std::copy(matrix.val, matrix.val + Rows * Columns, array.mutable_data());
    return ArrayOf<double>(std::move(array));
}

}  // namespace orxpy

namespace pybind11::detail {

template <>
struct handle_type_name<orxpy::ArrayOf<unsigned char>> {
    static constexpr auto name = const_name("numpy.ndarray[typing.Any, numpy.dtype[numpy.uint8]]");
};
template <>
struct handle_type_name<orxpy::ArrayOf<bool>> {
    static constexpr auto name = const_name("numpy.ndarray[typing.Any, numpy.dtype[numpy.bool_]]");
};
template <>
struct handle_type_name<orxpy::ArrayOf<int>> {
    static constexpr auto name = const_name("numpy.ndarray[typing.Any, numpy.dtype[numpy.int32]]");
};
template <>
struct handle_type_name<orxpy::ArrayOf<float>> {
    static constexpr auto name = const_name("numpy.ndarray[typing.Any, numpy.dtype[numpy.float32]]");
};
template <>
struct handle_type_name<orxpy::ArrayOf<double>> {
    static constexpr auto name = const_name("numpy.ndarray[typing.Any, numpy.dtype[numpy.float64]]");
};
template <>
struct handle_type_name<orxpy::AnyArray> {
    static constexpr auto name = const_name("numpy.ndarray[typing.Any, numpy.dtype[typing.Any]]");
};

}  // namespace pybind11::detail

#endif
