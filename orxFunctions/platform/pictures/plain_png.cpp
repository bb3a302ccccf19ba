#include "orxFunctions/platform/pictures/plain_png_internal.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

#include "orxFunctions/platform/pictures/png_rows_internal.h"

namespace orx::platform {
namespace {

using Byte = unsigned char;

constexpr std::array<Byte, 8> kSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t kAroundChunk = 12;  // length, type and checksum
constexpr std::size_t kHeaderBytes = 13;
constexpr std::uint32_t kMostSide = 1U << 20U;  // as imgcodecs has it
constexpr std::size_t kMostPixels = 1U << 26U;  // larger ones are for imgcodecs to refuse or to read
constexpr std::size_t kMostDeflated = 1032;     // bytes that one byte of deflate can stand for
constexpr std::size_t kLargestWindow = 1U << 15U;
constexpr std::size_t kLongestData = 0x7FFFFFFF;  // of a chunk
constexpr std::size_t kMostColours = 256;         // of a palette
constexpr int kLevel = 1;  // against what is next: 1.2 to 2 times as fast, files 3 to 15 % larger

// Chunks that say nothing of pixels. All others (a palette beside pixels in colour, transparency, turned by
// eXIf, animated, unknown) are for imgcodecs.
constexpr std::array<const char*, 11> kPassedOver = {"bKGD", "cHRM", "gAMA", "iCCP", "iTXt", "pHYs",
                                                     "sBIT", "sRGB", "tEXt", "tIME", "zTXt"};

struct Freed {
    void operator()(libdeflate_decompressor* memory) const { libdeflate_free_decompressor(memory); }
    void operator()(libdeflate_compressor* memory) const { libdeflate_free_compressor(memory); }
};

std::uint32_t numberAt(const Byte* bytes) {
    return (std::uint32_t{bytes[0]} << 24U) | (std::uint32_t{bytes[1]} << 16U) |
           (std::uint32_t{bytes[2]} << 8U) | bytes[3];
}

struct Chunk {
    const Byte* type = nullptr;
    const Byte* data = nullptr;
    std::size_t size = 0;

    bool is(const char* name) const { return std::memcmp(type, name, 4) == 0; }
    bool isPassedOver() const {
        return std::any_of(kPassedOver.begin(), kPassedOver.end(),
                           [this](const char* name) { return is(name); });
    }
};

// A PNG file's chunks, one after the other.
class Chunks {
  public:
    Chunks(const Byte* bytes, std::size_t size) : at_(bytes + kSignature.size()), end_(bytes + size) {}

    // False at the end, and for a chunk that is cut off or whose checksum is wrong.
    bool next(Chunk& chunk) {
        const std::size_t left = static_cast<std::size_t>(end_ - at_);
        if (left < kAroundChunk) return false;
        chunk.size = numberAt(at_);
        if (chunk.size > left - kAroundChunk) return false;
        chunk.type = at_ + 4;
        chunk.data = at_ + 8;
        at_ += kAroundChunk + chunk.size;
        return libdeflate_crc32(0, chunk.type, chunk.size + 4) == numberAt(chunk.data + chunk.size);
    }

  private:
    const Byte* at_;
    const Byte* const end_;
};

struct Header {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int type = 0;           // of the picture
    std::size_t pixel = 0;  // bytes
    bool hasPalette = false;
    std::vector<cv::Vec3b> palette;  // BGR

    std::size_t rowBytes() const { return width * pixel; }
    std::size_t filteredBytes() const { return (rowBytes() + 1) * height; }
};

// False for a kind that is left to imgcodecs.
bool readHeader(const Chunk& chunk, int flags, Header& header) {
    if (!chunk.is("IHDR") || chunk.size != kHeaderBytes) return false;
    header.width = numberAt(chunk.data);
    header.height = numberAt(chunk.data + 4);
    const int depth = chunk.data[8];
    const int colour = chunk.data[9];
    const bool plain = chunk.data[10] == 0 && chunk.data[11] == 0 && chunk.data[12] == 0;
    if (!plain || header.width == 0 || header.height == 0 || header.width > kMostSide ||
        header.height > kMostSide || std::size_t{header.width} * header.height > kMostPixels)
        return false;
    const bool grey = colour == 0 && flags != cv::IMREAD_COLOR;
    if (grey && depth == 8)
        header.type = CV_8UC1;
    else if (grey && depth == 16 && flags != cv::IMREAD_GRAYSCALE)
        header.type = CV_16UC1;
    else if (colour == 2 && depth == 8 && flags == cv::IMREAD_COLOR)
        header.type = CV_8UC3;
    else if (colour == 3 && depth == 8 && flags == cv::IMREAD_COLOR)
        header.hasPalette = true;
    else
        return false;
    header.pixel = static_cast<std::size_t>(CV_ELEM_SIZE(header.type));
    if (header.hasPalette) header.type = CV_8UC3;
    return true;
}

// False for one that is not wanted, or is not whole.
bool readPalette(const Chunk& chunk, Header& header) {
    if (!header.hasPalette || !header.palette.empty() || chunk.size == 0 || chunk.size % 3 != 0 ||
        chunk.size > 3 * kMostColours)
        return false;
    for (std::size_t i = 0; i < chunk.size; i += 3)
        header.palette.emplace_back(chunk.data[i + 2], chunk.data[i + 1], chunk.data[i]);
    return true;
}

// The data of all IDAT chunks, which follow one another; copied where there are several.
class Deflated {
  public:
    void add(const Chunk& chunk) {
        if (!begun_) {
            first_ = chunk.data;
        } else {
            if (copy_.empty()) copy_.assign(first_, first_ + size_);
            copy_.insert(copy_.end(), chunk.data, chunk.data + chunk.size);
        }
        begun_ = true;
        size_ += chunk.size;
    }
    bool begun() const { return begun_; }
    const Byte* data() const { return copy_.empty() ? first_ : copy_.data(); }
    std::size_t size() const { return size_; }

  private:
    bool begun_ = false;
    const Byte* first_ = nullptr;
    std::size_t size_ = 0;
    std::vector<Byte> copy_;
};

bool readChunks(const Byte* bytes, std::size_t size, int flags, Header& header, Deflated& deflated) {
    Chunks chunks(bytes, size);
    Chunk chunk;
    if (!chunks.next(chunk) || !readHeader(chunk, flags, header)) return false;
    bool hasEnded = false;  // the data
    while (chunks.next(chunk)) {
        if (chunk.is("IEND")) return chunk.size == 0 && deflated.begun();
        if (chunk.is("PLTE")) {
            if (deflated.begun() || !readPalette(chunk, header)) return false;
        } else if (chunk.is("IDAT")) {
            if (hasEnded || header.hasPalette == header.palette.empty()) return false;
            deflated.add(chunk);
        } else if (chunk.isPassedOver()) {
            hasEnded = deflated.begun();
        } else {
            return false;
        }
    }
    return false;
}

// zlib refuses references beyond the window that the stream's first byte tells, libdeflate does not: there
// must be no such ones.
bool hasWindowFor(const Deflated& deflated, std::size_t size) {
    return deflated.size() > 0 &&
           std::size_t{1} << ((deflated.data()[0] >> 4U) + 8U) >= std::min(size, kLargestWindow);
}

std::unique_ptr<Byte[]> inflated(const Deflated& deflated, std::size_t size) {
    if (size / kMostDeflated > deflated.size() || !hasWindowFor(deflated, size)) return nullptr;
    const std::unique_ptr<libdeflate_decompressor, Freed> decompressor(libdeflate_alloc_decompressor());
    if (!decompressor) return nullptr;
    std::unique_ptr<Byte[]> bytes(new Byte[size]);
    const libdeflate_result result = libdeflate_zlib_decompress(decompressor.get(), deflated.data(),
                                                                deflated.size(), bytes.get(), size, nullptr);
    return result == LIBDEFLATE_SUCCESS ? std::move(bytes) : nullptr;
}

// False where the palette lacks one of them.
bool storeIndices(const Byte* row, const Header& header, cv::Mat& picture, int y) {
    if (*std::max_element(row, row + header.width) >= header.palette.size()) return false;
    std::transform(row, row + header.width, picture.ptr<cv::Vec3b>(y),
                   [&](Byte index) { return header.palette[index]; });
    return true;
}

// The row in the picture's own order of bytes: levels of 16 bits begin with the upper one in the file,
// colours with red.
bool store(const Byte* row, const Header& header, cv::Mat& picture, int y) {
    if (header.hasPalette) return storeIndices(row, header, picture, y);
    if (header.pixel == 1) {
        std::memcpy(picture.ptr(y), row, header.width);
    } else if (header.pixel == 2) {
        auto* const levels = picture.ptr<ushort>(y);
        for (std::size_t x = 0; x < header.width; ++x)
            levels[x] = static_cast<ushort>((unsigned{row[2 * x]} << 8U) | row[2 * x + 1]);
    } else {
        const cv::Mat red(1, picture.cols, CV_8UC3, const_cast<Byte*>(row));
        cv::Mat blue = picture.row(y);
        cv::cvtColor(red, blue, cv::COLOR_RGB2BGR);
    }
    return true;
}

cv::Mat pictureOf(Byte* filtered, const Header& header) {
    cv::Mat picture(static_cast<int>(header.height), static_cast<int>(header.width), header.type);
    const std::vector<Byte> zeros(header.rowBytes());
    const Byte* above = zeros.data();
    for (int y = 0; y < picture.rows; ++y) {
        Byte* const row = filtered + 1;
        if (!unfilterPngRow(*filtered, row, above, header.rowBytes(), header.pixel) ||
            !store(row, header, picture, y))
            return {};
        above = row;
        filtered = row + header.rowBytes();
    }
    return picture;
}

// Limits that a user sets to imgcodecs hold for it alone.
bool hasLimits() {
    for (const char* const name :
         {"OPENCV_IO_MAX_IMAGE_PIXELS", "OPENCV_IO_MAX_IMAGE_WIDTH", "OPENCV_IO_MAX_IMAGE_HEIGHT"})
        if (std::getenv(name) != nullptr) return true;
    return false;
}

void append(std::vector<Byte>& bytes, std::uint32_t number) {
    for (const unsigned shift : {24U, 16U, 8U, 0U}) bytes.push_back(static_cast<Byte>(number >> shift));
}

// Its checksum; type and data are there from `begin` on.
void endChunk(std::vector<Byte>& bytes, std::size_t begin) {
    append(bytes, libdeflate_crc32(0, bytes.data() + begin, bytes.size() - begin));
}

void appendChunk(std::vector<Byte>& bytes, const char* type, const std::vector<Byte>& data) {
    append(bytes, static_cast<std::uint32_t>(data.size()));
    const std::size_t begin = bytes.size();
    bytes.insert(bytes.end(), type, type + 4);
    bytes.insert(bytes.end(), data.begin(), data.end());
    endChunk(bytes, begin);
}

// Without filters: on sheets libdeflate makes smaller files of that in less time, on pictures with noise
// equal ones.
std::vector<Byte> unfiltered(const cv::Mat& picture) {
    const std::size_t rowBytes = static_cast<std::size_t>(picture.cols) * picture.elemSize();
    std::vector<Byte> rows((rowBytes + 1) * static_cast<std::size_t>(picture.rows));
    for (int y = 0; y < picture.rows; ++y) {
        Byte* const row = rows.data() + static_cast<std::size_t>(y) * (rowBytes + 1) + 1;
        if (picture.channels() == 1) {
            std::memcpy(row, picture.ptr(y), rowBytes);
        } else {
            cv::Mat red(1, picture.cols, CV_8UC3, row);
            cv::cvtColor(picture.row(y), red, cv::COLOR_BGR2RGB);
        }
    }
    return rows;
}

bool appendData(std::vector<Byte>& bytes, const std::vector<Byte>& rows) {
    const std::unique_ptr<libdeflate_compressor, Freed> compressor(libdeflate_alloc_compressor(kLevel));
    if (!compressor) return false;
    const std::size_t most = libdeflate_zlib_compress_bound(compressor.get(), rows.size());
    if (most > kLongestData) return false;
    const std::unique_ptr<Byte[]> deflated(new Byte[most]);
    const std::size_t size =
        libdeflate_zlib_compress(compressor.get(), rows.data(), rows.size(), deflated.get(), most);
    if (size == 0) return false;
    append(bytes, static_cast<std::uint32_t>(size));
    const std::size_t begin = bytes.size();
    bytes.reserve(begin + size + 2 * kAroundChunk);
    bytes.insert(bytes.end(), {'I', 'D', 'A', 'T'});
    bytes.insert(bytes.end(), deflated.get(), deflated.get() + size);
    endChunk(bytes, begin);
    return true;
}

// `colour` is PNG's number of the kind: 0 grey, 2 colour, 3 a palette.
bool encode(const cv::Mat& picture, Byte colour, const std::vector<cv::Vec3b>& palette,
            std::vector<Byte>& encoded) {
    if (picture.total() > kMostPixels) return false;
    std::vector<Byte> bytes(kSignature.begin(), kSignature.end());
    std::vector<Byte> header;
    append(header, static_cast<std::uint32_t>(picture.cols));
    append(header, static_cast<std::uint32_t>(picture.rows));
    header.insert(header.end(), {8, colour, 0, 0, 0});
    appendChunk(bytes, "IHDR", header);
    std::vector<Byte> colours;
    for (const cv::Vec3b& one : palette) colours.insert(colours.end(), {one[2], one[1], one[0]});
    if (!colours.empty()) appendChunk(bytes, "PLTE", colours);
    if (!appendData(bytes, unfiltered(picture))) return false;
    appendChunk(bytes, "IEND", {});
    encoded.swap(bytes);
    return true;
}

}  // namespace

cv::Mat decodePlainPng(const Byte* bytes, std::size_t size, int flags) {
    const bool isWanted = flags == cv::IMREAD_GRAYSCALE ||
                          flags == (cv::IMREAD_GRAYSCALE | cv::IMREAD_ANYDEPTH) || flags == cv::IMREAD_COLOR;
    if (!isWanted || size < kSignature.size() || !std::equal(kSignature.begin(), kSignature.end(), bytes) ||
        hasLimits())
        return {};
    Header header;
    Deflated deflated;
    if (!readChunks(bytes, size, flags, header, deflated)) return {};
    const std::unique_ptr<Byte[]> filtered = inflated(deflated, header.filteredBytes());
    return filtered ? pictureOf(filtered.get(), header) : cv::Mat();
}

bool encodePlainPng(const cv::Mat& picture, std::vector<Byte>& encoded) {
    if (picture.empty() || picture.dims != 2 || (picture.type() != CV_8UC1 && picture.type() != CV_8UC3))
        return false;
    return encode(picture, picture.channels() == 1 ? 0 : 2, {}, encoded);
}

bool encodePalettePng(const cv::Mat& indices, const std::vector<cv::Vec3b>& palette,
                      std::vector<Byte>& encoded) {
    if (indices.empty() || indices.dims != 2 || indices.type() != CV_8UC1 || palette.empty() ||
        palette.size() > kMostColours)
        return false;
    return encode(indices, 3, palette, encoded);
}

}  // namespace orx::platform
