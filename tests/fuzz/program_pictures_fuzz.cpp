// What orx_inspection does with a picture: objects found, measured, looked at in other ways, drawn and
// reported; the same again for the same seed. Cut and broken files are told before they are decoded.
#include <json/json.h>

#include <cmath>
#include <sstream>

#include "inspection/analyse/analyses.h"
#include "inspection/analyse/analyses_sections.h"
#include "inspection/measure/measurement.h"
#include "inspection/measure/methods.h"
#include "inspection/report/annotate.h"
#include "inspection/run/image_source.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/temporary_folder.h"

namespace {

using fuzz::require;

inspection::Settings settings(fuzz::Input& input) {
    inspection::Settings s;
    const std::vector<std::string> methods = inspection::methodNames();
    s.method = methods[input.byte() % methods.size()];
    s.polarity = static_cast<inspection::Polarity>(input.between(0, 2));
    s.smooth = input.between(0, 4) / 2.0;
    s.background = input.flag() ? 2 * input.between(1, 30) + 1 : 0;
    s.close = input.flag() ? input.between(1, 9) : 0;
    s.minArea = input.between(0, 120);
    s.shape = static_cast<inspection::ShapeChoice>(input.between(0, 2));
    s.circle = static_cast<inspection::CircleEstimator>(input.between(0, 3));
    s.line = static_cast<inspection::LineEstimator>(input.between(0, 2));
    s.ellipse = static_cast<inspection::EllipseEstimator>(input.between(0, 2));
    s.tolerance = 0.5 + input.byte() / 64.0;
    s.trials = input.between(1, 60);
    s.seed = input.byte();
    const unsigned flags = input.byte();
    s.subPixel = (flags & 1U) != 0;
    s.split = (flags & 2U) != 0;
    s.edges = (flags & 4U) != 0;
    s.focus = (flags & 8U) != 0;
    if ((flags & 16U) != 0)
        s.calipers.push_back(
            {input.between(0, 30), input.between(0, 30), input.between(1, 40), input.between(1, 40)});
    if ((flags & 32U) != 0) {
        inspection::Circle circle;
        circle.center = {input.between(0, 90) * 1.0, input.between(0, 90) * 1.0};
        circle.radius = 1.0 + input.byte();
        s.circleCalipers.push_back(circle);
    }
    return s;
}

// Nine pictures beside one another: several objects, some of them cut.
cv::Mat sheet(fuzz::Input& input) {
    cv::Mat image(96, 96, CV_8UC1, cv::Scalar(input.byte()));
    for (int i = input.between(1, 9); i > 0; --i) {
        const cv::Mat piece = input.grey();
        const cv::Point at{input.between(0, 96 - piece.cols), input.between(0, 96 - piece.rows)};
        piece.copyTo(image(cv::Rect(at, piece.size())));
    }
    return image;
}

void checkPicture(fuzz::Input& input) {
    const inspection::Settings s = settings(input);
    const cv::Mat image = sheet(input);
    std::string problem;
    const auto prepared = inspection::prepare(image, s, problem);
    require(prepared.has_value() == problem.empty(), "a problem tells why there are no objects");
    if (!prepared) return;
    require(prepared->objects.size() == image.size(), "objects of the picture's size");
    const std::vector<inspection::Feature> features = inspection::measure(image, *prepared, s);
    const std::vector<inspection::Feature> again = inspection::measure(image, *prepared, s);
    require(features.size() == again.size(), "the same again");
    for (std::size_t i = 0; i < features.size(); ++i) {
        const inspection::Feature& f = features[i];
        require(f.center == again[i].center && f.radius == again[i].radius && f.angle == again[i].angle,
                "the same again");
        require(std::isfinite(f.center.x) && std::isfinite(f.center.y) && f.area >= s.minArea,
                "places are numbers");
        require(f.inlierRatio >= 0 && f.inlierRatio <= 1 && f.meanResidual >= 0, "inliers are a share");
        require(!f.isRound() || f.radius > 0, "round objects have a radius");
        require(f.deviations.x >= 0 && f.deviations.radius >= 0 && f.deviations.width >= 0, "deviations");
    }
    const inspection::Analyses analyses = inspection::analyse(image, features, s);
    require(analyses.boxCalipers.size() == s.calipers.size(), "an answer for each caliper");
    inspection::sectionsOf(image, analyses);
    const cv::Mat drawn = inspection::annotate(image, features, s.tolerance);
    require(drawn.type() == CV_8UC3 && !drawn.empty(), "a drawing in colour");
}

// Files that are no picture, and grey maps and JPEG files that are cut; what a decoder makes of the middle of
// a sound file is not looked for here.
void checkFile(fuzz::Input& input) {
    const std::string start = input.flag() ? "\xFF\xD8\xFF" : "P5 4 3 255\n";
    const std::string bytes = input.flag() ? start + input.text(40) : input.text(200);
    const std::string file = (fuzz::emptyFolder() / "a.pgm").string();
    test::writeBytes(file, bytes.substr(0, bytes[0] == 'P' || bytes[0] == '\xFF' ? bytes.size() : 2));
    std::string problem;
    const cv::Mat image = inspection::readGrey(file, problem);
    require(image.empty() != problem.empty(), "a picture, or the reason");
    require(image.empty() || image.type() == CV_8UC1, "grey");
    require(inspection::readDeepGrey(file, problem).empty() == image.empty(), "deep or not alike");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    cv::setNumThreads(1);
    fuzz::Input input(bytes, size);
    if (input.byte() % 16U == 0)
        checkFile(input);
    else
        checkPicture(input);
    fuzz::forgetMessages();
    return 0;
}
