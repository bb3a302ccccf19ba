// The classic fits on whole pixels: geometry against plain formulas, estimators against one another by their
// two ways in, repeated calls, lists of points, drawing.
#include <algorithm>
#include <cmath>
#include <memory>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

using fuzz::require;

std::vector<cv::Point> wholePoints(fuzz::Input& input, int most) {
    std::vector<cv::Point> list;
    if (input.byte() % 8U == 0) {
        for (int i = input.between(0, 12); i > 0; --i) list.push_back({input.integer(), input.integer()});
        return list;
    }
    for (const cv::Point2d& p : input.points(most)) {
        if (std::abs(p.x) < 1e4 && std::abs(p.y) < 1e4) list.push_back({cvRound(p.x), cvRound(p.y)});
    }
    return list;
}

bool same(const orx::TCircle& a, const orx::TCircle& b) {
    return a.valid == b.valid && fuzz::nearly(a.x, b.x) && fuzz::nearly(a.y, b.y) && fuzz::nearly(a.r, b.r) &&
           fuzz::nearly(a.inlierRatio, b.inlierRatio) && fuzz::nearly(a.meanResidual, b.meanResidual);
}

bool same(const orx::TLine& a, const orx::TLine& b) {
    return a.valid == b.valid && fuzz::nearly(a.k, b.k) && fuzz::nearly(a.b, b.b);
}

void checkGeometry(fuzz::Input& input) {
    cv::Point p[4];
    const bool wild = input.byte() % 4U == 0;
    for (cv::Point& q : p) q = wild ? cv::Point{input.integer(), input.integer()} : input.pixel(255);
    for (int type = -1; type <= 4; ++type) {
        const double angle = orx::angleFrom2Points(p[0], p[1], static_cast<orx::TAngleType>(type));
        require(angle > -90.001 && angle < 180, "angles in range");
    }
    const double direction = orx::angleToX(p[0], p[1]);
    require(direction >= 0 && direction < 360, "directions in range");
    orx::isCollinear(p[0], p[1], p[2]);
    const bool inside = orx::isPointInRect(p[0], p[1], p[2], p[3], {});
    const double away = orx::pointDistance2Line(p[0], p[1], p[2]);
    cv::Point3d circle;
    const bool isCircle = orx::threePoints2circle2(p[0], p[1], p[2], circle);
    cv::Point3d wrapped;
    require(orx::threePoints2circle(p[0], p[1], p[2], wrapped), "there is no guard");
    if (wild) return;
    require(orx::isPointInRect(p[0], {}, p[3], p[2], p[1]) == inside, "whatever the winding");
    const cv::Point2d along = p[2] - p[1];
    if (cv::norm(along) > 0)
        require(fuzz::nearly(away, std::abs(along.cross(p[0] - p[1])) / cv::norm(along), 1e-6),
                "the distance of a line");
    require(isCircle == ((p[1] - p[0]).cross(p[2] - p[0]) != 0), "three points on no line make a circle");
    if (!isCircle) return;
    for (int i = 0; i < 3; ++i)
        require(fuzz::nearly(std::hypot(p[i].x - circle.x, p[i].y - circle.y), circle.z, 1e-6),
                "through the points");
    require(fuzz::nearly(circle.z, wrapped.z, 1e-6), "both give the same circle");
}

void checkPolygon(fuzz::Input& input) {
    std::vector<cv::Point> list = wholePoints(input, 40);
    orx::calcPolygonArea(list);
    std::vector<cv::Point> sorted = list;
    require(orx::sortPolygonVertexs(sorted) == !list.empty(), "refused when empty");
    require(std::is_permutation(sorted.begin(), sorted.end(), list.begin(), list.end()), "the same vertices");
    std::vector<cv::Point> hull;
    if (list.empty()) return;
    const bool modest = std::all_of(list.begin(), list.end(),
                                    [](cv::Point p) { return std::abs(p.x) < 9999 && std::abs(p.y) < 9999; });
    if (!modest) return;
    cv::convexHull(list, hull);
    std::reverse(hull.begin(), hull.begin() + static_cast<std::ptrdiff_t>(hull.size() / 2));
    require(fuzz::nearly(orx::calcPolygonArea(hull), hull.size() < 3 ? 0 : cv::contourArea([&] {
                             std::vector<cv::Point> ring;
                             cv::convexHull(hull, ring);
                             return ring;
                         }())),
            "the area of a convex polygon in any order");
}

void checkCircles(fuzz::Input& input) {
    const std::vector<cv::Point> list = wholePoints(input, 60);
    const double parameters[5] = {input.option(1, 300), input.option(0, 30), input.option(0, 9),
                                  1.0 * input.between(-1, 60), 1.0 * input.between(-1, 60)};
    const int type = input.between(-1, 7);
    const double loss = input.option(0.1, 9);
    const double step = input.option(0, 1);
    TCircleFit_Ransac ransac;
    TCircleFit_Robust robust;
    TCircleFit_WeightedLeastSquares weighted;
    require(!ransac.setParams({1, 2}) && !robust.setParams({}) && !weighted.setParams({1}),
            "so many parameters");
    ransac.setPoints(list);
    robust.setPoints(list);
    weighted.setPoints(list);
    const bool sound = std::abs(parameters[0]) < 1e9 && std::abs(parameters[1]) < 1e9;
    orxFit::TCircleFitFactory factory;
    if (sound) {
        ransac.setParams({parameters, parameters + 5});
        const orx::TCircle first = ransac.fit();
        require(same(first, ransac.fit()), "the same again");
        factory.createFitType_ransacCircle(list, parameters[0], parameters[1], parameters[2],
                                           static_cast<int>(parameters[3]), static_cast<int>(parameters[4]));
        require(same(first, factory.fitter->fit()), "the same by the factory");
        delete factory.fitter;
    }
    robust.setParams({loss, step, static_cast<double>(type)});
    factory.createFitType_robustCircle(list, loss, step, type);
    require(same(robust.fit(), factory.fitter->fit()), "the same by the factory");
    delete factory.fitter;
    weighted.setParams({static_cast<double>(type), loss});
    factory.createFitType_weightedLeastSquares(list, type, loss);
    require(same(weighted.fit(), factory.fitter->fit()), "the same by the factory");
    cv::Point3d plain;
    require(orx::fitCircle(list, plain) == (list.size() >= 3), "three points or more");
}

void checkLines(fuzz::Input& input) {
    const std::vector<cv::Point> list = wholePoints(input, 60);
    const double angle = input.option(-200, 200);
    const double reach = input.option(0, 9);
    const double sample = input.between(1, 4);
    const double tolerance = input.option(0, 100);
    const int type = input.between(-1, 7);
    const double parameter = input.option(0, 9);
    TLineFit_Ransac ransac;
    ransac.setPoints(list);
    require(ransac.setParams({angle, reach, sample, tolerance}) && !ransac.setParams({1}),
            "so many parameters");
    ransac.setSearchLimits(1000, 100);
    orxFit::TLineFitFactory factory;
    factory.createFitType_ransacLine(list, angle, reach, sample, tolerance);
    require(same(ransac.fit(), factory.fitter->fit()), "the same by the factory");
    delete factory.fitter;
    TLineFit_Robust robust;
    robust.setPoints(list);
    robust.setParams({static_cast<double>(type), parameter});
    factory.createFitType_robustLine(list, type, parameter);
    const orx::TLine line = robust.fit();
    require(same(line, factory.fitter->fit()), "the same by the factory");
    require(line.valid == !list.empty(), "valid whenever there is a point");
    std::vector<cv::Point> mine;
    std::vector<cv::Point> rest;
    const int least = input.between(-1, 20);
    const auto which = static_cast<orx::TWantLineType>(input.between(-1, 5));
    const bool wanted = orx::getWantedLine(list, mine, rest, which, least, input.flag());
    require(wanted != mine.empty() && mine.size() + rest.size() == list.size(),
            "points are of the line or not");
    mine.insert(mine.end(), rest.begin(), rest.end());
    require(std::is_permutation(mine.begin(), mine.end(), list.begin(), list.end()), "none is lost");
}

void checkRansac(fuzz::Input& input) {
    const std::vector<cv::Point> list = wholePoints(input, 60);
    const int trials = input.between(-1, 80);
    const int cap = input.between(-1, 80);
    const double reach = input.option(-1, 9);
    orx::TRansacLine line(list, trials, cap, reach);
    const double leastAngle = input.option(-90, 90);
    const double largestAngle = input.option(0, 180);
    line.setAngleLimit(leastAngle, largestAngle, static_cast<orx::TAngleType>(input.between(0, 3)));
    const bool found = line.doRansac();
    std::vector<int> indices;
    line.getIdxList(indices);
    std::vector<cv::Point> inliers;
    line.getLineList(inliers);
    require(found == line.getResultLine().valid && found != indices.empty(), "a line has inliers");
    std::vector<cv::Point> picked;
    orx::getPointListFromIdxList(list, indices, picked);
    require(picked == inliers, "inliers by index");
    orx::TRansacCircle circle(list, trials, cap, reach);
    const int leastRadius = input.between(-1, 60);
    circle.setRLimit(leastRadius, input.between(0, 400));
    const orx::TCircle round = circle.doRansac();
    circle.getCircleIdxList(indices);
    require(std::is_sorted(indices.begin(), indices.end()), "ascending indices");
    for (const int i : indices) {
        const cv::Point p = list.at(static_cast<std::size_t>(i));
        if (round.valid)
            require(std::abs(std::hypot(p.x - round.x, p.y - round.y) - round.r) <= reach + 1e-6,
                    "within the reach");
    }
}

void checkEllipses(fuzz::Input& input) {
    std::vector<cv::Point2f> list;
    for (const cv::Point2d& p : input.points(60)) list.emplace_back(p);
    const double error = input.option(0, 5);
    const double ratio = input.option(0, 1);
    const double low = input.option(0, 20);
    const double high = input.option(20, 400);
    const double trials = input.option(0, 60);
    const orx::TEllipse norm = orxFit::fitEllipseNorm(list, error, ratio, low, high, low, 2 * high);
    require(norm.valid == 0 || (norm.valid == 1 && norm.inlierRatio > ratio - 1e-6), "graded by its inliers");
    const auto search = [&] {
        return orxFit::fitEllipseRansac(list, error, trials, ratio, low, high, low, 2 * high);
    };
    const orx::TEllipse first = search();
    const orx::TEllipse second = search();
    require(first.valid == second.valid && fuzz::nearly(first.x, second.x) &&
                fuzz::nearly(first.meanError, second.meanError),
            "the same again");
}

void checkLists(fuzz::Input& input) {
    std::vector<cv::Point> list = wholePoints(input, 40);
    const orx::TCircle circle{
        input.option(-50, 99), input.option(-50, 99), input.option(0, 90), 0, 0, 0, true};
    const int reach = input.between(-1, 9);
    std::vector<cv::Point> on;
    orx::getPointOnCircle(list, circle, on, reach);
    std::vector<cv::Point> expected;
    for (const cv::Point& p : list) {
        if (std::abs(std::hypot(p.x - circle.x, p.y - circle.y) - circle.r) < reach) expected.push_back(p);
    }
    require(on == expected, "points near the outline");
    std::vector<int> indices;
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (input.flag()) indices.push_back(static_cast<int>(i));
    }
    std::vector<cv::Point> kept = list;
    orx::deletePointsInList(kept, indices);
    require(kept.size() == list.size() - indices.size(), "so many are removed");
    std::vector<cv::Point> inner = list;
    const cv::Size size{input.between(0, 255), input.between(0, 255)};
    const int margin = input.between(-3, 20);
    orx::deleteImageSidePoints(inner, size, margin);
    require(inner.size() <= list.size(), "points are only removed");
    orx::deletePartPoints(list, input.between(-1, 50));
    const int from = input.integer();
    const int to = input.integer();
    if (static_cast<std::int64_t>(to) - from >= 0 && static_cast<std::int64_t>(to) - from < 1000000) {
        const int drawn = orx::getSrandNum(from, to, reach);
        require(drawn >= from && drawn <= to && drawn == orx::getSrandNum(from, to, reach),
                "numbers of a seed");
    }
}

void checkDrawing(fuzz::Input& input) {
    const cv::Scalar colour(10, 200, 30, 255);
    const bool wild = input.byte() % 4U == 0;
    const int thickness = wild ? input.integer() : input.between(1, 9);
    const int kind = wild ? input.integer() : 8 * input.between(1, 2);
    const int shift = wild ? input.integer() : input.between(0, 4);
    const double k = input.number();
    const double b = input.number();
    const int length = wild ? input.integer() : input.between(0, 40);
    const std::string text = input.text(20);
    const std::vector<cv::Point> list = wholePoints(input, 9);
    cv::Mat image = input.matrix();
    const cv::Mat before = fuzz::copyOf(image);
    orx::drawContours(image, list, length, colour, thickness, kind, shift);
    for (const cv::Point& p : list) orx::drawCorss(image, p, colour, length, k, thickness, kind, shift);
    orx::drawLine(image, k, b, colour, thickness, kind, shift);
    orx::drawLineHough(image, k, b, colour, thickness, kind, shift);
    orx::drawText(image, text, colour, input.between(-1, 4), b);
    require(image.size == before.size && image.type() == before.type(), "drawing leaves size and type");
    if (image.dims > 2 || image.channels() > 4) require(fuzz::same(image, before), "nothing is drawn there");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::runOneOf({checkGeometry, checkPolygon, checkCircles, checkLines, checkRansac, checkEllipses,
                    checkLists, checkDrawing},
                   bytes, size);
    return 0;
}
