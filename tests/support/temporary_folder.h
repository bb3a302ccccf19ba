// A folder of a test's own, removed with all that is in it.
#ifndef ORX_TESTS_SUPPORT_TEMPORARY_FOLDER_H
#define ORX_TESTS_SUPPORT_TEMPORARY_FOLDER_H

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace test {

class TemporaryFolder {
  public:
    TemporaryFolder() {
        static std::atomic<int> count{0};
        const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
        path_ = std::filesystem::temp_directory_path() /
                ("orx-test-" + std::to_string(now) + "-" + std::to_string(++count));
        std::filesystem::create_directories(path_);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // With the separators of the platform throughout.
    std::string operator/(const std::string& name) const { return (path_ / name).make_preferred().string(); }
    const std::filesystem::path& path() const { return path_; }
    std::string name() const { return path_.string(); }

  private:
    std::filesystem::path path_;
};

inline std::string bytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A text with its line ends as "\n", however the platform writes them.
inline std::string textOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeBytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace test

#endif
