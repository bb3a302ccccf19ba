// Why the functions of files and folders refuse.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/refusal_check.h"
#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using orx::test::notRefused;
using orx::test::refusedWith;

class FileRefusals : public testing::Test {
  protected:
    void SetUp() override {
        test::writeBytes(file, "content");
        fs::create_directories(sub);
    }

    test::TemporaryFolder folder;
    const std::string file = folder / "file";
    const std::string sub = folder / "sub";
    const std::string missing = folder / "missing";
    const cv::Mat image = cv::Mat::ones(2, 2, CV_8U);
};

TEST_F(FileRefusals, OfFolders) {
    using namespace FileOperator;
    for (const auto& [code, path] :
         {std::pair{orx::rcFileName, std::string()}, std::pair{orx::rcFileMissing, missing},
          std::pair{orx::rcFileUnreadable, file}}) {
        EXPECT_TRUE(refusedWith(code, "listFiles", [&, &p = path] { listFiles(p); }));
        EXPECT_TRUE(refusedWith(code, "folderSize", [&, &p = path] { folderSize(p); }));
    }
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "listFiles", [&] { listFiles(folder.name(), ".png"); }));
    EXPECT_TRUE(refusedWith(orx::rcFileName, "createFolder", [&] { createFolder("/"); }));
    EXPECT_TRUE(refusedWith(orx::rcFileUnwritable, "createFolder", [&] { createFolder(file); }));
    EXPECT_TRUE(refusedWith(orx::rcFileName, "deleteFolder", [&] { deleteFolder(sub + "/.."); }));
    EXPECT_TRUE(refusedWith(orx::rcFileMissing, "deleteFolder", [&] { deleteFolder(missing); }));
    EXPECT_TRUE(refusedWith(orx::rcFileUnwritable, "deleteFolder", [&] { deleteFolder(file); }));
    EXPECT_EQ(orx::lastRefusal().text, "deleteFolder: this is no folder: " + file);
    EXPECT_TRUE(notRefused([&] {
        EXPECT_EQ(listFiles(folder.name()).size(), 1U);
        EXPECT_EQ(folderSize(sub), 0);
        EXPECT_TRUE(createFolder(sub) && deleteFolder(sub));
        EXPECT_FALSE(fileExists(missing) || folderExists(missing) || isHidden(missing)) << "answers";
    }));
}

TEST_F(FileRefusals, OfFiles) {
    using namespace FileOperator;
    EXPECT_TRUE(refusedWith(orx::rcFileName, "hideFile", [&] { hideFile(".."); }));
    EXPECT_TRUE(refusedWith(orx::rcFileMissing, "hideFile", [&] { hideFile(missing); }));
    EXPECT_TRUE(refusedWith(orx::rcFileName, "unhideFile", [&] { unhideFile(""); }));
    EXPECT_TRUE(refusedWith(orx::rcFileMissing, "unhideFile", [&] { unhideFile(missing); }));
    const std::string other = folder / "other";
    test::writeBytes(other, "other");
    for (const bool moves : {false, true}) {
        const std::string name = moves ? "moveFile" : "copyFile";
        const auto refused = [&](orx::TRefusalCode code, const std::string& from, const std::string& to,
                                 bool overwrite) {
            return refusedWith(
                code, name, [&] { moves ? moveFile(from, to, overwrite) : copyFile(from, to, overwrite); });
        };
        EXPECT_TRUE(refused(orx::rcFileName, "", other, false));
        EXPECT_TRUE(refused(orx::rcFileName, file, "", false));
        EXPECT_TRUE(refused(orx::rcFileMissing, missing, other, true));
        EXPECT_TRUE(refused(orx::rcFileUnreadable, sub, other, true));
        EXPECT_TRUE(refused(orx::rcFileUnwritable, file, other, false));
        EXPECT_EQ(orx::lastRefusal().text, name + ": it exists, and overwrite is false: " + other);
        EXPECT_TRUE(refused(orx::rcFileUnwritable, file, file, true));
        EXPECT_TRUE(refused(orx::rcFileUnwritable, file, missing + "/file", true));
    }
    EXPECT_TRUE(notRefused([&] {
        EXPECT_TRUE(copyFile(file, other, true) && moveFile(other, sub));
        EXPECT_TRUE(hideFile(file) && unhideFile(file));
    }));
}

TEST_F(FileRefusals, OfImagesToSave) {
    using namespace FileOperator;
    EXPECT_TRUE(refusedWith(orx::rcEmptyImage, "saveImage", [&] { saveImage({}, sub); }));
    const std::vector<int> cube{2, 3, 4};
    EXPECT_TRUE(refusedWith(orx::rcImageDimensions, "saveImage",
                            [&] { saveImage(cv::Mat(cube, CV_8U, cv::Scalar(7)), sub, "", ".tif"); }));
    EXPECT_TRUE(refusedWith(orx::rcFileName, "saveImage", [&] { saveImage(image, ""); }));
    EXPECT_TRUE(refusedWith(orx::rcFileName, "saveImage", [&] { saveImage(image, sub, "a/b"); }));
    EXPECT_TRUE(refusedWith(orx::rcOption, "saveImage", [&] { saveImage(image, sub, "", ".exe"); }));
    // A large picture of noise keeps the thread busy.
    cv::Mat noise(5000, 5000, CV_8UC3);
    cv::randu(noise, 0, 256);
    ASSERT_TRUE(saveImage(noise, sub));
    EXPECT_TRUE(refusedWith(orx::rcTimeout, "flush", [&] { flush(0); }));
    EXPECT_TRUE(refusedWith(orx::rcTooMany, "saveImage", [&] {
        for (int i = 0; i < 70; ++i) saveImage(image, sub, "", ".bmp");
    }));
    EXPECT_TRUE(notRefused([&] { EXPECT_TRUE(flush() && saveImage(image, sub) && flush(60000)); }));
}

TEST_F(FileRefusals, OfStreamFilesAndLogs) {
    cv::Mat matrix;
    cv::Size size;
    std::string text;
    const auto read = [&](const std::string& path) {
        return [&, path] { orx::streamFile2Image(path, matrix, size, text); };
    };
    EXPECT_TRUE(refusedWith(orx::rcFileName, "streamFile2Image", read("")));
    EXPECT_TRUE(refusedWith(orx::rcFileMissing, "streamFile2Image", read(missing)));
    EXPECT_TRUE(refusedWith(orx::rcFileUnreadable, "streamFile2Image", read(sub)));
    for (const std::int32_t rows : {-1, 1 << 30}) {
        const std::int32_t sizes[] = {rows, 1 << 30};
        test::writeBytes(file, std::string(reinterpret_cast<const char*>(sizes), sizeof sizes));
        EXPECT_TRUE(refusedWith(orx::rcFileFormat, "streamFile2Image", read(file)));
    }
    EXPECT_EQ(orx::lastRefusal().text,
              "streamFile2Image: 1073741824 rows of 1073741824 numbers can't be in the file: " + file);
    EXPECT_TRUE(
        refusedWith(orx::rcEmptyImage, "image2StreamFile", [&] { orx::image2StreamFile({}, {}, file, ""); }));
    EXPECT_TRUE(
        refusedWith(orx::rcFileName, "image2StreamFile", [&] { orx::image2StreamFile(image, {}, "", ""); }));
    for (const std::string& path : {sub, missing + "/file"}) {
        EXPECT_TRUE(refusedWith(orx::rcFileUnwritable, "image2StreamFile",
                                [&] { orx::image2StreamFile(image, {}, path, ""); }));
        EXPECT_TRUE(refusedWith(orx::rcFileUnwritable, "save2Txt", [&] { orx::save2Txt(path, "line", 1); }));
    }
    EXPECT_EQ(orx::lastRefusal().text, "save2Txt: there is no folder " + missing + " to write into");
    EXPECT_TRUE(refusedWith(orx::rcFileName, "save2Txt", [&] { orx::save2Txt("", "line", 1); }));
    EXPECT_TRUE(notRefused([&] {
        EXPECT_TRUE(orx::image2StreamFile(image, {}, file, "") &&
                    orx::streamFile2Image(file, matrix, size, text));
        orx::save2Txt(folder / "log", "line", 0);
    }));
}

TEST_F(FileRefusals, OfFoldersToAugment) {
    const auto augment = [](const std::string& input, const std::string& output) {
        return [=] { orx::ImageDataAugmentation().augment(input, output); };
    };
    EXPECT_TRUE(refusedWith(orx::rcFileName, "augment", augment("", sub)));
    EXPECT_TRUE(refusedWith(orx::rcFileMissing, "augment", augment(missing, sub)));
    EXPECT_TRUE(refusedWith(orx::rcFileUnreadable, "augment", augment(file, sub)));
    EXPECT_TRUE(refusedWith(orx::rcFileName, "augment", augment(folder.name(), "")));
    EXPECT_TRUE(refusedWith(orx::rcFileUnwritable, "augment", augment(folder.name(), file)));
    EXPECT_TRUE(refusedWith(orx::rcOption, "augment", augment(sub, sub)));
    EXPECT_TRUE(notRefused(augment(sub, folder / "out")));
}

// Where a name of two to four bytes a character is cut depends on where it starts. The first character says
// that it is UTF-8.
TEST_F(FileRefusals, LongNamesAreCutBetweenTheirCharacters) {
    for (const std::string character : {"\xC3\xA4", "\xE9\x9B\xB6", "\xF0\x9F\x94\xA9"}) {
        for (std::size_t offset = 0; offset < 5; ++offset) {
            std::string name = "/missing/\xE9\x9B\xB6" + std::string(offset, 'x');
            while (name.size() < 190) name += character;
            name += "/" + std::string(offset, 'x');
            while (name.size() < 400) name += character;
            EXPECT_TRUE(
                refusedWith(orx::rcFileMissing, "folderSize", [&] { FileOperator::folderSize(name); }));
            const std::string text = orx::lastRefusal().text;
            const std::string whole = "folderSize: there is no folder " + name;
            EXPECT_EQ(text, whole.substr(0, text.size()));
            EXPECT_LE(text.size(), 250U);
            EXPECT_GT(text.size() + character.size(), 250U) << "cut sooner than it must be";
            const unsigned char next = static_cast<unsigned char>(whole[text.size()]);
            EXPECT_NE(next & 0xC0U, 0x80U) << "cut within a character";
        }
    }
}

}  // namespace
