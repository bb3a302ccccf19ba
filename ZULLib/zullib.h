// ZULLib, the companion library: what a host and the libraries it loads share.
//
// A typed parameter store, a queue of messages for the user, trace output, and small text, path, process and
// time helpers. Every function may be called from any thread at any time.
//
// Texts that cross this interface are bytes in code page 936 (GBK), whatever the platform; toAnsi() and
// toUtf8() convert. File names are code page 936 on Windows and plain bytes on POSIX.
#ifndef ZULLIB_ZULLIB_H
#define ZULLIB_ZULLIB_H

#include <cstdint>
#include <string>

#if defined(_WIN32)
#if defined(ZUL_BUILDING_LIBRARY)
#define ZUL_API __declspec(dllexport)
#else
#define ZUL_API __declspec(dllimport)
#endif
struct HINSTANCE__;  // windows.h, without including it
#else
#define ZUL_API __attribute__((visibility("default")))
#endif

namespace zul {

// A loaded module: HINSTANCE on Windows; on POSIX a handle from dlopen, or nullptr for the module of the
// caller's program.
#if defined(_WIN32)
using TModuleHandle = HINSTANCE__*;
#else
using TModuleHandle = void*;
#endif

// A robot pose: translation in the robot's unit of length, rotation angles in degrees.
struct TPoint6D {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    double rx = 0.0;
    double ry = 0.0;
    double rz = 0.0;
};

// --- Parameter store
// ------------------------------------------------------------------------------------------------ Named
// values shared by the whole process. Each type is a name space of its own. The first call creates the
// parameter, later calls overwrite it. A parameter that was never set reads as false, 0, 0.0 or "".

ZUL_API void APPaddOrSetParamBool(std::string name, bool value);
ZUL_API void APPaddOrSetParamInt(std::string name, int value);
ZUL_API void APPaddOrSetParamDouble(std::string name, double value);
ZUL_API void APPaddOrSetParamString(std::string name, std::string value);
ZUL_API bool APPgetParamBool(std::string name);
ZUL_API int APPgetParamInt(std::string name);
ZUL_API double APPgetParamDouble(std::string name);
ZUL_API std::string APPgetParamString(std::string name);

// --- Messages to the user
// ------------------------------------------------------------------------------------------- A first-in
// first-out queue of at most 1,000 messages, which the host polls. When it is full the oldest message is
// dropped and counted, so that a host that never polls does not leak.

// The colour of messages that have no colour of their own. 0 unless the host changes it before it starts
// threads.
ZUL_API extern int G_appshowMsg_defaultColor;

// Appends a message. The meaning of the colour is the host's; the libraries use 1 for errors. Always true.
ZUL_API bool APPshowMessage(std::string text, int color);

// Takes the oldest message. False when there is none; the arguments are then untouched.
ZUL_API bool APPgetMessage(std::string& text, int& color);

// How many messages were dropped since the process started.
ZUL_API std::uint64_t droppedMessageCount();

// --- Trace
// ----------------------------------------------------------------------------------------------------------
// Lines for developers. One call is one line, without a line end: "text", "label text", "label 7",
// "label 3.14" or "label true".

ZUL_API void outPutDebugString(std::string text);
ZUL_API void outPutDebugString(std::string label, std::string text);
ZUL_API void outPutDebugString(std::string label, int value);
ZUL_API void outPutDebugString(std::string label, double value, int decimals);
ZUL_API void outPutDebugString(std::string label, bool value);
// Without this overload a literal as second argument would choose bool.
ZUL_API void outPutDebugString(std::string label, const char* text);

// Receives each trace line, in UTF-8 and without a line end, on the thread that traces; `context` is what was
// given to setTraceSink. It may be called from several threads at once and must not throw.
using TTraceSink = void (*)(const char* utf8Line, void* context);

// Replaces the sink; nullptr restores the default: OutputDebugStringA on Windows; on POSIX standard error
// when the environment variable ZUL_TRACE is set, else nowhere. When the call returns, the former sink is no
// longer running and will not be called again; a sink must therefore not call setTraceSink.
ZUL_API void setTraceSink(TTraceSink sink, void* context);

// --- Numbers and text
// -----------------------------------------------------------------------------------------------

ZUL_API std::string intToStr(int value);
// Leading blanks and a sign are accepted, parsing ends at the first other character. No digits give 0; values
// out of range give the nearest limit.
ZUL_API int strToInt(std::string text);
// As strToInt, with a point as decimal mark in every locale; "inf" and "nan" are numbers. No number gives
// 0.0.
ZUL_API double strToDouble(std::string text);
// Fixed-point text with a decimal point in every locale; `decimals` is clamped to 0 .. 100. Not-a-number and
// infinities are "nan", "inf" and "-inf".
ZUL_API std::string doubleToStr(double value, int decimals);

// UTF-8 to code page 936 and back. What has no counterpart becomes '?', in either direction; invalid input
// bytes do too, and nothing is ever refused.
ZUL_API std::string toAnsi(const std::string& utf8);
ZUL_API std::string toUtf8(const std::string& ansi);

// --- Paths
// ----------------------------------------------------------------------------------------------------------
// Both '/' and '\' separate on Windows, only '/' on POSIX.

// The part up to and including the last separator; "" without one.
ZUL_API std::string extractFilePath(std::string path);
// The part after the last separator.
ZUL_API std::string extractFileName(std::string path);
// The extension of the file name with its point (".png"); "" without one. A leading point (".profile") starts
// a name, not an extension.
ZUL_API std::string extractFileExt(std::string path);
// True when the path names an existing folder (a link to one included).
ZUL_API bool dirExists(std::string path);

// --- Process, modules, time
// -----------------------------------------------------------------------------------------

// The local time. 0: "YYYY-MM-DD HH:MM:SS " (with one blank at the end: a log line follows it without a
// separator); 1: "YYYY-MM-DD"; 2: "HH:MM:SS"; 3: "YYYYMMDDHHMMSS"; 4: "YYYYMMDD_HHMMSS_mmm" with
// milliseconds, fit for file names. Other formats as 0.
ZUL_API std::string getCurrentTime(int format);
// The folder of a loaded module, with a separator at its end; "" for an unknown handle.
ZUL_API std::string getDllPath(TModuleHandle module);
// The full file name of the running executable.
ZUL_API std::string getExeFileName();
// The version of a program or library file as text: the version resource on Windows ("1.2.3.4"); on POSIX the
// version of the Debian package that owns the file, else the version in the ELF file's shared-object name or
// its own name
// ("1.2.3" of libx.so.1.2.3). "" when there is none or the file can't be read.
ZUL_API std::string getFileVersion(std::string file);
// True when a process of that file name runs ("host.exe"; on POSIX the name of the executable or of the
// process). Letter case counts on POSIX and does not on Windows.
ZUL_API bool processIsExist(std::string name);

}  // namespace zul

#endif
