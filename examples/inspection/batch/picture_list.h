// The pictures of a batch, as they are known from one run to the next.
#ifndef EXAMPLES_INSPECTION_BATCH_PICTURE_LIST_H
#define EXAMPLES_INSPECTION_BATCH_PICTURE_LIST_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace inspection {

// A file by its place, size and time of change: equal ones are taken for the same picture.
struct PictureFile {
    std::filesystem::path path;
    std::string name;           // the path as UTF-8 for people
    std::uint64_t id = 0;       // of the absolute path
    std::uint64_t bytes = 0;    // both 0 for what is no file
    std::int64_t modified = 0;  // ticks of the file system's clock
};

struct PictureList {
    std::vector<PictureFile> files;
    std::vector<std::string> problems;  // of folders, in English
};

// Files in the order given; a folder stands for its pictures by name, with `recursive` also for those in its
// sub-folders (links to folders are not followed). What lies in `output` is left out: that is what an earlier
// run wrote.
PictureList listPictures(const std::vector<std::string>& inputs, bool recursive,
                         const std::filesystem::path& output);

// FNV-1a, 64 bits.
std::uint64_t hashOf(const std::string& bytes, std::uint64_t seed = 14695981039346656037ULL);

// 16 hexadecimal digits.
std::string hexOf(std::uint64_t number);

}  // namespace inspection

#endif
