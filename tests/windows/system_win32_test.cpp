// Modules, versions, processes, the debugger's output and the C runtime's random numbers on Windows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace {

// What OutputDebugStringA says is raised as an exception of this code, with the length and address of the
// text.
constexpr DWORD kDebugPrint = 0x40010006;
std::vector<std::string>* debugLines = nullptr;

LONG CALLBACK collectDebugLines(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode != kDebugPrint || debugLines == nullptr) return EXCEPTION_CONTINUE_SEARCH;
    debugLines->push_back(reinterpret_cast<const char*>(record.ExceptionInformation[1]));
    return EXCEPTION_CONTINUE_EXECUTION;
}

TEST(WindowsTrace, LinesGoToTheDebuggerInCodePage936) {
    std::vector<std::string> lines;
    debugLines = &lines;
    void* const handler = AddVectoredExceptionHandler(1, &collectDebugLines);
    orx::outPutDebugString("\xD6\xD0", 1);
    orx::outPutDebugString(std::string("plain"));
    RemoveVectoredExceptionHandler(handler);
    debugLines = nullptr;
    EXPECT_THAT(lines, testing::ElementsAre("\xD6\xD0 1\n", "plain\n"));
}

TEST(WindowsModules, FoldersAndVersionsAreThoseOfTheFile) {
    const std::string folder = orx::extractFilePath(orx::getExeFileName());
    EXPECT_EQ(orx::extractFileName(orx::getExeFileName()), "test_windows.exe");
    EXPECT_EQ(orx::getDllPath(GetModuleHandleW(L"orxFunctions.dll")), folder);
    EXPECT_EQ(orx::getDllPath(nullptr), folder);
    const std::string version = std::to_string(ORX_VERSION_MAJOR) + "." + std::to_string(ORX_VERSION_MINOR) +
                                "." + std::to_string(ORX_VERSION_PATCH) + ".0";
    EXPECT_EQ(orx::getFileVersion(folder + "orxFunctions.dll"), version);
    EXPECT_EQ(orx::getFileVersion(folder + "ZULLib.dll"), version);
    EXPECT_EQ(orx::getFileVersion(folder + "modules\\TQVisionDriver.dll"), version);
    EXPECT_EQ(orx::getFileVersion(folder + "modules\\LumoCfg.dll"), version);
    EXPECT_EQ(orx::getFileVersion(folder + "no such.dll"), "");
    EXPECT_EQ(orx::getFileVersion(orx::getExeFileName()), "");
}

TEST(WindowsProcesses, AreFoundByNameWhateverTheCase) {
    EXPECT_TRUE(orx::processIsExist("test_windows.exe"));
    EXPECT_TRUE(orx::processIsExist("TEST_Windows.EXE"));
    EXPECT_FALSE(orx::processIsExist("test_windows"));
    EXPECT_FALSE(orx::processIsExist(""));
}

// 15 bits, and a generator for each thread: state = state * 214013 + 2531011, of which bits 16 to 30 are
// given.
TEST(WindowsRand, TheFitsDrawFromTheGeneratorOfTheirThread) {
    static_assert(RAND_MAX == 0x7FFF);
    std::srand(1);
    EXPECT_EQ(std::rand(), 41);
    EXPECT_EQ(std::rand(), 18467);

    std::vector<cv::Point> points;
    for (int i = 0; i < 200; ++i) points.emplace_back(i, i % 7 == 0 ? (i * 37) % 101 : 20 + i / 2);
    const auto fit = [&points] {
        std::srand(7);
        orx::TRansacLine line(points, 300, 100, 1.5);
        line.doRansac();
        return line.getResultLine();
    };
    const orx::TLine expected = fit();
    EXPECT_NEAR(expected.k, 0.5, 0.02);
    std::atomic<bool> stop{false};
    std::thread other([&stop] {
        while (!stop) std::rand();
    });
    const orx::TLine again = fit();
    stop = true;
    other.join();
    EXPECT_EQ(again.k, expected.k);
    EXPECT_EQ(again.b, expected.b);
}

}  // namespace
