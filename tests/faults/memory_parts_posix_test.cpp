// Parts, recipes and calibrations whose memory runs out at each of their allocations in turn.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/faults/memory_sweep_posix.h"
#include "tests/support/temporary_folder.h"

namespace {

using test::Given;
using test::sweepMemory;
using test::WithoutMemory;

cv::Mat bracket() {
    cv::Mat image(90, 100, CV_8U, cv::Scalar(50));
    cv::rectangle(image, {30, 20}, {44, 70}, cv::Scalar(180), cv::FILLED);
    cv::rectangle(image, {30, 56}, {72, 70}, cv::Scalar(180), cv::FILLED);
    cv::GaussianBlur(image, image, {5, 5}, 1);
    return image;
}

const orx::TPartModel& model() {
    static const orx::TPartModel kModel = orx::teachPart(bracket(), cv::Rect(20, 10, 62, 70));
    return kModel;
}

class MemoryFaultsOfParts : public testing::Test {
  protected:
    MemoryFaultsOfParts() { cv::setNumThreads(1); }
    ~MemoryFaultsOfParts() override { cv::setNumThreads(-1); }
    test::TemporaryFolder folder_;
};

TEST_F(MemoryFaultsOfParts, TeachingGivesTheWholeModelOrNone) {
    const cv::Mat image = bracket();
    sweepMemory([&](const auto& arm) -> Given {
        orx::TPartModel taught;
        {
            const auto armed = arm();
            taught = orx::teachPart(image, cv::Rect(20, 10, 62, 70));
        }
        if (!taught.valid()) return std::nullopt;
        return orx::partModelToBytes(taught);
    });
}

TEST_F(MemoryFaultsOfParts, FindingGivesThePlaceOrNone) {
    const cv::Mat image = bracket();
    ASSERT_TRUE(model().valid());
    sweepMemory([&](const auto& arm) -> Given {
        orx::TFindResult result;
        {
            const auto armed = arm();
            orx::TFindOptions options;
            options.startAngle = -5;
            options.angleRange = 10;
            result = orx::findParts(image, model(), options);
        }
        if (result.parts.empty()) return std::nullopt;
        return test::bytes(std::vector<double>{result.parts[0].pose.x, result.parts[0].pose.y});
    });
}

TEST_F(MemoryFaultsOfParts, ModelsPassThroughBytes) {
    const std::string whole = orx::partModelToBytes(model());
    sweepMemory([&](const auto& arm) -> Given {
        orx::TPartModel read;
        {
            const auto armed = arm();
            read = orx::partModelFromBytes(whole);
        }
        if (!read.valid()) return std::nullopt;
        return orx::partModelToBytes(read);
    });
}

TEST_F(MemoryFaultsOfParts, RecipesAreReadMeasuredAndToldWholeOrNot) {
    const std::string text = R"({"recipe": 1, "features": [
        {"name": "left", "type": "line", "from": [29.5, 30], "to": [29.5, 60], "search": 5},
        {"name": "top", "type": "line", "from": [33, 19.5], "to": [42, 19.5], "search": 5}],
      "values": [{"name": "square", "type": "angle", "of": ["left", "top"]}]})";
    const cv::Mat image = bracket();
    const orx::TRecipe recipe = orx::parseRecipe(text);
    ASSERT_TRUE(recipe.valid()) << recipe.problems()[0].sentence();
    sweepMemory([&](const auto& arm) -> Given {
        orx::TRecipe parsed;
        {
            const auto armed = arm();
            parsed = orx::parseRecipe(text);
        }
        if (!parsed.valid()) return std::nullopt;
        return parsed.text() + parsed.targets()[0].name;
    });
    orx::TRecipeResult result;
    sweepMemory([&](const auto& arm) -> Given {
        orx::TRecipeResult run;
        {
            const auto armed = arm();
            run = recipe.run(image);
        }
        result = run;
        if (!run.values.at(0).measured) return std::nullopt;
        return test::bytes(std::vector<double>{run.values[0].value, run.values[0].deviation});
    });
    sweepMemory([&](const auto& arm) -> Given {
        std::string json;
        {
            const auto armed = arm();
            json = orx::toJson(result);
        }
        return json;
    });
    sweepMemory([&](const auto& arm) -> Given {
        cv::Mat sheet;
        {
            const auto armed = arm();
            sheet = orx::drawRecipeSheet(image, recipe, result);
        }
        return test::bytes(sheet);
    });
}

TEST_F(MemoryFaultsOfParts, CalibrationsAreWrittenAndReadWholeOrNot) {
    const cv::Mat camera = cv::Mat::eye(3, 3, CV_64F) * 1.5;
    const std::string file = folder_ / "camera.json.gz";
    sweepMemory([&](const auto& arm) -> Given {
        std::string name = file;
        try {
            const auto armed = arm();
            orx::calibrateData2File(camera, camera.row(0), {640, 480}, "of a line", std::move(name));
        } catch (const cv::Exception&) {  // of whatever code, as its header says
            return std::nullopt;
        }
        return test::bytesOf(file);
    });
    sweepMemory(
        [&](const auto& arm) -> Given {
            std::string name = file;
            cv::Mat read;
            cv::Mat distortion;
            cv::Size size;
            std::string description;
            bool isRead = false;
            {
                const auto armed = arm();
                isRead = orx::calibrateDataFromFile(std::move(name), read, distortion, size, description);
            }
            if (!isRead) return std::nullopt;
            return test::bytes(read) + description;
        },
        WithoutMemory::kAnswers);
}

TEST_F(MemoryFaultsOfParts, PlanesAreWholeOrNone) {
    const std::vector<orx::TTargetView> views = [] {
        std::vector<orx::TTargetView> seen(3);
        for (std::size_t i = 0; i < seen.size(); ++i) {
            const double tilt = 0.2 * static_cast<double>(i);
            seen[i].found = true;
            seen[i].imageSize = {640, 480};
            for (int n = 0; n < 20; ++n) {
                const cv::Point2d place(n % 5 * 10, n / 5 * 10);
                const double depth = 100 + tilt * place.x - tilt * tilt * place.y;
                seen[i].plane.push_back(place);
                seen[i].pixels.emplace_back(320 + 900 * (place.x - 20) / depth,
                                            240 + 900 * (place.y - 15) / depth);
                seen[i].deviations.push_back(0.01);
            }
        }
        return seen;
    }();
    sweepMemory([&](const auto& arm) -> Given {
        orx::TPlaneCalibration plane;
        {
            const auto armed = arm();
            orx::TPlaneOptions options;
            options.lens = false;
            plane = orx::calibratePlane({views[1]}, options);
        }
        if (!plane.valid()) return std::nullopt;
        return test::bytes(std::vector<double>(plane.homography.val, plane.homography.val + 9));
    });
    sweepMemory([&](const auto& arm) -> Given {
        std::string svg;
        {
            const auto armed = arm();
            svg = orx::targetToSvg({});
        }
        return svg;
    });
}

}  // namespace
