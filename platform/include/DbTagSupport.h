// Helpers of the conversion between objects and tags: the context of one
// drawing, a tag's value as a number whatever its type. Values that cannot
// stand: a number that is not finite, a negative size (a radius, a height)
// and a zero normal; reads of files repair such values (see
// OdDbTagContext::repairsValues), entity-data lists that give them are
// refused.
#pragma once

#include "DbSchema.h"
#include "DxfTag.h"

// False for a real or a point with a coordinate that is NaN or infinite.
bool odDxfTagIsFinite(const OdDxfTag& tag);
// Fields whose values have a range.
bool odDbFieldIsSize(const OdDbField& field);
bool odDbFieldIsNormal(const OdDbField& field);

// The context of the tags of one drawing: handles are that drawing's (with
// createIds, ids are made for handles it does not hold yet), names its
// records'. Null db: no handle names an object.
class OdDbDatabaseTagContext : public OdDbTagContext {
 public:
  explicit OdDbDatabaseTagContext(OdDbDatabase* db, bool createIds = false) : m_db(db), m_createIds(createIds) {}
  OdDbDatabase* database() const override { return m_db; }
  OdDbObjectId idFromHandle(OdUInt64 handle) override;

 private:
  OdDbDatabase* m_db;
  bool m_createIds;
};

// A tag's value as a number, whatever its type (text is read as one).
double odDxfTagReal(const OdDxfTag& tag);
OdInt64 odDxfTagInteger(const OdDxfTag& tag);
