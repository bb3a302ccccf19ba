// Prints a chessboard, finds it in photographs, calibrates the camera and undoes its distortion.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>

#include "examples/calibration/camera_calibration.h"
#include "orxFunctions/orxfunctions.h"
#include "support/command_line.h"
#include "support/picture_file.h"

namespace {

namespace fs = std::filesystem;

struct Options {
    std::string target;
    int targetWidth = 2970;  // A4 across, 10 pixels a millimetre
    int targetHeight = 2100;
    int targetSquare = 250;
    int targetMargin = 150;
    std::string photographs;
    bool sample = false;
    std::string out = "calibration-output";
    calibration::Board board;
    std::string description = "camera";
};

int fail(const char* text, const std::string& name) {
    std::fprintf(stderr, "orx_calibration: %s: %s\n", text, name.c_str());
    return 1;
}

std::string quotedForShell(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

int printTarget(const Options& options) {
    const cv::Size size(options.targetWidth, options.targetHeight);
    const cv::Mat target = orx::createCalibrateImage(size, options.targetSquare, options.targetMargin);
    if (target.empty() || !host::writePicture(fs::u8path(options.target), target))
        return fail("can't write the target", options.target);
    const cv::Size corners = calibration::targetCorners(size, options.targetSquare, options.targetMargin);
    std::printf("%s: a board of %d x %d inner corners\n", options.target.c_str(), corners.width,
                corners.height);
    return 0;
}

void printReport(const std::vector<calibration::Photograph>& photographs,
                 const calibration::Calibration& result) {
    for (const calibration::Photograph& photograph : photographs) {
        const std::string name = fs::u8path(photograph.file).filename().u8string();
        if (photograph.corners.empty()) {
            std::printf("  %-20s board not found\n", name.c_str());
        } else {
            std::printf("  %-20s %6.3f px\n", name.c_str(), photograph.error);
        }
    }
    std::printf("reprojection error %.3f px\n", result.error);
    std::printf("focal length %.2f x %.2f px, principal point (%.2f, %.2f)\n",
                result.intrinsic.at<double>(0, 0), result.intrinsic.at<double>(1, 1),
                result.intrinsic.at<double>(0, 2), result.intrinsic.at<double>(1, 2));
}

// Writes the calibration file and reads it back: what a host does at its next start.
bool storeAndReload(const std::string& file, const std::string& description,
                    calibration::Calibration& result) {
    orx::calibrateData2File(result.intrinsic, result.distortion, result.imageSize, description, file);
    calibration::Calibration reloaded;
    std::string text;
    if (!orx::calibrateDataFromFile(file, reloaded.intrinsic, reloaded.distortion, reloaded.imageSize, text))
        return false;
    result.intrinsic = reloaded.intrinsic;
    result.distortion = reloaded.distortion;
    return text == description && reloaded.imageSize == result.imageSize;
}

bool writeUndistorted(const std::string& file, const std::string& folder,
                      const calibration::Calibration& camera) {
    const cv::Mat image = host::readPicture(fs::u8path(file), cv::IMREAD_COLOR);
    cv::Mat straight;
    if (image.empty()) return false;
    cv::undistort(image, straight, camera.intrinsic, camera.distortion);
    fs::path target = fs::u8path(folder) / fs::u8path(file).stem();
    target += "-undistorted.png";
    return host::writePicture(target, straight);
}

// Not by FileOperator::listFiles, whose names are in code page 936 on Windows.
std::vector<std::string> listPhotographs(const std::string& folder) {
    std::vector<std::string> files;
    std::error_code error;
    for (fs::directory_iterator entry(fs::u8path(folder), error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        const std::string extension = entry->path().extension().u8string();
        if (extension == ".jpg" || extension == ".JPG") files.push_back(entry->path().u8string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

int calibrateFrom(const Options& options) {
    const std::vector<std::string> files = listPhotographs(options.photographs);
    if (files.empty()) return fail("no .jpg photographs in", options.photographs);
    std::error_code error;
    fs::create_directories(fs::u8path(options.out), error);
    if (error) return fail("can't create", options.out);
    cv::Size imageSize;
    std::vector<calibration::Photograph> photographs =
        calibration::readPhotographs(files, options.board, imageSize);
    calibration::Calibration camera = calibration::calibrate(photographs, options.board, imageSize);
    if (!camera.valid)
        return fail("the board is visible in fewer than 3 photographs of", options.photographs);
    printReport(photographs, camera);

    const std::string file = (fs::u8path(options.out) / "camera.yml").u8string();
    if (!storeAndReload(file, options.description, camera)) return fail("can't read back", file);
    int written = 0;
    for (const std::string& photograph : files)
        written += writeUndistorted(photograph, options.out, camera) ? 1 : 0;
    std::printf("%s written and read back, %d undistorted pictures in %s\n", file.c_str(), written,
                options.out.c_str());
    return 0;
}

int fetchSample(Options& options) {
    options.photographs = (fs::u8path(options.out) / "sample").u8string();
    const std::string command = quotedForShell(ORX_FETCH_SAMPLE) + " " + quotedForShell(options.photographs);
    return std::system(command.c_str()) == 0
               ? 0
               : fail("can't fetch the sample photographs into", options.photographs);
}

int run(Options& options) {
    if (!options.target.empty() && printTarget(options) != 0) return 1;
    if (options.sample && fetchSample(options) != 0) return 1;
    return options.photographs.empty() ? 0 : calibrateFrom(options);
}

int parseAndRun(int argc, const char* const* argv) {
    Options options;
    CLI::App app("Prints a chessboard target, and calibrates a camera from photographs of one.");
    app.add_option("--target", options.target, "write a chessboard to print to this PNG file");
    app.add_option("--target-width", options.targetWidth, "pixels")->capture_default_str();
    app.add_option("--target-height", options.targetHeight, "pixels")->capture_default_str();
    app.add_option("--target-square", options.targetSquare, "pixels of a square")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--target-margin", options.targetMargin, "white pixels around the board")
        ->capture_default_str();
    app.add_option("--photographs", options.photographs, "calibrate from the .jpg files of this folder");
    app.add_flag("--sample", options.sample,
                 "calibrate from OpenCV's 13 sample photographs (a download of 95 MB)");
    app.add_option("--columns", options.board.corners.width, "inner corners across")->capture_default_str();
    app.add_option("--rows", options.board.corners.height, "inner corners down")->capture_default_str();
    app.add_option("--square", options.board.square, "length of a square, in any unit")
        ->capture_default_str();
    app.add_option("--description", options.description, "text to store with the calibration")
        ->capture_default_str();
    app.add_option("--out", options.out, "folder for the results")->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    if (options.target.empty() && options.photographs.empty() && !options.sample) {
        std::printf("%s", app.help().c_str());
        return 1;
    }
    return run(options);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const host::CommandLine arguments(argc, argv);
        return parseAndRun(arguments.count(), arguments.texts());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orx_calibration: stopped: %s\n", error.what());
        return 1;
    }
}
