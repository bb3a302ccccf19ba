#include "orxFunctions/segmentation/splitting/arcs.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "orxFunctions/segmentation/splitting/end_index.h"

namespace orx::splitting {
namespace {

using Lines = std::vector<TSegemetLine>;
using Circles = std::vector<TSegemetCircle>;

constexpr double kArcGap = EndIndex::kReach;  // arcs whose ends lie nearer touch
const double kLineGap = std::sqrt(2.0);       // an arc and a chord touch up to here: tighter, intended

double distance(cv::Point2d p, cv::Point2d q) {
    const double dx = p.x - q.x;
    const double dy = p.y - q.y;
    return std::sqrt(dx * dx + dy * dy);
}

// An arc begins with its first part and ends with its second; a part without points touches nothing.
bool hasStart(const TSegemetCircle& arc) { return !arc.firstPoints.empty(); }
bool hasEnd(const TSegemetCircle& arc) { return !arc.secondPoints.empty(); }
cv::Point startOf(const TSegemetCircle& arc) { return arc.firstPoints.front(); }
cv::Point endOf(const TSegemetCircle& arc) { return arc.secondPoints.back(); }

bool isNeigbor(const TSegemetCircle& c1, const TSegemetCircle& c2) {
    return hasEnd(c1) && hasStart(c2) && distance(endOf(c1), startOf(c2)) < kArcGap;
}

// Ascending, each id once: partners are tried in the order of their list.
void sortOut(std::vector<std::size_t>& ids) {
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
}

// The three ways in which an arc comes about. Whether it stands, and then its parts don't, `isCircle` says.
TSegemetCircle arcOf(TSegemetLine& first, TSegemetLine& second, const TSegemetParams& params) {
    return {first, second, params.maxRadius, params.minRadius, params.errThreshold};
}

TSegemetCircle grown(TSegemetCircle& arc, TSegemetLine& line, bool lineLeads, const TSegemetParams& params) {
    return {arc, line, params.maxRadius, params.minRadius, params.errThreshold, lineLeads};
}

TSegemetCircle joined(TSegemetCircle& first, TSegemetCircle& second, const TSegemetParams& params) {
    return {first, second, params.maxRadius, params.minRadius, params.errThreshold, false};
}

// The candidate is complete before it is appended: references into the list dangle when it grows.
bool appendIfAccepted(Circles& circles, TSegemetCircle candidate) {
    if (!candidate.isCircle) return false;
    circles.push_back(std::move(candidate));
    return true;
}

void closeSeam(Lines& lines, Circles& circles, bool inRun, bool firstWasCircle,
               const TSegemetParams& params) {
    if (inRun && firstWasCircle) {
        std::size_t k = 0;
        while (k < circles.size() && !circles[k].isCircle) ++k;
        if (k + 1 >= circles.size()) return;
        appendIfAccepted(circles, joined(circles.back(), circles[k], params));
    } else if (inRun) {
        appendIfAccepted(circles, grown(circles.back(), lines.front(), false, params));
    } else if (firstWasCircle) {
        // The first arc of the list, also when a larger one has absorbed it already; intended.
        appendIfAccepted(circles, grown(circles.front(), lines.back(), true, params));
    } else {
        appendIfAccepted(circles, arcOf(lines.back(), lines.front(), params));
    }
}

bool mergePair(Circles& circles, std::size_t i, std::size_t j, const TSegemetParams& params) {
    const bool forward = isNeigbor(circles[i], circles[j]);
    if (!forward && !isNeigbor(circles[j], circles[i])) return false;
    if (!(distance(circles[i].center, circles[j].center) <= params.mergeCenterDist)) return false;
    // In this order the points run along the contour.
    return appendIfAccepted(circles, joined(circles[forward ? i : j], circles[forward ? j : i], params));
}

bool swallowLine(Circles& circles, std::size_t i, TSegemetLine& line, const TSegemetParams& params) {
    TSegemetCircle& arc = circles[i];
    const bool continues = hasEnd(arc) && distance(endOf(arc), cv::Point(line.startPoint)) <= kLineGap;
    const bool leadsIn =
        !continues && hasStart(arc) && distance(cv::Point(line.endPoint), startOf(arc)) <= kLineGap;
    return (continues || leadsIn) && appendIfAccepted(circles, grown(arc, line, leadsIn, params));
}

}  // namespace

void generateCircles(Lines& lines, Circles& circles, bool closed, const TSegemetParams& params) {
    const std::size_t n = lines.size();
    bool inRun = false;
    bool firstWasCircle = false;
    for (std::size_t i = 0; i + 1 < n; ++i) {
        const bool isPair = !inRun;
        inRun = appendIfAccepted(circles, isPair ? arcOf(lines[i], lines[i + 1], params)
                                                 : grown(circles.back(), lines[i + 1], false, params));
        if (inRun && isPair && i == 0) firstWasCircle = true;
    }
    if (n > 0 && closed) closeSeam(lines, circles, inRun, firstWasCircle, params);
}

void mergeCircles2(Circles& circles, const TSegemetParams& params) {
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
        const auto merged = std::find_if(near.begin(), near.end(),
                                         [&](std::size_t j) { return mergePair(circles, i, j, params); });
        if (merged != near.end()) enter(circles.size() - 1);
    }
}

void mergeCirclesAndLines(Circles& circles, Lines& lines, const TSegemetParams& params) {
    if (circles.empty() || lines.empty()) return;
    EndIndex starts(lines.size());
    EndIndex ends(lines.size());
    for (std::size_t l = 0; l < lines.size(); ++l) {
        starts.add(cv::Point(lines[l].startPoint), l);
        ends.add(cv::Point(lines[l].endPoint), l);
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
            if (swallowLine(circles, i, lines[l], params)) break;
        }
    }
}

}  // namespace orx::splitting
