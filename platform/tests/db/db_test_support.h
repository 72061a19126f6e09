// The helpers the database layer's tests share: tag contexts (a minimal
// one, and one that resolves handles and names in a scratch database),
// round trips through a memory filer and through tags, point comparison,
// points of curves, and a drawing to put entities in.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbEntity.h"
#include "DbFiler.h"
#include "DbSchema.h"

namespace entities_test {

inline std::string narrow(const OdString& text) {
  std::string out;
  for (wchar_t ch : text.str()) out += ch < 128 ? static_cast<char>(ch) : '?';
  return out;
}

// Handles become stubs of the scratch database; names that no table holds
// become stubs of their own, so that they are written back as read. All
// contexts share one scratch database, so that ids an object took from one
// context stay valid in the next.
class TestTagContext : public OdDbTagContext {
 public:
  explicit TestTagContext(OdDb::DwgVersion version = OdDb::kDHL_CURRENT) : m_db(scratch()), m_version(version) {}
  static OdDbDatabasePtr scratch() {
    static OdDbDatabasePtr db = OdDbDatabase::createNew();
    return db;
  }
  OdDbDatabase* database() const override { return m_db.get(); }
  OdDb::DwgVersion version() const override { return m_version; }
  void setVersion(OdDb::DwgVersion version) { m_version = version; }
  OdDbObjectId idFromHandle(OdUInt64 handle) override {
    return m_db->getOdDbObjectId(OdDbHandle(handle), true);
  }
  OdDbObjectId idFromName(OdDbNameTable table, const OdString& name) override {
    auto key = std::make_pair(static_cast<int>(table), std::wstring(name.c_str()));
    auto found = m_names.find(key);
    if (found != m_names.end()) return found->second;
    if (OdDbObjectId record = OdDbTagContext::idFromName(table, name)) return record;
    OdDbObjectId id = m_db->getOdDbObjectId(OdDbHandle(m_nextNameHandle++), true);
    m_names.emplace(key, id);
    m_ids.emplace(id, name);
    return id;
  }
  OdString nameOf(const OdDbObjectId& id) const override {
    auto found = m_ids.find(id);
    return found != m_ids.end() ? found->second : OdDbTagContext::nameOf(id);
  }

 private:
  OdDbDatabasePtr m_db;
  OdDb::DwgVersion m_version;
  OdUInt64 m_nextNameHandle = 0x7F000000;
  std::map<std::pair<int, std::wstring>, OdDbObjectId> m_names;
  std::map<OdDbObjectId, OdString> m_ids;
};

// A fresh object of the same class with the state filed out and back in.
template <class T>
OdSmartPtr<T> viaFiler(const T* source) {
  OdDbMemoryFiler filer(source->database());
  source->dwgOutFields(&filer);
  filer.rewind();
  OdSmartPtr<T> copy = T::cast(source->isA()->create().get());
  copy->dwgInFields(&filer);
  EXPECT_TRUE(filer.atEnd()) << "filing left data unread";
  return copy;
}

inline OdDxfTagList writeTags(const OdDbObject* object, OdDbTagContext& ctx) {
  OdDxfTagList tags;
  OdDbSchemaIo::writeFields(object, tags, ctx, true);
  return tags;
}

// A fresh object of the same class read from the object's tags.
template <class T>
OdSmartPtr<T> viaTags(const T* source, OdDbTagContext& ctx) {
  OdDxfTagList tags = writeTags(source, ctx);
  OdSmartPtr<T> copy = T::cast(source->isA()->create().get());
  OdDbSchemaIo::readFields(copy.get(), tags.data(), tags.data() + tags.size(), ctx);
  return copy;
}

inline void expectSameFields(const OdDbObject* a, const OdDbObject* b) {
  OdString difference;
  EXPECT_TRUE(OdDbSchemaIo::fieldsEqual(a, b, &difference)) << "first difference: " << narrow(difference);
}

// Both round trips (filer and tags) give back an object with equal fields.
// The entity first takes the context database's layer, linetype and styles,
// which the tags name.
template <class T>
void expectRoundTrips(T* object, OdDb::DwgVersion version = OdDb::kDHL_CURRENT) {
  TestTagContext ctx(version);
  object->setDatabaseDefaults(ctx.database());
  expectSameFields(object, viaFiler(object).get());
  expectSameFields(object, viaTags(object, ctx).get());
}

inline std::string tagText(const OdDxfTag& tag) {
  std::wostringstream out;
  out << tag.code << L"=" << tag.valueText().c_str();
  std::wstring w = out.str();
  return std::string(w.begin(), w.end());
}

// The tags from the subclass marker on (the entity's own part).
inline OdDxfTagList tagsFrom(const OdDxfTagList& tags, const wchar_t* marker) {
  for (size_t i = 0; i < tags.size(); ++i) {
    if (tags[i].code == 100 && tags[i].s == marker)
      return OdDxfTagList(tags.begin() + static_cast<long>(i), tags.end());
  }
  return {};
}

}  // namespace entities_test

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
  return entities_test::writeTags(object, ctx);
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
  OdSmartPtr<T> back = entities_test::viaFiler(object);
  if (copy) *copy = back;
  OdString difference;
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
