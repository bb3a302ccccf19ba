// Automatic choice of one grey level for a whole image, and binarisation with a level per quadrant.
//
// Each method reads the histogram once and returns a level, 0 to 255, or -1 where it finds none. Binarise
// with cv::threshold, which makes the pixels above the level white. Grey images are 8-bit, one channel. The
// image is never modified, and any matrix is safe: an empty one has an empty histogram, and
// docs/threshold-degenerate.md lists what every method answers to that and to other images that leave nothing
// to choose. Where the answer is -1, lastRefusal() tells why: no pixels (rcEmptyImage), more than two
// dimensions (rcImageDimensions), more than one channel where one is taken (rcImageType), or no level to be
// found in the histogram (rcNoResult). All functions are reentrant. Of levels that score equally the lowest
// is returned, unless stated otherwise.
#ifndef ORXFUNCTIONS_ANALYSIS_THRESHOLD_H
#define ORXFUNCTIONS_ANALYSIS_THRESHOLD_H

#include <opencv2/core.hpp>

#include "orxFunctions/api.h"
#include "orxFunctions/foundation/enumerations.h"

namespace orx {

// A grey level by the given method; -1 for an image of more than one channel, and where a method says so. The
// cost of every method is one pass over the image, plus a search that takes microseconds.
//
// Two histograms are in use, and the difference is intended. Methods marked (254) leave out the pixels of
// level 255: saturated highlights do not move their level. The others count every level.
//
// tmOtsu (254), and every value that is no method, tmReserved included
//     The level of largest variance between the classes. The first choice for two classes of similar size and
//     spread. 0 for an image of one level below 254, -1 without any level below 255.
//     N. Otsu, "A threshold selection method from gray-level histograms", IEEE Trans. SMC 9 (1979).
// tmTriangle
//     The level farthest from the line between the peak and the far end of the histogram. For one dominant
//     class, most often a background, with a small object class in its long tail; where Otsu cuts into the
//     background. On equal distances the lowest level, or the highest when the tail lies above the peak. A
//     bin so high that its distance is not positive is never chosen; where all are, as when every level
//     occurs equally often, the answer is the end of the line, and may be -1 or 256.
//     G. Zack, W. Rogers, S. Latt, "Automatic measurement of sister chromatid exchange frequency",
//     J. Histochem. Cytochem. 25 (1977).
// tmMinimum (254), tmIntermodes (254)
//     One below the valley between the two modes of the smoothed histogram, or the middle of the two modes.
//     For two distinct classes of very different size, Minimum where the valley is well filled, Intermodes
//     where it is flat. -1 when smoothing does not leave exactly two modes (in fewer than 999 passes).
//     J. Prewitt, M. Mendelsohn, "The analysis of cell images", Ann. N. Y. Acad. Sci. 128 (1966).
// tmHuang
//     The level of least fuzziness, measured by the entropy of each pixel's membership in its class. For
//     classes that overlap or have broad plateaus. -1 for an empty image. Sums are 32-bit and wrap for bright
//     images of more than 2^24 pixels.
//     L.-K. Huang, M.-J. Wang, "Image thresholding by minimizing the measures of fuzziness", Pattern
//     Recognition 28 (1995).
// tmIterative (254)
//     Moves the level to the middle of the class means until it stays, starting halfway to 255. Close to
//     Otsu, for classes of similar spread; class means are whole levels. -1 when no pixel lies above a level
//     on the way. T. Ridler, S. Calvard, "Picture thresholding using an iterative selection method", IEEE
//     Trans. SMC 8 (1978).
// tmMaxEntropy
//     The level that leaves most information in both classes. For small or faint objects that Otsu misses.
//     The level is the lowest one of the upper class: the background is [0, level - 1]. 0 for images of one
//     level. J. Kapur, P. Sahoo, A. Wong, "A new method for gray-level picture thresholding using the entropy
//     of the histogram", Comput. Vision Graph. 29 (1985).
// tmIsoData
//     The lowest level that is the middle of the means below and above it, its own pixels left out. Like
//     tmIterative, with a scan from the dark end in place of an iteration: prefer it for dark classes of
//     few pixels. 0 when there is no such level.
//     T. Ridler, S. Calvard, as above.
// tmMoments
//     The level at which the binary image keeps the first three moments of the grey one. For uneven light and
//     classes of unequal size, without any assumption on their shape. 0 when the image has fewer than two
//     levels.
//     W.-H. Tsai, "Moment-preserving thresholding: a new approach", Comput. Vision Graph. 29 (1985).
// tmMinError
//     The level of least error if both classes are Gaussian, sizes and spreads being free. For classes of
//     very different spread. The darkest level when no split leaves a spread in both classes, -1 for an empty
//     image. J. Kittler, J. Illingworth, "Minimum error thresholding", Pattern Recognition 19 (1986).
// tmShanbhag
//     The level at which both classes carry the same information, graded by how far a pixel is from the other
//     class. A more cautious tmMaxEntropy: prefer it where that follows the noise in a tail. -1 for images of
//     fewer than two levels.
//     A. Shanbhag, "Utilization of information measure as a means of image thresholding", CVGIP: Graph.
//     Models Image Process. 56 (1994).
//
// An image of another depth than 8 bits is not refused. Methods not marked (254) take its data as bytes, the
// first `cols` of each row (tmTriangle, in a continuous image, the first rows x cols). Those marked count
// 16-bit unsigned and float pixels by value, as cv::calcHist does over [0, 255), and other depths not at all.
ORX_API int getThresholdValue(cv::Mat& img, TThresholdMethod method);
ORX_API int getThresholdValue(const cv::Mat& img, TThresholdMethod method);

// tmOtsu with its score: the variance between the classes in squared grey levels, the larger the clearer the
// split; -1.0 when none was scored. Of an image of more than one channel, channel 0.
ORX_API int getThresholdValOTSU(cv::Mat img, double& score);

// The highest level such that more than `required` pixels lie at or above it, pixels of level 255 not
// counted; -1 when no level has so many. For objects of known area that are brighter than everything else. Of
// an image of more than one channel, channel 0.
ORX_API int getThresholdValueByRequiredNumber(cv::Mat img, int required);

// Binarises (0 and 255) each quadrant of an image with its own Otsu level, for objects under light that falls
// off to one side: one level per quadrant follows the light, and the quadrants meet in the object's centre.
//
// The object is found in the whole image binarised by Otsu and then cleaned by cv::morphologyEx with the
// operation `morphOp` (cv::MorphTypes) and a square of kernelSize pixels: the centre of gravity of its
// contour of largest area (the first found among equals) cuts the image. The pixel in the centre belongs to
// the lower right quadrant. A centre in the first row or column leaves no quadrant above or left of it;
// without any contour the whole image is one quadrant. `dst` may be `src`. Large images are worked on by
// several threads; neither time nor memory grows with the square.
//
// Images are 8-bit, one channel. One of more than two dimensions is refused (rcImageDimensions). Whatever
// else, such as an empty image, an unknown operation or kernelSize < 1, is answered by the cv::Exception of
// the OpenCV call that refuses it. `dst` is then untouched.
ORX_API void OTSUfourPartsThreshold(cv::Mat& src, cv::Mat& dst, int morphOp, int kernelSize);
ORX_API void OTSUfourPartsThreshold(const cv::Mat& src, cv::Mat& dst, int morphOp, int kernelSize);

}  // namespace orx

#endif
