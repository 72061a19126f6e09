// Reading and writing drawings as DXF files (ASCII and binary read, ASCII
// written), without losing what the platform does not model.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "DbDatabase.h"

// What a read found and repaired: one line per repair, in the order found.
struct OdDxfReadReport {
  OdDb::DwgVersion version = OdDb::vAC09;
  OdString versionName;  // "AC1015"
  bool binary = false;
  std::vector<OdString> repairs;
};

// Handles from here up stand in, while a file is read, for the objects that
// have no usable handle of their own (none, an empty or a repeated one, or
// one in this range). Every object leaves the range before the read ends:
// it gets a handle above the highest of the file.
constexpr OdUInt64 kOdDxfPlaceholderHandles = 0x7FFFFFFF00000000ull;

// Reads a drawing. A file that cannot be read (or repaired safely) is
// refused with OdError: eCantOpenFile for a file that cannot be opened,
// eSyntaxError / eDxfReadAborted with a message that names the line (or byte
// offset) and what was expected.
OdDbDatabasePtr odDxfReadFile(const OdString& path, OdDxfReadReport* report = nullptr);
OdDbDatabasePtr odDxfReadBuffer(std::string_view data, OdDxfReadReport* report = nullptr);

// Versions that drawings are written in: the version read (R12 and older as
// R2000), or R2018 for new drawings.
OdDb::DwgVersion odDxfSaveVersion(const OdDbDatabase* db);
const wchar_t* odDxfVersionName(OdDb::DwgVersion version);
OdDb::DwgVersion odDxfVersionFromName(const OdString& acadver);

// Writes the drawing as ASCII DXF. Saving a file is atomic: a temporary file
// beside the target is written, flushed and renamed over it; on failure the
// old file is untouched and OdError_FileException says why.
std::string odDxfWriteBuffer(OdDbDatabase* db, OdDb::DwgVersion version);
void odDxfWriteFile(OdDbDatabase* db, const OdString& path, OdDb::DwgVersion version);
void odDxfWriteFile(OdDbDatabase* db, const OdString& path);
