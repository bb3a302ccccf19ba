// What teaching tells of an outline: its size, its symmetry, what it leaves open.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_TEACH_REPORT_H
#define ORXFUNCTIONS_MATCHING_MODEL_TEACH_REPORT_H

#include "orxFunctions/matching/model/model_data.h"

namespace orx::matching {

// A model of nothing that says why.
TPartModel refusedModel(TMatchStatus status);

// Fills the report of a model whose outline and levels are there; its status becomes msOk.
void completeReport(ModelData& model);

}  // namespace orx::matching

#endif
