#include "arrays.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <limits>
#include <string>

namespace orxpy {

namespace {

struct KindText {
    const char* text;
    bool sixteenBits;
    bool truth;             // bool arrays
    int channels;           // a bit for each number that is taken
    bool gradient = false;  // int16 instead of uint8
};

constexpr int kOne = 1 << 1, kThree = 1 << 3, kOneToFour = 1 << 1 | 1 << 2 | 1 << 3 | 1 << 4;

KindText textOf(ImageKind kind) {
    switch (kind) {
        case ikGrey:
            return {"a grey image: uint8 array of shape (rows, columns)", false, false, kOne};
        case ikBinary:
            return {"a binary image: uint8 or bool array of shape (rows, columns)", false, true, kOne};
        case ikGreyAnyDepth:
            return {"a grey image: uint8 or uint16 array of shape (rows, columns)", true, false, kOne};
        case ikDrawable:
            return {
                "an image to draw on: uint8 array of shape (rows, columns), (rows, columns, 3) or (rows, "
                "columns, 4)",
                false, false, kOne | kThree | 1 << 4};
        case ikGradient:
            return {"a gradient: int16 array of shape (rows, columns)", false, false, kOne, true};
        case ikAny:
            break;
    }
    return {"an image: uint8 or uint16 array of shape (rows, columns) or (rows, columns, 1 to 4)", true,
            false, kOneToFour};
}

bool isNative(const py::dtype& type) {
    const char order = type.byteorder();
    return order == '=' || order == '|';
}

// Whether a cv::Mat can describe the pixels where they are.
bool fits(const py::array& array, int channels) {
    const py::ssize_t item = array.itemsize();
    const auto* data = static_cast<const char*>(array.data());
    if (array.ndim() == 3 && channels > 1 && array.strides(2) != item) return false;
    if (array.shape(1) > 1 && array.strides(1) != item * channels) return false;
    if (reinterpret_cast<std::uintptr_t>(data) % static_cast<std::uintptr_t>(item) != 0) return false;
    const py::ssize_t row = array.shape(1) * item * channels;
    return array.shape(0) <= 1 || (array.strides(0) >= row && array.strides(0) % item == 0);
}

cv::Mat headerOver(const py::array& array, int channels, void* data) {
    const int depth = array.itemsize() == 1 ? CV_8U : array.dtype().kind() == 'i' ? CV_16S : CV_16U;
    const auto rows = static_cast<int>(array.shape(0)), columns = static_cast<int>(array.shape(1));
    std::size_t step = cv::Mat::AUTO_STEP;
    if (rows > 1) step = static_cast<std::size_t>(array.strides(0));
    return cv::Mat(rows, columns, CV_MAKETYPE(depth, channels), data, step);
}

// The number of channels of what may be an image of that kind.
int channelsOf(const py::array& array, const char* name, const KindText& kind) {
    const py::dtype type = array.dtype();
    const bool bytes = !kind.gradient && type.kind() == 'u' && type.itemsize() == 1;
    const bool gradient = kind.gradient && type.kind() == 'i' && type.itemsize() == 2 && isNative(type);
    const bool words = kind.sixteenBits && type.kind() == 'u' && type.itemsize() == 2 && isNative(type);
    const bool truth = kind.truth && type.kind() == 'b';
    const bool shaped = array.ndim() == 2 || array.ndim() == 3;
    const py::ssize_t channels = array.ndim() == 3 ? array.shape(2) : 1;
    if (!(bytes || words || truth || gradient) || !shaped || channels < 1 || channels > 4 ||
        (kind.channels >> channels & 1) == 0) {
        refuseType(name, kind.text, array);
    }
    if (array.shape(0) == 0 || array.shape(1) == 0) {
        throw py::value_error(std::string(name) + ": expected at least one pixel, got " + describe(array));
    }
    if (array.shape(0) > INT_MAX || array.shape(1) > INT_MAX) {
        throw py::value_error(std::string(name) + ": expected fewer rows and columns, got " +
                              describe(array));
    }
    return static_cast<int>(channels);
}

py::array arrayAs(const Argument& argument, const char* name, const char* expected) {
    if (!py::isinstance<py::array>(argument)) refuseType(name, expected, argument);
    return py::reinterpret_borrow<py::array>(argument);
}

constexpr const char* kPixels = "whole pixels: integer array of shape (n, 2)";
constexpr const char* kPoints = "points: array of numbers of shape (n, 2)";

// An array as it is, or what numpy makes of a sequence.
py::array arrayOfNumbers(const Argument& argument, const char* name, const char* expected) {
    if (py::isinstance<py::array>(argument)) return py::reinterpret_borrow<py::array>(argument);
    if (!isSequence(argument)) refuseType(name, expected, argument);
    try {
        return py::module_::import("numpy").attr("asarray")(argument);
    } catch (py::error_already_set& error) {
        if (!error.matches(PyExc_ValueError) && !error.matches(PyExc_TypeError)) throw;
        refuseType(name, expected, argument);
    }
}

// An array of `axes` numbers a row out of an array or a sequence of rows.
py::array rowsOf(const Argument& argument, const char* name, const char* expected, py::ssize_t axes,
                 bool whole) {
    py::array array = arrayOfNumbers(argument, name, expected);
    if (array.size() == 0 && array.ndim() == 1 && !py::isinstance<py::array>(argument))
        return py::array_t<double>(std::vector<py::ssize_t>{0, axes});
    if (array.ndim() == 3 && array.shape(1) == 1) {
        array = array.attr("reshape")(array.shape(0), array.shape(2)).cast<py::array>();
    }
    const char kind = array.dtype().kind();
    const bool numbers = kind == 'i' || kind == 'u' || (!whole && kind == 'f');
    if (!numbers || array.ndim() != 2 || array.shape(1) != axes) {
        if (!(array.size() == 0 && array.ndim() == 2 && array.shape(1) == axes))
            refuseType(name, expected, argument);
    }
    return array;
}

using Wide = py::array_t<std::int64_t, py::array::c_style | py::array::forcecast>;
using Doubles = py::array_t<double, py::array::c_style | py::array::forcecast>;

void refuseWide(const char* name, const char* expected) {
    throw py::value_error(std::string(name) + ": expected " + expected + " within 32 bits");
}

// An array of doubles without gaps as it is, which spares asking numpy for a conversion.
Doubles doublesOf(const py::array& array) {
    return Doubles::check_(array) ? py::reinterpret_borrow<Doubles>(array) : Doubles(array);
}

template <typename Point>
std::vector<Point> pointsAs(const Argument& argument, const char* name) {
    const Doubles array = doublesOf(rowsOf(argument, name, kPoints, 2, false));
    const auto* data = array.data();
    std::vector<Point> points(static_cast<std::size_t>(array.shape(0)));
    for (Point& point : points) {
        point = Point(static_cast<decltype(point.x)>(data[0]), static_cast<decltype(point.x)>(data[1]));
        data += 2;
    }
    return points;
}

template <typename T, typename Point>
ArrayOf<T> pairsFrom(std::vector<Point>&& points) {
    auto* held = new std::vector<Point>(std::move(points));
    const py::capsule owner = ownerOf(held);
    const std::vector<py::ssize_t> shape = {static_cast<py::ssize_t>(held->size()), 2};
    return ArrayOf<T>(py::array_t<T>(shape, reinterpret_cast<const T*>(held->data()), owner));
}

}  // namespace

bool isSequence(const py::handle& object) {
    return PySequence_Check(object.ptr()) != 0 && !py::isinstance<py::str>(object);
}

py::sequence sequenceOf(const py::handle& object, const std::string& name, const std::string& expected) {
    if (!isSequence(object)) refuseType(name, expected, object);
    return py::reinterpret_borrow<py::sequence>(object);
}

void refuseType(const std::string& name, const std::string& expected, const py::handle& got) {
    throw py::type_error(name + ": expected " + expected + ", got " + describe(got));
}

std::string describe(const py::handle& object) {
    if (!py::isinstance<py::array>(object)) return py::str(py::type::handle_of(object).attr("__name__"));
    const auto array = py::reinterpret_borrow<py::array>(object);
    return std::string(py::str(array.dtype())) + " array of shape " +
           std::string(py::str(array.attr("shape")));
}

Image imageOf(const Argument& argument, const char* name, ImageKind kind) {
    const KindText text = textOf(kind);
    py::array array = arrayAs(argument, name, text.text);
    const int channels = channelsOf(array, name, text);
    if (!fits(array, channels)) {
        array = py::module_::import("numpy").attr("ascontiguousarray")(array).cast<py::array>();
    }
    // Nobody writes through a header of what is only read.
    const cv::Mat mat = headerOver(array, channels, const_cast<void*>(array.data()));
    return {array, mat};
}

Image imageToWrite(const Argument& argument, const char* name, ImageKind kind) {
    const KindText text = textOf(kind);
    const py::array array = arrayAs(argument, name, text.text);
    const int channels = channelsOf(array, name, text);
    if (!array.writeable())
        throw py::value_error(std::string(name) + ": expected an array that can be written");
    if (!fits(array, channels)) {
        throw py::value_error(std::string(name) +
                              ": expected rows of pixels without steps between them, got strides " +
                              std::string(py::str(array.attr("strides"))) + " (draw on a copy)");
    }
    return {array, headerOver(array, channels, const_cast<void*>(array.data()))};
}

std::vector<cv::Point> pixelsOf(const Argument& argument, const char* name) {
    const py::array rows = rowsOf(argument, name, kPixels, 2, true);
    if (rows.dtype().kind() == 'u' && rows.itemsize() == 8 && rows.size() > 0 &&
        rows.attr("max")().cast<std::uint64_t>() > INT_MAX) {
        refuseWide(name, kPixels);
    }
    const Wide array(rows);
    const auto* data = array.data();
    std::vector<cv::Point> points(static_cast<std::size_t>(array.shape(0)));
    for (cv::Point& point : points) {
        for (int i = 0; i < 2; ++i) {
            if (data[i] < INT_MIN || data[i] > INT_MAX) refuseWide(name, kPixels);
        }
        point = {static_cast<int>(data[0]), static_cast<int>(data[1])};
        data += 2;
    }
    return points;
}

std::vector<cv::Point2f> pointsOf(const Argument& argument, const char* name) {
    return pointsAs<cv::Point2f>(argument, name);
}

std::vector<cv::Point2d> precisePointsOf(const Argument& argument, const char* name) {
    static_assert(sizeof(cv::Point2d) == 2 * sizeof(double));
    const Doubles array = doublesOf(rowsOf(argument, name, kPoints, 2, false));
    const auto* next = reinterpret_cast<const cv::Point2d*>(array.data());
    const auto* const end = next + array.shape(0);
    std::vector<cv::Point2d> points;
    points.reserve(static_cast<std::size_t>(end - next));
    // In pieces: one long copy may be left to the processor's string move, which takes several times as long
    // as vectors do for some distances of the two.
    constexpr std::ptrdiff_t kPiece = 64;
    while (next != end) {
        const auto* const piece = next + std::min(kPiece, end - next);
        points.insert(points.end(), next, piece);
        next = piece;
    }
    return points;
}

std::vector<cv::Point3d> spacePointsOf(const Argument& argument, const char* name) {
    const Doubles array(
        rowsOf(argument, name, "points in space: array of numbers of shape (n, 3)", 3, false));
    const auto* data = array.data();
    std::vector<cv::Point3d> points(static_cast<std::size_t>(array.shape(0)));
    for (cv::Point3d& point : points) {
        point = {data[0], data[1], data[2]};
        data += 3;
    }
    return points;
}

std::vector<std::vector<cv::Point>> contoursOf(const Argument& argument, const char* name) {
    const char* expected = "contours: a sequence of integer arrays of shape (n, 2)";
    const py::sequence sequence = sequenceOf(argument, name, expected);
    std::vector<std::vector<cv::Point>> contours;
    for (std::size_t i = 0; i < sequence.size(); ++i) {
        const std::string item = std::string(name) + "[" + std::to_string(i) + "]";
        contours.push_back(pixelsOf(sequence[i], item.c_str()));
    }
    return contours;
}

cv::Point2d placeOf(const Argument& argument, const char* name) {
    const char* expected = "a place: a pair of numbers (x, y)";
    const py::sequence sequence = sequenceOf(argument, name, expected);
    if (sequence.size() != 2) refuseType(name, expected, argument);
    double values[2];
    for (std::size_t i = 0; i < 2; ++i) {
        const py::object item = sequence[i];
        values[i] = PyFloat_AsDouble(item.ptr());
        if (values[i] == -1.0 && PyErr_Occurred() != nullptr) {
            PyErr_Clear();
            refuseType(name, expected, argument);
        }
    }
    return {values[0], values[1]};
}

std::vector<double> numbersOf(const Argument& argument, const char* name) {
    const char* expected = "numbers: array of shape (n,)";
    if (argument.is_none()) return {};
    const py::array array = arrayOfNumbers(argument, name, expected);
    const char kind = array.dtype().kind();
    if (array.ndim() != 1 || !(kind == 'i' || kind == 'u' || kind == 'f'))
        refuseType(name, expected, argument);
    const Doubles numbers(array);
    return {numbers.data(), numbers.data() + numbers.size()};
}

cv::Mat matrixOf(const Argument& argument, const char* name) {
    const char* expected = "a matrix: array of numbers of shape (rows, columns)";
    const py::array array = arrayOfNumbers(argument, name, expected);
    const char kind = array.dtype().kind();
    const bool shaped = array.ndim() == 1 || array.ndim() == 2;
    if (!shaped || !(kind == 'i' || kind == 'u' || kind == 'f')) refuseType(name, expected, argument);
    const py::ssize_t rows = array.ndim() == 2 ? array.shape(0) : 1;
    const py::ssize_t columns = array.ndim() == 2 ? array.shape(1) : array.shape(0);
    if (rows > INT_MAX || columns > INT_MAX || array.size() > INT_MAX) {
        throw py::value_error(std::string(name) + ": expected fewer numbers, got " + describe(argument));
    }
    if (array.size() == 0) return {};
    const int size[] = {static_cast<int>(rows), static_cast<int>(columns)};
    if (kind == 'f' && array.itemsize() == sizeof(float)) {
        const py::array_t<float, py::array::c_style | py::array::forcecast> numbers(array);
        return cv::Mat(2, size, CV_32F, const_cast<float*>(numbers.data())).clone();
    }
    const Doubles numbers(array);
    return cv::Mat(2, size, CV_64F, const_cast<double*>(numbers.data())).clone();
}

cv::Rect rectOf(const Argument& argument, const char* name) {
    const char* expected = "whole pixels (x, y, width, height)";
    if (argument.is_none()) return {};
    const py::sequence sequence = sequenceOf(argument, name, expected);
    if (sequence.size() != 4) refuseType(name, expected, argument);
    int values[4];
    for (std::size_t i = 0; i < 4; ++i) {
        const py::object item = sequence[i];
        if (PyIndex_Check(item.ptr()) == 0) refuseType(name, expected, argument);
        const auto number = py::reinterpret_steal<py::object>(PyNumber_Index(item.ptr()));
        int overflow = 0;
        const long long value =
            number ? PyLong_AsLongLongAndOverflow(number.ptr(), &overflow) : -1;  // an array of a number
        if (!number) {
            PyErr_Clear();
            refuseType(name, expected, argument);
        }
        if (overflow != 0 || value < INT_MIN || value > INT_MAX) refuseWide(name, expected);
        values[i] = static_cast<int>(value);
    }
    return {values[0], values[1], values[2], values[3]};
}

std::uint64_t seedOf(const Argument& argument, const char* name) {
    const auto number = py::reinterpret_steal<py::object>(PyNumber_Index(argument.ptr()));
    if (!number) {
        PyErr_Clear();
        refuseType(name, "a whole number", argument);
    }
    return PyLong_AsUnsignedLongLongMask(number.ptr());
}

namespace {

py::dtype typeOf(int depth) {
    switch (depth) {
        case CV_8U:
            return py::dtype::of<std::uint8_t>();
        case CV_8S:
            return py::dtype::of<std::int8_t>();
        case CV_16U:
            return py::dtype::of<std::uint16_t>();
        case CV_16S:
            return py::dtype::of<std::int16_t>();
        case CV_32S:
            return py::dtype::of<std::int32_t>();
        case CV_32F:
            return py::dtype::of<float>();
        case CV_64F:
            return py::dtype::of<double>();
        default:
            throw py::type_error("a matrix of a depth that no array is made of");
    }
}

}  // namespace

ArrayOf<bool> truthsFrom(std::vector<unsigned char>&& truths, std::vector<py::ssize_t> shape) {
    static_assert(sizeof(bool) == 1);
    auto* held = new std::vector<unsigned char>(std::move(truths));
    const py::capsule owner = ownerOf(held);
    if (shape.empty()) shape = {static_cast<py::ssize_t>(held->size())};
    return ArrayOf<bool>(py::array_t<bool>(shape, reinterpret_cast<const bool*>(held->data()), owner));
}

ArrayOf<int> arrayFrom(std::vector<cv::Point>&& points) { return pairsFrom<int>(std::move(points)); }
ArrayOf<float> arrayFrom(std::vector<cv::Point2f>&& points) { return pairsFrom<float>(std::move(points)); }
ArrayOf<double> arrayFrom(std::vector<cv::Point2d>&& points) { return pairsFrom<double>(std::move(points)); }

AnyArray arrayFrom(cv::Mat mat) {
    const py::dtype type = typeOf(mat.depth());
    auto* held = new cv::Mat(std::move(mat));
    const py::capsule owner = ownerOf(held);
    std::vector<py::ssize_t> shape = {held->rows, held->cols};
    std::vector<py::ssize_t> strides = {static_cast<py::ssize_t>(held->step[0]),
                                        static_cast<py::ssize_t>(held->elemSize())};
    if (held->channels() > 1) {
        shape.push_back(held->channels());
        strides.push_back(static_cast<py::ssize_t>(held->elemSize1()));
    }
    return AnyArray(py::array(type, shape, strides, held->data, owner));
}

ArrayOf<unsigned char> bytesFrom(cv::Mat mat) {
    CV_Assert(mat.depth() == CV_8U);
    return ArrayOf<unsigned char>(py::object(arrayFrom(std::move(mat))));
}

}  // namespace orxpy
