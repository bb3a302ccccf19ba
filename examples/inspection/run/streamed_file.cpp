#include "inspection/run/streamed_file.h"

#include <system_error>

namespace inspection {
namespace {

namespace fs = std::filesystem;

fs::path withoutLinks(const fs::path& file) {
    std::error_code failure;
    const fs::path target = fs::weakly_canonical(file, failure);
    return failure ? file : target;
}

}  // namespace

fs::path besideFile(const fs::path& file) {
    fs::path beside = withoutLinks(file);
    beside += ".0.new";
    return beside;
}

bool isReplaceable(const fs::path& file) {
    std::error_code failure;
    const fs::file_status status = fs::status(file, failure);
    if (!fs::exists(status)) return true;
    return fs::is_regular_file(status) && std::fstream(file, std::ios::binary | std::ios::in | std::ios::out);
}

bool giveName(const fs::path& file, std::string& problem) {
    std::error_code failure;
    fs::rename(besideFile(file), withoutLinks(file), failure);
    if (failure) problem = failure.message();
    return !failure;
}

StreamedFile::~StreamedFile() {
    if (file_.empty()) return;
    stream_.close();
    std::error_code ignored;
    fs::remove(besideFile(file_), ignored);
}

bool StreamedFile::open(const fs::path& file) {
    if (!isReplaceable(file)) return false;
    stream_.open(besideFile(file), std::ios::binary | std::ios::trunc);
    if (stream_.is_open()) file_ = file;
    return stream_.is_open();
}

bool StreamedFile::finish() {
    stream_.close();
    std::string ignored;
    if (stream_.fail() || !giveName(file_, ignored)) return false;
    file_.clear();
    return true;
}

}  // namespace inspection
