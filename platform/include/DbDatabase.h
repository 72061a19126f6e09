// The drawing database: every object of one drawing by handle, the symbol
// tables and dictionaries, header variables, undo and reactors.
#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "CmColor.h"
#include "DbObject.h"

class OdDbDatabase;
class OdDbUndoController;
class OdDbBlockTableRecord;
using OdDbDatabasePtr = OdSmartPtr<OdDbDatabase>;

class OdDbDatabaseReactor : public OdRxObject {
  ODRX_DECLARE_MEMBERS(OdDbDatabaseReactor);

 public:
  virtual void objectAppended(const OdDbDatabase* db, const OdDbObject* object) {}
  virtual void objectUnAppended(const OdDbDatabase* db, const OdDbObject* object) {}
  virtual void objectReAppended(const OdDbDatabase* db, const OdDbObject* object) {}
  virtual void objectOpenedForModify(const OdDbDatabase* db, const OdDbObject* object) {}
  virtual void objectModified(const OdDbDatabase* db, const OdDbObject* object) {}
  virtual void objectErased(const OdDbDatabase* db, const OdDbObject* object, bool erased = true) {}
  virtual void headerSysVarWillChange(const OdDbDatabase* db, const OdString& name) {}
  virtual void headerSysVarChanged(const OdDbDatabase* db, const OdString& name) {}
  virtual void goodbye(const OdDbDatabase* db) {}
};

// One header variable as a drawing file carries it: its name ("$CLAYER")
// and the groups that follow it.
struct OdDbHeaderVariable {
  OdString name;
  OdDxfTagList tags;
};

// One entry of the CLASSES section, kept as read.
struct OdDbClassRecord {
  OdString dxfName, cppName, appName;
  OdInt32 proxyFlags = 0, instanceCount = 0;
  bool wasProxy = false, isEntity = false;
};

class OdDbDatabase : public OdRxObject {
  ODRX_DECLARE_MEMBERS(OdDbDatabase);

 public:
  OdDbDatabase();
  ~OdDbDatabase() override;

  // A new drawing with the standard tables, layer "0", the linetypes
  // BYBLOCK, BYLAYER and CONTINUOUS, the text and dimension style "Standard",
  // model and paper space with their layouts, and the default header.
  static OdDbDatabasePtr createNew();
  // An empty database (no tables): the DXF reader fills it.
  static OdDbDatabasePtr createEmpty();

  // Objects and handles.
  // Adds an object to the database, owned by ownerId, with a new handle (or
  // the given one, which must be free). Returns its id.
  OdDbObjectId addOdDbObject(OdDbObject* object, const OdDbObjectId& ownerId = OdDbObjectId(),
                             const OdDbHandle& handle = OdDbHandle());
  // The id of a handle; with createIfNotFound, a stub without object is made
  // (references to objects that will be read later, or never).
  OdDbObjectId getOdDbObjectId(const OdDbHandle& handle, bool createIfNotFound = false);
  // The next handle to hand out: above every handle the database holds.
  OdDbHandle handseed() const { return m_handseed; }
  // Raises the seed (a lower value is ignored).
  void setHandseed(const OdDbHandle& seed);
  // Every id that has an object, in handle order (erased ones included).
  OdDbObjectIdArray allObjectIds() const;
  // Number of handles in use (objects and dangling references).
  size_t numberOfHandles() const;
  // Calls fn(id) for every id that has an object, in no particular order
  // (fast: no sorting).
  template <class Fn>
  void forEachObjectId(Fn&& fn) const {
    visitObjectIds(&fn, [](void* context, const OdDbObjectId& id) { (*static_cast<Fn*>(context))(id); });
  }
  void visitObjectIds(void* context, void (*visit)(void*, const OdDbObjectId&)) const;

  // Tables and dictionaries.
  OdDbObjectId getBlockTableId() const { return m_blockTableId; }
  OdDbObjectId getLayerTableId() const { return m_layerTableId; }
  OdDbObjectId getLinetypeTableId() const { return m_linetypeTableId; }
  OdDbObjectId getTextStyleTableId() const { return m_textStyleTableId; }
  OdDbObjectId getDimStyleTableId() const { return m_dimStyleTableId; }
  OdDbObjectId getRegAppTableId() const { return m_regAppTableId; }
  OdDbObjectId getUCSTableId() const { return m_ucsTableId; }
  OdDbObjectId getViewTableId() const { return m_viewTableId; }
  OdDbObjectId getViewportTableId() const { return m_viewportTableId; }
  OdDbObjectId getNamedObjectsDictionaryId() const { return m_namedObjectsDictionaryId; }
  OdDbObjectId getGroupDictionaryId(bool createIfNotFound = true);
  OdDbObjectId getLayoutDictionaryId(bool createIfNotFound = true);
  OdDbObjectId getModelSpaceId() const;
  OdDbObjectId getPaperSpaceId() const;
  // The space new entities go to: model space, or the current layout's block.
  OdDbObjectId currentSpaceId() const;
  void setCurrentSpace(const OdDbObjectId& blockId) { m_currentSpaceId = blockId; }
  OdDbObjectId getLayerZeroId() const;
  OdDbObjectId getLinetypeByLayerId() const;
  OdDbObjectId getLinetypeByBlockId() const;
  OdDbObjectId getLinetypeContinuousId() const;
  OdDbObjectId getTextStyleStandardId() const;
  OdDbObjectId getDimStyleStandardId() const;
  // The record of that name in a table, or null.
  OdDbObjectId findRecord(OdDbNameTable table, const OdString& name) const;
  OdDbObjectId tableId(OdDbNameTable table) const;

  // Internal to the platform: set by the reader and by createNew.
  void setTableId(OdDbNameTable table, const OdDbObjectId& id);
  void setNamedObjectsDictionaryId(const OdDbObjectId& id) { m_namedObjectsDictionaryId = id; }

  // Header variables, kept in file order; names are case-insensitive and
  // carry the leading "$".
  const std::vector<OdDbHeaderVariable>& headerVariables() const { return m_header; }
  const OdDxfTagList* headerVariable(const OdString& name) const;
  void setHeaderVariable(const OdString& name, const OdDxfTagList& tags);
  void removeHeaderVariable(const OdString& name);
  double headerReal(const OdString& name, double defaultValue) const;
  OdInt64 headerInt(const OdString& name, OdInt64 defaultValue) const;
  OdString headerString(const OdString& name, const OdString& defaultValue = OdString()) const;
  OdGePoint3d headerPoint(const OdString& name, const OdGePoint3d& defaultValue = OdGePoint3d()) const;
  void setHeaderReal(const OdString& name, int code, double value);
  void setHeaderInt(const OdString& name, int code, OdInt64 value);
  void setHeaderString(const OdString& name, int code, const OdString& value);
  void setHeaderPoint(const OdString& name, int code, const OdGePoint3d& value, int dims = 3);

  // Typed forms of the header variables that commands use.
  OdDbObjectId getCLAYER() const;
  OdResult setCLAYER(const OdDbObjectId& layerId);
  OdDbObjectId getTEXTSTYLE() const;
  OdResult setTEXTSTYLE(const OdDbObjectId& styleId);
  OdDbObjectId getCELTYPE() const;
  OdResult setCELTYPE(const OdDbObjectId& linetypeId);
  OdDbObjectId getDIMSTYLE() const;
  OdCmColor getCECOLOR() const;
  void setCECOLOR(const OdCmColor& color);
  OdDb::LineWeight getCELWEIGHT() const;
  double getCELTSCALE() const { return headerReal(L"$CELTSCALE", 1.0); }
  double getLTSCALE() const { return headerReal(L"$LTSCALE", 1.0); }
  void setLTSCALE(double value) { setHeaderReal(L"$LTSCALE", 40, value); }
  double getDIMSCALE() const { return headerReal(L"$DIMSCALE", 1.0); }
  double getTEXTSIZE() const { return headerReal(L"$TEXTSIZE", 2.5); }
  int getINSUNITS() const { return static_cast<int>(headerInt(L"$INSUNITS", 0)); }
  double getANGBASE() const { return headerReal(L"$ANGBASE", 0.0); }
  bool getANGDIR() const { return headerInt(L"$ANGDIR", 0) != 0; }
  int getDWGCODEPAGE() const;

  // The properties new entities take (current layer, linetype, colour,
  // scale, lineweight, text style and size), kept until a header variable
  // changes or a record they name goes away.
  struct EntityDefaults {
    OdDbObjectId layer, linetype, textStyle;
    OdCmColor color;
    double linetypeScale = 1.0;
    double textSize = 2.5;
    OdDb::LineWeight lineWeight = OdDb::kLnWtByLayer;
  };
  const EntityDefaults& entityDefaults() const;

  // Version of the file the database was read from (new drawings: R2018).
  OdDb::DwgVersion originalFileVersion() const { return m_fileVersion; }
  void setOriginalFileVersion(OdDb::DwgVersion version) { m_fileVersion = version; }
  const OdString& getFilename() const { return m_fileName; }
  void setFilename(const OdString& name) { m_fileName = name; }

  // Sections kept as read: CLASSES entries, and the raw groups of
  // THUMBNAILIMAGE, ACDSDATA and any unknown section (by section name).
  std::vector<OdDbClassRecord>& classRecords() { return m_classRecords; }
  const std::vector<OdDbClassRecord>& classRecords() const { return m_classRecords; }
  struct RawSection {
    OdString name;
    OdDxfTagList tags;
  };
  std::vector<RawSection>& rawSections() { return m_rawSections; }
  const std::vector<RawSection>& rawSections() const { return m_rawSections; }

  // Undo. Changes are recorded per undo record: the state of each object
  // before its first change, and the objects added. undo() restores the last
  // record (or group of records) exactly.
  void startUndoRecord();
  bool hasUndo() const;
  void undo();
  // Undo groups: records started while a group is open join one step.
  void beginUndoGroup();
  void endUndoGroup();
  bool isUndoBlockStarted() const;
  // Stops (true) or resumes (false) recording; nests.
  void blockUndoRecording(bool block);
  bool isUndoRecordingBlocked() const;
  void disableUndoRecording(bool disable) { blockUndoRecording(disable); }
  OdDbUndoController* undoController() const { return m_undo.get(); }

  // Reactors (not owned).
  void addReactor(OdDbDatabaseReactor* reactor);
  void removeReactor(OdDbDatabaseReactor* reactor);

  // Internal to the platform: notifications raised by objects.
  void fireObjectAppended(const OdDbObject* object);
  void fireObjectModified(const OdDbObject* object);
  void fireObjectOpenedForModify(const OdDbObject* object);
  void fireObjectErased(const OdDbObject* object, bool erased);
  void fireHeaderChange(const OdString& name, bool before);
  OdDbStub* stubFor(OdUInt64 handle) const;
  // Gives objects other handles (the reader's repair of missing and duplicate
  // handles); the new handles must be free.
  void rehandleInternal(const std::vector<std::pair<OdDbObjectId, OdUInt64>>& changes);

 private:
  OdDbStub* newStub(OdUInt64 handle);
  struct HandleMap;
  struct StubPool;

  std::unique_ptr<HandleMap> m_handles;
  std::unique_ptr<StubPool> m_stubs;
  OdUInt64 m_handseed = 1;
  OdDbObjectId m_blockTableId, m_layerTableId, m_linetypeTableId, m_textStyleTableId, m_dimStyleTableId,
      m_regAppTableId, m_ucsTableId, m_viewTableId, m_viewportTableId, m_namedObjectsDictionaryId;
  OdDbObjectId m_currentSpaceId;
  mutable OdDbObjectId m_modelSpaceId, m_paperSpaceId;
  std::vector<OdDbHeaderVariable> m_header;
  std::unordered_map<OdString, size_t, OdStringHashNoCase, OdStringEqualNoCase> m_headerIndex;
  mutable EntityDefaults m_defaults;
  mutable bool m_defaultsValid = false;
  std::vector<OdDbClassRecord> m_classRecords;
  std::vector<RawSection> m_rawSections;
  std::unique_ptr<OdDbUndoController> m_undo;
  std::vector<OdDbDatabaseReactor*> m_reactors;
  OdDb::DwgVersion m_fileVersion = OdDb::vAC32;
  OdString m_fileName;
};

// The database's record of one handle.
class OdDbStub {
 public:
  OdDbObject* object = nullptr;  // holds one reference; null for a dangling handle
  OdDbDatabase* database = nullptr;
  OdUInt64 handle = 0;
  OdUInt32 flags = 0;
  enum : OdUInt32 { kErased = 1, kPermanentlyErased = 2 };
  bool isErased() const { return flags & kErased; }
};

