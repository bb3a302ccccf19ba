#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <opencv2/core.hpp>
#include <opencv2/core/utility.hpp>
#include <utility>
#include <vector>

#include "orxFunctions/matching/search/kernels.h"

namespace {

using namespace orx::search_kernels;

// Both columns, where the processor has both.
std::vector<const Kernels*> columns() {
    cv::setUseOptimized(false);
    const Kernels* baseline = &chosen();
    cv::setUseOptimized(true);
    return {baseline, &chosen()};
}

template <typename Element>
std::vector<Element> randomElements(std::size_t count, int low, int high) {
    cv::RNG random(42);
    std::vector<Element> elements(count);
    for (Element& element : elements) element = static_cast<Element>(random.uniform(low, high));
    return elements;
}

std::int32_t packed(int x, int y) {
    return static_cast<std::int32_t>(static_cast<std::uint16_t>(x) |
                                     (static_cast<std::uint32_t>(static_cast<std::uint16_t>(y)) << 16));
}

TEST(SearchKernels, MakeFieldsOfDirections) {
    constexpr std::size_t kWidth = 147;
    constexpr float kLeast = 250.0F * 250.0F;
    const auto gradient = randomElements<std::int16_t>(2 * kWidth, -900, 900);
    const auto around = randomElements<std::int32_t>(2 * (kWidth + 2), 0, 900 * 900);
    std::vector<std::int32_t> centre(kWidth + 2);
    for (std::size_t i = 0; i < kWidth; ++i) {
        centre[i + 1] = gradient[2 * i] * gradient[2 * i] + gradient[2 * i + 1] * gradient[2 * i + 1];
    }
    const std::int32_t* above = around.data() + 1;
    const std::int32_t* below = around.data() + kWidth + 3;
    for (const Kernels* kernels : columns()) {
        std::vector<std::int16_t> field(2 * kWidth + 2, 77);
        kernels->fieldRow(gradient.data(), above, centre.data() + 1, below, kWidth, kLeast, field.data());
        for (std::size_t i = 0; i < kWidth; ++i) {
            const double magnitude = centre[i + 1];
            double largest = 0;
            for (std::size_t k = 0; k < 3; ++k) {
                largest =
                    std::max({largest, static_cast<double>(*(above + i + k - 1)),
                              static_cast<double>(centre[i + k]), static_cast<double>(*(below + i + k - 1))});
            }
            const double nearness = std::max(0.0, 1.3 * magnitude / largest - 0.3);
            const double length = magnitude < kLeast ? 0 : kFieldUnit * nearness / std::sqrt(magnitude);
            EXPECT_NEAR(field[2 * i], length * gradient[2 * i], 0.51) << i;
            EXPECT_NEAR(field[2 * i + 1], length * gradient[2 * i + 1], 0.51) << i;
        }
        EXPECT_EQ(field[2 * kWidth], 77) << "written behind the row";
    }
}

TEST(SearchKernels, RespondToDirections) {
    constexpr std::size_t kWidth = 131;
    const auto field = randomElements<std::int16_t>(2 * (kWidth + kRowPadding), -181, 182);
    for (const Kernels* kernels : columns()) {
        for (const auto& [x, y] : {std::pair(256, 0), std::pair(-98, 237), std::pair(0, -256)}) {
            std::vector<std::uint8_t> along(kWidth + 1, 99);
            std::vector<std::uint8_t> against(kWidth + 1, 99);
            kernels->responseRow(field.data(), packed(x, y), kWidth, along.data(), against.data());
            for (std::size_t i = 0; i < kWidth; ++i) {
                const double response =
                    static_cast<double>(field[2 * i] * x + field[2 * i + 1] * y) * kBestResponse / 65536;
                EXPECT_NEAR(along[i], std::max(0.0, response), 0.51) << i;
                EXPECT_NEAR(against[i], std::max(0.0, -response), 0.51) << i;
            }
            EXPECT_TRUE(along[kWidth] == 99 && against[kWidth] == 99) << "written behind the row";
        }
    }
}

TEST(SearchKernels, AddShiftedRows) {
    constexpr std::size_t kRows = 5;
    constexpr std::ptrdiff_t kStep = 200;
    const auto responses = randomElements<std::uint8_t>(40 * kStep, 0, kBestResponse + 1);
    for (const int count : {0, 1, 15, 16, 47, 64}) {
        auto offsets = randomElements<std::int32_t>(64, 0, 30 * kStep);
        offsets.resize(static_cast<std::size_t>(count));
        std::array<int, kRows * kBlockColumns> expected{};
        int most = 0;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            const auto place = static_cast<std::ptrdiff_t>(i / kBlockColumns) * kStep +
                               static_cast<std::ptrdiff_t>(i % kBlockColumns);
            for (const std::int32_t offset : offsets)
                expected[i] += responses[static_cast<std::size_t>(place + offset)];
            most = std::max(most, expected[i]);
        }
        for (const Kernels* kernels : columns()) {
            std::array<std::int16_t, kRows * kBlockColumns> sums{};
            const std::size_t first = std::min<std::size_t>(30, offsets.size());
            ShiftedRows shifts{offsets.data(), offsets.size(), first, 0};
            EXPECT_EQ(kernels->sumRows(responses.data(), kStep, kRows, shifts, sums.data()), most);
            EXPECT_TRUE(std::equal(sums.begin(), sums.end(), expected.begin())) << count;
            // More than the first ones can reach.
            shifts.leastFirst = static_cast<std::int32_t>(first) * kBestResponse + 1;
            EXPECT_EQ(kernels->sumRows(responses.data(), kStep, kRows, shifts, sums.data()), 0);
            EXPECT_EQ(std::count(sums.begin(), sums.end(), 0), static_cast<std::ptrdiff_t>(sums.size()));
        }
    }
}

TEST(SearchKernels, AddWindowsOfProducts) {
    constexpr std::ptrdiff_t kStep = 120;
    constexpr std::size_t kWindow = kWindowRows * kWindowColumns;
    const auto field = randomElements<std::int16_t>(30 * kStep, -256, 257);
    const auto normals = randomElements<std::int16_t>(2 * 33, -256, 257);
    std::vector<std::int32_t> packedNormals;
    std::vector<std::int32_t> offsets;
    for (std::size_t i = 0; i < normals.size() / 2; ++i) {
        packedNormals.push_back(packed(normals[2 * i], normals[2 * i + 1]));
        offsets.push_back(static_cast<std::int32_t>(kStep * static_cast<std::ptrdiff_t>(i % 20) +
                                                    2 * static_cast<std::ptrdiff_t>(i)));
    }
    std::array<std::int32_t, kWindow> expected{};
    std::array<std::int32_t, kWindow> expectedMagnitudes{};
    std::array<std::int32_t, kWindow> expectedPositives{};
    for (std::size_t w = 0; w < kWindow; ++w) {
        const std::size_t place = w / kWindowColumns * kStep + 2 * (w % kWindowColumns);
        expected[w] = expectedMagnitudes[w] = expectedPositives[w] = 5;
        for (std::size_t i = 0; i < offsets.size(); ++i) {
            const std::int16_t* pair = field.data() + place + offsets[i];
            const int product = pair[0] * normals[2 * i] + pair[1] * normals[2 * i + 1];
            expected[w] += product;
            expectedMagnitudes[w] += std::abs(product);
            expectedPositives[w] += std::max(0, product);
        }
    }
    const PlacedPoints points{offsets.data(), packedNormals.data(), offsets.size()};
    for (const Kernels* kernels : columns()) {
        std::array<std::int32_t, kWindow> sums{};
        sums.fill(5);
        kernels->windowSums(field.data(), kStep, points, sums.data());
        EXPECT_EQ(sums, expected);
        sums.fill(5);
        kernels->windowMagnitudes(field.data(), kStep, points, sums.data());
        EXPECT_EQ(sums, expectedMagnitudes);
        sums.fill(5);
        kernels->windowPositives(field.data(), kStep, points, sums.data());
        EXPECT_EQ(sums, expectedPositives);
    }
}

}  // namespace
