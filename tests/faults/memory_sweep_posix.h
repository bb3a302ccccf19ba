// A call, made again and again, each time with another of its allocations failing.
#ifndef ORX_TESTS_FAULTS_MEMORY_SWEEP_POSIX_H
#define ORX_TESTS_FAULTS_MEMORY_SWEEP_POSIX_H

#include <gtest/gtest.h>

#include <new>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/faults/memory_faults_posix.h"

namespace test {

// What a call gave, as bytes; nothing where it answered as its header says for what it can't do.
using Given = std::optional<std::string>;

template <class Number>
std::string bytes(const std::vector<Number>& numbers) {
    static_assert(std::is_trivially_copyable_v<Number>, "of plain values");
    return {reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(Number)};
}
inline std::string bytes(const cv::Mat& image) {
    const cv::Mat whole = image.isContinuous() ? image : image.clone();
    return {reinterpret_cast<const char*>(whole.data), whole.total() * whole.elemSize()};
}

// What a call does without memory.
enum class WithoutMemory { kMayThrow, kAnswers };

// Which allocations of so many are tried: every one of the first, then one in 32 times as many.
inline std::vector<long> sweepSteps(long count) {
    std::vector<long> steps;
    for (long n = 1; n <= count; n += 1 + n / 32) steps.push_back(n);
    return steps;
}

// `call(arm)` makes ready, holds `arm()` while the call itself runs, and tells what was given. Each time the
// answer must be the whole one or the documented refusal, an exception is one of want of memory, nothing is
// left behind, and the next call gives what it should.
template <class Call>
void sweepMemory(const Call& call, WithoutMemory without = WithoutMemory::kMayThrow) {
    using memory::Fault;
    using memory::Length;
    for (int i = 0; i < 2; ++i) call([] { return Fault(0, Length::kOnce); });  // what is made once, is made
    const Given whole = call([] { return Fault(0, Length::kOnce); });
    ASSERT_TRUE(whole.has_value()) << "the call is refused with all memory there is";
    const long count = memory::allocationsSeen();
    if (count == 0 && memory::kNewAlone) return;  // but for pixels
    ASSERT_GT(count, 0) << "the call takes no memory";

    const auto attempt = [&](long n, Length length) {
        try {
            const Given given = call([&] { return Fault(n, length); });
            EXPECT_TRUE(!given || *given == *whole) << "neither the whole answer nor a refusal";
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(without, WithoutMemory::kMayThrow) << "std::bad_alloc";
        } catch (const cv::Exception& error) {
            EXPECT_EQ(without, WithoutMemory::kMayThrow) << error.what();
            EXPECT_EQ(error.code, cv::Error::StsNoMem) << error.what();
        } catch (const std::exception& error) {
            EXPECT_EQ(without, WithoutMemory::kMayThrow) << error.what();
            EXPECT_NE(std::string(error.what()).find("Failed to allocate"), std::string::npos)
                << error.what();  // jsoncpp's
        }
    };
    const auto leaks = [&](long n, Length length) {
        for (int i = 0; i < 3; ++i) {  // once is what a thread or a library keeps
            const long before = memory::liveBlocks();
            attempt(n, length);
            if (memory::liveBlocks() <= before) return false;
        }
        return true;
    };
    for (const Length length : {Length::kOnce, Length::kLasting}) {
        for (const long n : sweepSteps(count)) {
            SCOPED_TRACE("allocation " + std::to_string(n) + " of " + std::to_string(count) +
                         (length == Length::kOnce ? "" : " and all that follow"));
            EXPECT_FALSE(leaks(n, length));
            if (testing::Test::HasFailure()) return;
        }
        const Given after = call([] { return Fault(0, Length::kOnce); });
        EXPECT_TRUE(after == whole) << "the next call gives something else";
    }
}

}  // namespace test

#endif
