// What the system's own limits and handles have to do with the answers.
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

#include "ZULLib/zullib.h"

namespace {

namespace fs = std::filesystem;

class SystemLimits : public testing::Test {
  public:
    SystemLimits() {
        std::string pattern = testing::TempDir() + "zul_limits_XXXXXX";
        folder_ = mkdtemp(pattern.data());
    }
    ~SystemLimits() override { fs::remove_all(folder_); }
    SystemLimits(const SystemLimits&) = delete;
    SystemLimits& operator=(const SystemLimits&) = delete;

  protected:
    fs::path folder_;
};

auto openHandles() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

TEST_F(SystemLimits, AskingForVersionsOfWhatIsNoFileKeepsNoHandle) {
    if (!fs::exists("/proc/self/fd")) GTEST_SKIP() << "this system does not tell its open handles";
    const auto before = openHandles();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(zul::getFileVersion(folder_.string()), "");
        EXPECT_EQ(zul::getFileVersion("/dev/null"), "");
    }
    EXPECT_EQ(openHandles(), before);
}

// Only the file tells its name here: it is longer than the system keeps, and the process was told another
// one.
TEST_F(SystemLimits, AProcessIsFoundByItsFileHoweverLongThePath) {
    const fs::path deep = folder_ / std::string(200, 'a') / std::string(200, 'b');
    fs::create_directories(deep);
    const std::string name = "zul-in-a-folder-far-down.exe";
    std::string file = (deep / name).string();
    fs::copy_file(fs::canonical("/bin/sleep"), file);
    std::string told = "sleep", seconds = "60";
    char* const arguments[] = {told.data(), seconds.data(), nullptr};
    char* const environment[] = {nullptr};
    pid_t process = -1;
    ASSERT_EQ(posix_spawn(&process, file.c_str(), nullptr, nullptr, arguments, environment), 0);
    bool found = false;
    for (int i = 0; i < 500 && !found; ++i) {
        found = zul::processIsExist(name);
        if (!found) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_TRUE(found);
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
}

}  // namespace
