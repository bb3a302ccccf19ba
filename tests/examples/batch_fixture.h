// Runs the inspection program by a recipe for pictures of one disk.
#ifndef ORX_TESTS_EXAMPLES_BATCH_FIXTURE_H
#define ORX_TESTS_EXAMPLES_BATCH_FIXTURE_H

#include "tests/examples/program_fixture.h"

namespace test {

class BatchProgram : public Program {
  protected:
    BatchProgram() {
        writeRecipe("disk.json", 0.5);
        std::filesystem::create_directory(path("in"));
    }

    // The disk's diameter is 60 and a tolerance.
    void writeRecipe(const std::string& name, double tolerance) const {
        std::ofstream(path(name)) << R"({"recipe": 1, "name": "disk <1>", "part": {"by": "picture"},
 "features": [{"name": "disk", "type": "circle", "center": [70, 60], "radius": 30, "search": 8}],
 "values": [{"name": "diameter", "type": "diameter", "of": ["disk"], "nominal": 60, "tolerance": )"
                                  << tolerance << R"(},
            {"name": "place, x", "type": "x", "of": ["disk"]}]})";
    }

    std::string writeRadius(const std::string& name, double radius, std::uint64_t seed = 3) const {
        cv::Mat ideal(120, 140, CV_32F, cv::Scalar(40.0));
        scenes::paint(ideal, scenes::Disk{{70.0, 60.0}, radius}, 180.0);
        std::vector<uchar> bytes;
        cv::imencode(".png", scenes::expose(ideal, {0.0, 0.8, 1.0, seed}), bytes);
        writeBytes(path(name), std::string(bytes.begin(), bytes.end()));
        return path(name);
    }

    // By disk.json into out, unless the arguments say something else.
    std::vector<std::string> arguments(std::vector<std::string> more, const std::string& out = "out") const {
        more.insert(more.end(), {"--recipe", path("disk.json"), "-o", path(out)});
        return more;
    }

    std::vector<Json::Value> results(const std::string& out = "out") const {
        std::vector<Json::Value> lines;
        std::istringstream text(textOf(path(out + "/results.jsonl")));
        for (std::string line; std::getline(text, line);) {
            Json::Value value;
            std::istringstream one(line);
            std::string problem;
            EXPECT_TRUE(Json::parseFromStream(Json::CharReaderBuilder(), one, &value, &problem)) << problem;
            lines.push_back(value);
        }
        return lines;
    }

    Json::Value statistics(const std::string& out = "out") const {
        Json::Value value;
        std::istringstream text(textOf(path(out + "/statistics.json")));
        text >> value;
        return value;
    }
};

}  // namespace test

#endif
