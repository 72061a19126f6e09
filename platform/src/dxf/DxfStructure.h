// Knowledge of the DXF file structure shared by the reader and the writer:
// the tables and their records, version names, and which class an object
// of a given DXF name (and groups) is.
#pragma once

#include <vector>

#include "DbSchema.h"
#include "DxfTag.h"

struct OdDxfTableKind {
  OdDbNameTable table;
  const wchar_t* name;  // "LAYER": the table's name and its records' DXF name
  OdRxClass* (*tableClass)();
  OdRxClass* (*recordClass)();
};

// The tables in the order files write them.
const std::vector<OdDxfTableKind>& odDxfTableKinds();
const OdDxfTableKind* odDxfTableKind(const OdString& name);
const OdDxfTableKind* odDxfTableKind(OdDbNameTable table);

// The class for an object of that DXF name; some names stand for several
// classes, told apart by their groups (POLYLINE and VERTEX by their flags,
// DIMENSION by its type, INSERT by its subclass marker). Null when no
// registered class has the name.
OdRxClass* odDxfClassForObject(const OdString& dxfName, const OdDxfTag* begin, const OdDxfTag* end);
// True for the names of entities that stand in a layout or a block (not the
// BLOCK and ENDBLK that frame a block).
bool odDxfIsEntityName(const OdString& dxfName);

// CLASSES entries for the classes of a written file that need one.
struct OdDxfStandardClass {
  const wchar_t* dxfName;
  const wchar_t* cppName;
  int proxyFlags;
  bool isEntity;
};
const OdDxfStandardClass* odDxfStandardClass(const OdString& dxfName);
