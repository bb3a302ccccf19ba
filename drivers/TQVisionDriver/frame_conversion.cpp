#include "drivers/TQVisionDriver/frame_conversion.h"

#include <algorithm>
#include <array>
#include <opencv2/imgproc.hpp>

#include "drivers/vision_driver.h"

namespace vision {
namespace {

struct FormatCode {
    int format;
    std::uint32_t code;
};

constexpr std::array kFormatCodes = {
    FormatCode{VD_PIXEL_MONO8, kMono8},
    FormatCode{VD_PIXEL_MONO10, kMono10},
    FormatCode{VD_PIXEL_MONO10_PACKED, kMono10Packed},
    FormatCode{VD_PIXEL_MONO10_PACKED, kMono10p},
    FormatCode{VD_PIXEL_MONO12, kMono12},
    FormatCode{VD_PIXEL_MONO12_PACKED, kMono12Packed},
    FormatCode{VD_PIXEL_MONO12_PACKED, kMono12p},
    FormatCode{VD_PIXEL_MONO16, kMono16},
    FormatCode{VD_PIXEL_BAYER_RG8, kBayerRG8},
    FormatCode{VD_PIXEL_BAYER_GB8, kBayerGB8},
    FormatCode{VD_PIXEL_BAYER_GR8, kBayerGR8},
    FormatCode{VD_PIXEL_BAYER_BG8, kBayerBG8},
    FormatCode{VD_PIXEL_RGB8, kRGB8},
    FormatCode{VD_PIXEL_BGR8, kBGR8},
};

constexpr int kLongestSide = 1 << 16;

std::uint64_t bitsPerPixel(std::uint32_t code) { return (code >> 16U) & 0xFFU; }

// From the first byte of one row to that of the next. Rows of packed pixels follow each other without a gap,
// in the middle of a byte if need be; only padding makes each start at a byte.
std::uint64_t rowBytes(const RawFrame& frame) {
    const std::uint64_t bits = static_cast<std::uint64_t>(frame.width) * bitsPerPixel(frame.code);
    return (bits + 7U) / 8U + static_cast<std::uint64_t>(frame.rowPadding);
}

bool hasAllBytes(const RawFrame& frame) {
    if (frame.data == nullptr || frame.width <= 0 || frame.height <= 0 || frame.rowPadding < 0 ||
        frame.width > kLongestSide || frame.height > kLongestSide) {
        return false;
    }
    const auto rows = static_cast<std::uint64_t>(frame.height);
    const std::uint64_t needed =
        frame.rowPadding > 0
            ? rows * rowBytes(frame)
            : (rows * static_cast<std::uint64_t>(frame.width) * bitsPerPixel(frame.code) + 7U) / 8U;
    return needed <= frame.size;
}

// Calls convert(from, to, count) for each stretch of pixels that is stored without a gap: `from`
// points to the byte at which the stretch begins.
template <typename Convert>
void forEachStretch(const RawFrame& frame, cv::Mat& picture, const Convert& convert) {
    picture.create(frame.height, frame.width, CV_8UC1);
    if (frame.rowPadding == 0) {
        convert(frame.data, picture.ptr<unsigned char>(), picture.total());
        return;
    }
    for (int y = 0; y < frame.height; ++y) {
        convert(frame.data + static_cast<std::uint64_t>(y) * rowBytes(frame), picture.ptr<unsigned char>(y),
                static_cast<std::size_t>(frame.width));
    }
}

// Samples of `bits` bits in two bytes each, the lower first.
void fromWords(const RawFrame& frame, unsigned bits, cv::Mat& picture) {
    const unsigned shift = bits - 8U;
    forEachStretch(frame, picture, [shift](const unsigned char* from, unsigned char* to, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const unsigned sample = from[2 * i] | (static_cast<unsigned>(from[2 * i + 1]) << 8U);
            to[i] = static_cast<unsigned char>(std::min(sample >> shift, 255U));
        }
    });
}

// Two pixels in three bytes: the upper 8 bits of each are the first and the third byte, the rest is between
// them.
void fromTriples(const RawFrame& frame, cv::Mat& picture) {
    forEachStretch(frame, picture, [](const unsigned char* from, unsigned char* to, std::size_t count) {
        for (std::size_t i = 0; i + 1 < count; i += 2) {
            to[i] = from[i / 2 * 3];
            to[i + 1] = from[i / 2 * 3 + 2];
        }
        if (count % 2 != 0) to[count - 1] = from[count / 2 * 3];
    });
}

// A stream of bits, the lowest bit of each pixel first. The upper 8 bits of a pixel lie in at most two bytes.
void fromBitStream(const RawFrame& frame, unsigned bits, cv::Mat& picture) {
    forEachStretch(frame, picture, [bits](const unsigned char* from, unsigned char* to, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t firstBit = i * bits + (bits - 8U);
            const std::size_t byte = firstBit / 8U;
            const auto within = static_cast<unsigned>(firstBit % 8U);
            unsigned pair = from[byte];
            if (within > 0) pair |= static_cast<unsigned>(from[byte + 1]) << 8U;
            to[i] = static_cast<unsigned char>((pair >> within) & 0xFFU);
        }
    });
}

cv::Mat view(const RawFrame& frame, int type) {
    return cv::Mat(frame.height, frame.width, type, const_cast<unsigned char*>(frame.data),
                   static_cast<std::size_t>(rowBytes(frame)));
}

}  // namespace

std::vector<std::uint32_t> pixelCodes(int format) {
    std::vector<std::uint32_t> codes;
    for (const FormatCode& known : kFormatCodes) {
        if (known.format == format) codes.push_back(known.code);
    }
    return codes;
}

int pixelFormat(std::uint32_t code) {
    const auto* const found = std::find_if(kFormatCodes.begin(), kFormatCodes.end(),
                                           [code](const FormatCode& known) { return known.code == code; });
    return found == kFormatCodes.end() ? -1 : found->format;
}

int channelsOf(std::uint32_t code) {
    switch (pixelFormat(code)) {
        case -1:
            return 0;
        case VD_PIXEL_BAYER_RG8:
        case VD_PIXEL_BAYER_GB8:
        case VD_PIXEL_BAYER_GR8:
        case VD_PIXEL_BAYER_BG8:
        case VD_PIXEL_RGB8:
        case VD_PIXEL_BGR8:
            return 3;
        default:
            return 1;
    }
}

bool isPlainPicture(const RawFrame& frame) {
    return (frame.code == kMono8 || frame.code == kBGR8) && frame.rowPadding == 0 && hasAllBytes(frame);
}

bool toPicture(const RawFrame& frame, cv::Mat& picture) {
    if (channelsOf(frame.code) == 0 || !hasAllBytes(frame)) return false;
    switch (frame.code) {
        case kMono8:
            view(frame, CV_8UC1).copyTo(picture);
            break;
        case kMono10:
            fromWords(frame, 10, picture);
            break;
        case kMono12:
            fromWords(frame, 12, picture);
            break;
        case kMono16:
            fromWords(frame, 16, picture);
            break;
        case kMono10Packed:
        case kMono12Packed:
            fromTriples(frame, picture);
            break;
        case kMono10p:
            fromBitStream(frame, 10, picture);
            break;
        case kMono12p:
            fromBitStream(frame, 12, picture);
            break;
        // OpenCV names a pattern by the second pixel of the second row, GenICam by the first of the first.
        case kBayerRG8:
            cv::cvtColor(view(frame, CV_8UC1), picture, cv::COLOR_BayerBG2BGR);
            break;
        case kBayerGB8:
            cv::cvtColor(view(frame, CV_8UC1), picture, cv::COLOR_BayerGR2BGR);
            break;
        case kBayerGR8:
            cv::cvtColor(view(frame, CV_8UC1), picture, cv::COLOR_BayerGB2BGR);
            break;
        case kBayerBG8:
            cv::cvtColor(view(frame, CV_8UC1), picture, cv::COLOR_BayerRG2BGR);
            break;
        case kRGB8:
            cv::cvtColor(view(frame, CV_8UC3), picture, cv::COLOR_RGB2BGR);
            break;
        default:
            view(frame, CV_8UC3).copyTo(picture);
            break;
    }
    return true;
}

}  // namespace vision
