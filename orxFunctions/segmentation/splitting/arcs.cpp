#include "orxFunctions/segmentation/splitting/arcs.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "orxFunctions/segmentation/splitting/arc_fit.h"
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

// Builds arcs into a list; the three ways in which one comes about.
class ArcBuilder {
  public:
    ArcBuilder(Circles& circles, const TSegemetParams& params, ArcSteps& steps)
        : circles_(circles), params_(params), steps_(steps) {}

    // Whether the arc stands; then its parts don't, their flags say. They are complete before the arc is
    // appended: references into the list dangle when it grows.
    bool pair(TSegemetLine& first, TSegemetLine& second) {
        if (!affords(first.points.size() + second.points.size())) return false;
        return append([&](TSegemetCircle& candidate) { fitArc(candidate, first, second); });
    }

    bool grow(std::size_t arc, TSegemetLine& line, bool lineLeads) {
        TSegemetCircle& part = circles_[arc];
        if (!affords(part.points.size() + line.points.size())) return false;
        return append([&](TSegemetCircle& candidate) { fitArc(candidate, part, line, lineLeads); });
    }

    bool join(std::size_t first, std::size_t second) {
        TSegemetCircle& one = circles_[first];
        TSegemetCircle& other = circles_[second];
        if (!affords(one.points.size() + other.points.size())) return false;
        return append([&](TSegemetCircle& candidate) { fitArc(candidate, one, other); });
    }

    // Of an arc that nothing asks for any more.
    void giveUp(std::size_t arc) {
        TSegemetCircle& circle = circles_[arc];
        if (circle.isCircle || steps_.absorbed == Absorbed::kKept) return;
        for (std::vector<cv::Point>* points : {&circle.points, &circle.firstPoints, &circle.secondPoints})
            std::vector<cv::Point>().swap(*points);
    }

  private:
    bool affords(std::size_t points) {
        steps_.work.spend(Work::kFitted * points);
        return !steps_.work.isTooMuch();
    }

    template <class Fit>
    bool append(Fit fit) {
        TSegemetCircle candidate;
        setBounds(candidate, {params_.maxRadius, params_.minRadius, params_.errThreshold});
        fit(candidate);
        // Below this the mean deviation is, too, at which a fit is good at once; not-a-number is not.
        constexpr double kGoodAtOnce = 2.0;
        if (!(candidate.fitError < kGoodAtOnce))
            steps_.work.spend(Work::kFittedAgain * candidate.points.size());
        if (!candidate.isCircle) return false;
        circles_.push_back(std::move(candidate));
        return true;
    }

    Circles& circles_;
    const TSegemetParams& params_;
    ArcSteps& steps_;
};

void closeSeam(Lines& lines, Circles& circles, bool inRun, bool firstWasCircle, ArcBuilder& builder) {
    if (inRun && firstWasCircle) {
        std::size_t k = 0;
        while (k < circles.size() && !circles[k].isCircle) ++k;
        if (k + 1 >= circles.size()) return;
        builder.join(circles.size() - 1, k);
    } else if (inRun) {
        builder.grow(circles.size() - 1, lines.front(), false);
    } else if (firstWasCircle) {
        // The first arc of the list, also when a larger one has absorbed it already; intended.
        builder.grow(0, lines.back(), true);
    } else {
        builder.pair(lines.back(), lines.front());
    }
}

bool mergePair(const Circles& circles, std::size_t i, std::size_t j, const TSegemetParams& params,
               ArcBuilder& builder) {
    const bool forward = isNeigbor(circles[i], circles[j]);
    if (!forward && !isNeigbor(circles[j], circles[i])) return false;
    if (!(distance(circles[i].center, circles[j].center) <= params.mergeCenterDist)) return false;
    // In this order the points run along the contour.
    return builder.join(forward ? i : j, forward ? j : i);
}

bool swallowLine(const Circles& circles, std::size_t i, TSegemetLine& line, ArcBuilder& builder) {
    const TSegemetCircle& arc = circles[i];
    const bool continues = hasEnd(arc) && distance(endOf(arc), cv::Point(line.startPoint)) <= kLineGap;
    const bool leadsIn =
        !continues && hasStart(arc) && distance(cv::Point(line.endPoint), startOf(arc)) <= kLineGap;
    return (continues || leadsIn) && builder.grow(i, line, leadsIn);
}

}  // namespace

void generateCircles(Lines& lines, Circles& circles, bool closed, const TSegemetParams& params,
                     ArcSteps& steps) {
    ArcBuilder builder(circles, params, steps);
    const std::size_t n = lines.size();
    bool inRun = false;
    bool firstWasCircle = false;
    for (std::size_t i = 0; i + 1 < n; ++i) {
        const bool isPair = !inRun;
        const std::size_t last = circles.size() - 1;
        inRun = isPair ? builder.pair(lines[i], lines[i + 1]) : builder.grow(last, lines[i + 1], false);
        if (inRun && isPair && i == 0) firstWasCircle = true;
        // The seam may ask for the first arc once more.
        if (inRun && !isPair && last > 0) builder.giveUp(last);
    }
    if (n > 0 && closed) closeSeam(lines, circles, inRun, firstWasCircle, builder);
    for (std::size_t i = 0; i < circles.size(); ++i) builder.giveUp(i);
}

void mergeCircles2(Circles& circles, const TSegemetParams& params, ArcSteps& steps) {
    if (circles.size() < 2) return;
    ArcBuilder builder(circles, params, steps);
    // Every merger leaves one live arc less, so that the list at most doubles.
    EndIndex starts(2 * circles.size());
    EndIndex ends(2 * circles.size());
    const auto enter = [&](std::size_t id) {
        if (hasStart(circles[id])) starts.add(startOf(circles[id]), id);
        if (hasEnd(circles[id])) ends.add(endOf(circles[id]), id);
    };
    for (std::size_t i = 0; i < circles.size(); ++i) enter(i);

    std::vector<std::size_t> near;
    for (std::size_t i = 0; i < circles.size() && !steps.work.isTooMuch(); ++i) {
        if (!circles[i].isCircle) continue;
        // Only later arcs are partners, and what has been absorbed never returns.
        const auto gone = [&](std::size_t id) { return id <= i || !circles[id].isCircle; };
        near.clear();
        if (hasEnd(circles[i])) starts.collectNear(endOf(circles[i]), gone, near);
        if (hasStart(circles[i])) ends.collectNear(startOf(circles[i]), gone, near);
        steps.work.spend(Work::kNeighbour * near.size());
        sortOut(near);
        const auto merged = std::find_if(near.begin(), near.end(), [&](std::size_t j) {
            return mergePair(circles, i, j, params, builder);
        });
        if (merged == near.end()) continue;
        enter(circles.size() - 1);
        builder.giveUp(i);
        builder.giveUp(*merged);
    }
}

void mergeCirclesAndLines(Circles& circles, Lines& lines, const TSegemetParams& params, ArcSteps& steps) {
    if (circles.empty() || lines.empty()) return;
    ArcBuilder builder(circles, params, steps);
    EndIndex starts(lines.size());
    EndIndex ends(lines.size());
    for (std::size_t l = 0; l < lines.size(); ++l) {
        starts.add(cv::Point(lines[l].startPoint), l);
        ends.add(cv::Point(lines[l].endPoint), l);
    }
    const auto gone = [&](std::size_t l) { return lines[l].usedByCircle; };

    std::vector<std::size_t> near;
    for (std::size_t i = 0; i < circles.size() && !steps.work.isTooMuch(); ++i) {
        if (!circles[i].isCircle) continue;
        near.clear();
        if (hasEnd(circles[i])) starts.collectNear(endOf(circles[i]), gone, near);
        if (hasStart(circles[i])) ends.collectNear(startOf(circles[i]), gone, near);
        steps.work.spend(Work::kNeighbour * near.size());
        sortOut(near);
        for (const std::size_t l : near) {
            if (swallowLine(circles, i, lines[l], builder)) break;
        }
        builder.giveUp(i);
    }
}

}  // namespace orx::splitting
