#include "orxFunctions/analysis/threshold.h"

#include <utility>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/analysis/histogram_internal.h"
#include "orxFunctions/analysis/thresholds/methods.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {

namespace {

// Of an image of one channel.
int levelBy(TThresholdMethod method, const cv::Mat& img) {
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

// The level, which is -1 where there is none: that is what refused images get, too, so it is told why.
int told(int level, const cv::Mat& img, const char* function) {
    if (level < 0 && takesImage(img, function))
        refuse(rcNoResult, function, "the grey levels of the image leave none to choose");
    return level;
}

}  // namespace

int getThresholdValue(const cv::Mat& img, TThresholdMethod method) {
    if (!takesOneChannel(img, "getThresholdValue")) return -1;
    return told(levelBy(method, img), img, "getThresholdValue");
}

int getThresholdValue(cv::Mat& img, TThresholdMethod method) {
    return getThresholdValue(std::as_const(img), method);
}

int getThresholdValOTSU(cv::Mat img, double& score) {
    return told(otsuLevel(libraryHistogram(img), score), img, "getThresholdValOTSU");
}

int getThresholdValueByRequiredNumber(cv::Mat img, int required) {
    return told(requiredNumberLevel(libraryHistogram(img), required), img,
                "getThresholdValueByRequiredNumber");
}

}  // namespace orx
