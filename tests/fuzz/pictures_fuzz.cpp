// Pictures as the bytes of files: decodePicture against cv::imdecode, encodePicture against the picture.
#include "orxFunctions/files/picture_bytes.h"

#include <zlib.h>

#include <array>
#include <cstdint>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "tests/fuzz/fuzz_input.h"

namespace {

using fuzz::require;
using Bytes = std::vector<uchar>;

constexpr std::size_t kSignature = 8;
constexpr std::size_t kChunkBegin = 8;  // length and type
constexpr std::size_t kChunkEnd = 4;    // checksum

std::uint32_t numberAt(const Bytes& bytes, std::size_t at) {
    return std::uint32_t{bytes[at]} << 24U | std::uint32_t{bytes[at + 1]} << 16U |
           std::uint32_t{bytes[at + 2]} << 8U | bytes[at + 3];
}

// Pictures of many megapixels are sound, but slow.
bool claimsMuch(const Bytes& bytes) {
    return bytes.size() > 24 && bytes[1] == 'P' &&
           std::uint64_t{numberAt(bytes, 16)} * numberAt(bytes, 20) > 1U << 20U;
}

cv::Mat byOpenCv(const Bytes& bytes, int flags) {
    if (bytes.empty()) return {};
    try {
        return cv::imdecode(bytes, flags);
    } catch (const cv::Exception&) {
        return {};
    }
}

void checkBytes(const Bytes& bytes) {
    if (claimsMuch(bytes)) return;
    for (const int flags :
         {int{cv::IMREAD_GRAYSCALE}, cv::IMREAD_GRAYSCALE | cv::IMREAD_ANYDEPTH, int{cv::IMREAD_COLOR}}) {
        const cv::Mat picture = orx::decodePicture(bytes, flags);
        const cv::Mat expected = byOpenCv(bytes, flags);
        require(picture.empty() == expected.empty() && (picture.empty() || fuzz::same(picture, expected)),
                "pixels as OpenCV gives them");
    }
}

void checkAnything(fuzz::Input& input) {
    const std::string text = input.rest();
    checkBytes({text.begin(), text.end()});
}

// So that damage is met behind the checksums, too.
void mendChecksums(Bytes& bytes) {
    for (std::size_t at = kSignature; at + kChunkBegin + kChunkEnd <= bytes.size();) {
        const std::size_t size = numberAt(bytes, at);
        if (size > bytes.size() - at - kChunkBegin - kChunkEnd) return;
        const std::size_t end = at + kChunkBegin + size;
        const auto sum = static_cast<std::uint32_t>(crc32(0, &bytes[at + 4], static_cast<uInt>(size + 4)));
        for (std::size_t i = 0; i < kChunkEnd; ++i)
            bytes[end + i] = static_cast<uchar>(sum >> (24U - 8U * static_cast<unsigned>(i)));
        at = end + kChunkEnd;
    }
}

void checkDamaged(fuzz::Input& input) {
    const cv::Mat picture = input.picture();
    const std::vector<int> parameters{cv::IMWRITE_PNG_COMPRESSION, input.between(0, 9),
                                      cv::IMWRITE_PNG_STRATEGY, input.between(0, 4)};
    Bytes bytes;
    if (picture.empty() || picture.channels() == 2) return;  // which imencode throws for
    if (!cv::imencode(".png", picture, bytes, parameters)) return;
    const bool isMended = input.flag();
    for (int left = input.between(0, 4); left > 0; --left) {
        const auto at = static_cast<std::size_t>(input.between(0, static_cast<int>(bytes.size()) - 1));
        if (input.between(0, 5) == 0)
            bytes.resize(at + 1);
        else
            bytes[at] = static_cast<uchar>(input.byte());
    }
    if (isMended) mendChecksums(bytes);
    checkBytes(bytes);
}

void checkEncoding(fuzz::Input& input) {
    static const std::array<const char*, 4> kExtensions = {".png", ".bmp", ".tif", ".none"};
    const cv::Mat picture = input.picture();
    const std::string extension = kExtensions[input.byte() % kExtensions.size()];
    Bytes bytes{1, 2};
    if (!orx::encodePicture(extension, picture, bytes)) {
        require(bytes.empty(), "no bytes with a refusal");
        return;
    }
    // Which has no other depths, and of which transparency is not read.
    if (extension == ".bmp" && (picture.depth() != CV_8U || picture.channels() == 4)) return;
    require(fuzz::same(cv::imdecode(bytes, cv::IMREAD_UNCHANGED), picture), "the picture comes back");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::runOneOf({checkAnything, checkDamaged, checkDamaged, checkEncoding}, bytes, size);
    return 0;
}
