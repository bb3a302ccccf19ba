// 32-bit integer arithmetic that wraps around. Several formulas of this library are stated in 32-bit
// integers, their results for large images included; signed overflow is undefined in C++, so they are
// computed on unsigned values.
#ifndef ORXFUNCTIONS_FOUNDATION_WRAPPING_INTERNAL_H
#define ORXFUNCTIONS_FOUNDATION_WRAPPING_INTERNAL_H

#include <cstdint>
#include <opencv2/core.hpp>

namespace orx {

class Wrap32 {
  public:
    constexpr explicit Wrap32(std::int32_t value) : bits_(static_cast<std::uint32_t>(value)) {}

    constexpr std::int32_t value() const { return static_cast<std::int32_t>(bits_); }
    constexpr double toDouble() const { return static_cast<double>(value()); }

    friend constexpr Wrap32 operator+(Wrap32 a, Wrap32 b) { return Wrap32(a.bits_ + b.bits_); }
    friend constexpr Wrap32 operator-(Wrap32 a, Wrap32 b) { return Wrap32(a.bits_ - b.bits_); }
    friend constexpr Wrap32 operator*(Wrap32 a, Wrap32 b) { return Wrap32(a.bits_ * b.bits_); }
    friend constexpr bool operator==(Wrap32 a, Wrap32 b) { return a.bits_ == b.bits_; }

  private:
    constexpr explicit Wrap32(std::uint32_t bits) : bits_(bits) {}

    std::uint32_t bits_;
};

// A point whose coordinates calculate in 32-bit integers that wrap.
struct WrapPoint {
    explicit WrapPoint(cv::Point p) : x(p.x), y(p.y) {}
    WrapPoint(Wrap32 column, Wrap32 row) : x(column), y(row) {}

    friend WrapPoint operator-(const WrapPoint& a, const WrapPoint& b) { return {a.x - b.x, a.y - b.y}; }

    Wrap32 x;
    Wrap32 y;
};

}  // namespace orx

#endif
