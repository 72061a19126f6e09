// What a DXF name stands for: the symbol tables (their names in files and
// in entity-data lists, their classes) and the class of an object of a
// given DXF name. The DXF reader and writer and the host's entity lists and
// table functions all ask here, so each of these facts is written once.
#pragma once

#include <vector>

#include "DbSchema.h"
#include "DxfTag.h"

struct OdDxfTableKind {
  OdDbNameTable table;
  const wchar_t* name;      // "LAYER": the table's name in files and its records' DXF name
  const wchar_t* listName;  // the table's name in entity-data lists and table searches ("BLOCK" for the blocks)
  OdRxClass* (*tableClass)();
  OdRxClass* (*recordClass)();
};

// The tables in the order files write them.
const std::vector<OdDxfTableKind>& odDxfTableKinds();
// The table of a name in files ("BLOCK_RECORD"), letter case ignored.
const OdDxfTableKind* odDxfTableKind(const OdString& name);
const OdDxfTableKind* odDxfTableKind(OdDbNameTable table);
// The table of a name in entity-data lists and table searches ("BLOCK"),
// letter case ignored.
const OdDxfTableKind* odDxfTableKindOfList(const OdString& listName);

// The class for an object of that DXF name; some names stand for several
// classes, told apart by their groups (POLYLINE and VERTEX by their flags,
// DIMENSION by its type, INSERT by its subclass marker or its rows and
// columns). Null when no registered class that can be made has the name,
// and for the names of tables and their records.
OdRxClass* odDxfClassForObject(const OdString& dxfName, const OdDxfTag* begin, const OdDxfTag* end);
// True for the names of entities that stand in a layout or a block (not the
// BLOCK and ENDBLK that frame a block).
bool odDxfIsEntityName(const OdString& dxfName);
