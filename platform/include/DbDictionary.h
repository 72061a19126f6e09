// Non-graphical objects: dictionaries, groups, extended records, draw-order
// tables and layouts.
#pragma once

#include <map>

#include "DbObject.h"

class OdDbDictionaryIterator : public OdRxObject {
 public:
  struct Entry {
    OdString name;
    OdDbObjectId id;
  };
  explicit OdDbDictionaryIterator(std::vector<Entry> entries) : m_entries(std::move(entries)) {}
  bool done() const { return m_pos >= m_entries.size(); }
  bool next() { ++m_pos; return !done(); }
  void step() { ++m_pos; }
  OdString name() const { return done() ? OdString() : m_entries[m_pos].name; }
  OdDbObjectId objectId() const { return done() ? OdDbObjectId() : m_entries[m_pos].id; }
  OdDbObjectPtr getObject(OdDb::OpenMode mode = OdDb::kForRead) const;

 private:
  std::vector<Entry> m_entries;
  size_t m_pos = 0;
};
using OdDbDictionaryIteratorPtr = OdSmartPtr<OdDbDictionaryIterator>;

class OdDbDictionary : public OdDbObject {
  ODRX_DECLARE_MEMBERS(OdDbDictionary);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbObjectId getAt(const OdString& name) const;
  OdDbObjectPtr getAt(const OdString& name, OdDb::OpenMode mode) const;
  bool has(const OdString& name) const { return !getAt(name).isNull(); }
  bool has(const OdDbObjectId& id) const;
  OdString nameAt(const OdDbObjectId& id) const;
  // Adds or replaces an entry; an object not in a database is added to the
  // dictionary's database, owned by the dictionary. Returns the object's id.
  OdDbObjectId setAt(const OdString& name, OdDbObject* object);
  OdResult remove(const OdString& name);
  OdResult remove(const OdDbObjectId& id);
  bool setName(const OdString& oldName, const OdString& newName);
  OdUInt32 numEntries() const { return static_cast<OdUInt32>(m_entries.size()); }
  OdDbDictionaryIteratorPtr newIterator() const;
  bool isTreatElementsAsHard() const { return m_hardOwner != 0; }
  void setTreatElementsAsHard(bool hard) { assertWriteEnabled(); m_hardOwner = hard ? 1 : 0; }
  // The next unused name of the form prefix + number ("*A12").
  OdString nextAnonymousName(const OdString& prefix) const;

  // Internal: entries in order, for the field table and the reader.
  struct Entry {
    OdString name;
    OdDbObjectId id;
    bool operator==(const Entry&) const = default;
  };
  const std::vector<Entry>& entries() const { return m_entries; }
  void appendEntryInternal(const OdString& name, const OdDbObjectId& id);

 protected:
  OdResult subErase(bool erasing) override;
  void rebuildIndex();

  OdInt16 m_hardOwner = 0;
  OdInt16 m_mergeStyle = 1;
  std::vector<Entry> m_entries;
  std::map<OdString, size_t, OdStringLessNoCase> m_index;
};
using OdDbDictionaryPtr = OdSmartPtr<OdDbDictionary>;

class OdDbGroup : public OdDbObject {
  ODRX_DECLARE_MEMBERS(OdDbGroup);
  ODDB_DECLARE_SCHEMA();

 public:
  OdString name() const;
  const OdString& description() const { return m_description; }
  void setDescription(const OdString& text) { assertWriteEnabled(); m_description = text; }
  bool isSelectable() const { return m_selectable != 0; }
  void setSelectable(bool on) { assertWriteEnabled(); m_selectable = on ? 1 : 0; }
  bool isAnonymous() const { return m_unnamed != 0; }
  void setAnonymous();
  // Members, in order. Adding puts the group on the member's persistent reactors.
  void append(const OdDbObjectId& id);
  void append(const OdDbObjectIdArray& ids);
  void remove(const OdDbObjectId& id);
  void clear();
  bool has(const OdDbObjectId& id) const { return m_members.contains(id); }
  OdUInt32 numEntities() const { return m_members.length(); }
  OdDbObjectIdArray allEntityIds() const;
  const OdDbObjectIdArray& memberIds() const { return m_members; }
  void erased(const OdDbObject* object, bool erasing) override;

 protected:
  OdResult subErase(bool erasing) override;

  OdString m_description;
  OdInt16 m_unnamed = 0;
  OdInt16 m_selectable = 1;
  OdDbObjectIdArray m_members;
};
using OdDbGroupPtr = OdSmartPtr<OdDbGroup>;

// An object holding an arbitrary list of groups, for applications' own data.
class OdDbXrecord : public OdDbObject {
  ODRX_DECLARE_MEMBERS(OdDbXrecord);
  ODDB_DECLARE_SCHEMA();

 public:
  const OdDxfTagList& data() const { return m_data; }
  void setData(const OdDxfTagList& data) { assertWriteEnabled(); m_data = data; }
  OdInt16 mergeStyle() const { return m_cloning; }

 protected:
  OdInt16 m_cloning = 1;
  OdDxfTagList m_data;

  friend struct OdDbXrecordDataCodec;
};
using OdDbXrecordPtr = OdSmartPtr<OdDbXrecord>;

// The draw order of a block's entities: each entity may carry a sort handle
// that replaces its own handle when entities are drawn in handle order.
class OdDbSortentsTable : public OdDbObject {
  ODRX_DECLARE_MEMBERS(OdDbSortentsTable);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbObjectId blockId() const { return m_blockId; }
  void setBlockId(const OdDbObjectId& id) { assertWriteEnabled(); m_blockId = id; }
  // The entities of the block in drawing order (first drawn first).
  void getFullDrawOrder(OdDbObjectIdArray& ids) const;
  // Moves entities just above (drawn after) the target entity.
  OdResult moveAbove(const OdDbObjectIdArray& ids, const OdDbObjectId& target);
  OdResult moveBelow(const OdDbObjectIdArray& ids, const OdDbObjectId& target);
  OdResult moveToTop(const OdDbObjectIdArray& ids);
  OdResult moveToBottom(const OdDbObjectIdArray& ids);
  OdDbHandle sortHandleOf(const OdDbObjectId& id) const;
  // Sets the whole order at once (the block's live entities, first drawn
  // first): one pass where many single moves would each walk the block.
  void setDrawOrder(const OdDbObjectIdArray& order);

  struct Pair {
    OdDbObjectId entity;
    OdUInt64 sortHandle;
    bool operator==(const Pair&) const = default;
  };
  const std::vector<Pair>& pairs() const { return m_pairs; }

 protected:
  OdDbObjectId m_blockId;
  std::vector<Pair> m_pairs;
};
using OdDbSortentsTablePtr = OdSmartPtr<OdDbSortentsTable>;

// Page setup and layout of a space; only the values the tools use are typed,
// the rest is kept as read.
class OdDbPlotSettings : public OdDbObject {
  ODRX_DECLARE_MEMBERS(OdDbPlotSettings);
  ODDB_DECLARE_SCHEMA();

 public:
  const OdString& getPlotSettingsName() const { return m_pageSetupName; }

 protected:
  OdString m_pageSetupName;
};

class OdDbLayout : public OdDbPlotSettings {
  ODRX_DECLARE_MEMBERS(OdDbLayout);
  ODDB_DECLARE_SCHEMA();

 public:
  const OdString& getLayoutName() const { return m_name; }
  void setLayoutName(const OdString& name) { assertWriteEnabled(); m_name = name; }
  int getTabOrder() const { return m_tabOrder; }
  void setTabOrder(int order) { assertWriteEnabled(); m_tabOrder = static_cast<OdInt16>(order); }
  OdDbObjectId getBlockTableRecordId() const { return m_blockId; }
  void setBlockTableRecordId(const OdDbObjectId& id) { assertWriteEnabled(); m_blockId = id; }
  OdDbObjectId activeViewportId() const { return m_viewportId; }

 protected:
  OdString m_name;
  OdInt16 m_layoutFlags = 1;
  OdInt16 m_tabOrder = 0;
  OdGePoint2d m_limMin, m_limMax = OdGePoint2d(12, 9);
  OdDbObjectId m_blockId;
  OdDbObjectId m_viewportId;
};
using OdDbLayoutPtr = OdSmartPtr<OdDbLayout>;
