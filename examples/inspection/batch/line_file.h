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
    // Goes on at the end of what is there, or begins anew. False when it can't be opened.
    bool open(const std::filesystem::path& path, bool anew);

    // The line and its end. False when they did not get there (the disk is full): the file then ends with the
    // line before as far as that can be had, and takes no more.
    bool append(const std::string& line);

    // Takes no more until it is opened again.
    void close();

    const std::string& problem() const { return problem_; }  // in English; empty: none

  private:
    void fail(int error);

    std::filesystem::path path_;
    std::ofstream file_;
    std::uintmax_t length_ = 0;
    std::string problem_;
};

}  // namespace inspection

#endif
