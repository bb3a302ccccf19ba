// What the pictures of results are drawn on.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_CANVAS_H
#define ORXFUNCTIONS_MEASURING_RECIPE_CANVAS_H

#include <array>
#include <map>
#include <opencv2/core.hpp>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace orx::recipes {

// All that is drawn in; the first four over pictures, those from kPaper on over paper.
enum class Ink {
    kGreen,
    kRed,
    kYellow,
    kBlue,
    kGrey,
    kBlack,
    kPaper,
    kText,
    kSoft,
    kTrack,
    kPass,
    kFail,
    kDoubt
};
constexpr std::size_t kInks = 13;

// Pixels of 8 bits that are drawn upon: BGR, or indices of palette(). Indices take a third of the memory, and
// of the time to become a file; they tell a picture's levels to 0.9 and know a few mixtures of each ink with
// what lies below it. Letters and lines are drawn as a mask of their box, which then lets the ink through;
// those of letters are kept, since OpenCV draws each as lines.
class Canvas {
  public:
    static constexpr std::size_t kColours = 256;

    // Shares the pixels: three channels for BGR, one for indices.
    explicit Canvas(cv::Mat pixels) : pixels_(std::move(pixels)) {}

    // What the indices stand for, BGR.
    static const std::array<cv::Vec3b, kColours>& palette();
    // The indices of a picture's levels; 8 bits, one channel.
    static cv::Mat indicesOf(const cv::Mat& levels);

    cv::Mat& pixels() { return pixels_; }
    cv::Size size() const { return pixels_.size(); }
    // That part of it, on the same pixels.
    Canvas columns(int from, int to) const { return Canvas(pixels_.colRange(from, to)); }

    void polyline(const std::vector<cv::Point2d>& points, Ink ink, int thickness);
    // ASCII, by a font of OpenCV; `at` is the lower left corner.
    void text(const std::string& text, cv::Point at, int font, double size, Ink ink, int thickness);
    void dot(cv::Point at, int radius, Ink ink);
    // Both corners are in it.
    void bar(cv::Point from, cv::Point to, Ink ink);

  private:
    struct Letter {
        cv::Mat mask;
        cv::Point corner;  // of the mask, from where the letter stands
        double advance = 0.0;
    };
    using LetterKey = std::tuple<char, int, double, int>;  // font, size and thickness

    const Letter& letter(const LetterKey& key);
    // The part of `box` inside, emptied for a mask; null for none.
    cv::Mat maskOf(cv::Rect& box);
    void strokes(const std::vector<cv::Point>& points, Ink ink, int thickness);
    void blend(const cv::Mat& mask, cv::Point at, Ink ink);

    cv::Mat pixels_;
    std::vector<unsigned char> mask_;
    std::map<LetterKey, Letter> letters_;
};

}  // namespace orx::recipes

#endif
