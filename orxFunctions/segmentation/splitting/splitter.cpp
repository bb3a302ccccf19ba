#include "orxFunctions/segmentation/splitting/splitter.h"

#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <utility>

#include "orxFunctions/segmentation/splitting/chord_points.h"
#include "orxFunctions/segmentation/splitting/key_points.h"

namespace orx::splitting {
namespace {

template <typename List>
void append(List& list, List&& more) {
    list.insert(list.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

// Whether the ends are one pixel or neighbours, at most sqrt(2) apart.
bool endsTouch(const std::vector<cv::Point>& contour) {
    const auto isNear = [](int a, int b) { return std::abs(std::int64_t{a} - b) <= 1; };
    return isNear(contour.front().x, contour.back().x) && isNear(contour.front().y, contour.back().y);
}

std::vector<TSegemetLine> chordsBetween(const std::vector<cv::Point>& keys,
                                        const std::vector<cv::Point>& contour, double epsilon, bool closed,
                                        Work& work) {
    std::vector<TSegemetLine> lines;
    // Two chords between the same two points would be one line twice.
    if (keys.size() < 2 || (keys.size() == 2 && closed)) return lines;
    const ChordPointFinder finder(contour, keys);
    const std::size_t chords = closed ? keys.size() : keys.size() - 1;
    lines.reserve(chords);
    for (std::size_t i = 0; i < chords && !work.isTooMuch(); ++i) {
        const cv::Point& start = keys[i];
        const cv::Point& end = keys[(i + 1) % keys.size()];
        TSegemetLine line;
        line.startPoint = {start.x, start.y};
        line.endPoint = {end.x, end.y};
        line.generateLine(line.startPoint, line.endPoint);
        finder.collect(line, epsilon, work);
        lines.push_back(std::move(line));
    }
    return lines;
}

// The pieces that stand for themselves, in order.
Pieces withoutAbsorbed(Pieces all) {
    Pieces kept;
    kept.keyPoints = std::move(all.keyPoints);
    for (TSegemetLine& line : all.lines) {
        if (line.usedByCircle) continue;
        // Not before: most chords end in arcs or are split again, and nothing on the way asks for the fit.
        if (line.points.size() >= kFewestFitted) line.fitLineWithContoursWithTurkey();
        kept.lines.push_back(std::move(line));
    }
    for (TSegemetCircle& circle : all.circles) {
        if (circle.isCircle) kept.circles.push_back(std::move(circle));
    }
    return kept;
}

}  // namespace

Pieces split(const std::vector<cv::Point>& contour, const TSegemetParams& params,
             const PassObserver& observer, Work work) {
    ArcSteps steps{work, observer ? Absorbed::kKept : Absorbed::kEmptied};
    const auto pass = [&](const std::vector<cv::Point>& points, double epsilon) {
        Pieces found = segment(points, epsilon, params, steps);
        if (observer) observer(found);
        return found;
    };
    if (contour.empty()) return {};
    Pieces pieces = pass(contour, params.firstEpsilon);
    if (params.useSecondPass && !steps.work.isTooMuch()) {
        const std::vector<std::vector<cv::Point>> runs = getSecondContours(pieces.lines);
        pieces.lines.clear();
        for (const std::vector<cv::Point>& run : runs) {
            Pieces finer = pass(run, params.secondEpsilon);
            append(pieces.lines, std::move(finer.lines));
            append(pieces.circles, std::move(finer.circles));
            if (steps.work.isTooMuch()) break;
        }
    }
    mergeCirclesAndLines(pieces.circles, pieces.lines, params, steps);
    mergeCircles2(pieces.circles, params, steps);
    if (!steps.work.isTooMuch()) return withoutAbsorbed(std::move(pieces));
    Pieces none;
    none.isTooMuchWork = true;
    return none;
}

Pieces segment(const std::vector<cv::Point>& contour, double epsilon, const TSegemetParams& params,
               ArcSteps& steps) {
    Pieces pieces;
    // cv::approxPolyDP, whose polygon this is, throws for other accuracies.
    if (contour.empty() || !(epsilon >= 0 && epsilon < 1e30)) return pieces;
    const bool closed = endsTouch(contour);
    const std::vector<cv::Point> keys = keyPointsOf(contour, epsilon, closed, steps.work);
    pieces.keyPoints = cv::Mat(keys, true);
    pieces.lines = chordsBetween(keys, contour, epsilon, closed, steps.work);
    if (params.useCircles) generateCircles(pieces.lines, pieces.circles, closed, params, steps);
    mergeCircles2(pieces.circles, params, steps);
    return pieces;
}

std::vector<std::vector<cv::Point>> getSecondContours(const std::vector<TSegemetLine>& lines) {
    std::vector<std::vector<cv::Point>> runs;
    std::vector<cv::Point> run;
    const auto emitRun = [&] {
        if (!run.empty()) runs.push_back(std::move(run));
        run.clear();
    };
    const TSegemetLine* previous = nullptr;
    for (const TSegemetLine& line : lines) {
        if (line.usedByCircle) {
            emitRun();
        } else {
            const bool continues =
                previous != nullptr && !previous->usedByCircle && line.startPoint == previous->endPoint;
            if (!continues) emitRun();
            run.insert(run.end(), line.points.begin(), line.points.end());
        }
        previous = &line;
    }
    emitRun();
    return runs;
}

}  // namespace orx::splitting
