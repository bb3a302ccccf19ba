// What the Windows sources share. The system is called through its wide functions only, so that nothing
// depends on the code page of the machine.
#ifndef ZULLIB_WIN32_INTERNAL_H
#define ZULLIB_WIN32_INTERNAL_H

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <string>

namespace zul::win32 {

constexpr UINT kCodePage = 936;

// Empty when the text can't be converted.
std::wstring wideFrom(UINT codePage, const std::string& text);
// Characters without a counterpart in code page 936 become '?'.
std::string ansiFromWide(const std::wstring& wide);

}  // namespace zul::win32

#endif
