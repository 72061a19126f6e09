// Shared helpers of the entity tests: a tag context that resolves handles
// and names in a scratch database, and round trips through a memory filer
// and through tags.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "DbDatabase.h"
#include "DbEntity.h"
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
