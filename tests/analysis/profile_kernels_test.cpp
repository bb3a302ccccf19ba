#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <opencv2/core/utility.hpp>
#include <vector>

#include "orxFunctions/analysis/profiles/kernels.h"

namespace {

using orx::profile_kernels::Kernels;
using orx::profile_kernels::PointRow;

// The weight of a pixel at a distance, as Keys' paper has it.
double share(double distance) {
    const double d = std::fabs(distance);
    if (d < 1) return 1.5 * d * d * d - 2.5 * d * d + 1;
    return d < 2 ? -0.5 * d * d * d + 2.5 * d * d - 4 * d + 2 : 0.0;
}

double levelAt(const cv::Mat& image, double x, double y) {
    double level = 0;
    for (int row = static_cast<int>(y) - 1; row <= static_cast<int>(y) + 2; ++row) {
        for (int column = static_cast<int>(x) - 1; column <= static_cast<int>(x) + 2; ++column) {
            const int pixel = image.depth() == CV_8U ? image.at<std::uint8_t>(row, column)
                                                     : image.at<std::uint16_t>(row, column);
            level += share(y - row) * share(x - column) * pixel;
        }
    }
    return level;
}

std::vector<double> sumsOf(const Kernels& kernels, const cv::Mat& image, const PointRow& points,
                           std::size_t count) {
    std::vector<double> sums(count + 4, 1.5);
    const auto stride = static_cast<std::ptrdiff_t>(image.step1());
    if (image.depth() == CV_8U) {
        kernels.addBytes(image.ptr<std::uint8_t>(), stride, points, count, sums.data());
    } else {
        kernels.addWords(image.ptr<std::uint16_t>(), stride, points, count, sums.data());
    }
    return sums;
}

TEST(ProfileKernels, AddCubicLevelsWithTheSameBitsWhateverTheProcessor) {
    cv::RNG random(7);
    for (const int depth : {CV_8U, CV_16U}) {
        // A view, so that rows are longer than the picture.
        cv::Mat whole(70, 90, depth);
        random.fill(whole, cv::RNG::UNIFORM, 0, depth == CV_8U ? 256 : 65536);
        const cv::Mat image = whole(cv::Rect(5, 4, 80, 60));
        for (std::size_t count = 1; count < 70; ++count) {
            const double lead = static_cast<double>(count / 3);
            // From one place to another, both with all their pixels inside; some along a row.
            const cv::Point2d from(random.uniform(1.0, 77.99), random.uniform(1.0, 57.99));
            cv::Point2d to(random.uniform(1.0, 77.99), random.uniform(1.0, 57.99));
            if (count % 4 == 0) to.y = from.y;
            const cv::Point2d step = (to - from) / static_cast<double>(count);
            const cv::Point2d start = from + step * lead;
            const PointRow points{start.x, start.y, step.x, step.y, lead};
            cv::setUseOptimized(false);
            const std::vector<double> plain = sumsOf(orx::profile_kernels::chosen(), image, points, count);
            cv::setUseOptimized(true);
            EXPECT_EQ(sumsOf(orx::profile_kernels::chosen(), image, points, count), plain);
            for (std::size_t i = 0; i < plain.size(); ++i) {
                const cv::Point2d at = start + step * (static_cast<double>(i) - lead);
                EXPECT_NEAR(plain[i], 1.5 + (i < count ? levelAt(image, at.x, at.y) : 0.0), 1e-7)
                    << count << ", " << i;
            }
        }
    }
}

}  // namespace
