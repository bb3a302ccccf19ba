#include "orxFunctions/analysis/threshold.h"

#include "orxFunctions/analysis/histogram_internal.h"
#include "orxFunctions/analysis/thresholds/methods.h"

namespace orx {

int getThresholdValue(cv::Mat& img, TThresholdMethod method) {
    if (img.channels() > 1) return -1;
    switch (static_cast<int>(method)) {
        case tmTriangle:
            return triangleLevel(directHistogram(img, RowWalk::joinedWhenContinuous));
        case tmMinimum:
            return minimumLevel(libraryHistogram(img));
        case tmIntermodes:
            return intermodesLevel(libraryHistogram(img));
        case tmHuang:
            return huangLevel(directHistogram(img));
        case tmIterative:
            return iterativeLevel(libraryHistogram(img));
        case tmMaxEntropy:
            return maxEntropyLevel(directHistogram(img));
        case tmIsoData:
            return isoDataLevel(directHistogram(img));
        case tmMoments:
            return momentsLevel(directHistogram(img));
        case tmMinError:
            return minErrorLevel(directHistogram(img));
        case tmShanbhag:
            return shanbhagLevel(directHistogram(img));
        default: {
            double score = 0;
            return otsuLevel(libraryHistogram(img), score);
        }
    }
}

int getThresholdValOTSU(cv::Mat img, double& score) { return otsuLevel(libraryHistogram(img), score); }

int getThresholdValueByRequiredNumber(cv::Mat img, int required) {
    return requiredNumberLevel(libraryHistogram(img), required);
}

}  // namespace orx
