// Numbers as little-endian bytes, whatever the machine's order.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_BYTE_FIELDS_H
#define ORXFUNCTIONS_MATCHING_MODEL_BYTE_FIELDS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace orx::matching {

class ByteWriter {
  public:
    void u32(std::uint32_t value) { number(value, 4); }
    void i32(std::int32_t value) { u32(static_cast<std::uint32_t>(value)); }
    void f32(float value) {
        std::uint32_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        number(bits, 4);
    }
    void f64(double value) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        number(bits, 8);
    }
    void text(const std::string& value) {
        u32(static_cast<std::uint32_t>(value.size()));
        bytes_ += value;
    }
    void raw(const std::string& value) { bytes_ += value; }

    const std::string& bytes() const { return bytes_; }

  private:
    void number(std::uint64_t value, int size) {
        for (int i = 0; i < size; ++i) bytes_.push_back(static_cast<char>(value >> (8 * i) & 0xFFU));
    }

    std::string bytes_;
};

// Beyond the end everything reads as 0, and fits() is false from then on.
class ByteReader {
  public:
    // Of the first `size` bytes, which must outlive it.
    ByteReader(const std::string& bytes, std::size_t size) : bytes_(bytes), size_(size) {}

    std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    std::int32_t i32() {
        const std::uint32_t bits = u32();
        std::int32_t value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    float f32() {
        const std::uint32_t bits = u32();
        float value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    double f64() {
        const std::uint64_t bits = number(8);
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    std::string raw(std::size_t size) {
        if (!take(size)) return {};
        return bytes_.substr(place_ - size, size);
    }

    bool fits() const { return fits_; }
    std::size_t left() const { return size_ - place_; }

  private:
    bool take(std::size_t size) {
        fits_ = fits_ && size <= left();
        if (fits_) place_ += size;
        return fits_;
    }
    std::uint64_t number(std::size_t size) {
        if (!take(size)) return 0;
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size; ++i) {
            const auto byte = static_cast<unsigned char>(bytes_[place_ - size + i]);
            value |= std::uint64_t{byte} << (8 * i);
        }
        return value;
    }

    const std::string& bytes_;
    std::size_t size_;
    std::size_t place_ = 0;
    bool fits_ = true;
};

}  // namespace orx::matching

#endif
