// Chords grow into arcs, arcs join, arcs swallow chords. Lists only grow here: what is absorbed keeps its
// place with its flag changed, and the arc that stands for it is appended.
#include <cmath>
#include <utility>

#include "orxFunctions/segmentation/segment_contour.h"

namespace orx {
namespace {

constexpr double kArcGap = 8.0;          // arcs whose ends lie nearer touch
const double kLineGap = std::sqrt(2.0);  // an arc and a chord touch up to here: tighter, intended

double distance(cv::Point p, cv::Point q) {
    const double dx = static_cast<double>(p.x) - q.x;
    const double dy = static_cast<double>(p.y) - q.y;
    return std::sqrt(dx * dx + dy * dy);
}

double distance(cv::Point2d p, cv::Point2d q) {
    const double dx = p.x - q.x;
    const double dy = p.y - q.y;
    return std::sqrt(dx * dx + dy * dy);
}

cv::Point toPoint(cv::Vec2i v) { return {v[0], v[1]}; }

// An end without points touches nothing.
bool runsInto(const TSegemetCircle& c1, const TSegemetCircle& c2) {
    if (c1.secondPoints.empty() || c2.firstPoints.empty()) return false;
    return distance(c1.secondPoints.back(), c2.firstPoints.front()) < kArcGap;
}

}  // namespace

void TSegmentContour::generateCircles(TLineList& lines, TCircleList& circles, bool closed) {
    const std::size_t n = lines.size();
    bool inRun = false;
    bool firstWasCircle = false;
    // Each candidate is complete before it is appended: references into the list dangle when it grows.
    for (std::size_t i = 0; i + 1 < n; ++i) {
        TSegemetCircle candidate =
            inRun ? TSegemetCircle(circles.back(), lines[i + 1], maxRadius, minRadius, errThreshold, false)
                  : TSegemetCircle(lines[i], lines[i + 1], maxRadius, minRadius, errThreshold);
        if (candidate.isCircle && !inRun && i == 0) firstWasCircle = true;
        inRun = candidate.isCircle;
        if (inRun) circles.push_back(std::move(candidate));
    }
    if (n > 0 && closed) closeSeam(lines, circles, inRun, firstWasCircle);
}

void TSegmentContour::closeSeam(TLineList& lines, TCircleList& circles, bool inRun, bool firstWasCircle) {
    const auto appendIfAccepted = [&](TSegemetCircle candidate) {
        if (candidate.isCircle) circles.push_back(std::move(candidate));
    };
    TSegemetLine& firstLine = lines.front();
    TSegemetLine& lastLine = lines.back();
    if (inRun && firstWasCircle) {
        std::size_t k = 0;
        while (k < circles.size() && !circles[k].isCircle) ++k;
        if (k + 1 >= circles.size()) return;
        appendIfAccepted({circles.back(), circles[k], maxRadius, minRadius, errThreshold, false});
    } else if (inRun) {
        appendIfAccepted({circles.back(), firstLine, maxRadius, minRadius, errThreshold, false});
    } else if (firstWasCircle) {
        // The first arc of the list, also when a larger one has absorbed it already; intended.
        appendIfAccepted({circles.front(), lastLine, maxRadius, minRadius, errThreshold, true});
    } else {
        appendIfAccepted({lastLine, firstLine, maxRadius, minRadius, errThreshold});
    }
}

bool TSegmentContour::isNeigbor(TSegemetCircle& c1, TSegemetCircle& c2) { return runsInto(c1, c2); }

bool TSegmentContour::mergeCircle(TCircleList& circles, std::size_t i, std::size_t j) {
    const bool forward = runsInto(circles[i], circles[j]);
    if (!forward && !runsInto(circles[j], circles[i])) return false;
    if (!(distance(circles[i].center, circles[j].center) <= mergeCenterDist)) return false;
    // In this order the points run along the contour.
    TSegemetCircle& first = circles[forward ? i : j];
    TSegemetCircle& second = circles[forward ? j : i];
    TSegemetCircle candidate(first, second, maxRadius, minRadius, errThreshold, false);
    if (!candidate.isCircle) return false;
    circles.push_back(std::move(candidate));
    return true;
}

void TSegmentContour::mergeCircles2(TCircleList& circles, bool /*closed*/) {
    if (circles.size() < 2) return;
    for (std::size_t i = 0; i < circles.size(); ++i) {
        if (!circles[i].isCircle) continue;
        for (std::size_t j = i + 1; j < circles.size(); ++j) {
            if (circles[j].isCircle && mergeCircle(circles, i, j)) break;
        }
    }
}

void TSegmentContour::mergeCirclesAndLines(TCircleList& circles, TLineList& lines) {
    for (std::size_t i = 0; i < circles.size(); ++i) {
        if (!circles[i].isCircle) continue;
        for (TSegemetLine& line : lines) {
            if (line.usedByCircle) continue;
            const TSegemetCircle& arc = circles[i];
            const bool continues = !arc.secondPoints.empty() &&
                                   distance(arc.secondPoints.back(), toPoint(line.startPoint)) <= kLineGap;
            const bool leadsIn = !continues && !arc.firstPoints.empty() &&
                                 distance(toPoint(line.endPoint), arc.firstPoints.front()) <= kLineGap;
            if (!continues && !leadsIn) continue;
            TSegemetCircle candidate(circles[i], line, maxRadius, minRadius, errThreshold, leadsIn);
            if (!candidate.isCircle) continue;
            circles.push_back(std::move(candidate));
            break;
        }
    }
}

}  // namespace orx
