#include "orxFunctions/calibration/point_transform.h"

#include <cstddef>

#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/foundation/message_colours_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

template <typename T>
cv::Point3d centroid(const std::vector<cv::Point3_<T>>& points) {
    double x = 0;
    double y = 0;
    double z = 0;
    for (const cv::Point3_<T>& p : points) {
        x += p.x;
        y += p.y;
        z += p.z;
    }
    const auto n = static_cast<double>(points.size());
    return {x / n, y / n, z / n};
}

// The sum over all points of (a - mean of a) * (b - mean of b)^T.
template <typename T>
cv::Matx33d crossCovariance(const std::vector<cv::Point3_<T>>& listA,
                            const std::vector<cv::Point3_<T>>& listB) {
    const cv::Point3d meanA = centroid(listA);
    const cv::Point3d meanB = centroid(listB);
    double xx = 0, xy = 0, xz = 0, yx = 0, yy = 0, yz = 0, zx = 0, zy = 0, zz = 0;
    for (std::size_t i = 0; i < listA.size(); ++i) {
        const double ax = listA[i].x - meanA.x;
        const double ay = listA[i].y - meanA.y;
        const double az = listA[i].z - meanA.z;
        const double bx = listB[i].x - meanB.x;
        const double by = listB[i].y - meanB.y;
        const double bz = listB[i].z - meanB.z;
        xx += ax * bx;
        xy += ax * by;
        xz += ax * bz;
        yx += ay * bx;
        yy += ay * by;
        yz += ay * bz;
        zx += az * bx;
        zy += az * by;
        zz += az * bz;
    }
    return {xx, xy, xz, yx, yy, yz, zx, zy, zz};
}

struct Decomposition {
    explicit Decomposition(const cv::Matx33d& matrix) { cv::SVD::compute(matrix, values, u, vt); }

    cv::Matx31d values;
    cv::Matx33d u;
    cv::Matx33d vt;
};

// The mean of b - R * a.
cv::Vec3d meanOffset(const cv::Matx33d& r, const std::vector<cv::Point3d>& listA,
                     const std::vector<cv::Point3d>& listB) {
    double x = 0;
    double y = 0;
    double z = 0;
    for (std::size_t i = 0; i < listA.size(); ++i) {
        const cv::Point3d& a = listA[i];
        const cv::Point3d& b = listB[i];
        x += b.x - (r(0, 0) * a.x + r(0, 1) * a.y + r(0, 2) * a.z);
        y += b.y - (r(1, 0) * a.x + r(1, 1) * a.y + r(1, 2) * a.z);
        z += b.z - (r(2, 0) * a.x + r(2, 1) * a.y + r(2, 2) * a.z);
    }
    const auto n = static_cast<double>(listA.size());
    return {x / n, y / n, z / n};
}

bool areMatched(std::size_t sizeA, std::size_t sizeB, std::size_t fewest, const char* function) {
    if (sizeA != sizeB)
        return refuse(rcSizesDiffer, function, "the lists have %zu and %zu points", sizeA, sizeB);
    return sizeA >= fewest ||
           refuse(rcTooFew, function, "the lists have %zu points; %zu at least are taken", sizeA, fewest);
}

}  // namespace

bool calcAXequalsB(const std::vector<cv::Point3d>& listA, const std::vector<cv::Point3d>& listB,
                   cv::Mat& result) {
    if (!areMatched(listA.size(), listB.size(), 4, "calcAXequalsB")) {
        APPshowMessage(listA.size() != listB.size() ? "calcAXequalsB aListA.size()!= aListB.size()"
                                                    : "calcAXequalsB aListA.size()<4",
                       kErrorColor);
        return false;
    }

    // The method forms the differences of all pairs, (a_j - a_i) and (b_j - b_i), and sums their products.
    // That sum over n * (n - 1) / 2 pairs is n times the sum over the n centred points.
    const Decomposition svd(crossCovariance(listA, listB) * static_cast<double>(listA.size()));
    cv::Matx33d v = svd.vt.t();
    cv::Matx33d r = v * svd.u.t();
    if (cv::determinant(r) < 0) {
        for (int row = 0; row < 3; ++row) v(row, 2) *= -1;
        r = v * svd.u.t();
    }
    const cv::Vec3d t = meanOffset(r, listA, listB);
    const cv::Matx44d transform(r(0, 0), r(0, 1), r(0, 2), t[0], r(1, 0), r(1, 1), r(1, 2), t[1], r(2, 0),
                                r(2, 1), r(2, 2), t[2], 0, 0, 0, 1);
    result = cv::Mat(transform, true);
    return true;
}

cv::Mat cpuTrsfMat(std::vector<cv::Point3f> list1, std::vector<cv::Point3f> list2) {
    if (!areMatched(list1.size(), list2.size(), 3, "cpuTrsfMat")) return {};
    const Decomposition svd(crossCovariance(list1, list2));
    const cv::Matx33d v = svd.vt.t();
    // Unlike above the guard is always applied: the determinant is 1 or, for a reflection, -1.
    const double d = cv::determinant(v * svd.u.t());
    const cv::Matx33d guard(1, 0, 0, 0, 1, 0, 0, 0, d);
    return cv::Mat(v * guard * svd.u.t(), true);
}

}  // namespace orx
