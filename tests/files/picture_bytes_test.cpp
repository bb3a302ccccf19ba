#include "orxFunctions/files/picture_bytes.h"

#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <random>

#include "tests/support/refusal_check.h"

namespace {

using orx::test::notRefused;
using orx::test::refusedWith;
using Bytes = std::vector<unsigned char>;

// What inspection reads, and what the library decodes in other ways.
constexpr int kFlags[] = {cv::IMREAD_GRAYSCALE, cv::IMREAD_GRAYSCALE | cv::IMREAD_ANYDEPTH, cv::IMREAD_COLOR,
                          cv::IMREAD_UNCHANGED};

void append(Bytes& bytes, const Bytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }
void append(Bytes& bytes, std::uint32_t number) {
    for (const unsigned shift : {24U, 16U, 8U, 0U})
        bytes.push_back(static_cast<unsigned char>(number >> shift));
}

Bytes chunk(const std::string& type, const Bytes& data) {
    Bytes bytes(type.begin(), type.end());
    append(bytes, data);
    std::uint32_t crc = ~0U;
    for (const unsigned byte : bytes) {
        crc ^= byte;
        for (int i = 0; i < 8; ++i) crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
    }
    Bytes all;
    append(all, static_cast<std::uint32_t>(data.size()));
    append(all, bytes);
    append(all, ~crc);
    return all;
}

// A stream of zlib whose one block is stored.
Bytes stored(const Bytes& data) {
    const auto size = static_cast<unsigned>(data.size());
    Bytes bytes = {0x78, 0x01, 0x01};
    for (const unsigned part : {size, ~size}) {
        bytes.push_back(static_cast<unsigned char>(part));
        bytes.push_back(static_cast<unsigned char>(part >> 8U));
    }
    append(bytes, data);
    std::uint32_t low = 1;
    std::uint32_t high = 0;
    for (const unsigned byte : data) {
        low = (low + byte) % 65521;
        high = (high + low) % 65521;
    }
    append(bytes, (high << 16U) | low);
    return bytes;
}

// A PNG file put together by hand, of rows that are random bytes but for the filters' numbers.
struct PngFile {
    std::uint32_t width = 37;
    std::uint32_t height = 10;
    int depth = 8;
    int colour = 0;
    int interlace = 0;
    std::size_t pixel = 1;                       // bytes
    std::vector<int> filters = {0, 1, 2, 3, 4};  // of the rows, over and over
    std::vector<Bytes> before;                   // chunks before the data
    std::vector<Bytes> between;                  // and between two parts of it
    std::vector<Bytes> after;
    Bytes zlib;  // in place of the rows'

    Bytes bytes() const {
        Bytes header;
        append(header, width);
        append(header, height);
        append(header, {static_cast<unsigned char>(depth), static_cast<unsigned char>(colour), 0, 0,
                        static_cast<unsigned char>(interlace)});
        Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
        append(file, chunk("IHDR", header));
        for (const Bytes& more : before) append(file, more);
        const Bytes data = zlib.empty() ? stored(rows()) : zlib;
        const auto middle = data.begin() + static_cast<std::ptrdiff_t>(data.size() / 2);
        append(file, chunk("IDAT", Bytes(data.begin(), middle)));
        for (const Bytes& more : between) append(file, more);
        append(file, chunk("IDAT", Bytes(middle, data.end())));
        for (const Bytes& more : after) append(file, more);
        append(file, chunk("IEND", {}));
        return file;
    }

    Bytes rows() const {
        std::mt19937 random(7);
        Bytes data;
        for (std::uint32_t y = 0; y < height; ++y) {
            data.push_back(static_cast<unsigned char>(filters[y % filters.size()]));
            for (std::size_t i = 0; i < width * pixel; ++i)
                data.push_back(static_cast<unsigned char>(random()));
        }
        return data;
    }
};

cv::Mat decodedByOpenCv(const Bytes& bytes, int flags) {
    try {
        return cv::imdecode(bytes, flags);
    } catch (const cv::Exception&) {
        return {};
    }
}

testing::AssertionResult sameAsOpenCv(const Bytes& bytes, int flags) {
    const cv::Mat expected = decodedByOpenCv(bytes, flags);
    const cv::Mat found = orx::decodePicture(bytes, flags);
    if (found.size() != expected.size() || found.type() != expected.type())
        return testing::AssertionFailure()
               << "flags " << flags << ": " << found.size() << " of type " << found.type() << ", not "
               << expected.size() << " of type " << expected.type();
    if (!expected.empty() && cv::norm(found, expected, cv::NORM_INF) != 0)
        return testing::AssertionFailure() << "flags " << flags << ": other pixels";
    return testing::AssertionSuccess();
}

TEST(PictureBytes, EachKindOfPngGivesTheSamePixelsAsOpenCv) {
    std::vector<PngFile> files;
    for (const auto& [depth, colour, pixel] : {std::tuple<int, int, std::size_t>{8, 0, 1},
                                               {16, 0, 2},
                                               {8, 2, 3},
                                               {16, 2, 6},
                                               {8, 6, 4},
                                               {8, 4, 2}}) {
        for (const std::uint32_t width : {1U, 2U, 37U}) {
            PngFile file;
            file.depth = depth;
            file.colour = colour;
            file.pixel = pixel;
            file.width = width;
            files.push_back(file);
        }
    }
    for (const int filter : {0, 1, 2, 3, 4}) {  // in the first row, too
        PngFile file;
        file.filters = {filter};
        files.push_back(file);
    }
    for (const PngFile& file : files) {
        SCOPED_TRACE(std::to_string(file.depth) + " bits, colour " + std::to_string(file.colour) + ", " +
                     std::to_string(file.width) + " wide");
        ASSERT_FALSE(decodedByOpenCv(file.bytes(), cv::IMREAD_COLOR).empty());
        for (const int flags : kFlags) EXPECT_TRUE(sameAsOpenCv(file.bytes(), flags));
    }
}

TEST(PictureBytes, ChunksAreReadAsOpenCvDoes) {
    const Bytes text = chunk("tEXt", {'a', 0, 'b'});
    const Bytes gamma = chunk("gAMA", {0, 0, 0x27, 0x10});
    Bytes broken = text;
    broken.back() ^= 1U;
    const Bytes transparent = chunk("tRNS", {0, 7});
    const Bytes turned =
        chunk("eXIf", {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1, 1, 0x12, 0, 3, 0, 0, 0, 1, 0, 6, 0, 0, 0, 0, 0, 0});
    for (const Bytes& more :
         {text, gamma, broken, transparent, turned, chunk("PLTE", {1, 2, 3}), chunk("anCi", {1}),
          chunk("CRIT", {1}), chunk("IDAT", {}), chunk("IHDR", {}), chunk("IEND", {})}) {
        SCOPED_TRACE(std::string(more.begin() + 4, more.begin() + 8));
        PngFile file;
        file.before = {more};
        EXPECT_TRUE(sameAsOpenCv(file.bytes(), cv::IMREAD_GRAYSCALE));
        file.before = {};
        file.between = {more};
        EXPECT_TRUE(sameAsOpenCv(file.bytes(), cv::IMREAD_GRAYSCALE));
        file.between = {};
        file.after = {more};
        EXPECT_TRUE(sameAsOpenCv(file.bytes(), cv::IMREAD_GRAYSCALE));
    }
    Bytes longer = PngFile().bytes();
    append(longer, {1, 2, 3});
    EXPECT_TRUE(sameAsOpenCv(longer, cv::IMREAD_GRAYSCALE));
}

TEST(PictureBytes, PalettesAreReadAsOpenCvDoes) {
    PngFile file;
    file.colour = 3;
    Bytes colours(3 * 256);
    for (std::size_t i = 0; i < colours.size(); ++i) colours[i] = static_cast<unsigned char>(7 * i);
    const Bytes palette = chunk("PLTE", colours);
    file.before = {palette};
    ASSERT_FALSE(decodedByOpenCv(file.bytes(), cv::IMREAD_COLOR).empty());
    for (const int flags : kFlags) EXPECT_TRUE(sameAsOpenCv(file.bytes(), flags));
    // Without one, twice, late, of no whole colours, too long, without the colours of some pixels,
    // transparent; and bits that pack several pixels.
    const auto of = [&](std::size_t bytes) {
        Bytes some = colours;
        some.resize(bytes);
        return chunk("PLTE", some);
    };
    for (const std::vector<Bytes>& before : {std::vector<Bytes>{},
                                             {palette, palette},
                                             {of(0)},
                                             {of(4)},
                                             {of(3 * 257)},
                                             {of(3 * 100)},
                                             {palette, chunk("tRNS", {7})}}) {
        file.before = before;
        EXPECT_TRUE(sameAsOpenCv(file.bytes(), cv::IMREAD_COLOR));
    }
    file.before = {};
    file.between = {palette};
    EXPECT_TRUE(sameAsOpenCv(file.bytes(), cv::IMREAD_COLOR));
    file.between = {};
    file.before = {palette};
    file.depth = 4;
    EXPECT_TRUE(sameAsOpenCv(file.bytes(), cv::IMREAD_COLOR));
}

TEST(PictureBytes, DamagedPngFilesAreReadOrRefusedAsByOpenCv) {
    PngFile small;
    small.width = 5;
    small.height = 3;
    small.filters = {4, 3, 1};
    const Bytes whole = small.bytes();
    for (std::size_t i = 0; i < whole.size(); ++i) {
        Bytes damaged = whole;
        damaged[i] ^= 0x21U;
        EXPECT_TRUE(sameAsOpenCv(damaged, cv::IMREAD_GRAYSCALE)) << "byte " << i;
        EXPECT_TRUE(sameAsOpenCv(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(i)),
                                 cv::IMREAD_GRAYSCALE))
            << "cut at " << i;
    }
    // With checksums of chunks that are right, so that the fault is met behind them.
    const Bytes zlib = stored(small.rows());
    for (std::size_t i = 0; i < zlib.size(); ++i) {
        for (const unsigned change : {0x01U, 0x80U}) {
            PngFile damaged = small;
            damaged.zlib = zlib;
            damaged.zlib[i] = static_cast<unsigned char>(damaged.zlib[i] ^ change);
            EXPECT_TRUE(sameAsOpenCv(damaged.bytes(), cv::IMREAD_GRAYSCALE)) << "byte " << i;
        }
    }
    for (const auto& [width, height] : {std::pair{0U, 3U},
                                        {5U, 0U},
                                        {5U, 2U},
                                        {5U, 4U},
                                        {1U << 20U, 40U},
                                        {0x80000005U, 3U},
                                        {5U, 0xFFFFFFFFU}}) {
        PngFile damaged = small;
        damaged.zlib = zlib;
        damaged.width = width;
        damaged.height = height;
        EXPECT_TRUE(sameAsOpenCv(damaged.bytes(), cv::IMREAD_GRAYSCALE)) << width << " x " << height;
    }
    for (const int interlace : {1, 2}) {
        PngFile other = small;
        other.interlace = interlace;
        EXPECT_TRUE(sameAsOpenCv(other.bytes(), cv::IMREAD_GRAYSCALE)) << interlace;
    }
    PngFile lowDepth = small;
    lowDepth.depth = 4;
    EXPECT_TRUE(sameAsOpenCv(lowDepth.bytes(), cv::IMREAD_GRAYSCALE));
}

// Noise on a slope, where encoders choose among all filters.
cv::Mat pictureOf(cv::Size size, int type) {
    cv::Mat picture(size, type);
    cv::RNG random(5);
    random.fill(picture, cv::RNG::NORMAL, CV_MAT_DEPTH(type) == CV_8U ? 120 : 30000,
                CV_MAT_DEPTH(type) == CV_8U ? 6 : 900);
    for (int y = 0; y < size.height; ++y) picture.row(y) += cv::Scalar::all(y % 100);
    return picture;
}

TEST(PictureBytes, WhatIsEncodedIsDecodedAgainByAll) {
    for (const int type : {CV_8UC1, CV_8UC3, CV_16UC1, CV_8UC4}) {
        for (const cv::Size size : {cv::Size(1, 1), cv::Size(301, 200)}) {
            SCOPED_TRACE(testing::Message() << "type " << type << ", " << size);
            const cv::Mat picture = pictureOf(size, type);
            const cv::Mat part = picture.cols > 1 ? picture(cv::Rect(3, 5, 200, 101)) : picture;
            Bytes bytes;
            for (const char* const extension : {".png", ".PNG"}) {
                ASSERT_TRUE(orx::encodePicture(extension, part, bytes));
                EXPECT_EQ(cv::norm(cv::imdecode(bytes, cv::IMREAD_UNCHANGED), part, cv::NORM_INF), 0);
                for (const int flags : kFlags) EXPECT_TRUE(sameAsOpenCv(bytes, flags));
            }
            for (const int level : {1, 9}) {
                ASSERT_TRUE(cv::imencode(".png", picture, bytes, {cv::IMWRITE_PNG_COMPRESSION, level}));
                for (const int flags : kFlags) EXPECT_TRUE(sameAsOpenCv(bytes, flags));
            }
        }
    }
}

TEST(PictureBytes, IndexedFilesHaveTheColoursOfTheirPalette) {
    for (const int count : {1, 3, 256}) {
        SCOPED_TRACE(count);
        std::vector<cv::Vec3b> palette;
        for (int i = 0; i < count; ++i) palette.emplace_back(i, 255 - i, 3 * i);
        cv::Mat indices(50, 70, CV_8UC1);
        cv::RNG(3).fill(indices, cv::RNG::UNIFORM, 0, count);
        const cv::Mat part = indices(cv::Rect(2, 3, 61, 40));
        Bytes bytes;
        ASSERT_TRUE(orx::encodeIndexedPng(part, palette, bytes));
        const cv::Mat decoded = cv::imdecode(bytes, cv::IMREAD_COLOR);
        ASSERT_EQ(decoded.size(), part.size());
        for (int y = 0; y < part.rows; ++y)
            for (int x = 0; x < part.cols; ++x)
                ASSERT_EQ(decoded.at<cv::Vec3b>(y, x), palette[part.at<unsigned char>(y, x)]);
        for (const int flags : kFlags) EXPECT_TRUE(sameAsOpenCv(bytes, flags));
    }
}

TEST(PictureBytes, OtherFormatsAndParametersAreOpenCvs) {
    const cv::Mat picture = pictureOf({60, 40}, CV_8UC3);
    for (const char* const extension : {".jpg", ".bmp", ".tiff", ".ppm"}) {
        if (!cv::haveImageWriter(extension)) continue;  // OpenCV can be built without some
        Bytes expected;
        ASSERT_TRUE(cv::imencode(extension, picture, expected));
        Bytes bytes = {1};
        EXPECT_TRUE(notRefused([&] { orx::encodePicture(extension, picture, bytes); })) << extension;
        EXPECT_EQ(bytes, expected) << extension;
        EXPECT_TRUE(sameAsOpenCv(bytes, cv::IMREAD_GRAYSCALE)) << extension;
    }
    for (const std::string extension : {".jpg", ".png"}) {
        const std::vector<int> parameters = extension == ".jpg"
                                                ? std::vector<int>{cv::IMWRITE_JPEG_QUALITY, 30}
                                                : std::vector<int>{cv::IMWRITE_PNG_COMPRESSION, 9};
        Bytes expected;
        ASSERT_TRUE(cv::imencode(extension, picture, expected, parameters));
        Bytes bytes;
        EXPECT_TRUE(orx::encodePicture(extension, picture, bytes, parameters));
        EXPECT_EQ(bytes, expected) << extension;
    }
}

TEST(PictureBytes, WhatIsNoPictureIsRefused) {
    const auto decode = [](const Bytes& bytes) {
        return [bytes] { EXPECT_TRUE(orx::decodePicture(bytes, cv::IMREAD_GRAYSCALE).empty()); };
    };
    EXPECT_TRUE(refusedWith(orx::rcFileFormat, "decodePicture", decode({})));
    EXPECT_TRUE(refusedWith(orx::rcFileFormat, "decodePicture", decode(Bytes(100, 'x'))));
    const std::string huge = "P5 2000000 2000000 255 ";
    EXPECT_TRUE(refusedWith(orx::rcImageSize, "decodePicture", decode(Bytes(huge.begin(), huge.end()))));

    Bytes bytes = {1};
    const auto encode = [&](const char* extension, const cv::Mat& picture) {
        return [&bytes, extension, picture] { EXPECT_FALSE(orx::encodePicture(extension, picture, bytes)); };
    };
    EXPECT_TRUE(refusedWith(orx::rcEmptyImage, "encodePicture", encode(".png", {})));
    EXPECT_TRUE(bytes.empty());
    for (const char* extension : {".png", ".tif"}) {
        const int sizes[] = {2, 3, 4};
        EXPECT_TRUE(refusedWith(orx::rcImageDimensions, "encodePicture",
                                encode(extension, cv::Mat(3, sizes, CV_8UC1, cv::Scalar(7)))));
    }
    EXPECT_TRUE(
        refusedWith(orx::rcFailed, "encodePicture", encode(".unknown", cv::Mat::zeros(2, 2, CV_8UC1))));
    EXPECT_TRUE(refusedWith(orx::rcFailed, "encodePicture", encode("", cv::Mat::zeros(2, 2, CV_8UC1))));
    EXPECT_TRUE(refusedWith(orx::rcFailed, "encodePicture", encode(".png", cv::Mat::zeros(2, 2, CV_8UC2))));
    const auto refusesIndexed = [](orx::TRefusalCode code, const cv::Mat& indices, std::size_t colours) {
        Bytes encoded = {1};
        return refusedWith(code, "encodeIndexedPng", [&] {
            EXPECT_FALSE(orx::encodeIndexedPng(indices, std::vector<cv::Vec3b>(colours), encoded));
            EXPECT_TRUE(encoded.empty());
        });
    };
    const cv::Mat threes(2, 2, CV_8UC1, cv::Scalar(3));
    EXPECT_TRUE(refusesIndexed(orx::rcEmptyImage, {}, 4));
    EXPECT_TRUE(refusesIndexed(orx::rcImageType, cv::Mat::zeros(2, 2, CV_16UC1), 4));
    for (const std::size_t colours : {0U, 3U, 257U})
        EXPECT_TRUE(refusesIndexed(orx::rcOption, threes, colours)) << colours;
    EXPECT_TRUE(
        notRefused([&] { EXPECT_TRUE(orx::encodeIndexedPng(threes, std::vector<cv::Vec3b>(4), bytes)); }));
}

}  // namespace
