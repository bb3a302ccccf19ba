#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

#include <random>
#include <set>
#include <sstream>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/temporary_folder.h"

namespace {

using testing::HasSubstr;

// A recipe with something of everything that needs no file.
const std::string kRecipe = R"({
  "recipe": 1,
  "name": "plate",
  "confidence": 0.99,
  "part": {"by": "features", "origin": "hole", "direction": "pin", "angle": 90},
  "features": [
    {"name": "hole", "type": "circle", "center": [30, 20], "radius": 12.5, "search": 5},
    {"name": "pin", "type": "circle", "center": [90, 20], "radius": 8, "search": 4, "by": "edges"},
    {"name": "top", "type": "line", "from": [0, 0], "to": [80, 0], "search": 6, "edge": "brightToDark"},
    {"name": "side", "type": "line", "from": [0, 0], "to": [0, 50], "search": 6, "by": "chain", "sigma": 1.5},
    {"name": "bow", "type": "arc", "center": [5, 5], "radius": 5, "start": 180, "sweep": 90, "search": 2},
    {"name": "oval", "type": "ellipse", "center": [5, 5], "semiMajor": 5, "semiMinor": 4, "search": 2},
    {"name": "slot", "type": "edgePair", "from": [0, 5], "to": [0, 15], "search": 3, "count": 5},
    {"name": "outline", "type": "chain", "path": [[0, 0], [10, 0], [10, 10]], "closed": true, "search": 3},
    {"name": "corner", "type": "intersection", "of": ["top", "side"]},
    {"name": "axis", "type": "connection", "of": ["corner", "middle"]},
    {"name": "middle", "type": "midpoint", "of": ["hole", "pin"]}
  ],
  "values": [
    {"name": "bore", "type": "diameter", "of": ["hole"], "nominal": 25, "tolerance": [-0.1, 0.2]},
    {"name": "pitch", "type": "distance", "of": ["hole", "pin"], "nominal": 60, "tolerance": 0.05},
    {"name": "wall", "type": "distance", "of": ["top", "axis"], "at": "least", "lower": 3},
    {"name": "square", "type": "angle", "of": ["top", "side"], "lower": 89, "upper": 91},
    {"name": "place", "type": "x", "of": ["corner"], "frame": "picture"},
    {"name": "seen", "type": "score"}
  ],
  "draw": {"points": true}
})";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

std::string sentencesOf(const orx::TRecipe& recipe) {
    std::string all;
    for (const orx::TRecipeProblem& problem : recipe.problems()) all += problem.sentence() + "\n";
    return all;
}

TEST(RecipeReading, TargetsAreThoseOfTheText) {
    const orx::TRecipe recipe = orx::parseRecipe(kRecipe);
    ASSERT_TRUE(recipe.valid()) << sentencesOf(recipe);
    EXPECT_EQ(recipe.name(), "plate");
    EXPECT_EQ(recipe.confidence(), 0.99);
    EXPECT_EQ(recipe.text(), kRecipe);
    EXPECT_EQ(recipe.pictureSize(), cv::Size());
    EXPECT_EQ(recipe.featureNames().size(), 11U);
    const auto& targets = recipe.targets();
    ASSERT_EQ(targets.size(), 6U);
    EXPECT_NEAR(targets[0].tolerance.lower, 24.9, 1e-12);
    EXPECT_NEAR(targets[0].tolerance.upper, 25.2, 1e-12);
    EXPECT_EQ(targets[0].unit, "px");
    EXPECT_NEAR(targets[1].tolerance.lower, 59.95, 1e-12);
    EXPECT_EQ(targets[2].tolerance.lower, 3);
    EXPECT_TRUE(std::isinf(targets[2].tolerance.upper));
    EXPECT_FALSE(targets[2].hasNominal);
    EXPECT_EQ(targets[3].unit, "deg");
    EXPECT_FALSE(targets[4].tolerance.limited());
    EXPECT_EQ(targets[5].unit, "");
    EXPECT_FALSE(orx::TRecipe().valid());
    EXPECT_EQ(sentencesOf(orx::TRecipe()), "no recipe was read\n");
}

TEST(RecipeReading, EachProblemTellsItsLineItsFieldAndWhatIsWrong) {
    struct Case {
        const char* from;
        const char* to;
        const char* told;
    };
    const std::vector<Case> cases{
        {R"("radius": 12.5)", R"("radus": 12.5)",
         R"(line 7, features[0].radus: unknown field "radus": did you mean "radius"?)"},
        {R"("radius": 12.5)", R"("radius": "12.5")", "line 7, features[0].radius: must be a number"},
        {R"("radius": 12.5)", R"("radius": -1)", "line 7, features[0].radius: must be above 0"},
        {R"("radius": 12.5, "search": 5)", R"("radius": 4, "search": 5)",
         "line 7, features[0].search: must be less than the radius"},
        {R"("radius": 12.5, )", "", "line 7, features[0].radius: is missing"},
        {R"("center": [30, 20])", R"("center": [30])", "line 7, features[0].center: must be a point"},
        {R"("center": [30, 20])", R"("center": [30, 1e300])",
         "line 7, features[0].center[1]: must be at least -1e+06"},
        {R"("type": "circle", "center": [30)", R"("type": "cirle", "center": [30)",
         R"(line 7, features[0].type: is "cirle", but must be one of: line, circle)"},
        {R"("by": "edges")", R"("by": "edges", "count": 9)",
         R"(line 8, features[1].count: means nothing by "edges")"},
        {R"("to": [80, 0])", R"("to": [0, 0])", R"(line 9, features[2].to: is the same place as "from")"},
        {R"("sweep": 90)", R"("sweep": 2)", "line 11, features[4].sweep: must be 5 degrees or more"},
        {R"("name": "pin", "type")", R"("name": "hole", "type")",
         R"(line 8, features[1].name: another feature is called "hole")"},
        {R"("of": ["top", "side"]})", R"("of": ["tap", "side"]})",
         R"(line 15, features[8].of[0]: there is no feature "tap": did you mean "top"?)"},
        {R"("of": ["top", "side"]})", R"("of": ["slot", "side"]})",
         "line 15, features[8].of: must be lines, circles or arcs"},
        {R"("of": ["top", "side"]},)", R"("of": ["axis", "side"]},)",
         "features[8].of: goes round in a circle"},
        {R"("origin": "hole")", R"("origin": "top")", "line 5, part.origin: must be a circle"},
        {R"("direction": "pin")", R"("direction": "hole")",
         "line 5, part.direction: must be another feature"},
        {R"("by": "features")", R"("by": "feature")", R"(did you mean "features"?)"},
        {R"("of": ["hole"])", R"("of": ["top"])", "line 20, values[0].of: must be a circle or an arc"},
        {R"("of": ["hole"])", R"("of": ["hole", "pin"])", "line 20, values[0].of: must have 1 entries"},
        {R"("nominal": 25, )", "", R"(line 20, values[0].tolerance: wants "nominal", too)"},
        {R"(, "tolerance": 0.05)", "",
         R"(line 21, values[1].nominal: wants "tolerance", or "lower" or "upper")"},
        {R"([-0.1, 0.2])", R"([0.2, -0.1])", "line 20, values[0].tolerance: must be [lower, upper]"},
        {R"("tolerance": 0.05)", R"("tolerance": 0.05, "upper": 61)",
         R"(line 21, values[1].tolerance: can't stand beside)"},
        {R"("lower": 89, "upper": 91)", R"("lower": 91, "upper": 89)",
         R"(line 23, values[3].upper: must not be below "lower")"},
        {R"("name": "pitch")", R"("name": "bore")",
         R"(line 21, values[1].name: another value is called "bore")"},
        {R"("tolerance": 0.05)", R"("tolerance": 0.05, "unit": "deg")",
         R"(line 21, values[1].unit: "deg" is no unit of "distance")"},
        {R"("tolerance": 0.05)", R"("tolerance": 0.05, "unit": "mm")",
         R"(line 21, values[1].unit: "mm" wants a calibration)"},
        {R"("lower": 89, )", R"("lower": 89, "unit": "mm", )",
         R"(line 23, values[3].unit: "mm" is no unit of "angle")"},
        {R"("tolerance": 0.05)", R"("tolerance": 0.05, "at": "least")",
         "line 21, values[1].at: means nothing"},
        {R"("confidence": 0.99)", R"("confidence": 1)", "line 4, confidence: must be at least 0.5"},
        {R"("confidence": 0.99)", R"("unit": "mm")", R"(line 4, unit: "mm" wants a calibration)"},
        {R"("confidence": 0.99)", R"("calibration": "none.json")", R"(line 4, calibration: "none.json": )"},
        {R"("recipe": 1)", R"("recipe": 2)", "line 2, recipe: is of another version"},
        {R"("points": true)", R"("points": 1)", "line 27, draw.points: must be true or false"},
        {R"({"points": true})", "[]", "line 27, draw: must be an object"},
        {R"("name": "plate",)", R"("name": "plate")", "line 4: no JSON at column"},
        {R"("name": "plate",)", R"("name": "plate", "name": "b",)", "line 3: no JSON at column"},
        {R"("name": "plate")", "\"name\": \"pl\\u0007ate\"", "line 3, name: must be a text"},
        {R"("name": "plate")", "\"name\": \"pl\xFF\"", "line 3: not UTF-8"},
        {R"("name": "plate")", "\"name\": \"pl\xE2\x82\"", "line 3: not UTF-8"},
        {R"("name": "plate")", "\"name\": \"pl\xED\xA0\x80\"", "line 3: not UTF-8"},
        {R"("name": "plate")", "\"name\": \"pl\xF4\x90\x80\x80\"", "line 3: not UTF-8"},
        {R"("name": "plate")", R"("name": 7)", "line 3, name: must be a text: "},
        {R"("count": 5)", R"("count": 5.5)", "line 13, features[6].count: must be a whole number"},
        {R"("path": [[0, 0], [10, 0], [10, 10]])", R"("path": {})",
         "line 14, features[7].path: must be a list: [...]"},
        {R"("path": [[0, 0], [10, 0], [10, 10]])", R"("path": [[0, 0]])",
         "line 14, features[7].path: must have at least 2 points"},
        {R"("path": [[0, 0], [10, 0], [10, 10]])", R"("path": [[0, 0], [10, 0]])",
         "line 14, features[7].path: must have 3 points to be closed"},
        {R"("tolerance": [-0.1, 0.2])", R"("tolerance": [0.2])", "line 20, values[0].tolerance: must be "},
        {R"("of": ["hole"])", R"("of": [7])", "line 20, values[0].of: must be a list of names"},
        {R"("of": ["top", "side"]})", R"("of": ["top", "top"]})", "names one feature twice"},
        {R"("semiMinor": 4)", R"("semiMinor": 6)", "line 12, features[5].semiMinor: "},
        {R"("name": "oval", "type")",
         R"("name": "oval", "an extremely long name of a field that nobody would ever give to a field of a recipe": 1, "type")",
         "unknown field"},
        {R"("type": "score")",
         R"("type": "an extremely long kind of a value that nobody would ever think of, not even by mistake")",
         "...\""},
    };
    for (const Case& c : cases) {
        const orx::TRecipe recipe = orx::parseRecipe(replaced(kRecipe, c.from, c.to));
        SCOPED_TRACE(std::string(c.from) + " -> " + c.to);
        EXPECT_FALSE(recipe.valid());
        EXPECT_THAT(sentencesOf(recipe), HasSubstr(c.told));
        EXPECT_EQ(recipe.run(cv::Mat(100, 100, CV_8UC1, cv::Scalar(9))).verdict, orx::vdNotMeasured);
    }
}

// The first feature, too, may be the wrong one for what is made of it.
TEST(RecipeReading, EachOfTwoFeaturesIsOneThatCanBeUsed) {
    for (const char* const of : {R"(["slot", "top"])", R"(["top", "slot"])"}) {
        const std::string text = std::string(R"({"recipe": 1, "features": [
            {"name": "slot", "type": "edgePair", "from": [0, 5], "to": [0, 15], "search": 3},
            {"name": "top", "type": "line", "from": [0, 0], "to": [80, 0], "search": 6},
            {"name": "corner", "type": "intersection", "of": )") +
                                 of + R"(}], "values": [{"name": "x", "type": "x", "of": ["corner"]}]})";
        EXPECT_THAT(sentencesOf(orx::parseRecipe(text)),
                    HasSubstr("line 4, features[2].of: must be lines, circles or arcs"))
            << of;
    }
}

TEST(RecipeReading, SizesCountsAndDepthAreLimited) {
    const auto told = [](const std::string& text) { return sentencesOf(orx::parseRecipe(text)); };
    EXPECT_THAT(told(std::string((4U << 20U) + 1, ' ')), HasSubstr("longer than 4 MiB"));
    EXPECT_THAT(told(std::string(1000, '[')), HasSubstr("nested deeper"));
    EXPECT_THAT(told("[" + std::string(400000, ',') + "]"), HasSubstr("entries"));
    std::string many = R"({"recipe": 1, "features": [)";
    for (int i = 0; i < 501; ++i) many += i > 0 ? ",{}" : "{}";
    EXPECT_THAT(told(many + "]}"), HasSubstr("features: has more than 500 entries"));
    // All that is wrong is told, up to a hundred of it.
    std::string wrong = R"({"recipe": 1, "features": [)";
    for (int i = 0; i < 400; ++i) wrong += i > 0 ? ",{}" : "{}";
    EXPECT_EQ(orx::parseRecipe(wrong + "]}").problems().size(), 100U);
    EXPECT_THAT(told(""), HasSubstr("no JSON"));
    EXPECT_THAT(told("7"), HasSubstr("no JSON"));

    const test::TemporaryFolder folder;
    EXPECT_THAT(sentencesOf(orx::readRecipe(folder / "none.json")), HasSubstr("can't be read"));
    EXPECT_THAT(sentencesOf(orx::readRecipe(folder.name())), HasSubstr("can't be read"));
    test::writeBytes(folder / "r.json", kRecipe);
    EXPECT_TRUE(orx::readRecipe(folder / "r.json").valid());
    test::writeBytes(folder / "long.json", kRecipe + std::string(5U << 20U, ' '));
    EXPECT_THAT(sentencesOf(orx::readRecipe(folder / "long.json")), HasSubstr("longer than 4 MiB"));
}

TEST(RecipeReading, WhateverIsCutOrChangedIsReadOrRefused) {
    cv::Mat img(60, 80, CV_8UC1);
    cv::randu(img, 0, 255);
    int valid = 0;
    const auto tryOut = [&](const std::string& text) {
        const orx::TRecipe recipe = orx::parseRecipe(text);
        EXPECT_EQ(recipe.valid(), recipe.problems().empty());
        if (!recipe.valid()) return;
        ++valid;
        const orx::TRecipeResult result = recipe.run(img);
        EXPECT_EQ(result.values.size(), recipe.targets().size());
        EXPECT_FALSE(orx::toJson(result).empty());
    };
    for (std::size_t length = 0; length < kRecipe.size(); length += 7) tryOut(kRecipe.substr(0, length));
    std::mt19937 random(3);
    const std::vector<std::string> pieces{"-",       "0",       "9",    "e9", "[",    "]",        "{",
                                          "}",       "\"",      ",",    ":",  "null", "true",     "1e308",
                                          "-1e-300", "\\u0000", "\xC3", "[]", "{}",   "\"hole\"", "360"};
    for (int i = 0; i < 3000; ++i) {
        std::string text = kRecipe;
        for (int k = 0; k < 1 + i % 3; ++k) {
            const std::size_t at = random() % text.size();
            const std::string& piece = pieces[random() % pieces.size()];
            text.replace(at, random() % 3, piece);
        }
        tryOut(text);
    }
    EXPECT_GT(valid, 20);  // changed numbers and names leave some of them recipes
}

// What the reader knows of an object, from what it says of an unknown field there.
std::set<std::string> knownFields(const std::string& text, const std::string& path) {
    const orx::TRecipe recipe = orx::parseRecipe(text);
    for (const orx::TRecipeProblem& problem : recipe.problems()) {
        const std::size_t at = problem.text.find("(known: ");
        if (problem.field != path || at == std::string::npos) continue;
        std::string list = problem.text.substr(at + 8);
        list.pop_back();
        std::set<std::string> names;
        std::istringstream stream(list);
        for (std::string name; std::getline(stream, name, ',');)
            names.insert(name.substr(name.find_first_not_of(' ')));
        return names;
    }
    return {};
}

TEST(RecipeReading, SchemaAndReaderKnowTheSameFieldsAndKinds) {
    Json::Value schema;
    std::istringstream(test::bytesOf(std::string(ORX_SOURCE_FOLDER) + "/docs/recipe.schema.json")) >> schema;
    const auto propertiesOf = [](const Json::Value& object) {
        const auto names = object["properties"].getMemberNames();
        return std::set<std::string>(names.begin(), names.end());
    };
    EXPECT_EQ(knownFields(R"({"zzzz": 1})", "zzzz"), propertiesOf(schema));
    const Json::Value& kinds = schema["$defs"];
    EXPECT_EQ(knownFields(R"({"draw": {"zzzz": 1}})", "draw.zzzz"), propertiesOf(kinds["draw"]));
    std::set<std::string> features;
    std::set<std::string> values;
    std::set<std::string> places;
    for (const std::string& name : kinds.getMemberNames()) {
        SCOPED_TRACE(name);
        const Json::Value& kind = kinds[name];
        if (name.rfind("feature", 0) == 0) {
            const std::string type = kind["properties"]["type"]["const"].asString();
            features.insert(type);
            EXPECT_EQ(
                knownFields(R"({"features": [{"zzzz": 1, "type": ")" + type + "\"}]}", "features[0].zzzz"),
                propertiesOf(kind));
        } else if (name.rfind("value", 0) == 0) {
            for (const Json::Value& type : kind["properties"]["type"]["enum"]) {
                values.insert(type.asString());
                EXPECT_EQ(knownFields(R"({"values": [{"zzzz": 1, "type": ")" + type.asString() + "\"}]}",
                                      "values[0].zzzz"),
                          propertiesOf(kind));
            }
        } else if (name.rfind("part", 0) == 0) {
            const std::string by = kind["properties"]["by"]["const"].asString();
            places.insert(by);
            EXPECT_EQ(knownFields(R"({"part": {"zzzz": 1, "by": ")" + by + "\"}}", "part.zzzz"),
                      propertiesOf(kind));
        }
    }
    // And the kinds themselves, by what the reader says of one that it does not know.
    const auto kindsAt = [](const std::string& text) {
        std::set<std::string> names;
        const orx::TRecipe recipe = orx::parseRecipe(text);
        for (const orx::TRecipeProblem& problem : recipe.problems()) {
            const std::size_t at = problem.text.find("must be one of: ");
            if (at == std::string::npos) continue;
            std::istringstream stream(problem.text.substr(at + 16));
            for (std::string name; std::getline(stream, name, ',');)
                names.insert(name.substr(name.find_first_not_of(' ')));
        }
        return names;
    };
    EXPECT_EQ(kindsAt(R"({"features": [{"type": "????????????"}]})"), features);
    EXPECT_EQ(kindsAt(R"({"values": [{"type": "????????????"}]})"), values);
    EXPECT_EQ(kindsAt(R"({"part": {"by": "????????????"}})"), places);
}

}  // namespace
