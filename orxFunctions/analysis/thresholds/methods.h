// The threshold methods, each a function from a histogram to a grey level; threshold.h documents them.
//
// Whatever makes a search faster here is either exact integer arithmetic, or only narrows the levels down:
// the decision then falls on scores summed level by level in doubles, as the plain loops would.
#ifndef ORXFUNCTIONS_ANALYSIS_THRESHOLD_METHODS_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_THRESHOLD_METHODS_INTERNAL_H

#include "orxFunctions/analysis/histogram_internal.h"

namespace orx {

// On the library histogram.
int otsuLevel(const Histogram& histogram, double& score);
int minimumLevel(const Histogram& histogram);
int intermodesLevel(const Histogram& histogram);
int iterativeLevel(const Histogram& histogram);
int requiredNumberLevel(const Histogram& histogram, int required);

// On the direct histogram.
int triangleLevel(Histogram histogram);
int huangLevel(const Histogram& histogram);
int maxEntropyLevel(const Histogram& histogram);
int isoDataLevel(const Histogram& histogram);
int momentsLevel(const Histogram& histogram);
int minErrorLevel(const Histogram& histogram);
int shanbhagLevel(const Histogram& histogram);

// The last level that Otsu, iterative intermeans and minimum error take into account. It is 255 even where
// the data end earlier; these methods are meant to scan on to there.
constexpr int kLastLevel = kLevels - 1;

}  // namespace orx

#endif
