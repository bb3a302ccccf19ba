// Prints calibration targets, finds them in pictures, and tells a camera's lens and the plane of the parts.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>

#include "calibration/pictures.h"
#include "calibration/residual_picture.h"
#include "calibration/target_files.h"
#include "orxFunctions/orxfunctions.h"
#include "support/argument_checks.h"
#include "support/command_line.h"
#include "support/picture_file.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kFetchSample = ORX_FETCH_SAMPLE;  // the script; empty where there is none

struct Options {
    calibration::TargetFiles targets;
    std::vector<std::string> pictures;
    std::string photographs;
    bool sample = false;
    bool dots = false;
    bool noLens = false;
    bool noTangential = false;
    std::string planeView;
    std::string out = "calibration-output";
    orx::TTarget target;
    orx::TPlaneOptions plane;
    std::string description = "camera";
};

int fail(const std::string& text, const std::string& name) {
    std::fprintf(stderr, "orx_calibration: %s: %s\n", text.c_str(), name.c_str());
    return 1;
}

std::string quotedForShell(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::string nameOf(const std::string& file) { return fs::u8path(file).filename().u8string(); }

double rmsOf(const std::vector<cv::Point2d>& residuals) {
    double squares = 0;
    for (const cv::Point2d& r : residuals) squares += r.dot(r);
    return residuals.empty() ? 0 : std::sqrt(squares / static_cast<double>(residuals.size()));
}

void printViews(const std::vector<calibration::Photograph>& photographs,
                const orx::TPlaneCalibration& result) {
    for (const calibration::Photograph& photograph : photographs) {
        const std::string name = nameOf(photograph.file);
        if (!photograph.view.found) {
            std::printf("  %-20s target not found: %s\n", name.c_str(), photograph.view.problem.c_str());
        } else if (result.valid()) {
            const std::vector<cv::Point2d> residuals = orx::planeResiduals(result, photograph.view);
            std::printf("  %-20s %6.3f px\n", name.c_str(), rmsOf(residuals));
        }
    }
}

void printResult(const orx::TPlaneCalibration& result) {
    const auto deviation = [&](int k) { return std::sqrt(result.covariance(k, k)); };
    std::printf("reprojection error %.3f px\n", result.rms);
    if (result.lens) {
        std::printf("focal length %.2f x %.2f px (+- %.2f, %.2f), principal point (%.2f, %.2f)\n",
                    result.camera(0, 0), result.camera(1, 1), deviation(0), deviation(1), result.camera(0, 2),
                    result.camera(1, 2));
    }
    const cv::Point2d middle((result.imageSize.width - 1) / 2.0, (result.imageSize.height - 1) / 2.0);
    // How well a length over a quarter of the picture is known.
    const double quarter = result.imageSize.width / 8.0;
    const std::vector<cv::Point2d> ends{middle - cv::Point2d(quarter, 0), middle + cv::Point2d(quarter, 0)};
    const std::vector<cv::Point2d> places = orx::imageToPlane(result, ends);
    const cv::Mat c = orx::planeCovariance(result, ends);
    const double size = orx::pixelSize(result, middle);
    if (c.empty() || !std::isfinite(size)) return;
    const cv::Point2d along = (places[1] - places[0]) * (1 / cv::norm(places[1] - places[0]));
    const cv::Mat direction = (cv::Mat_<double>(1, 4) << -along.x, -along.y, along.x, along.y);
    const double variance = cv::Mat(direction * c * direction.t()).at<double>(0);
    std::printf("in the middle a pixel is %.6f mm; a length of %.3f mm there is known to %.5f mm\n", size,
                cv::norm(places[1] - places[0]), std::sqrt(variance));
}

bool writeUndistorted(const std::string& file, const std::string& folder,
                      const orx::TPlaneCalibration& camera) {
    const cv::Mat image = host::readPicture(fs::u8path(file), cv::IMREAD_COLOR);
    cv::Mat straight;
    if (image.empty()) return false;
    cv::undistort(image, straight, camera.camera, camera.distortion);
    fs::path target = fs::u8path(folder) / fs::u8path(file).stem();
    target += "-undistorted.png";
    return host::writePicture(target, straight);
}

// The view that tells the plane: the one named, else the first that shows the target. -1 without one.
int planeViewOf(const std::vector<calibration::Photograph>& photographs, const std::string& name) {
    for (std::size_t i = 0; i < photographs.size(); ++i) {
        const calibration::Photograph& photograph = photographs[i];
        const bool isNamed = photograph.file == name || nameOf(photograph.file) == name;
        if (name.empty() ? photograph.view.found : isNamed) return static_cast<int>(i);
    }
    return -1;
}

// Writes the calibration file and reads it back: what a host does at its next start.
bool storeAndReload(const std::string& file, orx::TPlaneCalibration& result) {
    if (orx::writePlaneCalibration(file, result) != orx::plOk) return false;
    const orx::TPlaneCalibration reloaded = orx::readPlaneCalibration(file);
    if (!reloaded.valid() || reloaded.description != result.description) return false;
    result = reloaded;
    return true;
}

int store(const Options& options, const std::vector<calibration::Photograph>& photographs,
          orx::TPlaneCalibration& result) {
    std::error_code error;
    fs::create_directories(fs::u8path(options.out), error);
    if (error) return fail("can't create", options.out);
    const std::string file = (fs::u8path(options.out) / "camera.yml").u8string();
    if (!storeAndReload(file, result)) return fail("can't write and read back", file);
    const std::string residuals = (fs::u8path(options.out) / "residuals.png").u8string();
    const cv::Mat drawing = calibration::drawResiduals(result, calibration::viewsOf(photographs),
                                                       static_cast<std::size_t>(options.plane.planeView));
    if (!host::writePicture(fs::u8path(residuals), drawing)) return fail("can't write", residuals);
    int written = 0;
    for (const calibration::Photograph& photograph : photographs) {
        // Others may be of another camera, or of another size.
        if (!result.lens || !photograph.view.found) continue;
        if (!writeUndistorted(photograph.file, options.out, result))
            return fail("can't write, without its distortion", photograph.file);
        ++written;
    }
    std::printf("%s written and read back, residuals in %s, %d undistorted pictures in %s\n", file.c_str(),
                residuals.c_str(), written, options.out.c_str());
    return 0;
}

int calibrateFrom(Options& options, const std::vector<std::string>& files) {
    std::vector<calibration::Photograph> photographs = calibration::readPhotographs(files, options.target);
    options.plane.planeView = planeViewOf(photographs, options.planeView);
    if (options.plane.planeView < 0) {
        printViews(photographs, {});
        return options.planeView.empty()
                   ? fail("no picture shows the target", files.front())
                   : fail("none of the pictures is the view of the plane", options.planeView);
    }
    orx::TPlaneCalibration result = orx::calibratePlane(calibration::viewsOf(photographs), options.plane);
    printViews(photographs, result);
    if (!result.valid()) {
        const std::string hint = result.status == orx::plTooFewViews ? " (without a lens: --no-lens)" : "";
        return fail(orx::planeStatusText(result.status) + hint, result.problem);
    }
    result.description = options.description;
    std::printf("the plane is that of %s\n",
                nameOf(files[static_cast<std::size_t>(options.plane.planeView)]).c_str());
    printResult(result);
    for (const std::string& warning : orx::planeWarnings(result, calibration::viewsOf(photographs)))
        std::printf("warning: %s\n", warning.c_str());
    return store(options, photographs, result);
}

int fetchSample(Options& options) {
    options.photographs = (fs::u8path(options.out) / "sample").u8string();
    const std::string command = quotedForShell(kFetchSample) + " " + quotedForShell(options.photographs);
    return std::system(command.c_str()) == 0
               ? 0
               : fail("can't fetch the sample photographs into", options.photographs);
}

int run(Options& options) {
    const std::string problem = calibration::writeTargets(options.targets, options.target);
    if (!problem.empty()) return fail("no target", problem);
    if (options.sample && fetchSample(options) != 0) return 1;
    if (!options.photographs.empty()) options.pictures.push_back(options.photographs);
    std::vector<std::string> files;
    for (const std::string& path : options.pictures) {
        const std::vector<std::string> found = calibration::listPictures(path);
        if (found.empty()) return fail("no pictures there", path);
        files.insert(files.end(), found.begin(), found.end());
    }
    return files.empty() ? 0 : calibrateFrom(options, files);
}

constexpr int kMostPixels = 30000;

void addTargetOptions(CLI::App& app, calibration::TargetFiles& targets) {
    const auto add = [&](const char* name, int& value, const char* text, int least) {
        app.add_option(name, value, text)->capture_default_str()->check(CLI::Range(least, kMostPixels));
    };
    app.add_option("--target", targets.png, "write a chessboard to print to this PNG file");
    add("--target-width", targets.pngWidth, "pixels of it", 1);
    add("--target-height", targets.pngHeight, "pixels of it", 1);
    add("--target-square", targets.pngSquare, "pixels of a square of it", 1);
    add("--target-margin", targets.pngMargin, "white pixels around the board of it", 0);
    app.add_option("--target-pdf", targets.pdf, "write the target (--dots, --columns ...) to scale as PDF");
    app.add_option("--target-svg", targets.svg, "write the target to scale as SVG");
    app.add_option("--page", targets.page, "of them: A4, A3 (both across) or WIDTHxHEIGHT in millimetres")
        ->capture_default_str();
}

void addBoardOptions(CLI::App& app, Options& options) {
    app.add_flag("--dots", options.dots, "the target is a grid of dots");
    app.add_option("--columns", options.target.columns, "inner corners, or dots, across")
        ->check(CLI::Range(3, 200))
        ->capture_default_str();
    app.add_option("--rows", options.target.rows, "inner corners, or dots, down")
        ->check(CLI::Range(3, 200))
        ->capture_default_str();
    app.add_option("--pitch,--square", options.target.pitch, "millimetres of a square, or from dot to dot")
        ->check(host::between(0.001, 10000))
        ->capture_default_str();
    app.add_option("--diameter", options.target.diameter, "millimetres of a dot [half of the pitch]")
        ->check(host::between(0.0001, 9000));
}

void addPlaneOptions(CLI::App& app, Options& options) {
    const auto add = [&](const char* name, double& value, const char* text, double low, double high) {
        app.add_option(name, value, text)->check(host::between(low, high))->capture_default_str();
    };
    app.add_option("--plane-view", options.planeView,
                   "the picture whose target lies on the plane of the parts [the first that shows it]");
    add("--height", options.plane.height,
        "millimetres that the parts' upper side lies nearer to the camera than the target did", -1e6, 1e6);
    add("--height-deviation", options.plane.heightDeviation, "its standard uncertainty", 0, 1e6);
    add("--scale-deviation", options.plane.scaleDeviation,
        "relative standard uncertainty of the pitch, such as 0.0005", 0, 0.1);
    app.add_option("--radial", options.plane.radial, "coefficients of radial distortion, 0 to 3")
        ->check(CLI::Range(0, 3))
        ->capture_default_str();
    app.add_flag("--no-tangential", options.noTangential, "find no tangential distortion");
    app.add_flag("--no-lens", options.noLens, "a plane seen without distortion, from one picture");
}

void complete(Options& options) {
    options.target.kind = options.dots ? orx::tkDotGrid : orx::tkChessboard;
    if (!(options.target.diameter > 0)) options.target.diameter = 0.5 * options.target.pitch;
    options.plane.lens = !options.noLens;
    options.plane.tangential = !options.noTangential;
}

// What no option tells by itself.
void requireSense(const Options& options) {
    const calibration::TargetFiles& targets = options.targets;
    const bool wantsTarget = !targets.png.empty() || !targets.pdf.empty() || !targets.svg.empty();
    if (!wantsTarget && options.pictures.empty() && options.photographs.empty() && !options.sample)
        throw CLI::ValidationError("nothing to do: give pictures, folders, or a file for a target");
    const double share = options.target.diameter / options.target.pitch;
    if (options.dots && !(share >= 0.1 && share <= 0.9))
        throw CLI::ValidationError("--diameter must be 0.1 to 0.9 of the pitch");
    if (options.noLens && (options.plane.height != 0 || options.plane.heightDeviation != 0))
        throw CLI::ValidationError("--no-lens leaves nothing for --height: it takes a camera");
    const std::string problem = calibration::problemOfTargets(targets, options.target);
    if (!problem.empty()) throw CLI::ValidationError(problem);
}

int parseAndRun(int argc, const char* const* argv) {
    Options options;
    options.target.diameter = 0;
    CLI::App app(
        "Prints calibration targets, and tells a camera's lens and the plane of the parts from\n"
        "pictures of one, in which it is tilted this way and that.",
        "orx_calibration");
    app.footer(
        "Exit code: 0 when all that was asked for is written, 1 when the pictures tell no calibration or a "
        "file can't be read or written, 2 for bad arguments.");
    addTargetOptions(app, options.targets);
    app.add_option("pictures", options.pictures, "pictures of the target, and folders of such");
    app.add_option("--photographs", options.photographs, "calibrate from the pictures of this folder");
    if (*kFetchSample != '\0')
        app.add_flag("--sample", options.sample,
                     "calibrate from OpenCV's 13 sample photographs (a download of 95 MB)");
    addBoardOptions(app, options);
    addPlaneOptions(app, options);
    app.add_option("--description", options.description, "text to store with the calibration")
        ->capture_default_str();
    app.add_option("--out", options.out, "folder for the results")->capture_default_str();
    try {
        app.parse(argc, argv);
        complete(options);
        requireSense(options);
    } catch (const CLI::ParseError& error) {
        return host::endAt(error, app);
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
