// The system calls that modules use for libraries, string resources and
// private settings files, on this system's loader. Libraries are shared
// objects, or resource libraries of the host's own text format (see
// docs/architecture.md); settings files are classic INI files.
#pragma once

#include <cstdint>

#include "rytypes.h"

using DWORD = std::uint32_t;
using UINT = unsigned int;
using BOOL = int;
using HMODULE = void*;
using HINSTANCE = void*;
using LPCWSTR = const wchar_t*;
using LPWSTR = wchar_t*;
using FARPROC = void*;

#ifndef TRUE
#define TRUE 1
#define FALSE 0
#endif
#ifndef MAX_PATH
#define MAX_PATH 260
#endif

// Loads a library by path or by bare name (looked for beside the host and
// beside the calling module, with ".dll", ".so" or no extension). Loading
// the same file again returns the same handle and counts the reference.
RYAD_API HMODULE LoadLibraryW(LPCWSTR fileName);
RYAD_API BOOL FreeLibrary(HMODULE module);
RYAD_API FARPROC GetProcAddress(HMODULE module, const char* name);
// The handle of a library already loaded (by name, with or without folder
// and extension); null when it is not loaded. A null name: the host itself.
RYAD_API HMODULE GetModuleHandleW(LPCWSTR name);
RYAD_API DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size);
// A numbered string of a library into buffer (truncated to size - 1 and
// terminated); returns its length, 0 when there is no such string.
RYAD_API int LoadStringW(HINSTANCE instance, UINT id, LPWSTR buffer, int size);

// Private settings files (INI): sections and keys ignore letter case.
RYAD_API DWORD GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR defaultValue, LPWSTR buffer, DWORD size,
                                        LPCWSTR fileName);
RYAD_API UINT GetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, int defaultValue, LPCWSTR fileName);
RYAD_API BOOL WritePrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR fileName);

// The handle of the module that contains the given address (for a module
// to find its own file).
RYAD_API HMODULE ryModuleOfAddress(const void* address);
