// A text file that grows line by line, each on the disk at once.
#ifndef EXAMPLES_INSPECTION_BATCH_LINE_FILE_H
#define EXAMPLES_INSPECTION_BATCH_LINE_FILE_H

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

namespace inspection {

class LineFile {
  public:
    LineFile() = default;
    ~LineFile();
    LineFile(const LineFile&) = delete;
    LineFile& operator=(const LineFile&) = delete;

    // Goes on at the end of what is there, or begins anew. False when it can't be opened.
    bool open(const std::filesystem::path& path, bool anew);

    // The line and its end. False when they did not get there (the disk is full): the file then ends with the
    // line before as far as that can be had, and takes no more.
    bool append(const std::string& line);

    // Begins anew beside a file, which stays as it was until takePlace: what is written then has its name,
    // and goes on there. False as append; what has not taken its place is removed in the end.
    bool openBeside(const std::filesystem::path& path);
    bool takePlace();

    // Takes no more until it is opened again.
    void close();

    const std::string& problem() const { return problem_; }  // in English; empty: none

  private:
    void fail(int error);

    std::filesystem::path path_;
    std::filesystem::path final_;  // of a file that is beside it still
    std::ofstream file_;
    std::uintmax_t length_ = 0;
    std::string problem_;
};

}  // namespace inspection

#endif
