// Models as bytes: the layout of docs/part-model.md.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_MODEL_BYTES_H
#define ORXFUNCTIONS_MATCHING_MODEL_MODEL_BYTES_H

#include <cstddef>
#include <string>

#include "orxFunctions/matching/model/model_data.h"

namespace orx::matching {

// More than the outline and the levels of any model take.
constexpr std::size_t kMostModelBytes = std::size_t{64} << 20U;

std::string bytesOfModel(const ModelData& model);

// False, with a model of no use, for bytes that are not those of a model.
bool modelOfBytes(const std::string& bytes, ModelData& model);

}  // namespace orx::matching

#endif
