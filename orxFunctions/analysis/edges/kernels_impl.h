// The loops of edges/kernels.h, compiled once for each instruction set.
#ifndef ORXFUNCTIONS_ANALYSIS_EDGES_KERNELS_IMPL_H
#define ORXFUNCTIONS_ANALYSIS_EDGES_KERNELS_IMPL_H

#include <cstddef>
#include <cstdint>

#include "orxFunctions/analysis/edges/kernels.h"
#include "orxFunctions/platform/simd/narrow_vectors.h"
#include "orxFunctions/platform/simd/vector_math.h"

namespace orx::edge_kernels::ORX_SIMD {

using namespace orx::ORX_SIMD;

// To 16 bits, saturated.
inline std::int16_t narrowed(std::int32_t sum) {
    return static_cast<std::int16_t>(sum < -32768 ? -32768 : sum > 32767 ? 32767 : sum);
}

inline VecS filterBytes(const ByteTap* taps, std::size_t from, std::size_t to, std::size_t i) {
    VecS sum = VecS::all(0);
    for (std::size_t k = from; k < to; ++k) {
        const VecS difference = VecS::loadBytes(taps[k].after + i) - VecS::loadBytes(taps[k].before + i);
        sum = sum + difference * VecS::all(taps[k].coefficient);
    }
    return sum;
}

inline std::int16_t filterByte(const ByteTap* taps, std::size_t count, std::size_t i) {
    std::int32_t sum = 0;
    for (std::size_t k = 0; k < count; ++k) {
        sum += (taps[k].after[i] - taps[k].before[i]) * taps[k].coefficient;
    }
    return narrowed(sum);
}

inline void gradientRow(const ByteTaps& taps, std::size_t width, std::int16_t* out) {
    std::size_t i = 0;
    for (; i + VecS::kLanes <= width; i += VecS::kLanes) {
        VecS dx = filterBytes(taps.horizontal, 0, taps.split, i);
        VecS dy = filterBytes(taps.vertical, 0, taps.split, i);
        if (taps.split < taps.count) {
            dx = addSaturated(dx, filterBytes(taps.horizontal, taps.split, taps.count, i));
            dy = addSaturated(dy, filterBytes(taps.vertical, taps.split, taps.count, i));
        }
        storeInterleaved(dx, dy, out + 2 * i);
    }
    for (; i < width; ++i) {
        out[2 * i] = filterByte(taps.horizontal, taps.count, i);
        out[2 * i + 1] = filterByte(taps.vertical, taps.count, i);
    }
}

// From 1/16384 to 128 times the grey values, rounding half up.
constexpr std::int32_t kColumnShift = 7;
constexpr std::int32_t kColumnHalf = 1 << (kColumnShift - 1);
// From 1/16384 of 128 times the grey values to 128 times the grey values.
constexpr std::int32_t kRowShift = 14;
constexpr std::int32_t kRowHalf = 1 << (kRowShift - 1);

// Taps whose number is known to the compiler: their loops unroll and their coefficients stay in registers.
template <std::size_t Count>
struct FixedTaps {
    explicit FixedTaps(const GaussTap* from) {
        for (std::size_t k = 0; k < Count; ++k) taps[k] = from[k];
    }
    const GaussTap& operator[](std::size_t k) const { return taps[k]; }

    GaussTap taps[Count];
};
// As many as sigma 1, the usual one, has.
constexpr std::size_t kUsualTaps = 4;

template <typename Taps>
void gaussColumnsOf(Taps taps, std::size_t count, const std::uint8_t* const* rows, std::size_t width,
                    std::int16_t* smooth, std::int16_t* derive) {
    const std::uint8_t* const* centre = rows + (count - 1);
    std::size_t i = 0;
    for (; i + VecS::kLanes <= width; i += VecS::kLanes) {
        VecSums smoothed = VecSums::all(kColumnHalf);
        VecSums derived = VecSums::all(kColumnHalf);
        // Two taps at a time; sums and differences of bytes fit 16 bits.
        for (std::size_t k = 0; k < count; k += 2) {
            const VecS after = VecS::loadBytes(centre[k] + i);
            const VecS before = VecS::loadBytes(*(centre - k) + i);
            const VecS nextAfter = VecS::loadBytes(centre[k + 1] + i);
            const VecS nextBefore = VecS::loadBytes(*(centre - k - 1) + i);
            smoothed.add(after + before, nextAfter + nextBefore,
                         allPairs(taps[k].smooth, taps[k + 1].smooth));
            derived.add(after - before, nextAfter - nextBefore, allPairs(taps[k].derive, taps[k + 1].derive));
        }
        smoothed.narrow<kColumnShift>().store(smooth + i);
        derived.narrow<kColumnShift>().store(derive + i);
    }
    for (; i < width; ++i) {
        std::int32_t smoothed = kColumnHalf;
        std::int32_t derived = kColumnHalf;
        for (std::size_t k = 0; k < count; ++k) {
            const std::int32_t after = centre[k][i];
            const std::int32_t before = (*(centre - k))[i];
            smoothed += (after + before) * taps[k].smooth;
            derived += (after - before) * taps[k].derive;
        }
        smooth[i] = narrowed(smoothed >> kColumnShift);
        derive[i] = narrowed(derived >> kColumnShift);
    }
}

inline void gaussColumns(const GaussTap* taps, std::size_t count, const std::uint8_t* const* rows,
                         std::size_t width, std::int16_t* smooth, std::int16_t* derive) {
    if (count == kUsualTaps) {
        const std::uint8_t* usual[2 * kUsualTaps - 1];
        for (std::size_t k = 0; k < 2 * kUsualTaps - 1; ++k) usual[k] = rows[k];
        gaussColumnsOf(FixedTaps<kUsualTaps>(taps), kUsualTaps, usual, width, smooth, derive);
    } else {
        gaussColumnsOf(taps, count, rows, width, smooth, derive);
    }
}

template <typename Taps>
void gaussRowsOf(Taps taps, std::size_t count, const std::int16_t* smooth, const std::int16_t* derive,
                 std::size_t width, std::int16_t* out) {
    std::size_t i = 0;
    for (; i + VecS::kLanes <= width; i += VecS::kLanes) {
        VecSums dx = VecSums::all(kRowHalf);
        VecSums dy = VecSums::all(kRowHalf);
        for (std::size_t k = 0; k < count; k += 2) {
            // Smoothed values are not negative, so that their differences fit 16 bits; sums of derived ones
            // may not.
            const VecS difference = VecS::load(smooth + i + k) - VecS::load(smooth + i - k);
            const VecS next = VecS::load(smooth + i + k + 1) - VecS::load(smooth + i - k - 1);
            dx.add(difference, next, allPairs(taps[k].derive, taps[k + 1].derive));
            dy.add(VecS::load(derive + i + k), VecS::load(derive + i - k),
                   allPairs(taps[k].smooth, taps[k].smooth));
            dy.add(VecS::load(derive + i + k + 1), VecS::load(derive + i - k - 1),
                   allPairs(taps[k + 1].smooth, taps[k + 1].smooth));
        }
        storeInterleaved(dx.narrow<kRowShift>(), dy.narrow<kRowShift>(), out + 2 * i);
    }
    for (; i < width; ++i) {
        std::int32_t dx = kRowHalf;
        std::int32_t dy = kRowHalf;
        for (std::size_t k = 0; k < count; ++k) {
            dx += (smooth[i + k] - *(smooth + i - k)) * taps[k].derive;
            dy += (derive[i + k] + *(derive + i - k)) * taps[k].smooth;
        }
        out[2 * i] = narrowed(dx >> kRowShift);
        out[2 * i + 1] = narrowed(dy >> kRowShift);
    }
}

inline void gaussRows(const GaussTap* taps, std::size_t count, const std::int16_t* smooth,
                      const std::int16_t* derive, std::size_t width, std::int16_t* out) {
    if (count == kUsualTaps) {
        gaussRowsOf(FixedTaps<kUsualTaps>(taps), kUsualTaps, smooth, derive, width, out);
    } else {
        gaussRowsOf(taps, count, smooth, derive, width, out);
    }
}

inline void magnitudeRow(const std::int16_t* gradient, std::size_t width, std::int32_t* out) {
    for (std::size_t i = 0; i < width; i += VecI::kLanes) {
        const VecI pairs = VecI::loadPairs(gradient + 2 * i);
        pairProducts(pairs, pairs).store(out + i);
    }
}

// The lanes whose magnitude is a maximum across the edge. tan 22.5 degrees is 13573 / 2^15, and tan 67.5 is
// 2 more; of two neighbours the first must be lower, the second not higher, on a diagonal both lower.
inline VecI isMaximum(VecI gradient, VecI centre, const std::int32_t* above, const std::int32_t* row,
                      const std::int32_t* below) {
    const VecI magnitudes = pairMagnitudes(gradient);
    const VecI x = magnitudes & VecI::all(0xFFFF);
    const VecI y = shiftRightUnsigned<16>(magnitudes);
    const VecI low = multiply16(x, VecI::all(13573));
    const VecI nearHorizontal = low > shiftLeft<15>(y);
    // The upper line needs 32 unsigned bits, 32768 * (13573 + 65536): compare halves, which decides alike
    // since the left side is even.
    const VecI high = low + shiftLeft<16>(x);
    const VecI nearVertical = shiftLeft<14>(y) > shiftRightUnsigned<1>(high);
    const VecI signsDiffer = shiftRightSigned<31>(gradient ^ shiftLeft<16>(gradient));

    const VecI alongRow = andNot(VecI::load(row + 1) > centre, centre > VecI::load(row - 1));
    const VecI alongColumn = andNot(VecI::load(below) > centre, centre > VecI::load(above));
    const VecI falling = (centre > VecI::load(above - 1)) & (centre > VecI::load(below + 1));
    const VecI rising = (centre > VecI::load(above + 1)) & (centre > VecI::load(below - 1));
    const VecI diagonal = (signsDiffer & rising) | andNot(signsDiffer, falling);
    const VecI steep = (nearVertical & alongColumn) | andNot(nearVertical, diagonal);
    return (nearHorizontal & alongRow) | andNot(nearHorizontal, steep);
}

inline void suppressRow(const std::int16_t* gradient, const std::int32_t* above, const std::int32_t* centre,
                        const std::int32_t* below, std::size_t width, std::int32_t low, std::int32_t high,
                        SuppressedRow& out) {
    out.strongCount = 0;
    out.weakCount = 0;
    for (std::size_t i = 0; i < width; i += VecI::kLanes) {
        const VecI magnitude = VecI::load(centre + i);
        const VecI candidate = magnitude > VecI::all(low);
        unsigned lanes = candidate.lanes();
        if (width - i < VecI::kLanes) lanes &= (1U << (width - i)) - 1U;
        if (lanes == 0) continue;
        const VecI pairs = VecI::loadPairs(gradient + 2 * i);
        lanes &= isMaximum(pairs, magnitude, above + i, centre + i, below + i).lanes();
        const unsigned strong = (magnitude > VecI::all(high)).lanes();
        for (; lanes != 0; lanes &= lanes - 1) {
            const unsigned lane = lowestBit(lanes);
            const auto column = static_cast<std::int32_t>(i + lane);
            if (((strong >> lane) & 1U) != 0) {
                out.strong[out.strongCount++] = column;
            } else {
                out.weak[out.weakCount++] = column;
            }
        }
    }
}

inline VecD negated(VecD a) { return VecD::all(-1.0) * a; }

// The quadratic a0 + a1 x + a2 y + a3 x^2 + a4 xy + a5 y^2 through 3 x 3 values, least squares, but for the
// sign of a4, which takes y upwards (EdgesSubPix keeps it so).
struct Facet {
    VecD a0, a1, a2, a3, a4, a5;
};

inline Facet fitFacet(const VecD* g) {
    const VecD two = VecD::all(2);
    const VecD six = VecD::all(6);
    Facet f{};
    f.a0 = (two * g[1] - g[0] - g[2] + two * g[3] + VecD::all(5) * g[4] + two * g[5] - g[6] + two * g[7] -
            g[8]) /
           VecD::all(9);
    f.a1 = (g[2] - g[0] - g[3] + g[5] - g[6] + g[8]) / six;
    f.a2 = (g[6] + g[7] + g[8] - g[0] - g[1] - g[2]) / six;
    f.a3 = (g[0] - two * g[1] + g[2] + g[3] - two * g[4] + g[5] + g[6] - two * g[7] + g[8]) / six;
    f.a4 = (g[2] - g[0] + g[6] - g[8]) / VecD::all(4);
    f.a5 = (g[0] + g[1] + g[2] - two * (g[3] + g[4] + g[5]) + g[6] + g[7] + g[8]) / six;
    return f;
}

// The eigenvector (x, y) of the facet's Hessian whose eigenvalue has the larger magnitude; `alongY` where it
// is (-s, c), else it is (c, s), with |s| <= c.
struct Ridge {
    VecD x, y;
    MaskD alongY;
    VecD eigenvalue;
};

inline Ridge ridgeOf(const Facet& f) {
    const VecD one = VecD::all(1);
    const VecD zero = VecD::all(0);
    const VecD rc = f.a4;
    const VecD cc = VecD::all(2) * f.a3;
    const VecD rr = VecD::all(2) * f.a5;
    // One Jacobi rotation; without a mixed term none is needed.
    const VecD theta = VecD::all(0.5) * (cc - rr) / rc;
    const VecD magnitude = one / (abs(theta) + sqrt(theta * theta + one));
    const VecD tangent = select(theta < zero, negated(magnitude), magnitude);
    const VecD cosine = one / sqrt(tangent * tangent + one);
    const MaskD mixed = zero < abs(rc);
    const VecD c = select(mixed, cosine, one);
    const VecD s = select(mixed, tangent * cosine, zero);
    const VecD e1 = select(mixed, rr - tangent * rc, rr);
    const VecD e2 = select(mixed, cc + tangent * rc, cc);

    const MaskD first = (abs(e2) < abs(e1)) | ((abs(e1) <= abs(e2)) & (abs(e2) <= abs(e1)) & (e1 < e2));
    return {select(first, negated(s), c), select(first, c, s), first, select(first, e1, e2)};
}

inline void refineFacets(FacetBlock& block) {
    // Beyond the errors of arcTangent and of the library's atan2 together, relative to the angle.
    constexpr double kAngleError = 4e-15;
    const VecD half = VecD::all(0.5);
    for (std::size_t i = 0; i < block.count; i += VecD::kLanes) {
        VecD g[9];
        loadSquares3x3(block.corner + i, block.step, g);
        for (VecD& value : g) value = sqrt(value);
        const Facet f = fitFacet(g);
        const Ridge n = ridgeOf(f);

        const VecD two = VecD::all(2);
        const VecD slope = f.a1 * n.x + f.a2 * n.y;
        const VecD bend = two * f.a3 * n.x * n.x + two * f.a4 * n.x * n.y + two * f.a5 * n.y * n.y;
        const VecD t = select(n.eigenvalue < VecD::all(0), negated(slope) / bend, VecD::all(0));
        const VecD px = n.x * t;
        const VecD py = n.y * t;
        const MaskD near = (abs(px) <= half) & (abs(py) <= half);
        const VecD x = loadFloats(block.x + i);
        const VecD y = loadFloats(block.y + i);
        storeFloats(select(near, x + px, x), block.x + i);
        storeFloats(select(near, y + py, y), block.y + i);
        storeFloats(f.a0 / VecD::all(128), block.response + i);

        const VecD angle = arcTangent(select(n.alongY, n.x, n.y) / select(n.alongY, n.y, n.x));
        const VecD direction = select(n.alongY, angle, VecD::all(1.5707963267948966) - angle);
        const VecD positive =
            select(direction < VecD::all(0), direction + VecD::all(6.283185307179586), direction);
        storeFloats(positive * VecD::all(1 - kAngleError), block.direction + i);
        storeFloats(positive * VecD::all(1 + kAngleError), block.directionUpper + i);
        n.x.store(block.normalX + i);
        n.y.store(block.normalY + i);
    }
}

// Across an ideal edge the gradient magnitude is a Gaussian of the distance, so its logarithm is a quadratic
// in x and y whatever the edge's angle, and the least-squares facet of 3 x 3 logarithms finds the edge
// exactly. Sums of logarithms are taken as logarithms of products.
inline void refineMetric(MetricBlock& block) {
    const VecD one = VecD::all(1);
    for (std::size_t i = 0; i < block.count; i += VecD::kLanes) {
        VecD g[9];
        loadSquares3x3(block.corner + i, block.step, g);
        const VecD centre = sqrt(g[4]);
        for (VecD& value : g) value = value + one;  // far below one grey level; keeps the logarithm finite
        const VecD left = logarithm(g[0] * g[3] * g[6]);
        const VecD middle = logarithm(g[1] * g[4] * g[7]);
        const VecD right = logarithm(g[2] * g[5] * g[8]);
        const VecD top = logarithm(g[0] * g[1] * g[2]);
        const VecD bottom = logarithm(g[6] * g[7] * g[8]);
        const VecD corners = logarithm(g[0] * g[8] / (g[2] * g[6]));
        const VecD level = left + middle + right - top - bottom;

        // Derivatives of the logarithm of the magnitude, which is half that of its square.
        const VecD fx = (right - left) * VecD::all(1.0 / 12);
        const VecD fy = (bottom - top) * VecD::all(1.0 / 12);
        const VecD fxx = (left + right - VecD::all(2) * middle) * VecD::all(1.0 / 6);
        const VecD fyy = (top + bottom - VecD::all(2) * level) * VecD::all(1.0 / 6);
        const VecD fxy = corners * VecD::all(1.0 / 8);

        double dx[VecD::kLanes];
        double dy[VecD::kLanes];
        for (std::size_t lane = 0; lane < VecD::kLanes; ++lane) {
            const std::int16_t* pair = block.corner[i + lane] + block.step + 2;
            dx[lane] = pair[0];
            dy[lane] = pair[1];
        }
        const VecD inverse = one / centre;
        const VecD nx = VecD::load(dx) * inverse;
        const VecD ny = VecD::load(dy) * inverse;
        const VecD slope = fx * nx + fy * ny;
        const VecD bend = VecD::all(0) - (fxx * nx * nx + VecD::all(2) * fxy * nx * ny + fyy * ny * ny);
        const VecD offset = slope / bend;
        const VecD rise = VecD::all(0.5) * slope * offset;  // of the logarithm, from the pixel to the edge
        nx.store(block.normalX + i);
        ny.store(block.normalY + i);
        storeFloats(fullAngle(ny, nx), block.direction + i);
        offset.store(block.offset + i);
        bend.store(block.curvature + i);
        // centre * exp(rise), rise being small, in grey levels a pixel
        const VecD steepness =
            centre * (one + rise * (one + rise * VecD::all(0.5) * (one + rise * VecD::all(1.0 / 3)))) *
            VecD::all(block.inverseRamp);
        storeFloats(steepness * sqrt(VecD::all(6.283185307179586) / bend), block.contrast + i);
        // Noise of the facet's slope, relative to the magnitudes one pixel off the edge, over its second
        // derivative.
        const VecD faintness = exponential(max(min(bend * VecD::all(0.5), VecD::all(4)), VecD::all(0)));
        storeFloats(VecD::all(block.deviationScale) * faintness / (steepness * bend), block.deviation + i);
    }
}

inline constexpr Kernels kKernels = {gradientRow, gaussColumns, gaussRows,   magnitudeRow,
                                     suppressRow, refineFacets, refineMetric};

}  // namespace orx::edge_kernels::ORX_SIMD

#endif
