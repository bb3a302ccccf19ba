// The program of docs/guides/recipes.md: a recipe, its verdicts, its mistakes, and a proposal.
#include <cmath>
#include <cstdio>
#include <iterator>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "canvas.h"
#include "orxFunctions/orxfunctions.h"
#include "support/synthetic_scene.h"

namespace {

// [recipe]
const char* const kRecipe = R"({
  "recipe": 1,
  "name": "link",
  "part": {"by": "features", "origin": "left hole", "direction": "right hole", "angle": 0},
  "features": [
    {"name": "left hole", "type": "circle", "center": [118, 105], "radius": 22, "search": 14},
    {"name": "right hole", "type": "circle", "center": [278, 121], "radius": 22, "search": 14},
    {"name": "upper edge", "type": "line", "from": [10, -44], "to": [150, -44], "search": 6},
    {"name": "lower edge", "type": "line", "from": [10, 44], "to": [150, 44], "search": 6},
    {"name": "middle hole", "type": "circle", "center": [80, 0], "radius": 8, "search": 5}
  ],
  "values": [
    {"name": "left bore", "type": "diameter", "of": ["left hole"], "nominal": 44, "tolerance": 0.1},
    {"name": "right bore", "type": "diameter", "of": ["right hole"], "nominal": 44, "tolerance": 0.1},
    {"name": "pitch", "type": "distance", "of": ["left hole", "right hole"], "lower": 160.702},
    {"name": "height", "type": "distance", "of": ["upper edge", "lower edge"], "nominal": 88, "tolerance": 0.2},
    {"name": "pin", "type": "diameter", "of": ["middle hole"], "nominal": 16, "tolerance": 0.1}
  ]
})";
// [recipe end]

constexpr double kTurn = 5.7;  // degrees

// The link: 260 x 88 pixels, two holes 160.7 apart, the right one 0.6 too wide, and no hole for the pin.
cv::Mat linkPicture(double rightDiameter) {
    const double angle = kTurn * CV_PI / 180;
    const cv::Point2d left(118.4, 104.7);
    const cv::Point2d along(std::cos(angle), std::sin(angle));
    cv::Mat ideal(240, 400, CV_32F, cv::Scalar(55.0));
    scenes::paint(ideal, scenes::Bar{left + 80.35 * along, kTurn, 260.0, 88.0}, 180.0);
    scenes::paint(ideal, scenes::Disk{left, 22.0}, 55.0);
    scenes::paint(ideal, scenes::Disk{left + 160.7 * along, rightDiameter / 2}, 55.0);
    return scenes::expose(ideal, {0.1, 0.8, 2.5, 7});
}

// [run]
void tell(const orx::TRecipeResult& result) {
    std::printf("%s: %s\n", result.recipe.c_str(), orx::verdictText(result.verdict));
    for (const orx::TRecipeValue& value : result.values) {
        std::printf("  %-10s %-28s %s\n", value.name.c_str(), orx::measuredText(value).c_str(),
                    orx::verdictText(value.verdict));
    }
}
// [run end]

// The values as the page prints them.
void expectStated(const std::vector<orx::TRecipeValue>& values) {
    const struct {
        double value, deviation;
        orx::TVerdict verdict;
    } stated[] = {{44.0059, 0.0079, orx::vdPass},
                  {44.583, 0.010, orx::vdFail},
                  {160.6956, 0.0092, orx::vdUndecided},
                  {88.0079, 0.0077, orx::vdPass}};
    for (std::size_t i = 0; i < 4; ++i) {
        const orx::TRecipeValue& value = values[i];
        guide::expectAbout(value.value, stated[i].value, 0.002, value.name);
        guide::expectAbout(value.deviation, stated[i].deviation, 0.0005, value.name + ", its uncertainty");
        guide::expect(value.verdict == stated[i].verdict, value.name + " has its verdict");
    }
    const orx::TRecipeValue& pin = values[4];
    guide::expect(pin.verdict == orx::vdNotMeasured &&
                      pin.problem == "\"middle hole\" was not measured: no edge within the search band",
                  "the pin says why it was not measured");
}

void runRecipe() {
    const cv::Mat image = linkPicture(44.6);
    // [parse]
    const orx::TRecipe recipe = orx::parseRecipe(kRecipe);
    for (const orx::TRecipeProblem& problem : recipe.problems())
        std::printf("%s\n", problem.sentence().c_str());
    const orx::TRecipeResult result = recipe.run(image);
    // [parse end]
    tell(result);
    guide::expect(recipe.valid(), "the recipe has no mistakes");
    guide::save("recipes-sheet", orx::drawRecipeSheet(image, recipe, result));
    if (result.values.size() != 5) return guide::expect(false, "five values are told");
    expectStated(result.values);
    guide::expect(result.verdict == orx::vdFail, "the part fails: the worst verdict counts");
    orx::TVerdict worst = orx::vdNoLimits;
    for (const orx::TRecipeValue& value : result.values) worst = orx::worseVerdict(worst, value.verdict);
    guide::expect(worst == result.verdict, "that of the whole is the worst of its values'");
    const orx::TFeatureKind kind = result.features.front().kind;
    guide::expect(orx::featureKindText(kind) == std::string("circle"), "a feature's kind has a name");
    const orx::TRecipePose& pose = result.pose;
    guide::expect(pose.found && pose.problem.empty() && pose.deviationX < 0.05, "the part is found");
    guide::expect(std::abs(result.values[1].value - 44.6) < 0.05, "the wide hole is measured as 44.6");
    guide::expect(
        orx::toJson(result, {false, false, "link-1.png"}).find("\"left bore\"") != std::string::npos,
        "the line of JSON has the values");

    const orx::TRecipeResult empty = recipe.run(cv::Mat(240, 400, CV_8UC1, cv::Scalar(60)));
    tell(empty);
    guide::expect(empty.verdict == orx::vdNotMeasured && !empty.problem.empty(),
                  "a picture without the part never passes");
}

void findMistakes() {
    // [mistakes]
    const orx::TRecipe recipe = orx::parseRecipe(R"({
  "recipe": 1, "name": "link",
  "features": [{"name": "hole", "type": "circle", "center": [118, 105], "radus": 22, "search": 6}],
  "values": [{"name": "bore", "type": "diameter", "of": ["whole"], "nominal": 44}]
})");
    for (const orx::TRecipeProblem& problem : recipe.problems())
        std::printf("%s\n", problem.sentence().c_str());
    // [mistakes end]
    const std::string stated[] = {
        "line 3, features[0].radius: is missing",
        "line 3, features[0].radus: unknown field \"radus\": did you mean \"radius\"? (known: by, center, "
        "count,",
        "line 4, values[0].of[0]: there is no feature \"whole\": did you mean \"hole\"?",
        "line 4, values[0].nominal: wants \"tolerance\", or \"lower\" or \"upper\": by itself it limits "
        "nothing"};
    const std::vector<orx::TRecipeProblem> problems = recipe.problems();
    if (recipe.valid() || problems.size() != std::size(stated))
        return guide::expect(false, "all mistakes are told at once");
    for (std::size_t i = 0; i < problems.size(); ++i)
        guide::expect(problems[i].sentence().rfind(stated[i], 0) == 0, "it says: " + stated[i]);
}

void propose() {
    // [propose]
    const orx::TProposal proposal = orx::proposeRecipe(linkPicture(44.0));
    if (!proposal.valid) std::printf("no proposal: %s\n", proposal.problem.c_str());
    // [propose end]
    std::printf("proposed: %d features, %d values\n", proposal.features, proposal.values);
    guide::expect(proposal.valid && proposal.features == 6 && proposal.values == 5,
                  "four sides and two holes are proposed, and five values");
    guide::save("recipes-proposal", proposal.picture);
    const orx::TPartRegion region = orx::findPartRegion(linkPicture(44.0));
    guide::expect(region.found && region.others == 0 && region.box.contains(cv::Point(198, 112)),
                  "the link is the one thing in the picture");
}

// The verdict on each value from 43.8 to 44.2, for three uncertainties.
void drawVerdicts() {
    constexpr int kWidth = 720;
    constexpr int kRow = 60;
    cv::Mat canvas(3 * kRow + 80, kWidth + 150, CV_8UC3, cv::Scalar::all(255));
    const auto at = [](double value) { return 130 + cvRound((value - 43.8) / 0.4 * kWidth); };
    const double deviations[] = {0.005, 0.02, 0.05};
    for (int row = 0; row < 3; ++row) {
        const int top = 40 + row * kRow;
        for (int x = 0; x < kWidth; ++x) {
            // [judge]
            const double value = 43.8 + 0.4 * x / kWidth;
            const orx::TJudgement judgement = orx::judge(value, deviations[row], 100, {43.9, 44.1});
            // [judge end]
            const cv::Scalar colour = judgement.verdict == orx::vdPass   ? cv::Scalar(90, 180, 70)
                                      : judgement.verdict == orx::vdFail ? cv::Scalar(70, 70, 220)
                                                                         : cv::Scalar(90, 210, 250);
            cv::line(canvas, {at(value), top}, {at(value), top + kRow - 22}, colour, 2);
        }
        guide::write(canvas, "u = " + zul::doubleToStr(deviations[row], 3), {20, top + 24});
    }
    for (const double limit : {43.9, 44.1})
        cv::line(canvas, {at(limit), 28}, {at(limit), 40 + 3 * kRow - 10}, guide::kInk, 2);
    guide::write(canvas, "lower limit", {at(43.9) - 40, 20});
    guide::write(canvas, "upper limit", {at(44.1) - 40, 20});
    for (const double tick : {43.8, 43.9, 44.0, 44.1, 44.2})
        guide::write(canvas, zul::doubleToStr(tick, 1), {at(tick) - 16, 40 + 3 * kRow + 14});
    guide::save("recipes-verdicts", canvas);

    guide::expect(orx::judge(44.09, 0.005, 100, {43.9, 44.1}).verdict == orx::vdPass,
                  "0.01 within the limit passes at u = 0.005");
    guide::expect(orx::judge(44.09, 0.02, 100, {43.9, 44.1}).verdict == orx::vdUndecided,
                  "and is undecided at u = 0.02");
    guide::expect(orx::judge(44.0, 0.07, 100, {43.9, 44.1}).verdict == orx::vdUndecided,
                  "at u = 0.07 nothing passes");
}

}  // namespace

int main(int argc, char** argv) {
    return guide::run(argc, argv, [] {
        runRecipe();
        findMistakes();
        propose();
        drawVerdicts();
    });
}
