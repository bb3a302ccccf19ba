// PNG files of the kinds that inspection writes and reads most, decoded and encoded without OpenCV's
// imgcodecs: several times as fast, and without the libraries that those bring. Deflate is libdeflate's; a
// build without it has none of this (plain_png_none.cpp), and everything goes through imgcodecs. The format:
// ISO/IEC 15948.
#ifndef ORXFUNCTIONS_PLATFORM_PICTURES_PLAIN_PNG_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_PICTURES_PLAIN_PNG_INTERNAL_H

#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

namespace orx::platform {

// The pixels that cv::imdecode gives for these flags. Empty for all that is left to it: flags other than
// IMREAD_GRAYSCALE, IMREAD_GRAYSCALE | IMREAD_ANYDEPTH (grey files) and IMREAD_COLOR (those of 3 x 8 bits,
// and of 8 bits with a palette), files that are interlaced, turned or transparent, and every file with the
// least fault. Reentrant.
cv::Mat decodePlainPng(const unsigned char* bytes, std::size_t size, int flags);

// 8 bits, one or three channels (BGR). False for other pictures. Reentrant.
bool encodePlainPng(const cv::Mat& picture, std::vector<unsigned char>& encoded);

// A file with a palette, BGR; `indices` are of 8 bits, one channel, each below the palette's size, which is 1
// to 256. False for others. Reentrant.
bool encodePalettePng(const cv::Mat& indices, const std::vector<cv::Vec3b>& palette,
                      std::vector<unsigned char>& encoded);

}  // namespace orx::platform

#endif
