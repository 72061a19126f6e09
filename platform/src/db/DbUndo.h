// Undo recording of one database: for each undo record, the filed state of
// every object before its first change, and the objects added.
#pragma once

#include <vector>

#include "DbDatabase.h"

class OdDbUndoController {
 public:
  explicit OdDbUndoController(OdDbDatabase* database) : m_database(database) {}

  // Begins a new record, unless an open undo group already has one.
  void startRecord();
  void recordBeforeChange(OdDbObject* object);
  void recordAppended(OdDbObject* object);
  // The value of a header variable before its first change in the record
  // (absent: the variable did not exist).
  void recordHeaderChange(const OdString& name, const OdDxfTagList* before);
  bool hasUndo() const { return !m_records.empty(); }
  // Restores the state before the last record and drops the record.
  void undo();
  size_t recordCount() const { return m_records.size(); }

  void beginGroup();
  void endGroup();
  bool inGroup() const { return m_groupDepth > 0; }
  void block(bool on) { m_blocked += on ? 1 : (m_blocked > 0 ? -1 : 0); }
  bool isBlocked() const { return m_blocked > 0; }

 private:
  struct Entry {
    OdDbStub* stub;
    bool appended;
    OdUInt32 stubFlags;
    std::vector<OdUInt8> state;
  };
  struct HeaderEntry {
    OdString name;
    bool existed;
    OdDxfTagList tags;
  };
  struct Record {
    OdUInt32 serial;
    std::vector<Entry> entries;
    std::vector<HeaderEntry> header;
  };
  Record* current() { return m_records.empty() || m_blocked ? nullptr : &m_records.back(); }
  void pushRecord();

  OdDbDatabase* m_database;
  std::vector<Record> m_records;
  OdUInt32 m_nextSerial = 1;
  int m_groupDepth = 0;
  int m_blocked = 0;
  bool m_groupHasRecord = false;
};
