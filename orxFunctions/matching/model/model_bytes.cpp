#include "orxFunctions/matching/model/model_bytes.h"

#include <zlib.h>

#include <cmath>
#include <cstdint>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/matching/model/byte_fields.h"
#include "orxFunctions/matching/model/model_limits.h"

namespace orx::matching {
namespace {

constexpr std::uint32_t kVersion = 1;
constexpr std::size_t kChecksumBytes = 4;
constexpr std::size_t kPointBytes = 52;
constexpr std::size_t kLevelPointBytes = 16;

constexpr std::uint32_t kSignsAreKnown = 1;
constexpr std::uint32_t kAnglesAreFree = 2;
constexpr std::uint32_t kAShiftIsFree = 4;
constexpr std::uint32_t kScaleIsFree = 8;
constexpr std::uint32_t kAllFlags = 15;

constexpr std::uint32_t kMostWarnings = 32;
constexpr std::uint32_t kLongestWarning = 1024;
constexpr std::int32_t kHighestSymmetry = 64;
// The outline's points and their distances: the picture, seen from the farthest reference point.
constexpr double kLargestCoordinate = 4 * kFarthest;
constexpr double kLargestContrast = 1e4;  // that a blurred step is counted up to
constexpr double kLargestDeviation = 1e4;
constexpr double kUnitTolerance = 1e-3;

// The first byte is no text, line ends show what a transfer as text would change.
std::string magic() { return std::string("\x89ORXPM\r\n", 8); }

std::uint32_t checksumOf(const std::string& bytes, std::size_t size) {
    return static_cast<std::uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(size)));
}

std::uint32_t flagsOf(const ModelData& model) {
    return (model.signsAreKnown ? kSignsAreKnown : 0) | (model.report.anglesAreFree ? kAnglesAreFree : 0) |
           (model.report.aShiftIsFree ? kAShiftIsFree : 0) | (model.report.scaleIsFree ? kScaleIsFree : 0);
}

void write(ByteWriter& out, const TTeachReport& report) {
    out.f64(report.leastContrast);
    out.f64(report.radius);
    out.i32(report.symmetry);
    out.i32(report.nearSymmetry);
    out.f64(report.nearShare);
    out.f64(report.symmetryCentre.x);
    out.f64(report.symmetryCentre.y);
    out.f64(report.freeDirection);
    out.u32(static_cast<std::uint32_t>(report.warnings.size()));
    for (const std::string& warning : report.warnings) out.text(warning);
}

void write(ByteWriter& out, const OutlinePoint& point) {
    for (const double value : {point.position.x, point.position.y, point.normal.x, point.normal.y,
                               point.deviation, point.contrast}) {
        out.f64(value);
    }
    out.i32(point.chain);
}

void write(ByteWriter& out, const LevelPoint& point) {
    for (const float value : {point.position.x, point.position.y, point.normal.x, point.normal.y}) {
        out.f32(value);
    }
}

// Reads fields one after the other and checks each; what was read is of use as long as ok().
class ModelReader {
  public:
    explicit ModelReader(const std::string& bytes)
        : in_(bytes, bytes.size() - kChecksumBytes) {}  // there are as many

    bool ok() const { return ok_ && in_.fits(); }

    bool readHeader(std::size_t size) {
        demand(in_.raw(magic().size()) == magic());
        demand(in_.u32() == kVersion);
        demand(in_.u32() == size);
        return ok();
    }

    void readModel(ModelData& model) {
        const std::uint32_t flags = in_.u32();
        demand((flags & ~kAllFlags) == 0);
        model.signsAreKnown = (flags & kSignsAreKnown) != 0;
        model.report.anglesAreFree = (flags & kAnglesAreFree) != 0;
        model.report.aShiftIsFree = (flags & kAShiftIsFree) != 0;
        model.report.scaleIsFree = (flags & kScaleIsFree) != 0;
        model.sigma = number(0.5, 5);
        model.contrast = number(0, kLargestContrast);
        model.taught.x = coordinate();
        model.taught.y = coordinate();
        model.taught.angle = coordinate();
        model.taught.scale = number(1e-6, 1e6);
        readReport(model.report);
        readOutline(model);
        readLevels(model);
        demand(in_.left() == 0);
    }

  private:
    void demand(bool condition) { ok_ = ok_ && condition; }

    double number(double low, double high) {
        const double value = in_.f64();
        demand(isBetween(value, low, high));
        return value;
    }
    double coordinate() { return number(-kLargestCoordinate, kLargestCoordinate); }
    std::int32_t symmetry() {
        const std::int32_t value = in_.i32();
        demand(value >= 0 && value <= kHighestSymmetry);
        return value;
    }
    // Of records that must still lie before the end; 0 where they do not.
    std::size_t count(std::size_t least, std::size_t most, std::size_t recordBytes) {
        const std::size_t value = in_.u32();
        demand(value >= least && value <= most && value <= in_.left() / recordBytes);
        return ok() ? value : 0;
    }
    template <typename Vector>
    void demandUnit(const Vector& v) {
        demand(std::abs(std::hypot(v.x, v.y) - 1) <= kUnitTolerance);
    }

    void readReport(TTeachReport& report) {
        report.leastContrast = number(0, kLargestContrast);
        report.radius = number(0, 2 * kLargestCoordinate);
        report.symmetry = symmetry();
        report.nearSymmetry = symmetry();
        report.nearShare = number(0, 1);
        report.symmetryCentre.x = coordinate();
        report.symmetryCentre.y = coordinate();
        report.freeDirection = number(0, 180);
        const std::size_t warnings = count(0, kMostWarnings, 4);
        for (std::size_t i = 0; i < warnings && ok(); ++i) {
            report.warnings.push_back(in_.raw(count(0, kLongestWarning, 1)));
        }
    }

    void readOutline(ModelData& model) {
        const std::size_t points = count(kLeastPoints, kMostPoints, kPointBytes);
        model.outline.resize(points);
        int chain = 0;
        for (OutlinePoint& point : model.outline) {
            point.position.x = coordinate();
            point.position.y = coordinate();
            point.normal.x = number(-2, 2);
            point.normal.y = number(-2, 2);
            demandUnit(point.normal);
            point.deviation = number(0, kLargestDeviation);
            point.contrast = number(0, kLargestContrast);
            point.chain = in_.i32();
            // They begin at 0 and count up one by one.
            demand(point.chain == chain || (&point != &model.outline.front() && point.chain == chain + 1));
            chain = point.chain;
            if (!ok()) return;
        }
    }

    void readLevels(ModelData& model) {
        model.levels.resize(count(1, kMostLevels, 4));
        for (ModelLevel& level : model.levels) {
            level.points.resize(count(kLeastPoints, kMostPoints, kLevelPointBytes));
            for (LevelPoint& point : level.points) {
                point.position.x = levelCoordinate();
                point.position.y = levelCoordinate();
                point.normal.x = levelCoordinate();
                point.normal.y = levelCoordinate();
                demandUnit(point.normal);
            }
            model.report.pointsPerLevel.push_back(static_cast<int>(level.points.size()));
            if (!ok()) return;
        }
    }

    float levelCoordinate() {
        const float value = in_.f32();
        demand(isBetween(value, -kLargestCoordinate, kLargestCoordinate));
        return value;
    }

    ByteReader in_;
    bool ok_ = true;
};

}  // namespace

std::string bytesOfModel(const ModelData& model) {
    ByteWriter out;
    out.u32(flagsOf(model));
    for (const double value : {model.sigma, model.contrast, model.taught.x, model.taught.y,
                               model.taught.angle, model.taught.scale}) {
        out.f64(value);
    }
    write(out, model.report);
    out.u32(static_cast<std::uint32_t>(model.outline.size()));
    for (const OutlinePoint& point : model.outline) write(out, point);
    out.u32(static_cast<std::uint32_t>(model.levels.size()));
    for (const ModelLevel& level : model.levels) {
        out.u32(static_cast<std::uint32_t>(level.points.size()));
        for (const LevelPoint& point : level.points) write(out, point);
    }

    constexpr std::size_t kNumbersAround = 12;  // version, size and checksum
    ByteWriter file;
    file.raw(magic());
    file.u32(kVersion);
    file.u32(static_cast<std::uint32_t>(magic().size() + kNumbersAround + out.bytes().size()));
    file.raw(out.bytes());
    file.u32(checksumOf(file.bytes(), file.bytes().size()));
    return file.bytes();
}

bool modelOfBytes(const std::string& bytes, ModelData& model) {
    if (bytes.size() < kChecksumBytes || bytes.size() > kMostModelBytes) return false;
    const std::size_t checked = bytes.size() - kChecksumBytes;
    ModelReader reader(bytes);
    if (!reader.readHeader(bytes.size())) return false;
    const std::string end = bytes.substr(checked);
    if (ByteReader(end, end.size()).u32() != checksumOf(bytes, checked)) return false;
    reader.readModel(model);
    model.report.status = reader.ok() ? msOk : msUnreadable;
    return reader.ok();
}

}  // namespace orx::matching
