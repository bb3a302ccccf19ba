#include "orxFunctions/files/picture_bytes.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <limits>
#include <new>

#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/pictures/picture_modules.h"
#include "orxFunctions/platform/pictures/plain_png_internal.h"

namespace orx {
namespace {

constexpr const char* kDecode = "decodePicture";
constexpr const char* kEncode = "encodePicture";
constexpr const char* kEncodeIndexed = "encodeIndexedPng";

bool isPng(std::string extension) {
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".png";
}

// Null, and refused, where the formats can't be loaded.
const platform::PictureCodecs* codecsFor(const char* function) {
    std::string reason;
    const platform::PictureCodecs* const codecs = platform::pictureModules.codecs(&reason);
    if (codecs == nullptr) refuse(rcFailed, function, "%s", reason.c_str());
    return codecs;
}

cv::Mat decoded(const std::vector<unsigned char>& bytes, int flags) {
    try {
        cv::Mat picture = platform::decodePlainPng(bytes.data(), bytes.size(), flags);
        if (!picture.empty()) return picture;
        const platform::PictureCodecs* const codecs = codecsFor(kDecode);
        if (codecs == nullptr) return {};
        picture = codecs->imdecode(
            cv::Mat(1, static_cast<int>(bytes.size()), CV_8UC1, const_cast<unsigned char*>(bytes.data())),
            flags);
        if (picture.empty()) refuse(rcFileFormat, kDecode, "not a picture, or of a kind that can't be read");
        return picture;
    } catch (const cv::Exception& error) {
        refuse(error.code == cv::Error::StsNoMem ? rcMemory : rcImageSize, kDecode,
               "the picture is damaged or too large: %s", error.err.c_str());
    } catch (const std::bad_alloc&) {
        refuse(rcMemory, kDecode);
    } catch (const std::exception& error) {
        refuse(rcImageSize, kDecode, "the picture is damaged or too large: %s", error.what());
    }
    return {};
}

bool encodedByCodecs(const char* function, const std::string& extension, const cv::Mat& picture,
                     std::vector<unsigned char>& bytes, const std::vector<int>& parameters) {
    const platform::PictureCodecs* const codecs = codecsFor(function);
    if (codecs == nullptr) return false;
    try {
        if (codecs->imencode(extension, picture, bytes, parameters)) return true;
        refuse(rcFailed, function, "the format %s does not take such a picture", extension.c_str());
    } catch (const cv::Exception& error) {
        refuse(rcFailed, function, "the format %s does not take such a picture: %s", extension.c_str(),
               error.err.c_str());
    }
    bytes.clear();
    return false;
}

bool takesPalette(const cv::Mat& indices, const std::vector<cv::Vec3b>& palette) {
    constexpr std::size_t kMost = 256;
    if (palette.empty() || palette.size() > kMost)
        return refuse(rcOption, kEncodeIndexed, "the palette has %zu colours; taken are 1 to 256",
                      palette.size());
    double most = 0.0;
    cv::minMaxLoc(indices, nullptr, &most);
    return most < static_cast<double>(palette.size()) ||
           refuse(rcOption, kEncodeIndexed, "there is an index of %.0f, the palette has %zu colours", most,
                  palette.size());
}

}  // namespace

cv::Mat decodePicture(const std::vector<unsigned char>& bytes, int flags) {
    if (bytes.empty()) {
        refuse(rcFileFormat, kDecode, "there are no bytes");
        return {};
    }
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        refuse(rcImageSize, kDecode, "the file has %zu bytes; taken are up to 2147483647", bytes.size());
        return {};
    }
    return decoded(bytes, flags);
}

bool encodePicture(const std::string& extension, const cv::Mat& picture, std::vector<unsigned char>& bytes,
                   const std::vector<int>& parameters) {
    bytes.clear();
    if (!takesImage(picture, kEncode)) return false;
    if (parameters.empty() && isPng(extension) && platform::encodePlainPng(picture, bytes)) return true;
    return encodedByCodecs(kEncode, extension, picture, bytes, parameters);
}

bool encodeIndexedPng(const cv::Mat& indices, const std::vector<cv::Vec3b>& palette,
                      std::vector<unsigned char>& bytes) {
    bytes.clear();
    if (!takesBytes(indices, kEncodeIndexed) || !takesPalette(indices, palette)) return false;
    if (platform::encodePalettePng(indices, palette, bytes)) return true;
    cv::Mat picture(indices.size(), CV_8UC3);
    std::transform(indices.begin<unsigned char>(), indices.end<unsigned char>(), picture.begin<cv::Vec3b>(),
                   [&](unsigned char index) { return palette[index]; });
    return encodedByCodecs(kEncodeIndexed, ".png", picture, bytes, {});
}

}  // namespace orx
