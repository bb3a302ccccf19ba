// orx_plates: writes pictures of a lot of plates on a tilted plane, of the target that calibrates it, and
// what is true of each plate. See --help.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <locale>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/argument_checks.h"
#include "support/command_line.h"
#include "support/picture_file.h"
#include "support/plate_scene.h"

namespace {

namespace fs = std::filesystem;

constexpr int kMostPlates = 100000;

struct Options {
    std::string folder = "plates";
    scenes::PlateLotSettings lot;
};

void writePicture(const fs::path& file, const cv::Mat& picture) {
    // Noise hardly packs: the quickest way will do.
    if (!host::writePicture(file, picture, {cv::IMWRITE_PNG_COMPRESSION, 1}))
        throw std::runtime_error(file.u8string() + " can't be written");
}

std::string pictureName(int number) {
    char name[32];
    std::snprintf(name, sizeof name, "plate-%04d.png", number + 1);
    return name;
}

// Calls make(0) to make(count - 1) on all processors; throws what the first of them threw.
template <class Make>
void onAllProcessors(int count, const Make& make) {
    std::atomic<int> next{0};
    std::vector<std::exception_ptr> failures(std::max(1U, std::thread::hardware_concurrency()));
    std::vector<std::thread> threads;
    threads.reserve(failures.size());
    for (std::exception_ptr& failure : failures) {
        threads.emplace_back([&] {
            try {
                for (int i = next++; i < count; i = next++) make(i);
            } catch (...) {
                failure = std::current_exception();
                next = count;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::exception_ptr& failure : failures) {
        if (failure) std::rethrow_exception(failure);
    }
}

void writeTargets(const fs::path& folder, const scenes::PlaneExposure& exposure) {
    const std::vector<scenes::PlaneCamera> cameras = scenes::plateTargetCameras();
    const scenes::PlaneShape target =
        scenes::dotGridShape(scenes::kPlateTargetColumns, scenes::kPlateTargetRows, scenes::kPlateTargetPitch,
                             scenes::kPlateTargetPitch / 2);
    onAllProcessors(static_cast<int>(cameras.size()), [&](int i) {
        scenes::PlaneExposure own = exposure;
        own.seed = exposure.seed + static_cast<std::uint64_t>(i);
        const std::string name = i == 0 ? "flat.png" : "tilted-" + std::to_string(i) + ".png";
        writePicture(folder / name, scenes::renderPlane(cameras[static_cast<std::size_t>(i)], target, own));
    });
}

void writePlates(const fs::path& folder, const std::vector<scenes::PlatePart>& lot,
                 const scenes::PlaneExposure& exposure) {
    const scenes::PlaneRenderer renderer(scenes::plateCamera());
    const cv::Mat good = renderer.levels(scenes::plateShape({}, scenes::plateToTeach()), exposure);
    writePicture(folder / "good.png", scenes::withNoise(good, exposure.noiseSigma, exposure.seed));
    onAllProcessors(static_cast<int>(lot.size()), [&](int i) {
        const scenes::PlatePart& part = lot[static_cast<std::size_t>(i)];
        const cv::Mat levels = renderer.levels(scenes::plateShape(part.plate, part.pose), exposure);
        const std::uint64_t seed = exposure.seed + 1 + static_cast<std::uint64_t>(i);
        writePicture(folder / "parts" / pictureName(i), scenes::withNoise(levels, exposure.noiseSigma, seed));
    });
}

void writeTruth(const fs::path& file, const std::vector<scenes::PlatePart>& lot) {
    std::ofstream out(file, std::ios::binary);
    out.imbue(std::locale::classic());
    out.precision(9);
    out << "picture";
    for (const scenes::PlateValue& value : scenes::plateValues({})) out << "," << value.name << " (mm)";
    out << ",fault\n";
    for (std::size_t i = 0; i < lot.size(); ++i) {
        out << pictureName(static_cast<int>(i));
        for (const scenes::PlateValue& value : scenes::plateValues(lot[i].plate)) out << "," << value.value;
        out << "," << lot[i].fault << "\n";
    }
    out.close();
    if (out.fail()) throw std::runtime_error(file.u8string() + " can't be written");
}

int run(const Options& options) {
    const fs::path folder = fs::u8path(options.folder);
    fs::create_directories(folder / "target");
    fs::create_directories(folder / "parts");
    cv::setNumThreads(1);
    scenes::PlaneExposure exposure;
    exposure.seed = 1000000 * options.lot.seed;
    writeTargets(folder / "target", exposure);
    const std::vector<scenes::PlatePart> lot = scenes::plateLot(options.lot);
    writePlates(folder, lot, exposure);
    writeTruth(folder / "truth.csv", lot);
    int bad = 0;
    for (const scenes::PlatePart& part : lot) bad += part.fault.empty() ? 0 : 1;
    std::printf("%d plates, %d of them bad, in %s; what is true of them in truth.csv there\n",
                static_cast<int>(lot.size()), bad, (folder / "parts").u8string().c_str());
    return 0;
}

int parseAndRun(int argc, const char* const* argv) {
    Options options;
    CLI::App app(
        "Renders a lot of plates on a tilted plane, as a camera with a bending lens sees them: target/ with\n"
        "pictures to calibrate by (dots, 11 x 8, 10 mm apart), good.png to teach the part by, parts/ to be\n"
        "measured, and truth.csv with the true values. examples/plates/plate.json is the recipe for them.",
        "orx_plates");
    app.add_option("folder", options.folder, "where they are written")->capture_default_str();
    app.add_option("--count", options.lot.count, "of plates")
        ->capture_default_str()
        ->check(CLI::Range(1, kMostPlates));
    app.add_option("--bad", options.lot.badShare, "share of plates beyond a tolerance")
        ->capture_default_str()
        ->check(CLI::Range(0.0, 1.0));
    app.add_option("--seed", options.lot.seed, "equal seeds give equal plates")
        ->capture_default_str()
        ->check(CLI::Range(0, 1000000));
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return host::endAt(error, app);
    }
    return run(options);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const host::CommandLine arguments(argc, argv);
        return parseAndRun(arguments.count(), arguments.texts());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orx_plates: %s\n", error.what());
        return 1;
    }
}
