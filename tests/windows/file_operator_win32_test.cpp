// Names in either encoding, links, attributes and line ends on Windows.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "orxFunctions/orxfunctions.h"
#include "tests/files/file_operator_fixture.h"

namespace {

namespace fs = std::filesystem;
using test::FileOperatorTest;

const std::string kGbkName = "\xcd\xbc\xcf\xf1";           // two characters in code page 936
const std::string kUtf8Name = "\xe5\x9b\xbe\xe5\x83\x8f";  // the same two
const std::wstring kWideName = L"\u56fe\u50cf";

bool isThere(const fs::path& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

TEST_F(FileOperatorTest, NamesAreReadInEitherEncodingAndGivenInCodePage936) {
    for (const std::string& name : {kGbkName, kUtf8Name}) {
        EXPECT_TRUE(FileOperator::createFolder(folder.name() + "\\" + name));
        EXPECT_TRUE(isThere(folder.path() / kWideName));
        orx::save2Txt(folder.name() + "\\" + name + "\\" + name, "x", 1);
        EXPECT_TRUE(isThere(folder.path() / kWideName / kWideName));
        EXPECT_EQ(FileOperator::listFiles(folder.name() + "\\" + name),
                  (std::vector<std::string>{folder.name() + "\\" + kGbkName + "\\" + kGbkName}));
        EXPECT_TRUE(FileOperator::deleteFolder(folder.name() + "/" + name));
        EXPECT_FALSE(isThere(folder.path() / kWideName));
    }
}

TEST_F(FileOperatorTest, HidingIsAnAttribute) {
    const std::string file = make("a.txt");
    SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_READONLY);
    const DWORD before = GetFileAttributesA(file.c_str());
    EXPECT_TRUE(FileOperator::hideFile(file));
    EXPECT_EQ(GetFileAttributesA(file.c_str()), before | FILE_ATTRIBUTE_HIDDEN);
    EXPECT_TRUE(FileOperator::unhideFile(file));
    EXPECT_EQ(GetFileAttributesA(file.c_str()), before);
}

TEST_F(FileOperatorTest, FilesAndFoldersThatMayNotBeWrittenAreDeleted) {
    const std::string file = make("tree/sub/locked");
    SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
    for (const char* name : {"tree/sub", "tree"})
        SetFileAttributesA((folder / name).c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(FileOperator::deleteFolder(folder / "tree"));
    EXPECT_FALSE(isThere(folder.path() / "tree"));
}

// Windows wants a right for links; Wine has none but shows those of the system beneath.
bool linkFolder(const fs::path& link, const fs::path& target) {
    if (CreateSymbolicLinkW(link.c_str(), target.c_str(),
                            SYMBOLIC_LINK_FLAG_DIRECTORY | SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE) !=
            FALSE &&
        isThere(link)) {
        return true;
    }
    using ToUnix = char*(CDECL*)(const WCHAR*);
    const auto toUnix = reinterpret_cast<ToUnix>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32"), "wine_get_unix_file_name")));
    if (toUnix == nullptr) return false;
    const std::string command = "start.exe /unix /bin/ln -s '" + std::string(toUnix(target.c_str())) + "' '" +
                                toUnix(link.parent_path().c_str()) + "/" + link.filename().string() + "'";
    std::string arguments = command;
    for (char& c : arguments) c = c == '\'' ? '"' : c;
    STARTUPINFOA start = {};
    start.cb = sizeof start;
    PROCESS_INFORMATION process = {};
    if (CreateProcessA(nullptr, arguments.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                       &process) == FALSE) {
        return false;
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    for (int i = 0; i < 200 && !isThere(link); ++i) Sleep(10);
    return isThere(link);
}

TEST_F(FileOperatorTest, LinksAreNeitherCountedNorEnteredNorEmptied) {
    make("tree/a/file");
    outside();
    if (!linkFolder(folder.path() / "tree" / "link", elsewhere.path()) ||
        !linkFolder(folder.path() / "link", elsewhere.path())) {
        GTEST_SKIP() << "links can't be made here";
    }
    EXPECT_EQ(FileOperator::folderSize(folder / "tree"), 1);
    EXPECT_EQ(FileOperator::listFiles(folder / "tree", "", true),
              (std::vector<std::string>{folder / "tree/a/file"}));
    EXPECT_FALSE(FileOperator::deleteFolder(folder / "link"));
    FileOperator::deleteFolder(folder / "tree");  // Wine can't delete a link, which Windows can
    EXPECT_FALSE(isThere(folder.path() / "tree" / "a"));
    EXPECT_EQ(test::bytesOf(elsewhere / "precious"), "12345");
}

TEST_F(FileOperatorTest, LogsHaveTheLineEndsOfWindows) {
    orx::save2Txt(folder / "log.txt", "two\nlines", 1);
    EXPECT_EQ(test::bytesOf(folder / "log.txt"), "two\r\nlines\r\n");
}

}  // namespace
