#include "inspection/run/heap.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <thread>
#include <vector>

namespace {

long pageFaults() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

// What a picture takes for a while: blocks from a row to a picture of 5 megapixels.
void takeAndGiveBack() {
    std::vector<std::vector<char>> blocks;
    for (const std::size_t size : {300000, 20000000, 5000000, 900000, 15000000, 4000})
        blocks.emplace_back(size, 'x');
    EXPECT_EQ(blocks[1][12345], 'x');
}

TEST(Heap, WhatOnePictureGaveBackServesTheNext) {
    if (ORX_TEST_SANITIZED) GTEST_SKIP() << "a sanitizer has a heap of its own";
    inspection::keepFreedMemory();
    std::thread worker([] {
        takeAndGiveBack();
        const long before = pageFaults();
        for (int i = 0; i < 10; ++i) takeAndGiveBack();
        EXPECT_LT(pageFaults() - before, 10000);  // of 100,000 pages
    });
    worker.join();
}

}  // namespace
