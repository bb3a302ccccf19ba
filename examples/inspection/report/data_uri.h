// Bytes and pictures inside text.
#ifndef EXAMPLES_INSPECTION_DATA_URI_H
#define EXAMPLES_INSPECTION_DATA_URI_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace inspection {

// RFC 4648, with padding.
std::string base64(const std::vector<unsigned char>& bytes);

// The picture as a PNG in a data URI; "" when it can't be encoded.
std::string pngDataUri(const cv::Mat& picture);

}  // namespace inspection

#endif
