#include "drivers/TQVisionDriver/frame_conversion.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <random>
#include <vector>

#include "drivers/vision_driver.h"

namespace {

using vision::RawFrame;
using vision::toPicture;

using Bytes = std::vector<unsigned char>;

RawFrame frameOf(const Bytes& bytes, int width, int height, std::uint32_t code, int rowPadding = 0) {
    return {bytes.data(), bytes.size(), width, height, rowPadding, code};
}

// Converts, and gives the samples row by row.
Bytes converted(const RawFrame& frame) {
    cv::Mat picture;
    if (!toPicture(frame, picture)) return {};
    EXPECT_EQ(picture.size(), cv::Size(frame.width, frame.height));
    EXPECT_EQ(picture.type(), CV_8UC(vision::channelsOf(frame.code)));
    EXPECT_TRUE(picture.isContinuous());
    return {picture.datastart, picture.dataend};
}

struct Case {
    const char* name;
    std::uint32_t code;
    int width;
    Bytes bytes;
    Bytes expected;
};

// Two rows each. The samples of the deep formats are 0x2A5 and 0x10F, 0x3FF and 0x003 (10 bits), 0xABC and
// 0x123, 0xFFF and 0x00F (12 bits), packed by hand.
TEST(FrameConversion, EveryFormatByHand) {
    const Case cases[] = {
        {"mono 8", vision::kMono8, 2, {1, 2, 3, 4}, {1, 2, 3, 4}},
        {"mono 10",
         vision::kMono10,
         2,
         {0xA5, 0x02, 0x0F, 0x01, 0xFF, 0x03, 0x03, 0x00},
         {0xA9, 0x43, 0xFF, 0x00}},
        {"mono 10 packed",
         vision::kMono10Packed,
         2,
         {0xA9, 0x31, 0x43, 0xFF, 0x33, 0x00},
         {0xA9, 0x43, 0xFF, 0x00}},
        {"mono 10 p", vision::kMono10p, 2, {0xA5, 0x3E, 0xF4, 0xFF, 0x00}, {0xA9, 0x43, 0xFF, 0x00}},
        {"mono 12",
         vision::kMono12,
         2,
         {0xBC, 0x0A, 0x23, 0x01, 0xFF, 0x0F, 0x0F, 0x00},
         {0xAB, 0x12, 0xFF, 0x00}},
        {"mono 12 packed",
         vision::kMono12Packed,
         2,
         {0xAB, 0x3C, 0x12, 0xFF, 0xFF, 0x00},
         {0xAB, 0x12, 0xFF, 0x00}},
        {"mono 12 p", vision::kMono12p, 2, {0xBC, 0x3A, 0x12, 0xFF, 0xFF, 0x00}, {0xAB, 0x12, 0xFF, 0x00}},
        {"mono 16", vision::kMono16, 1, {0x34, 0x12, 0xFF, 0xFE}, {0x12, 0xFE}},
        {"rgb 8", vision::kRGB8, 1, {1, 2, 3, 4, 5, 6}, {3, 2, 1, 6, 5, 4}},
        {"bgr 8", vision::kBGR8, 1, {1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 6}},
    };
    for (const Case& example : cases) {
        EXPECT_EQ(converted(frameOf(example.bytes, example.width, 2, example.code)), example.expected)
            << example.name;
    }
}

// Three pixels in a row: the second row begins in the middle of a triple, unless padding makes it start anew.
TEST(FrameConversion, PackedRowsOfOddWidth) {
    EXPECT_EQ(converted(frameOf({10, 0, 11, 12, 0, 20, 21, 0, 22}, 3, 2, vision::kMono12Packed)),
              (Bytes{10, 11, 12, 20, 21, 22}));
    EXPECT_EQ(
        converted(frameOf({10, 0, 11, 12, 0, 99, 20, 0, 21, 22, 0, 99}, 3, 2, vision::kMono12Packed, 1)),
        (Bytes{10, 11, 12, 20, 21, 22}));
    EXPECT_EQ(converted(frameOf({1, 2, 99, 99, 3, 4, 99, 99}, 2, 2, vision::kMono8, 2)), (Bytes{1, 2, 3, 4}));
}

// The colour of the filter over the pixel (x, y): 0 blue, 1 green, 2 red.
int filterAt(std::uint32_t code, int x, int y) {
    const char* pattern = "RGGB";
    if (code == vision::kBayerGB8) pattern = "GBRG";
    if (code == vision::kBayerGR8) pattern = "GRBG";
    if (code == vision::kBayerBG8) pattern = "BGGR";
    const char filter = pattern[(y % 2) * 2 + x % 2];
    return filter == 'B' ? 0 : filter == 'G' ? 1 : 2;
}

// Inside the border each missing colour is the mean of that colour's nearest pixels, rounded half up.
TEST(FrameConversion, BayerPatternsAreInterpolated) {
    constexpr int kWidth = 12;
    constexpr int kHeight = 10;
    std::mt19937 random(3);
    Bytes bytes(kWidth * kHeight);
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
    for (const std::uint32_t code :
         {vision::kBayerRG8, vision::kBayerGB8, vision::kBayerGR8, vision::kBayerBG8}) {
        SCOPED_TRACE(code);
        const Bytes picture = converted(frameOf(bytes, kWidth, kHeight, code));
        ASSERT_EQ(picture.size(), bytes.size() * 3);
        for (int y = 1; y < kHeight - 1; ++y) {
            for (int x = 1; x < kWidth - 1; ++x) {
                for (int colour = 0; colour < 3; ++colour) {
                    // The pixel itself, or all of the colour in its neighbourhood: 2 or 4, of which only
                    // those beside it count for green.
                    int sum = 0;
                    int count = 0;
                    for (int dy = -1; dy <= 1; ++dy) {
                        for (int dx = -1; dx <= 1; ++dx) {
                            const bool own = filterAt(code, x, y) == colour;
                            if (own ? (dx != 0 || dy != 0) : (colour == 1 && dx * dy != 0)) continue;
                            if (filterAt(code, x + dx, y + dy) != colour) continue;
                            const int at = (y + dy) * kWidth + x + dx;
                            sum += bytes[static_cast<std::size_t>(at)];
                            ++count;
                        }
                    }
                    const int expected = (sum + count / 2) / count;
                    EXPECT_EQ(picture[static_cast<std::size_t>((y * kWidth + x) * 3 + colour)], expected)
                        << x << ", " << y << " colour " << colour;
                }
            }
        }
    }
}

TEST(FrameConversion, WhatIsTooShortOrUnknownIsRefused) {
    const Bytes bytes(1000, 7);
    cv::Mat picture(1, 1, CV_8UC1, cv::Scalar(42));
    for (int format = VD_PIXEL_MONO8; format <= VD_PIXEL_BGR8; ++format) {
        for (const std::uint32_t code : vision::pixelCodes(format)) {
            SCOPED_TRACE(code);
            EXPECT_EQ(vision::pixelFormat(code), format);
            const std::size_t needed = (16 * 10 * ((code >> 16U) & 0xFFU) + 7) / 8;
            RawFrame frame = frameOf(bytes, 16, 10, code);
            frame.size = needed - 1;
            EXPECT_FALSE(toPicture(frame, picture));
            EXPECT_FALSE(vision::isPlainPicture(frame));
            for (const int side : {0, -1, 1 << 17, 1 << 30}) {
                EXPECT_FALSE(toPicture(frameOf(bytes, side, 1, code), picture));
                EXPECT_FALSE(toPicture(frameOf(bytes, 1, side, code), picture));
            }
            EXPECT_FALSE(toPicture(frameOf(bytes, 1, 1, code, -1), picture));
            EXPECT_EQ(picture.total(), 1U);
            EXPECT_EQ(picture.at<unsigned char>(0, 0), 42);
            // Exactly enough, in a buffer that ends there: a read beyond it is found by AddressSanitizer.
            const Bytes exact(needed, 9);
            cv::Mat full;
            EXPECT_TRUE(toPicture(frameOf(exact, 16, 10, code), full));
        }
    }
    EXPECT_FALSE(toPicture(frameOf(bytes, 16, 10, 0x0210001F), picture));
    EXPECT_EQ(vision::channelsOf(0x0210001F), 0);
    EXPECT_TRUE(vision::pixelCodes(12).empty());
    EXPECT_TRUE(vision::pixelCodes(-1).empty());
    EXPECT_FALSE(toPicture(RawFrame(), picture));
}

}  // namespace
