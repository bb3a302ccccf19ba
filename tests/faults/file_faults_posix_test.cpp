// Files that the system can't open, read, write, close or rename, at each of the calls in turn.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <optional>

#include "orxFunctions/orxfunctions.h"
#include "tests/faults/system_faults_posix.h"
#include "tests/support/flat_plane.h"
#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using test::system::Armed;

// What a call gave, as bytes; nothing where it refused.
using Given = std::optional<std::string>;

struct Kind {
    const char* name;
    unsigned calls;
    int error;
};

constexpr Kind kReadFaults[] = {
    {"EIO on reading", test::system::kRead, EIO},       {"EINTR on reading", test::system::kRead, EINTR},
    {"EMFILE on opening", test::system::kOpen, EMFILE}, {"EACCES on opening", test::system::kOpen, EACCES},
    {"EINTR on opening", test::system::kOpen, EINTR},   {"EIO on closing", test::system::kClose, EIO},
    {"EIO on asking", test::system::kAsk, EIO},
};
constexpr Kind kWriteFaults[] = {
    {"ENOSPC on writing", test::system::kWrite, ENOSPC}, {"EIO on writing", test::system::kWrite, EIO},
    {"EINTR on writing", test::system::kWrite, EINTR},   {"ENOSPC on opening", test::system::kOpen, ENOSPC},
    {"EROFS on names", test::system::kNames, EROFS},     {"EIO on closing", test::system::kClose, EIO},
    {"EDQUOT on closing", test::system::kClose, EDQUOT},
};

int openFiles() {
    int count = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) count += entry.path().empty() ? 0 : 1;
    return count;
}

class FileFaults : public testing::Test {
  protected:
    void SetUp() override {
        if (!test::system::canFail())
            GTEST_SKIP() << "system calls can't be watched here, or a sanitizer makes some of its own";
    }

    // `call` makes ready, holds an Armed while the call itself runs, and tells what was given. Fault after
    // fault, it gives what it gives undisturbed, or refuses; `look` sees what is left. Short transfers must
    // not be noticed.
    template <std::size_t size>
    void sweep(
        const Kind (&kinds)[size], const std::function<Given()>& call,
        const std::function<void(bool)>& look = [](bool) {}) {
        const Given whole = call();
        ASSERT_TRUE(whole.has_value());
        look(true);
        long failed = 0;
        for (const Kind& kind : kinds) failed += sweepOne(kind, whole, call, look);
        EXPECT_GT(failed, 0) << "no call of the system ever failed";
        for (const unsigned calls : {test::system::kRead, test::system::kWrite}) {
            Given given;
            test::system::runWith({calls, 0, 1, true}, [&] { given = call(); });
            EXPECT_TRUE(given == whole) << "short transfers";
            look(true);
        }
    }

    test::TemporaryFolder folder_;

  private:
    static long sweepOne(const Kind& kind, const Given& whole, const std::function<Given()>& call,
                         const std::function<void(bool)>& look) {
        long failures = 0;
        for (const bool lasts : {false, true}) {
            if (lasts && kind.error == EINTR) continue;  // a call that is interrupted is made again
            for (long n = 1;; ++n) {
                SCOPED_TRACE(std::string(kind.name) + ", call " + std::to_string(n) +
                             (lasts ? " and later" : ""));
                const int before = openFiles();
                Given given;
                test::system::runWith({kind.calls, kind.error, n, lasts}, [&] { given = call(); });
                const bool hasFailed = test::system::callsFailed() > 0;
                EXPECT_TRUE(!given || *given == *whole) << "neither the whole answer nor a refusal";
                EXPECT_EQ(openFiles(), before);
                look(given.has_value());
                if (!hasFailed) {
                    EXPECT_TRUE(given.has_value()) << "refused without a fault";
                }
                if (!hasFailed || testing::Test::HasFailure()) break;
                ++failures;
            }
        }
        return failures;
    }
};

std::string text(const cv::Mat& numbers) {
    return {reinterpret_cast<const char*>(numbers.data), numbers.total() * numbers.elemSize()};
}

TEST_F(FileFaults, AStreamFileIsReadWholeOrRefused) {
    const cv::Mat numbers = (cv::Mat_<double>(40, 30));
    cv::randu(numbers, 0, 1);
    const std::string file = folder_ / "numbers";
    ASSERT_TRUE(orx::image2StreamFile(numbers, {3, 4}, file, "height"));
    sweep(kReadFaults, [&]() -> Given {
        cv::Mat read;
        cv::Size size;
        std::string told;
        bool isRead = false;
        {
            const Armed armed;
            isRead = orx::streamFile2Image(file, read, size, told);
        }
        if (!isRead) {
            EXPECT_TRUE(read.empty() && told.empty());
            return std::nullopt;
        }
        return text(read) + told + std::to_string(size.area());
    });
}

TEST_F(FileFaults, AStreamFileIsWrittenToItsEndOrRefused) {
    const cv::Mat numbers(40, 30, CV_64F, cv::Scalar(1.25));
    const std::string file = folder_ / "numbers";
    sweep(kWriteFaults, [&]() -> Given {
        fs::remove(file);
        bool isWritten = false;
        {
            const Armed armed;
            isWritten = orx::image2StreamFile(numbers, {3, 4}, file, "height");
        }
        if (!isWritten) return std::nullopt;
        return test::bytesOf(file);
    });
}

TEST_F(FileFaults, AModelIsWrittenAndReadWholeOrNot) {
    cv::Mat image(60, 60, CV_8U, cv::Scalar(40));
    cv::rectangle(image, {18, 15}, {40, 44}, cv::Scalar(200), cv::FILLED);
    const orx::TPartModel model = orx::teachPart(image, cv::Rect(8, 6, 44, 48));
    ASSERT_TRUE(model.valid());
    const std::string file = folder_ / "part";
    sweep(kWriteFaults, [&]() -> Given {
        orx::TMatchStatus status = orx::msOk;
        {
            const Armed armed;
            status = orx::writePartModel(file, model);
        }
        if (status != orx::msOk) {
            EXPECT_EQ(status, orx::msUnwritable);
            return std::nullopt;
        }
        return test::bytesOf(file);
    });
    sweep(kReadFaults, [&]() -> Given {
        orx::TPartModel read;
        {
            const Armed armed;
            read = orx::readPartModel(file);
        }
        if (!read.valid()) return std::nullopt;
        return orx::partModelToBytes(read);
    });
}

TEST_F(FileFaults, CalibrationsAreWrittenAndReadWholeOrNot) {
    const cv::Mat camera = cv::Mat::eye(3, 3, CV_64F) * 1.5;
    for (const char* name : {"camera.yml", "camera.json.gz"}) {
        SCOPED_TRACE(name);
        const std::string file = folder_ / name;
        sweep(kWriteFaults, [&]() -> Given {
            fs::remove(file);
            try {
                const Armed armed;
                orx::calibrateData2File(camera, camera.row(0), {640, 480}, "of a line", file);
            } catch (const cv::Exception&) {  // as its header says
                return std::nullopt;
            }
            cv::Mat read;
            cv::Mat distortion;
            cv::Size size;
            std::string description;
            // What could not be written to the end is not told, but can't be read either.
            if (!orx::calibrateDataFromFile(file, read, distortion, size, description)) return std::nullopt;
            return text(read) + description;
        });
        sweep(kReadFaults, [&]() -> Given {
            cv::Mat read;
            cv::Mat distortion;
            cv::Size size;
            std::string description;
            bool isRead = false;
            {
                const Armed armed;
                isRead = orx::calibrateDataFromFile(file, read, distortion, size, description);
            }
            if (!isRead) {
                EXPECT_TRUE(read.empty() && description.empty());
                return std::nullopt;
            }
            return text(read) + description;
        });
    }
}

TEST_F(FileFaults, APlaneIsWrittenAndReadWholeOrNot) {
    orx::TPlaneCalibration plane = test::flatPlane();
    plane.homography = {10, 0, 100, 0, 10, 80, 0, 0, 1};
    plane.covariance = decltype(plane.covariance)::eye() * 1e-6;
    plane.noise = 0.1;
    plane.rms = 0.1;
    plane.coverage = 0.5;
    const std::string file = folder_ / "plane.json";
    sweep(kWriteFaults, [&]() -> Given {
        orx::TPlaneStatus status = orx::plOk;
        {
            const Armed armed;
            status = orx::writePlaneCalibration(file, plane);
        }
        if (status != orx::plOk) {
            EXPECT_EQ(status, orx::plUnwritable);
            return std::nullopt;
        }
        return test::bytesOf(file);
    });
    sweep(kReadFaults, [&]() -> Given {
        orx::TPlaneCalibration read;
        {
            const Armed armed;
            read = orx::readPlaneCalibration(file);
        }
        if (!read.valid()) {
            EXPECT_EQ(read.status, orx::plUnreadable);
            EXPECT_FALSE(read.problem.empty());
            return std::nullopt;
        }
        return read.problem + std::to_string(read.homography(0, 2));
    });
}

TEST_F(FileFaults, ARecipeIsReadWholeOrItsProblemIsTold) {
    const std::string file = folder_ / "recipe.json";
    test::writeBytes(
        file,
        R"({"recipe": 1, "features": [{"name": "a", "type": "line", "from": [1, 2], "to": [9, 2], "search": 3}],
        "values": [{"name": "angle", "type": "angle", "of": ["a"]}]})");
    sweep(kReadFaults, [&]() -> Given {
        orx::TRecipe recipe;
        {
            const Armed armed;
            recipe = orx::readRecipe(file);
        }
        if (!recipe.valid()) {
            EXPECT_EQ(recipe.problems().size(), 1U);
            return std::nullopt;
        }
        return recipe.text();
    });
}

TEST_F(FileFaults, AVersionIsReadHoweverLittleTheSystemHandsOver) {
    // A library in a folder that no package owns: its version is in its tables, in pieces all over the file.
    Dl_info library = {};
    ASSERT_NE(dladdr(reinterpret_cast<const void*>(&zul::getFileVersion), &library), 0);
    const std::string file = folder_ / "libany.so";
    fs::copy_file(library.dli_fname, file);
    std::string version;
    for (const long n : {0L, 1L}) {
        test::system::runWith({test::system::kRead, 0, n, true}, [&] {
            const Armed armed;
            version = zul::getFileVersion(file);
        });
        EXPECT_EQ(version, "0") << "of libZULLib.so.0; reads cut short: " << test::system::callsFailed();
    }
    EXPECT_GT(test::system::callsFailed(), 3);
}

TEST_F(FileFaults, LinesOfALogAreWholeUnlessTheDiskIsFull) {
    const std::string file = folder_ / "log";
    sweep(kWriteFaults, [&]() -> Given {
        test::writeBytes(file, "before\n");
        {
            const Armed armed;
            orx::save2Txt(file, "a line", 1);
        }
        const std::string written = test::bytesOf(file);
        if (written == "before\n") return std::nullopt;
        return written;
    });
}

TEST_F(FileFaults, FilesAreCopiedAndMovedWholeOrStayAsTheyWere) {
    const std::string from = folder_ / "from";
    const std::string to = folder_ / "to";
    const std::string content(100000, 'x');
    const auto prepare = [&] {
        fs::remove(to);
        test::writeBytes(from, content);
    };
    sweep(kWriteFaults, [&]() -> Given {
        prepare();
        bool isDone = false;
        {
            const Armed armed;
            isDone = FileOperator::copyFile(from, to);
        }
        EXPECT_EQ(test::bytesOf(from), content);
        if (!isDone) return std::nullopt;
        return test::bytesOf(to);
    });
    sweep(kWriteFaults, [&]() -> Given {
        prepare();
        bool isDone = false;
        {
            const Armed armed;
            isDone = FileOperator::moveFile(from, to);
        }
        EXPECT_EQ(test::bytesOf(isDone ? to : from), content) << "lost";
        if (!isDone) return std::nullopt;
        return test::bytesOf(to);
    });
}

// Where the system can't rename since the target is on another disk, the file is copied there.
TEST_F(FileFaults, AFileIsMovedToAnotherDisk) {
    const std::string from = folder_ / "from";
    const std::string to = folder_ / "to";
    const std::string content(100000, 'x');
    test::writeBytes(from, content);
    test::system::runWith({test::system::kNames, EXDEV, 1, false}, [&] {
        const Armed armed;
        EXPECT_TRUE(FileOperator::moveFile(from, to));
    });
    EXPECT_EQ(test::system::callsFailed(), 1);
    EXPECT_FALSE(fs::exists(from));
    EXPECT_EQ(test::bytesOf(to), content);
}

TEST_F(FileFaults, SavedImagesAreWholeOrReported) {
    const cv::Mat image(20, 30, CV_8U, cv::Scalar(77));
    std::string saved;
    const auto messages = [] {
        int count = 0;
        std::string told;
        int color = 0;
        while (orx::APPgetMessage(told, color)) ++count;
        return count;
    };
    messages();
    sweep(kWriteFaults, [&]() -> Given {
        fs::remove_all(folder_.path() / "saved");
        bool isTaken = false;
        {
            const Armed armed;
            isTaken = FileOperator::saveImage(image, folder_ / "saved", "", ".bmp", &saved) &&
                      FileOperator::flush();
        }
        EXPECT_TRUE(isTaken);
        if (!fs::exists(saved)) {
            EXPECT_EQ(messages(), 1) << "lost without a word";
            return std::nullopt;
        }
        EXPECT_EQ(messages(), 0);
        return text(cv::imread(saved, cv::IMREAD_GRAYSCALE));
    });
}

}  // namespace
