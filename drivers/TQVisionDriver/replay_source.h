// The source `replay`: the pictures of a folder, in the order of their names.
#ifndef DRIVERS_TQVISIONDRIVER_REPLAY_SOURCE_H
#define DRIVERS_TQVISIONDRIVER_REPLAY_SOURCE_H

#include <filesystem>
#include <vector>

#include "drivers/TQVisionDriver/paced_source.h"
#include "drivers/TQVisionDriver/settings.h"

namespace vision {

// Files that are pictures by their extension, sorted by name; not those of folders below.
std::vector<std::filesystem::path> pictureFiles(const std::filesystem::path& folder);

// Gives each picture as 8 bits, grey or blue green red, in its own size. A file that can't be decoded is
// passed over and counts as lost. Played once, the last picture stays.
class ReplayMaker : public PictureMaker {
  public:
    explicit ReplayMaker(const ReplaySettings& settings) : settings_(settings) {}

    bool available() override;
    bool prepare(PictureFormat& format) override;
    Made make(std::int64_t number, cv::Mat& picture) override;
    bool setParameter(int id, long value, bool running) override;
    float parameter(int id) override;

  private:
    const ReplaySettings settings_;
    std::vector<std::filesystem::path> files_;
};

}  // namespace vision

#endif
