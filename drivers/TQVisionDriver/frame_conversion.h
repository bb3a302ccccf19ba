// Pictures as cameras send them, turned into what VDGetImage gives: 8-bit grey or blue green red.
#ifndef DRIVERS_TQVISIONDRIVER_FRAME_CONVERSION_H
#define DRIVERS_TQVISIONDRIVER_FRAME_CONVERSION_H

#include <cstddef>
#include <cstdint>
#include <opencv2/core/mat.hpp>
#include <vector>

namespace vision {

// Codes of the GenICam Pixel Format Naming Convention. The third byte is the number of bits per pixel.
enum PixelCode : std::uint32_t {
    kMono8 = 0x01080001,
    kMono10 = 0x01100003,
    kMono10Packed = 0x010C0004,  // of GigE Vision: two pixels in three bytes
    kMono10p = 0x010A0046,       // a stream of bits, lowest first
    kMono12 = 0x01100005,
    kMono12Packed = 0x010C0006,
    kMono12p = 0x010C0047,
    kMono16 = 0x01100007,
    kBayerGR8 = 0x01080008,
    kBayerRG8 = 0x01080009,
    kBayerGB8 = 0x0108000A,
    kBayerBG8 = 0x0108000B,
    kRGB8 = 0x02180014,
    kBGR8 = 0x02180015
};

// The codes that a value of enum VDPixelFormat stands for, the first to be tried first; none for other
// values.
std::vector<std::uint32_t> pixelCodes(int format);
// The enum VDPixelFormat of a code, -1 when there is none.
int pixelFormat(std::uint32_t code);

struct RawFrame {
    const unsigned char* data = nullptr;
    std::size_t size = 0;  // bytes
    int width = 0;
    int height = 0;
    int rowPadding = 0;  // bytes after each row
    std::uint32_t code = 0;
};

// 1 or 3; 0 for a format that can't be converted.
int channelsOf(std::uint32_t code);

// Whether the bytes can be handed out as they are: grey or blue green red, rows without gaps, all of them
// there.
bool isPlainPicture(const RawFrame& frame);

// Fills `picture`. Of samples with more than 8 bits the upper 8 remain, so that packed and unpacked formats
// give the same. False, with `picture` unchanged, for a format that can't be converted and for too few bytes.
bool toPicture(const RawFrame& frame, cv::Mat& picture);

}  // namespace vision

#endif
