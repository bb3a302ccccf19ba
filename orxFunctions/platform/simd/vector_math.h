// Elementary functions of vectors of doubles, each as exact as its callers need; the rules of simd/vectors.h
// hold here too. Every instruction set gives the same bits.
#ifndef ORXFUNCTIONS_PLATFORM_SIMD_VECTOR_MATH_H
#define ORXFUNCTIONS_PLATFORM_SIMD_VECTOR_MATH_H

#include "orxFunctions/platform/simd/narrow_vectors.h"

namespace orx::ORX_SIMD {

// Horner's rule; the coefficient of the highest power comes first.
template <std::size_t kCount>
inline VecD polynomial(const double (&coefficients)[kCount], VecD x) {
    VecD sum = VecD::all(coefficients[0]);
    for (std::size_t i = 1; i < kCount; ++i) sum = sum * x + VecD::all(coefficients[i]);
    return sum;
}

// atan(q) for |q| <= 1, to 3e-16 of itself: q times a polynomial in q^2, an expansion of
// atan(sqrt(u))/sqrt(u) in Chebyshev polynomials over [0, 1].
inline VecD arcTangent(VecD q) {
    constexpr double kCoefficients[] = {
        1.2631178430477426e-05, -0.00014617088163625013, 0.0008033604181626027,
        -0.0028047655531701315, 0.007038646202989813,    -0.013674139288399478,
        0.021740213830758134,   -0.02970071773623423,    0.03651081352721035,
        -0.042125723963855326,  0.04719723992321112,     -0.052527255573225747,
        0.05880342002401543,    -0.06666371187721098,    0.0769227555520563,
        -0.09090906605656898,   0.11111110982087126,     -0.14285714281592693,
        0.19999999999929946,    -0.3333333333333286,     1.0};
    return polynomial(kCoefficients, q * q) * q;
}

// atan(q) for 0 <= q <= 1, to 1e-10 of itself: arcTangent's expansion, cut off where floats don't tell.
inline VecD coarseArcTangent(VecD q) {
    constexpr double kCoefficients[] = {-0.000680496948771, 0.0048272258736,  -0.0160551558141,
                                        0.0341334160404,    -0.0542153021972, 0.0724228378394,
                                        -0.0897905091578,   0.110929847562,   -0.142839484168,
                                        0.199999099567,     -0.333333315182,  0.999999999939};
    return polynomial(kCoefficients, q * q) * q;
}

// atan2(y, x) as a float in [0, 2 pi); x and y must not both be 0.
inline VecD fullAngle(VecD y, VecD x) {
    const VecD zero = VecD::all(0);
    const VecD pi = VecD::all(3.141592653589793);
    const VecD last = VecD::all(6.283185005187988);  // the largest float below 2 pi
    const MaskD steep = abs(x) < abs(y);
    const VecD small = coarseArcTangent(select(steep, abs(x), abs(y)) / select(steep, abs(y), abs(x)));
    const VecD firstQuadrant = select(steep, VecD::all(1.5707963267948966) - small, small);
    const VecD upperHalf = select(x < zero, pi - firstQuadrant, firstQuadrant);
    return select(y < zero, min(pi + pi - upperHalf, last), upperHalf);
}

// ln(a) for positive normal numbers, to 1e-10: 2 atanh((m - 1)/(m + 1)) of the mantissa in [1/sqrt 2, sqrt
// 2].
inline VecD logarithm(VecD a) {
    const VecD one = VecD::all(1);
    VecD exponent{};
    VecD mantissa = splitExponent(a, exponent);
    const MaskD upper = VecD::all(1.4142135623730951) < mantissa;
    mantissa = select(upper, mantissa * VecD::all(0.5), mantissa);
    exponent = select(upper, exponent + one, exponent);
    const VecD z = (mantissa - one) / (mantissa + one);
    constexpr double kCoefficients[] = {2.0 / 11, 2.0 / 9, 2.0 / 7, 2.0 / 5, 2.0 / 3, 2.0};
    return exponent * VecD::all(0.6931471805599453) + z * polynomial(kCoefficients, z * z);
}

// exp(a) for 0 <= a <= 4, to 5e-9 of itself: a power of the series for a / 16.
inline VecD exponential(VecD a) {
    const VecD one = VecD::all(1);
    const VecD x = a * VecD::all(1.0 / 16);
    VecD sum = one;
    for (int i = 7; i >= 1; --i) sum = one + x * VecD::all(1.0 / i) * sum;
    for (int i = 0; i < 4; ++i) sum = sum * sum;
    return sum;
}

}  // namespace orx::ORX_SIMD

#endif
