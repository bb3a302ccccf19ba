// What a picture box tells its host of the mouse.
#ifndef ORXFUNCTIONS_DISPLAY_PICTURE_EVENTS_H
#define ORXFUNCTIONS_DISPLAY_PICTURE_EVENTS_H

#include <opencv2/core.hpp>

// Where the cursor is, in the image handed in last.
struct TPicturePlace {
    bool isInside = false;  // the image
    cv::Point2d point;      // image coordinates; (0, 0) is the centre of the top-left pixel
    cv::Point pixel;        // that the point lies in
    cv::Scalar value;       // of the pixel, up to four channels, in the image's own range; 0 outside
    double grey = 0.0;      // the value; of colour 0.114 blue + 0.587 green + 0.299 red
};

// A button was pressed and released without the mouse having been moved further than 4 window pixels. A
// double click comes after the click that began it.
struct TPictureClick {
    TPicturePlace place;  // where the button was pressed
    int button = 0;       // cv::EVENT_FLAG_LBUTTON, cv::EVENT_FLAG_RBUTTON or cv::EVENT_FLAG_MBUTTON
    bool isDouble = false;
    int flags = 0;  // cv::MouseEventFlags: the keys held
};

// The selections of a box, in image coordinates.
struct TSelectionChange {
    bool hasRect = false;
    cv::Rect2d rect;
    bool hasCircle = false;
    cv::Point center;
    double radius = 0.0;
    bool isDragging = false;  // the button is still down: more will come, and at last one without
};

#endif
