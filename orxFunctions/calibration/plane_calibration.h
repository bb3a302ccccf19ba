// From pixels to millimetres: the lens of a camera and the plane that parts lie on, from pictures of a flat
// target (plane_target.h).
//
// A pinhole camera with radial and tangential distortion (OpenCV's calib3d finds it; Z. Zhang, "A flexible
// new technique for camera calibration", IEEE Trans. PAMI 22 (2000)) and one plane. Points of the plane are
// millimetres in the target's own axes, as it lay in the picture that tells the plane; pixels as everywhere,
// the centre of the top-left pixel at (0, 0). Uncertainties are standard ones, to first order (Guide to the
// Expression of Uncertainty in Measurement, JCGM 100:2008, and JCGM 102 for what points have in common).
//
// Measure shapes in millimetres: map edge points, then fit. The centre of a circle's picture is not the
// picture of its centre as soon as the plane is tilted.
//
// A status other than plOk is the last refusal, too: rcOption for plBadOptions, rcTooFew for plTooFewViews,
// rcSizesDiffer for plMixedSizes, rcDegenerate for plBadViews, rcNoResult for the others; of files rcFileName
// or rcFileUnwritable for plUnwritable, and rcFileName, rcFileMissing, rcFileUnreadable or rcFileFormat for
// plUnreadable. A calibration that is handed in and not valid is rcNotReady, a point that has no place
// rcNoResult.
//
// All functions are reentrant. Nothing throws.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_CALIBRATION_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_CALIBRATION_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/calibration/plane_target.h"

namespace orx {

// Why there is no calibration; plOk where there is one.
enum TPlaneStatus : int {
    plOk = 0,
    plNoTarget = 1,      // no picture shows the target, or that of the plane does not
    plTooFewViews = 2,   // too few pictures to find a lens by, or too much alike: they leave it open
    plMixedSizes = 3,    // pictures of different sizes
    plNotConverged = 4,  // the points follow no camera
    plBadOptions = 5,    // an option outside its range
    plBadViews = 6,      // lists of different lengths, too few or too many points, or not finite
    plUnreadable = 7,    // a file that can't be opened, or is no plane calibration
    plUnwritable = 8     // a file that can't be written
};

// The status as a short English text, "ok" for plOk; "unknown status" for other values. Never null.
ORX_API const char* planeStatusText(TPlaneStatus status);

struct TPlaneOptions {
    // [true] Find the lens, from 3 pictures or more in which the target is tilted this way and that. false:
    // no lens, but a homography from the one picture `planeView`, for a lens that draws straight lines
    // straight or a field so small that it does.
    bool lens = true;
    // [2] Radial coefficients, 0 to 3; and whether tangential distortion is found.
    int radial = 2;
    bool tangential = true;
    // [0] The view whose target lies on the plane of the parts: an index into the views.
    int planeView = 0;
    // [0] Millimetres that the parts' upper side lies nearer to the camera than the target did, -1e6 to 1e6,
    // and their standard uncertainty, 0 to 1e6. Both 0 without a lens.
    double height = 0.0;
    double heightDeviation = 0.0;
    // [0] Relative standard uncertainty of the target's pitch, 0 to 0.1: all lengths share it.
    double scaleDeviation = 0.0;
    // [2] The largest root mean square distance of points from the camera found, pixels, above 0.
    double mostRms = 2.0;
};

constexpr int kPlaneParameters = 15;

struct TPlaneCalibration {
    TPlaneStatus status = plNoTarget;
    std::string problem;  // what in particular is wrong, in English; may be empty
    cv::Size imageSize;
    bool lens = true;                         // else `homography` tells all, and the next four say nothing
    cv::Matx33d camera = cv::Matx33d::eye();  // fx, 0, cx; 0, fy, cy; 0, 0, 1, pixels
    cv::Vec<double, 5> distortion;            // k1, k2, p1, p2, k3 as in OpenCV
    cv::Vec3d rotation;                       // plane to camera, Rodrigues' vector
    cv::Vec3d translation;                    // millimetres; parts' height is in it
    cv::Matx33d homography = cv::Matx33d::eye();  // plane to pixels, its last element 1
    // With a lens of fx, fy, cx, cy, k1, k2, p1, p2, k3, rotation, translation, in that order, 0 for what was
    // not found; else of the homography's first 8 elements, row by row.
    cv::Matx<double, kPlaneParameters, kPlaneParameters> covariance;
    double degreesOfFreedom = 0.0;  // of the covariance
    double noise = 0.0;             // standard deviation of a found point's x or y, pixels
    double rms = 0.0;               // distances of found and projected points, root mean square, pixels
    double coverage = 0.0;          // share of the picture that the found points reached, 0 to 1
    int views = 0;                  // in which the target was found
    std::string description;

    bool valid() const { return status == plOk; }
};

// The camera and the plane by which projected points lie nearest to those found, weighted by their
// deviations; how far they stay apart tells how large those are, and from that follows the covariance. Views
// that are not found() are passed over. At most 1,000 views and 1,000,000 points.
//
// Views whose points leave the focal length uncertain by a twentieth or more are refused as plTooFewViews.
ORX_API TPlaneCalibration calibratePlane(const std::vector<TTargetView>& views,
                                         const TPlaneOptions& options = {});

// The same lens over another plane: that on which the target lies in this view, `height` above it. What was
// found about the lens, and its covariance, stays; `noise`, `rms` and `degreesOfFreedom` are those of the
// view. From a calibration with a lens that is valid, of pictures of the same size. Of the options height,
// the deviations and mostRms are looked at.
ORX_API TPlaneCalibration relocatePlane(const TPlaneCalibration& lens, const TTargetView& view,
                                        const TPlaneOptions& options = {});

// How far a view's points lie from where the calibration says they are, found less projected, pixels, with
// the target laid where this view shows it. Empty for a view that is not found and a calibration that is not
// valid.
ORX_API std::vector<cv::Point2d> planeResiduals(const TPlaneCalibration& calibration,
                                                const TTargetView& view);

// What about the views makes the calibration weaker than it could be, as English sentences for a user: parts
// of the picture that no target reached, too little tilt, a view that fits much worse than the others. None
// where all is well, and for a calibration that is not valid.
ORX_API std::vector<std::string> planeWarnings(const TPlaneCalibration& calibration,
                                               const std::vector<TTargetView>& views);

// The point of the plane that a pixel shows. Not-a-number where the line of sight does not meet the plane in
// front of the camera, where the lens' formula folds back (a place that no light reaches, far outside of the
// field that the targets covered), and for a calibration that is not valid.
ORX_API cv::Point2d imageToPlane(const TPlaneCalibration& calibration, cv::Point2d pixel);
ORX_API std::vector<cv::Point2d> imageToPlane(const TPlaneCalibration& calibration,
                                              const std::vector<cv::Point2d>& pixels);
// And back, to within 1e-9 pixels. Not-a-number likewise.
ORX_API cv::Point2d planeToImage(const TPlaneCalibration& calibration, cv::Point2d millimetres);
ORX_API std::vector<cv::Point2d> planeToImage(const TPlaneCalibration& calibration,
                                              const std::vector<cv::Point2d>& millimetres);

// The derivative of imageToPlane: rows are x and y in millimetres, columns x and y in pixels. Not-a-number
// where that is.
ORX_API cv::Matx22d planeJacobian(const TPlaneCalibration& calibration, cv::Point2d pixel);
// Millimetres a pixel at a place of the picture: the root of that derivative's determinant.
ORX_API double pixelSize(const TPlaneCalibration& calibration, cv::Point2d pixel);

// The derivative of the mapped points by the parameters, in the order of `covariance`: 2n x 15, CV_64F. For
// hosts that carry the calibration's share on to what they compute from many points. Empty where a point has
// no place on the plane, and for no points (rcTooFew).
ORX_API cv::Mat planeSensitivity(const TPlaneCalibration& calibration,
                                 const std::vector<cv::Point2d>& pixels);

// The covariance of n mapped points x0, y0, x1, y1, ..., square millimetres: 2n x 2n, CV_64F. That of the
// pixels (2n x 2n likewise, CV_64F; none for exact ones) is carried over, and that of the calibration added,
// which the points share: distances between near points hardly feel it. Empty for other sizes
// (rcSizesDiffer), where a point has no place on the plane, for no points (rcTooFew) and for more than 2,000
// (rcTooMany).
ORX_API cv::Mat planeCovariance(const TPlaneCalibration& calibration, const std::vector<cv::Point2d>& pixels,
                                const cv::Mat& pixelCovariance = {});

// A file that calibrateDataFromFile (calibration_file.h) reads, too, with the plane beside the camera: the
// extension chooses the format, .json, .xml, else YAML. As there it replaces an earlier file once it is whole
// on the disk. plNoTarget or whatever the status is for a calibration that is not valid; plUnwritable for
// numbers that are not finite or of no camera (rcNotFinite), for what OpenCV can't write (rcFailed), and for
// a path that leads to no regular file, that may not be written, or on whose disk there is no room. Nothing
// changes then.
ORX_API TPlaneStatus writePlaneCalibration(const std::string& fileName, const TPlaneCalibration& calibration);

// A calibration that is not valid, of the status plUnreadable, for a file that can't be opened or understood,
// that lacks the plane, or that holds what no camera can: everything is checked, and sizes before memory is
// taken for them. `problem` says what.
ORX_API TPlaneCalibration readPlaneCalibration(const std::string& fileName);

}  // namespace orx

#endif
