// Live images inside a window of the host.
#ifndef ORXFUNCTIONS_DISPLAY_PICTURE_BOX_H
#define ORXFUNCTIONS_DISPLAY_PICTURE_BOX_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/display/picture_events.h"
#include "orxFunctions/display/picture_overlay.h"
#include "orxFunctions/foundation/enumerations.h"
#include "orxFunctions/foundation/records.h"

// What a picture box shows: the image, zoom and selections that it shares with the other boxes of the
// process, or those of its own.
enum class TPictureOf { kProcess, kBox };

// A picture box shows images inside a window of the host: fitted into it, with drawings on top, zoomed and
// selected in with the mouse. A thread of its own redraws whenever an image has been handed in, at a
// regulated rate.
//
//     TPictureBox box;
//     box.setHandle(windowOfTheHost, 800, 600);
//     box.start();
//     box.setImage(image, false);  // as often as there is one, from any thread
//
// The image, the zoom and the selections belong to the process, not to a box: a system has one interactive
// view at a time, and a second box shows the same image. That is intended. A host that shows several pictures
// at a time makes its boxes with TPictureOf::kBox: each has an image, a zoom and selections of its own.
//
// Image coordinates are pixels of the image handed in, window coordinates pixels of the box; x runs right and
// y down. Thread-safe, except for construction, start and destruction, which belong to one thread.
//
// A window handle is an HWND on Windows. On other systems it is the number of an X window, cast to a pointer;
// the X server must know the window already (flush the host's connection first). Without a display, or when
// it goes away, or when the host's window is destroyed first, a box does all but show: the mapping, the
// drawing and the pacing work on, the reason is traced once, and setHandle with a living window brings the
// picture back.
//
// A window system that does not answer (a stopped X server, say) holds up neither images nor anything else
// that is handed in or asked for: the last image is shown when it goes on. It is waited for by construction,
// and up to three seconds by showImage, showImageLast, setHandle and the destruction.
//
// What refuses keeps the reason for lastRefusal(): rcEmptyImage, rcImageDimensions and rcMemory of an image
// that is not taken; rcOption and rcMemory of a size of the window; rcNotFinite of a selection, which is then
// none; rcNoDisplay of a handle in whose window nothing can be shown, or none in time; of showImage and
// showImageLast rcNotReady without an image, rcImageType for one that can't be shown, rcFailed for what
// OpenCV reports. What fails on the display thread is traced alone.
//
// The public data may be read at any time where it is atomic. The rest (rects, circles, texts, canvas,
// display, winName) is written by the operations below and safe to read where no other thread calls them.
class ORX_API TPictureBox {
  public:
    // Opens the hidden window "pictrueBox1" + number, where the number counts the boxes alive with this one:
    // the first is "pictrueBox11". (The spelling is part of the interface.)
    TPictureBox();

    // A box with a picture of its own is not counted (mCount); its window is "pictureBoxOwn" + a number.
    explicit TPictureBox(TPictureOf whose);

    // Ends the display thread and closes the window, and with it, as intended, the windows of every other box
    // of the process (and on Windows every window of OpenCV's); a box with a picture of its own closes its
    // own alone. A box that is destroyed on its own display thread ends the process.
    ~TPictureBox();

    TPictureBox(const TPictureBox&) = delete;
    TPictureBox& operator=(const TPictureBox&) = delete;

    // The window of the host inside which the box shows. Nothing happens when it is so already.
    void setHandle(void* hwnd);
    // The same, then setWindowSize.
    void setHandle(void* hwnd, int w, int h);
    // The window given last; nullptr before the first.
    void* getParentHand();

    // How many pixels of the host's window the box has. Sizes below 5 are ignored, as are sizes that no
    // window can have (a side above 32767, or more than 2^27 pixels). A picture that is shown already is
    // fitted anew at the display thread's next turn.
    void setWindowSize(int w, int h);

    // Hands in an image of 1, 3 or 4 channels; empty ones are ignored. The pixels are shared, not copied:
    // they must stay valid and unchanged until another image is handed in. 8-bit images of 4 channels become
    // 3-channel copies. Unless `noRedraw`, the display thread shows the image at its next turn. An image that
    // can't be taken (more than two dimensions, say) keeps the former one, with the message "设置图片失败!"
    // in colour 1.
    void setImage(cv::Mat& img, bool noRedraw);
    void setImage(const cv::Mat& img, bool noRedraw);

    // Hands in an image together with what is drawn over it: no picture is ever shown with another one's
    // shapes. The image is as for setImage, and shown at the display thread's next turn; one that is empty or
    // can't be taken is refused with false, and picture and overlay stay as they were. Where boxes share an
    // image, each has its own overlay: what another box hands in is shown with the overlay that this one has.
    // Two boxes that are fed apart should therefore have pictures of their own.
    bool setPicture(const cv::Mat& image, TOverlay overlay);
    // Replaces what is drawn over the image that is there; shown at the next turn. The shapes lie over the
    // rectangles and circles of setDrawRect and setDrawCircle, and below the selections and texts; clearDraw
    // leaves them.
    void setOverlay(TOverlay overlay);
    TOverlay getOverlay() const;
    // Hides the shapes of a group, in this and in every later overlay, or shows them again; at the next turn.
    void showGroup(const std::string& group, bool shown);
    bool isGroupShown(const std::string& group) const;

    // Starts the display thread. Once only: a second call ends the process, as for any standard thread.
    // Throws std::system_error where the system has no thread; it may be called again then.
    void start();
    // Lets the display thread end after its current turn. The box can't be started again.
    void killThread();

    // How many images a second are shown at most; below 1 is 1. It holds from the next shown image on.
    void setShowFrame(int fps);
    // The rate that is applied, images per second.
    int getShowFrame();

    // Shows the image now, on the calling thread: fits it into the window, zooms, draws rectangles, circles,
    // selections and texts. Nothing is shown while the box is `frozen` or the left mouse button drags.
    void showImage();
    // Shows the image now, without zoom (which is reset) and without anything drawn on it.
    void showImageLast();

    // Image to window coordinates and back, as the image was last fitted and as the zoom is now. Both store
    // the factors that they used in scaleX and scaleY. Before any image was handed in the result is not
    // finite; until it is shown, every point of it maps to (0, 0).
    cv::Point2d orig2ShowPoint(cv::Point2d p);
    cv::Point2d show2OrigPoint(cv::Point2d p);
    // The factors from image to window used last; 1.0 before.
    void getOrig2ShowImgScaleXY(double& sx, double& sy);

    // Adds a rectangle or circle to what is drawn over the image. A negative thickness fills.
    void setDrawRect(TDrawRect rect);
    void setDrawCircle(TDrawCircle circle);
    // Replaces the lines of text; the first stands at (50, 50) of the window, each further below the last. In
    // a window that is too small for them they are written smaller, with place and distances in the same
    // ratio, down to a quarter. OpenCV's fonts have ASCII characters only.
    void setDrawText(TDrawTexts& lines);
    void setDrawText(const TDrawTexts& lines);
    // Removes the rectangles, the circles and the lines of text.
    void clearDraw();

    void setCursor(TCursorShape shape);

    // What the mouse does: FUNC_ZOOM_PAN, FUNC_EDIT_RECT or FUNC_EDIT_CIRCLE; FUNC_NONE leaves it to the
    // host: on X the events then go to the host's window. Other values are stored only.
    //
    // FUNC_ZOOM_PAN: the wheel zooms about the cursor, 1 to 64 times, by 1.25 a notch; dragging with the left
    // button pans; a double click shows the whole image.
    // FUNC_EDIT_RECT: dragging draws a rectangle, or changes or moves the one there is by its nine handles
    // (corners, middles of the sides, centre); it stays inside the image. Set `selectRect` to see it.
    // FUNC_EDIT_CIRCLE: dragging from the centre draws a circle; dragging the edge resizes, the centre moves
    // it. Set `selectCircle` to see it.
    void setFunction(TFunction f);

    // A mouse event of the box's window, for hosts that receive the mouse themselves: `event`, `flags` and
    // the wheel are those of OpenCV's mouse callbacks, x and y window coordinates.
    void mouseEvent(int event, int x, int y, int flags);

    // Who is told when the mouse changed a selection in this box, when it moved, and when it clicked, once an
    // image was shown; an empty function is nobody. They are called on the thread that takes the mouse: on X
    // a thread of the box, on Windows the one that made the box, and the one that calls mouseEvent. No lock
    // of the box is held: a callback may call the box, but not destroy it, and must not wait for a thread
    // that calls setFunction or destroys the box, since both wait for a running callback. One that is
    // replaced may still be running. What it throws is traced. With FUNC_NONE the mouse is the host's, so
    // only mouseEvent brings something to tell. Selections that the host sets are not told.
    void onSelectionChanged(std::function<void(const TSelectionChange&)> callback);
    void onCursor(std::function<void(const TPicturePlace&)> callback);
    void onClick(std::function<void(const TPictureClick&)> callback);

    std::string getCvWinName();

    // The selections of the process in image coordinates. Setting one replaces it, whatever the mouse did;
    // sizes that are not positive remove it. Getting answers false, and leaves the argument, without one.
    // A rectangle that the mouse drew is in window coordinates until its box shows it for the first time,
    // and a box does that only while `selectRect` is set: before, and without it, getSelectionRect is false.
    static void setSelectionRect(const cv::Rect2d& rect);
    static bool getSelectionRect(cv::Rect2d& rect);
    static void setSelectionCircle(cv::Point center, double radius);
    static bool getSelectionCircle(cv::Point& center, double& radius);

    // A copy of the picture that any box showed last, but for those with a picture of their own; false before
    // the first.
    static bool getLastShownImage(cv::Mat& picture);

    // The same of this box: the selections and the last picture of the process, or its own where it has one.
    // Setting a selection also shows it, at the next turn of the display thread; getSelectedRect answers
    // while the rectangle is being drawn, too, and without `selectRect`.
    void setSelectedRect(const cv::Rect2d& rect);
    bool getSelectedRect(cv::Rect2d& rect) const;
    void setSelectedCircle(cv::Point center, double radius);
    bool getSelectedCircle(cv::Point& center, double& radius) const;
    bool getShownImage(cv::Mat& picture) const;

    // One step of pacing, which the display thread takes after each image shown.
    void calShowFrame();

    std::atomic<bool> drawnOnce{false};         // the selected rectangle is in image coordinates
    std::atomic<std::int32_t> windowWidth{0};   // of the box, pixels; 0 until setWindowSize
    std::atomic<std::int32_t> windowHeight{0};  //
    std::atomic<bool> keepAspect{true};         // fit with the image's ratio, else fill the window
    std::atomic<TFunction> function{FUNC_ZOOM_PAN};

    // How the mouse handlers feel.
    std::atomic<std::int32_t> panGain{256};           // panning in 1/256 of the cursor's way
    void* hostData[3] = {nullptr, nullptr, nullptr};  // the host's; never read
    std::atomic<std::int32_t> smallestSelection{1};   // a smaller selection is dropped, image pixels
    std::atomic<std::int32_t> selectionThickness{1};  // of the rectangle; the circle is drawn twice as thick
    std::atomic<std::int32_t> handleRadius{4};        // a handle is caught within twice this many pixels
    std::atomic<double> selectionGreen{255.0};        // the selections' colour is (0, this, 0)

    std::atomic<bool> selectCircle{false};  // draw the selected circle
    std::atomic<bool> selectRect{false};    // draw the selected rectangle
    std::atomic<bool> frozen{false};        // skip redrawing
    std::atomic<bool> sizeChanged{false};   // the window's size changed; ends a zoom at the next fit
    std::vector<TDrawRect> rects;
    std::vector<TDrawCircle> circles;
    TDrawTexts texts;
    cv::Mat canvas;   // the grey that is seen beside the image
    cv::Mat display;  // the picture as it was last made ready for showing

    // Where the image lands in the window, unzoomed.
    std::atomic<double> shownWidth{0.0};
    std::atomic<double> shownHeight{0.0};
    std::atomic<double> offsetX{0.0};
    std::atomic<double> offsetY{0.0};
    std::atomic<double> origWidth{0.0};  // of the image handed in or shown last
    std::atomic<double> origHeight{0.0};
    std::atomic<double> scaleX{1.0};  // from image to window, used last
    std::atomic<double> scaleY{1.0};

    std::string winName;
    std::atomic<void*> cvWindow{
        nullptr};                         // the window that is drawn into; nullptr while nothing can be shown
    std::atomic<void*> cvFrame{nullptr};  // its first parent, never seen
    std::atomic<void*> host{nullptr};
    std::atomic<bool> redraw{false};  // an image waits to be shown
    std::atomic<bool> killFlag{false};

    // Pacing. The counter never advances, so that the rate is never measured: the pause stays at 1000 / rate.
    // That is intended.
    std::atomic<std::int32_t> sleepMs{50};  // the display thread's pause
    std::atomic<std::int32_t> measureFrames{8};
    std::atomic<std::int32_t> measuredFps{20};
    std::atomic<std::int32_t> frameCounter{0};
    std::atomic<double> startTick{0.0};
    std::atomic<double> elapsedMs{0.0};
    std::atomic<std::int32_t> appliedFps{0};
    std::atomic<std::int32_t> targetFps{20};

    static std::atomic<std::int32_t> mCount;  // boxes alive

  private:
    class ORX_PRIVATE View;
    std::unique_ptr<View> view_;
};

#endif
