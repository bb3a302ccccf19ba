// Part models as bytes, with the checksum put right so that what lies behind it is reached: what is accepted
// is written to the same bytes, used, and drawn.
#include <zlib.h>

#include <cmath>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/temporary_folder.h"

namespace {

using fuzz::require;

std::string withChecksum(std::string bytes) {
    if (bytes.size() < 4) return bytes;
    const std::size_t checked = bytes.size() - 4;
    const uLong sum = crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(checked));
    for (std::size_t i = 0; i < 4; ++i) bytes[checked + i] = static_cast<char>(sum >> (8 * i) & 0xFFU);
    return bytes;
}

void checkModel(const orx::TPartModel& model) {
    const orx::TTeachReport& report = model.report();
    require(!report.pointsPerLevel.empty() && report.pointsPerLevel.size() <= 8, "levels of a model");
    require(model.outline().size() == model.normals().size() && !model.outline().empty(), "an outline");
    for (const cv::Point2d& normal : model.normals())
        require(std::isfinite(normal.x) && std::isfinite(normal.y), "normals are numbers");
    cv::Mat image(48, 64, CV_8UC1, cv::Scalar(40));
    image(cv::Rect(20, 14, 24, 18)) = 200;
    orx::TFindOptions options;
    options.minScore = 0.4;
    options.angleRange = 20;
    const orx::TFindResult found = orx::findParts(image, model, options);
    cv::Mat colour(48, 64, CV_8UC3, cv::Scalar::all(0));
    orx::drawPartModel(colour, model, {20, 20, 30, 1});
    orx::drawFoundParts(colour, model, found.parts);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    cv::setNumThreads(1);
    const std::string raw(reinterpret_cast<const char*>(bytes), size);
    const std::string text = withChecksum(raw);
    const orx::TPartModel model = orx::partModelFromBytes(text);
    if (!model.valid()) {
        require(model.report().status == orx::msUnreadable, "refused bytes have that status");
        require(orx::partModelToBytes(model).empty(), "and are not written");
        return 0;
    }
    require(orx::partModelToBytes(model) == text, "written, the same bytes");
    require(raw == text || !orx::partModelFromBytes(raw).valid(), "a wrong checksum is refused");
    const std::string file = (fuzz::emptyFolder() / "a.part").string();
    require(orx::writePartModel(file, model) == orx::msOk && test::bytesOf(file) == text,
            "a file of these bytes");
    require(orx::readPartModel(file).valid(), "and read again");
    checkModel(model);
    return 0;
}
