// Pictures in memory, matrices in files, more training pictures from few, pictures saved in the background:
// files/*.h.
//
// Names of files are bytes, which the typed layer makes and reads.
#include <pybind11/functional.h>
#include <pybind11/pybind11.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <opencv2/core.hpp>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "ZULLib/zullib.h"
#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/files/image_data_augmentation.h"
#include "orxFunctions/files/picture_bytes.h"
#include "orxFunctions/files/save_image.h"
#include "orxFunctions/files/stream_file.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

using Pair = std::pair<int, int>;

using Matrix = py::array_t<double, py::array::c_style | py::array::forcecast>;

Matrix matrixOf(const Argument& argument) {
    const bool fits = py::isinstance<py::array>(argument) && [&] {
        const auto array = py::reinterpret_borrow<py::array>(argument);
        return array.ndim() == 2 && array.dtype().kind() == 'f' && array.itemsize() == sizeof(double);
    }();
    if (!fits) {
        throw py::type_error("matrix: expected a matrix: float64 array of shape (rows, columns), got " +
                             describe(argument));
    }
    Matrix matrix(argument);
    if (matrix.size() == 0)
        throw py::value_error("matrix: expected at least one element, got " + describe(argument));
    if (matrix.shape(0) > INT_MAX || matrix.shape(1) > INT_MAX)
        throw py::value_error("matrix: expected fewer rows and columns, got " + describe(argument));
    return matrix;
}

void writeStream(const py::bytes& path, const Argument& matrix, const Pair& size, const py::bytes& text) {
    const std::string name = path, words = text;
    const Matrix values = matrixOf(matrix);
    const auto rows = static_cast<int>(values.shape(0)), columns = static_cast<int>(values.shape(1));
    const double* const data = values.data();
    const bool done = unlocked([&] {
        const cv::Mat header(rows, columns, CV_64F, const_cast<double*>(data));  // only read
        return orx::image2StreamFile(header, {size.first, size.second}, name, words);
    });
    if (!done) raiseRefusal();
}

using Stream = std::tuple<ArrayOf<double>, Pair, py::bytes>;

Stream readStream(const py::bytes& path) {
    const std::string name = path;
    cv::Mat matrix;
    cv::Size size;
    std::string text;
    if (!unlocked([&] { return orx::streamFile2Image(name, matrix, size, text); })) raiseRefusal();
    if (matrix.empty()) matrix = cv::Mat(0, 0, CV_64F);
    return {ArrayOf<double>(py::object(arrayFrom(std::move(matrix)))), Pair(size.width, size.height),
            py::bytes(text)};
}

using Progress = std::function<py::object(int, int, py::bytes)>;
using Report = std::tuple<bool, int, int, int, std::vector<std::string>>;

// What Python's function throws ends the run, and is thrown again behind it.
class Reporter {
  public:
    explicit Reporter(Progress call) : call_(std::move(call)) {}
    bool operator()(int done, int total, const std::string& file) {
        const py::gil_scoped_acquire held;
        hasBegun_ = true;
        try {
            if (PyErr_CheckSignals() != 0) throw py::error_already_set();
            if (!call_) return true;
            const py::object answer = call_(done, total, py::bytes(file));
            return answer.is_none() || answer.cast<bool>();
        } catch (...) {
            failure_ = std::current_exception();
            return false;
        }
    }
    bool hasBegun() const { return hasBegun_; }
    void raise() const {
        if (failure_) std::rethrow_exception(failure_);
    }

  private:
    Progress call_;
    bool hasBegun_ = false;
    std::exception_ptr failure_;
};

// The amounts in the order of TAugmentationConfig's doubles, the counts in that of its ints.
orx::TAugmentationConfig configOf(std::uint64_t seed, const std::pair<bool, bool>& flips,
                                  const std::vector<int>& counts, const std::vector<double>& amounts) {
    orx::TAugmentationConfig config;
    config.seed = seed;
    std::tie(config.flipHorizontal, config.flipVertical) = flips;
    config.rotations = counts.at(0);
    config.scalings = counts.at(1);
    config.shifts = counts.at(2);
    config.brightnessChanges = counts.at(3);
    config.contrastChanges = counts.at(4);
    config.blurs = counts.at(5);
    config.noises = counts.at(6);
    config.maxAngle = amounts.at(0);
    config.minScale = amounts.at(1);
    config.maxScale = amounts.at(2);
    config.maxShift = amounts.at(3);
    config.maxBrightness = amounts.at(4);
    config.maxContrast = amounts.at(5);
    config.maxBlur = amounts.at(6);
    config.maxNoise = amounts.at(7);
    return config;
}

Report augment(const py::bytes& inputFolder, const py::bytes& outputFolder, std::uint64_t seed,
               const std::pair<bool, bool>& flips, const std::vector<int>& counts,
               const std::vector<double>& amounts, Progress progress) {
    const std::string input = inputFolder, output = outputFolder;
    Reporter reporter(std::move(progress));
    orx::ImageDataAugmentation augmentation;
    augmentation.setConfig(configOf(seed, flips, counts, amounts));
    augmentation.setProgress(
        [&](int done, int total, const std::string& file) { return reporter(done, total, file); });
    const orx::TAugmentationReport report = unlocked([&] { return augmentation.augment(input, output); });
    reporter.raise();
    if (!report.completed && !reporter.hasBegun()) raiseRefusal();
    std::vector<std::string> problems;
    for (const std::string& problem : report.problems) problems.push_back(zul::toUtf8(problem));
    return {report.completed, report.images, report.skipped, report.written, std::move(problems)};
}

py::bytes saveImage(const Argument& image, const py::bytes& folder, const py::bytes& prefix,
                    const std::string& extension) {
    const Image picture = imageOf(image, "image", ikAny);
    const std::string place = folder, front = prefix;
    std::string path;
    const bool done =
        unlocked([&] { return FileOperator::saveImage(picture.mat, place, front, extension, &path); });
    if (!done) raiseRefusal();
    return path;
}

// What an object of Python holds in memory, as one row of bytes.
class Buffer {
  public:
    Buffer(const Argument& argument, const char* name) {
        if (PyObject_GetBuffer(argument.ptr(), &view_, PyBUF_FULL_RO) == 0) return;
        PyErr_Clear();
        refuseType(name, "bytes, or what gives access to some", argument);
    }
    ~Buffer() { PyBuffer_Release(&view_); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    Buffer(Buffer&&) = delete;
    Buffer& operator=(Buffer&&) = delete;
    std::vector<unsigned char> bytes() {
        if (PyBuffer_IsContiguous(&view_, 'C') != 0) {
            const auto* const first = static_cast<const unsigned char*>(view_.buf);
            return {first, first + view_.len};
        }
        std::vector<unsigned char> found(static_cast<std::size_t>(view_.len));
        if (PyBuffer_ToContiguous(found.data(), &view_, view_.len, 'C') != 0) throw py::error_already_set();
        return found;
    }

  private:
    Py_buffer view_{};
};

AnyArray decodePicture(const Argument& data, int flags) {
    const std::vector<unsigned char> bytes = Buffer(data, "data").bytes();
    cv::Mat picture = unlocked([&] { return orx::decodePicture(bytes, flags); });
    if (picture.empty()) raiseRefusal();
    return arrayFrom(std::move(picture));
}

bool flushImages(int milliseconds) {
    const bool done = unlocked([&] { return FileOperator::flush(milliseconds); });
    if (!done && orx::lastRefusal().code != orx::rcTimeout) raiseRefusal();
    return done;
}

}  // namespace

void bindFiles(py::module_& core) {
    core.def("write_stream", &writeStream, py::arg("path"), py::arg("matrix"), py::arg("size"),
             py::arg("text"));
    core.def("read_stream", &readStream, py::arg("path"));
    core.def("augment", &augment, py::arg("input_folder"), py::arg("output_folder"), py::arg("seed"),
             py::arg("flips"), py::arg("counts"), py::arg("amounts"), py::arg("progress"));
    core.def("save_image", &saveImage, py::arg("image"), py::arg("folder"), py::arg("prefix"),
             py::arg("extension"));
    core.def("decode_picture", &decodePicture, py::arg("data"), py::arg("flags"));
    core.def("flush_images", &flushImages, py::arg("milliseconds"));
}

}  // namespace orxpy
