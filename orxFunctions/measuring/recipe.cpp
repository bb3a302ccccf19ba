#include "orxFunctions/measuring/recipe.h"

#include <array>
#include <cstdio>
#include <utility>

#include "orxFunctions/foundation/file_refusal_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/measuring/recipe/recipe_data.h"
#include "orxFunctions/platform/file_access_internal.h"

namespace orx {
namespace {

constexpr std::size_t kMostBytes = (4U << 20U) + 1;

// Empty for what can't be read. A file that is too long is cut where the reader sees that it is.
bool readText(const std::filesystem::path& path, std::string& text) {
    const platform::File file = platform::openToRead(path);
    if (!file) return false;
    std::array<char, 1U << 16U> block{};
    std::size_t count = 0;
    while (text.size() < kMostBytes && (count = std::fread(block.data(), 1, block.size(), file.get())) > 0) {
        text.append(block.data(), count);
    }
    return std::ferror(file.get()) == 0;
}

const std::shared_ptr<const recipes::RecipeData>& emptyRecipe() {
    static const auto kEmpty = [] {
        auto data = std::make_shared<recipes::RecipeData>();
        data->problems.push_back({0, "", "no recipe was read"});
        return std::shared_ptr<const recipes::RecipeData>(std::move(data));
    }();
    return kEmpty;
}

void tellProblems(const recipes::RecipeData& data, const char* function) {
    if (!data.problems.empty())
        refuse(rcFileFormat, function, "%zu problems; the first: %s", data.problems.size(),
               data.problems.front().sentence().c_str());
}

}  // namespace

std::string TRecipeProblem::sentence() const {
    std::string where = line > 0 ? "line " + std::to_string(line) : "";
    if (!field.empty()) where += (where.empty() ? "" : ", ") + field;
    return where.empty() ? text : where + ": " + text;
}

TRecipe::TRecipe() : data_(emptyRecipe()) {}
TRecipe::TRecipe(std::shared_ptr<const recipes::RecipeData> data)
    : data_(data ? std::move(data) : emptyRecipe()) {}
// Moving copies: no recipe is ever without data.
TRecipe::TRecipe(const TRecipe&) = default;
TRecipe::TRecipe(TRecipe&& other) noexcept : data_(other.data_) {}
TRecipe& TRecipe::operator=(const TRecipe&) = default;
TRecipe& TRecipe::operator=(TRecipe&& other) noexcept {
    data_ = other.data_;
    return *this;
}
TRecipe::~TRecipe() = default;

bool TRecipe::valid() const { return data_->problems.empty(); }
const std::vector<TRecipeProblem>& TRecipe::problems() const { return data_->problems; }
const std::string& TRecipe::name() const { return data_->name; }
double TRecipe::confidence() const { return data_->confidence; }
const std::vector<TRecipeTarget>& TRecipe::targets() const { return data_->targets; }
const std::string& TRecipe::text() const { return data_->text; }
cv::Size TRecipe::pictureSize() const { return data_->plane ? data_->plane->size() : cv::Size(); }

std::vector<std::string> TRecipe::featureNames() const {
    std::vector<std::string> names;
    for (const recipes::FeatureSpec& feature : data_->features) names.push_back(feature.name);
    return names;
}

TRecipeResult TRecipe::run(const cv::Mat& img) const { return recipes::runRecipe(*data_, img); }

TRecipe parseRecipe(const std::string& text, const std::string& folder) {
    auto data = std::make_shared<recipes::RecipeData>();
    recipes::readRecipeText(text, folder, *data);
    tellProblems(*data, "parseRecipe");
    return TRecipe(std::move(data));
}

TRecipe readRecipe(const std::string& fileName) {
    const std::filesystem::path path = platform::toPath(fileName);
    std::string text;
    if (!platform::leadsToFile(path) || !readText(path, text)) {
        auto data = std::make_shared<recipes::RecipeData>();
        data->problems.push_back({0, "", "the file can't be read: " + fileName});
        refuseToRead("readRecipe", path);
        return TRecipe(std::move(data));
    }
    const std::size_t end = fileName.find_last_of("/\\");
    auto data = std::make_shared<recipes::RecipeData>();
    recipes::readRecipeText(text, end == std::string::npos ? "." : fileName.substr(0, end + 1), *data);
    tellProblems(*data, "readRecipe");
    return TRecipe(std::move(data));
}

}  // namespace orx
