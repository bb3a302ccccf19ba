// Which of two encodings a name is in: the bytes of many words are valid in both.
#include "orxFunctions/platform/file_name_internal.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <fstream>
#include <random>

#include "orxFunctions/orxfunctions.h"
#include "tests/files/file_operator_fixture.h"

namespace {

namespace fs = std::filesystem;
using orx::platform::toName;
using orx::platform::toPath;

// In code page 936 one Chinese character, in UTF-8 an "o" with two dots, which code page 936 lacks.
const std::string kTie = "\xc3\xb6";
const std::wstring kTieIn936 = L"\u679a";
const std::wstring kTieInUtf8 = L"\u00f6";

bool isThere(const fs::path& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

struct Character {
    std::string bytes;
    std::wstring wide;

    bool isCommon() const { return static_cast<unsigned char>(bytes[0]) < 0xD8; }
};

// All 6,763 of GB 2312; the first 3,755 are the common ones.
std::vector<Character> chineseCharacters() {
    std::vector<Character> characters;
    for (int lead = 0xB0; lead <= 0xF7; ++lead) {
        for (int trail = 0xA1; trail <= (lead == 0xD7 ? 0xF9 : 0xFE); ++trail) {
            Character character{{static_cast<char>(lead), static_cast<char>(trail)}, L"?"};
            MultiByteToWideChar(936, MB_ERR_INVALID_CHARS, character.bytes.data(), 2, character.wide.data(),
                                1);
            characters.push_back(character);
        }
    }
    return characters;
}

TEST(FileName, ChineseCharactersAreThemselvesAloneAndInWords) {
    const std::vector<Character> characters = chineseCharacters();
    ASSERT_EQ(characters.size(), 6763U);
    std::mt19937 generator(3);
    for (const Character& one : characters) {
        ASSERT_EQ(toPath(one.bytes).native(), one.wide);
        ASSERT_EQ(toPath("Q:\\" + one.bytes + "\\a.bmp").native(), L"Q:\\" + one.wide + L"\\a.bmp");
        ASSERT_EQ(toName(one.wide), one.bytes);
        for (int i = 0; i < 20; ++i) {
            const Character& other = characters[generator() % characters.size()];
            const std::wstring word = one.wide + other.wide;
            if (one.isCommon()) {
                ASSERT_EQ(toPath(one.bytes + other.bytes).native(), word);
            }
            ASSERT_EQ(toPath(toName(word)).native(), word);
            std::string utf8(6, '\0');
            WideCharToMultiByte(CP_UTF8, 0, word.data(), 2, utf8.data(), 6, nullptr, nullptr);
            ASSERT_EQ(toPath(utf8).native(), word);
        }
    }
}

class FileNameTie : public test::FileOperatorTest {
  protected:
    const std::string name = folder.name() + "\\" + kTie;
    const fs::path in936 = folder.path() / kTieIn936;
    const fs::path inUtf8 = folder.path() / kTieInUtf8;
};

TEST_F(FileNameTie, IsCodePage936UnlessOnlyTheOtherExists) {
    ASSERT_TRUE(FileOperator::createFolder(name));
    EXPECT_TRUE(isThere(in936));
    ASSERT_TRUE(CreateDirectoryW(inUtf8.c_str(), nullptr));
    orx::save2Txt(name + "\\both.txt", "x", 1);
    EXPECT_TRUE(isThere(in936 / L"both.txt"));

    ASSERT_TRUE(FileOperator::deleteFolder(name));
    EXPECT_FALSE(isThere(in936));
    EXPECT_TRUE(FileOperator::createFolder(name + "\\new\\folder"));
    EXPECT_TRUE(isThere(inUtf8 / L"new" / L"folder"));
    EXPECT_FALSE(isThere(in936));
}

TEST_F(FileNameTie, FilesAreOpenedByTheNamesThatTheyAreListedBy) {
    for (const std::wstring& found :
         {std::wstring(L"\u56fe\u7247"), kTieInUtf8, std::wstring(L"\u03c0.\u20ac"),
          std::wstring(L"\u00e9t\u00e9"), std::wstring(L"\u65e5\u672c\u8a9e")}) {
        std::ofstream(folder.path() / found) << "x";
        const std::vector<std::string> listed = FileOperator::listFiles(folder.name());
        ASSERT_EQ(listed.size(), 1U);
        EXPECT_EQ(toPath(listed[0]), folder.path() / found);
        EXPECT_TRUE(FileOperator::moveFile(listed[0], elsewhere.name(), true));
    }
}

TEST_F(FileNameTie, VariantsOfAnImageAreNamedAfterIt) {
    std::ofstream(folder.path() / (kTieInUtf8 + L".pgm"), std::ios::binary) << "P5 1 1 255 x";
    const orx::TAugmentationReport report =
        orx::ImageDataAugmentation().augment(folder.name(), elsewhere.name());
    EXPECT_GT(report.written, 0);
    for (const auto& entry : fs::directory_iterator(elsewhere.path()))
        EXPECT_EQ(entry.path().filename().native().rfind(kTieInUtf8 + L"_", 0), 0U) << entry.path();
}

TEST_F(FileNameTie, CalibrationFilesHaveTheNamesOfAllOthers) {
    const cv::Mat matrix = (cv::Mat_<double>(1, 2) << 0.1, -2);
    for (const std::string& ending : {std::string(".yml"), std::string(".xml.gz")}) {
        const std::string file = folder.name() + "\\\xcd\xbc\xcf\xf1" + ending;
        orx::calibrateData2File(matrix, matrix, {6, 4}, "text", file);
        const fs::path path = folder.path() / (L"\u56fe\u50cf" + std::wstring(ending.begin(), ending.end()));
        std::ifstream stream(path, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        EXPECT_EQ(bytes.rfind(ending == ".yml" ? "%YAML:1.0\r\n" : "\x1f\x8b", 0), 0U) << bytes;
        cv::Mat intrinsic, distortion;
        cv::Size size;
        std::string description;
        for (const std::string& either : {file, path.u8string()}) {
            EXPECT_TRUE(orx::calibrateDataFromFile(either, intrinsic, distortion, size, description));
            EXPECT_EQ(cv::norm(distortion, matrix, cv::NORM_INF), 0);
        }
    }
}

}  // namespace
