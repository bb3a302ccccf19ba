// Batches beside a file that says what is true.
#include <gmock/gmock.h>

#include <cmath>

#include "inspection/batch/truth_table.h"
#include "tests/examples/batch_fixture.h"

namespace {

namespace fs = std::filesystem;
using inspection::CsvRow;
using inspection::TruthTable;
using test::BatchProgram;
using test::Outcome;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(ParseCsv, TakesQuotesAndAllEndsOfLines) {
    std::vector<CsvRow> rows;
    std::string problem;
    ASSERT_TRUE(
        inspection::parseCsv("\xEF\xBB\xBF"
                             "a,\"b, \"\"c\"\"\"\r\n\n\"1\n2\",\r,4",
                             rows, problem))
        << problem;
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_THAT(rows[0].cells, ElementsAre("a", "b, \"c\""));
    EXPECT_THAT(rows[1].cells, ElementsAre("1\n2", ""));
    EXPECT_THAT(rows[2].cells, ElementsAre("", "4"));
    EXPECT_EQ(rows[1].line, 3);
    EXPECT_EQ(rows[2].line, 5);
    for (const auto& [text, says] : std::vector<std::pair<std::string, std::string>>{
             {"a,b\n1\n", "line 2: 1 cells"},
             {"a\n\"b\n", "line 2: a quotation mark that is never closed"},
             {"a\"b\n", "line 1: a quotation mark within"},
             {"\"a\"b\n", "line 1: something follows"},
             {std::string(20000, ','), "more than 10000 cells"}}) {
        problem.clear();
        EXPECT_FALSE(inspection::parseCsv(text, rows, problem)) << text.substr(0, 20);
        EXPECT_THAT(problem, HasSubstr(says));
    }
}

class Truth : public BatchProgram {
  protected:
    orx::TRecipe recipe() const { return orx::readRecipe(path("disk.json")); }

    std::string writeTruth(const std::string& text) const {
        test::writeBytes(path("truth.csv"), text);
        return path("truth.csv");
    }
};

TEST_F(Truth, TablesThatAreNoneAreRefusedWithTheirLine) {
    for (const auto& [text, says] : std::vector<std::pair<std::string, std::string>>{
             {"", "it is empty"},
             {"file,diameter\n", "no column is called \"picture\""},
             {"picture,diametre\na,60\n", "no column is called as a value"},
             {"picture,diameter (mm)\na,60\n", "no column is called as a value"},  // the recipe counts pixels
             {"picture,diameter,diameter (px)\na,1,2\n", "two columns"},
             {"picture,diameter\na,60\n,60\n", "line 3: no picture"},
             {"picture,diameter\na,60\n\na,60\n", "line 4: the picture \"a\" stands twice"},
             {"picture,diameter\na,6o\n", "line 2: \"6o\" is no number"},
             {"picture,diameter\na,nan\n", "is no number"},
             {"picture,diameter\na,1e999\n", "is no number"},
             {"picture,diameter\na,\"6,0\"\n", "is no number"}}) {
        TruthTable table;
        std::string problem;
        EXPECT_FALSE(table.parse(text, recipe(), problem)) << text;
        EXPECT_THAT(problem, HasSubstr(says));
    }
}

TEST_F(Truth, PicturesAreFoundByTheEndOfTheirPath) {
    TruthTable table;
    std::string problem;
    ASSERT_TRUE(
        table.parse("note,\"place, x\",picture,diameter (px)\n"
                    "x, 70.5 ,b/a.png,60\ny,,a.png,61.25\n",
                    recipe(), problem))
        << problem;
    EXPECT_THAT(table.ignored(), ElementsAre("note"));
    ASSERT_NE(table.of("/some/b/a.png"), nullptr);
    EXPECT_THAT(*table.of("/some/b/a.png"), ElementsAre(60, 70.5));
    ASSERT_NE(table.of("c\\a.png"), nullptr);
    EXPECT_EQ(table.of("c\\a.png")->at(0), 61.25);
    EXPECT_TRUE(std::isnan(table.of("a.png")->at(1))) << "an empty cell is no truth";
    EXPECT_EQ(table.of("/some/aa.png"), nullptr);
    EXPECT_EQ(table.of(""), nullptr);
}

TEST_F(Truth, ErrorsAndWrongVerdictsAreTold) {
    writeRadius("in/a.png", 30.0);
    writeRadius("in/b.png", 30.6, 4);
    writeRadius("in/c.png", 30.0, 5);
    writeRadius("in/d.png", 30.6, 6);
    writeRadius("in/e.png", 30.0, 7);
    // Of c and d the table says something else than the pictures show.
    const std::string truth = writeTruth("picture,diameter\na.png,60\nb.png,61.2\nc.png,61\nd.png,60\n");
    Outcome outcome = run(arguments({path("in"), "--truth", truth}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_THAT(outcome.output,
                HasSubstr("4 pictures whose truth is known: 2 good parts, 2 bad ones; 1 picture"));
    EXPECT_THAT(outcome.output, HasSubstr("c.png: pass, but diameter is 61 px"));
    EXPECT_THAT(outcome.output, HasSubstr("d.png: fail, but all true values lie within their limits"));

    const Json::Value statistics = this->statistics();
    for (const Json::Value& verdicts :
         {statistics["truth"]["verdicts"], statistics["values"][0]["truth"]["verdicts"]}) {
        EXPECT_EQ(verdicts["right"].asInt(), 2);
        EXPECT_EQ(verdicts["wronglyPassed"].asInt(), 1);
        EXPECT_EQ(verdicts["wronglyFailed"].asInt(), 1);
        EXPECT_EQ(verdicts["undecided"].asInt(), 0);
    }
    EXPECT_EQ(statistics["truth"]["notInTheTable"].asInt(), 1);
    const Json::Value diameter = statistics["values"][0]["truth"];
    EXPECT_EQ(diameter["count"].asInt(), 4);
    EXPECT_NEAR(diameter["meanError"].asDouble(), (1.2 - 1.0) / 4, 0.03);  // errors 0, 0, -1 and 1.2
    EXPECT_NEAR(diameter["rmsError"].asDouble(), std::sqrt((1.44 + 1.0) / 4), 0.03);
    EXPECT_NEAR(diameter["largestError"].asDouble(), 1.2, 0.05);
    EXPECT_GT(diameter["rmsErrorOverStated"].asDouble(), 10);
    EXPECT_EQ(statistics["values"][1]["truth"]["count"].asInt(), 0);
    EXPECT_TRUE(statistics["values"][1]["truth"]["rmsError"].isNull());
    const std::string html = test::textOf(path("out/report.html"));
    EXPECT_THAT(html, HasSubstr("Beside the truth"));
    EXPECT_THAT(html, HasSubstr("c.png: pass, but diameter is 61 px"));

    // What an earlier run measured is compared, too.
    outcome = run(arguments({path("in"), "--truth", truth}));
    EXPECT_THAT(outcome.output, HasSubstr("going on after 5 pictures"));
    EXPECT_EQ(this->statistics()["truth"], statistics["truth"]);
    EXPECT_NEAR(this->statistics()["values"][0]["truth"]["rmsError"].asDouble(),
                diameter["rmsError"].asDouble(), 1e-8);
    // And what it wrote is a truth itself: that of a better gauge, say.
    outcome = run(arguments({path("in"), "--truth", path("out/results.csv")}, "again"));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(this->statistics("again")["values"][1]["truth"]["count"].asInt(), 5);
    EXPECT_LT(this->statistics("again")["values"][0]["truth"]["largestError"].asDouble(), 1e-6);
}

TEST_F(Truth, ATableOfOtherPicturesIsAMistake) {
    const std::string truth = writeTruth("picture,diameter\nother.png,60\n");
    const Outcome outcome = run(arguments({writeRadius("in/a.png", 30), "--truth", truth}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("none of the pictures is in the table of --truth"));
}

TEST_F(Truth, WhatIsNoTableIsRefusedBeforeAnythingIsWritten) {
    const std::string picture = writeRadius("in/a.png", 30);
    for (const std::string& truth :
         {writeTruth("picture,diameter\na.png,much\n"), path("none.csv"), path("in")}) {
        const Outcome outcome = run(arguments({picture, "--truth", truth}));
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_THAT(outcome.errors, HasSubstr(truth));
    }
    EXPECT_EQ(run({picture, "--truth", path("truth.csv")}).exitCode, 2) << "without a recipe";
    EXPECT_FALSE(fs::exists(path("out")));
}

}  // namespace
