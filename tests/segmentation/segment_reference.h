// The splitter as it is defined, step by step: every chord walks the contour, every arc is tried against all
// others.
#ifndef TESTS_SEGMENTATION_SEGMENT_REFERENCE_H
#define TESTS_SEGMENTATION_SEGMENT_REFERENCE_H

#include <cmath>
#include <opencv2/imgproc.hpp>
#include <utility>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace segment_reference {

using orx::TSegemetCircle;
using orx::TSegemetLine;
using orx::TSegemetParams;
using Points = std::vector<cv::Point>;
using Lines = std::vector<TSegemetLine>;
using Circles = std::vector<TSegemetCircle>;

inline double between(cv::Point p, cv::Point q) { return cv::norm(cv::Point2d(p) - cv::Point2d(q)); }

inline bool runsInto(const TSegemetCircle& c1, const TSegemetCircle& c2) {
    return !c1.secondPoints.empty() && !c2.firstPoints.empty() &&
           between(c1.secondPoints.back(), c2.firstPoints.front()) < 8.0;
}

inline void mergeAllPairs(Circles& circles, const TSegemetParams& p) {
    for (std::size_t i = 0; i < circles.size(); ++i) {
        for (std::size_t j = i + 1; circles[i].isCircle && j < circles.size(); ++j) {
            const bool forward = runsInto(circles[i], circles[j]);
            if (!circles[j].isCircle || (!forward && !runsInto(circles[j], circles[i]))) continue;
            if (!(cv::norm(circles[i].center - circles[j].center) <= p.mergeCenterDist)) continue;
            const TSegemetCircle candidate(circles[forward ? i : j], circles[forward ? j : i], p.maxRadius,
                                           p.minRadius, p.errThreshold, false);
            if (candidate.isCircle) circles.push_back(candidate);
        }
    }
}

inline void swallowAllPairs(Circles& circles, Lines& lines, const TSegemetParams& p) {
    for (std::size_t i = 0; i < circles.size(); ++i) {
        for (std::size_t l = 0; circles[i].isCircle && l < lines.size(); ++l) {
            if (lines[l].usedByCircle) continue;
            const TSegemetCircle& arc = circles[i];
            const bool follows =
                !arc.secondPoints.empty() &&
                between(arc.secondPoints.back(), cv::Point(lines[l].startPoint)) <= std::sqrt(2.0);
            const bool leads = !arc.firstPoints.empty() && between(cv::Point(lines[l].endPoint),
                                                                   arc.firstPoints.front()) <= std::sqrt(2.0);
            if (!follows && !leads) continue;
            const TSegemetCircle candidate(circles[i], lines[l], p.maxRadius, p.minRadius, p.errThreshold,
                                           !follows);
            if (candidate.isCircle) circles.push_back(candidate);
        }
    }
}

inline void growArcs(Lines& lines, Circles& circles, bool closed, const TSegemetParams& p) {
    const std::size_t n = lines.size();
    if (n == 0) return;
    bool inRun = false;
    bool firstWasCircle = false;
    const auto accepted = [&](const TSegemetCircle& candidate) {
        if (candidate.isCircle) circles.push_back(candidate);
        return candidate.isCircle;
    };
    const auto pair = [&](TSegemetLine& l1, TSegemetLine& l2) {
        return accepted({l1, l2, p.maxRadius, p.minRadius, p.errThreshold});
    };
    const auto grown = [&](TSegemetCircle& arc, TSegemetLine& line, bool reversed) {
        return accepted({arc, line, p.maxRadius, p.minRadius, p.errThreshold, reversed});
    };
    for (std::size_t i = 0; i + 1 < n; ++i) {
        if (inRun) {
            inRun = grown(circles.back(), lines[i + 1], false);
        } else {
            inRun = pair(lines[i], lines[i + 1]);
            firstWasCircle = firstWasCircle || (inRun && i == 0);
        }
    }
    if (!closed) return;
    if (inRun && firstWasCircle) {
        std::size_t k = 0;
        while (!circles[k].isCircle) ++k;
        if (k + 1 < circles.size()) {
            accepted({circles.back(), circles[k], p.maxRadius, p.minRadius, p.errThreshold, false});
        }
    } else if (inRun) {
        grown(circles.back(), lines.front(), false);
    } else if (firstWasCircle) {
        grown(circles.front(), lines.back(), true);
    } else {
        pair(lines.back(), lines.front());
    }
}

inline std::pair<Lines, Circles> onePass(const Points& contour, double epsilon, const TSegemetParams& p) {
    const bool closed = between(contour.front(), contour.back()) <= std::sqrt(2.0);
    Points keys;
    cv::approxPolyDP(contour, keys, epsilon, closed);
    Lines lines;
    Circles circles;
    const std::size_t n = keys.size();
    if (n < 2 || (n == 2 && closed)) return {};
    for (std::size_t i = 0; i < (closed ? n : n - 1); ++i) {
        lines.emplace_back(cv::Vec2i(keys[i]), cv::Vec2i(keys[(i + 1) % n]), contour, epsilon);
    }
    if (p.useCircles) growArcs(lines, circles, closed, p);
    mergeAllPairs(circles, p);
    return {lines, circles};
}

inline std::vector<Points> freeRuns(const Lines& lines) {
    std::vector<Points> runs(1);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const bool continues =
            i > 0 && !lines[i - 1].usedByCircle && lines[i].startPoint == lines[i - 1].endPoint;
        if (lines[i].usedByCircle || !continues) runs.emplace_back();
        if (lines[i].usedByCircle) continue;
        runs.back().insert(runs.back().end(), lines[i].points.begin(), lines[i].points.end());
    }
    std::vector<Points> filled;
    for (const Points& run : runs) {
        if (!run.empty()) filled.push_back(run);
    }
    return filled;
}

inline std::pair<Lines, Circles> split(const Points& contour, const TSegemetParams& p) {
    auto [lines, circles] = onePass(contour, p.firstEpsilon, p);
    if (p.useSecondPass) {
        const std::vector<Points> runs = freeRuns(lines);
        lines.clear();
        for (const Points& run : runs) {
            const auto [runLines, runCircles] = onePass(run, p.secondEpsilon, p);
            lines.insert(lines.end(), runLines.begin(), runLines.end());
            circles.insert(circles.end(), runCircles.begin(), runCircles.end());
        }
    }
    swallowAllPairs(circles, lines, p);
    mergeAllPairs(circles, p);
    std::pair<Lines, Circles> result;
    for (const TSegemetLine& line : lines) {
        if (!line.usedByCircle) result.first.push_back(line);
    }
    for (const TSegemetCircle& circle : circles) {
        if (circle.isCircle) result.second.push_back(circle);
    }
    return result;
}

}  // namespace segment_reference

#endif
