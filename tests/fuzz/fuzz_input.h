// What all fuzz targets share: bytes turned into numbers, texts, points and pictures, and the check that ends
// a run with a finding.
#ifndef ORXFUNCTIONS_TESTS_FUZZ_FUZZ_INPUT_H
#define ORXFUNCTIONS_TESTS_FUZZ_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

// The one entry point: what libFuzzer calls, and the program that replays seeds (replay_main.cpp).
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace fuzz {

// Ends the process with the text when the promise is broken: libFuzzer keeps the input, a replay fails.
void require(bool promise, const char* text);

// Reads an input from its front; beyond the end everything is 0. Any bytes make a valid case, and small
// changes of the bytes make small changes of the case.
class Input {
  public:
    Input(const std::uint8_t* bytes, std::size_t size) : at_(bytes), left_(size) {}

    bool atEnd() const { return left_ == 0; }
    std::size_t left() const { return left_; }

    unsigned byte();
    bool flag() { return (byte() & 1U) != 0; }
    int integer();                  // any 32 bits, small values most often
    int between(int from, int to);  // both included
    // Any double: small and round ones most often, now and then infinite, not a number, huge or tiny.
    double number();
    // A sound value of an option in seven cases of eight, else any double.
    double option(double from, double to);
    std::string text(std::size_t most);
    std::string rest();  // all that is left, as text

    cv::Point pixel(int reach);  // 0 to reach, each
    std::vector<cv::Point> pixels(int most, int reach);
    // Points on and beside a line, a circle or an ellipse, or strewn; sometimes with broken coordinates.
    std::vector<cv::Point2d> points(int most);

    // An 8-bit grey picture of up to 48 x 48: a shape, a ramp or noise, or the input's own bytes.
    cv::Mat grey();
    // A grey or colour picture of 8 or 16 bits, sometimes a view of a larger one.
    cv::Mat picture();
    // Anything that a matrix can be: also empty, of any depth and up to 5 channels.
    cv::Mat matrix();

  private:
    void paint(cv::Mat& image);

    const std::uint8_t* at_;
    std::size_t left_;
};

// A copy that keeps the size and type of an empty matrix, too, which clone forgets.
cv::Mat copyOf(const cv::Mat& image);

// Equal size, type and pixels (bits of floats that are not numbers may differ).
bool same(const cv::Mat& a, const cv::Mat& b);

// The same to within a share, or both not numbers, or the same infinity.
bool nearly(double a, double b, double share = 1e-9);

// An empty folder for this process, removed when the process ends. Emptied again by each call.
std::filesystem::path emptyFolder();

// Forgets what was told to the user, so that no run sees the messages of another.
void forgetMessages();

// A case of a family: the input's first choice takes one of the checks, which reads the rest; one that stands
// in the list twice is taken twice as often. OpenCV runs on one thread, and messages are forgotten.
using Check = void (*)(Input&);
void runOneOf(std::initializer_list<Check> checks, const std::uint8_t* bytes, std::size_t size);

}  // namespace fuzz

#endif
