// Prints docs/accuracy-calibration.md: how well targets are found and planes calibrated.
//     build/release/bin/accuracy_calibration > docs/accuracy-calibration.md
// It takes about two minutes of one core. An argument changes the number of repetitions (default 16).
#include <cstdio>
#include <cstdlib>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "docs/tools/calibration_accuracy.h"

namespace {

using namespace calibration_accuracy;

const char* nameOf(orx::TTargetKind kind) { return kind == orx::tkChessboard ? "chessboard" : "dots"; }

void printIntroduction() {
    std::printf(R"(# Accuracy of targets and plane calibration

Made by `accuracy_calibration` (docs/tools); do not edit. Pictures of targets of 11 x 8 points are rendered as a camera of
640 x 480 pixels with a distorting lens sees them: grey levels 40 and 200, areas averaged over each pixel, blurred by the
optics before. The repetitions differ in their noise.

## Points of targets

`findTarget` on a target tilted by 25 degrees. **error**: of x or y, root mean square, pixels. **stated / true**: the
uncertainty that the view states over the error. **OpenCV**: the error of `findChessboardCornersSB`, and of it refined by
`cornerSubPix` (5 pixels to each side), on the same pictures, each without its mean.

| target | pitch | blur | noise | error | stated / true | OpenCV | with cornerSubPix | lost |
|---|---|---|---|---|---|---|---|---|
)");
}

// Errors of OpenCV's corners on one picture of those that findTargets sees; 0 where there are none.
void openCvErrors(double pixels, double blur, double noise, double errors[2]) {
    const double pitch = pixels * 120 / 620;
    const orx::TTarget target = targetOf(orx::tkChessboard, pitch);
    const scenes::PlaneCamera camera =
        scenes::tilted(lensOfTheScenes(), {5 * pitch, 3.5 * pitch}, 120, 25, 40, 8);
    scenes::PlaneExposure exposure;
    exposure.blurSigma = blur;
    exposure.noiseSigma = noise;
    const cv::Mat picture = scenes::renderPlane(camera, shapeOf(target), exposure);
    std::vector<cv::Point2f> corners;
    errors[0] = errors[1] = 0;
    if (!cv::findChessboardCornersSB(picture, {11, 8}, corners)) return;
    for (int way = 0; way < 2; ++way) {
        if (way == 1) cv::cornerSubPix(picture, corners, {5, 5}, {-1, -1}, cv::TermCriteria(3, 50, 1e-5));
        double squares = 0;
        cv::Point2d sum;
        for (int i = 0; i < 88; ++i) {
            const cv::Point2d truth = camera.project({i % 11 * pitch, i / 11 * pitch});
            cv::Point2d nearest(1e9, 1e9);
            for (const cv::Point2f& corner : corners) {
                const cv::Point2d off = cv::Point2d(corner) - truth;
                if (off.dot(off) < nearest.dot(nearest)) nearest = off;
            }
            squares += nearest.dot(nearest);
            sum += nearest;
        }
        errors[way] = std::sqrt((squares - sum.dot(sum) / 88) / (2 * 88));
    }
}

void printPoints() {
    for (const orx::TTargetKind kind : {orx::tkChessboard, orx::tkDotGrid}) {
        for (const double pixels : {20.0, 40.0}) {
            for (const double blur : {0.5, 0.7, 1.2}) {
                for (const double noise : {0.0, 2.0, 5.0}) {
                    const Found found = findTargets(kind, pixels, blur, noise, 3);
                    std::printf("| %s | %.0f px | %.1f | %.0f | %.4f | %.2f |", nameOf(kind), pixels, blur,
                                noise, found.rms, found.stated / found.rms);
                    double peers[2];
                    if (kind == orx::tkChessboard) {
                        openCvErrors(pixels, blur, noise, peers);
                        std::printf(" %.4f | %.4f |", peers[0], peers[1]);
                    } else {
                        std::printf(" | |");
                    }
                    std::printf(" %d |\n", found.lost);
                    std::fflush(stdout);
                }
            }
        }
    }
}

void printRow(const char* what, orx::TTargetKind kind, double noise, int draws, const Mapped& mapped) {
    std::printf("| %s | %s | %.0f | %d | %.2f | %.2f | %.2f | %.2f | %d |\n", what, nameOf(kind), noise,
                draws, mapped.statedOverTrue, mapped.place, mapped.length, mapped.lengthStated, mapped.lost);
    std::fflush(stdout);
}

void printCalibrations(int draws) {
    std::printf(R"(
Without noise what is left is the rounding of grey levels; the stated uncertainty of corners is then too large, since it
counts as noise what the model of two crossing edges leaves. OpenCV's corners are off by pixels here and there; fitted
ones find back from there.

## From pixels to millimetres

Eight pictures (blur 0.7) of a target of 100 x 70 mm, which fills most of the picture; a pixel is 0.2 mm. Nine places all
over the target are mapped from where they truly are seen. **stated / true**: the uncertainty stated of each over the
error, root mean square over all places and repetitions; 0.85 to 1.15 is asked for. **place**: error of x or y,
micrometres; **length**: error of the diagonal of 122.07 mm, and what is stated of it.

| calibration | target | noise | repetitions | stated / true | place | length | stated | lost |
|---|---|---|---|---|---|---|---|---|
)");
    for (const orx::TTargetKind kind : {orx::tkChessboard, orx::tkDotGrid}) {
        const int times = kind == orx::tkChessboard ? 1 : 4;
        printRow("lens and plane", kind, 2, times * draws,
                 calibrateRendered(kind, Way::lens, 2, times * draws));
        printRow("plane raised by 8 mm", kind, 2, times * draws,
                 calibrateRendered(kind, Way::raised, 2, times * draws));
        printRow("plane under a known lens", kind, 2, times * draws,
                 calibrateRendered(kind, Way::knownLens, 2, times * draws));
        printRow("one view, no lens", kind, 2, 4 * times * draws, calibrateFlat(kind, 2, 4 * times * draws));
    }
    std::printf(R"(
Chance moves the ratios of %d repetitions by about 0.08, and those of four times as many by half of that.
)",
                draws);
}

}  // namespace

int main(int argc, char** argv) {
    cv::setNumThreads(1);
    const int draws = argc > 1 ? std::atoi(argv[1]) : 16;
    if (argc > 2 || draws < 1) {
        std::fprintf(stderr, "usage: accuracy_calibration [REPETITIONS]\n");
        return 2;
    }
    printIntroduction();
    printPoints();
    printCalibrations(draws);
    return 0;
}
