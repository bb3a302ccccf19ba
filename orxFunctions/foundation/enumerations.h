// Enumerations that select behaviour across the library. Their values cross the interface and are binding.
#ifndef ORXFUNCTIONS_FOUNDATION_ENUMERATIONS_H
#define ORXFUNCTIONS_FOUNDATION_ENUMERATIONS_H

namespace orx {

// In which range the angle of the line through two points is expressed: angleFrom2Points (fitting/geometry.h)
// and TRansacLine::setAngleLimit. Degrees, from atan of (y1 - y2) / (x1 - x2), y running down as stored.
enum TAngleType : int {
    ANGLE_ABS = 0,      // of the absolute slope: [0, 90]
    ANGLE_0_180 = 1,    // of the signed slope, 180 added to negative results: [0, 180)
    ANGLE_SIGNED = 2,   // of the signed slope: (-90, 90]
    ANGLE_NO_LIMIT = 3  // TRansacLine only: samples are not limited by their angle
};

// The automatic threshold algorithms of getThresholdValue (analysis/threshold.h). Any other value selects
// Otsu.
enum TThresholdMethod : int {
    tmOtsu = 0,        // Otsu, between-class variance
    tmTriangle = 1,    // Zack, triangle
    tmMinimum = 2,     // Prewitt and Mendelsohn, minimum between two modes
    tmIntermodes = 3,  // Prewitt and Mendelsohn, mean of two modes
    tmHuang = 4,       // Huang and Wang, fuzzy entropy
    tmIterative = 5,   // Ridler and Calvard, iterative intermeans
    tmReserved = 6,    // no method of its own: Otsu
    tmMaxEntropy = 7,  // Kapur, Sahoo and Wong, maximum entropy
    tmIsoData = 8,     // IsoData, scan for the first balanced level
    tmMoments = 9,     // Tsai, moment preserving
    tmMinError = 10,   // Kittler and Illingworth, minimum error
    tmShanbhag = 11    // Shanbhag, information measure
};

// Which contours getContours returns.
enum TContourType : int {
    ctExternal = 0,   // outermost outlines only
    ctAll = 1,        // outer outlines and holes
    ctHoles = 2,      // outlines of holes only
    ctLargest = 3,    // the one outline of largest area
    ctConvexHull = 4  // the convex hulls of the outermost outlines
};

// What enhanceImage does: 1 equalises locally, every other value raises detail.
enum TEnchanceMethod : int {  // the spelling is part of the interface
    emDetailGain = 0,         // unsharp detail gain
    emEqualize = 1            // contrast-limited adaptive histogram equalisation
};

}  // namespace orx

// The mouse cursor of a picture box; any other value shows the arrow.
enum TCursorShape : int { CURSOR_ARROW = 0, CURSOR_HAND = 1, CURSOR_SIZEALL = 2, CURSOR_APPSTARTING = 3 };

// The interaction mode of a picture box. Only the values listed have an effect.
enum TFunction : int {
    FUNC_EDIT_RECT = 6,    // draw and edit a rectangular selection
    FUNC_EDIT_CIRCLE = 7,  // draw and edit a circular selection
    FUNC_ZOOM_PAN = 14,    // zoom with the wheel, pan by dragging; the default
    FUNC_NONE = 15         // no mouse handler
};

#endif
