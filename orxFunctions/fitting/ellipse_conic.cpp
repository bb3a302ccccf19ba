#include "orxFunctions/fitting/ellipse_conic_internal.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace orx {
namespace {

constexpr std::size_t kFewestPoints = 6;
// A pivot this much smaller than the largest belongs to a direction that the points say nothing about.
constexpr double kRankTolerance = 1e-12;

using Vector3 = cv::Vec3d;
using Matrix3 = cv::Matx33d;

// Where the points lie and how they are scaled for the sums.
struct Normalisation {
    double meanX;
    double meanY;
    double scaleX;
    double scaleY;
    double largest;  // magnitude of the coordinates
};

Normalisation normalisationOf(const cv::Point2f* points, std::size_t count) {
    double sumX = 0;
    double sumY = 0;
    // The extremes start at 0, not at the first point: for an image's coordinates the scale is then half the
    // largest coordinate, whatever the extent of the points. Intended.
    float maxX = 0;
    float maxY = 0;
    float minX = 0;
    float minY = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const cv::Point2f p = points[i];
        sumX += static_cast<double>(p.x);
        sumY += static_cast<double>(p.y);
        maxX = std::max(maxX, p.x);
        maxY = std::max(maxY, p.y);
        minX = std::min(minX, p.x);
        minY = std::min(minY, p.y);
    }
    const auto n = static_cast<double>(count);
    const auto highX = static_cast<double>(maxX);
    const auto highY = static_cast<double>(maxY);
    const auto lowX = static_cast<double>(minX);
    const auto lowY = static_cast<double>(minY);
    return {sumX / n, sumY / n, (highX - lowX) / 2, (highY - lowY) / 2,
            std::max({highX, highY, -lowX, -lowY})};
}

ConicMoments momentsOf(const cv::Point2f* points, std::size_t count, const Normalisation& to) {
    ConicMoments sum;
    for (std::size_t i = 0; i < count; ++i) {
        sum.add((static_cast<double>(points[i].x) - to.meanX) / to.scaleX,
                (static_cast<double>(points[i].y) - to.meanY) / to.scaleY);
    }
    return sum;
}

// True when the points leave one line by no more than single precision rounds coordinates of their size.
bool liesOnLine(const ConicMoments& m, const Normalisation& to, double count) {
    const double xx = m.x2 * to.scaleX * to.scaleX / count;
    const double xy = m.xy * to.scaleX * to.scaleY / count;
    const double yy = m.y2 * to.scaleY * to.scaleY / count;
    const double rounding = to.largest * static_cast<double>(std::numeric_limits<float>::epsilon()) / 2;
    // Determinant over trace is the variance across the line; the second bound is that of the sums.
    const double determinant = xx * yy - xy * xy;
    return !(determinant > rounding * rounding * (xx + yy)) || !(determinant > 1e-14 * xx * yy);
}

// The inverse of a symmetric matrix by its adjugate.
Matrix3 inverseOf(const Matrix3& m) {
    const double c00 = m(1, 1) * m(2, 2) - m(1, 2) * m(1, 2);
    const double c01 = m(0, 2) * m(1, 2) - m(0, 1) * m(2, 2);
    const double c02 = m(0, 1) * m(1, 2) - m(0, 2) * m(1, 1);
    const double c11 = m(0, 0) * m(2, 2) - m(0, 2) * m(0, 2);
    const double c12 = m(0, 1) * m(0, 2) - m(0, 0) * m(1, 2);
    const double c22 = m(0, 0) * m(1, 1) - m(0, 1) * m(0, 1);
    const double factor = 1 / (m(0, 0) * c00 + m(0, 1) * c01 + m(0, 2) * c02);
    return Matrix3(c00, c01, c02, c01, c11, c12, c02, c12, c22) * factor;
}

// Turns rows and columns i and j of the symmetric `m` so that m(i, j) becomes 0, and the columns of `axes`
// with them.
void rotateAway(Matrix3& m, Matrix3& axes, int i, int j) {
    if (m(i, j) == 0) return;
    const double theta = (m(j, j) - m(i, i)) / (2 * m(i, j));
    const double tangent = (theta < 0 ? -1.0 : 1.0) / (std::abs(theta) + std::sqrt(theta * theta + 1));
    const double cosine = 1 / std::sqrt(tangent * tangent + 1);
    const double sine = tangent * cosine;
    const int k = 3 - i - j;
    const double mki = m(k, i);
    const double mkj = m(k, j);
    m(i, i) -= tangent * m(i, j);
    m(j, j) += tangent * m(i, j);
    m(i, j) = m(j, i) = 0;
    m(k, i) = m(i, k) = cosine * mki - sine * mkj;
    m(k, j) = m(j, k) = sine * mki + cosine * mkj;
    for (int row = 0; row < 3; ++row) {
        const double left = axes(row, i);
        const double right = axes(row, j);
        axes(row, i) = cosine * left - sine * right;
        axes(row, j) = sine * left + cosine * right;
    }
}

// The eigenvector of the largest eigenvalue of a symmetric matrix (Jacobi), the first among equals. False
// when no eigenvalue is above 0.
bool largestPositiveEigenvector(Matrix3 m, Vector3& out) {
    constexpr int kMostSweeps = 30;
    Matrix3 axes = Matrix3::eye();
    for (int sweep = 0; sweep < kMostSweeps; ++sweep) {
        const double off = std::abs(m(0, 1)) + std::abs(m(0, 2)) + std::abs(m(1, 2));
        const double diagonal = std::abs(m(0, 0)) + std::abs(m(1, 1)) + std::abs(m(2, 2));
        if (!(off > diagonal * 1e-17)) break;
        rotateAway(m, axes, 0, 1);
        rotateAway(m, axes, 0, 2);
        rotateAway(m, axes, 1, 2);
    }
    int best = 0;
    for (int i = 1; i < 3; ++i) {
        if (m(i, i) > m(best, best)) best = i;
    }
    out = {axes(0, best), axes(1, best), axes(2, best)};
    return m(best, best) > 0;
}

// Minimises v' M v among the v with v0^2 - v1^2 - v2^2 = 1, up to the length of v, for M symmetric and not
// negative. With M = L L' this is the largest eigenvalue of inv(L) J inv(L'), J = diag(1, -1, -1). Rows are
// taken by descending pivot; where the last pivot vanishes the fit is perfect, and the smallest number that
// counts beside the first stands for it. False when more than one vanishes.
bool minimiseOnHyperboloid(const Matrix3& matrix, Vector3& out) {
    Matrix3 rest = matrix;
    Matrix3 factor = Matrix3::zeros();
    int order[3] = {0, 1, 2};
    const auto pivot = [&](int i) { return rest(order[i], order[i]); };
    double first = 0;
    for (int k = 0; k < 3; ++k) {
        for (int i = k + 1; i < 3; ++i) {
            if (pivot(i) > pivot(k)) {
                std::swap(order[i], order[k]);
                for (int j = 0; j < k; ++j) std::swap(factor(i, j), factor(k, j));
            }
        }
        if (k == 0) first = pivot(0);
        if (!(first > 0) || (k == 1 && !(pivot(1) > kRankTolerance * first))) return false;
        const double last = std::max(pivot(k), first * std::numeric_limits<double>::epsilon() / 4);
        factor(k, k) = std::sqrt(last);
        for (int i = k + 1; i < 3; ++i) factor(i, k) = rest(order[i], order[k]) / factor(k, k);
        for (int i = k + 1; i < 3; ++i) {
            for (int j = k + 1; j < 3; ++j) rest(order[i], order[j]) -= factor(i, k) * factor(j, k);
        }
    }
    // The inverse of the lower triangle, row by row.
    Matrix3 inverse = Matrix3::zeros();
    for (int i = 0; i < 3; ++i) {
        inverse(i, i) = 1 / factor(i, i);
        for (int j = 0; j < i; ++j) {
            double sum = 0;
            for (int k = j; k < i; ++k) sum -= factor(i, k) * inverse(k, j);
            inverse(i, j) = sum / factor(i, i);
        }
    }
    Matrix3 signs = Matrix3::zeros();
    for (int i = 0; i < 3; ++i) signs(i, i) = order[i] == 0 ? 1 : -1;
    Vector3 eigenvector;
    if (!largestPositiveEigenvector(inverse * signs * inverse.t(), eigenvector)) return false;
    const Vector3 v = inverse.t() * eigenvector;
    for (int i = 0; i < 3; ++i) out[order[i]] = v[i];
    return true;
}

// The conic in image coordinates of one in ((x - meanX) / scaleX, (y - meanY) / scaleY), scaled to f = 1.
Conic toImage(const Conic& n, const Normalisation& from) {
    Conic c{};
    c.a = n.a / (from.scaleX * from.scaleX);
    c.b = n.b / (from.scaleX * from.scaleY);
    c.c = n.c / (from.scaleY * from.scaleY);
    const double d = n.d / from.scaleX;
    const double e = n.e / from.scaleY;
    c.d = d - 2 * c.a * from.meanX - c.b * from.meanY;
    c.e = e - 2 * c.c * from.meanY - c.b * from.meanX;
    const double square =
        c.a * from.meanX * from.meanX + c.b * from.meanX * from.meanY + c.c * from.meanY * from.meanY;
    double constant = n.f - d * from.meanX - e * from.meanY + square;
    // An ellipse exactly through the image's origin: the nearest constant that can be divided by.
    if (constant == 0) constant = std::numeric_limits<double>::epsilon() * (std::abs(n.f) + std::abs(square));
    return {c.a / constant, c.b / constant, c.c / constant, c.d / constant, c.e / constant, 1};
}

}  // namespace

bool solveConic(const ConicMoments& m, Conic& out) {
    // For given quadratic terms the best linear ones follow; what remains is a problem in a, b and c.
    const Matrix3 toLinear = inverseOf(m.linear()) * m.mixed().t();
    const Matrix3 reduced = m.quadratic() - m.mixed() * toLinear;
    // In a + c, a - c and b the constraint 4ac - b^2 has no mixed terms.
    const Matrix3 axes(0.5, 0.5, 0, 0, 0, 1, 0.5, -0.5, 0);
    Vector3 v;
    if (!minimiseOnHyperboloid(axes.t() * reduced * axes, v)) return false;
    const Vector3 quadratic = axes * v;
    const Vector3 linear = toLinear * quadratic;
    out = {quadratic[0], quadratic[1], quadratic[2], -linear[0], -linear[1], -linear[2]};
    return true;
}

bool fitConic(const cv::Point2f* points, std::size_t count, Conic& out) {
    if (count < kFewestPoints) return false;
    const Normalisation image = normalisationOf(points, count);
    if (!std::isfinite(image.meanX + image.meanY)) return false;
    const ConicMoments sum = momentsOf(points, count, image);
    const auto n = static_cast<double>(count);
    if (liesOnLine(sum, image, n)) return false;
    // The problem does not change with the scale of either axis, its condition does: unit variance.
    const double s = std::sqrt(sum.x2 / n);
    const double t = std::sqrt(sum.y2 / n);
    Conic unit{};
    if (!solveConic(sum.scaled(1 / s, 1 / t, 1 / n), unit)) return false;
    out = toImage({unit.a, unit.b, unit.c, unit.d, unit.e, unit.f},
                  {image.meanX, image.meanY, image.scaleX * s, image.scaleY * t, image.largest});
    return true;
}

}  // namespace orx
