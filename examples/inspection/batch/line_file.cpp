#include "inspection/batch/line_file.h"

#include <cerrno>
#include <cstring>
#include <system_error>

#include "inspection/run/image_source.h"
#include "inspection/run/streamed_file.h"

namespace inspection {

namespace fs = std::filesystem;

LineFile::~LineFile() {
    if (final_.empty()) return;
    file_.close();
    std::error_code ignored;
    fs::remove(besideFile(final_), ignored);
}

bool LineFile::open(const fs::path& path, bool anew) {
    path_ = path;
    errno = 0;
    file_.open(path, std::ios::binary | (anew ? std::ios::trunc : std::ios::app));
    if (!file_) {
        fail(errno);
        return false;
    }
    std::error_code failure;
    const std::uintmax_t size = fs::file_size(path, failure);
    length_ = failure ? 0 : size;
    return true;
}

bool LineFile::append(const std::string& line) {
    if (!problem_.empty()) return false;
    errno = 0;
    file_ << line << "\n" << std::flush;
    if (!file_) {
        fail(errno);
        return false;
    }
    length_ += line.size() + 1;
    return true;
}

bool LineFile::openBeside(const fs::path& path) {
    if (!isReplaceable(path)) {
        path_ = path;
        fail(EACCES);
        return false;
    }
    final_ = path;
    return open(besideFile(path), true);
}

bool LineFile::takePlace() {
    if (!problem_.empty()) return false;
    close();
    std::string reason;
    path_ = final_;
    if (giveName(path_, reason)) {
        final_.clear();
        return open(path_, false);
    }
    problem_ = displayName(path_) + " can't be written: " + reason;
    return false;
}

void LineFile::close() {
    file_.close();
    file_.clear();
}

void LineFile::fail(int error) {
    problem_ = displayName(path_) + " can't be written" +
               (error != 0 ? ": " + std::string(std::strerror(error)) : std::string());
    if (!file_.is_open()) return;
    file_.clear();
    file_.close();
    std::error_code ignored;
    if (fs::is_regular_file(path_, ignored)) fs::resize_file(path_, length_, ignored);
}

}  // namespace inspection
