// Between which limits models are made and read.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_MODEL_LIMITS_H
#define ORXFUNCTIONS_MATCHING_MODEL_MODEL_LIMITS_H

#include <cstddef>

namespace orx::matching {

constexpr int kMostLevels = 8;
// Fewer points tell no part from nothing.
constexpr std::size_t kLeastPoints = 16;
// Of the outline and of a level: parts of a thousand pixels have a tenth of it.
constexpr std::size_t kMostPoints = 200000;
// Of reference points and of points of the outline from the origin, pixels.
constexpr double kFarthest = 1e6;

}  // namespace orx::matching

#endif
