// Recipes: any text read, with its problems told; what is sound measures a picture, alike on many threads,
// and tells it as JSON, as a drawing and as a sheet. Recipes proposed from a picture are sound themselves.
#include <json/json.h>

#include <memory>
#include <opencv2/core.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/flat_plane.h"
#include "tests/support/temporary_folder.h"

namespace {

using fuzz::require;

// A plate with two holes and a slot-like bar.
cv::Mat plate() {
    cv::Mat image(120, 160, CV_8UC1, cv::Scalar(30));
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols; ++x) {
            const auto covered = [](double inside) { return std::min(1.0, std::max(0.0, inside + 0.5)); };
            double level = covered(std::min({x - 15.0, 145.0 - x, y - 12.0, 108.0 - y}));
            level -= covered(12 - cv::norm(cv::Point2d(x - 50, y - 45)));
            level -= covered(9 - cv::norm(cv::Point2d(x - 110, y - 50)));
            level -= covered(std::min({x - 40.0, 120.0 - x, y - 80.0, 92.0 - y}));
            image.at<uchar>(y, x) = static_cast<uchar>(30 + 180 * std::max(0.0, level));
        }
    }
    return image;
}

// Half a millimetre a pixel, a little askew; what a recipe may name as "plane.json".
orx::TPlaneCalibration planeOfPlate() {
    orx::TPlaneCalibration plane = test::flatPlane();
    plane.imageSize = {160, 120};
    plane.homography = cv::Matx33d(2, 0.01, 1, -0.02, 2, 3, 1e-4, 0, 1);
    for (int i = 0; i < 8; ++i) plane.covariance(i, i) = i < 6 ? 1e-6 : 1e-12;
    return plane;
}

bool isJson(const std::string& text) {
    const Json::CharReaderBuilder builder;
    Json::Value value;
    std::string errors;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    return reader->parse(text.data(), text.data() + text.size(), &value, &errors);
}

void checkRun(const orx::TRecipe& recipe, const cv::Mat& image) {
    cv::setNumThreads(1);
    const orx::TRecipeResult result = recipe.run(image);
    require(result.values.size() == recipe.targets().size(), "a value for each target");
    orx::TVerdict whole = orx::vdNoLimits;
    for (std::size_t i = 0; i < result.values.size(); ++i) {
        const orx::TRecipeValue& value = result.values[i];
        require(value.name == recipe.targets()[i].name && value.unit == recipe.targets()[i].unit,
                "in the same order");
        require(value.measured == value.problem.empty(), "a problem tells why it is not measured");
        require(!value.measured || value.deviation >= 0, "a value has its uncertainty");
        require(value.measured || value.verdict == orx::vdNotMeasured, "never a pass");
        whole = orx::worseVerdict(whole, value.verdict);
        require(!orx::measuredText(value).empty(), "values as text");
    }
    if (result.problem.empty() && !result.values.empty())
        require(result.verdict == whole, "the worst verdict");
    orx::TJsonResultOptions plain;
    plain.milliseconds = false;
    const std::string json = orx::toJson(result, plain);
    require(isJson(json) && json.find('\n') == std::string::npos, "a line of JSON");
    cv::setNumThreads(3);
    require(orx::toJson(recipe.run(image), plain) == json, "as on one thread");
    cv::setNumThreads(1);
    require(orx::drawRecipeResult(image, recipe, result).type() == CV_8UC3, "a drawing in colour");
    require(orx::drawRecipeSheet(image, recipe, result).type() == CV_8UC3, "a sheet in colour");
    std::vector<cv::Vec3b> palette;
    std::vector<unsigned char> png;
    const cv::Mat indices = orx::drawIndexedRecipeSheet(image, recipe, result, palette);
    require(indices.empty() == (image.channels() != 1), "indices of one channel");
    require(indices.empty() || orx::encodeIndexedPng(indices, palette, png), "a file of them");
}

void checkText(const std::string& text, const cv::Mat& image) {
    const std::filesystem::path folder = fuzz::emptyFolder();
    require(orx::writePlaneCalibration((folder / "plane.json").string(), planeOfPlate()) == orx::plOk,
            "the plane is written");
    const orx::TRecipe recipe = orx::parseRecipe(text, folder.string());
    const auto& problems = recipe.problems();
    require(recipe.valid() == problems.empty() && problems.size() <= 100, "valid without problems");
    for (const orx::TRecipeProblem& problem : problems)
        require(!problem.text.empty() && problem.line >= 0 && !problem.sentence().empty(),
                "problems are told");
    if (!recipe.valid()) {
        require(recipe.run(image).values.empty(), "no values of a recipe that is not valid");
        return;
    }
    require(recipe.text() == text, "the text as it was read");
    const std::string file = (folder / "a.json").string();
    test::writeBytes(file, text);
    require(orx::readRecipe(file).valid(), "sound from a file, too");
    checkRun(recipe, image);
}

void checkProposal(fuzz::Input& input) {
    orx::TProposalOptions options;
    options.maxFeatures = input.between(0, 30);
    options.minLength = input.option(8, 40);
    options.share = input.option(0, 0.1);
    options.leastPixels = input.option(0, 1);
    options.teach = input.flag();
    if (options.teach) options.model = "a.part";
    const std::filesystem::path folder = fuzz::emptyFolder();
    options.folder = folder.string();
    const cv::Mat image = input.flag() ? plate() : input.picture();
    const orx::TProposal proposal = orx::proposeRecipe(image, options);
    require(proposal.valid == proposal.problem.empty(), "a problem tells why there is none");
    if (!proposal.valid) return;
    if (options.teach)
        require(orx::writePartModel((folder / "a.part").string(), proposal.partModel) == orx::msOk,
                "the model");
    const orx::TRecipe recipe = orx::parseRecipe(proposal.text, options.folder);
    require(recipe.valid() && static_cast<int>(recipe.targets().size()) == proposal.values, "a sound recipe");
    checkRun(recipe, image);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const cv::Mat image = plate();
    cv::setNumThreads(1);
    fuzz::Input input(bytes, size);
    // Texts begin with a brace: they are inputs as they stand.
    if (size > 0 && bytes[0] == '{') {
        checkText(input.rest(), image);
    } else if (input.byte() % 4U == 0) {
        checkProposal(input);
    } else {
        checkText(input.rest(), image);
    }
    fuzz::forgetMessages();
    return 0;
}
