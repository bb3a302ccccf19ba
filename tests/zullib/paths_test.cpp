#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ZULLib/paths_internal.h"
#include "ZULLib/zullib.h"

namespace {

TEST(Paths, AreCutAtTheLastSlash) {
    struct Case {
        std::string path, folder, name, extension;
    };
    const std::vector<Case> cases = {
        {"", "", "", ""},
        {"/a/b.c/d.png", "/a/b.c/", "d.png", ".png"},
        {"a.tar.gz", "", "a.tar.gz", ".gz"},
        {"/", "/", "", ""},
        {"/a.b/", "/a.b/", "", ""},
        {"/a.b/c", "/a.b/", "c", ""},
        {"x/.profile", "x/", ".profile", ""},
        {"x/.profile.bak", "x/", ".profile.bak", ".bak"},
        {"..", "", "..", ""},
        {"end.", "", "end.", "."},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(zul::extractFilePath(c.path), c.folder) << c.path;
        EXPECT_EQ(zul::extractFileName(c.path), c.name) << c.path;
        EXPECT_EQ(zul::extractFileExt(c.path), c.extension) << c.path;
    }
}

TEST(Paths, ABackslashSeparatesOnWindowsOnly) {
#if defined(_WIN32)
    EXPECT_EQ(zul::extractFileName("C:\\a\\b.png"), "b.png");
#else
    EXPECT_EQ(zul::extractFileName("C:\\a\\b.png"), "C:\\a\\b.png");
#endif
}

// The Windows rule is tested everywhere. D5 5C is one character, and so is 81 5C; an ASCII letter or a whole
// pair before 5C makes that a separator.
TEST(Paths, TheWindowsRuleKnowsDoubleByteCharacters) {
    using zul::paths::windowsNameStart;
    EXPECT_EQ(windowsNameStart(""), 0U);
    EXPECT_EQ(windowsNameStart("C:\\a\\b"), 5U);
    EXPECT_EQ(windowsNameStart("C:\\a/b"), 5U);
    EXPECT_EQ(windowsNameStart("\xD5\x5C.png"), 0U);
    EXPECT_EQ(windowsNameStart("C:\\\xD5\x5C.png"), 3U);
    EXPECT_EQ(windowsNameStart("C:\\\xD5\x5C\\x"), 6U);
    EXPECT_EQ(windowsNameStart("\xD6\xD0\\x"), 3U);
    EXPECT_EQ(windowsNameStart("\xD6\xD0\x81\x5C\\x"), 5U);
    EXPECT_EQ(windowsNameStart("a\xD6"), 0U);   // a lead byte at the end
    EXPECT_EQ(windowsNameStart("\xD6/x"), 2U);  // '/' is never a second byte
}

}  // namespace
