// Splitting contours into straight pieces and circular arcs.
#ifndef ORXFUNCTIONS_SEGMENTATION_SEGMENT_CONTOUR_H
#define ORXFUNCTIONS_SEGMENTATION_SEGMENT_CONTOUR_H

#include <cstdint>
#include <opencv2/core.hpp>
#include <utility>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/segmentation/segment_circle.h"
#include "orxFunctions/segmentation/segment_line.h"

namespace orx {

// How contours are split. Lengths are pixels.
struct TSegemetParams {             // the spelling is part of the interface
    std::int32_t smoothSize = 5;    // without effect
    double firstEpsilon = 8.0;      // accuracy of the first polygon, and how near its chords collect points
    double secondEpsilon = 2.0;     // the same for the second pass
    double maxRadius = 300.0;       // largest radius of an arc, exclusive
    double minRadius = 60.0;        // smallest radius of an arc, exclusive
    double mergeCenterDist = 50.0;  // arcs whose centres lie farther apart are not merged
    double errThreshold = 3.5;      // largest deviation of a point from its arc
    bool useSecondPass = true;      // split again, more finely, what no arc covers
    bool useCircles = true;         // build arcs at all
};

// Describes contours (ordered lists of pixels, as contour extraction gives them) as straight pieces and arcs.
//
// A polygon approximation (D. H. Douglas and T. K. Peucker, 1973) gives key points; the chords between them
// collect their contour points; neighbouring chords that bend consistently grow into arcs, which are merged
// with each other; what remains is split again with the finer accuracy, and arcs swallow the free chords that
// touch them.
//
// A contour whose ends touch (at most sqrt(2) apart) is closed. Fewer than two key points, or two of a closed
// contour, give nothing; neither does an accuracy that is negative, not a number or 1e30 and more: two empty
// lists are appended (and rcNoResult tells so). Contours must lie within the range that cv::approxPolyDP
// accepts. One thread at a time; distinct objects are independent.
//
// The time grows about as the number of points does, that of a circle as its 1.5th power. Refused are empty
// contours (rcTooFew), those of more than 10 million points, and such as take more than 2^32 looks at their
// points, which are ten to fifteen seconds and up to 600 MB (both rcTooMany). Outlines take less than 500
// for each point; circles of 1.5 million points and clouds of 128,000 over four million pixels are answered,
// tangles that return to their own points tens of thousands of times are not.
class ORX_API TSegmentContour {
  public:
    TSegmentContour() = default;

    // Splits every contour; the results are appended to what getLines and getCircles return. Refused contours
    // are left out.
    void segmentContour(std::vector<std::vector<cv::Point>> contours, TSegemetParams params);
    // Splits one contour and returns its lines (those that no arc stands for) and its arcs; both are also
    // appended to what getLines and getCircles return. A refused contour gives an empty pair and appends
    // nothing.
    std::pair<std::vector<TSegemetLine>, std::vector<TSegemetCircle>> segmentContour(
        std::vector<cv::Point> contour, TSegemetParams params);

    // One entry for each contour processed so far.
    std::vector<std::vector<TSegemetLine>> getLines();
    std::vector<std::vector<TSegemetCircle>> getCircles();

    // Drawing. A single-channel image is converted to three channels in place. One that is empty
    // (rcEmptyImage), of more than two dimensions (rcImageDimensions), of more than 4 channels or of one that
    // can't be converted (rcImageType: 8 and 16 bits without sign and floats can) stays as it is. The static
    // operations give each element a colour of its own, the same sequence at every call. The others draw the
    // results of the contour processed last, nothing before the first (rcNotReady); their flags stand in the
    // order: draw points, draw lines, draw arcs, draw indices (at the middle of each line) and angles (of
    // each arc), show a window; where there are fewer flags the first ones are left out. A window is shown
    // only where there is a display (rcNoDisplay), and not for two channels (rcImageType); without one
    // everything is drawn all the same. Arcs that reach a million pixels or have no finite place are left out
    // (rcDegenerate).

    // Arcs and their points.
    static void disPlayCircleForTest(cv::Mat& image, std::vector<TSegemetCircle> circles);
    // Free lines: chords, or fitted lines from their first to their last inlier.
    static void disPlayLinesForTest(cv::Mat& image, std::vector<TSegemetLine> lines);
    static void disPlayFitLinesForTest(cv::Mat& image, std::vector<TSegemetLine> lines);
    // The points of contours, or of arcs and lines (first flag); the last flag shows the window.
    static void disPlayContoursForTest(cv::Mat& image, std::vector<std::vector<cv::Point>> contours);
    static void disPlayContoursForTest(cv::Mat& image, std::vector<TSegemetCircle> circles,
                                       std::vector<TSegemetLine> lines, bool drawPoints, bool showWindow);
    // Key points (a matrix of two-channel integers, as cv::approxPolyDP fills it; others are refused,
    // rcOption), with their indices when asked for.
    static void disPlayKeyPointsForTest(cv::Mat& image, cv::Mat keyPoints, bool drawIndices);

    // The key points of the contour processed last, with their indices when asked for.
    void disPlayKeyPoints(cv::Mat& image, bool drawIndices);
    void disPlayCirclesLines(cv::Mat& image, bool drawPoints, bool drawLines, bool drawArcs, bool drawIndices,
                             bool showWindow);
    // The points of the results; the line and arc flags choose whose.
    void disPlayContours(cv::Mat& image, bool drawPoints, bool drawLines, bool drawArcs, bool drawIndices,
                         bool showWindow);
    // Shows the image, converted to three channels, when the first flag is set; the others are without
    // effect.
    void disPlayResultCirclesLines(cv::Mat& image, bool showWindow, bool, bool, bool);

  private:
    // Splits a contour and appends its pieces; false, and nothing added, for what is refused.
    bool addPieces(const std::vector<cv::Point>& contour, const TSegemetParams& params);

    std::vector<std::vector<TSegemetLine>> contourLines_;
    std::vector<std::vector<TSegemetCircle>> contourCircles_;
    cv::Mat lastKeyPoints_;  // of the last contour's first pass
};

}  // namespace orx

#endif
