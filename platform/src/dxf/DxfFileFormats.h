// The other drawing formats odDxfReadFile opens. The DXF layer names none of
// them: a layer above it (the DWG reader) registers its format when its
// objects are loaded, so that opening a file of that format reads it with its
// own reader, while the DXF layer alone reads DXF only.
#pragma once

#include <string_view>

#include "DxfFile.h"

struct OdDxfOtherFormat {
  // True when the data is a file of this format.
  bool (*claims)(std::string_view data);
  OdDbDatabasePtr (*read)(std::string_view data, OdDxfReadReport* report);
};

void odDxfRegisterOtherFormat(const OdDxfOtherFormat& format);

// The drawing in data, read by the registered format that claims it, or as DXF.
OdDbDatabasePtr odDxfReadAnyBuffer(std::string_view data, OdDxfReadReport* report);
