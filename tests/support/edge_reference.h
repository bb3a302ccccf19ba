// EdgesSubPix once more, as plain loops and OpenCV calls and without any of the library's shortcuts.
#ifndef TESTS_SUPPORT_EDGE_REFERENCE_H
#define TESTS_SUPPORT_EDGE_REFERENCE_H

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/analysis/subpixel_edges.h"

namespace edge_reference {

inline cv::Mat derivativeKernel(double sigma) {
    const int radius = cvRound(3 * sigma);
    cv::Mat values(2 * radius + 1, 1, CV_32F, cv::Scalar(0));
    float sum = 0;
    for (int x = 1; x <= radius; ++x) {
        const auto v = static_cast<float>(-x * std::exp(-x * x / (2 * sigma * sigma)));
        values.at<float>(radius + x) = v;
        values.at<float>(radius - x) = -v;
        sum += v;
    }
    cv::Mat kernel(values.size(), CV_16S, cv::Scalar(0));
    if (radius > 0) values.convertTo(kernel, CV_16S, 128.F / sum);
    return kernel;
}

inline double automaticThreshold(const cv::Mat& gx, const cv::Mat& gy) {
    cv::Mat levels;
    cv::addWeighted(cv::abs(gx), 0.00390625, cv::abs(gy), 0.00390625, 0, levels);
    levels.convertTo(levels, CV_8U);
    const int channel = 0;
    const int bins = 256;
    const float range[] = {0, 255};
    const float* ranges = range;
    cv::Mat histogram;
    cv::calcHist(&levels, 1, &channel, cv::Mat(), histogram, 1, &bins, &ranges);
    for (int t = 255; t >= 0; --t) {
        const double count = cv::sum(histogram.rowRange(t, 256))[0];
        if (cvRound(count) > 2.5 * (gx.cols + gx.rows)) return t;
    }
    return -1;
}

inline cv::Mat edgePixels(const cv::Mat& dx, const cv::Mat& dy, std::int64_t lowSquared,
                          std::int64_t highSquared) {
    const auto magnitude = [&](int r, int c) -> std::int64_t {
        if (r < 0 || c < 0 || r >= dx.rows || c >= dx.cols) return 0;
        const std::int64_t x = dx.at<short>(r, c);
        const std::int64_t y = dy.at<short>(r, c);
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(x * x + y * y));
    };
    cv::Mat map(dx.rows, dx.cols, CV_8U, cv::Scalar(1));
    std::vector<cv::Point> stack;
    for (int r = 0; r < dx.rows; ++r) {
        for (int c = 0; c < dx.cols; ++c) {
            const std::int64_t m = magnitude(r, c);
            if (m <= lowSquared) continue;
            const std::int64_t x = std::abs(dx.at<short>(r, c));
            const std::int64_t y = static_cast<std::int64_t>(std::abs(dy.at<short>(r, c))) << 15;
            const std::int64_t tg22 = x * 13573;
            bool maximum = false;
            if (y < tg22) {
                maximum = m > magnitude(r, c - 1) && m >= magnitude(r, c + 1);
            } else if (y > tg22 + (x << 16)) {
                maximum = m > magnitude(r - 1, c) && m >= magnitude(r + 1, c);
            } else {
                const int s = (dx.at<short>(r, c) < 0) != (dy.at<short>(r, c) < 0) ? -1 : 1;
                maximum = m > magnitude(r - 1, c - s) && m > magnitude(r + 1, c + s);
            }
            if (!maximum) continue;
            map.at<uchar>(r, c) = m > highSquared ? 2 : 0;
            if (m > highSquared) stack.emplace_back(c, r);
        }
    }
    while (!stack.empty()) {
        const cv::Point p = stack.back();
        stack.pop_back();
        for (int r = std::max(0, p.y - 1); r <= std::min(dx.rows - 1, p.y + 1); ++r) {
            for (int c = std::max(0, p.x - 1); c <= std::min(dx.cols - 1, p.x + 1); ++c) {
                if (map.at<uchar>(r, c) != 0) continue;
                map.at<uchar>(r, c) = 2;
                stack.emplace_back(c, r);
            }
        }
    }
    return map == 2;
}

struct Refined {
    cv::Point2f point;
    float direction;
    float response;
};

inline Refined refine(const cv::Mat& dx, const cv::Mat& dy, cv::Point p) {
    double g[9];
    for (int i = 0; i < 9; ++i) {
        const int r = std::min(std::max(p.y + i / 3 - 1, 0), dx.rows - 1);
        const int c = std::min(std::max(p.x + i % 3 - 1, 0), dx.cols - 1);
        const double x = dx.at<short>(r, c);
        const double y = dy.at<short>(r, c);
        g[i] = std::sqrt(x * x + y * y);
    }
    const double a0 = (-g[0] + 2 * g[1] - g[2] + 2 * g[3] + 5 * g[4] + 2 * g[5] - g[6] + 2 * g[7] - g[8]) / 9;
    const double a1 = (-g[0] + g[2] - g[3] + g[5] - g[6] + g[8]) / 6;
    const double a2 = (g[6] + g[7] + g[8] - g[0] - g[1] - g[2]) / 6;
    const double a3 = (g[0] - 2 * g[1] + g[2] + g[3] - 2 * g[4] + g[5] + g[6] - 2 * g[7] + g[8]) / 6;
    const double a4 = (-g[0] + g[2] + g[6] - g[8]) / 4;
    const double a5 = (g[0] + g[1] + g[2] - 2 * (g[3] + g[4] + g[5]) + g[6] + g[7] + g[8]) / 6;

    const double rc = a4;
    const double cc = 2 * a3;
    const double rr = 2 * a5;
    double c = 1;
    double s = 0;
    double e1 = rr;
    double e2 = cc;
    if (rc != 0) {
        const double theta = 0.5 * (cc - rr) / rc;
        double t = 1 / (std::abs(theta) + std::sqrt(theta * theta + 1));
        if (theta < 0) t = -t;
        c = 1 / std::sqrt(t * t + 1);
        s = t * c;
        e1 = rr - t * rc;
        e2 = cc + t * rc;
    }
    const bool first = std::abs(e1) > std::abs(e2) || (std::abs(e1) == std::abs(e2) && e1 < e2);
    const double ny = first ? c : s;
    const double nx = first ? -s : c;
    double t = 0;
    if ((first ? e1 : e2) < 0) {
        t = -(a1 * nx + a2 * ny) / (2 * a3 * nx * nx + 2 * a4 * nx * ny + 2 * a5 * ny * ny);
    }
    const double px = nx * t;
    const double py = ny * t;
    Refined refined{{static_cast<float>(p.x), static_cast<float>(p.y)}, 0, static_cast<float>(a0 / 128)};
    if (std::abs(px) <= 0.5 && std::abs(py) <= 0.5) {
        refined.point = {static_cast<float>(p.x + px), static_cast<float>(p.y + py)};
    }
    const double angle = std::atan2(nx, ny);
    refined.direction = static_cast<float>(angle < 0 ? angle + 2 * CV_PI : angle);
    return refined;
}

inline std::vector<ORXEdge::TContour> edgesSubPix(const cv::Mat& gray, cv::OutputArray hierarchy, int mode,
                                                  int low, int high, double alpha) {
    cv::Mat smoothed;
    cv::GaussianBlur(gray, smoothed, cv::Size(), alpha, alpha);
    const cv::Mat kernel = derivativeKernel(alpha);
    const cv::Mat one(1, 1, CV_16S, cv::Scalar(1));
    cv::Mat dx;
    cv::Mat dy;
    cv::sepFilter2D(smoothed, dx, CV_16S, kernel, one);
    cv::sepFilter2D(smoothed, dy, CV_16S, one, kernel);
    if (high < 0) {
        high = static_cast<int>(automaticThreshold(dx, dy));
        low = static_cast<int>(0.4 * high);
    }
    const std::int64_t lowQ = 128 * static_cast<std::int64_t>(low);
    const std::int64_t highQ = 128 * static_cast<std::int64_t>(high);
    const cv::Mat edges = edgePixels(dx, dy, lowQ * lowQ, highQ * highQ);
    std::vector<std::vector<cv::Point>> chains;
    cv::findContours(edges, chains, hierarchy, mode, cv::CHAIN_APPROX_NONE);
    std::vector<ORXEdge::TContour> contours(chains.size());
    for (std::size_t i = 0; i < chains.size(); ++i) {
        for (const cv::Point& p : chains[i]) {
            const Refined refined = refine(dx, dy, p);
            contours[i].points.push_back(refined.point);
            contours[i].direction.push_back(refined.direction);
            contours[i].response.push_back(refined.response);
        }
    }
    return contours;
}

}  // namespace edge_reference

#endif
