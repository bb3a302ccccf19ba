// The source `scene`: a part on a moving tray, whose geometry is known at every moment.
//
// The part is a bright disk with a dark round hole beside its centre. It travels along an ellipse, always
// wholly in view, and turns about its centre. Its place depends on the number of the picture alone, so a host
// can compare what it measures with what was drawn. Edges lie where geometry puts them, to a hundredth of a
// pixel: a pixel takes the grey level of its covered area.
#ifndef DRIVERS_TQVISIONDRIVER_SCENE_SOURCE_H
#define DRIVERS_TQVISIONDRIVER_SCENE_SOURCE_H

#include <cstdint>
#include <opencv2/core/types.hpp>

#include "ZULLib/sync_internal.h"
#include "drivers/TQVisionDriver/paced_source.h"
#include "drivers/TQVisionDriver/settings.h"

namespace vision {

// Grey levels at an exposure of 10,000 microseconds and a gain of 0 dB; they are proportional to the
// exposure.
constexpr double kTrayLevel = 40.0;
constexpr double kPartLevel = 200.0;

// In pixels, the centre of the top-left pixel at (0, 0).
struct ScenePart {
    cv::Point2d center;
    double radius = 0.0;
    cv::Point2d holeCenter;
    double holeRadius = 0.0;
};

// The part in picture `number` of a scene of this size. With s the smaller side: radius 0.18 s, hole radius
// 0.15 of that at 0.55 of it from the centre. With t = 2 pi number / 240: the centre is that of the picture
// plus (a cos t, b sin t), where a and b are half the room that the radius and a rim of 0.05 s leave; the
// hole lies in the direction -2 t.
ScenePart scenePart(int width, int height, std::int64_t number);

class SceneMaker : public PictureMaker {
  public:
    // `seed` is never 0 here.
    explicit SceneMaker(const SceneSettings& settings);

    bool available() override { return true; }
    bool prepare(PictureFormat& format) override;
    Made make(std::int64_t number, cv::Mat& picture) override;
    bool setParameter(int id, long value, bool running) override;
    float parameter(int id) override;

  private:
    bool setRegion(int id, long value);

    const SceneSettings settings_;
    cv::Mat noise_;  // around 128, larger than a picture, so that each takes another part of it

    zul::Mutex mutex_;
    cv::Rect region_ ZUL_GUARDED_BY(mutex_);
    int channels_ ZUL_GUARDED_BY(mutex_);
    long exposure_ ZUL_GUARDED_BY(mutex_) = 10000;
    long gain_ ZUL_GUARDED_BY(mutex_) = 0;
};

}  // namespace vision

#endif
