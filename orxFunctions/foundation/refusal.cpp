#include "orxFunctions/foundation/refusal.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

// Plain data, so that a thread has nothing to construct before its first refusal and nothing to destroy.
struct Kept {
    TRefusalCode code;
    std::uint64_t number;
    const char* function;
    std::array<char, 251> text;
};

thread_local Kept kept{};

struct CodeText {
    TRefusalCode code;
    const char* text;
};

constexpr std::array<CodeText, 25> kCodeTexts{{
    {rcNone, "nothing was refused"},
    {rcEmptyImage, "the image is empty"},
    {rcImageType, "the image has a depth or a number of channels that is not taken"},
    {rcImageDimensions, "the image has more than two dimensions"},
    {rcImageSize, "the image is too small or too large"},
    {rcSizesDiffer, "the sizes do not belong together"},
    {rcOption, "an option is outside its range"},
    {rcNotFinite, "a value is infinite or not a number"},
    {rcTooFew, "too few points or values"},
    {rcTooMany, "too many points or values"},
    {rcDegenerate, "the points or values are degenerate"},
    {rcOutside, "the place is not inside of the image"},
    {rcNoResult, "the input gives no result"},
    {rcNotReady, "it is not ready for this call"},
    {rcFileName, "this is not a name for a file or a folder"},
    {rcFileMissing, "there is no such file or folder"},
    {rcFileUnreadable, "the file can't be read"},
    {rcFileUnwritable, "the file can't be written"},
    {rcFileFormat, "the file's contents are not what they should be"},
    {rcNoCamera, "there can't be a camera of that number"},
    {rcDriver, "there is no driver, or it refused"},
    {rcTimeout, "it did not happen in time"},
    {rcNoDisplay, "there is no display or no window"},
    {rcMemory, "there is no memory left for it"},
    {rcFailed, "a callback or another library failed"},
}};

// A text that is cut must not end within a UTF-8 character.
void endAtCharacter(std::array<char, 251>& text) {
    std::size_t size = std::strlen(text.data());
    if (size + 1 < text.size()) return;
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    std::size_t start = size;
    while (start > 0 && size - start < 3 && (byteAt(start - 1) & 0xc0U) == 0x80U) --start;
    if (start == 0 || byteAt(start - 1) < 0xc0U) return;
    const unsigned lead = byteAt(start - 1);
    const std::size_t wanted = lead >= 0xf0U ? 4 : lead >= 0xe0U ? 3 : 2;
    if (size - (start - 1) < wanted) text[start - 1] = '\0';
}

// Puts "function: " before what follows; answers how much of the text is taken.
std::size_t begin(TRefusalCode code, const char* function) noexcept {
    kept.code = code;
    kept.number += 1;
    kept.function = function;
    const int size = std::snprintf(kept.text.data(), kept.text.size(), "%s: ", function);
    return std::min(static_cast<std::size_t>(std::max(size, 0)), kept.text.size() - 1);
}

}  // namespace

const char* refusalCodeText(TRefusalCode code) {
    const auto* const found = std::find_if(kCodeTexts.begin(), kCodeTexts.end(),
                                           [&](const CodeText& entry) { return entry.code == code; });
    return found == kCodeTexts.end() ? "unknown code" : found->text;
}

TRefusal lastRefusal() {
    TRefusal refusal;
    refusal.code = kept.code;
    refusal.number = kept.number;
    if (kept.code != rcNone) {
        refusal.function = kept.function;
        refusal.text = kept.text.data();
    }
    return refusal;
}

void clearLastRefusal() { kept.code = rcNone; }

bool refuse(TRefusalCode code, const char* function) noexcept {
    return refuse(code, function, "%s", refusalCodeText(code));
}

bool refuse(TRefusalCode code, const char* function, const char* format, ...) noexcept {
    const std::size_t from = begin(code, function);
    std::va_list values;
    va_start(values, format);
    std::vsnprintf(kept.text.data() + from, kept.text.size() - from, format, values);
    va_end(values);
    endAtCharacter(kept.text);
    return false;
}

bool takesImage(const cv::Mat& img, const char* function) noexcept {
    if (img.empty()) return refuse(rcEmptyImage, function);
    if (img.dims > 2)
        return refuse(rcImageDimensions, function, "the image has %d dimensions; two are taken", img.dims);
    return true;
}

bool takesBytes(const cv::Mat& img, const char* function) noexcept {
    if (!takesImage(img, function)) return false;
    if (img.type() == CV_8UC1) return true;
    return refuse(rcImageType, function, "the image has %d channels of %d bits; one of 8 is taken",
                  img.channels(), static_cast<int>(8 * img.elemSize1()));
}

bool takesPicture(const cv::Mat& img, const char* function) noexcept {
    if (!takesImage(img, function)) return false;
    const bool knownDepth = img.depth() == CV_8U || img.depth() == CV_16U;
    if (knownDepth && img.channels() <= 4) return true;
    return refuse(
        rcImageType, function,
        "the image has %d channels of OpenCV's depth %d; 1 to 4 of 8 or 16 bits without sign are taken",
        img.channels(), img.depth());
}

}  // namespace orx
