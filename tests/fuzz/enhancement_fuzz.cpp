// Grey and colour conversion, tone curves, white balance, uneven light and focus, against the formulas pixel
// by pixel; in place against apart.
#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

using fuzz::require;

double levelOf(const cv::Mat& image, int y, int x) {
    return image.depth() == CV_16U ? image.ptr<std::uint16_t>(y)[x] : image.ptr<uchar>(y)[x];
}

bool isAlpha(const cv::Mat& image, int x) {
    return image.channels() % 2 == 0 && x % image.channels() == image.channels() - 1;
}

// Each level of the answer is the curve's, rounded; alpha is as it was.
void checkCurve(const cv::Mat& source, const cv::Mat& result, const std::function<double(double)>& curve) {
    const double top = source.depth() == CV_16U ? 65535 : 255;
    require(result.size() == source.size() && result.type() == source.type(), "a picture of the same kind");
    for (int y = 0; y < source.rows; ++y) {
        for (int x = 0; x < source.cols * source.channels(); ++x) {
            const double level = levelOf(source, y, x);
            const double expected = isAlpha(source, x) ? level : top * curve(level / top);
            require(std::abs(levelOf(result, y, x) - expected) <= 0.5001, "levels follow the curve");
        }
    }
}

void checkTones(fuzz::Input& input) {
    const double gamma = input.option(0.05, 6);
    const double gain = input.option(0.01, 1000);
    orx::THighlightOptions options;
    options.ceiling = input.option(0.1, 1);
    options.knee = input.option(0, 0.9);
    const cv::Mat image = input.matrix();
    cv::Mat result;
    if (orx::correctGamma(image, result, gamma))
        checkCurve(image, result, [&](double level) { return std::pow(level, gamma); });
    if (orx::stretchLog(image, result, gain))
        checkCurve(image, result, [&](double level) { return std::log1p(gain * level) / std::log1p(gain); });
    if (orx::suppressHighlights(image, result, options)) {
        const double most = std::round(options.ceiling * (image.depth() == CV_16U ? 65535 : 255));
        for (int y = 0; y < image.rows; ++y) {
            for (int x = 0; x < image.cols * image.channels(); ++x)
                require(isAlpha(image, x) || levelOf(result, y, x) <= most, "no level exceeds the ceiling");
        }
        if (image.channels() <= 2) {
            const double range = options.ceiling - options.knee;
            checkCurve(image, result, [&](double level) {
                return level <= options.knee
                           ? level
                           : options.ceiling - range * std::exp(-(level - options.knee) / range);
            });
        }
    }
}

void checkColour(fuzz::Input& input) {
    const int bits = input.between(7, 17);
    const cv::Mat image = input.matrix();
    const cv::Mat grey = orx::toGray(image, bits);
    const cv::Mat colour = orx::toBGR(image, bits);
    require(grey.empty() == colour.empty(), "both or none");
    if (grey.empty()) return;
    require(grey.type() == CV_8UC1 && colour.type() == CV_8UC3 && grey.size() == image.size(),
            "of that kind");
    const double scale = image.depth() == CV_16U ? 255.0 / ((1U << static_cast<unsigned>(bits)) - 1) : 1;
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols; ++x) {
            const int n = image.channels();
            double level = levelOf(image, y, n * x);
            if (n >= 3)
                level = 0.114 * level + 0.587 * levelOf(image, y, n * x + 1) +
                        0.299 * levelOf(image, y, n * x + 2);
            const double expected = std::min(255.0, level * scale);
            require(std::abs(grey.at<uchar>(y, x) - expected) <= 1.01, "grey by its weights");
        }
    }
}

void checkBalance(fuzz::Input& input) {
    orx::TWhiteBalanceOptions options;
    options.method = static_cast<orx::TWhiteBalanceMethod>(input.between(-1, 2));
    options.whiteShare = input.option(0.01, 1);
    orx::TWhiteBalance own;
    own.gains = cv::Vec3d{input.option(0, 4), input.option(0, 4), input.option(0, 4)};
    own.valid = input.byte() % 8U != 0;
    const cv::Mat image = input.matrix();
    const orx::TWhiteBalance balance = orx::getWhiteBalance(image, options);
    cv::Mat whole;
    const bool balanced = orx::whiteBalance(image, whole, options);
    require(balanced == balance.valid, "balanced where there are gains");
    cv::Mat applied;
    if (balanced) {
        require(orx::applyWhiteBalance(image, applied, balance) && fuzz::same(whole, applied), "both in one");
    }
    if (!orx::applyWhiteBalance(image, applied, own) || image.channels() != 3) return;
    const double top = image.depth() == CV_16U ? 65535 : 255;
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < 3 * image.cols; ++x) {
            const double expected = std::min(top, levelOf(image, y, x) * own.gains[x % 3]);
            require(std::abs(levelOf(applied, y, x) - expected) <= 0.5001, "levels are multiplied");
        }
    }
}

void checkLight(fuzz::Input& input) {
    orx::TFlattenOptions options;
    options.window = input.between(0, 60);
    options.brightObjects = input.flag();
    const cv::Mat image = input.matrix();
    cv::Mat ground;
    cv::Mat flat;
    const bool taken = orx::getBackground(image, ground, options);
    require(orx::flattenLight(image, flat, options) == taken, "both or none");
    if (!taken) return;
    require(ground.size() == image.size() && ground.type() == image.type() && flat.type() == image.type(),
            "pictures of the same kind");
    const double top = image.depth() == CV_16U ? 65535 : 255;
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols * image.channels(); ++x) {
            const double above = levelOf(image, y, x) - levelOf(ground, y, x);
            const double expected = options.brightObjects ? std::max(0.0, above) : top + std::min(0.0, above);
            require(levelOf(flat, y, x) == expected, "flat is the picture less its ground");
        }
    }
}

void checkEnhanced(fuzz::Input& input) {
    orx::TEnhanceOptions options;
    options.clipLimit = input.option(0.1, 20);
    options.tiles = input.between(0, 65);
    options.gain = input.option(0, 5);
    options.sigma = input.option(0.3, 6);
    const auto method = static_cast<orx::TEnchanceMethod>(input.between(-1, 2));
    cv::Mat image = input.matrix();
    const cv::Mat before = fuzz::copyOf(image);
    cv::Mat result;
    if (!orx::enhanceImage(image, result, method, options)) return;
    require(fuzz::same(image, before), "the source stays");
    require(result.size() == image.size() && result.type() == image.type(), "a picture of the same kind");
    require(orx::enhanceImage(image, image, method, options) && fuzz::same(image, result),
            "in place the same");
}

void checkFocus(fuzz::Input& input) {
    const cv::Mat image = input.matrix();
    const std::array<double, 4> values = {AutoFocus::calcGrayDifference(image), AutoFocus::calcBrenner(image),
                                          AutoFocus::calcTenengrad(image),
                                          AutoFocus::calcLaplacianVariance(image)};
    for (const double value : values) require(std::isfinite(value) && value >= -1, "focus is a number");
    const double noise = orx::getImageNoise(image);
    require(noise == -1 || noise >= 0.28, "noise is that of rounding at the least");
    if (image.empty() || image.type() != CV_8UC1 || image.dims > 2) return;
    const auto at = [&image](int y, int x) -> double {
        return image.at<uchar>(std::min(std::max(y, 0), image.rows - 1),
                               std::min(std::max(x, 0), image.cols - 1));
    };
    double difference = 0;
    double brenner = 0;
    double tenengrad = 0;
    double sum = 0;
    double squares = 0;
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols; ++x) {
            const double v = at(y, x);
            difference += std::abs(at(y, x + 1) - v) + std::abs(at(y + 1, x) - v);
            if (x + 2 < image.cols) brenner += std::pow(at(y, x + 2) - v, 2);
            if (y + 2 < image.rows) brenner += std::pow(at(y + 2, x) - v, 2);
            double gx = 0;
            double gy = 0;
            for (int i = -1; i <= 1; ++i) {
                gx += (2 - std::abs(i)) * (at(y + i, x + 1) - at(y + i, x - 1));
                gy += (2 - std::abs(i)) * (at(y + 1, x + i) - at(y - 1, x + i));
            }
            tenengrad += gx * gx + gy * gy;
            const double laplacian = at(y, x - 1) + at(y, x + 1) + at(y - 1, x) + at(y + 1, x) - 4 * v;
            sum += laplacian;
            squares += laplacian * laplacian;
        }
    }
    const double pixels = static_cast<double>(image.total());
    require(fuzz::nearly(values[0], difference / pixels), "grey differences by a plain loop");
    require(fuzz::nearly(values[1], brenner / pixels), "Brenner's sum by a plain loop");
    require(fuzz::nearly(values[2], tenengrad / pixels), "Tenengrad by a plain loop");
    const double variance = squares / pixels - std::pow(sum / pixels, 2);
    require(fuzz::nearly(values[3], variance, 1e-7), "the Laplacian's variance by a plain loop");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::runOneOf({checkTones, checkColour, checkBalance, checkLight, checkEnhanced, checkFocus}, bytes,
                   size);
    return 0;
}
