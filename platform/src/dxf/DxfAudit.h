// The audit of a drawing being read: the reader reads what the file holds,
// the audit adds what it lacks and decides which handles stay.
//
// While the file is read, the reader asks the audit for the objects it
// needs before the file names them (the tables, the model and paper space
// blocks, a block record for a block without one) and hands it each object
// with the handle the file gave (addWithHandle). Once every group is read,
// run() repairs the drawing as a whole, in this order:
//   1. missing tables, model and paper space;
//   2. standard records (linetypes ByBlock, ByLayer, Continuous, layer 0,
//      text style Standard, the ACAD application; for R2000 on and old files,
//      a dimension style and an active viewport where the table is empty);
//   3. names that objects used and no record had (a layer or block is added,
//      a linetype, text style or dimension style falls back to a standard one);
//   4. BLOCK and ENDBLK for blocks known from their record alone;
//   5. the named-object dictionary, ACAD_GROUP, and from R2000 on the
//      layouts and their links with the spaces;
//   6. blocks that contain themselves, reported;
//   7. final handles: every object in the placeholder range gets one above
//      the file's highest, in the order the objects were made.
// Objects added before the file's handles are all known hold placeholders
// from kOdDxfPlaceholderHandles up. Each repair is one line of the report.
#pragma once

#include <map>
#include <vector>

#include "DbSchema.h"
#include "DxfFile.h"
#include "dxf/DxfStructure.h"

class OdDbSymbolTableRecord;

// What the reader and the audit both keep while a drawing is read.
struct OdDxfReadState {
  explicit OdDxfReadState(OdDxfReadReport& readReport) : report(readReport) {}

  OdDxfReadReport& report;
  OdDbDatabase* db = nullptr;
  bool hasHeader = false;  // the file had a HEADER section
  OdDbObjectId modelSpace, paperSpace;
  std::map<OdString, OdDbObjectId, OdStringLessNoCase> blocksByName;

  // Objects the file should have had are reported from R12 on; older files
  // (and files without a header) have no such objects by design.
  bool reportsAdditions() const { return hasHeader && report.version >= OdDb::vAC12; }
};

// A name an object used, resolved once every record is read.
struct OdDxfDeferredName {
  OdDbObject* object;
  const OdDbField* field;
  OdString name;
};

// The handle a file gave an object.
struct OdDxfFileHandle {
  bool given = false;  // a handle group was there
  bool valid = true;   // and it held a handle (not empty)
  OdUInt64 value = 0;
};

class OdDxfAudit {
 public:
  explicit OdDxfAudit(OdDxfReadState& state) : m(state) {}

  // Adds an object read from the file: with the file's handle when it is
  // usable and not taken, else with a placeholder, and said so (line: where
  // the object stood).
  OdDbObjectId addWithHandle(OdDbObject* object, const OdDxfFileHandle& handle, const OdDbObjectId& owner,
                             const OdString& what, int line);
  // Objects the file lacks: they hold placeholders until the final handles.
  OdDbObjectId addMissing(OdDbObject* object, const OdDbObjectId& owner = OdDbObjectId());
  OdDbObjectId addMissingTable(const OdDxfTableKind& kind);
  // Also enters the record in its table (and a block in blocksByName).
  OdDbObjectId addMissingRecord(OdDbNameTable table, OdDbSymbolTableRecord* record);
  // Every table, and the model and paper space blocks.
  void ensureTables();
  void ensureSpaces();

  // The repairs of the whole drawing, after the last group was read.
  void run(std::vector<OdDxfDeferredName>& deferredNames);

 private:
  void repair(const OdString& message) { m.report.repairs.push_back(message); }
  void ensureStandardRecords();
  void resolveDeferredNames(std::vector<OdDxfDeferredName>& deferred);
  void addBlockMarkers();
  void ensureRootDictionaries();
  void reportBlockCycles();
  void finalHandles();

  OdDxfReadState& m;
  OdUInt64 m_nextPlaceholder = 1;
};
