// Block table records: model space, paper-space layouts and block
// definitions. Each owns its entities, in order, and the begin and end
// markers that a file writes around them.
#pragma once

#include "DbEntity.h"
#include "DbSymbolTable.h"

class OdDbBlockTableRecord;
class OdDbSortentsTable;
using OdDbBlockTableRecordPtr = OdSmartPtr<OdDbBlockTableRecord>;

// Walks ids in order, skipping erased objects unless asked not to.
class OdDbObjectIterator : public OdRxObject {
 public:
  OdDbObjectIterator(OdDbObjectIdArray ids, bool skipErased);
  void start(bool atBeginning = true, bool skipErased = true);
  bool done() const;
  void step(bool forward = true, bool skipErased = true);
  OdDbObjectId objectId() const;
  OdDbEntityPtr entity(OdDb::OpenMode mode = OdDb::kForRead, bool openErased = false) const;
  bool seek(const OdDbObjectId& id);

 private:
  void skipErasedForward();
  void skipErasedBackward();
  OdDbObjectIdArray m_ids;
  long long m_pos = 0;
  bool m_skipErased;
};
using OdDbObjectIteratorPtr = OdSmartPtr<OdDbObjectIterator>;
using OdDbBlockTableRecordIterator = OdDbObjectIterator;
using OdDbBlockReferenceIdIterator = OdDbObjectIterator;
using OdDbBlockReferenceIdIteratorPtr = OdSmartPtr<OdDbObjectIterator>;

class OdDbBlockTableRecord : public OdDbSymbolTableRecord {
  ODRX_DECLARE_MEMBERS(OdDbBlockTableRecord);
  ODDB_DECLARE_SCHEMA();

 public:
  // Block flags as the BLOCK group 70 carries them.
  enum Flags : OdInt16 {
    kAnonymous = 1,
    kHasAttributeDefinitions = 2,
    kExternalReference = 4,
    kOverlay = 8,
    kExternallyDependent = 16,
    kResolvedExternal = 32,
    kReferenced = 64,
  };

  // Adds an entity (not yet in a database) at the end; returns its id.
  OdDbObjectId appendOdDbEntity(OdDbEntity* entity);
  OdDbObjectIteratorPtr newIterator(bool atBeginning = true, bool skipErased = true) const;
  // The block's draw-order table ("ACAD_SORTENTS" in its extension
  // dictionary), made on request when the block has none; the block must be
  // open for write to make one.
  OdResult getSortentsTable(OdSmartPtr<OdDbSortentsTable>& table, OdDb::OpenMode mode,
                            bool createIfNecessary = false);
  // Every entity id in order, erased ones included.
  const OdDbObjectIdArray& entityIds() const { return m_entities; }
  // The references (INSERT and MINSERT) to this block in the whole drawing,
  // nested ones included.
  OdDbBlockReferenceIdIteratorPtr newBlockReferenceIdIterator() const;
  OdResult getBlockReferenceIds(OdDbObjectIdArray& ids, bool directOnly = true) const;

  OdGePoint3d origin() const { return m_origin; }
  void setOrigin(const OdGePoint3d& origin) { assertWriteEnabled(); m_origin = origin; }
  const OdString& comments() const { return m_comments; }
  void setComments(const OdString& text) { assertWriteEnabled(); m_comments = text; }
  const OdString& pathName() const { return m_pathName; }
  void setPathName(const OdString& path) { assertWriteEnabled(); m_pathName = path; }
  OdInt16 blockFlags() const { return m_blockFlags; }
  void setBlockFlags(OdInt16 flags) { assertWriteEnabled(); m_blockFlags = flags; }

  bool isAnonymous() const { return (m_blockFlags & kAnonymous) != 0 || getName().left(1) == L"*"; }
  bool hasAttributeDefinitions() const;
  bool isFromExternalReference() const { return (m_blockFlags & kExternalReference) != 0; }
  bool isFromOverlayReference() const { return (m_blockFlags & kOverlay) != 0; }
  bool isDependent() const { return (m_blockFlags & kExternallyDependent) != 0 || OdDbSymbolTableRecord::isDependent(); }
  bool isLayout() const { return !m_layoutId.isNull() || isModelSpace() || isPaperSpace(); }
  bool isModelSpace() const;
  bool isPaperSpace() const;
  bool explodable() const { return m_explodable != 0; }
  void setExplodable(bool on) { assertWriteEnabled(); m_explodable = on ? 1 : 0; }
  bool blockScaling() const { return m_scalable != 0; }
  OdDbObjectId getLayoutId() const { return m_layoutId; }
  void setLayoutId(const OdDbObjectId& id) { assertWriteEnabled(); m_layoutId = id; }
  OdInt16 blockInsertUnits() const { return m_insertUnits; }
  void setBlockInsertUnits(OdInt16 units) { assertWriteEnabled(); m_insertUnits = units; }

  // The BLOCK and ENDBLK objects a file writes around the entities.
  OdDbObjectId blockBeginId() const { return m_blockBeginId; }
  OdDbObjectId blockEndId() const { return m_blockEndId; }

  // Internal to the platform: list maintenance used by the reader and undo.
  void appendEntityIdInternal(const OdDbObjectId& id) { m_entities.append(id); }
  void setBlockBeginEndInternal(const OdDbObjectId& begin, const OdDbObjectId& end) {
    m_blockBeginId = begin;
    m_blockEndId = end;
  }
  void dwgOutFields(OdDbDwgFiler* filer) const override;
  OdResult dwgInFields(OdDbDwgFiler* filer) override;
  void subSetDatabaseDefaults(OdDbDatabase* database) override;
  // Makes the BLOCK and ENDBLK markers when the block has none yet.
  void createBlockMarkersInternal();

 protected:
  OdResult subErase(bool erasing) override;

  OdGePoint3d m_origin;
  OdString m_comments;
  OdString m_pathName;
  OdInt16 m_blockFlags = 0;
  OdInt16 m_insertUnits = 0;
  OdInt16 m_explodable = 1;
  OdInt16 m_scalable = 0;
  OdDbObjectId m_layoutId;
  OdDbObjectIdArray m_entities;
  OdDbObjectId m_blockBeginId, m_blockEndId;
};

// The BLOCK entity of a file, holding nothing of its own: the block's name,
// flags and base point belong to the block table record.
class OdDbBlockBegin : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbBlockBegin);
  ODDB_DECLARE_SCHEMA();
};

class OdDbBlockEnd : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbBlockEnd);
  ODDB_DECLARE_SCHEMA();
};

// Marks a block definition as being walked into (extents, distances, drawing
// nested references) on this thread. entered() is false when the block is
// already being walked further out (a block that contains a reference to
// itself, directly or through other blocks) or when references nest deeper
// than kMaxDepth; the caller then leaves the block's contents out.
class OdDbBlockWalk {
 public:
  static constexpr int kMaxDepth = 64;
  explicit OdDbBlockWalk(const OdDbObjectId& blockId);
  ~OdDbBlockWalk();
  OdDbBlockWalk(const OdDbBlockWalk&) = delete;
  OdDbBlockWalk& operator=(const OdDbBlockWalk&) = delete;
  bool entered() const { return m_entered; }

 private:
  bool m_entered = false;
};

// The blocks whose definitions reach themselves through block references,
// each cycle once as the chain of names from its first block back to it
// ("A", "B", "A"). Blocks are read in place: nothing is opened.
std::vector<std::vector<OdString>> odDbBlockCycles(OdDbDatabase* db);
