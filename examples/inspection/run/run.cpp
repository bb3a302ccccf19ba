#include "inspection/run/run.h"

#include <algorithm>
#include <string>
#include <vector>

#include "inspection/analyse/analyses_sections.h"
#include "inspection/batch/batch_run.h"
#include "inspection/live/live_run.h"
#include "inspection/report/annotate.h"
#include "inspection/report/report_html.h"
#include "inspection/report/report_json.h"
#include "inspection/report/result.h"
#include "inspection/report/table.h"
#include "inspection/report/utf8.h"
#include "inspection/run/camera_run.h"
#include "inspection/run/image_source.h"
#include "inspection/run/output_folder.h"
#include "inspection/run/picture_window.h"
#include "inspection/run/progress.h"
#include "inspection/run/streamed_file.h"
#include "inspection/run/terminal.h"
#include "inspection/teach/teach_run.h"
#include "orxFunctions/orxfunctions.h"

namespace inspection {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> takeMessages() {
    std::vector<std::string> messages;
    std::string text;
    int color = 0;
    while (orx::APPgetMessage(text, color)) messages.push_back(cleanUtf8(zul::toUtf8(text)));
    return messages;
}

// What all pictures of a run share.
class Session {
  public:
    Session(const Options& options, std::ostream& out, std::ostream& log)
        : options_(options),
          out_(out),
          log_(log),
          folder_(fs::u8path(options.output)),
          json_(options.settings) {}

    int run() {
        std::string problem;
        if (!folder_.create(problem)) return refuse("the output folder", options_.output, problem);
        const fs::path htmlFile = folder_.file("report.html");
        StreamedFile htmlStream;
        if (!htmlStream.open(htmlFile))
            return refuse("the report", displayName(htmlFile), "it can't be written");
        HtmlReport html(htmlStream.stream(), options_.settings);

        measureAll(html);
        html.finish();
        const fs::path jsonFile = folder_.file("report.json");
        if (!htmlStream.finish()) return refuse("the report", displayName(htmlFile), "it can't be written");
        if (!orx::writeWholeFile(jsonFile, json_.text()))
            return refuse("the report", displayName(jsonFile), "it can't be written");
        printEnd(htmlFile, jsonFile);
        return tally_.allComplete() ? 0 : 1;
    }

  private:
    int refuse(const char* what, const std::string& name, const std::string& problem) {
        log_ << "orx_inspection: " << what << " " << cleanUtf8(name) << " can't be used: " << problem << "\n";
        return 1;
    }

    void measureAll(HtmlReport& html) {
        const std::vector<ImageSource> sources = listSources(options_.inputs);
        const std::size_t total =
            sources.size() + (options_.syntheticSeed ? 1 : 0) + (options_.partsSeed ? 1 : 0);
        Progress progress(log_, total, isOnTerminal());
        std::size_t done = 0;
        for (const ImageSource& source : sources) {
            progress.show(done++, displayName(source.path.filename()));
            ImageResult result;
            result.name = displayName(source.path);
            std::string problem = source.problem;
            cv::Mat grey;
            if (problem.empty()) grey = readGrey(source.path, problem);
            cv::Mat annotated;
            if (grey.empty())
                result.problems.push_back(problem);
            else
                annotated = measurePicture(grey, source.path, nullptr, result);
            progress.wipe();
            keep(result, annotated, html);
        }
        if (options_.syntheticSeed) measureScene(*options_.syntheticSeed, html);
        if (options_.partsSeed) searchTray(*options_.partsSeed, html);
    }

    void measureScene(std::uint64_t seed, HtmlReport& html) {
        scenes::SceneSettings settings;
        settings.seed = seed;
        const scenes::Scene scene = scenes::renderScene(settings);
        ImageResult result;
        result.name = "scene-" + std::to_string(seed);
        const fs::path file = folder_.file(result.name + ".png");
        const cv::Mat annotated = measurePicture(scene.image, file, &scene, result);
        if (!writeWholePicture(file, scene.image)) result.problems.push_back(unwritable(file));
        keep(result, annotated, html);
    }

    void searchTray(std::uint64_t seed, HtmlReport& html) {
        const PartTray tray = renderPartTray(seed);
        ImageResult result;
        result.name = "parts-" + std::to_string(seed);
        const fs::path file = folder_.file(result.name + ".png");
        FoundParts found = findPartsIn(tray.scene.image, tray.model, tray.find);
        found.truth = compareWithTruth(found.result, tray.scene.parts);
        const auto missed = std::count_if(found.truth.begin(), found.truth.end(),
                                          [](const PartError& error) { return error.part < 0; });
        if (missed > 0)
            result.problems.push_back(std::to_string(missed) + " of " + std::to_string(found.truth.size()) +
                                      " true parts were not found");
        result.analyses.parts = found;
        finishParts(tray.scene.image, file, result);
        if (!writeWholePicture(file, tray.scene.image)) result.problems.push_back(unwritable(file));
        keep(result, {}, html);
    }

    void lookForParts(const cv::Mat& grey, const fs::path& source, ImageResult& result) {
        const PartSettings& parts = options_.settings.parts;
        result.analyses = analyse(grey, {}, options_.settings);
        if (parts.region) {
            result.analyses.taught = TaughtPart{*parts.region, orx::teachPart(grey, *parts.region), ""};
            keepModel(source, *result.analyses.taught, result.problems);
        } else {
            result.analyses.parts = findPartsIn(grey, parts.model, parts.find);
            const orx::TMatchStatus status = result.analyses.parts->result.status;
            if (status != orx::msOk)
                result.problems.push_back(std::string("no parts could be looked for: ") +
                                          orx::matchStatusText(status));
        }
        finishParts(grey, source, result);
    }

    void finishParts(const cv::Mat& grey, const fs::path& source, ImageResult& result) {
        result.status = Status::kMeasured;
        result.hasShapes = false;
        result.size = grey.size();
        writeSections(grey, source, result);
    }

    void keepModel(const fs::path& source, TaughtPart& taught, std::vector<std::string>& problems) {
        orx::TMatchStatus status = taught.model.report().status;
        if (status != orx::msOk) {
            problems.push_back(std::string("the part can't be taught: ") + orx::matchStatusText(status));
            return;
        }
        const fs::path file = folder_.file(source.stem().u8string() + ".part");
        status = orx::writePartModel(file.u8string(), taught.model);
        if (status == orx::msOk)
            taught.file = displayName(file);
        else
            problems.push_back("the model " + displayName(file) + " can't be written");
    }

    // Fills the result; the annotated picture is empty when there is no level, or parts are looked for.
    cv::Mat measurePicture(const cv::Mat& grey, const fs::path& source, const scenes::Scene* scene,
                           ImageResult& result) {
        if (options_.settings.parts.wanted()) {
            lookForParts(grey, source, result);
            return {};
        }
        std::string problem;
        const auto prepared = prepare(grey, options_.settings, problem);
        result.messages = takeMessages();
        if (!prepared) {
            result.problems.push_back(problem);
            return {};
        }
        result.status = Status::kMeasured;
        result.size = grey.size();
        result.level = prepared->level;
        result.brightObjects = prepared->brightObjects;
        result.histogram = prepared->histogram;
        result.features = measure(grey, *prepared, options_.settings);
        if (scene != nullptr) checkTruth(*scene, result);
        result.analyses = analyse(grey, result.features, options_.settings);
        cv::Mat annotated = annotate(grey, result.features, options_.settings.tolerance);
        result.annotatedFile = writePicture(source, "-measured", annotated, result.problems);
        writeSections(grey, source, result);
        return annotated;
    }

    void writeSections(const cv::Mat& grey, const fs::path& source, ImageResult& result) {
        result.sections = sectionsOf(grey, result.analyses);
        const std::vector<std::string> messages = takeMessages();
        result.messages.insert(result.messages.end(), messages.begin(), messages.end());
        for (const Section& section : result.sections) {
            if (section.picture.empty()) continue;
            const std::string file = writePicture(source, section.suffix, section.picture, result.problems);
            if (!file.empty()) result.moreFiles.push_back(file);
        }
    }

    static std::string unwritable(const fs::path& file) {
        return "the picture " + displayName(file) + " can't be written";
    }

    // The name of the file; "" when it can't be written, which is one of the problems then.
    std::string writePicture(const fs::path& source, const std::string& suffix, const cv::Mat& picture,
                             std::vector<std::string>& problems) {
        const fs::path file = folder_.pictureFor(source, suffix);
        if (writeWholePicture(file, picture)) return displayName(file);
        problems.push_back(unwritable(file));
        return "";
    }

    static void checkTruth(const scenes::Scene& scene, ImageResult& result) {
        result.hasTruth = true;
        result.truth = compareWithTruth(result.features, scene);
        const auto missed = std::count_if(result.truth.begin(), result.truth.end(),
                                          [](const TruthError& error) { return error.feature < 0; });
        if (missed > 0)
            result.problems.push_back(std::to_string(missed) + " of " + std::to_string(result.truth.size()) +
                                      " true shapes were not found");
    }

    void keep(const ImageResult& result, const cv::Mat& annotated, HtmlReport& html) {
        tally_.add(result);
        for (const std::string& problem : result.problems)
            log_ << "orx_inspection: " << result.name << ": " << problem << "\n";
        printResult(out_, result, options_.settings.method);
        for (const std::string& message : result.messages) out_ << "message: " << message << "\n";
        if (!result.annotatedFile.empty()) pictures_.push_back(result.annotatedFile);
        pictures_.insert(pictures_.end(), result.moreFiles.begin(), result.moreFiles.end());
        html.add(result, annotated);
        json_.add(result);
        const bool onlySection = annotated.empty() && !result.sections.empty();
        const cv::Mat& shown = onlySection ? result.sections.front().picture : annotated;
        if (options_.window && hasDisplay_) show(result, shown);
    }

    void show(const ImageResult& result, const cv::Mat& annotated) {
        hasDisplay_ = showInWindow(annotated, result.name, options_.windowSeconds);
        if (!hasDisplay_)
            log_ << "orx_inspection: no display can be opened, so that --window shows nothing\n";
    }

    void printEnd(const fs::path& htmlFile, const fs::path& jsonFile) {
        out_ << "\n" << tally_.text() << "\n";
        for (const std::string& picture : pictures_) out_ << "picture  " << picture << "\n";
        out_ << "report   " << displayName(htmlFile) << "\n"
             << "report   " << displayName(jsonFile) << "\n";
    }

    const Options& options_;
    std::ostream& out_;
    std::ostream& log_;
    OutputFolder folder_;
    JsonReport json_;
    std::vector<std::string> pictures_;
    Tally tally_;
    bool hasDisplay_ = true;
};

}  // namespace

int run(const Options& options, std::ostream& out, std::ostream& log) {
    if (options.teach.wanted()) return runTeach(options, out, log);
    if (!options.batch.recipe.empty() && options.camera.wanted) return runLive(options, out, log);
    if (!options.batch.recipe.empty()) return runBatch(options, out, log);
    if (options.camera.wanted) return runCameras(options, out, log);
    Options withModel = options;
    PartSettings& parts = withModel.settings.parts;
    if (!parts.modelFile.empty()) {
        parts.model = orx::readPartModel(parts.modelFile);
        if (!parts.model.valid()) {
            log << "orx_inspection: the model " << cleanUtf8(parts.modelFile)
                << " can't be used: " << orx::matchStatusText(parts.model.report().status) << "\n";
            return 1;
        }
    }
    return Session(withModel, out, log).run();
}

}  // namespace inspection
