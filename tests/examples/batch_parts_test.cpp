// The parts of a batch whose bounds can't be seen from a short run.
#include <gtest/gtest.h>

#include <atomic>
#include <opencv2/imgcodecs.hpp>

#include "inspection/batch/batch_report.h"
#include "inspection/batch/ordered_work.h"
#include "inspection/batch/run_summary.h"
#include "tests/support/temporary_folder.h"

namespace {

using inspection::OrderedWork;

TEST(OrderedWork, ResultsComeInOrderAndFewWait) {
    for (const int jobs : {1, 2, 5}) {
        std::atomic<int> waiting{0};
        std::atomic<int> most{0};
        std::vector<int> taken;
        const auto make = [&](std::size_t i) {
            if (i % 16 == 3)
                std::this_thread::sleep_for(std::chrono::milliseconds(5));  // the rest runs ahead
            const int now = ++waiting;
            int before = most;
            while (before < now && !most.compare_exchange_weak(before, now)) {
            }
            return static_cast<int>(i);
        };
        const auto take = [&](int&& i) {
            --waiting;
            taken.push_back(i);
            return true;
        };
        OrderedWork<int>(300, jobs, make, take, [] { return false; }).run();
        ASSERT_EQ(taken.size(), 300U);
        for (int i = 0; i < 300; ++i) EXPECT_EQ(taken[static_cast<std::size_t>(i)], i);
        EXPECT_LE(most, 9 * jobs + 1);
    }
}

TEST(OrderedWork, EndsWithWhatWasBegunOrAtOnce) {
    for (const int jobs : {1, 3}) {
        std::atomic<int> begun{0};
        std::atomic<bool> stop{false};
        int taken = 0;
        const auto make = [&](std::size_t i) {
            if (i == 20) stop = true;
            ++begun;
            return static_cast<int>(i);
        };
        OrderedWork<int>(
            100000, jobs, make, [&](int&& i) { return i == taken++; }, [&] { return stop.load(); })
            .run();
        EXPECT_EQ(taken, begun) << "nothing that was measured is lost";
        EXPECT_GE(taken, 20);
        EXPECT_LT(taken, 2000);
        taken = 0;
        OrderedWork<int>(
            100000, jobs, [](std::size_t i) { return static_cast<int>(i); },
            [&](int&&) { return ++taken < 7; }, [] { return false; })
            .run();
        EXPECT_EQ(taken, 7);
    }
    OrderedWork<int>(
        0, 3, [](std::size_t) { return 0; }, [](int&&) { return true; }, [] { return false; })
        .run();
}

TEST(BatchReport, StaysSmallHoweverLongTheRun) {
    std::string text = R"({"recipe": 1, "part": {"by": "picture"}, "features": [
        {"name": "a", "type": "circle", "center": [70, 60], "radius": 30, "search": 8}], "values": [)";
    for (int i = 0; i < 120; ++i)
        text += std::string(i > 0 ? "," : "") + "{\"name\": \"value " + std::to_string(i) +
                "\", \"type\": \"diameter\", \"of\": [\"a\"], \"nominal\": 60, \"tolerance\": 1}";
    const orx::TRecipe recipe = orx::parseRecipe(text + "]}");
    ASSERT_TRUE(recipe.valid());
    const test::TemporaryFolder folder;
    std::filesystem::create_directory(folder / inspection::kPicturesFolder);
    cv::Mat noise(400, 400, CV_8UC3);
    cv::randu(noise, 0, 256);
    ASSERT_TRUE(cv::imwrite(folder / (std::string(inspection::kPicturesFolder) + "/x.png"), noise));

    inspection::RunSummary summary(recipe, 2);
    inspection::PictureRecord record;
    record.annotated = "x.png";
    record.result = recipe.run(cv::Mat());
    for (int k = 0; k < 10000; ++k) {
        record.name = "a/rather/long/folder/of/pictures/picture-" + std::to_string(k) + ".png";
        record.result.verdict = k % 3 == 0 ? orx::vdFail : orx::vdPass;
        for (orx::TRecipeValue& value : record.result.values) {
            value.measured = true;
            value.value = k == 6000 ? 66.0 : 60.0 + 0.0001 * (k * 7919 % 10000 - 5000);
            value.deviation = 0.01;
            value.verdict = record.result.verdict;
        }
        record.result.problem.clear();
        summary.add(record, k);
    }
    // The one furthest out comes first.
    const auto worst = summary.worst();
    ASSERT_EQ(worst.size(), 200U);
    for (const auto& part : worst) EXPECT_EQ(part.verdict, orx::vdFail);
    EXPECT_EQ(worst[0].name.substr(worst[0].name.size() - 8), "6000.png");
    const std::string html = inspection::batchReportHtml(recipe, summary, {}, folder.path());
    EXPECT_LT(html.size(), 20000000U);
    EXPECT_GT(html.size(), 2000000U) << "thumbnails and charts are in it";
    std::size_t thumbnails = 0;
    for (std::size_t at = 0; (at = html.find("<img", at)) != std::string::npos; ++at) ++thumbnails;
    EXPECT_EQ(thumbnails, 200U);
}

}  // namespace
