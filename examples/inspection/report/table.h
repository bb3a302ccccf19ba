// Results as aligned text.
#ifndef EXAMPLES_INSPECTION_TABLE_H
#define EXAMPLES_INSPECTION_TABLE_H

#include <ostream>
#include <string>
#include <vector>

#include "inspection/report/result.h"

namespace inspection {

// A number with a fixed count of decimals; "-0.00" is written "0.00".
std::string fixedText(double value, int decimals);

// With the standard uncertainty behind it, both to a thousandth: "30.021 ± 0.004". The number alone, with
// `decimals`, where there is none (0).
std::string uncertainText(double value, double deviation, int decimals);

// Rows of cells under a heading, the columns as wide as their widest cell, numbers and headings to the right.
// The first row is the heading.
void printAligned(std::ostream& out, const std::vector<std::vector<std::string>>& rows);

// A line about the picture, then its features, the errors against the truth when there is one, and the
// sections. For a picture that could not be measured: its name and the reason.
void printResult(std::ostream& out, const ImageResult& result, const std::string& method);

}  // namespace inspection

#endif
