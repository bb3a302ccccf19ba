// Looking at the annotated pictures on the screen.
#ifndef EXAMPLES_INSPECTION_PICTURE_WINDOW_H
#define EXAMPLES_INSPECTION_PICTURE_WINDOW_H

#include <opencv2/core.hpp>
#include <string>

namespace inspection {

// Shows the picture in a picture box in a window of its own, until the user closes it or (unless that is 0)
// so many seconds have passed: the wheel zooms, dragging pans, a double click shows all. False when there is
// no display. One picture at a time, as all picture boxes show one image.
bool showInWindow(const cv::Mat& picture, const std::string& utf8Title, double seconds);

}  // namespace inspection

#endif
