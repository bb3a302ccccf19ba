// A file that is written as it goes and never seen half: what orx::writeWholeFile does for bytes that lie in
// memory together.
#ifndef EXAMPLES_INSPECTION_STREAMED_FILE_H
#define EXAMPLES_INSPECTION_STREAMED_FILE_H

#include <filesystem>
#include <fstream>
#include <string>

namespace inspection {

// Where a file grows until it is whole: beside it, where a link leads, and named as the library does it.
std::filesystem::path besideFile(const std::filesystem::path& file);

// Gives what was written there the file's name. False when the system refuses; the earlier file stays then.
bool giveName(const std::filesystem::path& file, std::string& problem);

// False for what is there and no file, or may not be written.
bool isReplaceable(const std::filesystem::path& file);

// One that is not finished leaves the earlier file as it was; a program that is killed leaves FILE.0.new
// behind, which the next one writes over.
class StreamedFile {
  public:
    StreamedFile() = default;
    ~StreamedFile();
    StreamedFile(const StreamedFile&) = delete;
    StreamedFile& operator=(const StreamedFile&) = delete;

    // False for what is there and no file or may not be written, and for a folder that takes no new file.
    bool open(const std::filesystem::path& file);
    std::ostream& stream() { return stream_; }
    // False, and the earlier file stays, when not all of it could be written.
    bool finish();

  private:
    std::filesystem::path file_;  // empty: nothing is open
    std::ofstream stream_;
};

}  // namespace inspection

#endif
