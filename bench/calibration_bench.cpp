// A camera's calibration from its file, beside OpenCV's reader of the same file; and a robot's pose as a
// matrix, beside OpenCV's rotation for each axis.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <opencv2/calib3d.hpp>
#include <string>

#include "bench/steady.h"
#include "orxFunctions/orxfunctions.h"

namespace {

struct CalibrationFile {
    explicit CalibrationFile(const char* extension)
        : name((std::filesystem::temp_directory_path() / "orx-calibration-bench").string() + extension) {
        const cv::Matx33d intrinsic(2411.37, 0, 1295.2, 0, 2410.9, 971.8, 0, 0, 1);
        const cv::Matx<double, 1, 5> distortion(-0.1123, 0.0871, 1.2e-4, -3.1e-4, 0.0113);
        orx::calibrateData2File(cv::Mat(intrinsic), cv::Mat(distortion), {2592, 1944}, "line 3, camera 1",
                                name);
    }
    ~CalibrationFile() { std::filesystem::remove(name); }
    CalibrationFile(const CalibrationFile&) = delete;
    CalibrationFile& operator=(const CalibrationFile&) = delete;

    std::string name;
};

// What a file says.
struct Calibration {
    cv::Mat intrinsic;
    cv::Mat distortion;
    cv::Size size;
    std::string text;
};

void read(benchmark::State& state, const char* extension) {
    const CalibrationFile file(extension);
    Calibration found;
    bench::steady(state, [&] {
        benchmark::DoNotOptimize(
            orx::calibrateDataFromFile(file.name, found.intrinsic, found.distortion, found.size, found.text));
    });
}

void readByOpenCv(benchmark::State& state, const char* extension) {
    const CalibrationFile file(extension);
    Calibration found;
    bench::steady(state, [&] {
        const cv::FileStorage storage(file.name, cv::FileStorage::READ);
        storage["imageIntrinsic"] >> found.intrinsic;
        storage["imageDistortion"] >> found.distortion;
        storage["imageSize"] >> found.size;
        storage["description"] >> found.text;
        int isThere = 0;
        storage["isDistortionConfig"] >> isThere;
        benchmark::DoNotOptimize(isThere);
    });
}
BENCHMARK_CAPTURE(read, yaml, ".yml")->Name("calibration_read/yaml")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(read, xml, ".xml")->Name("calibration_read/xml")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(read, json, ".json")->Name("calibration_read/json")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(readByOpenCv, yaml, ".yml")
    ->Name("opencv/calibration_read/yaml")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(readByOpenCv, xml, ".xml")
    ->Name("opencv/calibration_read/xml")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(readByOpenCv, json, ".json")
    ->Name("opencv/calibration_read/json")
    ->Unit(benchmark::kMicrosecond);

zul::TPoint6D somePose() {
    zul::TPoint6D pose;
    pose.x = 410.5;
    pose.y = -120.25;
    pose.z = 333;
    pose.rx = 12;
    pose.ry = -31;
    pose.rz = 88;
    return pose;
}

void pose(benchmark::State& state) {
    const zul::TPoint6D from = somePose();
    orx::TPoint6DToMatrix convert;
    bench::steady(state, [&] { benchmark::DoNotOptimize(convert.Point6D2Matrix44(from).data); });
}

void poseByRodrigues(benchmark::State& state) {
    const zul::TPoint6D from = somePose();
    bench::steady(state, [&] {
        const double scale = CV_PI / 180;
        cv::Matx33d x;
        cv::Matx33d y;
        cv::Matx33d z;
        cv::Rodrigues(cv::Vec3d(from.rx * scale, 0, 0), x);
        cv::Rodrigues(cv::Vec3d(0, from.ry * scale, 0), y);
        cv::Rodrigues(cv::Vec3d(0, 0, from.rz * scale), z);
        const cv::Matx33d r = x * y * z;
        const cv::Mat whole = (cv::Mat_<double>(4, 4) << r(0, 0), r(0, 1), r(0, 2), from.x, r(1, 0), r(1, 1),
                               r(1, 2), from.y, r(2, 0), r(2, 1), r(2, 2), from.z, 0, 0, 0, 1);
        benchmark::DoNotOptimize(whole.data);
    });
}
BENCHMARK(pose);
BENCHMARK(poseByRodrigues)->Name("opencv/pose");

}  // namespace
