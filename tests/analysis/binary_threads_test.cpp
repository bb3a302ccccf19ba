// Operators on binary pictures that cut them into stripes: each result is that of a plain version which takes
// the picture as a whole, on any number of threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/plain_thinning.h"
#include "tests/support/thread_counts.h"

namespace {

using orx::test::madeAlike;

// Shapes of which many reach over several stripes, some nested, and noise in parts of the picture.
cv::Mat shapes(cv::Size size, std::uint64_t seed) {
    cv::RNG random(seed);
    cv::Mat img = cv::Mat::zeros(size, CV_8UC1);
    const int largest = std::min(90, std::max(size.width, size.height) / 2);
    const auto count = static_cast<int>(std::min<std::size_t>(img.total() / 900 + 3, 2000));
    for (int i = 0; i < count; ++i) {
        const cv::Point a(random.uniform(-3, size.width + 3), random.uniform(-3, size.height + 3));
        const int reach = random.uniform(0, largest + 1);
        const int value = i % 7 == 6 ? 0 : random.uniform(1, 256);
        if (i % 2 == 0) cv::circle(img, a, reach, value, random.uniform(1, 9));
        if (i % 2 == 1)
            cv::line(img, a, a + cv::Point(random.uniform(-reach, reach + 1), reach), value,
                     random.uniform(1, 9));
    }
    cv::Mat noise(size, CV_8UC1);
    random.fill(noise, cv::RNG::UNIFORM, 0, 256);
    const cv::Rect part(size.width / 3, size.height / 4, size.width / 3 + 1, size.height / 2 + 1);
    img(part).setTo(0, noise(part) < 90);
    img(part).setTo(7, noise(part) > 200);
    return img;
}

// One pixel, single rows and columns, stripes of one row (less than what looks at neighbours in them), odd
// widths around whole words of 64, and sizes that are not cut.
const cv::Size kSizes[] = {{1, 1},     {2, 3},   {600001, 1}, {1, 600001},
                           {70001, 9}, {63, 37}, {65, 64},    {811, 679}};

// Alternates objects and background as finely as pixels allow: the most runs, and the longest chains of them.
std::vector<cv::Mat> extremes() {
    cv::Mat board(733, 727, CV_8UC1);
    cv::Mat spiral = cv::Mat::zeros(733, 727, CV_8UC1);
    cv::Mat comb(733, 727, CV_8UC1);  // teeth that meet in the last row alone
    for (int y = 0; y < board.rows; ++y) {
        for (int x = 0; x < board.cols; ++x) {
            board.at<uchar>(y, x) = (x + y) % 2 == 0 ? 1 : 0;
            comb.at<uchar>(y, x) = x % 2 == 0 || y + 1 == comb.rows ? 255 : 0;
        }
    }
    for (cv::Rect ring(0, 0, 727, 733); ring.width > 8 && ring.height > 8;
         ring -= cv::Size(8, 8), ring += cv::Point(4, 4)) {
        cv::rectangle(spiral, ring, 255, 1);
        spiral.at<uchar>(ring.y + 2, ring.x) = 0;  // a gap, and a bridge to the next one
        spiral(cv::Rect(ring.x, ring.y + 4, 5, 1)) = 255;
    }
    return {board, comb, spiral, cv::Mat::zeros(733, 727, CV_8UC1),
            cv::Mat(733, 727, CV_8UC1, cv::Scalar(9))};
}

// Calls test(picture) for pictures of all sizes, and views of such, and the extremes.
template <class Test>
void forPictures(const Test& test) {
    for (const cv::Size& size : kSizes) {
        SCOPED_TRACE(testing::Message() << size);
        test(shapes(size, 3));
    }
    SCOPED_TRACE("views and extremes");
    test(shapes({900, 700}, 5)(cv::Rect(3, 5, 867, 681)));
    for (const cv::Mat& img : extremes()) test(img);
}

cv::Mat filledPlainly(const cv::Mat& src, double maxArea, int connectivity) {
    cv::Mat framed;
    cv::copyMakeBorder(src == 0, framed, 1, 1, 1, 1, cv::BORDER_CONSTANT, 255);
    cv::Mat labels, stats, centers;
    cv::connectedComponentsWithStats(framed, labels, stats, centers, connectivity, CV_32S);
    const int outside = labels.at<int>(0, 0);
    cv::Mat filled = src.clone();
    for (int y = 0; y < src.rows; ++y) {
        for (int x = 0; x < src.cols; ++x) {
            const int label = labels.at<int>(y + 1, x + 1);
            const bool isHole = label != 0 && label != outside;
            if (isHole && !(stats.at<int>(label, cv::CC_STAT_AREA) > maxArea)) filled.at<uchar>(y, x) = 255;
        }
    }
    return filled;
}

TEST(BinaryThreads, FillHolesGivesWhatLabelledComponentsGive) {
    forPictures([](const cv::Mat& img) {
        for (const orx::TFillHolesOptions& options :
             {orx::TFillHolesOptions{1e300, orx::cnEight}, orx::TFillHolesOptions{30, orx::cnFour}}) {
            const int connectivity = options.objects == orx::cnEight ? 4 : 8;
            EXPECT_TRUE(madeAlike(filledPlainly(img, options.maxArea, connectivity), [&] {
                cv::Mat out;
                EXPECT_TRUE(orx::fillHoles(img, out, options));
                return out;
            }));
        }
    });
}

TEST(BinaryThreads, SmallObjectsAreThoseOfLabelledComponents) {
    forPictures([](const cv::Mat& img) {
        cv::Mat labels, stats, centers;
        cv::connectedComponentsWithStats(img, labels, stats, centers, 8, CV_32S);
        cv::Mat kept = img.clone();
        for (int y = 0; y < img.rows; ++y) {
            for (int x = 0; x < img.cols; ++x) {
                const int label = labels.at<int>(y, x);
                if (label != 0 && stats.at<int>(label, cv::CC_STAT_AREA) < 25) kept.at<uchar>(y, x) = 0;
            }
        }
        EXPECT_TRUE(madeAlike(kept, [&] {
            cv::Mat out;
            EXPECT_TRUE(orx::removeSmallObjects(img, out, 25));
            return out;
        }));
    });
}

// Steps right, down and to both sides down; a diagonal one only where no way around it leads there.
cv::Mat withoutShortPlainly(const cv::Mat& img, double least) {
    cv::Mat labels;
    std::vector<double> straight(static_cast<std::size_t>(cv::connectedComponents(img, labels, 8, CV_32S)));
    std::vector<double> diagonal(straight.size());
    const auto isObject = [&](int y, int x) {
        return y < img.rows && x >= 0 && x < img.cols && img.at<uchar>(y, x) != 0;
    };
    for (int y = 0; y < img.rows; ++y) {
        for (int x = 0; x < img.cols; ++x) {
            if (!isObject(y, x)) continue;
            const auto label = static_cast<std::size_t>(labels.at<int>(y, x));
            straight[label] += (isObject(y, x + 1) ? 1 : 0) + (isObject(y + 1, x) ? 1 : 0);
            for (const int side : {-1, 1}) {
                if (isObject(y + 1, x + side) && !isObject(y, x + side) && !isObject(y + 1, x))
                    ++diagonal[label];
            }
        }
    }
    cv::Mat kept = img.clone();
    for (int y = 0; y < img.rows; ++y) {
        for (int x = 0; x < img.cols; ++x) {
            const auto label = static_cast<std::size_t>(labels.at<int>(y, x));
            if (straight[label] + std::sqrt(2.0) * diagonal[label] < least) kept.at<uchar>(y, x) = 0;
        }
    }
    return kept;
}

TEST(BinaryThreads, ShortLinesAreThoseOfLabelledComponents) {
    forPictures([](const cv::Mat& img) {
        EXPECT_TRUE(madeAlike(withoutShortPlainly(img, 20), [&] {
            cv::Mat out;
            EXPECT_TRUE(orx::removeShortLines(img, out, 20.0));
            return out;
        }));
    });
}

TEST(BinaryThreads, ThinningIsThatOfPassesOverTheWholePicture) {
    std::vector<cv::Mat> pictures;
    for (const cv::Size& size : kSizes) pictures.push_back(shapes(size, 9));
    cv::Mat blob = cv::Mat::zeros(769, 797, CV_8UC1);  // whose passes go on when few pixels wait
    cv::ellipse(blob, {{400, 380}, {90, 730}, 8}, 255, cv::FILLED);
    pictures.push_back(blob);
    for (const cv::Mat& img : pictures) {
        SCOPED_TRACE(testing::Message() << img.size());
        for (const orx::TThinningMethod method : {orx::tnZhangSuen, orx::tnGuoHall}) {
            EXPECT_TRUE(madeAlike(orx::test::thinnedPlainly(img, method), [&] {
                cv::Mat out;
                EXPECT_TRUE(orx::thinning(img, out, method));
                return out;
            }));
        }
    }
}

}  // namespace
