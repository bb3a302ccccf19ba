// Guide "pictures made better": colour, brightness, uneven light, clean binary pictures, focus.
#include <array>
#include <cmath>
#include <cstdio>
#include <opencv2/imgproc.hpp>

#include "canvas.h"
#include "orxFunctions/orxfunctions.h"
#include "support/synthetic_scene.h"

namespace {

// [white]
// Gains from a picture of a grey card, kept for all pictures that follow under the same light.
cv::Mat inWhiteLight(const cv::Mat& card, const cv::Mat& picture) {
    const orx::TWhiteBalance balance = orx::getWhiteBalance(card);  // wbGreyWorld: its mean is grey
    cv::Mat balanced;
    if (!orx::applyWhiteBalance(picture, balanced, balance)) return {};  // orx::lastRefusal() says why
    return balanced;
}
// [white end]

// [brightness]
struct Brighter {
    cv::Mat gamma, log, softened, local, detail;
};

// All empty where one is refused: orx::lastRefusal() says why.
Brighter brighter(const cv::Mat& grey) {
    Brighter made;
    orx::TEnhanceOptions options;
    options.clipLimit = 3;
    options.gain = 2;
    const bool done = orx::correctGamma(grey, made.gamma, 0.5) &&      // below 1 brightens dark regions
                      orx::stretchLog(grey, made.log, 50) &&           // lifts them more
                      orx::suppressHighlights(grey, made.softened) &&  // from 0.7 of full scale on
                      orx::enhanceImage(grey, made.local, orx::emEqualize, options) &&
                      orx::enhanceImage(grey, made.detail, orx::emDetailGain, options);
    return done ? made : Brighter();
}
// [brightness end]

// [clean]
struct Cleaned {
    cv::Mat objects, filled, lines;
};

// All empty where the picture is refused: orx::lastRefusal() says why.
Cleaned cleaned(const cv::Mat& binary) {
    Cleaned steps;
    orx::TFillHolesOptions holes;
    holes.maxArea = 60;  // larger ones belong to the part

    const bool done = orx::removeSmallObjects(binary, steps.objects, 40) &&  // pixels
                      orx::fillHoles(steps.objects, steps.filled, holes) &&
                      orx::thinning(steps.filled, steps.lines, orx::tnGuoHall) &&
                      orx::removeShortLines(steps.lines, steps.lines, 20);
    return done ? steps : Cleaned();
}
// [clean end]

// [focus]
// The sharpest of pictures of one scene, one at the least, by the part of them that matters; it lies in all.
std::size_t sharpestOf(const std::vector<cv::Mat>& pictures, const cv::Rect& part) {
    std::size_t best = 0;
    double highest = -1;
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        const double sharpness = AutoFocus::calcTenengrad(pictures[i](part));
        if (sharpness > highest) {
            highest = sharpness;
            best = i;
        }
    }
    return best;
}
// [focus end]

const cv::Size kSize(200, 150);

cv::Mat disksAndBars(const scenes::Exposure& exposure) {
    cv::Mat ideal(kSize, CV_32F, cv::Scalar(70.0));
    for (const cv::Point2d center : {cv::Point2d(45, 40), cv::Point2d(150, 45), cv::Point2d(155, 110)})
        scenes::paint(ideal, scenes::Disk{center, 22}, 210.0);
    scenes::paint(ideal, scenes::Bar{{60, 105}, 25, 80, 16}, 150.0);
    return scenes::expose(ideal, exposure);
}

void tellColour() {
    cv::Mat colours(120, 200, CV_8UC3, cv::Scalar(128, 128, 128));
    colours(cv::Rect(20, 20, 45, 80)) = cv::Scalar(60, 60, 190);
    colours(cv::Rect(78, 20, 45, 80)) = cv::Scalar(70, 170, 70);
    colours(cv::Rect(136, 20, 45, 80)) = cv::Scalar(220, 220, 220);
    cv::Mat card(60, 60, CV_8UC3, cv::Scalar::all(128)), seen;
    const cv::Scalar lamp(0.62, 0.9, 1.1);  // blue, green, red
    cv::multiply(colours, lamp, seen);
    cv::multiply(card, lamp, card);
    const cv::Mat balanced = inWhiteLight(card, seen);
    guide::save("enhance-colour", guide::sheet({guide::captioned(seen, "under a warm lamp"),
                                                guide::captioned(balanced, "balanced")},
                                               2));
    const cv::Vec3b& ground = balanced.at<cv::Vec3b>(5, 5);
    std::printf("ground %d %d %d, before %d %d %d\n", ground[0], ground[1], ground[2],
                seen.at<cv::Vec3b>(5, 5)[0], seen.at<cv::Vec3b>(5, 5)[1], seen.at<cv::Vec3b>(5, 5)[2]);
    guide::expect(ground[0] == ground[1] && ground[1] == ground[2], "the ground is grey again");
}

void tellBrightness() {
    const cv::Mat grey = disksAndBars({0.85, 0.8, 2, 3});
    const Brighter made = brighter(grey);
    cv::Mat background, flat;
    orx::TFlattenOptions options;
    options.window = 71;  // wider than the widest object
    orx::getBackground(grey, background, options);
    orx::flattenLight(grey, flat, options);
    guide::save(
        "enhance-brightness",
        guide::sheet(
            {guide::captioned(grey, "as it came"), guide::captioned(made.gamma, "correctGamma 0.5"),
             guide::captioned(made.log, "stretchLog 50"),
             guide::captioned(made.softened, "suppressHighlights"),
             guide::captioned(made.local, "emEqualize"), guide::captioned(made.detail, "emDetailGain 2"),
             guide::captioned(background, "getBackground"), guide::captioned(flat, "flattenLight")},
            4));
    guide::expect(
        cv::mean(made.log)[0] > cv::mean(made.gamma)[0] && cv::mean(made.gamma)[0] > cv::mean(grey)[0],
        "gamma brightens, the logarithm more");
}

void tellClean() {
    cv::Mat binary = disksAndBars({0, 0.8, 2, 4}) > 110;
    cv::RNG random(6);
    for (int i = 0; i < 120; ++i) {
        const cv::Point at(random.uniform(2, kSize.width - 2), random.uniform(2, kSize.height - 2));
        cv::circle(binary, at, random.uniform(0, 3), cv::Scalar(255 - binary.at<unsigned char>(at)),
                   cv::FILLED);
    }
    const Cleaned steps = cleaned(binary);
    guide::expect(cleaned(cv::Mat(8, 8, CV_16UC1, cv::Scalar(0))).lines.empty() &&
                      orx::lastRefusal().code == orx::rcImageType,
                  "16 bits are refused where binary pictures are wanted");
    guide::save("enhance-clean", guide::sheet({guide::captioned(binary, "thresholded"),
                                               guide::captioned(steps.objects, "removeSmallObjects"),
                                               guide::captioned(steps.filled, "fillHoles"),
                                               guide::captioned(steps.lines, "thinning")},
                                              4));
    const auto objects = orx::getContours(steps.filled, orx::ctExternal);
    const auto holes = orx::getContours(steps.filled, orx::ctHoles);
    const std::size_t before = orx::getContours(binary, orx::ctExternal).size();
    std::printf("%zu objects before, %zu after; %zu holes\n", before, objects.size(), holes.size());
    guide::expectAbout(static_cast<double>(before), 89, 3, "objects before");
    guide::expect(objects.size() == 4 && holes.empty(), "four objects without holes are left");
}

void tellFocus() {
    using Measure = double (*)(const cv::Mat&);
    const std::array<Measure, 4> measures{AutoFocus::calcGrayDifference, AutoFocus::calcBrenner,
                                          AutoFocus::calcTenengrad, AutoFocus::calcLaplacianVariance};
    const std::array<const char*, 4> names{"calcGrayDifference", "calcBrenner", "calcTenengrad",
                                           "calcLaplacianVariance"};
    const std::array<cv::Scalar, 4> colours{guide::kInk, guide::kGreen, guide::kBlue, guide::kRed};
    guide::Plot plot({640, 340}, {"position of the lens", -10, 10, {-10, -5, 0, 5, 10}},
                     {"share of the highest", 0, 1.5, {0, 0.5, 1}});
    std::vector<cv::Mat> pictures;
    for (int position = -10; position <= 10; ++position)
        pictures.push_back(
            disksAndBars({0, std::hypot(0.7, 0.35 * position), 2, static_cast<unsigned>(position + 20)}));
    for (std::size_t m = 0; m < measures.size(); ++m) {
        std::vector<cv::Point2d> curve;
        double highest = 0;
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            curve.emplace_back(static_cast<double>(i) - 10, measures[m](pictures[i]));
            highest = std::max(highest, curve.back().y);
        }
        for (cv::Point2d& point : curve) point.y /= highest;
        plot.line(curve, colours[m]);
        plot.legend(names[m], colours[m]);
        std::printf("%s: %.2f at the far end\n", names[m], curve[0].y);
        guide::expectAbout(curve[10].y, 1, 0.02, "the measure is highest in focus");
    }
    guide::save("enhance-focus", plot.canvas());
    const std::size_t best = sharpestOf(pictures, {20, 15, 60, 60});
    guide::expect(best == 10, "the sharpest picture is that in focus");
}

void make() {
    tellColour();
    tellBrightness();
    tellClean();
    tellFocus();
}

}  // namespace

int main(int argc, char** argv) { return guide::run(argc, argv, make); }
