#include "orxFunctions/calibration/plane/saddle.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace orx::plane {
namespace {

constexpr int kParameters = 9;
constexpr int kMostSteps = 30;
constexpr double kSettled = 1e-5;         // pixels
constexpr double kFarthest = 6.0;         // pixels from where the search began
constexpr double kLeastContrast = 2.0;    // grey levels to either side of the middle
constexpr double kLeastDeviation = 1e-3;  // pixels: what the model itself leaves open
constexpr double kRoot2 = 1.4142135623730951;
constexpr double kRoot2OverPi = 0.7978845608028654;

using Vector = cv::Vec<double, kParameters>;
using Matrix = cv::Matx<double, kParameters, kParameters>;

struct Sample {
    double x;
    double y;
    double level;
};

// a + gx x + gy y + b E(d1) E(d2) about (cx, cy), E the error function over the edges' common blur.
struct Model {
    double cx = 0.0;
    double cy = 0.0;
    double first = 0.0;  // directions, radians
    double second = 0.0;
    double blur = 1.0;
    double middle = 0.0;
    double slopeX = 0.0;
    double slopeY = 0.0;
    double contrast = 0.0;
    double firstBend = 0.0;  // given
    double secondBend = 0.0;

    double& operator[](int k) {
        double* const all[] = {&cx, &cy, &first, &second, &blur, &middle, &slopeX, &slopeY, &contrast};
        return *all[k];
    }
};

struct Edge {
    double value;       // of the error function
    double byDistance;  // its slope
    double bySide;      // the slope by the direction
    double byBlur;
    double normalX;
    double normalY;
};

Edge edgeAt(double direction, double bend, double blur, double dx, double dy) {
    const double c = std::cos(direction);
    const double s = std::sin(direction);
    const double way = c * dx + s * dy;
    const double straight = c * dy - s * dx;
    const double scaled = (straight - 0.5 * bend * way * way) / blur;
    Edge edge{};
    edge.value = std::erf(scaled / kRoot2);
    edge.byDistance = kRoot2OverPi / blur * std::exp(-0.5 * scaled * scaled);
    edge.bySide = -edge.byDistance * way * (1.0 + bend * straight);
    edge.byBlur = -edge.byDistance * scaled;
    edge.normalX = -s - bend * way * c;
    edge.normalY = c - bend * way * s;
    return edge;
}

// The model's level, and its derivatives.
double levelOf(const Model& m, const Sample& sample, Vector& derivative) {
    const double dx = sample.x - m.cx;
    const double dy = sample.y - m.cy;
    const Edge a = edgeAt(m.first, m.firstBend, m.blur, dx, dy);
    const Edge b = edgeAt(m.second, m.secondBend, m.blur, dx, dy);
    const double byA = m.contrast * b.value;
    const double byB = m.contrast * a.value;
    derivative[0] = -byA * a.byDistance * a.normalX - byB * b.byDistance * b.normalX - m.slopeX;
    derivative[1] = -byA * a.byDistance * a.normalY - byB * b.byDistance * b.normalY - m.slopeY;
    derivative[2] = byA * a.bySide;
    derivative[3] = byB * b.bySide;
    derivative[4] = byA * a.byBlur + byB * b.byBlur;
    derivative[5] = 1.0;
    derivative[6] = dx;
    derivative[7] = dy;
    derivative[8] = a.value * b.value;
    return m.middle + m.slopeX * dx + m.slopeY * dy + m.contrast * a.value * b.value;
}

double squaresOf(const Model& model, const std::vector<Sample>& samples, Matrix* normal, Vector* right) {
    double squares = 0.0;
    Vector d;
    for (const Sample& sample : samples) {
        const double off = sample.level - levelOf(model, sample, d);
        squares += off * off;
        if (normal == nullptr) continue;
        for (int i = 0; i < kParameters; ++i) {
            (*right)[i] += d[i] * off;
            for (int j = 0; j <= i; ++j) (*normal)(i, j) += d[i] * d[j];
        }
    }
    if (normal != nullptr) {
        for (int i = 0; i < kParameters; ++i) {
            for (int j = i + 1; j < kParameters; ++j) (*normal)(i, j) = (*normal)(j, i);
        }
    }
    return squares;
}

std::vector<Sample> samplesAround(const cv::Mat& levels, cv::Point2d near, double radius) {
    std::vector<Sample> samples;
    const int left = std::max(0, static_cast<int>(std::ceil(near.x - radius)));
    const int right = std::min(levels.cols - 1, static_cast<int>(std::floor(near.x + radius)));
    const int top = std::max(0, static_cast<int>(std::ceil(near.y - radius)));
    const int bottom = std::min(levels.rows - 1, static_cast<int>(std::floor(near.y + radius)));
    for (int y = top; y <= bottom; ++y) {
        for (int x = left; x <= right; ++x) {
            const double dx = x - near.x;
            const double dy = y - near.y;
            if (dx * dx + dy * dy <= radius * radius)
                samples.push_back({static_cast<double>(x), static_cast<double>(y), levels.at<float>(y, x)});
        }
    }
    return samples;
}

// Middle and contrast by how the levels go with the two edges.
void startLevels(const std::vector<Sample>& samples, Model& model) {
    double sum = 0.0;
    double product = 0.0;
    double square = 0.0;
    for (const Sample& s : samples) sum += s.level;
    model.middle = sum / static_cast<double>(samples.size());
    for (const Sample& s : samples) {
        const double dx = s.x - model.cx;
        const double dy = s.y - model.cy;
        const double e = edgeAt(model.first, model.firstBend, model.blur, dx, dy).value *
                         edgeAt(model.second, model.secondBend, model.blur, dx, dy).value;
        product += e * (s.level - model.middle);
        square += e * e;
    }
    model.contrast = square > 0.0 ? product / square : 0.0;
}

// One damped step; false where none leads nearer.
bool improve(const std::vector<Sample>& samples, Model& model, double& squares, double& damping,
             double& moved) {
    Matrix normal = Matrix::zeros();
    Vector right;
    squaresOf(model, samples, &normal, &right);
    for (int attempt = 0; attempt < 10; ++attempt, damping *= 10.0) {
        Matrix damped = normal;
        for (int k = 0; k < kParameters; ++k) damped(k, k) *= 1.0 + damping;
        Vector step;
        if (!cv::solve(damped, right, step, cv::DECOMP_CHOLESKY)) continue;
        Model next = model;
        for (int k = 0; k < kParameters; ++k) next[k] += step[k];
        if (!(next.blur > 0.2)) next.blur = 0.2;
        const double left = squaresOf(next, samples, nullptr, nullptr);
        if (!(left < squares)) continue;
        model = next;
        squares = left;
        damping = std::max(damping * 0.1, 1e-9);
        moved = std::hypot(step[0], step[1]);
        return true;
    }
    return false;
}

Model start(const std::vector<Sample>& samples, cv::Point2d near, const EdgeCourse& along,
            const EdgeCourse& across, double blur) {
    Model model;
    model.cx = near.x;
    model.cy = near.y;
    model.first = std::atan2(along.direction.y, along.direction.x);
    model.firstBend = along.curvature;
    model.second = std::atan2(across.direction.y, across.direction.x);
    model.secondBend = across.curvature;
    model.blur = blur;
    startLevels(samples, model);
    return model;
}

// The squares that are left.
double settle(const std::vector<Sample>& samples, Model& model) {
    double squares = squaresOf(model, samples, nullptr, nullptr);
    double damping = 1e-3;
    double moved = 1.0;
    for (int i = 0; i < kMostSteps && moved > kSettled; ++i) {
        if (!improve(samples, model, squares, damping, moved)) break;
    }
    return squares;
}

}  // namespace

Saddle fitSaddle(const cv::Mat& levels, cv::Point2d near, const EdgeCourse& along, const EdgeCourse& across,
                 double radius) {
    Saddle result;
    const std::vector<Sample> samples = samplesAround(levels, near, radius);
    if (samples.size() < 3 * kParameters) return result;
    double squares = 0.0;
    Model model;
    for (const double blur : {1.0, 2.5}) {
        Model tried = start(samples, near, along, across, blur);
        const double left = settle(samples, tried);
        if (blur == 1.0 || left < squares) {
            model = tried;
            squares = left;
        }
        // Most pictures are sharp: where the model fits, another start would lead to the same.
        if (std::sqrt(squares / static_cast<double>(samples.size())) < 0.1 * std::abs(model.contrast)) break;
    }
    result.place = cv::Point2d(model.cx, model.cy);
    if (!(cv::norm(result.place - near) <= std::min(kFarthest, 0.6 * radius)) || model.blur > radius ||
        !(std::abs(model.contrast) >= kLeastContrast))
        return result;
    Matrix normal = Matrix::zeros();
    Vector right;
    squaresOf(model, samples, &normal, &right);
    bool invertible = false;
    const Matrix inverse = normal.inv(cv::DECOMP_CHOLESKY, &invertible);
    if (!invertible) return result;
    const double variance = squares / static_cast<double>(samples.size() - kParameters);
    result.deviation = std::max(kLeastDeviation, std::sqrt(variance * 0.5 * (inverse(0, 0) + inverse(1, 1))));
    // What does not fit at all is no crossing of edges.
    result.found = std::sqrt(variance) < 0.5 * std::abs(model.contrast);
    return result;
}

}  // namespace orx::plane
