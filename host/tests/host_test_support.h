// The helpers the host's tests share, beside the harness (harness.h, which
// the module's tests use too): result lists that free themselves and ERRNO,
// entities and records added to a drawing, the drawing as text (to tell
// that Esc or U left it exactly as it was), typed access to entities, point
// checks, text searches and a temporary folder per test.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbPolyline.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "DxfFile.h"
#include "harness.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

// ---------------------------------------------------------------- result lists and ERRNO

// A result list that frees itself.
struct List {
  resbuf* head;
  explicit List(resbuf* list) : head(list) {}
  ~List() { ryutRelRb(head); }
  List(const List&) = delete;
  List& operator=(const List&) = delete;
  // The n-th group of that code, or null.
  resbuf* group(int code, int nth = 0) const {
    for (resbuf* rb = head; rb; rb = rb->rbnext) {
      if (rb->restype == code && nth-- == 0) return rb;
    }
    return nullptr;
  }
  std::wstring text(int code, int nth = 0) const {
    resbuf* rb = group(code, nth);
    return rb && rb->resval.rstring ? rb->resval.rstring : L"<none>";
  }
  operator const resbuf*() const { return head; }
  int count(int code) const {
    int n = 0;
    for (resbuf* rb = head; rb; rb = rb->rbnext) n += rb->restype == code;
    return n;
  }
};

inline int errnoValue() {
  resbuf value{};
  ryedGetVar(L"ERRNO", &value);
  return value.resval.rint;
}

inline void setShort(const wchar_t* name, short value) {
  resbuf rb{};
  rb.restype = RTSHORT;
  rb.resval.rint = value;
  ASSERT_EQ(ryedSetVar(name, &rb), RTNORM);
}

inline void setReal(const wchar_t* name, double value) {
  resbuf rb{};
  rb.restype = RTREAL;
  rb.resval.rreal = value;
  ASSERT_EQ(ryedSetVar(name, &rb), RTNORM);
}

namespace hosttest {

constexpr double kPi = 3.14159265358979323846;

inline bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

inline int countOf(const std::string& text, const std::string& part) {
  int n = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
  return n;
}

inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

// A folder of its own for each test (named after the test), removed afterwards.
class TempFolder {
 public:
  explicit TempFolder(const std::string& prefix = "ryad-test") {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    m_path = std::filesystem::temp_directory_path() /
             (prefix + "-" + std::to_string(getpid()) + "-" + test->test_suite_name() + "-" + test->name());
    std::filesystem::remove_all(m_path);
    std::filesystem::create_directories(m_path);
  }
  ~TempFolder() {
    std::error_code ec;
    std::filesystem::remove_all(m_path, ec);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  const std::filesystem::path& path() const { return m_path; }
  std::filesystem::path operator/(const std::string& name) const { return m_path / name; }
  std::filesystem::path write(const std::string& name, const std::string& text) const {
    std::filesystem::create_directories((m_path / name).parent_path());
    std::ofstream(m_path / name, std::ios::binary) << text;
    return std::filesystem::canonical(m_path / name);
  }

 private:
  std::filesystem::path m_path;
};

inline void expectPoint(const OdGePoint3d& actual, double x, double y, double z = 0) {
  EXPECT_NEAR(actual.x, x, 1e-9);
  EXPECT_NEAR(actual.y, y, 1e-9);
  EXPECT_NEAR(actual.z, z, 1e-9);
}

inline void expectPoint(const ads_point p, double x, double y, double z) {
  expectPoint(OdGePoint3d(p[0], p[1], p[2]), x, y, z);
}

// ---------------------------------------------------------------- the drawing as text, typed access

// The drawing as a file would hold it, without the handle seed (handles
// used up by a command stay used after U).
inline std::string drawingText(OdDbDatabase* db) {
  const std::string text = odDxfWriteBuffer(db, odDxfSaveVersion(db));
  return std::regex_replace(text, std::regex("\\$HANDSEED\\r?\\n *5\\r?\\n[0-9A-Fa-f]+"), "$HANDSEED");
}

// Where two drawing texts part (a few lines of each from there), or empty when they are the same.
inline std::string difference(const std::string& a, const std::string& b) {
  if (a == b) return std::string();
  size_t at = 0;
  while (at < a.size() && at < b.size() && a[at] == b[at]) ++at;
  const size_t from = a.rfind('\n', at == 0 ? 0 : at - 1);
  const size_t start = from == std::string::npos ? 0 : from + 1;
  return "was: " + a.substr(start, 120) + "\nnow: " + b.substr(start, 120);
}

template <class T>
OdSmartPtr<T> open(const OdDbObjectId& id) {
  return OdSmartPtr<T>(T::cast(id.openObject().get()));
}

// The live entities of model space of one class (and its subclasses).
template <class T>
std::vector<OdSmartPtr<T>> entitiesOf(HostSession& session) {
  std::vector<OdSmartPtr<T>> found;
  for (const OdDbObjectId& id : session.modelSpace()) {
    OdSmartPtr<T> entity = open<T>(id);
    if (!entity.isNull()) found.push_back(entity);
  }
  return found;
}

inline OdDbObjectIdArray blockEntities(OdDbDatabase* db, const wchar_t* name) {
  OdDbObjectIdArray ids;
  OdDbBlockTableRecordPtr block = open<OdDbBlockTableRecord>(db->findRecord(OdDbNameTable::kBlock, name));
  if (block.isNull()) return ids;
  for (const OdDbObjectId& id : block->entityIds()) {
    if (!id.isErased()) ids.append(id);
  }
  return ids;
}

inline OdString layerName(const OdDbEntity* entity) { return entity->layer(); }

// Runs a command's replies once for every prompt with Esc typed at it
// instead: the drawing must stay as it was. Then runs them whole and U.
inline void expectEscAndUndoLeaveNothing(HostSession& session, const std::vector<std::string>& replies) {
  const std::string before = drawingText(session.db());
  for (size_t answered = 1; answered < replies.size(); ++answered) {
    std::vector<std::string> cut(replies.begin(), replies.begin() + static_cast<long>(answered));
    cut.push_back("^C");
    session.run(cut);
    EXPECT_EQ(difference(before, drawingText(session.db())), "") << "Esc after " << replies[answered - 1];
  }
  session.run(replies);
  EXPECT_FALSE(difference(before, drawingText(session.db())).empty()) << "the command changed nothing";
  session.run({"U"});
  EXPECT_EQ(difference(before, drawingText(session.db())), "") << "U after " << replies.front();
  EXPECT_TRUE(session.host().problems().empty()) << session.host().problems().front().toUtf8();
}

// ---------------------------------------------------------------- records and entities added

template <class Record>
OdSmartPtr<Record> record(OdDbDatabase* db, OdDbNameTable table, const wchar_t* name) {
  return open<Record>(db->findRecord(table, name));
}

inline OdSmartPtr<OdDbLayerTableRecord> layer(OdDbDatabase* db, const wchar_t* name) {
  return record<OdDbLayerTableRecord>(db, OdDbNameTable::kLayer, name);
}

inline OdDbObjectId addRecord(OdDbDatabase* db, OdDbNameTable table, OdDbSymbolTableRecord* record,
                              const wchar_t* name) {
  record->setName(name);
  OdDbObjectPtr object = db->tableId(table).openObject(OdDb::kForWrite);
  return static_cast<OdDbSymbolTable*>(object.get())->add(record);
}

inline OdDbObjectId addBlock(OdDbDatabase* db, const wchar_t* name) {
  return addRecord(db, OdDbNameTable::kBlock, OdDbBlockTableRecord::createObject().get(), name);
}

// Appends an entity as it is (call setDatabaseDefaults before giving it properties).
inline OdDbObjectId appendTo(const OdDbObjectId& blockId, OdDbEntity* entity) {
  OdDbObjectPtr object = blockId.openObject(OdDb::kForWrite);
  return static_cast<OdDbBlockTableRecord*>(object.get())->appendOdDbEntity(entity);
}

// Adds an entity with the drawing's defaults to model space (on a layer, when named).
inline OdDbObjectId addToModelSpace(OdDbDatabase* db, OdDbEntity* entity,
                                    const wchar_t* layerName = nullptr) {
  entity->setDatabaseDefaults(db);
  if (layerName) entity->setLayer(db->findRecord(OdDbNameTable::kLayer, layerName));
  return appendTo(db->getModelSpaceId(), entity);
}

inline OdDbObjectId insertBlock(const OdDbObjectId& into, const OdDbObjectId& block,
                                const OdGePoint3d& at = OdGePoint3d()) {
  OdSmartPtr<OdDbBlockReference> reference = OdDbBlockReference::createObject();
  reference->setDatabaseDefaults(into.database());
  reference->setBlockTableRecord(block);
  reference->setPosition(at);
  return appendTo(into, reference.get());
}

// Gives a block reference an attribute (with the drawing's defaults) and returns it, open for write.
inline OdSmartPtr<OdDbAttribute> addAttribute(const OdDbObjectId& referenceId, const wchar_t* tag,
                                              const wchar_t* value) {
  OdSmartPtr<OdDbAttribute> attribute = OdDbAttribute::createObject();
  attribute->setDatabaseDefaults(referenceId.database());
  attribute->setTag(tag);
  attribute->setTextString(value);
  OdDbObjectPtr object = referenceId.openObject(OdDb::kForWrite);
  static_cast<OdDbBlockReference*>(object.get())->appendAttribute(attribute.get());
  return attribute;
}

// Runs the replies and checks that the drawing ends as it started: for Esc
// at a prompt, or for a command followed by U.
inline void expectUnchanged(HostSession& session, const std::vector<std::string>& replies) {
  const std::string before = drawingText(session.db());
  session.run(replies);
  EXPECT_EQ(drawingText(session.db()), before) << "after " << testing::PrintToString(replies);
}

// ---------------------------------------------------------------- entities placed, layers, selection sets

inline OdDbObjectId place(OdDbDatabase* db, OdDbEntity* entity, const wchar_t* layer = L"0",
                          OdDbObjectId space = OdDbObjectId()) {
  OdDbObjectId id = appendTo(space.isNull() ? db->getModelSpaceId() : space, entity);
  entity->setLayer(layer);
  return id;
}

inline OdDbObjectId addLine(OdDbDatabase* db, OdGePoint3d a, OdGePoint3d b, const wchar_t* layer = L"0",
                            OdDbObjectId space = OdDbObjectId()) {
  OdDbLinePtr line = OdDbLine::createObject();
  line->setStartPoint(a);
  line->setEndPoint(b);
  return place(db, line.get(), layer, space);
}

inline OdDbObjectId addCircle(OdDbDatabase* db, OdGePoint3d centre, double radius,
                              const wchar_t* layer = L"0") {
  OdSmartPtr<OdDbCircle> circle = OdDbCircle::createObject();
  circle->setCenter(centre);
  circle->setRadius(radius);
  return place(db, circle.get(), layer);
}

inline OdDbObjectId addText(OdDbDatabase* db, OdGePoint3d position, double height, const wchar_t* text,
                            const wchar_t* layer = L"0") {
  OdSmartPtr<OdDbText> entity = OdDbText::createObject();
  entity->setPosition(position);
  entity->setHeight(height);
  entity->setTextString(text);
  return place(db, entity.get(), layer);
}

// flags: 1 frozen, 4 locked; off makes the layer off.
inline void addLayer(OdDbDatabase* db, const wchar_t* name, int flags = 0, bool off = false) {
  OdSmartPtr<OdDbLayerTableRecord> layer = OdDbLayerTableRecord::createObject();
  addRecord(db, OdDbNameTable::kLayer, layer.get(), name);
  layer->setIsFrozen((flags & 1) != 0);
  layer->setIsLocked((flags & 4) != 0);
  layer->setIsOff(off);
}

inline void setColor(const OdDbObjectId& id, OdInt16 index) {
  OdDbEntityPtr entity = OdDbEntity::cast(id.openObject(OdDb::kForWrite).get());
  entity->setColorIndex(index);
}

// The entities of a set, in order.
inline std::vector<OdDbObjectId> members(const ads_name ss) {
  std::vector<OdDbObjectId> ids;
  OdInt32 length = 0;
  if (ryedSSLength(ss, &length) != RTNORM) return ids;
  for (OdInt32 i = 0; i < length; ++i) {
    ads_name name;
    OdDbObjectId id;
    if (ryedSSName(ss, i, name) == RTNORM && rydbGetObjectId(id, name) == RTNORM) ids.push_back(id);
  }
  return ids;
}

inline std::vector<OdDbObjectId> sorted(std::vector<OdDbObjectId> ids) {
  std::sort(ids.begin(), ids.end());
  return ids;
}

}  // namespace hosttest
