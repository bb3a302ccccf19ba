#include "orxFunctions/matching/part_model_file.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>

#include "taught_scene.h"
#include "tests/support/temporary_folder.h"

namespace {

using namespace taught_scene;
using orx::readPartModel;
using orx::TPartModel;
using orx::TPartPose;
using orx::TTeachReport;
using orx::writePartModel;

// A gear with a reference point of its own: symmetry, a centre elsewhere, a warning.
TPartModel gearModel() {
    orx::TTeachOptions options;
    options.hasReference = true;
    options.reference = {70, 100};
    options.direction = 17;
    Look look;
    look.noise = 3;
    const cv::Mat img = picture({gear(12, 60, 50), hole({}, 18)}, {100.3, 90.8, 17, 1}, look);
    return orx::teachPart(img, cv::Rect(25, 15, 150, 150), options);
}

// So plain that nothing is warned of.
TPartModel smallModel() {
    const Loop ell = {{-13, -12}, {-4, -12}, {-4, 3}, {13, 3}, {13, 12}, {-13, 12}};
    return orx::teachPart(picture({ell}, {30, 30, 10, 1}, {}, {60, 60}), cv::Rect(10, 10, 40, 40));
}

template <typename Number>
bool sameBits(const std::vector<Number>& a, const std::vector<Number>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Number)) == 0;
}

TEST(PartModelFile, GivesBackWhatWasWrittenToTheLastBit) {
    const test::TemporaryFolder folder;
    // Chinese in UTF-8, as hosts name parts.
    for (const char* name : {"gear.orxpm", "\xE9\xBD\xBF\xE8\xBD\xAE.orxpm"}) {
        const TPartModel written = gearModel();
        ASSERT_EQ(writePartModel(folder / name, written), orx::msOk) << name;
        const TPartModel read = readPartModel(folder / name);
        ASSERT_TRUE(read.valid()) << name;
        EXPECT_TRUE(sameBits(read.outline(), written.outline()));
        EXPECT_TRUE(sameBits(read.normals(), written.normals()));
        const TPartPose a = read.taughtPose();
        const TPartPose b = written.taughtPose();
        EXPECT_TRUE(a.x == b.x && a.y == b.y && a.angle == b.angle && a.scale == b.scale);
        const TTeachReport& r = read.report();
        const TTeachReport& w = written.report();
        EXPECT_EQ(r.symmetry, 12);
        EXPECT_EQ(r.symmetryCentre, w.symmetryCentre);
        EXPECT_EQ(r.pointsPerLevel, w.pointsPerLevel);
        EXPECT_TRUE(r.leastContrast == w.leastContrast && r.radius == w.radius);
        EXPECT_EQ(r.warnings, w.warnings);
        EXPECT_FALSE(w.warnings.empty());
        // What the public interface does not show (deviations, levels) shows in the bytes.
        const std::string bytes = orx::partModelToBytes(written);
        EXPECT_TRUE(orx::partModelToBytes(read) == bytes) << name;
        EXPECT_LT(bytes.size(), 100U << 10U);
    }
}

// As a stranger reads it, by docs/part-model.md.
TEST(PartModelFile, HasTheDocumentedLayout) {
    const test::TemporaryFolder folder;
    const TPartModel model = gearModel();
    ASSERT_EQ(writePartModel(folder / "gear.orxpm", model), orx::msOk);
    const std::string bytes = test::bytesOf(folder / "gear.orxpm");
    const auto u32 = [&bytes](std::size_t at) {
        std::uint32_t value = 0;
        for (std::size_t i = 4; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes.at(at + i));
        return value;
    };
    const auto f64 = [&u32](std::size_t at) {
        const std::uint64_t bits = u32(at) | std::uint64_t{u32(at + 4)} << 32U;
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    };
    EXPECT_EQ(bytes.substr(0, 8), "\x89ORXPM\r\n");
    EXPECT_EQ(u32(8), 1U);
    EXPECT_EQ(u32(12), bytes.size());
    EXPECT_EQ(u32(16), 1U);
    EXPECT_EQ(f64(20), 1);  // sigma
    EXPECT_EQ(f64(36), 70);
    EXPECT_EQ(f64(44), 100);
    EXPECT_EQ(f64(52), 17);
    EXPECT_EQ(f64(60), 1);
    EXPECT_EQ(u32(84), 12U);
    std::size_t at = 128;
    for (std::uint32_t left = u32(124); left > 0; --left) at += 4 + u32(at);
    const std::vector<cv::Point2d> outline = model.outline();
    ASSERT_EQ(u32(at), outline.size());
    EXPECT_EQ(f64(at + 4 + 52), outline[1].x);
    at += 4 + 52 * outline.size();
    const std::vector<int> levels = model.report().pointsPerLevel;
    ASSERT_EQ(u32(at), levels.size());
    at += 4;
    for (const int points : levels) {
        EXPECT_EQ(u32(at), static_cast<std::uint32_t>(points));
        at += 4 + 16 * static_cast<std::size_t>(points);
    }
    EXPECT_EQ(at + 4, bytes.size());
}

TEST(PartModelFile, RefusesWhatIsNotThere) {
    const test::TemporaryFolder folder;
    EXPECT_EQ(readPartModel(folder / "missing").report().status, orx::msUnreadable);
    EXPECT_EQ(readPartModel(folder.name()).report().status, orx::msUnreadable);
    EXPECT_EQ(writePartModel(folder / "none/gear.orxpm", smallModel()), orx::msUnwritable);
    EXPECT_EQ(writePartModel(folder / "nothing.orxpm", TPartModel()), orx::msBadModel);
    EXPECT_FALSE(std::filesystem::exists(folder / "nothing.orxpm"));
    test::writeBytes(folder / "empty", "");
    EXPECT_FALSE(readPartModel(folder / "empty").valid());
    EXPECT_EQ(orx::partModelToBytes(TPartModel()), "");
}

// CRC-32, so that changed files can be made to look whole.
std::uint32_t checksum(const std::string& bytes, std::size_t size) {
    static const std::array<std::uint32_t, 256> kTable = [] {
        std::array<std::uint32_t, 256> table{};
        for (std::uint32_t i = 0; i < 256; ++i) {
            std::uint32_t crc = i;
            for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1U ? 0xEDB88320U : 0U);
            table[i] = crc;
        }
        return table;
    }();
    std::uint32_t crc = 0xFFFFFFFFU;
    for (std::size_t i = 0; i < size; ++i) {
        crc = crc >> 8 ^ kTable[(crc ^ static_cast<unsigned char>(bytes[i])) & 0xFFU];
    }
    return ~crc;
}

void setNumber(std::string& bytes, std::size_t at, std::uint64_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) bytes[at + i] = static_cast<char>(value >> (8 * i) & 0xFFU);
}

void seal(std::string& bytes) { setNumber(bytes, bytes.size() - 4, checksum(bytes, bytes.size() - 4), 4); }

class HostileModelFile : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(smallModel().valid()); }

    static TPartModel read(const std::string& bytes) { return orx::partModelFromBytes(bytes); }

    const std::string bytes_ = orx::partModelToBytes(smallModel());
};

TEST_F(HostileModelFile, IsRefusedWhereverItIsCutOrChanged) {
    ASSERT_TRUE(read(bytes_).valid());
    for (std::size_t size = 0; size < bytes_.size(); ++size) {
        ASSERT_EQ(read(bytes_.substr(0, size)).report().status, orx::msUnreadable) << size;
    }
    EXPECT_FALSE(read(bytes_ + '\0').valid());
    for (std::size_t i = 0; i < bytes_.size(); ++i) {
        std::string changed = bytes_;
        changed[i] = static_cast<char>(~changed[i]);
        ASSERT_EQ(read(changed).report().status, orx::msUnreadable) << i;
    }
}

// With a checksum that fits: bytes are changed, stretches are cut out.
TEST_F(HostileModelFile, IsReadOrRefusedWithAValidChecksum) {
    int accepted = 0;
    int refused = 0;
    for (std::size_t i = 8; i + 4 < bytes_.size(); ++i) {
        for (const int value : {0xFF, ~bytes_[i] & 0xFF}) {
            std::string changed = bytes_;
            changed[i] = static_cast<char>(value);
            seal(changed);
            const TPartModel model = read(changed);
            ++(model.valid() ? accepted : refused);
            if (!model.valid()) continue;
            // What was accepted is written as it was read.
            ASSERT_EQ(orx::partModelToBytes(model), changed) << i << ' ' << value;
        }
    }
    EXPECT_GT(accepted, 100);
    EXPECT_GT(refused, 100);
    for (std::size_t i = 16; i + 20 < bytes_.size(); i += 3) {
        std::string cut = bytes_;
        cut.erase(i, 8);
        setNumber(cut, 12, cut.size(), 4);
        seal(cut);
        EXPECT_FALSE(read(cut).valid()) << i;
    }
}

// Without warnings the number of points follows theirs.
constexpr std::size_t kWarnings = 124;
constexpr std::size_t kOutline = 128;

TEST_F(HostileModelFile, MakesNoMemoryForCountsThatItCantHold) {
    for (const std::uint32_t count : {1U, 15U, 200000U, 200001U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        for (const std::size_t at : {kWarnings, kOutline}) {
            std::string changed = bytes_;
            setNumber(changed, at, count, 4);
            seal(changed);
            EXPECT_EQ(read(changed).report().status, orx::msUnreadable) << count << ' ' << at;
        }
    }
}

TEST_F(HostileModelFile, HoldsNoNumbersThatAreNone) {
    // Sigma, the place, the first point of the outline and its normal.
    for (const std::size_t at : {std::size_t{20}, std::size_t{36}, kOutline + 4, kOutline + 20}) {
        for (const std::uint64_t bits : {0x7FF8000000000000U, 0x7FF0000000000000U, 0xFFF0000000000000U,
                                         0x7FEFFFFFFFFFFFFFU, 0x4330000000000000U}) {
            std::string changed = bytes_;
            setNumber(changed, at, bits, 8);
            seal(changed);
            EXPECT_EQ(read(changed).report().status, orx::msUnreadable) << at << ' ' << bits;
        }
    }
}

}  // namespace
