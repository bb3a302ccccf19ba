// Why a call was refused: the last refusal of each thread, as a code and in words.
#ifndef ORXFUNCTIONS_FOUNDATION_REFUSAL_H
#define ORXFUNCTIONS_FOUNDATION_REFUSAL_H

#include <cstdint>
#include <string>

#include "orxFunctions/api.h"

namespace orx {

// What was wrong. Each header names the codes of its functions.
enum TRefusalCode : int {
    rcNone = 0,             // nothing was refused
    rcEmptyImage = 1,       // an image without pixels, or none
    rcImageType = 2,        // a depth or a number of channels that the function does not take
    rcImageDimensions = 3,  // an image of more than two dimensions
    rcImageSize = 4,        // too small or too large for the function
    rcSizesDiffer = 5,      // two images, lists or matrices that do not belong together
    rcOption = 6,           // a parameter or an option outside its range
    rcNotFinite = 7,        // a coordinate or a value that is infinite or not a number
    rcTooFew = 8,           // too few points or values
    rcTooMany = 9,          // more points, values or work than the function takes
    rcDegenerate = 10,      // all in one place, on a line, parallel, singular: no such shape, no such place
    rcOutside = 11,         // a region or a place that is not inside of the image
    rcNoResult = 12,        // the input is sound and gives no result: not settled, no support, nothing there
    rcNotReady = 13,        // not opened, not started, not taught, not fitted, or already so
    rcFileName = 14,        // not a name for a file or a folder
    rcFileMissing = 15,     // no such file or folder
    rcFileUnreadable = 16,  // there, but it can't be read (or is no plain file)
    rcFileUnwritable = 17,  // it can't be written, made or removed
    rcFileFormat = 18,      // its contents are not what they should be
    rcNoCamera = 19,        // there can't be a camera of that number
    rcDriver = 20,          // no driver module, or it refused
    rcTimeout = 21,         // it did not happen in time
    rcNoDisplay = 22,       // no display, or no window to show anything in
    rcMemory = 23,          // no memory left for it
    rcFailed = 24           // what a callback or another library reported; the text has its words
};

struct TRefusal {
    TRefusalCode code = rcNone;
    std::string function;      // the public function that refused, such as "edgesSubPixMetric"
    std::string text;          // English, UTF-8, at most 250 bytes: "edgesSubPixMetric: the image is empty"
    std::uint64_t number = 0;  // counts the refusals of this thread; 0 before the first
};

// The last refusal on the calling thread, rcNone and empty texts where there was none. As with errno, a call
// that succeeds leaves it as it is (and may leave the refusal of another call that it made itself): ask right
// after a function has answered with what it says for refused input, or clear it before the call. Costs
// nothing where nothing is refused. Thread-safe.
ORX_API TRefusal lastRefusal();

// Forgets the last refusal of the calling thread; `number` goes on. Thread-safe.
ORX_API void clearLastRefusal();

// A code as a short English text, such as "the image is empty"; "unknown code" for other values. Never null.
// Reentrant.
ORX_API const char* refusalCodeText(TRefusalCode code);

}  // namespace orx

#endif
