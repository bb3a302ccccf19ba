// The inspection program with a recipe, run as a user runs it.
#include <gmock/gmock.h>

#include <algorithm>

#include "tests/examples/batch_fixture.h"

#ifdef ORX_HAS_SQLITE
#include <sqlite3.h>
#endif

namespace {

namespace fs = std::filesystem;
using test::BatchProgram;
using test::Outcome;
using test::textOf;
using testing::HasSubstr;
using testing::Not;

TEST_F(BatchProgram, VerdictsStandInEveryResult) {
    writeRadius("in/a-good.png", 30.0);
    writeRadius("in/b-large.png", 30.6);
    writeRadius("in/c-small.png", 29.5);
    const Outcome outcome = run(arguments({path("in")}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    EXPECT_THAT(outcome.output, HasSubstr("a-good.png: pass\n"));
    EXPECT_THAT(outcome.output, HasSubstr("b-large.png: fail\n  diameter: 61.2"));
    EXPECT_THAT(outcome.output, HasSubstr("3 pictures: 1 pass, 2 fail"));

    const auto lines = results();
    ASSERT_EQ(lines.size(), 3U);
    const std::vector<double> diameters{60.0, 61.2, 59.0};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(lines[i]["verdict"].asString(), i == 0 ? "pass" : "fail");
        EXPECT_NEAR(lines[i]["values"][0]["value"].asDouble(), diameters[i], 0.05);
        EXPECT_EQ(lines[i]["values"][1]["verdict"].asString(), "no limits");
        // What failed is drawn, fourfold and with a table beside it, the rest is not.
        const std::string annotated = lines[i]["annotated"].asString();
        EXPECT_EQ(lines[i]["annotated"].isNull(), i == 0);
        if (i > 0) {
            const cv::Mat sheet = cv::imread(path("out/" + annotated));
            EXPECT_EQ(sheet.rows, 480);
            EXPECT_GT(sheet.cols, 560 + 200);
        }
    }
    const std::string csv = textOf(path("out/results.csv"));
    EXPECT_THAT(csv, HasSubstr("picture,verdict,problem,diameter (px),diameter deviation,diameter verdict,"
                               "\"place, x (px)\","));
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 4);
    const Json::Value diameter = statistics()["values"][0];
    EXPECT_NEAR(diameter["mean"].asDouble(), (60.0 + 61.2 + 59.0) / 3, 0.05);
    EXPECT_EQ(diameter["verdicts"]["fail"].asInt(), 2);
    EXPECT_TRUE(statistics()["values"][1]["cpk"].isNull());
    const std::string html = textOf(path("out/report.html"));
    EXPECT_THAT(html, HasSubstr("disk &lt;1&gt;"));
    EXPECT_THAT(html, HasSubstr("3 pictures: 1 pass, 2 fail"));
    EXPECT_THAT(html, HasSubstr("<svg class='bars'"));
    // 61.2 and 59 lie outside of 59.5 to 60.5, and are marked as such.
    std::size_t outside = 0;
    for (std::size_t at = 0; (at = html.find("<circle class='out'", at)) != std::string::npos; ++at)
        ++outside;
    EXPECT_EQ(outside, 2U);
    EXPECT_THAT(html, HasSubstr("<a href='" + lines[1]["annotated"].asString() + "'><img"));
    EXPECT_LT(html.find("b-large.png"), html.find("c-small.png")) << "the worst first";
    EXPECT_THAT(html, HasSubstr("</html>"));
}

TEST_F(BatchProgram, AllValuesOfOnePictureArePrinted) {
    writeRadius("in/a.png", 30.0);
    const Outcome one = run(arguments({path("in")}));
    EXPECT_THAT(one.output, HasSubstr("a.png: pass\n  diameter: "));
    EXPECT_THAT(one.output, HasSubstr("\n  place, x: "));
    writeRadius("in/b.png", 30.0, 4);
    const Outcome two = run(arguments({path("in")}, "two"));
    EXPECT_THAT(two.output, Not(HasSubstr("\n  ")));
}

TEST_F(BatchProgram, JobsAndAnnotationChangeNoResult) {
    for (int i = 0; i < 40; ++i)
        writeRadius("in/p" + std::to_string(100 + i) + ".png", i % 7 == 0 ? 31 : 30, 5 + i);
    EXPECT_EQ(run(arguments({path("in")}, "one")).exitCode, 0);
    EXPECT_EQ(run(arguments({path("in"), "--jobs", "3", "--jpeg", "--annotate", "all"}, "three")).exitCode,
              0);
    const Outcome quiet = run(arguments({path("in"), "--jobs", "2", "--annotate", "none", "--quiet"}, "two"));
    EXPECT_EQ(quiet.output + quiet.errors, "");
    EXPECT_EQ(textOf(path("one/results.csv")), textOf(path("three/results.csv")));
    EXPECT_EQ(textOf(path("one/statistics.json")), textOf(path("two/statistics.json")));
    const auto one = results("one");
    const auto three = results("three");
    const auto two = results("two");
    ASSERT_EQ(one.size(), 40U);
    ASSERT_EQ(three.size(), 40U);
    for (std::size_t i = 0; i < 40; ++i) {
        EXPECT_EQ(one[i]["values"], three[i]["values"]);
        EXPECT_EQ(one[i]["picture"], two[i]["picture"]);
        EXPECT_TRUE(two[i]["annotated"].isNull());
        EXPECT_TRUE(fs::exists(path("three/" + three[i]["annotated"].asString())));
        EXPECT_THAT(three[i]["annotated"].asString(), testing::EndsWith(".jpg"));
    }
    EXPECT_TRUE(std::is_sorted(one.begin(), one.end(), [](const Json::Value& a, const Json::Value& b) {
        return a["picture"].asString() < b["picture"].asString();
    }));
}

TEST_F(BatchProgram, UnreadableFilesAreRecordedAndEndNothing) {
    writeRadius("in/a.png", 30);
    test::writeBytes(path("in/b.png"), test::bytesOf(path("in/a.png")).substr(0, 60));
    test::writeBytes(path("in/c.png"), "");
    writeRadius("in/d.png", 30);
    const Outcome outcome = run(arguments({path("in"), path("in/none.png")}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("b.png: "));
    EXPECT_THAT(outcome.errors, HasSubstr("c.png: the file is empty"));
    EXPECT_THAT(outcome.errors, HasSubstr("none.png: no such file"));
    const auto lines = results();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[1]["verdict"].asString(), "not measured");
    EXPECT_EQ(lines[2]["problem"].asString(), "the file is empty");
    EXPECT_EQ(lines[3]["verdict"].asString(), "pass");
    EXPECT_EQ(lines[4]["values"].size(), 2U);
    EXPECT_EQ(statistics()["verdicts"]["not measured"].asInt(), 3);
    EXPECT_EQ(statistics()["values"][0]["count"].asInt(), 2);
    EXPECT_THAT(textOf(path("out/report.html")), HasSubstr("the file is empty"));

    // They are tried again, though nothing tells of a change, and what is not given any more is forgotten.
    fs::remove(path("in/c.png"));
    fs::create_directory(path("in/c.png"));
    writeRadius("good.png", 30);
    fs::resize_file(path("in/b.png"), fs::file_size(path("good.png")));
    const auto changed = fs::last_write_time(path("in/b.png"));
    ASSERT_EQ(run(arguments({path("in")})).exitCode, 1);
    fs::remove(path("in/b.png"));
    fs::copy_file(path("good.png"), path("in/b.png"));
    fs::last_write_time(path("in/b.png"), changed);
    const Outcome again = run(arguments({path("in")}));
    EXPECT_EQ(again.exitCode, 0) << again.errors;
    EXPECT_THAT(again.output, HasSubstr("going on after 2 pictures"));
    EXPECT_THAT(again.output, HasSubstr("3 pictures: 3 pass"));
}

// Decoders fill what is missing of a JPEG file, so that it would pass.
TEST_F(BatchProgram, CutJpegFilesAreNotMeasured) {
    const cv::Mat disk = cv::imread(writeRadius("disk.png", 30), cv::IMREAD_GRAYSCALE);
    std::vector<uchar> bytes;
    cv::imencode(".jpg", disk, bytes, {cv::IMWRITE_JPEG_QUALITY, 95, cv::IMWRITE_JPEG_RST_INTERVAL, 2});
    const std::string whole(bytes.begin(), bytes.end());
    // A comment with an end of file within, and padding behind the end, which some cameras write.
    const std::string comment("\xFF\xFE\x00\x06\xFF\xD9\xFF\xD9", 8);
    const std::string padded = whole.substr(0, 2) + comment + whole.substr(2) + std::string(9, '\0');
    test::writeBytes(path("in/a.jpg"), padded);
    test::writeBytes(path("in/b.jpg"), padded.substr(0, padded.size() - 10));
    test::writeBytes(path("in/c.jpg"), whole.substr(0, whole.size() - 40));
    test::writeBytes(path("in/d.jpg"), whole.substr(0, 23));
    cv::imencode(".jpg", disk, bytes, {cv::IMWRITE_JPEG_PROGRESSIVE, 1});
    test::writeBytes(path("in/e.jpg"), std::string(bytes.begin(), bytes.end()));
    EXPECT_EQ(run(arguments({path("in")})).exitCode, 1);
    const auto lines = results();
    ASSERT_EQ(lines.size(), 5U);
    for (const int i : {0, 4}) EXPECT_EQ(lines[static_cast<std::size_t>(i)]["verdict"].asString(), "pass");
    for (const int i : {1, 2, 3}) {
        EXPECT_EQ(lines[static_cast<std::size_t>(i)]["verdict"].asString(), "not measured");
        EXPECT_THAT(lines[static_cast<std::size_t>(i)]["problem"].asString(), HasSubstr("cut off"));
    }
}

TEST_F(BatchProgram, ARerunGoesOnWhereItStopped) {
    for (const char* name : {"in/a.png", "in/b.png", "in/c.png"}) writeRadius(name, 30);
    ASSERT_EQ(run(arguments({path("in")})).exitCode, 0);
    const std::string whole = textOf(path("out/results.jsonl"));
    const std::string csv = textOf(path("out/results.csv"));

    // Cut off within the last line, as by a power cut; and lines that are none.
    test::writeBytes(path("out/results.jsonl"), whole.substr(0, whole.size() - 40));
    Outcome outcome = run(arguments({path("in")}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, HasSubstr("going on after 2 pictures"));
    EXPECT_EQ(textOf(path("out/results.jsonl")), whole);
    EXPECT_EQ(textOf(path("out/results.csv")), csv);
    const std::size_t second = whole.find('\n') + 1;
    test::writeBytes(path("out/results.jsonl"),
                     std::string(5000, '[') + "\n{}\n{\"file\":7}\n" + whole.substr(0, second) + "null\n");
    EXPECT_EQ(run(arguments({path("in")})).exitCode, 0);
    EXPECT_EQ(textOf(path("out/results.jsonl")), whole);

    // One has changed, one is new: those are measured, and only those.
    writeRadius("in/b.png", 30.6, 77);
    writeRadius("in/d.png", 30, 78);
    outcome = run(arguments({path("in")}));
    EXPECT_THAT(outcome.output, HasSubstr("going on after 2 pictures"));
    EXPECT_THAT(outcome.output, HasSubstr("4 pictures: 3 pass, 1 fail"));
    const auto lines = results();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_THAT(lines[2]["picture"].asString(), testing::EndsWith("b.png"));
    EXPECT_EQ(lines[2]["verdict"].asString(), "fail");
    EXPECT_TRUE(fs::exists(path("out/" + lines[2]["annotated"].asString())));

    // Another recipe is not mixed in.
    const std::string before = textOf(path("out/results.jsonl"));
    writeRecipe("disk.json", 2.0);
    outcome = run(arguments({path("in")}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("another recipe"));
    EXPECT_THAT(outcome.errors, HasSubstr("--again"));
    EXPECT_EQ(textOf(path("out/results.jsonl")), before);
    outcome = run(arguments({path("in"), "--again"}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, HasSubstr("4 pictures: 4 pass"));
    EXPECT_FALSE(fs::exists(path("out/" + lines[2]["annotated"].asString()))) << "it is forgotten, too";
}

// A folder in the way stands for a disk that takes no sheet more.
TEST_F(BatchProgram, ASheetThatCantBeWrittenEndsTheRunAndTheNextOneMakesIt) {
    for (const char* name : {"in/a.png", "in/b.png", "in/c.png"}) writeRadius(name, 30);
    const auto wanted = arguments({path("in"), "--annotate", "all"});
    ASSERT_EQ(run(wanted).exitCode, 0);
    const std::string sheet = path("out/" + results()[1]["annotated"].asString());
    fs::remove(sheet);
    fs::remove(path("out/results.jsonl"));
    fs::remove(path("out/report.html"));
    fs::create_directories(sheet + "/in the way");
    fs::create_directories(path("out/report.html/in the way"));
    Outcome outcome = run(wanted);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr(fs::path(sheet).filename().string() + " can't be written"));
    EXPECT_THAT(outcome.errors, HasSubstr("report.html can't be written"));
    EXPECT_THAT(outcome.output, Not(HasSubstr("report   ")));
    EXPECT_EQ(results().size(), 1U);
    fs::remove_all(sheet);
    fs::remove_all(path("out/report.html"));
    outcome = run(wanted);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, HasSubstr("going on after 1 picture"));
    EXPECT_THAT(outcome.output, HasSubstr("report   "));
    EXPECT_EQ(results().size(), 3U);
    EXPECT_TRUE(fs::is_regular_file(sheet));
}

TEST_F(BatchProgram, FoldersAreSearchedWithoutWhatWasWritten) {
    fs::create_directories(path("in/sub/deep"));
    writeRadius("in/b.png", 30);
    writeRadius("in/sub/a.png", 30);
    writeRadius("in/sub/deep/c.png", 30);
    const std::vector<std::string> options{path("in"), "--recursive", "--annotate", "all"};
    EXPECT_EQ(run(arguments(options, "in/out")).exitCode, 0);
    EXPECT_EQ(results("in/out").size(), 3U);
    EXPECT_EQ(run(arguments(options, "in/out")).exitCode, 0);
    EXPECT_EQ(results("in/out").size(), 3U);
    EXPECT_EQ(run(arguments({path("in")}, "flat")).exitCode, 0);
    EXPECT_EQ(results("flat").size(), 1U);
    fs::create_directory(path("empty"));
    const Outcome none = run(arguments({path("in/sub/deep"), path("empty")}, "none"));
    EXPECT_EQ(none.exitCode, 1) << "a folder without pictures";
    EXPECT_EQ(results("none").size(), 1U);
}

TEST_F(BatchProgram, AGaugeStudyPoolsTheTimesOfEachPart) {
    // Two parts of three pictures each: what differs between a part's pictures is noise alone.
    for (int part = 0; part < 2; ++part)
        for (int k = 0; k < 3; ++k)
            writeRadius("in/p" + std::to_string(part) + std::to_string(k) + ".png", 30.0 + 0.1 * part,
                        10 * part + k + 1);
    EXPECT_EQ(run(arguments({path("in"), "--gauge", "3"})).exitCode, 0);
    const auto lines = results();
    double squares = 0;
    for (int part = 0; part < 2; ++part) {
        std::vector<double> v;
        for (int k = 0; k < 3; ++k) v.push_back(lines[3 * part + k]["values"][0]["value"].asDouble());
        const double mean = (v[0] + v[1] + v[2]) / 3;
        for (const double value : v) squares += (value - mean) * (value - mean);
    }
    const Json::Value gauge = statistics()["values"][0]["gauge"];
    EXPECT_EQ(gauge["parts"].asInt(), 2);
    EXPECT_NEAR(gauge["repeatability"].asDouble(), std::sqrt(squares / 4), 1e-8);
    EXPECT_NEAR(gauge["toleranceShare"].asDouble(), 600 * std::sqrt(squares / 4) / 1.0, 1e-5);
    EXPECT_NEAR(gauge["partDeviation"].asDouble(), 0.2 / std::sqrt(2.0), 0.02);
    EXPECT_THAT(textOf(path("out/report.html")), HasSubstr("Gauge study"));

    // One is missing: of whichever part, that is told.
    fs::remove(path("in/p11.png"));
    const Outcome uneven = run(arguments({path("in"), "--gauge", "3"}, "uneven"));
    EXPECT_EQ(uneven.exitCode, 0);
    EXPECT_THAT(uneven.errors, HasSubstr("of the last part there are 2 pictures alone, 5 in all"));
    EXPECT_THAT(textOf(path("uneven/report.html")), HasSubstr("2 pictures alone"));
}

TEST_F(BatchProgram, WhatDoesNotFitIsRefusedBeforeAnythingIsWritten) {
    const std::string picture = writeRadius("in/a.png", 30);
    for (const std::vector<std::string>& more :
         std::vector<std::vector<std::string>>{{},
                                               {picture, "--jobs", "0"},
                                               {picture, "--jobs", "nan"},
                                               {picture, "--annotate", "some"},
                                               {picture, "--gauge", "1"},
                                               {picture, "--synthetic", "1"},
                                               {picture, "--camera"},
                                               {picture, "--window"},
                                               {picture, "--find", "m"},
                                               {picture, "--method", "otsu"},
                                               {picture, "--caliper", "1,2,30,40"},
                                               {picture, "--shape", "circle"},
                                               {picture, "--circle", "wls"},
                                               {picture, "--keep", "5"},
                                               {picture, "--lines", "5"},
                                               {picture, "--synthetic-parts", "1"}}) {
        EXPECT_EQ(run(arguments(more)).exitCode, 2) << testing::PrintToString(more);
    }
    EXPECT_EQ(run({picture, "--jobs", "2"}).exitCode, 2) << "without a recipe";
    std::ofstream(path("bad.json")) << "{\"recipe\": 1,\n \"features\": [], \"values\": [],\n \"colour\": 3}";
    for (const char* recipe : {"bad.json", "none.json"}) {
        const Outcome outcome = run({picture, "--recipe", path(recipe), "-o", path("out")});
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_THAT(outcome.errors, HasSubstr(recipe));
    }
    EXPECT_THAT(textOf(path("stderr")), Not(HasSubstr("line 3")));
    EXPECT_THAT(run({picture, "--recipe", path("bad.json"), "-o", path("out")}).errors, HasSubstr("line 3"));
    EXPECT_FALSE(fs::exists(path("out")));
    // Results that nobody can place are not gone over.
    fs::create_directory(path("out"));
    std::ofstream(path("out/results.jsonl")) << "mine\n";
    EXPECT_EQ(run(arguments({picture})).exitCode, 1);
    EXPECT_EQ(textOf(path("out/results.jsonl")), "mine\n");
}

#ifdef ORX_HAS_SQLITE

std::string ask(const std::string& file, const std::string& query) {
    sqlite3* database = nullptr;
    sqlite3_stmt* statement = nullptr;
    std::string answer = "no answer";
    sqlite3_open(file.c_str(), &database);
    if (sqlite3_prepare_v2(database, query.c_str(), -1, &statement, nullptr) == SQLITE_OK &&
        sqlite3_step(statement) == SQLITE_ROW)
        answer = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
    sqlite3_finalize(statement);
    sqlite3_close(database);
    return answer;
}

TEST_F(BatchProgram, SqliteHoldsPicturesAndValues) {
    writeRadius("in/a.png", 30);
    writeRadius("in/b.png", 31);
    const std::string file = path("results.db");
    for (int time = 0; time < 2; ++time) {  // the second time from what was measured the first
        EXPECT_EQ(run(arguments({path("in"), "--sqlite", file})).exitCode, 0);
        EXPECT_EQ(ask(file, "SELECT count(*) FROM pictures"), "2");
        EXPECT_EQ(ask(file,
                      "SELECT v.name || ' ' || round(v.value) || ' ' || v.upper FROM \"values\" v JOIN "
                      "pictures p ON p.id = v.picture WHERE v.verdict = 'fail'"),
                  "diameter 62.0 60.5");
        EXPECT_EQ(ask(file, "SELECT count(*) FROM \"values\" WHERE lower IS NULL"), "2");
    }
    // What someone else keeps is left alone.
    sqlite3* other = nullptr;
    sqlite3_open(path("other.db").c_str(), &other);
    sqlite3_exec(other, "CREATE TABLE pictures (x); INSERT INTO pictures VALUES ('kept')", nullptr, nullptr,
                 nullptr);
    sqlite3_close(other);
    const Outcome outcome = run(arguments({path("in"), "--sqlite", path("other.db")}, "out2"));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("something else"));
    EXPECT_EQ(ask(path("other.db"), "SELECT x FROM pictures"), "kept");
    test::writeBytes(path("text.db"), std::string(2000, 'x'));
    EXPECT_EQ(run(arguments({path("in"), "--sqlite", path("text.db")}, "out3")).exitCode, 1);
    EXPECT_EQ(textOf(path("text.db")), std::string(2000, 'x'));
}

#endif

}  // namespace
