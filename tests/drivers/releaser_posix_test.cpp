// Work that must not hold up the host, where the system has no thread for it.
#include "drivers/TQVisionDriver/releaser.h"

#include <gmock/gmock.h>
#include <pthread.h>

#include <cstddef>
#include <system_error>
#include <thread>
#include <vector>

namespace {

// No thread can start while this lives: none finds room for its stack.
class NoThreads {
  public:
    NoThreads() {
        pthread_getattr_default_np(&before_);
        pthread_attr_t wanted;
        pthread_getattr_default_np(&wanted);
        pthread_attr_setstacksize(&wanted, std::size_t{1} << 47U);
        pthread_setattr_default_np(&wanted);
        pthread_attr_destroy(&wanted);
    }
    ~NoThreads() {
        pthread_setattr_default_np(&before_);
        pthread_attr_destroy(&before_);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

  private:
    pthread_attr_t before_;
};

TEST(Releaser, WorkWithoutAThreadRunsAtOnceAndMayReleaseMore) {
    std::vector<int> steps;
    std::thread::id inner;
    {
        const NoThreads none;
        ASSERT_THROW(std::thread([] {}), std::system_error);
        vision::releaseLater([&] {
            steps.push_back(1);
            vision::releaseLater([&] {
                steps.push_back(2);
                inner = std::this_thread::get_id();
            });
            steps.push_back(3);
        });
        EXPECT_THAT(steps, testing::ElementsAre(1, 2, 3));
        EXPECT_EQ(inner, std::this_thread::get_id());
    }
    vision::releaseLater([&] {
        vision::releaseLater([&] { steps.push_back(5); });
        inner = std::this_thread::get_id();
    });
    vision::finishReleases();
    EXPECT_THAT(steps, testing::ElementsAre(1, 2, 3, 5)) << "what the work began is waited for, too";
    EXPECT_NE(inner, std::this_thread::get_id());
}

}  // namespace
