// Utility functions of the host SDK: command-line output, result-buffer
// lists, wildcard matching, character classes and the host's folders.
#pragma once

#include <cstddef>
#include <memory>

#include "OdString.h"
#include "rytypes.h"

// printf-style output to the command line (wide formats: %ls for strings).
RYAD_API int ryutPrintf(const ACHAR* format, ...);

// ---- Result buffers
RYAD_API resbuf* ryutNewRb(int type);
RYAD_API int ryutRelRb(resbuf* list);
// A list from type/value pairs ending with RTNONE (values as for ryedCommand;
// DXF group codes take the value of their group's type).
RYAD_API resbuf* ryutBuildList(int type, ...);
// A copy of a list.
RYAD_API resbuf* ryutDupList(const resbuf* list);

// Owner of a result-buffer list: the list is released on every way out.
struct RyResultListRelease {
  void operator()(resbuf* list) const { ryutRelRb(list); }
};
using RyResultList = std::unique_ptr<resbuf, RyResultListRelease>;

// ---- Matching and characters
// Classic wildcard matching: # digit, @ letter, . non-alphanumeric, * any
// sequence, ? any character, ~ (first) not, [...] and [~...] classes, `
// escape, comma-separated alternatives. Letter case is ignored.
RYAD_API int ryutWcMatch(const ACHAR* string, const ACHAR* pattern);
RYAD_API int ryutIsAlpha(int c);
RYAD_API int ryutIsUpper(int c);
RYAD_API int ryutIsLower(int c);
RYAD_API int ryutIsDigit(int c);
RYAD_API int ryutIsSpace(int c);
RYAD_API int ryutToUpper(int c);
RYAD_API int ryutToLower(int c);

// ---- Geometry helpers
RYAD_API ads_real ryutAngle(const ads_point from, const ads_point to);
RYAD_API ads_real ryutDistance(const ads_point from, const ads_point to);
RYAD_API void ryutPolar(const ads_point from, ads_real angle, ads_real distance, ads_point result);

// ---- Folders
// The host's program folder (where ryad and the modules are), with a trailing slash.
RYAD_API OdString ryutGetRyadAppDir();
// Joins a folder and a name with one separator.
RYAD_API OdString ryutCombinePath(const OdString& folder, const OdString& name);
