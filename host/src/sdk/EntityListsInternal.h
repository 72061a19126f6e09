// What the units of the entity-data lists share: the context the platform's
// field codecs read and write names through, the class tables of a schema,
// the kinds of value a group carries in a result buffer, and a list taken
// apart for reading into an object (entity changes and entity making).
//
// The lists are done in five units: EntityTags.cpp (an object's groups as
// tags), EntityGet.cpp (tags as result-buffer lists, rydbEntGet),
// EntityMod.cpp (reading a list into an object, rydbEntMod), EntityMake.cpp
// (making entities, blocks and records, rydbEntMake) and EntityWalk.cpp
// (walking the drawing's entities, rydbEntNext).
#pragma once

#include <vector>

#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "sdk/EntityLists.h"

namespace ryhost::lists {

// ---------------------------------------------------------------- names and context

// The object of an id as a class, read straight from its stub (no open, no
// notification); null when it is of another class. Cheaper than a
// dynamic_cast across the libraries, which compares type names.
template <class T>
inline const T* objectAs(const OdDbObjectId& id) {
  if (id.isNull() || !id.isValid()) return nullptr;
  const OdDbObject* object = id.stub()->object;
  return object->isKindOf(T::desc()) ? static_cast<const T*>(object) : nullptr;
}

// A name the database could not resolve while a list was read: layers are
// made when the entity is committed, other tables fail earlier.
struct DeferredName {
  const OdDbField* field;
  OdString name;
};

class ListContext : public OdDbTagContext {
 public:
  explicit ListContext(OdDbDatabase* db) : m_db(db) {}
  OdDbDatabase* database() const override { return m_db; }
  bool forEntityList() const override { return true; }
  OdDbObjectId idFromHandle(OdUInt64 handle) override {
    return m_db ? m_db->getOdDbObjectId(OdDbHandle(handle)) : OdDbObjectId();
  }
  void deferName(OdDbObject*, const OdDbField& field, const OdString& name) override {
    deferred.push_back({&field, name});
  }
  void setDatabase(OdDbDatabase* db) { m_db = db; }

  std::vector<DeferredName> deferred;

 private:
  OdDbDatabase* m_db;
};

// ---------------------------------------------------------------- class tables (EntityTags.cpp)

const OdDbClassSchema* schemaOf(const OdRxClass* cls);
// The subclasses of a schema from the root down, computed once per schema.
const std::vector<const OdDbSubclass*>& chainOf(const OdDbClassSchema* schema);

// The name in group 0 of an object's list (MINSERT objects are INSERTs,
// proxies keep the name they were read with); storage holds it where the
// class does not.
const OdString& dxfNameOf(const OdDbObject* object, OdString& storage);

// ---------------------------------------------------------------- result buffers (EntityGet.cpp)

// The kind of value a group code carries in a result buffer (as the
// result-buffer functions free and copy it).
enum class GroupKind { kNone, kReal, kPoint, kShort, kLong, kInt64, kString, kName, kBinary };
GroupKind groupKindOf(int code);

// Names given to the entity functions: an object of an open drawing (ERRNO
// is set when it is not).
bool objectOfName(const ads_name name, OdDbObjectId& id);

// ---------------------------------------------------------------- reading lists (EntityMod.cpp)

// A list taken apart: the type, the header groups, the body groups (tags as
// the platform reads them: references as handles) and the extended data.
struct ParsedList {
  OdDbObjectId self;  // -1
  bool hasSelf = false;
  OdString type;      // 0
  bool hasType = false;
  bool hasHandle = false;
  OdUInt64 handle = 0;
  OdDxfTagList body;
  bool hasXdata = false;
  OdDxfTagList xdata;
};

struct ListError {
  int errnoValue;
};

ParsedList parseList(const resbuf* list, OdDbDatabase* db);

// Reads the given groups into an object: checks the names, merges the
// groups into the object's own and reads them back. Layers that do not
// exist are returned in deferred (the caller makes them).
void readGroups(OdDbObject* object, const OdDxfTagList& body, OdDbDatabase* db, std::vector<DeferredName>& deferred);

// Gives the layers a list named that did not exist yet: they are made now.
void resolveDeferred(OdDbObject* object, const std::vector<DeferredName>& deferred, OdDbDatabase* db);

bool validRecordName(const OdString& name);
bool onLockedLayer(const OdDbObject* object);

}  // namespace ryhost::lists
