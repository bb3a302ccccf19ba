// Pipes, sockets and devices where a file is expected, and disks that are full.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

void makePipe(const std::string& name) { ASSERT_EQ(mkfifo(name.c_str(), 0600), 0); }

void makeSocket(const std::string& name) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(name.size(), sizeof address.sun_path);
    std::memcpy(address.sun_path, name.c_str(), name.size());
    const int made = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(made);
}

// Files of this process can't become larger, until the end of the test: as on a full disk.
class FullDisk {
  public:
    explicit FullDisk(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &former_);
        const rlimit small = {bytes, former_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &former_);
        std::signal(SIGXFSZ, handler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

  private:
    void (*handler_)(int);
    rlimit former_ = {};
};

std::vector<std::string> messages() {
    std::vector<std::string> texts;
    std::string text;
    int color = 0;
    while (orx::APPgetMessage(text, color)) texts.push_back(zul::toUtf8(text));
    return texts;
}

class OddFiles : public testing::Test {
  protected:
    void SetUp() override { messages(); }

    test::TemporaryFolder folder;
    const cv::Mat matrix = cv::Mat::ones(40, 50, CV_64F);
};

// None is waited for, and none is changed.
TEST_F(OddFiles, PipesSocketsAndDevicesAreRefusedAtOnce) {
    makePipe(folder / "pipe");
    makeSocket(folder / "socket");
    fs::create_symlink("pipe", folder.path() / "link");
    for (const std::string& name :
         {folder / "pipe", folder / "link", folder / "socket", std::string("/dev/null"),
          std::string("/dev/full"), std::string("/dev/zero")}) {
        EXPECT_FALSE(orx::image2StreamFile(matrix, {1, 1}, name, "")) << name;
        cv::Mat image;
        cv::Size size;
        std::string text;
        EXPECT_FALSE(orx::streamFile2Image(name, image, size, text)) << name;
        orx::save2Txt(name, "line", 1);
        EXPECT_FALSE(FileOperator::copyFile(name, folder / "copy")) << name;
        EXPECT_TRUE(fs::exists(name)) << name;
    }
    const std::string file = folder / "file";
    test::writeBytes(file, "x");
    EXPECT_FALSE(FileOperator::copyFile(file, folder / "pipe", true));
    EXPECT_EQ(FileOperator::listFiles(folder.name()), std::vector<std::string>{file});
}

TEST_F(OddFiles, AugmentationRefusesPipes) {
    const test::TemporaryFolder out;
    for (const char* name : {"a", "b"})
        cv::imwrite(folder / (std::string(name) + ".png"), cv::Mat::ones(8, 9, CV_8U));
    makePipe(folder / "b.json");
    makePipe(folder / "c.png");
    makePipe(out / "a_flipH.png");
    const orx::TAugmentationReport report = orx::ImageDataAugmentation().augment(folder.name(), out.name());
    EXPECT_TRUE(report.completed);
    EXPECT_EQ(report.images, 1);
    EXPECT_EQ(report.skipped, 1);
    ASSERT_EQ(report.problems.size(), 2U);
    EXPECT_EQ(zul::toUtf8(report.problems[0]), "无法写入文件: " + out / "a_flipH.png");
    EXPECT_EQ(zul::toUtf8(report.problems[1]), "标注文件无效, 跳过图像: " + folder / "b.png");
    EXPECT_EQ(report.written, 8);
    EXPECT_TRUE(fs::is_fifo(out.path() / "a_flipH.png"));
}

TEST_F(OddFiles, AFullDiskLeavesNoHalfFile) {
    const std::string former = folder / "former.bin";
    const std::string fresh = folder / "fresh.bin";
    const std::string large = folder / "large";
    test::writeBytes(former, "former");
    test::writeBytes(large, std::string(20000, 'x'));
    fs::create_symlink("behind.bin", folder.path() / "link.bin");
    const FullDisk full(5000);
    for (const std::string& name : {former, fresh, folder / "link.bin"}) {
        EXPECT_FALSE(orx::image2StreamFile(matrix, {1, 1}, name, ""));
        EXPECT_FALSE(fs::exists(name)) << name;
    }
    EXPECT_FALSE(FileOperator::copyFile(large, folder / "copy"));
    EXPECT_FALSE(fs::exists(folder / "copy"));
    EXPECT_TRUE(orx::image2StreamFile(cv::Mat::ones(5, 5, CV_64F), {1, 1}, fresh, "")) << "small enough";
}

TEST_F(OddFiles, AugmentationAndSavingTellWhatAFullDiskLost) {
    const test::TemporaryFolder out;
    const test::TemporaryFolder saved;
    cv::Mat noise(60, 60, CV_8U);
    cv::randu(noise, 0, 256);
    cv::imwrite(folder / "a.png", noise);
    std::string path;
    const FullDisk full(1000);
    const orx::TAugmentationReport report = orx::ImageDataAugmentation().augment(folder.name(), out.name());
    EXPECT_EQ(report.written, 0);
    EXPECT_EQ(report.problems.size(), 9U);
    EXPECT_TRUE(fs::is_empty(out.path()));
    messages();
    EXPECT_TRUE(FileOperator::saveImage(noise, saved.name(), "", ".bmp", &path));
    EXPECT_TRUE(FileOperator::flush());
    EXPECT_EQ(messages(), std::vector<std::string>{"图像保存失败: " + path});
    EXPECT_TRUE(fs::is_empty(saved.path()));
}

}  // namespace
