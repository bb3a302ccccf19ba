#include <dlfcn.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "ZULLib/files_posix_internal.h"
#include "ZULLib/zullib.h"

namespace {

namespace fs = std::filesystem;

fs::path newFolder() {
    std::string pattern = testing::TempDir() + "zul_system_XXXXXX";
    return fs::canonical(mkdtemp(pattern.data()));
}

// Sleeps under a file name of its own choice, until told to end.
class Sleeper {
  public:
    explicit Sleeper(const std::string& name) : folder_(newFolder()) {
        std::string file = (folder_ / name).string();
        fs::copy_file(fs::canonical("/bin/sleep"), file);
        std::string seconds = "60";
        char* const arguments[] = {file.data(), seconds.data(), nullptr};
        char* const environment[] = {nullptr};
        if (posix_spawn(&process_, file.c_str(), nullptr, nullptr, arguments, environment) != 0)
            process_ = -1;
    }
    ~Sleeper() {
        kill();
        reap();
        fs::remove_all(folder_);
    }
    Sleeper(const Sleeper&) = delete;
    Sleeper& operator=(const Sleeper&) = delete;

    bool started() const { return process_ > 0; }
    void kill() {
        if (started()) ::kill(process_, SIGKILL);
    }
    // The process has ended, but nobody has asked for its result yet.
    void waitUntilDefunct() const {
        siginfo_t info = {};
        waitid(P_PID, static_cast<id_t>(process_), &info, WEXITED | WNOWAIT);
    }
    void reap() {
        if (started()) waitpid(process_, nullptr, 0);
        process_ = -1;
    }

  private:
    fs::path folder_;
    pid_t process_ = -1;
};

bool appears(const std::string& process) {
    for (int i = 0; i < 500; ++i) {
        if (zul::processIsExist(process)) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

TEST(Processes, AreFoundByTheNameOfTheirFileWhileTheyRun) {
    for (const std::string name : {"zul-short", "a process (with a name) longer than the system keeps.exe"}) {
        Sleeper sleeper(name);
        ASSERT_TRUE(sleeper.started());
        EXPECT_TRUE(appears(name));
        EXPECT_FALSE(zul::processIsExist(name.substr(0, name.size() - 1)) && name.size() < 15);
        EXPECT_FALSE(zul::processIsExist("Z" + name.substr(1)));  // letter case counts
        sleeper.kill();
        sleeper.waitUntilDefunct();
        EXPECT_FALSE(zul::processIsExist(name));
        sleeper.reap();
        EXPECT_FALSE(zul::processIsExist(name));
    }
}

TEST(Processes, AreFoundByTheNameThatTheyGaveThemselves) {
    char former[16] = {};
    prctl(PR_GET_NAME, former);
    prctl(PR_SET_NAME, "zul) (test");
    EXPECT_TRUE(zul::processIsExist("zul) (test"));
    prctl(PR_SET_NAME, former);
    EXPECT_FALSE(zul::processIsExist("zul) (test"));
    EXPECT_FALSE(zul::processIsExist(""));
    EXPECT_FALSE(zul::processIsExist("no such process"));
}

// As of a process that ended between the opening of its file and the reading: what opens can't be read.
TEST(Processes, AFileThatFailsToBeReadIsEmpty) {
    EXPECT_NO_THROW(EXPECT_EQ(zul::posix::contentOfProc("/proc/self/mem"), ""));
    EXPECT_EQ(zul::posix::contentOfProc("/proc/self/no such file"), "");
    EXPECT_EQ(zul::posix::contentOfProc("/proc"), "") << "a folder";
    EXPECT_GT(zul::posix::contentOfProc("/proc/self/smaps").size(), 5000U) << "of several blocks";
}

TEST(Modules, TheProgramIsNamedInFull) {
    const fs::path program = fs::read_symlink("/proc/self/exe");
    EXPECT_EQ(zul::getExeFileName(), program.string());
    EXPECT_EQ(zul::getDllPath(nullptr), program.parent_path().string() + "/");
    void* const self = dlopen(nullptr, RTLD_NOW);
    EXPECT_EQ(zul::getDllPath(self), program.parent_path().string() + "/");
    dlclose(self);
}

TEST(Modules, ALibraryLiesWhereTheLoaderFoundIt) {
    void* const library = dlopen("libm.so.6", RTLD_NOW);
    ASSERT_NE(library, nullptr);
    char origin[4096] = {};
    ASSERT_EQ(dlinfo(library, RTLD_DI_ORIGIN, origin), 0);
    EXPECT_EQ(zul::getDllPath(library), std::string(origin) + "/");
    dlclose(library);
}

TEST(Modules, ALibraryLoadedByARelativeNameIsFoundFromAnywhere) {
    void* const original = dlopen("libutil.so.1", RTLD_NOW);
    if (original == nullptr) GTEST_SKIP() << "this system has no libutil.so.1 to copy";
    const fs::path folder = newFolder();
    fs::copy_file(zul::getDllPath(original) + "libutil.so.1", folder / "libcopy.so");
    dlclose(original);
    const fs::path former = fs::current_path();
    fs::current_path(folder);
    void* const library = dlopen("./libcopy.so", RTLD_NOW);
    fs::current_path(former);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_EQ(zul::getDllPath(library), folder.string() + "/");
    dlclose(library);
    EXPECT_EQ(zul::getDllPath(library), "");
    fs::remove_all(folder);
}

TEST(Modules, AnyOtherHandleIsUnknown) {
    int number = 0;
    EXPECT_EQ(zul::getDllPath(&number), "");
    EXPECT_EQ(zul::getDllPath(reinterpret_cast<void*>(1)), "");
    EXPECT_EQ(zul::getDllPath(reinterpret_cast<void*>(-1)), "");
}

TEST(Folders, WhatAPathNamesExists) {
    const fs::path folder = newFolder();
    fs::create_directory(folder / "中");
    fs::create_symlink("中", folder / "link");
    fs::create_symlink("nowhere", folder / "broken");
    std::ofstream(folder / "file") << "text";
    EXPECT_TRUE(zul::dirExists(folder.string()));
    EXPECT_TRUE(zul::dirExists(folder.string() + "/"));
    EXPECT_TRUE(zul::dirExists((folder / "中").string()));
    EXPECT_TRUE(zul::dirExists((folder / "link").string()));
    EXPECT_FALSE(zul::dirExists((folder / "broken").string()));
    EXPECT_TRUE(zul::dirExists((folder / "file").string()));
    EXPECT_FALSE(zul::dirExists((folder / "missing").string()));
    EXPECT_FALSE(zul::dirExists(""));
    fs::remove_all(folder);
}

TEST(System, ItsQuestionsMayBeAskedByManyThreads) {
    const std::string program = zul::getExeFileName();
    const std::string version = zul::getFileVersion("/bin/bash");
    void* const library = dlopen("libm.so.6", RTLD_NOW);
    ASSERT_NE(library, nullptr);
    const std::string folder = zul::getDllPath(library);
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 5; ++round) {
                EXPECT_EQ(zul::getDllPath(library), folder);
                EXPECT_EQ(zul::getExeFileName(), program);
                EXPECT_EQ(zul::getFileVersion("/bin/bash"), version);
                EXPECT_TRUE(zul::processIsExist(zul::extractFileName(program)));
                EXPECT_EQ(zul::getCurrentTime(4).size(), 19U);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    dlclose(library);
}

}  // namespace
