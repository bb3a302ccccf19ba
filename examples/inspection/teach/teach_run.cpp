#include "inspection/teach/teach_run.h"

#include <system_error>
#include <vector>

#include "inspection/report/table.h"
#include "inspection/report/utf8.h"
#include "inspection/run/image_source.h"
#include "inspection/run/output_folder.h"
#include "orxFunctions/orxfunctions.h"

namespace inspection {
namespace {

namespace fs = std::filesystem;

constexpr const char* kModelFile = "recipe.part";
constexpr std::size_t kLongestName = 100;

// As the recipe names it: seen from its folder where that can be.
std::string seenFrom(const fs::path& folder, const std::string& file) {
    if (file.empty()) return file;
    std::error_code failure;
    const fs::path seen = fs::proximate(fs::u8path(file), folder, failure);
    return failure ? file : seen.generic_u8string();
}

std::string boxText(const cv::Rect& box) {
    return std::to_string(box.x) + "," + std::to_string(box.y) + "," + std::to_string(box.width) + "," +
           std::to_string(box.height);
}

std::string quotedFor(const std::string& argument) {
    return argument.find_first_of(" '\"\\$`&;|<>()*?[]#~!") == std::string::npos ? argument
                                                                                 : "\"" + argument + "\"";
}

class Teaching {
  public:
    Teaching(const Options& options, std::ostream& out, std::ostream& log)
        : options_(options),
          teach_(options.teach),
          out_(out),
          log_(log),
          folder_(fs::u8path(options.output)),
          recipeFile_(folder_.file("recipe.json")) {}

    int run() {
        std::string problem;
        if (!folder_.create(problem))
            return refuse("the output folder " + cleanUtf8(options_.output) + " can't be used: " + problem);
        const orx::TProposalOptions wanted = proposalOptions();
        for (const fs::path& file : {recipeFile_, folder_.file(kModelFile)}) {
            std::error_code ignored;
            const bool isWritten = file == recipeFile_ || wanted.teach;
            if (isWritten && !options_.batch.again && fs::exists(file, ignored))
                return refuse(
                    displayName(file) +
                    " is there already: choose another folder by --output, or replace it by --again");
        }
        const cv::Mat picture = readDeepGrey(fs::u8path(teach_.picture), problem);
        if (picture.empty()) return refuse(cleanUtf8(teach_.picture) + ": " + problem);
        const orx::TProposal proposal = orx::proposeRecipe(picture, wanted);
        if (!proposal.valid) return refuseProposal(proposal);
        if (!write(proposal)) return 1;
        return tell(picture, proposal);
    }

  private:
    int refuse(const std::string& problem) {
        log_ << "orx_inspection: " << problem << "\n";
        return 1;
    }

    int refuseProposal(const orx::TProposal& proposal) {
        refuse(cleanUtf8(teach_.picture) + ": no recipe: " + cleanUtf8(proposal.problem));
        if (!teach_.fixed && teach_.model.empty())
            log_ << "--region X,Y,W,H says where the part lies, --fixed does without finding it\n";
        return 1;
    }

    orx::TProposalOptions proposalOptions() const {
        orx::TProposalOptions options;
        options.name = teach_.name;
        if (options.name.empty()) options.name = nameOfPicture();
        options.teach = !teach_.fixed && teach_.model.empty();
        const fs::path folder = fs::u8path(options_.output);
        options.model = options.teach ? kModelFile : seenFrom(folder, teach_.model);
        options.calibration = seenFrom(folder, teach_.calibration);
        options.folder = options_.output;
        options.region = teach_.region.value_or(cv::Rect());
        options.maxFeatures = teach_.features;
        options.minLength = teach_.minLength;
        options.share = teach_.share;
        return options;
    }

    std::string nameOfPicture() const {
        const std::string name = displayName(fs::u8path(teach_.picture).stem());
        return name.empty() || name.size() > kLongestName ? "part" : name;
    }

    // The recipe last: where it is, all that it names is.
    bool write(const orx::TProposal& proposal) {
        const fs::path model = folder_.file(kModelFile);
        if (proposal.partModel.valid() &&
            orx::writePartModel(model.u8string(), proposal.partModel) != orx::msOk)
            return unwritable(model);
        const fs::path features = folder_.file("features.png");
        if (!writeWholePicture(features, proposal.picture)) return unwritable(features);
        if (!orx::writeWholeFile(recipeFile_, proposal.text)) return unwritable(recipeFile_);
        return true;
    }

    bool unwritable(const fs::path& file) {
        log_ << "orx_inspection: " << displayName(file) << " can't be written\n";
        return false;
    }

    int tell(const cv::Mat& picture, const orx::TProposal& proposal) {
        const orx::TRecipe recipe = orx::readRecipe(recipeFile_.u8string());
        const orx::TRecipeResult result = recipe.run(picture);
        tellPart(proposal);
        tellFeatures(recipe, result);
        tellValues(result);
        out_ << "\nmodel    "
             << (proposal.partModel.valid() ? displayName(folder_.file(kModelFile))
                 : teach_.model.empty()     ? "none: parts lie where this one does"
                                            : cleanUtf8(teach_.model))
             << "\npicture  " << displayName(folder_.file("features.png")) << "\nrecipe   "
             << displayName(recipeFile_) << "\n";
        const bool measures = recipe.valid() && result.verdict != orx::vdNotMeasured;
        if (!measures)
            return refuse("the recipe does not measure the picture that it was taught from: " +
                          cleanUtf8(recipe.valid() ? result.problem : recipe.problems().front().sentence()));
        out_ << "\nThe tolerances are guesses: edit them. Then measure by it:\n  orx_inspection --recipe "
             << quotedFor(displayName(recipeFile_)) << " -o results PICTURES...\n";
        return 0;
    }

    void tellPart(const orx::TProposal& proposal) {
        out_ << "part in " << boxText(proposal.region.box);
        if (proposal.region.others > 0)
            out_ << "; " << proposal.region.others
                 << (proposal.region.others == 1 ? " other thing" : " other things")
                 << " beside it: --region takes another one";
        out_ << "\n";
        for (const std::string& warning : proposal.partModel.report().warnings)
            if (proposal.partModel.valid()) out_ << "model: " << cleanUtf8(warning) << "\n";
    }

    void tellFeatures(const orx::TRecipe& recipe, const orx::TRecipeResult& result) {
        std::vector<std::vector<std::string>> rows = {{"feature", "edge points", "rms (px)"}};
        for (const orx::TRecipeFeature& feature : result.features)
            rows.push_back(
                {cleanUtf8(feature.name), std::to_string(feature.points.size()), fixedText(feature.rms, 3)});
        out_ << "\n" << recipe.featureNames().size() << " features, the largest first\n";
        printAligned(out_, rows);
    }

    void tellValues(const orx::TRecipeResult& result) {
        std::vector<std::vector<std::string>> rows = {{"value", "nominal", "lower", "upper", "unit"}};
        for (const orx::TRecipeValue& value : result.values)
            rows.push_back({cleanUtf8(value.name), fixedText(value.nominal, 4),
                            fixedText(value.tolerance.lower, 4), fixedText(value.tolerance.upper, 4),
                            value.unit});
        out_ << "\n" << result.values.size() << " values\n";
        if (rows.size() > 1) printAligned(out_, rows);
    }

    const Options& options_;
    const TeachOptions& teach_;
    std::ostream& out_;
    std::ostream& log_;
    OutputFolder folder_;
    fs::path recipeFile_;
};

}  // namespace

int runTeach(const Options& options, std::ostream& out, std::ostream& log) {
    return Teaching(options, out, log).run();
}

}  // namespace inspection
