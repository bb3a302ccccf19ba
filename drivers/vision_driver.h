/* The C interface between the library and a camera driver module.
 *
 * A driver module is a shared library named TQVisionDriver.dll (Windows) or libTQVisionDriver.so (POSIX) that
 * exports the procedures below, undecorated, with the C calling convention. The library loads it at run time,
 * resolves every procedure by name and refuses the module when a required one is missing. A second module,
 * LumoCfg.dll or libLumoCfg.so, exports VDGetCameraType alone. This header is all that a vendor needs to
 * write either; it includes no other library and compiles as C99 and as C++.
 *
 * Cameras are addressed by a slot: 0 for the first camera that VDInitCamera found, up to VD_MAX_CAMERAS - 1.
 * A slot keeps its camera until VDDestoryCamera or the next VDInitCamera, also while the camera is unplugged;
 * the order must not change from one start to the next with the same cameras (sort by serial number).
 *
 * Where it is looked for. TQVisionDriver: in the process's extra folder for modules, if one is set, else by
 * the standard search of the system. LumoCfg: in the folder that getCameraType names (camera/camera.h), and
 * by that same search where it is not there.
 *
 * Threads. The library has one lock for the calls of all cameras. It is held in VDInitCamera,
 * VDDestoryCamera, VDOpen, VDGetImage, VDGetFrameInfo, VDSetParam, VDGetParam and VDClose, and in VDStart and
 * VDStop where they belong to opening and closing a camera, so none of them may wait long: while one waits,
 * all other cameras stand still. VDStart and VDStop by themselves (and VDClose after a VDStart that failed
 * then) are called without the lock from any thread, but never at the same time as another call for the same
 * slot. VDGetCameraType may be called with the lock or without it.
 *
 * Loading and unloading. Procedures may be called until the library lets the module go, and, where a host
 * does not let it go, while the process ends: also after the destructors of the module's own static objects
 * have run. What a procedure needs must outlive them (allocate it and never free it), or the procedure must
 * notice and answer false.
 *
 * Failure. A procedure that fails returns false (VDGetParam: not-a-number) and leaves the camera as it was;
 * it never throws, never ends the process, and accepts any slot number and any identifier (answering false
 * for those it does not know). A C++ exception that comes out of a procedure all the same, and that the
 * library's compiler knows, is a failed call to it; one that leaves a thread of the module's own ends the
 * process, as does any fault there (a signal, on Windows a structured exception): nobody can tell what such a
 * thread has left behind. A module catches what its threads can throw. */
#ifndef ORXFUNCTIONS_DRIVERS_VISION_DRIVER_H
#define ORXFUNCTIONS_DRIVERS_VISION_DRIVER_H

#ifndef __cplusplus
#include <stdbool.h>
#endif

/* A module marks its procedures with this word. */
#if defined(_WIN32)
#define VD_EXPORT __declspec(dllexport)
#else
#define VD_EXPORT __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

#define VD_MAX_CAMERAS 9

/* Camera brands. */
enum VDCameraType {
    VD_TYPE_DAHUA = 7,
    VD_TYPE_BASLER = 10,
    VD_TYPE_HIKVISION = 11,
    VD_TYPE_ANY = 12, /* any brand, and sources that are not cameras */
    VD_TYPE_DAHENG = 13,
    VD_TYPE_MICROVISION = 14,
    VD_TYPE_IMAGING_SOURCE = 15,
    /* Answers of VDGetCameraType besides the brands. */
    VD_TYPE_NONE = -1, /* no camera is connected */
    VD_TYPE_MIXED = -2 /* cameras of different brands are connected */
};

/* Parameters of VDSetParam and VDGetParam. "Read only" ones answer false when set. */
enum VDParameter {
    VD_PARAM_EXPOSURE = 1,          /* exposure time, microseconds */
    VD_PARAM_GAIN = 2,              /* gain, tenths of a decibel: 60 is 6.0 dB, an amplification by 2 */
    VD_PARAM_FRAME_RATE = 3,        /* frames per second of the free-running camera */
    VD_PARAM_TRIGGER_MODE = 4,      /* enum VDTriggerMode */
    VD_PARAM_WIDTH = 5,             /* of the region that is read out, pixels */
    VD_PARAM_HEIGHT = 6,            /* likewise */
    VD_PARAM_OFFSET_X = 7,          /* left column of that region */
    VD_PARAM_OFFSET_Y = 8,          /* top row of that region */
    VD_PARAM_PIXEL_FORMAT = 9,      /* enum VDPixelFormat: what the camera sends, not what VDGetImage gives */
    VD_PARAM_SOFTWARE_TRIGGER = 10, /* setting any value takes one picture; reads as 0 */
    VD_PARAM_FRAME_NUMBER = 100,    /* read only: complete frames received since VDStart */
    VD_PARAM_FRAME_AGE = 101,   /* read only: milliseconds since the picture of the last VDGetImage arrived */
    VD_PARAM_FRAMES_LOST = 102, /* read only: incomplete or overrun frames since VDStart */
    VD_PARAM_BYTES_RECEIVED = 103 /* read only: picture bytes received since VDStart */
};

enum VDTriggerMode {
    VD_TRIGGER_OFF = 0,      /* free running */
    VD_TRIGGER_SOFTWARE = 1, /* a picture for each VD_PARAM_SOFTWARE_TRIGGER */
    VD_TRIGGER_LINE_1 = 2,   /* a picture for each rising edge at the camera's first input */
    VD_TRIGGER_LINE_2 = 3    /* likewise at its second input */
};

enum VDPixelFormat {
    VD_PIXEL_MONO8 = 0,
    VD_PIXEL_MONO10 = 1,
    VD_PIXEL_MONO10_PACKED = 2,
    VD_PIXEL_MONO12 = 3,
    VD_PIXEL_MONO12_PACKED = 4,
    VD_PIXEL_MONO16 = 5,
    VD_PIXEL_BAYER_RG8 = 6,
    VD_PIXEL_BAYER_GB8 = 7,
    VD_PIXEL_BAYER_GR8 = 8,
    VD_PIXEL_BAYER_BG8 = 9,
    VD_PIXEL_RGB8 = 10,
    VD_PIXEL_BGR8 = 11
};

/* A picture as VDGetImage gives it: 8-bit samples, channels interleaved (grey, or blue green red, or blue
 * green red and a fourth), rows one after another without padding: width * channels bytes each. */
typedef struct VDImage {
    int width;
    int height;
    int channels; /* 1, 3 or 4 */
    unsigned char* data;
} VDImage;

/* Which picture it is, as VDGetFrameInfo tells. */
typedef struct VDFrameInfo {
    unsigned long long number;      /* of the picture handed over last; 0 for the black one */
    unsigned long long newest;      /* of the picture that VDGetImage would hand over now */
    unsigned long long device_time; /* nanoseconds by the camera's own clock; 0 when it has none */
    unsigned long long age;         /* nanoseconds since the picture arrived in this computer */
    unsigned int flags;             /* enum VDFrameFlag, combined */
} VDFrameInfo;

enum VDFrameFlag {
    /* The picture is the black one, and the first is on its way: the camera runs freely, and was started less
     * than a second ago. */
    VD_FRAME_FIRST_PENDING = 1,
    /* The module connects to a lost camera again by itself, and sets it as it was. */
    VD_FRAME_RETURNS = 2
};

/* Required procedures. */

/* Finds the cameras of a brand and assigns them to slots. `handles` (up to nine window handles of the host,
 * or null) and `flag` are the host's and need not be used; `handles` must not be followed without knowing the
 * host. Answers whether at least one camera was found. Calling it again closes all cameras and finds them
 * anew. */
VD_EXPORT bool VDInitCamera(int type, long long* handles, bool flag);

/* Takes control of the camera of a slot. True also when it is open already. */
VD_EXPORT bool VDOpen(int type, int index);

/* Starts acquisition and gives the format of the pictures to come, without waiting for the first of them.
 * True also when it has started already. */
VD_EXPORT bool VDStart(int* width, int* height, int* channels, int index);

/* Stops acquisition; the camera stays open. True also when it was not acquiring. */
VD_EXPORT bool VDStop(int index);

/* Gives the newest complete picture, or a black one before the first (VDGetFrameInfo tells them apart, and
 * the library then asks again where the first is on its way). `data` belongs to the module and stays valid,
 * unchanged, until the next VDGetImage, VDStop or VDClose of that slot. Where no newer picture has come, the
 * module waits a few milliseconds at most and gives the last one again; it answers false only when the camera
 * must be taken for lost (it does not answer, or runs freely and has sent no picture for a second and for
 * three periods), because the library asks the user to reconnect after six failures in a row. */
VD_EXPORT bool VDGetImage(VDImage* image, int index);

/* Sets a parameter. */
VD_EXPORT bool VDSetParam(int index, int id, long value);

/* Releases the camera of a slot; returns at once also when the camera is dead. True also when it was not
 * open. */
VD_EXPORT bool VDClose(int index);

/* Optional procedures. */

/* Reads a parameter; not-a-number when it can't be read. */
VD_EXPORT float VDGetParam(int index, int id);

/* Closes all cameras and releases everything that VDInitCamera took. (The name is spelled so.) */
VD_EXPORT void VDDestoryCamera(void);

/* Tells which picture the last VDGetImage of a slot handed over, so that each is counted once and none is
 * missed unnoticed. False when the camera does not acquire. It never waits.
 *
 * Every frame that the camera is known to have sent since VDStart has a number: 1, 2, 3 ..., also one that
 * was overwritten before it was fetched, that came incomplete or did not come at all. A number that is
 * missing between two pictures is therefore a lost frame. Numbers go on where a lost camera comes back by
 * itself, and begin anew with a VDStart that starts. The library checks them: a module whose numbers go back
 * is taken for one without this procedure. */
VD_EXPORT bool VDGetFrameInfo(VDFrameInfo* info, int index);

/* The only procedure of LumoCfg: the brand of the cameras connected to this machine, see enum VDCameraType.
 */
VD_EXPORT int VDGetCameraType(void);

#ifdef __cplusplus
}
#endif

#endif
