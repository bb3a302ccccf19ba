// Points of an ellipse whose truth is known, and the bound of what they tell.
#ifndef TESTS_FITTING_ELLIPSE_SCENES_H
#define TESTS_FITTING_ELLIPSE_SCENES_H

#include "tests/fitting/geometric_scenes.h"

namespace geometric_scenes {

using Vector5 = cv::Vec<double, 5>;
using Matrix5 = cv::Matx<double, 5, 5>;

struct TrueEllipse {
    cv::Point2d center;
    double major;
    double minor;
    double angle;  // degrees
    double from;   // the eccentric angle where the points begin, degrees

    cv::Point2d turned(cv::Point2d p) const {
        const cv::Point2d u = unit(angle);
        return {u.x * p.x - u.y * p.y, u.y * p.x + u.x * p.y};
    }
    cv::Point2d at(double parameter) const {
        const cv::Point2d u = unit(parameter);
        return center + turned({major * u.x, minor * u.y});
    }
    cv::Point2d normal(double parameter) const {
        const cv::Point2d u = unit(parameter);
        const cv::Point2d n = turned({minor * u.x, major * u.y});
        return n / cv::norm(n);
    }
    std::vector<cv::Point2d> points(const Scene& scene, Random& random) const {
        std::vector<cv::Point2d> points;
        for (int i = 0; i < scene.inliers(); ++i) {
            const double parameter = from + scene.place(i);
            points.push_back(disturbed(at(parameter), normal(parameter), scene, random));
        }
        strewOutliers(scene, center, 1.5 * major, random, points);
        return points;
    }
    Vector5 parameters() const { return {center.x, center.y, major, minor, angle}; }
    // How far the outline moves along its normal with each parameter.
    Vector5 row(double parameter) const {
        const cv::Point2d n = normal(parameter);
        const cv::Point2d u = unit(parameter);
        const cv::Point2d arm = at(parameter) - center;
        const double turn = kPi / 180 * n.dot(cv::Point2d(-arm.y, arm.x));
        return {n.x, n.y, u.x * n.dot(turned({1, 0})), u.y * n.dot(turned({0, 1})), turn};
    }
    Matrix5 bound(const Scene& scene) const {
        Matrix5 information = Matrix5::zeros();
        for (int i = 0; i < scene.inliers(); ++i) {
            const Vector5 r = row(from + scene.place(i));
            information += r * r.t();
        }
        return scene.noise * scene.noise * information.inv();
    }
};

}  // namespace geometric_scenes

#endif
