#include "orxFunctions/calibration/description_internal.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace orx {
namespace {

constexpr std::size_t kMostEscapedBytes = 4000;  // OpenCV's buffer holds 4,096
constexpr std::size_t kBytesOfAPiece = 500;
// The first string of an encoded text. With it there are always two, as XML needs: a sequence of one string
// reads back as the string.
constexpr const char* kEncodingName = "percent-encoded";
constexpr std::string_view kHexDigits = "0123456789ABCDEF";
constexpr std::size_t kNoDigit = std::string_view::npos;

bool isAlphanumeric(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// Tabulators and line ends have escapes in every format; YAML loses the others.
bool isLostControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

// At most, in any of the formats.
std::size_t escapedLength(const std::string& text) {
    constexpr std::size_t kLongestEscape = 6;
    std::size_t length = 0;
    for (const char c : text) length += isAlphanumeric(c) || c == ' ' ? 1 : kLongestEscape;
    return length;
}

// True for a text that all three formats bring back unchanged as a string. Their writers take a text in
// quotation marks for one that is quoted already, lose a blank at the end, and mistake control characters; a
// leading '$' may announce binary data.
bool isPlain(const std::string& text) {
    if (text.empty()) return true;
    const auto isTrouble = [](char c) { return c == '"' || c == '\'' || c == ' ' || c == '$'; };
    return escapedLength(text) <= kMostEscapedBytes && !isTrouble(text.front()) && !isTrouble(text.back()) &&
           std::none_of(text.begin(), text.end(), isLostControl);
}

std::string encoded(std::string_view bytes) {
    std::string result;
    for (const char c : bytes) {
        if (isAlphanumeric(c)) {
            result += c;
        } else {
            const auto value = static_cast<unsigned char>(c);
            result += {'%', kHexDigits[value >> 4U], kHexDigits[value & 15U]};
        }
    }
    return result;
}

std::string decoded(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t high =
            text[i] == '%' && i + 2 < text.size() ? kHexDigits.find(text[i + 1]) : kNoDigit;
        const std::size_t low = high != kNoDigit ? kHexDigits.find(text[i + 2]) : kNoDigit;
        if (low != kNoDigit) {
            result += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

}  // namespace

void writeDescription(cv::FileStorage& storage, const std::string& key, const std::string& text) {
    if (isPlain(text)) {
        storage.write(key, text);
        return;
    }
    storage.startWriteStruct(key, cv::FileNode::SEQ);
    storage.write(std::string(), std::string(kEncodingName));
    for (std::size_t at = 0; at < text.size(); at += kBytesOfAPiece) {
        storage.write(std::string(), encoded(std::string_view(text).substr(at, kBytesOfAPiece)));
    }
    storage.endWriteStruct();
}

std::string readDescription(const cv::FileNode& node) {
    if (node.isString()) return node.string();
    std::string text;
    if (node.isSeq()) {
        for (const cv::FileNode& piece : node) {
            if (piece.isString() && piece.string() != kEncodingName) text += decoded(piece.string());
        }
    }
    return text;
}

int nestingBound(const std::string& text) {
    int opened = 0;
    int marks = 0;  // of YAML blocks in this line
    int mostMarks = 0;
    bool inIndentation = true;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\n' || c == '\r') {
            marks = 0;
            inIndentation = true;
            continue;
        }
        if (c == '[' || c == '{' || (c == '<' && text.compare(i, 2, "</") != 0)) ++opened;
        // A block within a block is indented by a blank more, or begins with "- " or "key:" in the same line.
        if ((c == ' ' && inIndentation) || c == '-' || c == ':') ++marks;
        inIndentation = inIndentation && c == ' ';
        mostMarks = std::max(mostMarks, marks);
    }
    return opened + mostMarks;
}

}  // namespace orx
