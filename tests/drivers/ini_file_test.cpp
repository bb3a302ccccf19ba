#include "drivers/TQVisionDriver/ini_file.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using vision::IniFile;
using vision::parseIni;

// One line for each section and entry, so that a whole file is compared at once.
std::string outline(const IniFile& file) {
    std::string text;
    for (const vision::IniSection& section : file.sections) {
        text += "[" + section.name + "]@" + std::to_string(section.line) + "\n";
        for (const vision::IniEntry& entry : section.entries) {
            text += entry.key + "=" + entry.value + "@" + std::to_string(entry.line) + "\n";
        }
    }
    return text;
}

TEST(IniFile, ReadsSectionsKeysAndValues) {
    const IniFile file = parseIni(
        "\xEF\xBB\xBF; a comment\r\n"
        "[Camera1]\r\n"
        "  Source =  replay \r\n"
        "folder = /data/a = b; c\r\n"
        "# another comment\n"
        "\n"
        "[ devices ]\n"
        "packet_size=\n"
        "packet_size=1500");
    EXPECT_EQ(outline(file),
              "[camera1]@2\nsource=replay@3\nfolder=/data/a = b; "
              "c@4\n[devices]@7\npacket_size=@8\npacket_size=1500@9\n");
    EXPECT_TRUE(file.problems.empty());
}

TEST(IniFile, LeavesOutAndNamesWhatItDoesNotUnderstand) {
    const IniFile file = parseIni(
        "early = 1\n"
        "[good]\n"
        "no equals sign\n"
        "= no key\n"
        "a b = blank in the key\n"
        "kept = 1\n"
        "[broken\n"
        "lost = 1\n"
        "[]\n"
        "lost = 2\n");
    EXPECT_EQ(outline(file), "[good]@2\nkept=1@6\n");
    ASSERT_EQ(file.problems.size(), 8U);
    EXPECT_EQ(file.problems.front(), "line 1: belongs to no section");
    EXPECT_EQ(file.problems.at(4), "line 7: no section name; the section is left out");
}

TEST(IniFile, RefusesWhatIsNoText) {
    for (const std::string& text :
         {std::string("[camera1]\nsource = sc\0ene\n", 26), std::string(vision::kLargestIniText + 1, ' ')}) {
        const IniFile file = parseIni(text);
        EXPECT_TRUE(file.sections.empty());
        EXPECT_EQ(file.problems.size(), 1U);
    }
}

TEST(IniFile, SurvivesAnyBytesAndBoundsItsComplaints) {
    std::mt19937 random(7);
    const std::string letters = "[]=;#\n\r\t aZ9_\x80\xFF";
    for (int round = 0; round < 300; ++round) {
        std::string text;
        for (int i = 0; i < 400; ++i) text += letters[random() % letters.size()];
        const IniFile file = parseIni(text);
        EXPECT_LE(file.problems.size(), 20U);
        for (const vision::IniSection& section : file.sections) EXPECT_FALSE(section.name.empty());
    }
}

}  // namespace
