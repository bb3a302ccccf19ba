#include "drivers/TQVisionDriver/settings.h"

#include <gtest/gtest.h>

#include <string>

#include "ZULLib/zullib.h"
#include "tests/support/trace_log.h"

namespace {

using vision::parseSettings;
using vision::PinnedDevice;
using vision::ReplaySettings;
using vision::SceneSettings;
using vision::Settings;

TEST(Settings, EachKindOfCameraTakesItsKeys) {
    const Settings settings = parseSettings(
        "[camera2]\nsource = device\nserial = 00D1\npacket_socket = no\n"
        "[devices]\npacket_size = 1500\nsocket_buffer = 4000000\n"
        "[camera1]\nsource = scene\nwidth = 640\nheight = 480\nchannels = 3\nrate = 12.5\nnoise = 0\nseed = "
        "9\n"
        "[camera9]\nsource = replay\nfolder = pictures\nrate = 100\nloop = off\n",
        "/base");
    const auto& scene = std::get<SceneSettings>(settings.cameras[0].value());
    EXPECT_EQ(scene.width, 640);
    EXPECT_EQ(scene.height, 480);
    EXPECT_EQ(scene.channels, 3);
    EXPECT_EQ(scene.rate, 12.5);
    EXPECT_EQ(scene.noise, 0.0);
    EXPECT_EQ(scene.seed, 9);
    const auto& pinned = std::get<PinnedDevice>(settings.cameras[1].value());
    EXPECT_EQ(pinned.serial, "00D1");
    EXPECT_FALSE(pinned.device.packetSocket);
    EXPECT_EQ(pinned.device.packetSize, 1500) << "what holds for all devices, wherever it stands in the file";
    EXPECT_EQ(settings.devices.socketBuffer, 4000000);
    EXPECT_TRUE(settings.devices.packetSocket);
    const auto& replay = std::get<ReplaySettings>(settings.cameras[8].value());
    EXPECT_EQ(replay.folder, std::filesystem::path("/base/pictures"));
    EXPECT_EQ(replay.rate, 100.0);
    EXPECT_FALSE(replay.loop);
    EXPECT_TRUE(settings.namesCameras());
}

TEST(Settings, AValueOutOfRangeKeepsItsDefaultAndIsTraced) {
    const SceneSettings plain;
    for (const char* const wrong : {"width = 63", "width = 8193", "width = 99999999999999999999",
                                    "width = 640px", "width = -640", "height = 0x100", "rate = 0",
                                    "rate = nan", "rate = 1e9", "noise = -1", "channels = 2", "seed = -1"}) {
        SCOPED_TRACE(wrong);
        const Settings settings =
            parseSettings(std::string("[camera1]\nsource = scene\n") + wrong + "\n", "/base");
        const auto& scene = std::get<SceneSettings>(settings.cameras[0].value());
        EXPECT_EQ(scene.width, plain.width);
        EXPECT_EQ(scene.height, plain.height);
        EXPECT_EQ(scene.rate, plain.rate);
        EXPECT_EQ(scene.noise, plain.noise);
        EXPECT_EQ(scene.channels, plain.channels);
        EXPECT_EQ(scene.seed, plain.seed);
    }
    std::string lines;
    zul::setTraceSink([](const char* line, void* all) { *static_cast<std::string*>(all) += line; }, &lines);
    parseSettings("[devices]\npacket_size = 100\npacket = 1\n[camera0]\n", "/base");
    zul::setTraceSink(nullptr, nullptr);
    EXPECT_NE(lines.find("[devices]: packet_size can't be \"100\""), std::string::npos) << lines;
    EXPECT_NE(lines.find("line 3: \"packet\" is not known"), std::string::npos) << lines;
    EXPECT_NE(lines.find("[camera0] is not known"), std::string::npos) << lines;
}

TEST(Settings, YesAndNoHaveFourWordsEach) {
    const auto looped = [](const std::string& word) {
        const Settings settings = parseSettings("[camera1]\nsource = replay\nloop = " + word + "\n", "/base");
        return std::get<ReplaySettings>(settings.cameras[0].value()).loop;
    };
    const bool usual = ReplaySettings().loop;
    for (const char* const yes : {"1", "yes", "true", "on"}) EXPECT_TRUE(looped(yes)) << yes;
    for (const char* const no : {"0", "no", "false", "off"}) EXPECT_FALSE(looped(no)) << no;
    test::TraceLog log;
    for (const char* const neither : {"2", "maybe", "Yes"}) {
        EXPECT_EQ(looped(neither), usual);
        EXPECT_EQ(
            log.count(std::string("TQVisionDriver: settings, [camera1]: loop can't be \"") + neither + "\""),
            1);
    }
    EXPECT_EQ(looped(""), usual);
}

TEST(Settings, ACameraWithoutAUsableSourceIsLeftOut) {
    for (const char* const section :
         {"[camera1]\n", "[camera1]\nsource = webcam\n", "[camera1]\nsource = device\n",
          "[camera10]\nsource = scene\n", "[camera]\nsource = scene\n", "[camera0]\nsource = scene\n"}) {
        EXPECT_FALSE(parseSettings(section, "/base").namesCameras()) << section;
    }
}

}  // namespace
