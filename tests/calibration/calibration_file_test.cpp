#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/temporary_folder.h"

namespace {

const cv::Mat kIntrinsic = (cv::Mat_<double>(3, 3) << 1234.5678901234567, 0, 320.1, 0, 1e-17, 239.9, 0, 0, 1);
const cv::Mat kDistortion = (cv::Mat_<double>(1, 5) << -0.1, 1.0 / 3, 1e300, -7e-9, 5e-324);

struct Loaded {
    explicit Loaded(const std::string& fileName) {
        result = orx::calibrateDataFromFile(fileName, intrinsic, distortion, size, description);
    }

    cv::Mat intrinsic = cv::Mat::ones(1, 1, CV_8U);
    cv::Mat distortion = cv::Mat::ones(1, 1, CV_8U);
    cv::Size size{-7, -8};
    std::string description = "before";
    bool result = false;
};

bool isUntouched(const Loaded& loaded) {
    return loaded.intrinsic.size() == cv::Size(1, 1) && loaded.distortion.size() == cv::Size(1, 1) &&
           loaded.size == cv::Size(-7, -8) && loaded.description == "before";
}

bool sameBits(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && a.type() == b.type() &&
           std::memcmp(a.data, b.data, a.total() * a.elemSize()) == 0;
}

class CalibrationFile : public testing::TestWithParam<const char*> {
  protected:
    std::string path() const { return folder / ("calibration" + std::string(GetParam())); }

    test::TemporaryFolder folder;
};

INSTANTIATE_TEST_SUITE_P(Formats, CalibrationFile, testing::Values(".yml", ".xml", ".json", ".yml.gz"));

TEST_P(CalibrationFile, ComesBackExactly) {
    orx::calibrateData2File(kIntrinsic, kDistortion, {640, 480}, "camera 3", path());
    const Loaded loaded(path());
    ASSERT_TRUE(loaded.result);
    EXPECT_TRUE(sameBits(loaded.intrinsic, kIntrinsic));
    EXPECT_TRUE(sameBits(loaded.distortion, kDistortion));
    EXPECT_EQ(loaded.size, cv::Size(640, 480));
    EXPECT_EQ(loaded.description, "camera 3");
}

TEST_P(CalibrationFile, OddMatricesComeBackToo) {
    constexpr double kInf = std::numeric_limits<double>::infinity();
    const cv::Mat odd = (cv::Mat_<double>(1, 3) << kInf, -kInf, std::nan(""));
    orx::calibrateData2File(cv::Mat(), odd, {0, -1}, "", path());
    const Loaded loaded(path());
    ASSERT_TRUE(loaded.result);
    EXPECT_TRUE(loaded.intrinsic.empty());
    ASSERT_EQ(loaded.distortion.size(), cv::Size(3, 1));
    EXPECT_EQ(loaded.distortion.at<double>(0), kInf);
    EXPECT_EQ(loaded.distortion.at<double>(1), -kInf);
    EXPECT_TRUE(std::isnan(loaded.distortion.at<double>(2)));
    EXPECT_EQ(loaded.size, cv::Size(0, -1));
    EXPECT_EQ(loaded.description, "");
}

TEST_P(CalibrationFile, AnyDescriptionComesBackByteForByte) {
    using namespace std::string_literals;
    std::vector<std::string> texts = {"[a, b]",
                                      "{x: 1}",
                                      "[",
                                      "]",
                                      "{",
                                      "}",
                                      "\"",
                                      "'",
                                      "\"quoted\"",
                                      "'quoted'",
                                      "a\"b'c",
                                      "say \"x\"",
                                      "\\",
                                      "a\\n",
                                      "two\nlines",
                                      "\r\n",
                                      "\ttab\t",
                                      " lead",
                                      "trail ",
                                      "   ",
                                      "#comment",
                                      "a # b",
                                      "a: b",
                                      "- item",
                                      "-",
                                      "12",
                                      "1.5",
                                      "0x1f",
                                      ".Nan",
                                      "true",
                                      "~",
                                      "null",
                                      "<tag>&amp;</tag>",
                                      "&lt;",
                                      "-->",
                                      "]]>",
                                      "%YAML:1.0",
                                      "---",
                                      "...",
                                      "!!seq",
                                      "$base64$AAAA",
                                      "%41",
                                      "_",
                                      "\x01\x02\x1f\x7f",
                                      "nul\0inside"s,
                                      "\0"s,
                                      "\xe6\xa0\x87\xe5\xae\x9a",
                                      "\xb1\xea\xb6\xa8",
                                      "\xff\xfe\x80",
                                      std::string(500, '['),
                                      std::string(500, '-'),
                                      std::string(500, '<'),
                                      std::string(600, '\t') + "a",
                                      std::string(3900, 'x') + "\nend",
                                      std::string(5000, 'x'),
                                      std::string(70000, '\n')};
    std::mt19937 generator(5);
    const std::string alphabet = "[]{}\"'\\ \n\r\t:-#&<>%$,!|?*@a1\0\xc4"s;
    for (int i = 0; i < 300; ++i) {
        std::string text;
        for (std::size_t length = generator() % 12; length > 0; --length) {
            text += i % 2 == 0 ? alphabet[generator() % alphabet.size()] : static_cast<char>(generator());
        }
        texts.push_back(text);
    }
    for (const std::string& text : texts) {
        orx::calibrateData2File(kIntrinsic, kDistortion, {64, 48}, text, path());
        const Loaded loaded(path());
        ASSERT_TRUE(loaded.result) << testing::PrintToString(text);
        ASSERT_EQ(loaded.description, text);
        ASSERT_TRUE(sameBits(loaded.distortion, kDistortion)) << testing::PrintToString(text);
    }
}

// Another program's eyes: plain OpenCV finds the five keys, in this order.
TEST(CalibrateData2File, WritesTheKeysInOrder) {
    const test::TemporaryFolder folder;
    orx::calibrateData2File(kIntrinsic, kDistortion, {640, 480}, "line [1] \xe7\x9b\xb8\xe6\x9c\xba",
                            folder / "c.yml");
    const cv::FileStorage storage(folder / "c.yml", cv::FileStorage::READ);
    EXPECT_EQ(storage.root().keys(),
              (std::vector<std::string>{"imageIntrinsic", "imageDistortion", "imageSize", "description",
                                        "isDistortionConfig"}));
    EXPECT_EQ(static_cast<std::string>(storage["description"]), "line [1] \xe7\x9b\xb8\xe6\x9c\xba");
    EXPECT_EQ(static_cast<int>(storage["isDistortionConfig"]), 1);
    for (const std::string text : {"two\nlines,\ta tabulator", "\r\nlong "}) {
        const std::string repeated = text + std::string(900, 'a');
        orx::calibrateData2File(kIntrinsic, kDistortion, {640, 480}, repeated, folder / "c.yml");
        const cv::FileStorage again(folder / "c.yml", cv::FileStorage::READ);
        EXPECT_EQ(static_cast<std::string>(again["description"]), repeated);
    }
    EXPECT_NE(test::bytesOf(folder / "c.yml").find("imageSize: [ 640, 480 ]"), std::string::npos);
}

TEST(CalibrateData2File, OpenCvErrorsPassThrough) {
    const test::TemporaryFolder folder;
    EXPECT_THROW(orx::calibrateData2File(kIntrinsic, kDistortion, {1, 1}, "", folder / "missing/c.yml"),
                 cv::Exception);
}

std::string yaml(const std::string& body) { return "%YAML:1.0\n---\n" + body; }

TEST(CalibrateDataFromFile, WithoutTheFlagNothingIsTouched) {
    const test::TemporaryFolder folder;
    const std::string matrices =
        "imageIntrinsic: !!opencv-matrix\n   rows: 1\n   cols: 2\n   dt: d\n   data: [ 1., 2. ]\n";
    for (const std::string& flag : {std::string("isDistortionConfig: 0\n"), std::string()}) {
        test::writeBytes(folder / "c.yml", yaml(matrices + flag));
        const Loaded loaded(folder / "c.yml");
        EXPECT_FALSE(loaded.result);
        EXPECT_TRUE(isUntouched(loaded));
    }
    test::writeBytes(folder / "c.yml", yaml(matrices + "imageSize: [ 1, 2, 3 ]\nisDistortionConfig: 1\n"));
    const Loaded loaded(folder / "c.yml");
    EXPECT_TRUE(loaded.result);
    EXPECT_EQ(loaded.intrinsic.size(), cv::Size(2, 1));
    EXPECT_TRUE(loaded.distortion.empty());
    EXPECT_EQ(loaded.size, cv::Size(0, 0));
    EXPECT_EQ(loaded.description, "");
}

TEST(CalibrateDataFromFile, BrokenFilesAreRefused) {
    const test::TemporaryFolder folder;
    const auto repeated = [](const std::string& text, int count) {
        std::string result;
        for (int i = 0; i < count; ++i) result += text;
        return result;
    };
    const std::string matrix = "isDistortionConfig: 1\nimageIntrinsic: !!opencv-matrix\n   rows: ";
    const std::string contents[] = {
        "",
        "garbage",
        std::string(100, '\0'),
        "\xff\xd8\xff\xe0",
        "{",
        "<?xml version=\"1.0\"?>",
        "%YAML:1.0\n---\n\"",
        yaml(matrix + "2000000000\n   cols: 2000000000\n   dt: d\n   data: [ 1. ]\n"),
        yaml(matrix + "-1\n   cols: -1\n   dt: d\n   data: [ 1. ]\n"),
        yaml(matrix + "3\n   cols: 3\n   dt: d\n   data: [ 1. ]\n"),
        yaml(matrix + "1\n   cols: 1\n   dt: \"99999q\"\n   data: [ 1. ]\n"),
        yaml("isDistortionConfig: 1\nimageIntrinsic: 5\n"),
        yaml("isDistortionConfig: 1\nimageIntrinsic: !!opencv-nd-matrix\n   sizes: [ " + repeated("1,", 99) +
             " 1 ]\n   dt: d\n   data: [ 1. ]\n"),
        yaml("isDistortionConfig: 1\nimageIntrinsic: !!opencv-nd-matrix\n   sizes: [ 2029953363, 219531153, "
             "5, "
             "109, 223, 3821, 24923, 1421227 ]\n   dt: d\n   data: [ 1. ]\n"),
        yaml("a: " + repeated("[", 100000)),
        yaml("a: " + repeated("b: ", 100000)),
        yaml("a:\n " + repeated("- ", 100000)),
        "{\"a\":" + repeated("[", 100000) + repeated("]", 100000) + "}",
        "<?xml version=\"1.0\"?>\n<opencv_storage>" + repeated("<a>", 100000),
        "<?xml version=\"1.0\"?>\n<opencv_storage>\n<a type_id=",
        "<?xml version=\"1.0\"?>\n<opencv_storage>\n<a type_id=" + std::string(3, '\0') +
            "\"x\">\n</a></opencv_storage>\n",
        // Read for ever by OpenCV.
        "%YAML:1.0\n   - p\ni\n-",
        "\xef\xbb\xbf%YAML:1.0\n   - p\ni\n-",
        "%YAML:1.0\n#\ra: 1\n   - p\ni\n-",
        yaml("isDistortionConfig: 1\n---  - p\ni\n-"),
    };
    for (const std::string& content : contents) {
        test::writeBytes(folder / "broken.yml", content);
        const Loaded loaded(folder / "broken.yml");
        EXPECT_FALSE(loaded.result) << content.substr(0, 200);
        EXPECT_TRUE(isUntouched(loaded));
    }
    EXPECT_FALSE(Loaded(folder / "missing.yml").result);
    EXPECT_FALSE(Loaded(folder.name()).result);
    EXPECT_FALSE(Loaded("").result);
}

TEST(CalibrateDataFromFile, CommentsAndMarksOfYamlAreTaken) {
    const test::TemporaryFolder folder;
    const std::string keys = "isDistortionConfig: 1 # flag\n# more\n\nimageSize: [ 640,\n  480 ]\n";
    for (const std::string& content : {yaml(keys), yaml(keys + "...\n"), "%YAML:1.0\n# by hand\n\n" + keys,
                                       yaml("# first\n" + keys + "... # end\n---\ndescription: other\n")}) {
        test::writeBytes(folder / "taken.yml", content);
        const Loaded loaded(folder / "taken.yml");
        EXPECT_TRUE(loaded.result) << content;
        EXPECT_EQ(loaded.size, cv::Size(640, 480)) << content;
    }
}

TEST_P(CalibrationFile, CutFilesAreRefused) {
    orx::calibrateData2File(kIntrinsic, kDistortion, {640, 480}, "c", path());
    const std::string good = test::bytesOf(path());
    for (std::size_t size = 0; size + 60 < good.size(); size += 13) {
        for (const std::string& end : {std::string(), std::string("\0\n", 2)}) {
            test::writeBytes(path(), good.substr(0, size) + end);
            const Loaded loaded(path());
            EXPECT_FALSE(loaded.result) << size;
            EXPECT_TRUE(isUntouched(loaded)) << size;
        }
    }
}

// Good files with a few bytes changed: they load or they do not, and either way the process lives on.
TEST_P(CalibrationFile, DamagedFilesNeverCrash) {
    orx::calibrateData2File(kIntrinsic, kDistortion, {640, 480}, "{\"}", path());
    const std::string good = test::bytesOf(path());
    std::mt19937 generator(11);
    int refused = 0;
    for (int i = 0; i < 400; ++i) {
        std::string damaged = good;
        for (auto changes = 1 + generator() % 6; changes > 0; --changes) {
            const std::size_t at = generator() % damaged.size();
            if (generator() % 4 == 0) {
                damaged.erase(at, generator() % 20);
            } else {
                damaged[at] = "0-9[]{}<>\":\n .!"[generator() % 15];
            }
        }
        test::writeBytes(path(), damaged);
        const Loaded loaded(path());
        if (!loaded.result) {
            ++refused;
            EXPECT_TRUE(isUntouched(loaded));
        }
    }
    EXPECT_GT(refused, 0);
}

}  // namespace
