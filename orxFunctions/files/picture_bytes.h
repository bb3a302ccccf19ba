// Pictures as the bytes of a file, decoded and encoded.
#ifndef ORXFUNCTIONS_FILES_PICTURE_BYTES_H
#define ORXFUNCTIONS_FILES_PICTURE_BYTES_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/api.h"

namespace orx {

// The pixels of a picture file that was read into memory, as cv::imdecode gives them for the same flags
// (cv::ImreadModes, of opencv2/imgcodecs.hpp). To be preferred to it where a program should start quickly or
// reads many pictures: plain PNG files (grey of 8 or 16 bits for IMREAD_GRAYSCALE with or without
// IMREAD_ANYDEPTH, colour of 8 bits, also by a palette, for IMREAD_COLOR) are decoded by the library itself,
// on Linux where it was built with libdeflate, in a third to a half of the time; imgcodecs, with the many
// libraries that it brings, is loaded when another file comes.
//
// Empty for no bytes and for what is no picture (rcFileFormat), for a damaged one that the decoder gives up
// or one larger than it takes (rcImageSize), for what finds no memory (rcMemory), and where the formats can't
// be loaded (rcFailed). Reentrant.
ORX_API cv::Mat decodePicture(const std::vector<unsigned char>& bytes, int flags);

// The picture as the bytes of a file, of the format that `extension` says, such as ".png". Parameters are
// those of cv::imencode. An 8-bit PNG of one or three channels without parameters is made by the library
// itself, where decodePicture says so: in half of the time that imgcodecs takes, and for drawn sheets
// smaller. `bytes` is replaced; it is empty where the answer is false: for an empty picture (rcEmptyImage) or
// one of more than two dimensions (rcImageDimensions), or where the format can't be loaded, is not known, or
// does not take such a picture (rcFailed). Reentrant.
ORX_API bool encodePicture(const std::string& extension, const cv::Mat& picture,
                           std::vector<unsigned char>& bytes, const std::vector<int>& parameters = {});

// A PNG file of a picture in few colours: `indices` (8 bits, one channel) into `palette` (1 to 256 colours,
// BGR). To be preferred to encodePicture for drawings and what is marked in grey pictures: a third of the
// bytes are compressed. Where decodePicture says that imgcodecs stands in, it writes the same colours without
// a palette. `bytes` is replaced; it is empty where the answer is false: for no indices (rcEmptyImage), those
// of another type or dimension (rcImageType, rcImageDimensions), a palette of another size or without the
// colour of an index (rcOption), or where the format can't be loaded (rcFailed). Reentrant.
ORX_API bool encodeIndexedPng(const cv::Mat& indices, const std::vector<cv::Vec3b>& palette,
                              std::vector<unsigned char>& bytes);

}  // namespace orx

#endif
