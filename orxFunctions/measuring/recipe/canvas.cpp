#include "orxFunctions/measuring/recipe/canvas.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <opencv2/imgproc.hpp>

namespace orx::recipes {
namespace {

using Byte = unsigned char;

constexpr int kShift = 4;         // binary digits of a pixel
constexpr int kCoverages = 8;     // steps in which an ink of an indexed canvas covers what is below
constexpr std::size_t kRun = 16;  // pieces of a line that share a mask: the box of all would be mostly empty

const cv::Vec3b& colourOf(Ink ink) {
    static const std::array<cv::Vec3b, kInks> kColours = {
        cv::Vec3b(60, 200, 60),   cv::Vec3b(50, 50, 235),   cv::Vec3b(0, 210, 245),   cv::Vec3b(235, 160, 40),
        cv::Vec3b(150, 150, 150), cv::Vec3b(0, 0, 0),       cv::Vec3b(255, 255, 255), cv::Vec3b(48, 37, 28),
        cv::Vec3b(130, 118, 105), cv::Vec3b(226, 219, 212), cv::Vec3b(55, 127, 26),   cv::Vec3b(24, 35, 200),
        cv::Vec3b(0, 110, 175)};
    return kColours[static_cast<std::size_t>(ink)];
}

// `part` of `whole` of the upper colour.
cv::Vec3b mixed(const cv::Vec3b& below, const cv::Vec3b& above, int part, int whole) {
    cv::Vec3b colour;
    for (int k = 0; k < 3; ++k)
        colour[k] = static_cast<Byte>((below[k] * (whole - part) + above[k] * part + whole / 2) / whole);
    return colour;
}

int distance(const cv::Vec3b& a, const cv::Vec3b& b) {
    int sum = 0;
    for (int k = 0; k < 3; ++k) sum += (a[k] - b[k]) * (a[k] - b[k]);
    return sum;
}

// The colours of indexed canvases, and what becomes of an index under an ink. Greys come first, then the inks
// with their mixtures, the last ink first.
class Palette {
  public:
    Palette() {
        for (std::size_t i = 0; i < kInks; ++i) addInk(static_cast<Ink>(i));
        const std::size_t greys = first_;
        const double step = 255.0 / static_cast<double>(greys - 1);
        for (std::size_t i = 0; i < greys; ++i)
            colours_[i] = cv::Vec3b::all(cv::saturate_cast<Byte>(static_cast<double>(i) * step));
        for (std::size_t level = 0; level < levels_.size(); ++level)
            levels_[level] = cv::saturate_cast<Byte>(static_cast<double>(level) / step);
        for (std::size_t i = 0; i < kInks; ++i) mix(i);
    }

    const std::array<cv::Vec3b, Canvas::kColours>& colours() const { return colours_; }
    const std::array<Byte, 256>& levels() const { return levels_; }
    Byte indexOf(Ink ink) const { return under(ink, kCoverages)[0]; }
    // The index of each index that so many of kCoverages are covered of.
    const std::array<Byte, 256>& under(Ink ink, int coverage) const {
        return under_[static_cast<std::size_t>(ink)][static_cast<std::size_t>(coverage)];
    }

  private:
    struct Ramp {
        std::size_t first = 0;
        std::size_t size = 0;
    };

    static bool isGrey(const cv::Vec3b& colour) { return colour[0] == colour[1] && colour[1] == colour[2]; }

    // Over paper each ink has all its mixtures; over pictures a quarter, a half and three quarters of it on
    // five levels.
    void addInk(Ink ink) {
        const cv::Vec3b colour = colourOf(ink);
        if (isGrey(colour)) return;
        const std::size_t end = first_;
        add(colour);
        if (ink < Ink::kPaper) {
            for (const int part : {1, 2, 3})
                for (const int level : {0, 64, 128, 192, 255})
                    add(mixed(cv::Vec3b::all(static_cast<Byte>(level)), colour, part, 4));
        } else if (ink != Ink::kTrack) {
            for (int part = 1; part < kCoverages; ++part)
                add(mixed(cv::Vec3b::all(255), colour, part, kCoverages));
        }
        ramps_[static_cast<std::size_t>(ink)] = {first_, end - first_};
    }

    void add(const cv::Vec3b& colour) { colours_[--first_] = colour; }

    // The nearest of the greys, of the ink's own colours and of what was there.
    Byte nearest(const cv::Vec3b& colour, const Ramp& ramp, Byte before) const {
        const int mean = (colour[0] + colour[1] + colour[2]) / 3;
        Byte best = levels_[static_cast<std::size_t>(mean)];
        const auto consider = [&](std::size_t i) {
            if (distance(colours_[i], colour) < distance(colours_[best], colour)) best = static_cast<Byte>(i);
        };
        consider(before);
        for (std::size_t i = ramp.first; i < ramp.first + ramp.size; ++i) consider(i);
        return best;
    }

    void mix(std::size_t ink) {
        for (int coverage = 0; coverage <= kCoverages; ++coverage) {
            auto& row = under_[ink][static_cast<std::size_t>(coverage)];
            for (std::size_t i = 0; i < row.size(); ++i) {
                const cv::Vec3b wanted =
                    mixed(colours_[i], colourOf(static_cast<Ink>(ink)), coverage, kCoverages);
                row[i] =
                    coverage == 0 ? static_cast<Byte>(i) : nearest(wanted, ramps_[ink], static_cast<Byte>(i));
            }
        }
    }

    std::array<cv::Vec3b, Canvas::kColours> colours_;
    std::size_t first_ = Canvas::kColours;  // of those that are no grey
    std::array<Byte, 256> levels_{};
    std::array<Ramp, kInks> ramps_{};
    std::array<std::array<std::array<Byte, 256>, kCoverages + 1>, kInks> under_{};
};

// Made at its first use: nothing else of the library wants it.
const Palette& thePalette() {
    static const Palette kPalette;
    return kPalette;
}

cv::Point fine(cv::Point2d p) {
    const auto part = [](double x) {
        return static_cast<int>(std::lround(std::clamp(x, -30000.0, 30000.0) * (1 << kShift)));
    };
    return {part(p.x), part(p.y)};
}

// Calls work(x, coverage) where the mask is not empty, which it mostly is.
template <class Work>
void forCovered(const Byte* mask, int width, const Work& work) {
    constexpr int kAtOnce = sizeof(std::uint64_t);
    int x = 0;
    while (x < width) {
        std::uint64_t several = 1;
        if (x + kAtOnce <= width) std::memcpy(&several, mask + x, kAtOnce);
        const int end = std::min(width, x + kAtOnce);
        for (; several != 0 && x < end; ++x) {
            if (mask[x] != 0) work(x, static_cast<int>(mask[x]));
        }
        x = end;
    }
}

}  // namespace

const std::array<cv::Vec3b, Canvas::kColours>& Canvas::palette() { return thePalette().colours(); }

cv::Mat Canvas::indicesOf(const cv::Mat& levels) {
    cv::Mat indices;
    cv::LUT(levels, cv::Mat(1, 256, CV_8UC1, const_cast<Byte*>(thePalette().levels().data())), indices);
    return indices;
}

cv::Mat Canvas::maskOf(cv::Rect& box) {
    box &= cv::Rect(cv::Point(), size());
    if (box.empty()) return {};
    mask_.assign(static_cast<std::size_t>(box.width) * static_cast<std::size_t>(box.height), 0);
    return cv::Mat(box.size(), CV_8UC1, mask_.data());
}

void Canvas::polyline(const std::vector<cv::Point2d>& points, Ink ink, int thickness) {
    std::vector<cv::Point> run;
    for (std::size_t i = 0; i < points.size(); ++i) {
        run.push_back(fine(points[i]));
        if (run.size() <= kRun && i + 1 < points.size()) continue;
        if (run.size() > 1) strokes(run, ink, thickness);
        run = {run.back()};
    }
}

void Canvas::strokes(const std::vector<cv::Point>& points, Ink ink, int thickness) {
    const int margin = thickness + 2;
    const cv::Rect around = cv::boundingRect(points);
    cv::Rect box(cv::Point((around.x >> kShift) - margin, (around.y >> kShift) - margin),
                 cv::Point((around.br().x >> kShift) + margin + 1, (around.br().y >> kShift) + margin + 1));
    cv::Mat mask = maskOf(box);
    if (mask.empty()) return;
    std::vector<cv::Point> placed;
    for (const cv::Point& p : points) placed.push_back(p - box.tl() * (1 << kShift));
    cv::polylines(mask, placed, false, cv::Scalar(255), thickness, cv::LINE_AA, kShift);
    blend(mask, box.tl(), ink);
}

const Canvas::Letter& Canvas::letter(const LetterKey& key) {
    const auto [place, isNew] = letters_.try_emplace(key);
    Letter& made = place->second;
    if (!isNew) return made;
    const auto& [character, font, size, thickness] = key;
    constexpr int kMany = 32;  // whose width, in whole pixels, tells that of one
    int below = 0;
    const cv::Size box = cv::getTextSize(std::string(1, character), font, size, thickness, &below);
    const cv::Size many = cv::getTextSize(std::string(kMany, character), font, size, thickness, &below);
    made.advance = static_cast<double>(many.width - thickness) / kMany;
    const int margin = thickness + cvCeil(4 * size);
    made.corner = {-margin, -box.height - margin};
    made.mask = cv::Mat::zeros(box.height + below + 2 * margin, box.width + 2 * margin, CV_8UC1);
    cv::putText(made.mask, std::string(1, character), -made.corner, font, size, cv::Scalar(255), thickness,
                cv::LINE_AA);
    return made;
}

void Canvas::text(const std::string& text, cv::Point at, int font, double size, Ink ink, int thickness) {
    double x = at.x;
    for (const char character : text) {
        const Letter& drawn = letter({character, font, size, thickness});
        const cv::Point corner = cv::Point(cvRound(x), at.y) + drawn.corner;
        const cv::Rect box = cv::Rect(corner, drawn.mask.size()) & cv::Rect(cv::Point(), this->size());
        if (!box.empty()) blend(drawn.mask(box - corner), box.tl(), ink);
        x += drawn.advance;
    }
}

void Canvas::dot(cv::Point at, int radius, Ink ink) {
    const int reach = radius + 2;
    cv::Rect box(at.x - reach, at.y - reach, 2 * reach + 1, 2 * reach + 1);
    cv::Mat mask = maskOf(box);
    if (mask.empty()) return;
    cv::circle(mask, at - box.tl(), radius, cv::Scalar(255), cv::FILLED, cv::LINE_AA);
    blend(mask, box.tl(), ink);
}

void Canvas::bar(cv::Point from, cv::Point to, Ink ink) {
    const cv::Rect box = cv::Rect(from, to + cv::Point(1, 1)) & cv::Rect(cv::Point(), size());
    if (box.empty()) return;
    pixels_(box).setTo(pixels_.channels() == 1 ? cv::Scalar(thePalette().indexOf(ink))
                                               : cv::Scalar(colourOf(ink)));
}

void Canvas::blend(const cv::Mat& mask, cv::Point at, Ink ink) {
    const cv::Vec3b colour = colourOf(ink);
    for (int y = 0; y < mask.rows; ++y) {
        const auto place = static_cast<std::size_t>(at.x);
        if (pixels_.channels() == 1) {
            Byte* const row = pixels_.ptr(at.y + y) + place;
            forCovered(mask.ptr(y), mask.cols, [&](int x, int coverage) {
                row[x] = thePalette().under(ink, (coverage * kCoverages + 127) / 255)[row[x]];
            });
        } else {
            cv::Vec3b* const row = pixels_.ptr<cv::Vec3b>(at.y + y) + place;
            forCovered(mask.ptr(y), mask.cols,
                       [&](int x, int coverage) { row[x] = mixed(row[x], colour, coverage, 255); });
        }
    }
}

}  // namespace orx::recipes
