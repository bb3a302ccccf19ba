#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <filesystem>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/temporary_folder.h"

namespace {

std::string int32(std::int32_t value) {
    const auto bits = static_cast<std::uint32_t>(value);
    std::string bytes;
    for (unsigned shift = 0; shift < 32; shift += 8) bytes += static_cast<char>((bits >> shift) & 0xFFU);
    return bytes;
}

std::string padded(std::string text, std::size_t size) {
    text.resize(size, '\0');
    return text;
}

std::string rawBytes(const cv::Mat& m) {
    return {reinterpret_cast<const char*>(m.data), m.total() * m.elemSize()};
}

struct Loaded {
    explicit Loaded(const std::string& path) { result = orx::streamFile2Image(path, image, size, text); }

    cv::Mat image = cv::Mat::ones(1, 2, CV_8U);
    cv::Size size{3, 4};
    std::string text = "before";
    bool result = false;
};

bool isUntouched(const Loaded& loaded) {
    return loaded.image.size() == cv::Size(2, 1) && loaded.size == cv::Size(3, 4) && loaded.text == "before";
}

class StreamFile : public testing::Test {
  protected:
    test::TemporaryFolder folder;
    std::string path = folder / "image.bin";
    cv::Mat matrix = (cv::Mat_<double>(2, 3) << 1, -2.5, 1e300, 0, 5e-324, 3);
};

TEST_F(StreamFile, LayoutAndReturn) {
    ASSERT_TRUE(orx::image2StreamFile(matrix, {640, 480}, path, "abc"));
    EXPECT_EQ(test::bytesOf(path),
              int32(2) + int32(3) + rawBytes(matrix) + int32(640) + int32(480) + padded("abc", 255));
    const Loaded loaded(path);
    ASSERT_TRUE(loaded.result);
    ASSERT_EQ(loaded.image.type(), CV_64FC1);
    EXPECT_EQ(rawBytes(loaded.image), rawBytes(matrix));
    EXPECT_EQ(loaded.size, cv::Size(640, 480));
    EXPECT_EQ(loaded.text, "abc");
}

TEST_F(StreamFile, TextFieldHas255Bytes) {
    for (const std::size_t length : {0U, 254U, 255U, 256U, 5000U}) {
        ASSERT_TRUE(orx::image2StreamFile(matrix, {1, 1}, path, std::string(length, 'x')));
        EXPECT_EQ(std::filesystem::file_size(path), 271U + 48U);
        EXPECT_EQ(Loaded(path).text, std::string(std::min<std::size_t>(length, 255), 'x'));
    }
    ASSERT_TRUE(orx::image2StreamFile(matrix, {1, 1}, path, std::string("a\0b", 3)));
    EXPECT_EQ(test::bytesOf(path).substr(64), padded(std::string("a\0b", 3), 255));
    EXPECT_EQ(Loaded(path).text, "a");
}

TEST_F(StreamFile, RefusesMatricesWithoutElements) {
    for (const cv::Mat& empty : {cv::Mat(), cv::Mat(0, 5, CV_64F), cv::Mat(5, 0, CV_64F)}) {
        EXPECT_FALSE(orx::image2StreamFile(empty, {1, 1}, path, ""));
    }
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_FALSE(orx::image2StreamFile(matrix, {1, 1}, folder / "missing/x.bin", ""));
    EXPECT_FALSE(orx::image2StreamFile(matrix, {1, 1}, folder.name(), ""));
    EXPECT_FALSE(orx::image2StreamFile(matrix, {1, 1}, "", ""));
}

TEST_F(StreamFile, ShortMatricesArePaddedWithZeros) {
    const cv::Mat bytes = (cv::Mat_<uchar>(2, 5) << 1, 2, 3, 4, 5, 6, 7, 8, 9, 10);
    ASSERT_TRUE(orx::image2StreamFile(bytes, {1, 1}, path, ""));
    EXPECT_EQ(test::bytesOf(path).substr(8, 80), padded(rawBytes(bytes), 80));
}

// Consecutive elements of the larger image from the view's first one, never past its end.
TEST_F(StreamFile, ViewsAreWrittenAsTheyLieInMemory) {
    cv::Mat large(4, 5, CV_64F);
    for (int i = 0; i < 20; ++i) large.at<double>(i / 5, i % 5) = i + 1;
    ASSERT_TRUE(orx::image2StreamFile(large(cv::Rect(1, 1, 2, 2)), {1, 1}, path, ""));
    EXPECT_EQ(rawBytes(Loaded(path).image), rawBytes((cv::Mat_<double>(2, 2) << 7, 8, 9, 10)));
    ASSERT_TRUE(orx::image2StreamFile(large(cv::Rect(3, 3, 2, 1)), {1, 1}, path, ""));
    EXPECT_EQ(rawBytes(Loaded(path).image), rawBytes((cv::Mat_<double>(1, 2) << 19, 20)));
    cv::Mat wide(1, 24, CV_8U, cv::Scalar(1));
    ASSERT_TRUE(orx::image2StreamFile(wide(cv::Rect(20, 0, 4, 1)), {1, 1}, path, ""));
    EXPECT_EQ(test::bytesOf(path).substr(8, 32), padded("\1\1\1\1", 32));
    // A header over host memory owns no padding behind its last row.
    uchar bytes[10] = {1, 2, 3, 0, 0, 4, 5, 6, 99, 99};
    ASSERT_TRUE(orx::image2StreamFile(cv::Mat(2, 3, CV_8UC1, bytes, 5), {1, 1}, path, ""));
    EXPECT_EQ(test::bytesOf(path).substr(8, 48), padded({"\1\2\3\0\0\4\5\6", 8}, 48));
}

TEST_F(StreamFile, ManyDimensionsCountAsOneElement) {
    const int sizes[] = {2, 2, 2};
    ASSERT_TRUE(orx::image2StreamFile(cv::Mat(3, sizes, CV_64F, cv::Scalar(1.5)), {6, 7}, path, "t"));
    const double element = 1.5;
    EXPECT_EQ(test::bytesOf(path), int32(-1) + int32(-1) +
                                       std::string(reinterpret_cast<const char*>(&element), 8) + int32(6) +
                                       int32(7) + padded("t", 255));
}

TEST_F(StreamFile, WhatAShortFileLacksIsZero) {
    ASSERT_TRUE(orx::image2StreamFile(matrix, {640, 480}, path, "abc"));
    const std::string whole = test::bytesOf(path);
    for (std::size_t length = 0; length < whole.size(); length += length < 66 ? 1 : 40) {
        test::writeBytes(path, whole.substr(0, length));
        const std::string rest = padded(whole.substr(0, length), whole.size());
        const Loaded loaded(path);
        ASSERT_TRUE(loaded.result);
        // A number of which only some bytes are there keeps those bytes, the lowest first.
        const int rows = length > 0 ? 2 : 0;
        const int cols = length > 4 ? 3 : 0;
        ASSERT_EQ(loaded.image.size(), cv::Size(cols, rows)) << length;
        ASSERT_EQ(loaded.image.type(), CV_64FC1);
        if (length < 8) continue;
        EXPECT_EQ(rawBytes(loaded.image), rest.substr(8, 48)) << length;
        std::int32_t size[2];
        std::memcpy(size, rest.data() + 56, sizeof size);
        EXPECT_EQ(loaded.size, cv::Size(size[0], size[1])) << length;
        EXPECT_EQ(loaded.text, std::string(rest.c_str() + 64)) << length;
    }
}

TEST_F(StreamFile, HostileSizesAreRefused) {
    const std::pair<int, int> sizes[] = {{-1, 3},
                                         {3, -1},
                                         {-1, -1},
                                         {INT_MIN, INT_MIN},
                                         {INT_MAX, INT_MAX},
                                         {1 << 20, 1 << 20},
                                         {1 << 14, (1 << 13) + 1},
                                         {1 << 30, 1 << 30},
                                         {1073807362, 2147352580}};  // their bytes are 64 modulo 2^64
    for (const auto& [rows, cols] : sizes) {
        test::writeBytes(path, int32(rows) + int32(cols) + std::string(40, 'x'));
        const Loaded loaded(path);
        EXPECT_FALSE(loaded.result) << rows << " x " << cols;
        EXPECT_TRUE(isUntouched(loaded));
    }
    EXPECT_FALSE(Loaded(folder / "missing.bin").result);
    EXPECT_FALSE(Loaded(folder.name()).result);
    EXPECT_FALSE(Loaded("").result);
}

TEST_F(StreamFile, SizesWithoutElementsAreNoError) {
    test::writeBytes(path, int32(INT_MAX) + int32(0) + int32(8) + int32(9) + "text");
    const Loaded loaded(path);
    ASSERT_TRUE(loaded.result);
    EXPECT_TRUE(loaded.image.empty());
    EXPECT_EQ(loaded.size, cv::Size(8, 9));
    EXPECT_EQ(loaded.text, "text");
}

}  // namespace
