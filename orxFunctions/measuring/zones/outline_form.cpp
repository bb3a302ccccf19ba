#include "orxFunctions/measuring/zones/outline_form.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace orx::zones {
namespace {

constexpr std::size_t kMostBlocks = 256;
constexpr std::size_t kFewestPoints = 8;
struct Departures {
    std::vector<double> values;
    std::vector<cv::Point2d> shifts;
    std::size_t size() const { return values.size(); }
};

Departures inOrder(const Outline& outline, bool asGiven) {
    std::vector<std::size_t> order(outline.points.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    if (!asGiven) {
        std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
            const double first = outline.points[a].place;
            const double second = outline.points[b].place;
            return first != second ? first < second : a < b;
        });
    }
    Departures ordered;
    for (const std::size_t i : order) {
        ordered.values.push_back(outline.points[i].departure);
        ordered.shifts.push_back(outline.points[i].shift);
    }
    return ordered;
}

// Gram and Schmidt's; then takes the least-squares shape out of the departures.
void levelOut(Departures& departures) {
    const auto n = static_cast<double>(departures.size());
    const auto mean = [n](double sum) { return sum / n; };
    cv::Point2d middle;
    double level = 0.0;
    for (const cv::Point2d& s : departures.shifts) middle += s;
    for (const double v : departures.values) level += v;
    middle = {mean(middle.x), mean(middle.y)};
    level = mean(level);
    double xx = 0.0;
    double xy = 0.0;
    for (cv::Point2d& s : departures.shifts) {
        s -= middle;
        xx += s.x * s.x;
        xy += s.x * s.y;
    }
    double yy = 0.0;
    for (cv::Point2d& s : departures.shifts) {
        if (xx > 0.0) s.y -= xy / xx * s.x;
        yy += s.y * s.y;
    }
    constexpr double kNoShift = 1e-24;
    const double scaleX = xx > 0.0 ? 1.0 / std::sqrt(mean(xx)) : 0.0;
    const double scaleY = yy > kNoShift * (xx + n) ? 1.0 / std::sqrt(mean(yy)) : 0.0;
    double alongX = 0.0;
    double alongY = 0.0;
    for (std::size_t i = 0; i < departures.size(); ++i) {
        cv::Point2d& s = departures.shifts[i];
        s = {s.x * scaleX, s.y * scaleY};
        alongX += s.x * departures.values[i];
        alongY += s.y * departures.values[i];
    }
    for (std::size_t i = 0; i < departures.size(); ++i) {
        const cv::Point2d& s = departures.shifts[i];
        departures.values[i] -= level + mean(alongX) * s.x + mean(alongY) * s.y;
    }
}

std::vector<double> blockMeans(const std::vector<double>& values, std::size_t blocks) {
    std::vector<double> means(blocks);
    for (std::size_t b = 0; b < blocks; ++b) {
        const std::size_t from = b * values.size() / blocks;
        const std::size_t to = (b + 1) * values.size() / blocks;
        for (std::size_t i = from; i < to; ++i) means[b] += values[i];
        means[b] /= static_cast<double>(to - from);
    }
    return means;
}

// Functions over blocks, orthogonal, with mean square 1, the coarser first: harmonics round a closed outline,
// polynomials along an open one (G. E. Forsythe, J. Soc. Indust. Appl. Math. 5 (1957)). `order` counts waves
// or degrees; the functions that an outline's own shift takes up are left out.
struct Basis {
    std::vector<std::vector<double>> functions;
    std::vector<int> orders;
};

Basis harmonics(std::size_t blocks) {
    Basis basis;
    for (int order = 2; order <= static_cast<int>(blocks) / 8; ++order) {
        for (const double phase : {0.0, CV_PI / 2.0}) {
            std::vector<double> f(blocks);
            for (std::size_t b = 0; b < blocks; ++b) {
                const double turn =
                    2.0 * CV_PI * (static_cast<double>(b) + 0.5) / static_cast<double>(blocks);
                f[b] = std::sqrt(2.0) * std::cos(order * turn - phase);
            }
            basis.functions.push_back(f);
            basis.orders.push_back(order);
        }
    }
    return basis;
}

double meanProduct(const std::vector<double>& a, const std::vector<double>& b) {
    return std::inner_product(a.begin(), a.end(), b.begin(), 0.0) / static_cast<double>(a.size());
}

Basis polynomials(std::size_t blocks) {
    constexpr int kHighest = 24;  // of more, equal places make the ends swing
    Basis basis;
    std::vector<double> before(blocks);
    std::vector<double> last(blocks, 1.0);
    for (int degree = 1; degree <= std::min(kHighest, static_cast<int>(blocks) / 4); ++degree) {
        std::vector<double> next(blocks);
        for (std::size_t b = 0; b < blocks; ++b) {
            next[b] = last[b] * ((2.0 * static_cast<double>(b) + 1.0) / static_cast<double>(blocks) - 1.0);
        }
        const double share = meanProduct(next, before);
        for (std::size_t b = 0; b < blocks; ++b) next[b] -= share * before[b];
        const double scale = 1.0 / std::sqrt(meanProduct(next, next));
        for (double& value : next) value *= scale;
        before = last;
        last = next;
        basis.functions.push_back(next);
        basis.orders.push_back(degree);
    }
    return basis;
}

// The functions that stand out of the noise; `deviation` is that of a block's mean. One outline in twenty
// shows one that is not there: the orders' odds fall with their squares, as fine form is rarer than coarse.
std::vector<double> smoothForm(const std::vector<double>& means, bool closed, double deviation) {
    const std::size_t blocks = means.size();
    const Basis basis = closed ? harmonics(blocks) : polynomials(blocks);
    const std::size_t together = closed ? 2 : 1;
    const double unit = deviation * deviation / static_cast<double>(blocks);
    std::vector<double> form(blocks);
    for (std::size_t k = 0; k < basis.functions.size(); k += together) {
        std::vector<double> amplitudes;
        double power = 0.0;
        for (std::size_t i = k; i < k + together; ++i) {
            amplitudes.push_back(meanProduct(means, basis.functions[i]));
            power += amplitudes.back() * amplitudes.back();
        }
        const double order = basis.orders[k];
        if (power < 2.0 * std::log(13.0 * order * order) * unit) continue;
        for (std::size_t i = 0; i < together; ++i) {
            for (std::size_t b = 0; b < blocks; ++b) form[b] += amplitudes[i] * basis.functions[k + i][b];
        }
    }
    return form;
}

// Between the middles of blocks, straight.
double between(const std::vector<double>& form, double place, bool closed) {
    const auto n = static_cast<double>(form.size());
    const double at = place * n - 0.5;
    const double low = std::floor(at);
    const auto value = [&](double block) {
        if (closed) block = block < 0.0 ? block + n : (block >= n ? block - n : block);
        return form[static_cast<std::size_t>(std::clamp(block, 0.0, n - 1.0))];
    };
    return value(low) + (at - low) * (value(low + 1.0) - value(low));
}

}  // namespace

Correlation::Correlation(const Outline& outline, const TFormOptions& options) {
    if (options.pointNoise != pnEdgeChain || outline.points.empty()) return;
    rate_ = outline.length / static_cast<double>(outline.points.size()) / (2.0 * options.smoothing);
}

double Correlation::gain() const {
    if (!(rate_ > 0.0)) return 1.0;
    double sum = 1.0;
    for (int k = 1; k * rate_ < 4.0 && k < 100000; ++k) sum += 2.0 * std::exp(-k * rate_ * k * rate_);
    return sum;
}

std::vector<double> Correlation::taps() const {
    std::vector<double> taps;
    constexpr int kMostTaps = 1000;
    // Half the variance of the correlation: exp(-2 (k rate)^2).
    double squares = 0.0;
    if (rate_ > 0.0) {
        for (int k = std::min(kMostTaps, static_cast<int>(2.2 / rate_)); k > 0; --k) {
            taps.push_back(std::exp(-2.0 * (k * rate_) * (k * rate_)));
            squares += 2.0 * taps.back() * taps.back();
        }
    }
    taps.push_back(1.0);
    for (double& tap : taps) tap /= std::sqrt(squares + 1.0);
    return taps;
}

std::vector<FormPoint> formOf(const Outline& outline, const TFormOptions& options) {
    Departures departures = inOrder(outline, options.pointNoise == pnEdgeChain);
    levelOut(departures);
    const std::size_t count = departures.size();
    std::vector<FormPoint> points(count);
    for (std::size_t i = 0; i < count; ++i) points[i].shift = departures.shifts[i];
    if (count < kFewestPoints) return points;

    const auto n = static_cast<double>(count);
    const std::size_t blocks = std::min(count, kMostBlocks);
    const double gain = Correlation(outline, options).gain();
    const double ofMean = options.noise * std::sqrt(gain * static_cast<double>(blocks) / n);
    const std::vector<double> form =
        smoothForm(blockMeans(departures.values, blocks), outline.closed, ofMean);
    // The largest of n Gaussian numbers is hardly ever beyond.
    const double alone = options.noise * (std::sqrt(2.0 * std::log(n)) + 1.0);
    for (std::size_t i = 0; i < count; ++i) {
        points[i].form = between(form, (static_cast<double>(i) + 0.5) / n, outline.closed);
        points[i].alone = std::abs(departures.values[i] - points[i].form) > alone;
        if (points[i].alone) points[i].form = departures.values[i];
    }
    return points;
}

}  // namespace orx::zones
