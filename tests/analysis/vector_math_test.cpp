// The vector functions behind the edge kernels against those of the standard library, over all that the
// kernels ask for and on every instruction set that this processor has.
#include "vector_math.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "orxFunctions/platform/simd/choose_kernels.h"

namespace {

using Numbers = std::vector<double>;
using vector_math::Functions;

constexpr std::size_t kCount = 80000;
constexpr double kTwoPi = 6.283185307179586;

// Random numbers for which a test is likely to fail if one fails at all: evenly spread ones after the given
// ones.
template <class Draw>
Numbers numbers(Numbers values, Draw draw) {
    std::mt19937_64 random(31);
    while (values.size() < kCount) values.push_back(draw(random));
    return values;
}

Numbers between(double low, double high) {
    std::uniform_real_distribution<double> spread(low, high);
    return numbers({low, high, (low + high) / 2}, spread);
}

// Evenly spread logarithms: every magnitude counts.
Numbers magnitudes(double low, double high, const Numbers& first) {
    std::uniform_real_distribution<double> spread(std::log2(low), std::log2(high));
    return numbers(first, [&](std::mt19937_64& random) { return std::exp2(spread(random)); });
}

#if defined(ORX_TEST_AVX2)
// Whether the library would call its kernels for AVX2 here.
bool hasAvx2() {
    return &orx::platform::chooseKernels(vector_math::kBaseline, vector_math::kAvx2) == &vector_math::kAvx2;
}
#endif

// Calls check(functions) for the instruction sets at hand.
template <class Check>
void forEachSet(Check check) {
    {
        SCOPED_TRACE("baseline");
        check(vector_math::kBaseline);
    }
#if defined(ORX_TEST_AVX2)
    if (!hasAvx2()) return;
    SCOPED_TRACE("AVX2");
    check(vector_math::kAvx2);
#endif
}

// The largest of error(i) over all numbers; not-a-number counts as infinite.
template <class Error>
double largest(Error error) {
    double worst = 0;
    for (std::size_t i = 0; i < kCount; ++i) {
        const double e = error(i);
        worst = std::isnan(e) ? HUGE_VAL : std::max(worst, e);
    }
    return worst;
}

double relative(double value, double truth) {
    return value == truth ? 0 : std::abs(value - truth) / std::abs(truth);
}

TEST(VectorMath, ArcTangentIsExactToItsLastBit) {
    Numbers q = between(-1, 1);
    const Numbers small = magnitudes(1e-300, 1, {0.0, -0.0, 1e-308, 0x1p-53, 1 - 0x1p-53, -1 + 0x1p-53});
    std::copy_n(small.begin(), kCount / 2, q.begin());
    forEachSet([&](const Functions& functions) {
        Numbers result(kCount);
        functions.arcTangent(q.data(), kCount, result.data());
        EXPECT_LE(largest([&](std::size_t i) { return relative(result[i], std::atan(q[i])); }), 3e-16);
    });
}

TEST(VectorMath, CoarseArcTangentIsExactToTenDigits) {
    Numbers q = between(0, 1);
    const Numbers small = magnitudes(1e-300, 1, {0.0, 1.0});
    std::copy_n(small.begin(), kCount / 2, q.begin());
    forEachSet([&](const Functions& functions) {
        Numbers result(kCount);
        functions.coarseArcTangent(q.data(), kCount, result.data());
        EXPECT_LE(largest([&](std::size_t i) { return relative(result[i], std::atan(q[i])); }), 1e-10);
    });
}

TEST(VectorMath, LogarithmIsExactToTenDigitsBehindThePoint) {
    // Products of three squared magnitudes, and quotients of products of two.
    const Numbers a = magnitudes(
        0x1p-64, 0x1p100,
        {1.0, 1 + 0x1p-52, 1 - 0x1p-53, std::sqrt(2.0), std::nextafter(std::sqrt(2.0), 2.0), std::sqrt(0.5),
         2.0, 0x1p93, std::numeric_limits<double>::min(), std::numeric_limits<double>::max()});
    forEachSet([&](const Functions& functions) {
        Numbers result(kCount);
        functions.logarithm(a.data(), kCount, result.data());
        EXPECT_LE(largest([&](std::size_t i) { return std::abs(result[i] - std::log(a[i])); }), 1e-10);
    });
}

TEST(VectorMath, ExponentialIsExactToEightDigits) {
    const Numbers a = between(0, 4);
    forEachSet([&](const Functions& functions) {
        Numbers result(kCount);
        functions.exponential(a.data(), kCount, result.data());
        EXPECT_LE(largest([&](std::size_t i) { return relative(result[i], std::exp(a[i])); }), 5e-9);
    });
}

TEST(VectorMath, FullAngleIsInItsRangeInEveryDirection) {
    // Unit vectors, among them those along the axes and the diagonals and just beside them.
    Numbers x;
    Numbers y;
    for (int eighth = 0; eighth < 8; ++eighth) {
        for (const double beside : {0.0, 1e-300, -1e-300, 1e-17, -1e-17, 1e-9, -1e-9}) {
            const double cosine[] = {1,  std::sqrt(0.5),  0, -std::sqrt(0.5),
                                     -1, -std::sqrt(0.5), 0, std::sqrt(0.5)};
            x.push_back(cosine[eighth]);
            y.push_back(cosine[(eighth + 6) % 8] + beside);
        }
    }
    std::mt19937_64 random(32);
    std::uniform_real_distribution<double> turn(0, kTwoPi);
    while (x.size() < kCount) {
        const double angle = turn(random);
        x.push_back(std::cos(angle));
        y.push_back(std::sin(angle));
    }
    forEachSet([&](const Functions& functions) {
        Numbers result(kCount);
        functions.fullAngle(y.data(), x.data(), kCount, result.data());
        EXPECT_LE(largest([&](std::size_t i) {
                      const double angle = std::atan2(y[i], x[i]);
                      const double truth = angle < 0 ? angle + kTwoPi : angle;
                      return std::abs(result[i] - std::min(truth, 6.283185005187988));
                  }),
                  1e-10);
        EXPECT_TRUE(std::all_of(result.begin(), result.end(), [](double angle) {
            const auto single = static_cast<float>(angle);
            return single >= 0 && static_cast<double>(single) < kTwoPi;
        }));
    });
}

#if defined(ORX_TEST_AVX2)
TEST(VectorMath, EveryInstructionSetGivesTheSameBits) {
    if (!hasAvx2()) GTEST_SKIP() << "no AVX2 here";
    const Numbers q = between(0, 1);
    const Numbers wide = magnitudes(0x1p-64, 0x1p100, {});
    const Numbers ascending = between(-1, 4);
    const auto expectSame = [](const auto& evaluate) {
        Numbers baseline(kCount);
        Numbers avx2(kCount);
        evaluate(vector_math::kBaseline, baseline.data());
        evaluate(vector_math::kAvx2, avx2.data());
        const void* const expected = baseline.data();
        const void* const actual = avx2.data();
        EXPECT_EQ(std::memcmp(expected, actual, kCount * sizeof(double)), 0);
    };
    expectSame([&](const Functions& f, double* result) { f.arcTangent(q.data(), kCount, result); });
    expectSame([&](const Functions& f, double* result) { f.coarseArcTangent(q.data(), kCount, result); });
    expectSame([&](const Functions& f, double* result) { f.logarithm(wide.data(), kCount, result); });
    expectSame([&](const Functions& f, double* result) { f.exponential(ascending.data(), kCount, result); });
    expectSame(
        [&](const Functions& f, double* result) { f.fullAngle(ascending.data(), q.data(), kCount, result); });
}
#endif

}  // namespace
