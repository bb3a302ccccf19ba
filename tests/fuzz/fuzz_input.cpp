#include "tests/fuzz/fuzz_input.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "ZULLib/zullib.h"
#include "tests/support/temporary_folder.h"

namespace fuzz {
namespace {

namespace fs = std::filesystem;

// A cheap generator, so that two bytes of input fill a whole picture with noise.
class Noise {
  public:
    explicit Noise(unsigned seed) : state_(seed * 2654435761U + 1U) {}
    unsigned byte() {
        state_ = state_ * 1664525U + 1013904223U;
        return state_ >> 24U;
    }

  private:
    unsigned state_;
};

}  // namespace

void require(bool promise, const char* text) {
    if (promise) return;
    std::fprintf(stderr, "broken promise: %s\n", text);
    std::abort();
}

unsigned Input::byte() {
    if (left_ == 0) return 0;
    --left_;
    return *at_++;
}

int Input::integer() {
    const unsigned kind = byte();
    if (kind < 200) return static_cast<int>(kind) - 100;
    std::uint32_t bits = 0;
    for (int i = 0; i < 4; ++i) bits = bits << 8U | byte();
    std::int32_t value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

int Input::between(int from, int to) {
    const unsigned span = static_cast<unsigned>(to - from) + 1U;
    unsigned value = byte();
    if (span > 256) value = value << 8U | byte();
    return from + static_cast<int>(value % span);
}

double Input::number() {
    static const std::array<double, 12> kSpecial = {std::numeric_limits<double>::quiet_NaN(),
                                                    std::numeric_limits<double>::infinity(),
                                                    -std::numeric_limits<double>::infinity(),
                                                    -0.0,
                                                    std::numeric_limits<double>::denorm_min(),
                                                    std::numeric_limits<double>::max(),
                                                    std::numeric_limits<double>::lowest(),
                                                    1e-9,
                                                    2147483647.0,
                                                    -2147483648.0,
                                                    4294967296.0,
                                                    1e18};
    const unsigned kind = byte();
    if (kind < 120) return static_cast<double>(kind) - 20;
    if (kind < 220) return (static_cast<double>(byte()) - 64) / 16;
    if (kind < 244) return kSpecial[kind % kSpecial.size()];
    std::uint64_t bits = 0;
    for (int i = 0; i < 8; ++i) bits = bits << 8U | byte();
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

double Input::option(double from, double to) {
    const unsigned kind = byte();
    if (kind >= 224) return number();
    return from + (to - from) * static_cast<double>(kind) / 223;
}

std::string Input::text(std::size_t most) {
    const std::size_t size = std::min<std::size_t>({byte(), most, left_});
    std::string taken(reinterpret_cast<const char*>(at_), size);
    at_ += size;
    left_ -= size;
    return taken;
}

std::string Input::rest() {
    std::string taken(reinterpret_cast<const char*>(at_), left_);
    at_ += left_;
    left_ = 0;
    return taken;
}

cv::Point Input::pixel(int reach) {
    const int x = between(0, reach);
    return {x, between(0, reach)};
}

std::vector<cv::Point> Input::pixels(int most, int reach) {
    std::vector<cv::Point> list(static_cast<std::size_t>(between(0, most)));
    for (cv::Point& p : list) p = pixel(reach);
    return list;
}

std::vector<cv::Point2d> Input::points(int most) {
    const int kind = between(0, 7);
    const int count = between(0, most);
    const double length = 1 + 0.5 * byte();
    const double width = 1 + 0.5 * byte();
    const double turn = CV_PI * byte() / 128;
    const double part = 2 * CV_PI * (1 + byte()) / 256;
    const double strewn = byte() / 64.0;
    const int outliers = between(0, 4);
    const cv::Point2d middle{4.0 * byte() - 200, 4.0 * byte()};
    Noise noise(byte());
    std::vector<cv::Point2d> list;
    for (int i = 0; i < count; ++i) {
        const double t = part * i / std::max(1, count);
        cv::Point2d p(length * std::cos(t), length * std::sin(t));
        if (kind < 2) p = {length * (t - 3), 0};
        if (kind >= 5) p.y *= width / length;
        if (kind == 7) p = {noise.byte() - 128.0, noise.byte() - 128.0};
        if (outliers > 0 && noise.byte() % 16U < static_cast<unsigned>(outliers))
            p += cv::Point2d{1.0 * noise.byte(), 1.0 * noise.byte()};
        p += cv::Point2d{noise.byte() - 127.5, noise.byte() - 127.5} * (strewn / 128);
        list.push_back(middle + cv::Point2d(std::cos(turn) * p.x - std::sin(turn) * p.y,
                                            std::sin(turn) * p.x + std::cos(turn) * p.y));
    }
    for (int broken = between(0, 15) - 12; broken > 0 && !list.empty(); --broken)
        list[byte() % list.size()] = {number(), number()};
    return list;
}

void Input::paint(cv::Mat& image) {
    const int kind = between(0, 7);
    const double dark = byte();
    const double bright = byte();
    const double blur = 0.3 + byte() / 64.0;
    const cv::Point2d middle{image.cols * (byte() / 255.0), image.rows * (byte() / 255.0)};
    const double radius = 0.5 + std::max(image.cols, image.rows) * (byte() / 255.0);
    const double turn = CV_PI * byte() / 128;
    const unsigned grain = byte() % 32U;
    const double full = image.depth() == CV_16U ? 257 : 1;
    Noise noise(byte());
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols * image.channels(); ++x) {
            const cv::Point2d p = cv::Point2d(x / image.channels(), y) - middle;
            const double across = std::cos(turn) * p.x + std::sin(turn) * p.y;
            const double along = std::cos(turn) * p.y - std::sin(turn) * p.x;
            double inside = 0;  // pixels from the edge
            if (kind <= 1) inside = radius - cv::norm(p);
            if (kind == 2) inside = across;
            if (kind == 3) inside = std::min(radius - std::abs(across), 0.6 * radius - std::abs(along));
            if (kind == 4) inside = std::abs(cv::norm(p) - radius) - 3;
            double level = dark + (bright - dark) * std::min(1.0, std::max(0.0, 0.5 + inside / (2 * blur)));
            if (kind == 5) level = byte();
            if (kind == 6) level = (noise.byte() & 1U) != 0 ? dark : bright;
            if (kind == 7) level = dark + across;
            if (grain > 0) level += noise.byte() % grain;
            level = std::min(255.0, std::max(0.0, level)) * full;
            if (image.depth() == CV_16U)
                image.ptr<std::uint16_t>(y)[x] = static_cast<std::uint16_t>(level);
            else
                image.ptr<uchar>(y)[x] = static_cast<uchar>(level);
        }
    }
}

cv::Mat Input::grey() {
    const int columns = between(1, 48);
    cv::Mat image(between(1, 48), columns, CV_8UC1);
    paint(image);
    return image;
}

cv::Mat Input::picture() {
    static const std::array<int, 8> kTypes = {CV_8UC1, CV_8UC1,  CV_8UC3,  CV_8UC3,
                                              CV_8UC4, CV_16UC1, CV_16UC3, CV_8UC2};
    const int type = kTypes[byte() % kTypes.size()];
    const int columns = between(1, 48);
    cv::Mat image(between(1, 48), columns, type);
    paint(image);
    if (byte() % 4U != 0 || image.cols < 4 || image.rows < 4) return image;
    return image(cv::Rect(1, 1, image.cols - 2, image.rows - 2));
}

cv::Mat Input::matrix() {
    const unsigned kind = byte();
    if (kind < 160) return picture();
    if (kind < 176) return {};
    if (kind < 184) {
        const std::array<int, 3> sizes = {between(1, 3), between(1, 5), between(1, 5)};
        return {3, sizes.data(), CV_8UC1, cv::Scalar(byte())};
    }
    const int type = CV_MAKETYPE(between(0, 6), between(1, 5));
    const int columns = between(0, 24);
    cv::Mat image(between(0, 24), columns, type);
    if (image.empty()) return image;
    Noise noise(byte());
    for (int y = 0; y < image.rows; ++y) {
        const std::size_t size = static_cast<std::size_t>(image.cols) * image.elemSize();
        for (std::size_t i = 0; i < size; ++i) image.ptr(y)[i] = static_cast<uchar>(noise.byte());
    }
    return image;
}

cv::Mat copyOf(const cv::Mat& image) { return image.empty() ? image : image.clone(); }

bool same(const cv::Mat& a, const cv::Mat& b) {
    if (a.size != b.size || a.type() != b.type()) return false;
    if (a.empty()) return true;
    cv::Mat left;
    cv::Mat right;
    a.clone().reshape(1, 1).convertTo(left, CV_64F);
    b.clone().reshape(1, 1).convertTo(right, CV_64F);
    const auto equal = [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); };
    return std::equal(left.begin<double>(), left.end<double>(), right.begin<double>(), equal);
}

bool nearly(double a, double b, double share) {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    if (std::isinf(a) || std::isinf(b)) return a == b;
    return std::abs(a - b) <= share * std::max({1.0, std::abs(a), std::abs(b)});
}

fs::path emptyFolder() {
    static const test::TemporaryFolder folder;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder.path()))
        fs::remove_all(entry.path());
    return folder.path();
}

void forgetMessages() {
    std::string text;
    int color = 0;
    while (zul::APPgetMessage(text, color)) continue;
}

void runOneOf(std::initializer_list<Check> checks, const std::uint8_t* bytes, std::size_t size) {
    cv::setNumThreads(1);
    Input input(bytes, size);
    const int chosen = input.between(0, static_cast<int>(checks.size()) - 1);
    checks.begin()[chosen](input);
    forgetMessages();
}

}  // namespace fuzz
