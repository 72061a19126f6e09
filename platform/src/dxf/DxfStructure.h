// Knowledge of the DXF file structure shared by the reader and the writer:
// the standard classes' CLASSES entries and version names (the tables and
// the class of a DXF name are public, in DxfNames.h).
#pragma once

#include <vector>

#include "DbSchema.h"
#include "DxfNames.h"
#include "DxfTag.h"

// CLASSES entries for the classes of a written file that need one.
struct OdDxfStandardClass {
  const wchar_t* dxfName;
  const wchar_t* cppName;
  int proxyFlags;
  bool isEntity;
};
const OdDxfStandardClass* odDxfStandardClass(const OdString& dxfName);
