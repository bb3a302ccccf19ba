#include "inspection/run/places.h"

#include <algorithm>
#include <cmath>
#include <locale>
#include <optional>
#include <sstream>
#include <vector>

namespace inspection {
namespace {

constexpr double kFarthest = 1e6;

// `count` numbers with commas between them and nothing else.
std::optional<std::vector<double>> numbersFrom(const std::string& text, std::size_t count) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    std::vector<double> numbers(count);
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0 && stream.get() != ',') return std::nullopt;
        if (stream.peek() == ' ' || !(stream >> numbers[i])) return std::nullopt;
        if (!(std::abs(numbers[i]) <= kFarthest)) return std::nullopt;
    }
    if (stream.peek() != std::istringstream::traits_type::eof()) return std::nullopt;
    return numbers;
}

}  // namespace

std::string problemOfBox(const std::string& text) {
    const auto numbers = numbersFrom(text, 4);
    const auto isWhole = [](double v) { return v == std::floor(v); };
    if (!numbers || !std::all_of(numbers->begin(), numbers->end(), isWhole))
        return "'" + text + "' is not four whole numbers x,y,w,h";
    return numbers->at(2) > 0.0 && numbers->at(3) > 0.0 ? "" : "'" + text + "' has no width or height";
}

std::string problemOfCircle(const std::string& text) {
    const auto numbers = numbersFrom(text, 3);
    if (!numbers) return "'" + text + "' is not three numbers cx,cy,r";
    return numbers->at(2) > 0.0 ? "" : "'" + text + "' has no radius above 0";
}

cv::Rect boxFrom(const std::string& text) {
    const auto numbers = numbersFrom(text, 4).value();
    const auto whole = [&](std::size_t i) { return static_cast<int>(numbers[i]); };
    return {whole(0), whole(1), whole(2), whole(3)};
}

Circle circleFrom(const std::string& text) {
    const auto numbers = numbersFrom(text, 3).value();
    return {{numbers[0], numbers[1]}, numbers[2]};
}

}  // namespace inspection
