// What teaching tells of an outline: its size, its symmetry, what it leaves open.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_TEACH_REPORT_H
#define ORXFUNCTIONS_MATCHING_MODEL_TEACH_REPORT_H

#include "orxFunctions/matching/model/model_data.h"

namespace orx::matching {

// A model of nothing that says why.
TPartModel refusedModel(TMatchStatus status);

// Whether there is a model; else rcNotReady, refused in the name of the public function.
bool takesModel(const TPartModel& model, const char* function);

// msOk; msTooFewEdges or msTooLarge for outlines of fewer or more points than a model takes, refused in the
// name of teachPart.
TMatchStatus checkCount(std::size_t points);

// Fills the report of a model whose outline and levels are there; its status becomes msOk.
void completeReport(ModelData& model);

}  // namespace orx::matching

#endif
