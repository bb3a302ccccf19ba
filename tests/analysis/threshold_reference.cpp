#include "threshold_reference.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace reference {
namespace {

int firstUsed(const Counts& h) {
    int f = 0;
    while (f < 256 && h.at(f) == 0) ++f;
    return f;
}

std::int64_t countOver(const Counts& h, int from, int to) {
    std::int64_t n = 0;
    for (int i = from; i <= to; ++i) n += h.at(i);
    return n;
}

std::int64_t weightOver(const Counts& h, int from, int to) {
    std::int64_t s = 0;
    for (int i = from; i <= to; ++i) s += static_cast<std::int64_t>(i) * h.at(i);
    return s;
}

using Bins = PerLevel<double>;

bool peak(const Bins& H, int k) { return H.at(k) > H.at(k - 1) && H.at(k) > H.at(k + 1); }

// False when two modes never show.
bool smoothToTwoModes(const Counts& h, Bins& H) {
    std::copy(h.begin(), h.end(), H.begin());
    for (int pass = 1; pass < 1000; ++pass) {
        int peaks = 0;
        for (int k = 1; k < 255; ++k) peaks += peak(H, k) ? 1 : 0;
        if (peaks == 2) return true;
        H[0] = (2 * H[0] + H[1]) / 3;
        for (int k = 1; k < 255; ++k) H.at(k) = (H.at(k - 1) + H.at(k) + H.at(k + 1)) / 3;
        H[255] = (H[254] + 2 * H[255]) / 3;
    }
    return false;
}

int intermodes(const Counts& h) {
    Bins H{};
    if (!smoothToTwoModes(h, H)) return -1;
    int sum = 0;
    for (int k = 1; k < 255; ++k) sum += peak(H, k) ? k : 0;
    return sum / 2;
}

int minimum(const Counts& h) {
    Bins H{};
    if (!smoothToTwoModes(h, H)) return -1;
    bool seen = false;
    for (int k = 1; k < 255; ++k) {
        if (peak(H, k)) {
            seen = true;
        } else if (seen && H.at(k - 1) >= H.at(k) && H.at(k + 1) >= H.at(k)) {
            return k - 1;
        }
    }
    return -1;
}

int huang(const Counts& h) {
    const int f = firstUsed(h);
    int L = 255;
    while (L > f && h.at(L) == 0) --L;
    if (L <= f) L = 255;
    if (f > 255) return -1;
    if (L == f || L == f + 1) return f;
    Counts S{};
    Counts W{};
    S[0] = h[0];
    for (int i = std::max(1, f); i <= L; ++i) {
        S.at(i) = S.at(i - 1) + h.at(i);
        W.at(i) = W.at(i - 1) + static_cast<std::uint32_t>(i) * h.at(i);
    }
    Bins E{};
    for (int d = 1; d <= L - f; ++d) {
        const double x = 1.0 / (static_cast<double>(d) / (L - f) + 1.0);
        E.at(d) = -x * std::log(x) - (1.0 - x) * std::log(1.0 - x);
    }
    double best = 1.79e308;
    int level = -1;
    for (int t = f; t <= L; ++t) {
        std::int64_t cost = 0;
        const int mu = static_cast<int>(std::lround(static_cast<double>(W.at(t)) / S.at(t)));
        for (int i = f; i <= t; ++i) cost += std::lrint(E.at(std::abs(i - mu)) * h.at(i));
        if (S.at(L) != S.at(t)) {
            const int mu2 =
                static_cast<int>(std::lround(static_cast<double>(W.at(L) - W.at(t)) / (S.at(L) - S.at(t))));
            for (int i = t + 1; i <= L; ++i) cost += std::lrint(E.at(std::abs(i - mu2)) * h.at(i));
        }
        if (static_cast<double>(cost) < best) {
            best = static_cast<double>(cost);
            level = t;
        }
    }
    return level;
}

int iterative(const Counts& h) {
    const int f = firstUsed(h);
    if (f == 255 || f == 254) return f;
    int old = f;
    int t = (f + 255) / 2;
    for (int updates = 0; t != old; ++updates) {
        if (updates == 1000 || countOver(h, t + 1, 255) == 0) return -1;
        old = t;
        const std::int64_t m1 = weightOver(h, f, t) / countOver(h, f, t);
        const std::int64_t m2 = weightOver(h, t + 1, 255) / countOver(h, t + 1, 255);
        t = static_cast<int>((m1 + m2) / 2);
    }
    return t;
}

double entropy(const Counts& h, int from, int to) {
    const auto n = static_cast<double>(countOver(h, from, to));
    double sum = 0;
    for (int i = from; i <= to; ++i) {
        if (h.at(i) == 0) continue;
        const double q = h.at(i) / n;
        sum += q * static_cast<double>(std::log(static_cast<float>(q)));
    }
    return -sum;
}

int maxEntropy(const Counts& h) {
    double best = -1;
    int level = 0;
    for (int t = 0; t < 256; ++t) {
        const double score = entropy(h, 0, t - 1) + entropy(h, t, 255);
        if (score > best) {
            best = score;
            level = t;
        }
    }
    return level;
}

int isoData(const Counts& h) {
    int g = 0;
    for (int i = 255; i >= 1; --i) g = h.at(i) > 0 ? i + 1 : g;
    while (true) {
        const std::int64_t n1 = countOver(h, 0, std::min(g - 1, 255));
        const std::int64_t n2 = countOver(h, g + 1, 255);
        if (n1 >= 1 && n2 >= 1) {
            const std::int64_t sum = weightOver(h, 0, g - 1) / n1 + weightOver(h, g + 1, 255) / n2;
            if (g == std::lround(static_cast<double>(sum) * 0.5)) return g;
        }
        if (++g > 254) return 0;
    }
}

int moments(const Counts& h) {
    double m[4] = {};
    for (int i = 0; i < 256; ++i) {
        for (int k = 0; k < 4; ++k) m[k] += std::pow(i, k) * h.at(i);
    }
    const double cd = m[2] * m[0] - m[1] * m[1];
    const double c1 = (m[2] * m[1] - m[3] * m[0]) / cd;
    const double c0 = (m[1] * m[3] - m[2] * m[2]) / cd;
    const double p0 = 0.5 - (m[1] / m[0] + c1 / 2) / std::sqrt(c1 * c1 - 4 * c0);
    const auto n = static_cast<double>(countOver(h, 0, 255));
    double best = 10000000.0;
    int level = 0;
    for (int i = 0; i < 256; ++i) {
        const double distance = std::abs(static_cast<double>(countOver(h, 0, i)) / n - p0);
        if (distance < best) {
            best = distance;
            level = i;
        }
    }
    return level;
}

double spread(const Counts& h, int from, int to) {
    const double mean =
        static_cast<double>(weightOver(h, from, to)) / static_cast<double>(countOver(h, from, to));
    double V = 0;
    for (int i = from; i <= to; ++i) V += h.at(i) * ((i - mean) * (i - mean));
    return V;
}

int minError(const Counts& h) {
    const int f = firstUsed(h);
    if (f == 255 || f == 254) return f;
    double best = 1e20;
    int level = -1;
    for (int t = f; t < 255; ++t) {
        const auto N1 = static_cast<double>(countOver(h, f, t));
        const auto N2 = static_cast<double>(countOver(h, t + 1, 255));
        const double V1 = spread(h, f, t);
        const double V2 = spread(h, t + 1, 255);
        if (V1 == 0 || V2 == 0) {
            if (level == -1) level = t;
            continue;
        }
        const double s1 = std::sqrt(V1 / N1);
        const double s2 = std::sqrt(V2 / N2);
        const double J = 1 + 2 * (N1 * std::log(s1 / N1) + N2 * std::log(s2 / N2));
        if (J < best) {
            best = J;
            level = t;
        }
    }
    return level;
}

int shanbhag(const Counts& h) {
    const auto n = static_cast<double>(countOver(h, 0, 255));
    Bins p{};
    Bins P1{};
    Bins P2{};
    for (int i = 0; i < 256; ++i) {
        p.at(i) = h.at(i) / n;
        P1.at(i) = i == 0 ? p[0] : P1.at(i - 1) + p.at(i);
        P2.at(i) = 1 - P1.at(i);
    }
    const auto below = [](double x) { return std::abs(x) < 2.220446049250313e-16; };
    int f = 0;
    while (f < 255 && below(P1.at(f))) ++f;
    if (below(P1.at(f))) f = 0;
    int L = 255;
    while (L > f && below(P2.at(L))) --L;
    if (below(P2.at(L))) L = 255;
    double best = 1e7;
    int level = -1;
    for (int t = f; t <= L; ++t) {
        const double a = 0.5 / P1.at(t);
        double sum1 = 0;
        for (int i = 1; i <= t; ++i) sum1 += p.at(i) * std::log(1 - a * P1.at(i - 1));
        const double b = 0.5 / P2.at(t);
        double sum2 = 0;
        for (int i = t + 1; i < 256; ++i) sum2 += p.at(i) * std::log(1 - b * P2.at(i));
        const double score = std::abs(-a * sum1 - (-b * sum2));
        if (score < best) {
            best = score;
            level = t;
        }
    }
    return level;
}

}  // namespace

Counts directCounts(const cv::Mat& img, bool oneLongRow) {
    Counts h{};
    if (img.empty()) return h;
    const int rows = oneLongRow ? 1 : img.rows;
    const int cols = oneLongRow ? img.rows * img.cols : img.cols;
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < cols; ++x) ++h.at(img.ptr(y)[x]);
    }
    return h;
}

Counts libraryCounts(const cv::Mat& img) {
    Counts h{};
    if (img.empty()) return h;
    const int channel = 0;
    const int bins = 256;
    const float range[] = {0, 255};
    const float* ranges = range;
    cv::Mat counts;
    cv::calcHist(&img, 1, &channel, cv::noArray(), counts, 1, &bins, &ranges);
    for (int i = 0; i < 256; ++i) h.at(i) = static_cast<std::uint32_t>(std::lrint(counts.at<float>(i)));
    return h;
}

int otsu(const Counts& h, double& score) {
    score = -1;
    const int f = firstUsed(h);
    if (f == 256) return -1;
    if (f == 255 || f == 254) return f;
    const auto N = static_cast<double>(countOver(h, f, 255));
    const auto S = static_cast<double>(weightOver(h, f, 255));
    int level = 0;
    for (int t = f; t < 255; ++t) {
        const auto N1 = static_cast<double>(countOver(h, f, t));
        const auto S1 = static_cast<double>(weightOver(h, f, t));
        const double m1 = S1 / N1;
        const double m2 = (S - S1) / (N - N1);
        const double d = m1 - m2;
        const double s = ((N - N1) / N) * (N1 / N) * (d * d);
        if (s > score) {
            score = s;
            level = t;
        }
    }
    return level;
}

int triangle(Counts h) {
    const int f = firstUsed(h);
    int lo = f == 256 ? 0 : f;
    if (lo > 0) --lo;
    int hi = 255;
    while (hi > 0 && h.at(hi) == 0) --hi;
    if (hi < 255) ++hi;
    int top = 0;
    for (int i = 1; i < 256; ++i) top = h.at(i) > h.at(top) ? i : top;
    const bool inverted = top - lo < hi - top;
    if (inverted) {
        for (int i = 0; i < 128; ++i) std::swap(h.at(i), h.at(255 - i));
        lo = 255 - hi;
        top = 255 - top;
    }
    int split = lo;
    double dmax = 0;
    for (int i = lo + 1; i <= top; ++i) {
        const double d = static_cast<double>(h.at(i)) * (lo - top) + static_cast<double>(i) * h.at(top);
        if (d > dmax) {
            dmax = d;
            split = i;
        }
    }
    return inverted ? 256 - split : split - 1;
}

int requiredNumber(const Counts& h, int required) {
    for (int t = 255; t >= 0; --t) {
        if (countOver(h, t, 255) > required) return t;
    }
    return -1;
}

int level(const Counts& direct, const Counts& library, int method) {
    double score = 0;
    switch (method) {
        case 1:
            return triangle(direct);
        case 2:
            return minimum(library);
        case 3:
            return intermodes(library);
        case 4:
            return huang(direct);
        case 5:
            return iterative(library);
        case 7:
            return maxEntropy(direct);
        case 8:
            return isoData(direct);
        case 9:
            return moments(direct);
        case 10:
            return minError(direct);
        case 11:
            return shanbhag(direct);
        default:
            return otsu(library, score);
    }
}

}  // namespace reference
