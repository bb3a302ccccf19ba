#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "ZULLib/file_version_internal.h"
#include "ZULLib/zullib.h"

namespace {

namespace fs = std::filesystem;

// Packages own nothing in this folder, which goes away with the test.
class FileVersion : public testing::Test {
  public:
    FileVersion() {
        std::string pattern = testing::TempDir() + "zul_version_XXXXXX";
        folder_ = mkdtemp(pattern.data());
    }
    ~FileVersion() override { fs::remove_all(folder_); }
    FileVersion(const FileVersion&) = delete;
    FileVersion& operator=(const FileVersion&) = delete;

  protected:
    std::string write(const std::string& name, const std::string& content) const {
        const fs::path path = folder_ / name;
        std::ofstream(path, std::ios::binary) << content;
        return path.string();
    }

    fs::path folder_;
};

// A shared object of two segments and a name, laid out by hand from the ELF format:
// header, two segment records, four dynamic records and their end, the string table.
struct ElfImage {
    bool is64 = true;
    bool bigEndian = false;
    std::string soname = "libx.so.1";
    // Faults; -1 leaves the right value.
    std::int64_t segmentTable = -1;
    std::int64_t segmentCount = -1;
    std::int64_t dynamicOffset = -1;
    std::int64_t dynamicSize = -1;
    std::int64_t loadOffset = -1;
    std::int64_t tableAddress = -1;
    std::int64_t tableSize = -1;
    std::int64_t nameOffset = -1;

    std::string bytes() const {
        constexpr std::int64_t kBase = 0x400000;
        const std::int64_t header = is64 ? 64 : 52;
        const std::int64_t segment = is64 ? 56 : 32;
        const std::int64_t dynamic = header + 2 * segment;
        const std::int64_t dynamicBytes = 4 * (is64 ? 16 : 8);
        const std::int64_t table = dynamic + dynamicBytes;
        const auto tableBytes = static_cast<std::int64_t>(soname.size()) + 2;
        const auto orElse = [](std::int64_t fault, std::int64_t right) {
            return fault == -1 ? right : fault;
        };

        std::string out = {'\x7F', 'E', 'L', 'F', is64 ? '\2' : '\1', bigEndian ? '\2' : '\1', '\1'};
        out.resize(16, '\0');
        number(out, 3, 2);   // shared object
        number(out, 62, 2);  // machine
        number(out, 1, 4);
        word(out, 0);  // entry
        word(out, orElse(segmentTable, header));
        word(out, 0);  // section table
        number(out, 0, 4);
        number(out, header, 2);
        number(out, segment, 2);
        number(out, orElse(segmentCount, 2), 2);
        for (int i = 0; i < 3; ++i) number(out, 0, 2);
        segmentRecord(out, 1, orElse(loadOffset, 0), kBase, table + tableBytes);
        segmentRecord(out, 2, orElse(dynamicOffset, dynamic), kBase + dynamic,
                      orElse(dynamicSize, dynamicBytes));
        dynamicRecord(out, 5, orElse(tableAddress, kBase + table));
        dynamicRecord(out, 10, orElse(tableSize, tableBytes));
        dynamicRecord(out, 14, orElse(nameOffset, 1));
        dynamicRecord(out, 0, 0);
        return out + '\0' + soname + '\0';
    }

  private:
    void number(std::string& out, std::int64_t value, int width) const {
        for (int i = 0; i < width; ++i) {
            const int shift = 8 * (bigEndian ? width - 1 - i : i);
            out.push_back(static_cast<char>(static_cast<std::uint64_t>(value) >> shift & 0xFFU));
        }
    }
    void word(std::string& out, std::int64_t value) const { number(out, value, is64 ? 8 : 4); }
    void dynamicRecord(std::string& out, std::int64_t tag, std::int64_t value) const {
        word(out, tag);
        word(out, value);
    }
    void segmentRecord(std::string& out, std::int64_t type, std::int64_t offset, std::int64_t address,
                       std::int64_t size) const {
        number(out, type, 4);
        if (is64) number(out, 5, 4);  // flags
        word(out, offset);
        word(out, address);
        word(out, address);
        word(out, size);
        word(out, size);
        if (!is64) number(out, 5, 4);
        word(out, 4096);
    }
};

TEST_F(FileVersion, ComesFromTheObjectNameInEitherWidthAndByteOrder) {
    for (const bool is64 : {false, true}) {
        for (const bool bigEndian : {false, true}) {
            ElfImage image;
            image.is64 = is64;
            image.bigEndian = bigEndian;
            image.soname = "libx.so.4.2.11";
            EXPECT_EQ(zul::getFileVersion(write("any", image.bytes())), "4.2.11") << is64 << bigEndian;
        }
    }
}

TEST_F(FileVersion, TheFilesOwnNameCountsWhereItIsMoreExact) {
    struct Case {
        std::string file, soname, version;
    };
    const std::vector<Case> cases = {
        {"libx.so.1.2.3", "libx.so.1", "1.2.3"},
        {"libx.so.12.3", "libx.so.1", "1"},  // 12 does not continue 1
        {"libx.so", "libx.so.1.", "1"},
        {"libx.so.7", "", "7"},
        {"libx.so.7.old", "libx.so", "7"},
        {"libx.so.old", "libx.so.", ""},
        {"program", "", ""},
    };
    for (const Case& c : cases) {
        ElfImage image;
        image.soname = c.soname;
        EXPECT_EQ(zul::getFileVersion(write(c.file, image.bytes())), c.version) << c.file << " " << c.soname;
    }
    fs::create_symlink("libx.so.1.2.3", folder_ / "link");
    EXPECT_EQ(zul::getFileVersion((folder_ / "link").string()), "1.2.3");
}

TEST_F(FileVersion, IsEmptyForWhatIsNoReadableElfFile) {
    EXPECT_EQ(zul::getFileVersion(""), "");
    EXPECT_EQ(zul::getFileVersion((folder_ / "missing.so.1").string()), "");
    EXPECT_EQ(zul::getFileVersion(folder_.string()), "");
    EXPECT_EQ(zul::getFileVersion("/dev/zero"), "");
    EXPECT_EQ(zul::getFileVersion("bad\nname"), "");
    EXPECT_EQ(zul::getFileVersion(write("empty.so.1", "")), "");
    EXPECT_EQ(zul::getFileVersion(write("text.so.1", "no program at all, but long enough")), "");
    const std::string pipe = (folder_ / "pipe.so.1").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(zul::getFileVersion(pipe), "");
}

TEST_F(FileVersion, ATruncatedFileHasNone) {
    const std::string whole = ElfImage().bytes();
    EXPECT_EQ(zul::getFileVersion(write("f", whole)), "1");
    for (std::size_t size = 0; size < whole.size(); size += 7) {
        EXPECT_EQ(zul::getFileVersion(write("f", whole.substr(0, size))), "") << size;
    }
    EXPECT_EQ(zul::getFileVersion(write("f", whole.substr(0, whole.size() - 1))), "");
}

TEST_F(FileVersion, OffsetsAndCountsOutOfRangeAreRefused) {
    std::int64_t ElfImage::*const fields[] = {&ElfImage::segmentTable, &ElfImage::dynamicOffset,
                                              &ElfImage::loadOffset, &ElfImage::tableAddress,
                                              &ElfImage::nameOffset};
    for (const bool is64 : {false, true}) {
        for (const auto field : fields) {
            for (const std::int64_t value :
                 {std::int64_t{1} << 20, std::int64_t{0x7FFFFFFF}, std::int64_t{0xFFFFFFF0}, INT64_MAX,
                  INT64_MIN + 0x100000, std::int64_t{-2}, std::int64_t{-40}}) {
                ElfImage image;
                image.is64 = is64;
                image.*field = value;
                EXPECT_EQ(zul::getFileVersion(write("f", image.bytes())), "") << value;
            }
        }
    }
    // Too large counts alone do not matter: what is needed stands before.
    ElfImage large;
    large.segmentCount = 0xFFFF;
    large.dynamicSize = INT64_MAX;
    large.tableSize = INT64_MAX;
    EXPECT_EQ(zul::getFileVersion(write("f", large.bytes())), "1");
    ElfImage small;
    small.segmentCount = 0;
    EXPECT_EQ(zul::getFileVersion(write("f", small.bytes())), "");
    ElfImage open;
    open.tableSize = 10;  // the table ends within the name
    EXPECT_EQ(zul::getFileVersion(write("f", open.bytes())), "");
}

TEST_F(FileVersion, ANameHas255BytesAtMostAndIsOnlyThereWhereARecordSaysSo) {
    ElfImage longest;
    longest.soname = "libx.so." + std::string(247, '4');
    EXPECT_EQ(zul::getFileVersion(write("f", longest.bytes())), std::string(247, '4'));
    longest.soname += "4";
    EXPECT_EQ(zul::getFileVersion(write("f", longest.bytes())), "");
    for (const bool is64 : {false, true}) {
        ElfImage nameless;
        nameless.is64 = is64;
        nameless.dynamicSize = is64 ? 2 * 16 : 2 * 8;  // a string table, but no record of the name in it
        EXPECT_EQ(zul::getFileVersion(write("f", nameless.bytes())), "") << is64;
    }
}

TEST_F(FileVersion, RandomDamageNeverYieldsMoreThanDigits) {
    std::mt19937 random(20260101);
    const std::string whole = ElfImage().bytes();
    for (int round = 0; round < 60; ++round) {
        std::string damaged = whole;
        for (int i = 0; i < 4; ++i) damaged[random() % damaged.size()] = static_cast<char>(random());
        const std::string version = zul::getFileVersion(write("f", damaged));
        EXPECT_EQ(version.find_first_not_of("0123456789."), std::string::npos);
        EXPECT_LE(version.size(), 255U);
    }
}

TEST(FileVersionOfLibraries, OursIsTheProjectsVersion) {
    Dl_info info = {};
    ASSERT_NE(dladdr(reinterpret_cast<void*>(&zul::getFileVersion), &info), 0);
    EXPECT_EQ(zul::getFileVersion(info.dli_fname), PROJECT_VERSION_TEXT);
}

// A database of three packages, of which one is there for three architectures, but stands only twice in the
// status.
TEST_F(FileVersion, APackageIsThatOfTheFilesArchitecture) {
    const fs::path database = folder_ / "dpkg";
    fs::create_directories(database / "info");
    const auto fileOf = [&](const std::string& name, const std::string& package) {
        const std::string file = fs::canonical(write(name, "x")).string();
        std::ofstream(database / "info" / (package + ".list")) << "/.\n" << file << "\n";
        return file;
    };
    const std::string mobile = fileOf("mobile", "tool:armhf");
    const std::string desk = fileOf("desk", "tool:amd64");
    const std::string lost = fileOf("lost", "tool:s390x");
    const std::string plain = fileOf("plain", "all-of-them");
    const std::string gone = fileOf("gone", "not-there");
    std::ofstream(database / "status")
        << "Package: tool\nArchitecture: armhf\nVersion: 1:2.0-1\n\n"
           "Package: tool-extra\nArchitecture: amd64\nVersion: 7\n\n"
           "Package: tool\nStatus: install ok installed\nArchitecture: amd64\nVersion: 1:2.0-3+b1\n\n"
           "Package: all-of-them\nVersion: 4.5\nArchitecture: all\n";
    const auto versionOf = [&](const std::string& file) {
        return zul::posix::debianVersionOf(file, database.string());
    };
    EXPECT_EQ(versionOf(mobile), "1:2.0-1");
    EXPECT_EQ(versionOf(desk), "1:2.0-3+b1");
    EXPECT_EQ(versionOf(lost), "");
    EXPECT_EQ(versionOf(plain), "4.5");
    EXPECT_EQ(versionOf(gone), "") << "its list is there, and the status not yet";
    EXPECT_EQ(versionOf(write("nobodys", "x")), "");
    EXPECT_EQ(zul::posix::debianVersionOf(desk, (folder_ / "none").string()), "");
}

// The first line that a command prints.
std::string answerOf(const std::string& command) {
    std::FILE* const pipe = popen(command.c_str(), "r");
    char line[512] = {};
    const bool any = pipe != nullptr && std::fgets(line, sizeof line, pipe) != nullptr;
    if (pipe != nullptr) pclose(pipe);
    const std::string text = any ? line : "";
    return text.substr(0, text.find('\n'));
}

TEST(FileVersionOfLibraries, APackagedFileHasTheVersionOfItsPackage) {
    if (answerOf("command -v dpkg-query").empty()) GTEST_SKIP() << "this system has no dpkg-query";
    const std::string version = answerOf("dpkg-query -W -f='${Version}\\n' libc6 2>/dev/null");
    if (version.empty()) GTEST_SKIP() << "the package libc6 is not installed";
    void* const library = dlopen("libm.so.6", RTLD_NOW);
    ASSERT_NE(library, nullptr);
    const std::string file = zul::getDllPath(library) + "libm.so.6";
    dlclose(library);
    EXPECT_EQ(zul::getFileVersion(file), version);
    EXPECT_EQ(zul::getFileVersion(fs::canonical(file).string()), version);
    const std::string shell = answerOf("dpkg-query -W -f='${Version}\\n' bash 2>/dev/null");
    EXPECT_EQ(zul::getFileVersion("/bin/bash"), shell);
    EXPECT_EQ(zul::getFileVersion("/usr/bin/bash"), shell);
}

}  // namespace
