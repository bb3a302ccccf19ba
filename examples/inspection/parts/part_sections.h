// Taught and found parts for people: tables and pictures.
#ifndef EXAMPLES_INSPECTION_PARTS_PART_SECTIONS_H
#define EXAMPLES_INSPECTION_PARTS_PART_SECTIONS_H

#include "inspection/parts/part_search.h"
#include "inspection/report/section.h"

namespace inspection {

// What teaching found, in words.
std::vector<std::string> describe(const orx::TTeachReport& report);

Section taughtSection(const cv::Mat& grey, const TaughtPart& taught);
Section foundSection(const cv::Mat& grey, const FoundParts& found);
// Errors against the truth.
Section truthSection(const FoundParts& found);

}  // namespace inspection

#endif
