// Images saved in the background: whatever their kind, name and format, a file that is there holds the bytes
// that OpenCV encodes of the image, every other one is told, and names sort in the order of the calls.
#include <array>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <utility>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/temporary_folder.h"

namespace {

using fuzz::require;
namespace fs = std::filesystem;

constexpr std::size_t kStampLength = 26;  // yyyymmdd_hhmmss_mmm_nnnnnn

// What the file of an image that was taken should hold; nothing where the format can't hold the image.
struct Saved {
    std::string path;
    std::string bytes;
};

std::string encoded(const cv::Mat& image, const std::string& extension) {
    std::vector<uchar> bytes;
    try {
        if (!cv::imencode(extension, image, bytes)) return {};
    } catch (const cv::Exception&) {
        return {};
    }
    return {bytes.begin(), bytes.end()};
}

// Mostly a name of few; else any letters, as long as they stay in the folder.
std::string folder(fuzz::Input& input) {
    static const std::array<const char*, 6> kNames = {"", "a", "a/b", "file", "file/c", "\xe5\x9b\xbe"};
    const unsigned kind = input.byte();
    if (kind < 224) return kNames[kind % kNames.size()];
    std::string own = input.text(300);
    for (char& c : own) {
        if (c == '/' || c == '.' || c == '\0') c = '_';
    }
    return own;
}

std::string prefix(fuzz::Input& input) {
    static const std::array<const char*, 4> kNames = {"", "ok_", "\xd5\x5c", "a/b"};
    const unsigned kind = input.byte();
    return kind < 160 ? kNames[kind % kNames.size()] : input.text(250);
}

std::string extension(fuzz::Input& input) {
    static const std::array<const char*, 12> kNames = {".png", "png", ".bmp", ".PNG",  ".jpg", "tif",
                                                       ".pgm", "ppm", ".pbm", ".webp", ".",    ".exe"};
    const unsigned kind = input.byte();
    return kind < 232 ? kNames[kind % kNames.size()] : input.text(6);
}

std::size_t messages() {
    std::size_t count = 0;
    std::string text;
    for (int color = 0; zul::APPgetMessage(text, color); ++count) require(color == 1, "failures in colour 1");
    return count;
}

class Saving {
  public:
    explicit Saving(fs::path top) : top_(std::move(top)) {}

    void save(fuzz::Input& input);
    void wait(fuzz::Input& input);
    void checkAll();

  private:
    void checkName(const Saved& one, const fs::path& folder, const std::string& prefix,
                   const std::string& extension);

    fs::path top_;
    std::vector<Saved> saved_;
    std::string last_;              // time and number of the image before
    std::size_t told_ = 0;          // messages so far
    std::size_t refusalsTold_ = 0;  // of them those of formats that there are not
};

void Saving::save(fuzz::Input& input) {
    cv::Mat image = input.matrix();
    const std::string inner = folder(input);
    const std::string begin = prefix(input);
    const std::string format = extension(input);
    const fs::path place = inner.empty() ? top_ : top_ / inner;
    Saved one;
    orx::clearLastRefusal();
    if (!FileOperator::saveImage(image, place.string(), begin, format, &one.path)) {
        const orx::TRefusalCode why = orx::lastRefusal().code;
        require(why != orx::rcNone && one.path.empty(), "a refusal has its reason");
        require(image.empty() == (why == orx::rcEmptyImage), "empty images are refused");
        if (why == orx::rcOption) ++refusalsTold_;
        return;
    }
    require(!image.empty() && begin.find('/') == std::string::npos, "what can be saved");
    const std::string dotted = format[0] == '.' ? format : "." + format;
    checkName(one, place, begin, dotted);
    one.bytes = encoded(image, dotted);
    image.release();
    saved_.push_back(std::move(one));
}

void Saving::checkName(const Saved& one, const fs::path& folder, const std::string& prefix,
                       const std::string& extension) {
    const fs::path path = one.path;
    const std::string name = path.filename().string();
    require(path.parent_path() == folder, "the folder that was asked for");
    require(name.size() == prefix.size() + kStampLength + extension.size() &&
                name.compare(0, prefix.size(), prefix) == 0 &&
                name.compare(prefix.size() + kStampLength, std::string::npos, extension) == 0,
            "prefix, time, number and extension");
    const std::string stamp = name.substr(prefix.size(), kStampLength);
    require(last_ < stamp, "names sort in the order of the calls");
    last_ = stamp;
}

void Saving::wait(fuzz::Input& input) {
    const int milliseconds = input.integer();
    orx::clearLastRefusal();
    const bool isDone = FileOperator::flush(milliseconds);
    require(isDone || (milliseconds >= 0 && orx::lastRefusal().code == orx::rcTimeout), "the time ran out");
    if (isDone) checkAll();
}

// Once all are written, or told.
void Saving::checkAll() {
    std::size_t written = 0;
    for (const Saved& one : saved_) {
        if (!fs::exists(one.path)) continue;
        ++written;
        require(!one.bytes.empty() && test::bytesOf(one.path) == one.bytes, "the file is the encoded image");
    }
    told_ += messages();
    require(told_ == saved_.size() - written + refusalsTold_, "what is not written is told");
    std::size_t files = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(top_))
        files += entry.is_regular_file() ? 1 : 0;
    require(files == written + 1, "no other files");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    cv::setNumThreads(1);
    fuzz::forgetMessages();
    fuzz::Input input(bytes, size);
    const fs::path top = fuzz::emptyFolder();
    test::writeBytes((top / "file").string(), "x");
    Saving saving(top);
    for (int i = 0; i < 12 && !input.atEnd(); ++i) {
        if (input.byte() % 8U == 7)
            saving.wait(input);
        else
            saving.save(input);
    }
    require(FileOperator::flush(), "all are written");
    saving.checkAll();
    return 0;
}
