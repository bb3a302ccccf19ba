// A value that one thread sets while others read it.
#ifndef ORXFUNCTIONS_CAMERA_POLLED_H
#define ORXFUNCTIONS_CAMERA_POLLED_H

#include <atomic>

namespace orx {

// Used like the plain value: assigned, read, copied. Thread-safe; each read and each write is one whole. T is
// a plain type such as bool or int.
template <typename T>
class TPolled {
  public:
    TPolled(T value = T()) noexcept : value_(value) {}
    TPolled(const TPolled& other) noexcept : value_(other.value_.load()) {}
    TPolled& operator=(const TPolled& other) noexcept {
        value_.store(other.value_.load());
        return *this;
    }
    TPolled& operator=(T value) noexcept {
        value_.store(value);
        return *this;
    }
    operator T() const noexcept { return value_.load(); }

  private:
    std::atomic<T> value_;
};

}  // namespace orx

#endif
