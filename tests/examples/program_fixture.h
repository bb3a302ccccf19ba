// Runs the inspection program in a folder of the test's own.
#ifndef ORX_TESTS_EXAMPLES_PROGRAM_FIXTURE_H
#define ORX_TESTS_EXAMPLES_PROGRAM_FIXTURE_H

#include <gtest/gtest.h>
#include <json/reader.h>
#include <json/value.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "support/synthetic_scene.h"
#include "tests/examples/run_program.h"
#include "tests/support/temporary_folder.h"

namespace test {

struct Outcome {
    int exitCode = -1;
    std::string output;
    std::string errors;
};

class Program : public testing::Test {
  protected:
    Outcome run(const std::vector<std::string>& arguments) const {
        const int exitCode =
            runProgram(ORX_INSPECTION_PROGRAM, arguments, folder.path(), path("stdout"), path("stderr"));
        return {exitCode, textOf(path("stdout")), textOf(path("stderr"))};
    }

    std::string path(const std::string& name) const { return folder / name; }

    // A picture of one bright disk of radius 30 around (70, 60).
    std::string writeDisk(const std::string& name) const {
        cv::Mat ideal(120, 140, CV_32F, cv::Scalar(40.0));
        scenes::paint(ideal, scenes::Disk{{70.0, 60.0}, 30.0}, 180.0);
        std::vector<uchar> bytes;
        cv::imencode(".png", scenes::expose(ideal, {0.0, 0.8, 1.0, 3}), bytes);
        writeBytes(path(name), std::string(bytes.begin(), bytes.end()));
        return path(name);
    }

    Json::Value report() const {
        Json::Value value;
        std::string problem;
        std::istringstream text(textOf(path("out/report.json")));
        EXPECT_TRUE(Json::parseFromStream(Json::CharReaderBuilder(), text, &value, &problem)) << problem;
        return value;
    }

    TemporaryFolder folder;
};

}  // namespace test

#endif
