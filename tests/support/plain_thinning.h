// Thinning pass by pass and pixel by pixel, for comparison.
#ifndef ORXFUNCTIONS_TESTS_SUPPORT_PLAIN_THINNING_H
#define ORXFUNCTIONS_TESTS_SUPPORT_PLAIN_THINNING_H

#include <algorithm>
#include <opencv2/core.hpp>

#include "orxFunctions/analysis/thinning.h"

namespace orx::test {

// One pass as the papers write it: P1 is the pixel, P2 to P9 run clockwise from the one above it.
inline bool isRemoved(const cv::Mat_<uchar>& img, int y, int x, TThinningMethod method, int pass) {
    const auto at = [&](int dy, int dx) {
        const int row = y + dy;
        const int col = x + dx;
        return row >= 0 && row < img.rows && col >= 0 && col < img.cols && img(row, col) != 0 ? 1 : 0;
    };
    const int p2 = at(-1, 0), p3 = at(-1, 1), p4 = at(0, 1), p5 = at(1, 1);
    const int p6 = at(1, 0), p7 = at(1, -1), p8 = at(0, -1), p9 = at(-1, -1);
    if (method == tnZhangSuen) {
        const int ring[] = {p2, p3, p4, p5, p6, p7, p8, p9, p2};
        int a = 0;
        int b = 0;
        for (int i = 0; i < 8; ++i) {
            a += ring[i] == 0 && ring[i + 1] == 1 ? 1 : 0;
            b += ring[i];
        }
        const bool sides =
            pass == 0 ? p2 * p4 * p6 == 0 && p4 * p6 * p8 == 0 : p2 * p4 * p8 == 0 && p2 * p6 * p8 == 0;
        return b >= 2 && b <= 6 && a == 1 && sides;
    }
    const int c = (1 - p2) * (p3 | p4) + (1 - p4) * (p5 | p6) + (1 - p6) * (p7 | p8) + (1 - p8) * (p9 | p2);
    const int n1 = (p9 | p2) + (p3 | p4) + (p5 | p6) + (p7 | p8);
    const int n2 = (p2 | p3) + (p4 | p5) + (p6 | p7) + (p8 | p9);
    const int n = std::min(n1, n2);
    const int side = pass == 0 ? (p2 | p3 | (1 - p5)) & p4 : (p6 | p7 | (1 - p9)) & p8;
    return c == 1 && n >= 2 && n <= 3 && side == 0;
}

inline cv::Mat_<uchar> thinnedPlainly(const cv::Mat& src, TThinningMethod method) {
    cv::Mat_<uchar> img(cv::Mat(src != 0));
    for (bool changed = true; changed;) {
        changed = false;
        for (int pass = 0; pass < 2; ++pass) {
            const cv::Mat_<uchar> before = img.clone();
            for (int y = 0; y < img.rows; ++y) {
                for (int x = 0; x < img.cols; ++x) {
                    if (before(y, x) == 0 || !isRemoved(before, y, x, method, pass)) continue;
                    img(y, x) = 0;
                    changed = true;
                }
            }
        }
    }
    return img;
}

}  // namespace orx::test

#endif
