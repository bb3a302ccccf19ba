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

// A loaded module: HINSTANCE on Windows; on POSIX a handle from dlopen. nullptr is the running program.
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

// Parameter store.
//
// Named values shared by the whole process. Each type is a name space of its own. The first call creates the
// parameter, later calls overwrite it. A parameter that was never set reads as false, 0, 0.0 or "".

ZUL_API void APPaddOrSetParamBool(std::string name, bool value);
ZUL_API void APPaddOrSetParamInt(std::string name, int value);
ZUL_API void APPaddOrSetParamDouble(std::string name, double value);
ZUL_API void APPaddOrSetParamString(std::string name, std::string value);
ZUL_API bool APPgetParamBool(std::string name);
ZUL_API int APPgetParamInt(std::string name);
ZUL_API double APPgetParamDouble(std::string name);
ZUL_API std::string APPgetParamString(std::string name);

// Messages to the user.
//
// A first-in first-out queue of at most 1,000 messages, which the host polls. When it is full the oldest
// message is dropped and counted, so that a host that never polls does not leak. A message of which sixteen
// with the same text and colour are waiting already is counted and not appended, so that a flood of one
// message does not push out the others.

// The colour of messages that have no colour of their own. 0 unless the host changes it before it starts
// threads.
ZUL_API extern int G_appshowMsg_defaultColor;

// Appends a message. The meaning of the colour is the host's; the libraries use 1 for errors. Always true.
ZUL_API bool APPshowMessage(std::string text, int color);

// Takes the oldest message. False when there is none; the arguments are then untouched.
ZUL_API bool APPgetMessage(std::string& text, int& color);

// How many messages were dropped since the process started.
ZUL_API std::uint64_t droppedMessageCount();

// How many were not appended since then, because sixteen of their kind were waiting. They do not count as
// dropped.
ZUL_API std::uint64_t repeatedMessageCount();

// Trace.
//
// Lines for developers. One call is one line, without a line end: "text", "label text", "label 7",
// "label 3.14" or "label true".

ZUL_API void outPutDebugString(std::string text);
ZUL_API void outPutDebugString(std::string label, std::string text);
ZUL_API void outPutDebugString(std::string label, int value);
// The number is written as by doubleToStr.
ZUL_API void outPutDebugString(std::string label, double value, int decimals);
ZUL_API void outPutDebugString(std::string label, bool value);
// Without this overload a literal as second argument would choose bool. nullptr is an empty text.
ZUL_API void outPutDebugString(std::string label, const char* text);

// Receives each trace line, in UTF-8 and without a line end, on the thread that traces; `context` is what was
// given to setTraceSink. It may be called from several threads at once and must not throw. A slow sink delays
// each thread that traces by as long as it takes, and no other: no lock is held while it runs. Lines that are
// traced from inside a sink (by a library that it calls, say) are dropped.
using TTraceSink = void (*)(const char* utf8Line, void* context);

// Replaces the sink; nullptr restores the default: OutputDebugStringA on Windows, one line each; on POSIX
// standard error when the environment variable ZUL_TRACE was set at the first line, else nowhere. When the
// call returns, the former sink has ended and will not be called again, so that its context may be destroyed.
// A sink may itself call this: it ends after the line that it is receiving.
ZUL_API void setTraceSink(TTraceSink sink, void* context);

// Numbers and text, the same in every locale.

ZUL_API std::string intToStr(int value);
// Leading white space and one sign are accepted, parsing ends at the first other character. No digits give 0;
// values out of range give the nearest limit.
ZUL_API int strToInt(std::string text);
// As strToInt, decimal with a point and an exponent ("-1.5e-3"); "inf" and "nan" are numbers. No number gives
// 0.0; too large a value gives the infinity of its sign and too small a one the zero of its sign.
ZUL_API double strToDouble(std::string text);
// Fixed-point text with a decimal point, rounded exactly (ties to even); `decimals` is clamped to 0 .. 100.
// Not-a-number and infinities are "nan", "inf" and "-inf".
ZUL_API std::string doubleToStr(double value, int decimals);

// UTF-8 to code page 936 and back. Each character that has no counterpart becomes '?', in either direction;
// each byte that belongs to no valid character does too, and nothing is ever refused. NUL bytes are kept.
// On POSIX the table is iconv's; a system that lacks it keeps ASCII and gives '?' for the rest.
ZUL_API std::string toAnsi(const std::string& utf8);
ZUL_API std::string toUtf8(const std::string& ansi);

// Paths, by their text alone except for dirExists. Both '/' and '\' separate on Windows (but not the second
// byte of a double-byte character, which may look like '\'), only '/' on POSIX.

// The part up to and including the last separator; "" without one.
ZUL_API std::string extractFilePath(std::string path);
// The part after the last separator.
ZUL_API std::string extractFileName(std::string path);
// The extension of the file name with its point (".png"); "" without one. A leading point (".profile") starts
// a name, not an extension, and the folder name ".." has none.
ZUL_API std::string extractFileExt(std::string path);
// True when the path names something that exists, a folder or (in spite of the name) a file; links are
// followed.
ZUL_API bool dirExists(std::string path);

// Process, modules, time.

// The local time. 0: "YYYY-MM-DD HH:MM:SS " (with one blank at the end: a log line follows it without a
// separator); 1: "YYYY-MM-DD"; 2: "HH:MM:SS"; 3: "YYYYMMDDHHMMSS"; 4: "YYYYMMDD_HHMMSS_mmm" with
// milliseconds, fit for file names. Other formats as 0.
ZUL_API std::string getCurrentTime(int format);
// The folder of a loaded module, with a separator at its end; "" for an unknown handle (any value may be
// asked). nullptr asks for the program's folder.
ZUL_API std::string getDllPath(TModuleHandle module);
// The full file name of the running executable.
ZUL_API std::string getExeFileName();
// The version of a program or library file as text: the version resource on Windows ("1.2.3.4"); on POSIX the
// version of the Debian package that owns the file (or else the link that names it), else the version in the
// ELF file's shared-object name, continued by that in its own name where it is more exact ("1.2.3" of
// libx.so.1.2.3 whose object name is libx.so.1). "" when there is none or the file can't be read. Links are
// followed. Reads the package lists of the system, so it takes milliseconds.
ZUL_API std::string getFileVersion(std::string file);
// True when a process of that file name runs ("host.exe"; on POSIX the name of the executable or of the
// process). Letter case counts on POSIX and does not on Windows.
ZUL_API bool processIsExist(std::string name);

}  // namespace zul

#endif
