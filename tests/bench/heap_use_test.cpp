#include "bench/heap_use.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <opencv2/core.hpp>
#include <thread>
#include <vector>

namespace {

using bench::HeapUse;
using bench::heapUseOf;

// Blocks are rounded up by the heap, by less than a page.
void expectBytes(std::int64_t expected, std::int64_t counted) {
    EXPECT_GE(counted, expected);
    EXPECT_LT(counted, expected + 4096);
}

// Kept out of the optimiser's sight.
volatile char* kept = nullptr;

TEST(HeapUse, CountsWhatNewAndMallocGive) {
    EXPECT_EQ(0, heapUseOf([] {}).blocks);
    const HeapUse use = heapUseOf([] {
        const auto first = std::make_unique<char[]>(10000);
        kept = first.get();
        void* second = std::malloc(20000);
        kept = static_cast<char*>(second);
        second = std::realloc(second, 50000);
        kept = static_cast<char*>(second);
        std::free(second);
    });
    EXPECT_EQ(3, use.blocks);
    expectBytes(80000, use.bytes);
    expectBytes(60000, use.peak);  // the block that grew is counted once
}

TEST(HeapUse, PeakIsWhatIsHeldAtOnce) {
    const HeapUse use = heapUseOf([] {
        for (int i = 0; i < 5; ++i) {
            const std::vector<char> block(100000);
            kept = const_cast<char*>(block.data());
        }
    });
    EXPECT_EQ(5, use.blocks);
    expectBytes(100000, use.peak);
}

TEST(HeapUse, SeesOpenCvAndOtherThreads) {
    const HeapUse use = heapUseOf([] {
        std::thread([] {
            const cv::Mat picture(1000, 3000, CV_8UC1);
            kept = reinterpret_cast<char*>(picture.data);
        }).join();
    });
    EXPECT_GE(use.bytes, 3000000);
    EXPECT_LT(use.peak, 3100000);
}

TEST(HeapUse, PeakIsBeyondWhatWasHeldBefore) {
    auto before = std::make_unique<char[]>(50000);
    const HeapUse use = heapUseOf([&] {
        before.reset();
        const std::vector<char> block(30000);
        kept = const_cast<char*>(block.data());
    });
    EXPECT_EQ(1, use.blocks);
    EXPECT_EQ(0, use.peak);
}

}  // namespace
