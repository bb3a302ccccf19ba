#include "orxFunctions/measuring/recipe/calibration_shift.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx::recipes {
namespace {

constexpr std::size_t kWitnesses = 24;

cv::Point2d turned(cv::Point2d p, double angle) {
    return {p.x * std::cos(angle) - p.y * std::sin(angle), p.x * std::sin(angle) + p.y * std::cos(angle)};
}

// Evenly spread over the used points.
std::vector<cv::Point2d> witnessesOf(const EdgePoints& edges, const std::vector<unsigned char>& used) {
    std::vector<cv::Point2d> all;
    for (std::size_t i = 0; i < edges.points.size(); ++i) {
        if (i >= used.size() || used[i] != 0) all.push_back(edges.points[i]);
    }
    if (all.size() <= kWitnesses) return all;
    std::vector<cv::Point2d> chosen;
    for (std::size_t i = 0; i < kWitnesses; ++i) {
        chosen.push_back(all[i * (all.size() - 1) / (kWitnesses - 1)]);
    }
    return chosen;
}

// The unit normal at a place of the outline, and how far the outline moves along it with each parameter.
struct Row {
    cv::Point2d normal;
    std::vector<double> design;
};

Row rowOf(const TMeasuredLine& line, cv::Point2d p) {
    return {line.normal(), {1.0, (p - line.point).dot(line.direction)}};  // offset, angle in radians
}

Row rowOf(const TMeasuredCircle& circle, cv::Point2d p) {
    const cv::Point2d way = p - circle.center;
    const cv::Point2d n = way / std::max(1e-300, cv::norm(way));
    return {n, {n.x, n.y, 1.0}};
}

Row rowOf(const TMeasuredEllipse& ellipse, cv::Point2d p) {
    const double angle = radians(ellipse.angle);
    const cv::Point2d own = turned(p - ellipse.center, -angle);
    const double t = std::atan2(own.y / ellipse.semiMinor, own.x / ellipse.semiMajor);
    cv::Point2d n(ellipse.semiMinor * std::cos(t), ellipse.semiMajor * std::sin(t));
    n /= cv::norm(n);
    const cv::Point2d at(ellipse.semiMajor * std::cos(t), ellipse.semiMinor * std::sin(t));
    const cv::Point2d out = turned(n, angle);
    return {out, {out.x, out.y, n.x * std::cos(t), n.y * std::sin(t), n.dot({-at.y, at.x})}};
}

Row rowOf(const Shape& shape, cv::Point2d p) {
    if (shape.kind == fkLine) return rowOf(shape.line, p);
    return shape.kind == fkEllipse ? rowOf(shape.ellipse, p) : rowOf(shape.circle, p);
}

Shape moved(const Shape& shape, const cv::Mat& by) {
    const auto d = [&](int i) { return by.at<double>(i); };
    Shape result = shape;
    if (shape.kind == fkLine) {
        result.line.point += d(0) * shape.line.normal();
        result.line.direction = turned(shape.line.direction, d(1));
        result.line.angle += degrees(d(1));
        return result;
    }
    if (shape.kind == fkEllipse) {
        result.ellipse.center += cv::Point2d(d(0), d(1));
        result.ellipse.semiMajor += d(2);
        result.ellipse.semiMinor += d(3);
        // The axes of what is (nearly) a circle turn for nothing.
        if (shape.ellipse.angleTold) result.ellipse.angle += degrees(d(4));
        return result;
    }
    result.circle.center += cv::Point2d(d(0), d(1));
    result.circle.radius += d(2);
    return result;
}

// Moves of the witnesses along their normals, and the parameters' that follow them best: a column a shift.
struct Moves {
    cv::Mat design;
    cv::Mat along;
    cv::Mat parameters;
    bool valid = false;
};

Moves movesOf(const Shape& shape, const EdgePoints& edges, const std::vector<unsigned char>& used,
              const Plane& plane) {
    const std::vector<cv::Point2d> witnesses = witnessesOf(edges, used);
    const cv::Mat shifts = plane.shiftsOf(witnesses);
    Moves moves;
    if (shifts.empty() || witnesses.empty()) return moves;
    const int rows = static_cast<int>(witnesses.size());
    moves.along = cv::Mat(rows, shifts.cols, CV_64F);
    std::vector<double> design;
    for (int i = 0; i < rows; ++i) {
        const Row row = rowOf(shape, plane.toPlane(witnesses[static_cast<std::size_t>(i)]));
        design.insert(design.end(), row.design.begin(), row.design.end());
        const double* x = shifts.ptr<double>(2 * i);
        const double* y = shifts.ptr<double>(2 * i + 1);
        double* along = moves.along.ptr<double>(i);
        for (int k = 0; k < shifts.cols; ++k) along[k] = row.normal.x * x[k] + row.normal.y * y[k];
    }
    moves.design = cv::Mat(design, true).reshape(1, rows);
    moves.valid = cv::solve(moves.design, moves.along, moves.parameters, cv::DECOMP_SVD);
    return moves;
}

}  // namespace

std::vector<Shape> shiftedShapes(const Shape& shape, const EdgePoints& edges,
                                 const std::vector<unsigned char>& used, const Plane& plane) {
    const Moves moves = movesOf(shape, edges, used, plane);
    std::vector<Shape> result;
    if (!moves.valid) return result;
    for (int k = 0; k < moves.parameters.cols; ++k)
        result.push_back(moved(shape, moves.parameters.col(k).clone()));
    return result;
}

std::vector<double> formShifts(const Shape& shape, const EdgePoints& edges,
                               const std::vector<unsigned char>& used, const Plane& plane) {
    const Moves moves = movesOf(shape, edges, used, plane);
    std::vector<double> result;
    if (!moves.valid) return result;
    const cv::Mat left = moves.along - moves.design * moves.parameters;
    for (int k = 0; k < left.cols; ++k) {
        double least = 0.0;
        double most = 0.0;
        cv::minMaxLoc(left.col(k), &least, &most);
        result.push_back(most - least);
    }
    return result;
}

}  // namespace orx::recipes
