// orxFunctions: machine-vision functions for industrial inspection and measuring programs.
//
// The one header that a host includes. Images are 8-bit cv::Mat (grey, or colour in BGR order) unless a
// function says otherwise; coordinates are pixels, x to the right and y down, the centre of the top-left
// pixel at (0, 0); angles are degrees unless a function says radians.
//
// Nothing here throws for bad input: it gives false, -1, an empty matrix or an invalid record, as each
// function states, and lastRefusal() says why. But for these, whose headers say what brings it about:
//
//     EdgesSubPix             analysis/subpixel_edges.h       OpenCV's exceptions pass
//     calcEdgeThresVal        analysis/subpixel_edges.h       OpenCV's exceptions pass
//     OTSUfourPartsThreshold  analysis/threshold.h            OpenCV's exceptions pass
//     calibrateData2File      calibration/calibration_file.h  OpenCV's exceptions pass
//     Point6D2Matrix44        calibration/pose.h              ends the process
//     start                   display/picture_box.h           ends the process, std::system_error passes
//     ~TPictureBox            display/picture_box.h           ends the process
//
// Memory that runs out is an exception to that, also where a header says that nothing throws: a call may then
// throw std::bad_alloc, cv::Exception with the code cv::Error::StsNoMem, or what jsoncpp throws (recipes). No
// lock is left held, nothing is lost or half given, and the next call works. The functions of FileOperator
// and those that read calibrations answer instead as for a file that can't be read or written; and the
// threads of the library go on: an image is reported as not saved, a fetch counts as failed, a picture is not
// shown. docs/faults.md tells this of files, threads, clocks, displays and camera drivers, too.
//
// Where to begin: edgesSubPixMetric (analysis/subpixel_edges_metric.h) finds edges between the pixels,
// fitCircleGeometric and fitLineGeometric (fitting/geometric_fit.h) measure shapes in them and say how well
// they are known, teachPart and findParts (matching/part_model.h, part_finder.h) find parts at any place and
// angle, getThresholdValue (analysis/threshold.h) finds a grey level, lastRefusal
// (foundation/refusal.h) tells why a call was refused, and APPgetMessage (foundation/host_bridge.h) what the
// user should know. docs/measuring.md leads from edges to a diameter, docs/parts.md from a part to its
// places.
//
// Thread words used in these headers. Reentrant: may run on several threads at once on different data.
// Thread-safe: may run on several threads at once on the same object. One thread at a time: the caller
// serialises.
#ifndef ORXFUNCTIONS_ORXFUNCTIONS_H
#define ORXFUNCTIONS_ORXFUNCTIONS_H

#include "ZULLib/zullib.h"
#include "orxFunctions/analysis/auto_canny.h"
#include "orxFunctions/analysis/caliper.h"
#include "orxFunctions/analysis/clean_up.h"
#include "orxFunctions/analysis/colour.h"
#include "orxFunctions/analysis/contour_center.h"
#include "orxFunctions/analysis/contour_edges.h"
#include "orxFunctions/analysis/contours.h"
#include "orxFunctions/analysis/enhance.h"
#include "orxFunctions/analysis/fill_holes.h"
#include "orxFunctions/analysis/flatten.h"
#include "orxFunctions/analysis/focus.h"
#include "orxFunctions/analysis/image_noise.h"
#include "orxFunctions/analysis/subpixel_edges.h"
#include "orxFunctions/analysis/subpixel_edges_metric.h"
#include "orxFunctions/analysis/thinning.h"
#include "orxFunctions/analysis/threshold.h"
#include "orxFunctions/analysis/white_balance.h"
#include "orxFunctions/api.h"
#include "orxFunctions/calibration/calibration_file.h"
#include "orxFunctions/calibration/calibration_image.h"
#include "orxFunctions/calibration/plane_calibration.h"
#include "orxFunctions/calibration/plane_target.h"
#include "orxFunctions/calibration/point_transform.h"
#include "orxFunctions/calibration/pose.h"
#include "orxFunctions/camera/camera.h"
#include "orxFunctions/camera/camera_config.h"
#include "orxFunctions/camera/camera_messages.h"
#include "orxFunctions/camera/camera_state.h"
#include "orxFunctions/camera/frames.h"
#include "orxFunctions/camera/image_thread_manager.h"
#include "orxFunctions/camera/multi_camera.h"
#include "orxFunctions/camera/polled.h"
#include "orxFunctions/display/picture_box.h"
#include "orxFunctions/display/picture_events.h"
#include "orxFunctions/display/picture_overlay.h"
#include "orxFunctions/files/file_operator.h"
#include "orxFunctions/files/image_data_augmentation.h"
#include "orxFunctions/files/picture_bytes.h"
#include "orxFunctions/files/save_image.h"
#include "orxFunctions/files/stream_file.h"
#include "orxFunctions/files/text_log.h"
#include "orxFunctions/files/whole_file.h"
#include "orxFunctions/fitting/circle_fit.h"
#include "orxFunctions/fitting/consensus_fit.h"
#include "orxFunctions/fitting/drawing.h"
#include "orxFunctions/fitting/ellipse_fit.h"
#include "orxFunctions/fitting/ellipse_geometric.h"
#include "orxFunctions/fitting/fit_factories.h"
#include "orxFunctions/fitting/fit_report.h"
#include "orxFunctions/fitting/geometric_fit.h"
#include "orxFunctions/fitting/geometry.h"
#include "orxFunctions/fitting/line_fit.h"
#include "orxFunctions/fitting/point_list.h"
#include "orxFunctions/fitting/polynomial.h"
#include "orxFunctions/fitting/random_numbers.h"
#include "orxFunctions/fitting/ransac.h"
#include "orxFunctions/fitting/spline_curve.h"
#include "orxFunctions/fitting/wanted_line.h"
#include "orxFunctions/foundation/enumerations.h"
#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/foundation/image_convert.h"
#include "orxFunctions/foundation/quadrilateral.h"
#include "orxFunctions/foundation/records.h"
#include "orxFunctions/foundation/rect.h"
#include "orxFunctions/foundation/refusal.h"
#include "orxFunctions/foundation/registry.h"
#include "orxFunctions/foundation/stopwatch.h"
#include "orxFunctions/foundation/text.h"
#include "orxFunctions/matching/part_drawing.h"
#include "orxFunctions/matching/part_finder.h"
#include "orxFunctions/matching/part_model.h"
#include "orxFunctions/matching/part_model_file.h"
#include "orxFunctions/matching/part_outline.h"
#include "orxFunctions/matching/part_pose.h"
#include "orxFunctions/measuring/edge_fit.h"
#include "orxFunctions/measuring/form.h"
#include "orxFunctions/measuring/recipe.h"
#include "orxFunctions/measuring/recipe_proposal.h"
#include "orxFunctions/measuring/recipe_result.h"
#include "orxFunctions/measuring/relations.h"
#include "orxFunctions/measuring/statistics.h"
#include "orxFunctions/measuring/verdict.h"
#include "orxFunctions/segmentation/segment_circle.h"
#include "orxFunctions/segmentation/segment_contour.h"
#include "orxFunctions/segmentation/segment_line.h"

#endif
