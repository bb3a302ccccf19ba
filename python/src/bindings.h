// What each file of this folder adds to the compiled module `orxfunctions._core`. The module is private: its
// functions take positional arguments and plain values, and have no documentation of their own; the typed
// functions of the package in
// ../orxfunctions stand in front of them.
#ifndef ORXFUNCTIONS_PYTHON_BINDINGS_H
#define ORXFUNCTIONS_PYTHON_BINDINGS_H

#include <pybind11/pybind11.h>

namespace orxpy {

void bindLevels(pybind11::module_& core);
void bindEdges(pybind11::module_& core);
void bindCalipers(pybind11::module_& core);
void bindOutlines(pybind11::module_& core);
void bindPictures(pybind11::module_& core);
void bindGrades(pybind11::module_& core);
void bindDrawing(pybind11::module_& core);
void bindFiles(pybind11::module_& core);
void bindForm(pybind11::module_& core);
void bindRecipes(pybind11::module_& core);
void bindProposals(pybind11::module_& core);
void bindRelations(pybind11::module_& core);
void bindVerdicts(pybind11::module_& core);
void bindCalibration(pybind11::module_& core);
void bindPlanes(pybind11::module_& core);
void bindCameras(pybind11::module_& core);
void bindPartPoses(pybind11::module_& core);
void bindParts(pybind11::module_& core);
void bindFits(pybind11::module_& core);
void bindFinders(pybind11::module_& core);
void bindClassicFits(pybind11::module_& core);
void bindCurves(pybind11::module_& core);
void bindGeometry(pybind11::module_& core);
void bindSegments(pybind11::module_& core);

}  // namespace orxpy

#endif
