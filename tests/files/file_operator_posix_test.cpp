// Links, names of any bytes, and files hidden by their name.
#include <gmock/gmock.h>

#include "tests/files/file_operator_fixture.h"

namespace {

namespace fs = std::filesystem;
using test::FileOperatorTest;
using testing::ElementsAre;

TEST_F(FileOperatorTest, AnyBytesAreAName) {
    for (const std::string name :
         {"quote\"s", "*", "new\nline", "\xe5\x9b\xbe\xe5\x83\x8f", "\xcd\xbc\xcf\xf1", "back\\slash"}) {
        test::expectOnlyAName(folder, make(name + "/" + name), name);
    }
}

TEST_F(FileOperatorTest, LinksAreNeitherCountedNorEntered) {
    make("a", std::string(1000, 'x'));
    make("sub/b", std::string(234, 'x'));
    fs::create_directory_symlink(outside(), folder.path() / "link");
    fs::create_symlink(elsewhere.path() / "precious", folder.path() / "file link");
    EXPECT_EQ(FileOperator::folderSize(folder.name()), 1234);
    EXPECT_THAT(FileOperator::listFiles(folder.name(), "", true),
                ElementsAre(folder / "a", folder / "file link", folder / "sub/b"));
}

TEST_F(FileOperatorTest, HidingNeverOverwrites) {
    make("a.txt", "visible");
    make(".a.txt", "hidden");
    EXPECT_FALSE(FileOperator::hideFile(folder / "a.txt"));
    EXPECT_FALSE(FileOperator::unhideFile(folder / ".a.txt"));
    EXPECT_EQ(test::bytesOf(folder / "a.txt"), "visible");
    EXPECT_EQ(test::bytesOf(folder / ".a.txt"), "hidden");
}

TEST_F(FileOperatorTest, DeletesATreeButNothingBehindLinks) {
    make("tree/a/b/file");
    fs::create_directory_symlink(outside(), folder.path() / "tree/link");
    fs::create_symlink(elsewhere.path() / "precious", folder.path() / "tree/file link");
    EXPECT_TRUE(FileOperator::deleteFolder(folder / "tree/"));
    EXPECT_FALSE(FileOperator::folderExists(folder / "tree"));

    fs::create_directory_symlink(elsewhere.path(), folder.path() / "link");
    EXPECT_FALSE(FileOperator::deleteFolder(folder / "link"));
    EXPECT_FALSE(FileOperator::deleteFolder(folder / "link/"));
    EXPECT_EQ(test::bytesOf(elsewhere / "precious"), "12345");
}

}  // namespace
