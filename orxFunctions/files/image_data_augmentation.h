// More training images from few: variants of every image of a folder, with its annotation transformed alike.
#ifndef ORXFUNCTIONS_FILES_IMAGE_DATA_AUGMENTATION_H
#define ORXFUNCTIONS_FILES_IMAGE_DATA_AUGMENTATION_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "orxFunctions/api.h"

namespace orx {

// Which variants of an image are made. Amounts are drawn evenly from the stated range, for each variant anew.
// Counts are cut to 0 .. 1000; an amount that is not a number counts as 0.
struct TAugmentationConfig {
    std::uint64_t seed = 0;
    bool flipHorizontal = true;  // left and right change places
    bool flipVertical = true;
    int rotations = 1;
    double maxAngle =
        15;  // degrees, about the centre, in both directions; the size stays, corners turn black
    int scalings = 1;
    double minScale = 0.8;  // the picture is resized; at least 0.01, at most 100
    double maxScale = 1.25;
    int shifts = 1;
    double maxShift = 0.1;  // of width and height, at most 1, in whole pixels; what is uncovered turns black
    int brightnessChanges = 1;
    double maxBrightness = 0.2;  // of the full range of grey, brighter or darker
    int contrastChanges = 1;
    double maxContrast = 0.3;  // distances from the middle grey grow or shrink by a factor of up to 1 + this
    int blurs = 1;
    double maxBlur = 2;  // sigma of the Gaussian, pixels, at most 100
    int noises = 1;
    double maxNoise = 0.05;  // sigma of the Gaussian noise, of the full range of grey
};

struct TAugmentationReport {
    bool completed = false;  // false: a folder was refused, or the progress callback stopped the run
    int images = 0;          // of which variants were made
    int skipped = 0;         // that could not be read, or whose annotation could not
    int written = 0;         // variants
    std::vector<std::string>
        problems;  // a text for each skipped image and each failed file, as shown to the user
};

// Reads the images of a folder (.bmp .jpg .jpeg .jp2 .png .pgm .ppm .tif .tiff .webp; not its subfolders) and
// writes NAME_flipH, NAME_flipV, NAME_rotate0, NAME_scale0, NAME_shift0, NAME_bright0, NAME_contrast0,
// NAME_blur0, NAME_noise0 ... into another, as PNG, or TIFF for floating-point pixels. Variants that exist
// are replaced. Of two images with the same name the second in order adds its extension ("part_jpg_flipH").
//
// An annotation is the file NAME.json beside the image: "shapes", each with "points" [[x, y], ...],
// "imageWidth" and "imageHeight", as polygon labelling tools write it. Points count from the top-left corner
// of the top-left pixel, so that a flip takes x to width - x; they are moved, not cut off at the border. A
// rectangle that was rotated becomes a polygon. Other fields are kept, except "imagePath", which names the
// variant, and "imageData", which becomes null. An annotation that is broken or made for another size skips
// its image, and one with a point that a variant's motion takes beyond all numbers skips that variant: one
// without its labels would teach the wrong thing. A variant or annotation that can't be written to its end (a
// full disk) is removed.
//
// The same seed, configuration and image give the same pixels, whatever other images lie beside it and
// however many variants of other kinds are asked for. One thread at a time.
class ORX_API ImageDataAugmentation {
  public:
    // Called before each image with its number from 0, the number of all images and its file name, and once
    // at the end with done == total and ""; false stops the run.
    using TProgress = std::function<bool(int done, int total, const std::string& file)>;

    void setConfig(const TAugmentationConfig& config);
    void setProgress(TProgress progress);

    // Refuses, with a message: an input folder that does not exist or can't be read, an output folder that
    // can't be created, and the same folder for both (rcFileName, rcFileMissing, rcFileUnreadable,
    // rcFileUnwritable, rcOption), and where the library's module of picture formats is missing (rcFailed).
    // What happens to single images is told in the report alone.
    TAugmentationReport augment(const std::string& inputFolder, const std::string& outputFolder) const;

  private:
    TAugmentationConfig config_;
    TProgress progress_;
};

}  // namespace orx

#endif
