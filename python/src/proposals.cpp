// First recipes from pictures of good parts: measuring/recipe_proposal.h.
#include "orxFunctions/measuring/recipe_proposal.h"

#include <pybind11/pybind11.h>

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/matching/part_model_file.h"
#include "refusals.h"
#include "texts.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

using Box = std::tuple<int, int, int, int>;
// box, polygon, others
using Region = std::tuple<Box, ArrayOf<double>, int>;
// text, picture, features, values, region, the bytes of the model that was taught
using Proposal = std::tuple<py::str, ArrayOf<unsigned char>, int, int, Region, std::optional<py::bytes>>;
// name, model, teach, calibration, folder, region, maxFeatures, minLength, share, leastPixels
using Options = std::tuple<std::string, std::string, bool, std::string, py::bytes, std::optional<Box>, int,
                           double, double, double>;

Region tupleOf(orx::TPartRegion&& region) {
    const cv::Rect& box = region.box;
    return {Box(box.x, box.y, box.width, box.height), arrayFrom(std::move(region.polygon)), region.others};
}

std::optional<Region> findPartRegion(const Argument& image) {
    const Image picture = imageOf(image, "image", ikAny);
    orx::TPartRegion region = unlocked([&] { return orx::findPartRegion(picture.mat); });
    if (region.found) return tupleOf(std::move(region));
    return nothingFound();
}

// The library says that an option is out of range, but not which.
void wantWithin(const char* name, double value, double least, double most) {
    if (value >= least && value <= most) return;
    const auto told = [](double number) { return std::string(py::str("{:g}").format(number)); };
    throw py::value_error(std::string(name) + " is " + told(value) + "; " + told(least) + " to " +
                          told(most) + " is taken");
}

void wantText(const char* name, const std::string& text, bool wanted) {
    if (wanted && text.empty()) throw py::value_error(std::string(name) + ": expected a name, got none");
    if (text.size() > 200) throw py::value_error(std::string(name) + ": expected at most 200 bytes of text");
}

cv::Rect regionOf(const Box& given, cv::Size size) {
    const auto [x, y, width, height] = given;
    const bool inside = x >= 0 && y >= 0 && width >= 1 && height >= 1 && width <= size.width &&
                        height <= size.height && x <= size.width - width && y <= size.height - height;
    if (!inside) {
        throw py::value_error("region: expected (x, y, width, height) inside of the image of " +
                              std::to_string(size.width) + " x " + std::to_string(size.height) + " pixels");
    }
    return {x, y, width, height};
}

orx::TProposalOptions optionsOf(const Options& given, cv::Size size) {
    orx::TProposalOptions options;
    py::bytes folder;
    std::optional<Box> region;
    std::tie(options.name, options.model, options.teach, options.calibration, folder, region,
             options.maxFeatures, options.minLength, options.share, options.leastPixels) = given;
    options.folder = folder;
    wantText("name", options.name, true);
    wantText("model", options.model, options.teach);
    wantText("calibration", options.calibration, false);
    if (region) options.region = regionOf(*region, size);
    wantWithin("max_features", options.maxFeatures, 1, 500);
    wantWithin("min_length", options.minLength, 8.0, 1e6);
    wantWithin("share", options.share, 0.0, 10.0);
    wantWithin("least_pixels", options.leastPixels, 0.0, 1e6);
    if (options.share + options.leastPixels == 0.0)
        throw py::value_error("share, least_pixels: expected one of them above 0");
    return options;
}

std::optional<Proposal> proposeRecipe(const Argument& image, const Options& given) {
    const Image picture = imageOf(image, "image", ikAny);
    const orx::TProposalOptions options = optionsOf(given, picture.mat.size());
    orx::TProposal proposal = unlocked([&] { return orx::proposeRecipe(picture.mat, options); });
    if (!proposal.valid) return nothingFound();
    std::optional<py::bytes> model;
    if (proposal.partModel.valid()) model = py::bytes(orx::partModelToBytes(proposal.partModel));
    return Proposal(textFrom(proposal.text), bytesFrom(std::move(proposal.picture)), proposal.features,
                    proposal.values, tupleOf(std::move(proposal.region)), std::move(model));
}

}  // namespace

void bindProposals(py::module_& core) {
    core.def("find_part_region", &findPartRegion, py::arg("image"));
    core.def("propose_recipe", &proposeRecipe, py::arg("image"), py::arg("options"));
}

}  // namespace orxpy
