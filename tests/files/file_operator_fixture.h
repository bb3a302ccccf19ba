// Two folders of a test's own: one to work in, and one that nothing may touch.
#ifndef ORX_TESTS_FILES_FILE_OPERATOR_FIXTURE_H
#define ORX_TESTS_FILES_FILE_OPERATOR_FIXTURE_H

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "orxFunctions/files/file_operator.h"
#include "tests/support/temporary_folder.h"

namespace test {

class FileOperatorTest : public testing::Test {
  protected:
    std::string make(const std::string& name, const std::string& bytes = "x") {
        std::filesystem::create_directories((folder.path() / name).parent_path());
        writeBytes(folder / name, bytes);
        return folder / name;
    }
    // A folder beside ours with a file that must survive everything.
    std::string outside() {
        writeBytes(elsewhere / "precious", "12345");
        return elsewhere.name();
    }

    TemporaryFolder folder;
    TemporaryFolder elsewhere;
};

// Copies, lists and deletes a file and a folder of that name.
inline void expectOnlyAName(const TemporaryFolder& folder, const std::string& file, const std::string& name) {
    EXPECT_TRUE(FileOperator::fileExists(file));
    EXPECT_EQ(FileOperator::listFiles(folder / name), (std::vector<std::string>{file}));
    EXPECT_TRUE(FileOperator::copyFile(file, file + ".copy"));
    EXPECT_EQ(FileOperator::folderSize(folder / name), 2);
    EXPECT_TRUE(FileOperator::deleteFolder(folder / name));
    EXPECT_TRUE(std::filesystem::is_empty(folder.path())) << name;
}

}  // namespace test

#endif
