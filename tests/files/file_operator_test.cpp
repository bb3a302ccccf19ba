#include "tests/files/file_operator_fixture.h"

#include <gmock/gmock.h>

namespace {

namespace fs = std::filesystem;
using test::FileOperatorTest;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(FileOperatorTest, ListsSortedFilteredAndRecursively) {
    make("b.png");
    make("A.PNG");
    make("notes.txt");
    make("png");
    make("sub/deep/c.png");
    fs::create_directories(folder.path() / "folder.png");
    EXPECT_THAT(FileOperator::listFiles(folder.name()),
                ElementsAre(folder / "A.PNG", folder / "b.png", folder / "notes.txt", folder / "png"));
    for (const char* extension : {".png", "png", "*.png", "PNG"}) {
        EXPECT_THAT(FileOperator::listFiles(folder.name(), extension),
                    ElementsAre(folder / "A.PNG", folder / "b.png"));
    }
    EXPECT_THAT(FileOperator::listFiles(folder.name(), "png", true),
                ElementsAre(folder / "A.PNG", folder / "b.png", folder / "sub/deep/c.png"));
    EXPECT_EQ(FileOperator::listFiles(folder.name(), "*.*", true).size(), 5U);
    EXPECT_THAT(FileOperator::listFiles(folder / "missing"), IsEmpty());
    EXPECT_THAT(FileOperator::listFiles(folder / "b.png"), IsEmpty());
    EXPECT_THAT(FileOperator::listFiles(""), IsEmpty());
}

// Whatever a shell would make of a name, here it is only a name.
TEST_F(FileOperatorTest, NamesAreOnlyNames) {
    for (const std::string name :
         {"a; touch pwned", "quote's and `ticks`", "$(touch pwned)", "%PATH%", "-rf", "a&b^c"}) {
        test::expectOnlyAName(folder, make(name + "/" + name), name);
    }
}

TEST_F(FileOperatorTest, SizeIsThatOfAllFiles) {
    EXPECT_EQ(FileOperator::folderSize(folder.name()), 0);
    make("a", std::string(1000, 'x'));
    make("sub/b", std::string(234, 'x'));
    EXPECT_EQ(FileOperator::folderSize(folder.name()), 1234);
    EXPECT_EQ(FileOperator::folderSize(folder / "missing"), -1);
    EXPECT_EQ(FileOperator::folderSize(""), -1);
}

TEST_F(FileOperatorTest, HidesAndShowsUnderEitherName) {
    const std::string file = make("a.txt", "content");
    EXPECT_FALSE(FileOperator::isHidden(file));
    EXPECT_TRUE(FileOperator::hideFile(file));
    EXPECT_TRUE(FileOperator::isHidden(file));
    EXPECT_TRUE(FileOperator::hideFile(file)) << "it is hidden already";
    EXPECT_TRUE(FileOperator::unhideFile(file));
    EXPECT_FALSE(FileOperator::isHidden(file));
    EXPECT_EQ(test::bytesOf(file), "content");
    EXPECT_FALSE(FileOperator::hideFile(folder / "missing"));
    for (const char* name : {"", ".", "..", "/"}) {
        EXPECT_FALSE(FileOperator::hideFile(name)) << name;
        EXPECT_FALSE(FileOperator::unhideFile(name)) << name;
        EXPECT_FALSE(FileOperator::isHidden(name)) << name;
    }
}

TEST_F(FileOperatorTest, CreatesNestedFolders) {
    EXPECT_TRUE(FileOperator::createFolder(folder / "a/b/c"));
    EXPECT_TRUE(FileOperator::createFolder(folder / "a/b/c/")) << "it exists already";
    EXPECT_TRUE(FileOperator::folderExists(folder / "a/b/c"));
    const std::string file = make("file");
    EXPECT_FALSE(FileOperator::createFolder(file));
    EXPECT_FALSE(FileOperator::createFolder(file + "/below"));
    for (const char* root : {"", "/", "//"}) EXPECT_FALSE(FileOperator::createFolder(root));
}

TEST_F(FileOperatorTest, DeletesATree) {
    make("tree/a/b/file");
    make("tree/c/file");
    EXPECT_TRUE(FileOperator::deleteFolder(folder / "tree/"));
    EXPECT_FALSE(FileOperator::folderExists(folder / "tree"));
}

TEST_F(FileOperatorTest, RefusesToDeleteRootsAndNonFolders) {
    const std::string file = make("sub/file");
    for (const std::string& path :
         {std::string(), std::string("/"), std::string("///"), std::string("."), std::string(".."),
          folder / "sub/.", folder / "sub/..", folder / "sub/../", file, folder / "missing"}) {
        EXPECT_FALSE(FileOperator::deleteFolder(path)) << path;
    }
    EXPECT_TRUE(FileOperator::fileExists(file));
}

TEST_F(FileOperatorTest, CopiesAndMoves) {
    const std::string a = make("a", "first");
    const std::string b = make("b", "second");
    EXPECT_FALSE(FileOperator::copyFile(a, b));
    EXPECT_EQ(test::bytesOf(b), "second");
    EXPECT_TRUE(FileOperator::copyFile(a, b, true));
    EXPECT_EQ(test::bytesOf(b), "first");
    EXPECT_FALSE(FileOperator::copyFile(a, a, true)) << "onto itself";
    EXPECT_FALSE(FileOperator::moveFile(a, folder / "./a", true)) << "onto itself";
    EXPECT_EQ(test::bytesOf(a), "first");

    ASSERT_TRUE(FileOperator::createFolder(folder / "into"));
    EXPECT_TRUE(FileOperator::moveFile(a, folder / "into"));
    EXPECT_FALSE(FileOperator::fileExists(a));
    EXPECT_EQ(test::bytesOf(folder / "into/a"), "first");
    EXPECT_FALSE(FileOperator::moveFile(b, folder / "into/a"));
    EXPECT_TRUE(FileOperator::moveFile(b, folder / "into/a", true));
    EXPECT_THAT(FileOperator::listFiles(folder.name(), "", true), ElementsAre(folder / "into/a"));

    for (const std::string& from : {std::string(), folder / "missing", folder / "into"}) {
        EXPECT_FALSE(FileOperator::copyFile(from, folder / "target")) << from;
        EXPECT_FALSE(FileOperator::moveFile(from, folder / "target")) << from;
    }
    EXPECT_FALSE(FileOperator::copyFile(folder / "into/a", ""));
    EXPECT_FALSE(FileOperator::copyFile(folder / "into/a", folder / "missing/target"));
}

}  // namespace
