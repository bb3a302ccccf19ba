#include "drivers/TQVisionDriver/scene_source.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/trace_log.h"

namespace {

using vision::Made;
using vision::PacedSource;
using vision::SceneMaker;
using vision::ScenePart;
using vision::scenePart;
using vision::SceneSettings;

SceneSettings quiet(int width, int height) {
    SceneSettings settings;
    settings.width = width;
    settings.height = height;
    settings.noise = 0.0;
    settings.seed = 1;
    return settings;
}

cv::Mat pictureOf(SceneMaker& maker, std::int64_t number) {
    vision::PictureFormat format;
    EXPECT_TRUE(maker.prepare(format));
    cv::Mat picture;
    EXPECT_EQ(maker.make(number, picture), Made::kPicture);
    EXPECT_EQ(picture.cols, format.width);
    EXPECT_EQ(picture.rows, format.height);
    EXPECT_EQ(picture.channels(), format.channels);
    return picture;
}

// The brightness above the tray, taken together: its sum is (area of disk - area of hole) times the contrast,
// and its centre of gravity follows from both centres.
TEST(SceneSource, ThePartLiesWhereItsGeometrySays) {
    SceneMaker maker(quiet(400, 300));
    for (const std::int64_t number : {1, 17, 60, 133, 239, 1000}) {
        SCOPED_TRACE(number);
        const cv::Mat picture = pictureOf(maker, number);
        const ScenePart part = scenePart(400, 300, number);
        ASSERT_GT(part.center.x - part.radius, 1.0);
        ASSERT_LT(part.center.x + part.radius, 398.0);
        ASSERT_GT(part.center.y - part.radius, 1.0);
        ASSERT_LT(part.center.y + part.radius, 298.0);
        double sum = 0.0;
        cv::Point2d moment(0.0, 0.0);
        for (int y = 0; y < picture.rows; ++y) {
            for (int x = 0; x < picture.cols; ++x) {
                const double bright = picture.at<unsigned char>(y, x) - vision::kTrayLevel;
                sum += bright;
                moment += bright * cv::Point2d(x, y);
            }
        }
        const double disk = CV_PI * part.radius * part.radius;
        const double hole = CV_PI * part.holeRadius * part.holeRadius;
        const double contrast = vision::kPartLevel - vision::kTrayLevel;
        EXPECT_NEAR(sum / contrast, disk - hole, 0.001 * disk);
        const cv::Point2d expected = (disk * part.center - hole * part.holeCenter) / (disk - hole);
        EXPECT_NEAR(moment.x / sum, expected.x, 0.01);
        EXPECT_NEAR(moment.y / sum, expected.y, 0.01);
    }
}

TEST(SceneSource, ARegionShowsTheSameSceneCutOut) {
    SceneSettings settings = quiet(400, 300);
    settings.noise = 3.0;
    SceneMaker whole(settings);
    SceneMaker part(settings);
    EXPECT_TRUE(part.setParameter(VD_PARAM_WIDTH, 200, false));
    EXPECT_TRUE(part.setParameter(VD_PARAM_HEIGHT, 150, false));
    EXPECT_TRUE(part.setParameter(VD_PARAM_OFFSET_X, 130, false));
    EXPECT_TRUE(part.setParameter(VD_PARAM_OFFSET_Y, 90, false));
    EXPECT_FALSE(part.setParameter(VD_PARAM_OFFSET_X, 201, false)) << "would leave the scene";
    EXPECT_FALSE(part.setParameter(VD_PARAM_WIDTH, 0, false));
    EXPECT_FALSE(part.setParameter(VD_PARAM_WIDTH, 100, true)) << "while pictures are being made";
    const cv::Mat expected = pictureOf(whole, 30)(cv::Rect(130, 90, 200, 150));
    EXPECT_EQ(cv::norm(expected, pictureOf(part, 30), cv::NORM_INF), 0.0);
    EXPECT_EQ(part.parameter(VD_PARAM_WIDTH), 200.0F);
    EXPECT_EQ(part.parameter(VD_PARAM_HEIGHT), 150.0F);
    EXPECT_EQ(part.parameter(VD_PARAM_OFFSET_X), 130.0F);
    EXPECT_EQ(part.parameter(VD_PARAM_OFFSET_Y), 90.0F);
}

TEST(SceneSource, ColourIsTheSameGreyThreeTimes) {
    SceneMaker grey(quiet(120, 90));
    SceneMaker colour(quiet(120, 90));
    EXPECT_FALSE(colour.setParameter(VD_PARAM_PIXEL_FORMAT, VD_PIXEL_BGR8, true))
        << "while pictures are being made";
    EXPECT_TRUE(colour.setParameter(VD_PARAM_PIXEL_FORMAT, VD_PIXEL_BGR8, false));
    EXPECT_EQ(colour.parameter(VD_PARAM_PIXEL_FORMAT), static_cast<float>(VD_PIXEL_BGR8));
    EXPECT_EQ(grey.parameter(VD_PARAM_PIXEL_FORMAT), static_cast<float>(VD_PIXEL_MONO8));
    std::vector<cv::Mat> channels;
    cv::split(pictureOf(colour, 7), channels);
    ASSERT_EQ(channels.size(), 3U);
    for (const cv::Mat& channel : channels)
        EXPECT_EQ(cv::norm(channel, pictureOf(grey, 7), cv::NORM_INF), 0.0);
    EXPECT_TRUE(colour.setParameter(VD_PARAM_PIXEL_FORMAT, VD_PIXEL_MONO8, false));
    EXPECT_EQ(pictureOf(colour, 7).channels(), 1);
}

TEST(SceneSource, NoiseIsRepeatableAndAsLargeAsAskedFor) {
    SceneSettings settings = quiet(400, 300);
    settings.noise = 4.0;
    SceneMaker first(settings);
    SceneMaker second(settings);
    settings.seed = 2;
    SceneMaker other(settings);
    const cv::Mat picture = pictureOf(first, 5);
    EXPECT_EQ(cv::norm(picture, pictureOf(second, 5), cv::NORM_INF), 0.0);
    EXPECT_GT(cv::norm(picture, pictureOf(other, 5), cv::NORM_INF), 0.0);
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(picture(cv::Rect(0, 0, 400, 40)), mean, deviation);
    EXPECT_NEAR(mean[0], vision::kTrayLevel, 0.2);
    EXPECT_NEAR(deviation[0], 4.0, 0.2);
}

TEST(SceneSource, LightFollowsExposureAndGain) {
    SceneMaker maker(quiet(200, 200));
    const auto trayLevel = [&maker] { return static_cast<int>(pictureOf(maker, 1).at<unsigned char>(0, 0)); };
    EXPECT_EQ(trayLevel(), 40);
    EXPECT_TRUE(maker.setParameter(VD_PARAM_EXPOSURE, 20000, true));
    EXPECT_EQ(trayLevel(), 80);
    EXPECT_TRUE(maker.setParameter(VD_PARAM_GAIN, 60, true));  // 6.0 dB: nearly twice, 80 * 10^0.3
    EXPECT_EQ(trayLevel(), 160);
    EXPECT_FALSE(maker.setParameter(VD_PARAM_GAIN, -1, true));
    EXPECT_FALSE(maker.setParameter(VD_PARAM_EXPOSURE, 0, true));
    EXPECT_EQ(trayLevel(), 160);
    EXPECT_EQ(maker.parameter(VD_PARAM_EXPOSURE), 20000.0F);
    EXPECT_EQ(maker.parameter(VD_PARAM_GAIN), 60.0F);
}

class RunningScene : public testing::Test {
  protected:
    void startAt(double rate, long trigger = VD_TRIGGER_OFF) {
        source_ = std::make_unique<PacedSource>(std::make_unique<SceneMaker>(quiet(64, 64)), rate);
        ASSERT_TRUE(source_->open());
        ASSERT_TRUE(source_->setParameter(VD_PARAM_TRIGGER_MODE, trigger));
        vision::PictureFormat format;
        ASSERT_TRUE(source_->start(format));
    }
    float number() { return source_->parameter(VD_PARAM_FRAME_NUMBER); }
    bool fetched() {
        VDImage image{};
        return source_->fetch(image) && image.width == 64 && image.height == 64 && image.channels == 1;
    }
    static void sleepMs(int duration) { std::this_thread::sleep_for(std::chrono::milliseconds(duration)); }

    // How many came while it slept, and how many seconds that really took.
    std::pair<double, double> picturesWithin(int ms) {
        const auto start = vision::Clock::now();
        const double before = number();
        sleepMs(ms);
        const double pictures = number() - before;
        return {pictures, std::chrono::duration<double>(vision::Clock::now() - start).count()};
    }

    std::unique_ptr<PacedSource> source_;
};

TEST_F(RunningScene, PicturesComeAtTheSetRate) {
    startAt(100.0);
    // Never faster than asked; slower only while this machine is busy.
    bool keepsUp = false;
    for (int i = 0; i < 20 && !keepsUp; ++i) {
        const auto [pictures, seconds] = picturesWithin(250);
        EXPECT_LE(pictures, 100.0 * seconds + 2.0);
        keepsUp = pictures >= 50.0 * seconds;
    }
    EXPECT_TRUE(keepsUp);
    EXPECT_TRUE(source_->setParameter(VD_PARAM_FRAME_RATE, 4));
    sleepMs(30);
    const auto [pictures, seconds] = picturesWithin(600);
    EXPECT_GE(pictures, 1.0);
    EXPECT_LE(pictures, 4.0 * seconds + 1.0);
    EXPECT_EQ(source_->parameter(VD_PARAM_BYTES_RECEIVED), 64.0F * 64.0F * number());
    EXPECT_EQ(source_->parameter(VD_PARAM_FRAMES_LOST), 0.0F);
}

TEST_F(RunningScene, FetchRepeatsTheLastPictureWithoutWaitingForTheNext) {
    using std::chrono::milliseconds;
    vision::Clock::duration took = milliseconds(500);
    for (int attempt = 0; attempt < 5 && took >= milliseconds(500); ++attempt) {  // the machine may be busy
        startAt(1.0);
        EXPECT_TRUE(fetched());
        const auto start = vision::Clock::now();
        for (int i = 0; i < 10; ++i) EXPECT_TRUE(fetched());
        took = vision::Clock::now() - start;
    }
    EXPECT_GE(took, milliseconds(40)) << "each waits a little for a newer picture";
    EXPECT_LT(took, milliseconds(500));
    EXPECT_EQ(number(), 1.0F);
    EXPECT_GE(source_->parameter(VD_PARAM_FRAME_AGE), 40.0F);
}

TEST_F(RunningScene, ATriggeredSourceMakesOnePicturePerTriggerAndIsNeverLost) {
    startAt(1000.0, VD_TRIGGER_SOFTWARE);
    EXPECT_TRUE(fetched()) << "a black one";
    sleepMs(1200);
    EXPECT_TRUE(fetched());
    EXPECT_EQ(number(), 0.0F);
    EXPECT_TRUE(source_->setParameter(VD_PARAM_SOFTWARE_TRIGGER, 1));
    for (int i = 0; i < 200 && number() < 1.0F; ++i) sleepMs(5);
    sleepMs(20);
    EXPECT_EQ(number(), 1.0F);
    EXPECT_FALSE(source_->setParameter(VD_PARAM_TRIGGER_MODE, VD_TRIGGER_LINE_1)) << "it has no lines";
    EXPECT_TRUE(source_->setParameter(VD_PARAM_TRIGGER_MODE, VD_TRIGGER_OFF));
    EXPECT_FALSE(source_->setParameter(VD_PARAM_SOFTWARE_TRIGGER, 1));
    sleepMs(50);
    EXPECT_GT(number(), 2.0F);
}

// A maker that comes to a halt, as a replay on a dead network drive does.
class HaltingMaker : public vision::PictureMaker {
  public:
    bool available() override { return true; }
    bool prepare(vision::PictureFormat& format) override {
        format = {64, 64, 1};
        return true;
    }
    Made make(std::int64_t number, cv::Mat& picture) override {
        if (number > 1) return Made::kNothing;
        picture = cv::Mat(64, 64, CV_8UC1, cv::Scalar(77));
        return Made::kPicture;
    }
    bool setParameter(int /*id*/, long /*value*/, bool /*running*/) override { return false; }
    float parameter(int /*id*/) override { return 1.0F; }
};

TEST_F(RunningScene, ASourceWithoutNewPicturesIsLostAfterASecond) {
    source_ = std::make_unique<PacedSource>(std::make_unique<HaltingMaker>(), 50.0);
    vision::PictureFormat format;
    ASSERT_TRUE(source_->start(format));
    EXPECT_TRUE(fetched());
    sleepMs(500);
    EXPECT_TRUE(fetched()) << "half a second is no loss";
    sleepMs(700);
    EXPECT_FALSE(fetched());
    EXPECT_GE(source_->parameter(VD_PARAM_FRAMES_LOST), 10.0F);
}

// A maker that fails, as one does that has no memory left for a picture.
class FailingMaker : public HaltingMaker {
  public:
    Made make(std::int64_t number, cv::Mat& picture) override {
        if (number == 2) throw std::runtime_error("no room");
        return HaltingMaker::make(1, picture);
    }
};

TEST_F(RunningScene, APictureThatFailsIsToldAndLost) {
    test::TraceLog log;
    source_ = std::make_unique<PacedSource>(std::make_unique<FailingMaker>(), 200.0);
    EXPECT_EQ(source_->parameter(VD_PARAM_TRIGGER_MODE), static_cast<float>(VD_TRIGGER_OFF));
    vision::PictureFormat format;
    ASSERT_TRUE(source_->start(format));
    for (int i = 0; i < 400 && number() < 3.0F; ++i) sleepMs(5);
    EXPECT_GE(number(), 3.0F) << "it goes on";
    EXPECT_EQ(source_->parameter(VD_PARAM_FRAMES_LOST), 1.0F);
    EXPECT_EQ(log.count("TQVisionDriver: picture 2: no room"), 1);
    source_->stop();
}

TEST_F(RunningScene, TriggersWantTheirModeAndARunningSource) {
    source_ = std::make_unique<PacedSource>(std::make_unique<SceneMaker>(quiet(64, 64)), 100.0);
    ASSERT_TRUE(source_->setParameter(VD_PARAM_TRIGGER_MODE, VD_TRIGGER_SOFTWARE));
    EXPECT_EQ(source_->parameter(VD_PARAM_TRIGGER_MODE), static_cast<float>(VD_TRIGGER_SOFTWARE));
    EXPECT_EQ(source_->parameter(VD_PARAM_SOFTWARE_TRIGGER), 0.0F);
    EXPECT_FALSE(source_->setParameter(VD_PARAM_SOFTWARE_TRIGGER, 1)) << "it does not run";
    for (const long wrong : {-1L, 2L}) EXPECT_FALSE(source_->setParameter(VD_PARAM_TRIGGER_MODE, wrong));
    for (const long wrong : {0L, 1001L}) EXPECT_FALSE(source_->setParameter(VD_PARAM_FRAME_RATE, wrong));
}

}  // namespace
