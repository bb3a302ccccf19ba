// The compiled module `orxfunctions._core`.
#include <pybind11/pybind11.h>

#include <opencv2/core.hpp>
#include <opencv2/core/utility.hpp>

#include "bindings.h"
#include "orxFunctions/api.h"

#define ORX_TEXT_OF(number) #number
#define ORX_TEXT(number) ORX_TEXT_OF(number)

PYBIND11_MODULE(_core, core) {
    pybind11::register_exception<cv::Exception>(core, "OpenCVError", PyExc_RuntimeError).attr("__doc__") =
        "What OpenCV reports, in its own words.";
    core.attr("__version__") =
        ORX_TEXT(ORX_VERSION_MAJOR) "." ORX_TEXT(ORX_VERSION_MINOR) "." ORX_TEXT(ORX_VERSION_PATCH);
    core.def("opencv_version", &cv::getVersionString);
    core.def("threads", &cv::getNumThreads);
    core.def(
        "set_threads",
        [](int count) {
            // Below 0 stands for all of the machine's; 0 would be a single one.
            cv::setNumThreads(count == 0 ? -1 : count);
        },
        pybind11::arg("count"));
    orxpy::bindLevels(core);
    orxpy::bindEdges(core);
    orxpy::bindCalipers(core);
    orxpy::bindOutlines(core);
    orxpy::bindPictures(core);
    orxpy::bindGrades(core);
    orxpy::bindDrawing(core);
    orxpy::bindFiles(core);
    orxpy::bindForm(core);
    orxpy::bindVerdicts(core);
    orxpy::bindRecipes(core);
    orxpy::bindProposals(core);
    orxpy::bindRelations(core);
    orxpy::bindCalibration(core);
    orxpy::bindPlanes(core);
    orxpy::bindCameras(core);
    orxpy::bindPartPoses(core);
    orxpy::bindParts(core);
    orxpy::bindFits(core);
    orxpy::bindFinders(core);
    orxpy::bindClassicFits(core);
    orxpy::bindCurves(core);
    orxpy::bindGeometry(core);
    orxpy::bindSegments(core);
}
