// Chords grow into arcs, arcs join, arcs swallow chords. Lists only grow here: what is absorbed keeps its
// place with its flag changed, and the arc that stands for it is appended.
#include <algorithm>
#include <cmath>
#include <utility>

#include "orxFunctions/segmentation/end_index_internal.h"
#include "orxFunctions/segmentation/segment_contour.h"

namespace orx {
namespace {

constexpr double kArcGap = EndIndex::kReach;  // arcs whose ends lie nearer touch
const double kLineGap = std::sqrt(2.0);       // an arc and a chord touch up to here: tighter, intended

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

// An arc begins with its first part and ends with its second; a part without points touches nothing.
bool hasStart(const TSegemetCircle& arc) { return !arc.firstPoints.empty(); }
bool hasEnd(const TSegemetCircle& arc) { return !arc.secondPoints.empty(); }
cv::Point startOf(const TSegemetCircle& arc) { return arc.firstPoints.front(); }
cv::Point endOf(const TSegemetCircle& arc) { return arc.secondPoints.back(); }

bool runsInto(const TSegemetCircle& c1, const TSegemetCircle& c2) {
    return hasEnd(c1) && hasStart(c2) && distance(endOf(c1), startOf(c2)) < kArcGap;
}

// Ascending, each id once: partners are tried in the order of their list.
void sortOut(std::vector<std::size_t>& ids) {
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
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
    // Every merger leaves one live arc less, so that the list at most doubles.
    EndIndex starts(2 * circles.size());
    EndIndex ends(2 * circles.size());
    const auto enter = [&](std::size_t id) {
        if (hasStart(circles[id])) starts.add(startOf(circles[id]), id);
        if (hasEnd(circles[id])) ends.add(endOf(circles[id]), id);
    };
    for (std::size_t i = 0; i < circles.size(); ++i) enter(i);

    std::vector<std::size_t> near;
    for (std::size_t i = 0; i < circles.size(); ++i) {
        if (!circles[i].isCircle) continue;
        // Only later arcs are partners, and what has been absorbed never returns.
        const auto gone = [&](std::size_t id) { return id <= i || !circles[id].isCircle; };
        near.clear();
        if (hasEnd(circles[i])) starts.collectNear(endOf(circles[i]), gone, near);
        if (hasStart(circles[i])) ends.collectNear(startOf(circles[i]), gone, near);
        sortOut(near);
        const auto merged =
            std::find_if(near.begin(), near.end(), [&](std::size_t j) { return mergeCircle(circles, i, j); });
        if (merged != near.end()) enter(circles.size() - 1);
    }
}

bool TSegmentContour::swallowLine(TCircleList& circles, std::size_t i, TSegemetLine& line) {
    TSegemetCircle& arc = circles[i];
    const bool continues = hasEnd(arc) && distance(endOf(arc), toPoint(line.startPoint)) <= kLineGap;
    const bool leadsIn =
        !continues && hasStart(arc) && distance(toPoint(line.endPoint), startOf(arc)) <= kLineGap;
    if (!continues && !leadsIn) return false;
    TSegemetCircle candidate(arc, line, maxRadius, minRadius, errThreshold, leadsIn);
    if (!candidate.isCircle) return false;
    circles.push_back(std::move(candidate));
    return true;
}

void TSegmentContour::mergeCirclesAndLines(TCircleList& circles, TLineList& lines) {
    if (circles.empty() || lines.empty()) return;
    EndIndex starts(lines.size());
    EndIndex ends(lines.size());
    for (std::size_t l = 0; l < lines.size(); ++l) {
        starts.add(toPoint(lines[l].startPoint), l);
        ends.add(toPoint(lines[l].endPoint), l);
    }
    const auto gone = [&](std::size_t l) { return lines[l].usedByCircle; };

    std::vector<std::size_t> near;
    for (std::size_t i = 0; i < circles.size(); ++i) {
        if (!circles[i].isCircle) continue;
        near.clear();
        if (hasEnd(circles[i])) starts.collectNear(endOf(circles[i]), gone, near);
        if (hasStart(circles[i])) ends.collectNear(startOf(circles[i]), gone, near);
        sortOut(near);
        for (const std::size_t l : near) {
            if (swallowLine(circles, i, lines[l])) break;
        }
    }
}

}  // namespace orx
