// Nine cameras for a long time, unplugged and changed at random: nothing may be lost unnoticed, hang, or stay
// behind.
//
//   soak MINUTES [SEED]
//
// In rounds of a minute at most, each of which loads the library, grabs from nine cameras (rendered, replayed
// and, where the system permits a network for them, GigE cameras in software), measures in each frame, shows
// those of two on two displays, saves some, and unloads the library. Ends with a summary, and with 1
// when something did not add up. What the system keeps after the first round is what it may keep after the
// last.
#include <malloc.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <mutex>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <thread>
#include <vector>

#include "tests/fake_driver/fake_module.h"
#ifdef ORX_HAS_SOFTWARE_CAMERA
#include "tests/gige/camera_process.h"
#include "tests/gige/network_namespace.h"
#endif
#include "tests/soak/soak_round.h"
#include "tests/support/environment.h"
#include "tests/support/loaded_module.h"
#include "tests/support/private_display_posix.h"
#include "tests/support/temporary_folder.h"

namespace {

using soak::kCameras;

constexpr double kLongestRound = 60.0;  // seconds
constexpr int kFewestRounds = 3;
constexpr std::int64_t kLongestBeat = 120000;  // milliseconds; nothing takes a tenth of it on a busy machine
constexpr int kMostToldProblems = 40;
#ifdef ORX_SANITIZED
constexpr bool kIsMemoryJudged = false;  // the sanitizer keeps what was freed
#else
constexpr bool kIsMemoryJudged = true;
#endif
// What may be added, in MiB: the loader and OpenCV keep some kB of each loading for good. Resident memory
// grows by what the allocator could not give back, and levels off.
constexpr double kHeapNoise = 0.25;
constexpr double kMostKept = 0.03;       // of the heap, each round
constexpr double kMostResident = 100.0;  // in all

std::mutex problemMutex;
int problems = 0;

void complain(const char* problem) {
    const std::lock_guard<std::mutex> lock(problemMutex);
    if (++problems <= kMostToldProblems) std::fprintf(stderr, "soak: %s\n", problem);
}

std::string serialOf(int device) { return "S" + std::to_string(device + 1); }

std::array<std::unique_ptr<test::PrivateDisplay>, soak::kBoxes> displays;

void stop(int display, bool isStopped) {
    const test::PrivateDisplay& one = *displays[static_cast<std::size_t>(display)];
    if (isStopped)
        one.stop();
    else
        one.goOn();
}

#ifdef ORX_HAS_SOFTWARE_CAMERA
std::vector<std::unique_ptr<gige::SoftwareCamera>> software;

void silence(int device, bool isSilent) {
    const gige::SoftwareCamera& one = *software[static_cast<std::size_t>(device)];
    if (isSilent)
        one.pause();
    else
        one.resume();
}

void startDevices() {
    for (int i = 0; i < soak::kDevices && gige::whyNoNetwork().empty(); ++i) {
        gige::CameraOptions options;
        options.address = "127.0.0." + std::to_string(i + 2);
        options.serial = serialOf(i);
        options.width = 320;
        options.height = 240;
        options.rate = 20.0;
        options.isEven = true;
        software.push_back(std::make_unique<gige::SoftwareCamera>(options));
        if (!software.back()->problem().empty()) complain(software.back()->problem().c_str());
    }
    if (software.empty()) std::printf("without GigE cameras: %s\n", gige::whyNoNetwork().c_str());
}
#else
const std::vector<int> software;

void silence(int /*device*/, bool /*isSilent*/) {}

void startDevices() { std::printf("without GigE cameras: there is no Aravis\n"); }
#endif

// What this process has of the system.
struct Footprint {
    std::ptrdiff_t threads = 0;
    std::ptrdiff_t handles = 0;
    double heap = 0.0;      // in use, MiB
    double resident = 0.0;  // MiB
};

std::string text(const Footprint& one) {
    char line[160];
    std::snprintf(line, sizeof line, "%td threads, %td handles, heap %.2f MiB, resident %.1f MiB",
                  one.threads, one.handles, one.heap, one.resident);
    return line;
}

Footprint footprint() {
    constexpr double kMebi = 1 << 20;
    malloc_trim(0);
    Footprint now{test::threads(), test::handles(), static_cast<double>(mallinfo2().uordblks) / kMebi, 0.0};
    long all = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    now.resident = static_cast<double>(resident * sysconf(_SC_PAGESIZE)) / kMebi;
    return now;
}

void writeSettings(const test::TemporaryFolder& folder, int devices) {
    for (int i = 0; i < soak::kPictures; ++i) {
        const std::string name = "picture" + std::to_string(1000 + i) + ".png";
        cv::imwrite(folder / name, cv::Mat(120, 160, CV_8UC1, cv::Scalar(i)));
    }
    std::ofstream settings(folder / "settings.ini");
    for (int i = 0; i < kCameras; ++i) {
        settings << "[camera" << i + 1 << "]\n";
        if (i < soak::kScenes)
            settings << "source = scene\nrate = 20\nwidth = 320\nheight = 240\n";
        else if (i < soak::kScenes + devices)
            settings << "source = device\nserial = " << serialOf(i - soak::kScenes)
                     << "\npacket_size = 1500\n";
        else
            settings << "source = replay\nrate = 20\nfolder = .\n";
    }
    settings.close();
    test::setVariable("TQVISION_CONFIG", folder.path() / "settings.ini");
}

using Beats = std::array<soak::Beat, kCameras + 1>;

// Ends the process where a thread stands still.
class DeadlockWatch {
  public:
    explicit DeadlockWatch(Beats& beats) : beats_(beats), thread_([this] { watch(); }) {}
    ~DeadlockWatch() {
        isOver_ = true;
        thread_.join();
    }
    DeadlockWatch(const DeadlockWatch&) = delete;
    DeadlockWatch& operator=(const DeadlockWatch&) = delete;

  private:
    void watch() {
        soak::Beat now;
        while (!isOver_) {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            now.at("");
            for (const soak::Beat& beat : beats_) {
                const std::int64_t since = beat.since;
                if (since != 0 && now.since - since > kLongestBeat) report(now.since);
            }
        }
    }
    [[noreturn]] void report(std::int64_t now) {
        std::fprintf(stderr, "soak: a thread stands still\n");
        for (std::size_t i = 0; i < beats_.size(); ++i) {
            const std::int64_t since = beats_[i].since;
            if (since == 0) continue;
            const std::string who = i == kCameras ? "the host" : "worker " + std::to_string(i + 1);
            std::fprintf(stderr, "  %s: %s for %" PRId64 " ms\n", who.c_str(), beats_[i].doing.load(),
                         now - since);
        }
        std::fflush(nullptr);
        std::_Exit(1);
    }

    Beats& beats_;
    std::atomic<bool> isOver_{false};
    std::thread thread_;
};

void runRound(const soak::Round& round) {
    soak::Beat& beat = (*round.beats)[kCameras];
    beat.at("loading the library");
    {
        const test::LoadedModule library(ORX_SOAK_MODULE);
        const auto run = reinterpret_cast<soak::RunRound*>(library.function("soakRound"));
        if (run == nullptr) return complain("the module can't be loaded");
        run(&round);
        beat.at("unloading the library");
    }
    beat.end();
    if (test::isLoaded(ORX_TEST_LIBRARY)) complain("the library is still loaded");
}

void print(const char* name, const soak::CameraTally& tally) {
    std::printf("%-7s %7" PRIu64 " %9" PRIu64 " %9" PRIu64 " %9" PRIu64 " = %9" PRIu64 " + %7" PRIu64
                " + %7" PRIu64 " %9" PRIu64 "\n",
                name, tally.starts, tally.sent, tally.handed, tally.delivered, tally.taken, tally.dropped,
                tally.lost + tally.untold, tally.measured);
}

void printTally(const soak::Tally& tally) {
    std::printf("camera   starts      sent    handed delivered =     taken + dropped +    lost  measured\n");
    soak::CameraTally sum;
    for (std::size_t i = 0; i < kCameras; ++i) {
        print(std::to_string(i + 1).c_str(), tally.cameras[i]);
        sum.add(tally.cameras[i]);
        if (tally.cameras[i].taken == 0) complain("a camera gave no frame");
    }
    print("all", sum);
    std::printf("%" PRIu64 " of these were lost after the last frame of a round\n", sum.untold);
    std::printf("%" PRIu64 " unpluggings, %" PRIu64 " GigE cameras silent, %" PRIu64 " losses and %" PRIu64
                " returns told, %" PRIu64 " displays stopped, %" PRIu64 " other disturbances\n",
                tally.unpluggings, tally.silences, tally.losses, tally.returns, tally.stops, tally.changes);
    std::printf("%" PRIu64 " pictures saved, %" PRIu64 " refused because too many waited\n", tally.saved,
                tally.notSaved);
}

void judge(const Footprint& first, const Footprint& last, int rounds) {
    std::printf("after the first round: %s\nafter the last round:  %s%s\n", text(first).c_str(),
                text(last).c_str(), kIsMemoryJudged ? "" : " (memory is not judged under a sanitizer)");
    if (last.threads != first.threads) complain("threads stay behind");
    if (last.handles != first.handles) complain("handles stay behind");
    if (!kIsMemoryJudged) return;
    if (last.heap > first.heap + kHeapNoise + kMostKept * rounds) complain("memory stays behind");
    if (last.resident > first.resident + kMostResident) complain("resident memory grows");
}

int soakFor(double minutes, std::uint32_t seed) {
    using Clock = std::chrono::steady_clock;
    for (auto& display : displays) {
        display = std::make_unique<test::PrivateDisplay>();
        if (!display->isRunning()) complain("no display: is the package xvfb installed?");
    }
    startDevices();
    const test::TemporaryFolder folder;
    writeSettings(folder, static_cast<int>(software.size()));
    const test::LoadedModule driver(test::fakeModule("flaky", "TQVisionDriver"));
    const auto getDriver = reinterpret_cast<flaky::GetDriver*>(driver.function("flakyDriver"));
    Beats beats;
    const DeadlockWatch watch(beats);
    soak::Tally tally;
    const std::string saved = folder / "saved";
    soak::Round round;
    round.folder = saved.c_str();
    round.driver = getDriver();
    round.devices = static_cast<int>(software.size());
    round.silence = silence;
    round.stop = stop;
    for (std::size_t i = 0; i < displays.size(); ++i) round.displays[i] = displays[i]->name().c_str();
    round.beats = &beats;
    round.tally = &tally;
    round.complain = complain;
    round.seconds = std::min(kLongestRound, 60.0 * minutes / kFewestRounds);
    const auto begin = Clock::now();
    const auto elapsed = [&] { return std::chrono::duration<double>(Clock::now() - begin).count(); };
    Footprint first;
    Footprint last;
    int rounds = 0;
    while (rounds < kFewestRounds || elapsed() < 60.0 * minutes) {
        round.seed = seed + static_cast<std::uint32_t>(rounds);
        runRound(round);
        last = footprint();
        if (rounds++ == 0) first = last;
        std::printf("round %d: %s\n", rounds, text(last).c_str());
        std::fflush(stdout);
    }
    std::printf("\n%.1f minutes, %d rounds, seed %u\n", elapsed() / 60.0, rounds, seed);
    printTally(tally);
    judge(first, last, rounds);
    std::printf(problems == 0 ? "everything adds up\n" : "%d problems\n", problems);
    return problems == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const double minutes = argc > 1 ? std::atof(argv[1]) : 0.0;
    if (argc > 3 || minutes <= 0.0) {
        std::fprintf(stderr, "usage: soak MINUTES [SEED]\n");
        return 2;
    }
#ifdef ORX_HAS_SOFTWARE_CAMERA
    gige::enterNetworkNamespace(argv);
#endif
    return soakFor(minutes, argc > 2 ? static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10)) : 1U);
}
