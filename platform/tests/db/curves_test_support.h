// Helpers of the curve and polyline tests: point comparison, tag and filer
// round trips, and a drawing to put entities in.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "DbBlockTableRecord.h"
#include "DbEntity.h"
#include "DbDatabase.h"
#include "DbFiler.h"
#include "DbSchema.h"

namespace curves_test {

inline ::testing::AssertionResult near(const OdGePoint3d& a, const OdGePoint3d& b, double eps = 1e-9) {
  if (a.distanceTo(b) <= eps) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << "(" << a.x << ", " << a.y << ", " << a.z << ") vs (" << b.x << ", " << b.y << ", " << b.z << ")";
}

inline ::testing::AssertionResult near(const OdGeExtents3d& a, const OdGeExtents3d& b, double eps = 1e-9) {
  if (near(a.minPoint(), b.minPoint(), eps) && near(a.maxPoint(), b.maxPoint(), eps))
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "min " << near(a.minPoint(), b.minPoint(), eps).message()
                                       << ", max " << near(a.maxPoint(), b.maxPoint(), eps).message();
}

// The minimal surroundings of the tag conversion.
struct TagContext : OdDbTagContext {
  OdDbDatabase* db = nullptr;
  OdDb::DwgVersion fileVersion = OdDb::kDHL_CURRENT;
  OdDbDatabase* database() const override { return db; }
  OdDb::DwgVersion version() const override { return fileVersion; }
  OdDbObjectId idFromHandle(OdUInt64 handle) override {
    return db ? db->getOdDbObjectId(OdDbHandle(handle), true) : OdDbObjectId();
  }
};

// The object's groups, names and handles resolved in its own drawing (if any).
inline OdDxfTagList tagsOf(const OdDbObject* object, OdDb::DwgVersion version = OdDb::kDHL_CURRENT) {
  TagContext ctx;
  ctx.db = object->database();
  ctx.fileVersion = version;
  OdDxfTagList tags;
  OdDbSchemaIo::writeFields(object, tags, ctx, true);
  return tags;
}

// Reads tags into a fresh object of the class.
template <class T>
OdSmartPtr<T> readTags(const OdDxfTagList& tags, OdDbDatabase* db = nullptr) {
  OdSmartPtr<T> object = T::createObject();
  TagContext ctx;
  ctx.db = db;
  OdDbSchemaIo::readFields(object.get(), tags.data(), tags.data() + tags.size(), ctx);
  return object;
}

// Written to tags and read back into a fresh object: the same field values.
template <class T>
::testing::AssertionResult tagRoundTrip(const T* object) {
  OdSmartPtr<T> back = readTags<T>(tagsOf(object), object->database());
  OdString difference;
  if (OdDbSchemaIo::fieldsEqual(object, back.get(), &difference)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "tags differ at " << difference.c_str();
}

// Filed out and in again into a fresh object: the same field values.
template <class T>
::testing::AssertionResult filerRoundTrip(const T* object, OdSmartPtr<T>* copy = nullptr) {
  OdDbMemoryFiler filer(object->database());
  object->dwgOutFields(&filer);
  filer.rewind();
  OdSmartPtr<T> back = T::createObject();
  back->dwgInFields(&filer);
  if (copy) *copy = back;
  OdString difference;
  if (!filer.atEnd()) return ::testing::AssertionFailure() << "data left unread";
  if (OdDbSchemaIo::fieldsEqual(object, back.get(), &difference)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "filed fields differ at " << difference.c_str();
}

inline std::vector<int> codesOf(const OdDxfTagList& tags) {
  std::vector<int> codes;
  for (const auto& tag : tags) codes.push_back(tag.code);
  return codes;
}

inline int countCode(const OdDxfTagList& tags, int code) {
  return static_cast<int>(
      std::count_if(tags.begin(), tags.end(), [code](const OdDxfTag& t) { return t.code == code; }));
}

// Points of a curve, each call expected to succeed.
inline OdGePoint3d pointAt(const OdDbCurve& curve, double param) {
  OdGePoint3d p;
  EXPECT_EQ(curve.getPointAtParam(param, p), eOk);
  return p;
}

inline OdGePoint3d startOf(const OdDbCurve& curve) {
  OdGePoint3d p;
  EXPECT_EQ(curve.getStartPoint(p), eOk);
  return p;
}

inline OdGePoint3d endOf(const OdDbCurve& curve) {
  OdGePoint3d p;
  EXPECT_EQ(curve.getEndPoint(p), eOk);
  return p;
}

// A new drawing with its model space open for write.
struct Drawing {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdDbBlockTableRecordPtr modelSpace =
      OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite).get());
};

}  // namespace curves_test
