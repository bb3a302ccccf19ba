// The argument lists of orx_inspection, and the texts that orx_calibration takes for targets: options in
// their ranges, or exit code 2 (0 for help and version).
#include <array>
#include <cmath>
#include <iostream>
#include <sstream>

#include "examples/calibration/target_files.h"
#include "inspection/run/options.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

using fuzz::require;

// What the parser prints on bad arguments is of no use here.
class Silence {
  public:
    Silence() : out_(std::cout.rdbuf(text_.rdbuf())), log_(std::cerr.rdbuf(text_.rdbuf())) {}
    ~Silence() {
        std::cout.rdbuf(out_);
        std::cerr.rdbuf(log_);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

    std::string text() const { return text_.str(); }

  private:
    std::ostringstream text_;
    std::streambuf* out_;
    std::streambuf* log_;
};

// One argument a line; a line of @ and a letter stands for the option of that number.
std::vector<std::string> argumentsOf(const std::string& text) {
    static const std::array<const char*, 56> kOptions = {
        "--again",         "--annotate",        "--background", "--calibration",    "--caliper",
        "--camera",        "--cameras",         "--circle",     "--circle-caliper", "--close",
        "--edges",         "--ellipse",         "--features",   "--find",           "--fixed",
        "--focus",         "--gauge",           "--jobs",       "--jpeg",           "--keep",
        "--line",          "--max-parts",       "--max-scale",  "--min-area",       "--min-inliers",
        "--min-length",    "--min-scale",       "--min-score",  "--model",          "--name",
        "--no-subpixel",   "--method",          "-o",           "--part-polarity",  "--quiet",
        "--recipe",        "--recursive",       "--region",     "--seconds",        "--seed",
        "--segment",       "--shape",           "--share",      "--smooth",         "--sqlite",
        "--synthetic",     "--synthetic-parts", "--teach",      "--teach-part",     "--tolerance",
        "--trials",        "--truth",           "--type",       "--polarity",       "--window",
        "--window-seconds"};
    std::vector<std::string> list{"orx_inspection"};
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line) && list.size() < 40;) {
        line = line.substr(0, line.find('\0'));
        if (line.size() == 2 && line[0] == '@')
            list.emplace_back(kOptions[static_cast<unsigned char>(line[1]) % kOptions.size()]);
        else
            list.push_back(line);
    }
    return list;
}

void checkInspection(const std::vector<std::string>& arguments) {
    std::vector<const char*> texts;
    for (const std::string& argument : arguments) texts.push_back(argument.c_str());
    int exitCode = -1;
    const Silence silence;
    const auto options = inspection::parseOptions(static_cast<int>(texts.size()), texts.data(), exitCode);
    if (!options) {
        require(exitCode == 0 || exitCode == 2, "bad arguments end with 2, help and version with 0");
        require(!silence.text().empty(), "and with a text");
        return;
    }
    const inspection::Settings& s = options->settings;
    require(!options->inputs.empty() || options->syntheticSeed || options->partsSeed ||
                options->camera.wanted || options->teach.wanted(),
            "there is something to do");
    for (const double value :
         {s.smooth, s.minArea, s.tolerance, s.minInliers, s.parts.find.minScore, s.parts.find.minScale,
          s.parts.find.maxScale, options->windowSeconds, options->camera.seconds})
        require(std::isfinite(value), "numbers are numbers");
    require(s.smooth >= 0 && s.background >= 0 && s.close >= 0 && s.trials > 0 && s.tolerance > 0,
            "in their ranges");
    require(s.parts.find.minScale <= s.parts.find.maxScale, "scales in order");
    require(options->camera.cameras >= 1 && options->camera.cameras <= VD_MAX_CAMERAS,
            "as many cameras as there can be");
    require(options->batch.jobs >= 0 && options->batch.gauge >= 0, "counts are not negative");
    for (const cv::Rect& box : s.calipers) require(box.width > 0 && box.height > 0, "calipers have a size");
}

void checkPage(const std::string& text) {
    orx::TTargetPage page;
    if (!calibration::pageOf(text, page)) return;
    require(page.width > 0 && page.height > 0 && std::isfinite(page.width) && std::isfinite(page.height),
            "a page has a size");
    orx::targetToSvg({}, page);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Input input(bytes, size);
    const std::string text = input.rest();
    checkInspection(argumentsOf(text));
    checkPage(text.substr(0, text.find('\n')));
    return 0;
}
