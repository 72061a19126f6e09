// Entity-data lists: reading entities as lists, changing them from lists,
// making entities (simple, complex, block definitions) and walking them.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <unistd.h>
#include <vector>
#include <cwchar>
#include <limits>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbPolyline.h"
#include "DbSymbolTable.h"
#include "DxfFile.h"
#include "core/CommandStack.h"
#include "harness.h"
#include "host_test_support.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"
#include "sdk/EntityLists.h"

namespace {

struct Name {
  ads_name n = {0, 0};
};

Name makeLine(const ads_point from, const ads_point to, const ACHAR* layer = nullptr) {
  List list(layer ? ryutBuildList(RTDXF0, L"LINE", 8, layer, 10, from, 11, to, RTNONE)
                  : ryutBuildList(RTDXF0, L"LINE", 10, from, 11, to, RTNONE));
  Name name;
  EXPECT_EQ(rydbEntMakeX(list.head, name.n), RTNORM);
  return name;
}

size_t modelSpaceCount(HostSession& session) { return session.modelSpace().size(); }

OdDbObjectId idOf(const Name& name) {
  OdDbObjectId id;
  rydbGetObjectId(id, name.n);
  return id;
}

const ads_point kOrigin = {0, 0, 0};
const ads_point kPoint = {10, 5, 0};

// ---------------------------------------------------------------- reading

TEST(EntityListsRead, LineListHasHeaderNamesMarkersAndPoints) {
  HostSession session;
  const Name line = makeLine(kOrigin, kPoint);
  List list(rydbEntGet(line.n));
  ASSERT_NE(list.head, nullptr);
  EXPECT_EQ(list.head->restype, -1);
  EXPECT_TRUE(rydbNameEqual(list.head->resval.rlname, line.n));
  EXPECT_EQ(list.text(0), L"LINE");
  Name owner;
  rydbGetAdsName(owner.n, session.db()->getModelSpaceId());
  ASSERT_NE(list.group(330), nullptr);
  EXPECT_TRUE(rydbNameEqual(list.group(330)->resval.rlname, owner.n));
  EXPECT_EQ(list.text(5), std::wstring(idOf(line).handle().ascii().c_str()));
  EXPECT_EQ(list.text(100, 0), L"AcDbEntity");
  EXPECT_EQ(list.text(100, 1), L"AcDbLine");
  EXPECT_EQ(list.text(8), L"0");
  EXPECT_EQ(list.text(410), L"Model");
  EXPECT_EQ(list.group(67), nullptr);
  ASSERT_NE(list.group(11), nullptr);
  EXPECT_DOUBLE_EQ(list.group(11)->resval.rpoint[0], 10);
  EXPECT_DOUBLE_EQ(list.group(11)->resval.rpoint[1], 5);
  // The list frees and copies like any other.
  List copy(ryutDupList(list.head));
  EXPECT_TRUE(rydbNameEqual(copy.group(330)->resval.rlname, owner.n));
}

TEST(EntityListsRead, PaperSpaceEntityHasGroup67AndItsLayout) {
  HostSession session;
  List made(ryutBuildList(RTDXF0, L"CIRCLE", 67, 1, 10, kPoint, 40, 2.0, RTNONE));
  Name circle;
  ASSERT_EQ(rydbEntMakeX(made.head, circle.n), RTNORM);
  List list(rydbEntGet(circle.n));
  ASSERT_NE(list.group(67), nullptr);
  EXPECT_EQ(list.group(67)->resval.rint, 1);
  EXPECT_NE(list.text(410), L"Model");
  EXPECT_NE(list.text(410), L"<none>");
}

TEST(EntityListsRead, TwoDimensionalPointsHaveZeroZ) {
  HostSession session;
  const ads_point a = {1, 2, 0}, b = {4, 6, 0};
  List made(ryutBuildList(RTDXF0, L"LWPOLYLINE", 90, 2, 38, 7.0, 10, a, 10, b, RTNONE));
  Name poly;
  ASSERT_EQ(rydbEntMakeX(made.head, poly.n), RTNORM);
  List list(rydbEntGet(poly.n));
  ASSERT_EQ(list.count(10), 2);
  EXPECT_DOUBLE_EQ(list.group(10, 1)->resval.rpoint[0], 4);
  EXPECT_DOUBLE_EQ(list.group(10, 1)->resval.rpoint[1], 6);
  EXPECT_DOUBLE_EQ(list.group(10, 1)->resval.rpoint[2], 0);
}

TEST(EntityListsRead, InsertWithAttributesWalksToSeqendAndOn) {
  HostSession session(CorpusDrawing{"examples_dxf_multi_insert_with_attribs.dxf"});
  Name first;
  ASSERT_EQ(rydbEntNext(nullptr, first.n), RTNORM);
  List insert(rydbEntGet(first.n));
  EXPECT_EQ(insert.text(0), L"INSERT");
  EXPECT_EQ(insert.text(2), L"FLAG");
  EXPECT_EQ(insert.text(8), L"FLAGS");
  ASSERT_NE(insert.group(66), nullptr);
  EXPECT_EQ(insert.group(66)->resval.rint, 1);

  std::vector<std::wstring> tags;
  Name at = first;
  Name next;
  while (rydbEntNext(at.n, next.n) == RTNORM) {
    List list(rydbEntGet(next.n));
    if (list.text(0) != L"ATTRIB") {
      EXPECT_EQ(list.text(0), L"SEQEND");
      // The end marker's owner is the insert.
      EXPECT_TRUE(rydbNameEqual(list.group(330)->resval.rlname, first.n));
      at = next;
      break;
    }
    EXPECT_TRUE(rydbNameEqual(list.group(330)->resval.rlname, first.n));
    tags.push_back(list.text(2));
    at = next;
  }
  EXPECT_EQ(tags, (std::vector<std::wstring>{L"NAME", L"XPOS", L"YPOS"}));
  // Past the end marker comes the next main entity, or the end of the drawing.
  EXPECT_NE(rydbEntNext(at.n, next.n), RTNORM);
  EXPECT_EQ(errnoValue(), ryhost::kErrnoEndOfEntities);
}

// The groups of each entity of a DXF file as the independent reader gives
// them, by handle (upper-case hexadecimal).
std::map<std::string, std::vector<std::pair<int, std::string>>> fileGroups(const std::string& path) {
  const std::string command = "PYTHONIOENCODING=utf-8:surrogateescape /usr/bin/python3 " +
                              std::string(KESTRIX_SOURCE_DIR) + "/host/tests/dxf_entity_groups.py '" + path + "'";
  std::map<std::string, std::vector<std::pair<int, std::string>>> groups;
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return groups;
  std::string text;
  char buffer[65536];
  while (size_t n = std::fread(buffer, 1, sizeof buffer, pipe)) text.append(buffer, n);
  EXPECT_EQ(pclose(pipe), 0) << command;
  std::vector<std::pair<int, std::string>>* entity = nullptr;
  size_t at = 0;
  while (at < text.size()) {
    size_t end = text.find('\n', at);
    if (end == std::string::npos) end = text.size();
    const std::string line = text.substr(at, end - at);
    at = end + 1;
    if (line.empty()) continue;
    if (line[0] == '@') {
      entity = &groups[line.substr(1)];
    } else if (entity) {
      const size_t tab = line.find('\t');
      entity->emplace_back(std::stoi(line.substr(0, tab)), tab == std::string::npos ? "" : line.substr(tab + 1));
    }
  }
  return groups;
}

std::string upperHandle(const OdDbObjectId& id) { return id.isNull() ? "0" : OdString(id.handle().ascii()).makeUpper().toUtf8(); }

// Compares one list with the file's groups of the same entity; the first
// difference, or an empty text. The list gives -1 and its layout name (410)
// of its own, the owner (330) after 0 where the file gives it after the
// application groups, entity names where the file gives handles (and leaves
// out null ones), and -3 before the extended data.
std::string firstDifference(const resbuf* list, std::vector<std::pair<int, std::string>> file) {
  std::string owner = "0";
  int depth = 0;
  for (auto it = file.begin(); it != file.end(); ++it) {
    if (it->first == 102) depth += it->second.rfind('{', 0) == 0 ? 1 : -1;
    if (it->first == 330 && depth == 0) {
      owner = OdString(it->second.c_str()).makeUpper().toUtf8();
      file.erase(it);
      break;
    }
  }
  std::erase_if(file, [](const auto& group) { return group.first == 410; });
  size_t f = 0;
  auto fileValue = [&](int code) -> const std::string* {
    return f < file.size() && file[f].first == code ? &file[f].second : nullptr;
  };
  const resbuf* rb = list;
  for (; rb; rb = rb->rbnext) {
    const int code = rb->restype;
    if (code == -1 || code == -3 || code == 410) continue;
    if (code == 330 && rb == list->rbnext->rbnext) {
      OdDbObjectId id;
      rydbGetObjectId(id, rb->resval.rlname);
      if (upperHandle(id) != owner) return "owner " + upperHandle(id) + " / " + owner;
      continue;
    }
    // Null references the file gives are not in the list.
    while (f < file.size() && ryhost::isNameGroup(file[f].first) && file[f].second == "0" && file[f].first != code) ++f;
    const std::string* value = fileValue(code);
    const std::string where = "group " + std::to_string(code) + " (file: " +
                              (f < file.size() ? std::to_string(file[f].first) + " " + file[f].second : "end") + ")";
    if (!value) return where + ": not in the file there";
    std::string mine;
    if (ryhost::isNameGroup(code)) {
      OdDbObjectId id;
      rydbGetObjectId(id, rb->resval.rlname);
      if (upperHandle(id) != OdString(value->c_str()).makeUpper().toUtf8()) return where + ": names " + upperHandle(id);
      ++f;
      continue;
    }
    switch (OdDxf::valueTypeOf(code)) {
      case OdDxf::ValueType::kString:
      case OdDxf::ValueType::kHandle:
        mine = OdString(rb->resval.rstring).toUtf8();
        if (OdDxf::valueTypeOf(code) == OdDxf::ValueType::kHandle) {
          mine = OdString(rb->resval.rstring).makeUpper().toUtf8();
          if (mine != OdString(value->c_str()).makeUpper().toUtf8()) return where + ": " + mine;
        } else if (mine != *value) {
          return where + ": " + mine;
        }
        ++f;
        break;
      case OdDxf::ValueType::kDouble:
        if (std::fabs(rb->resval.rreal - std::stod(*value)) > 1e-9 * std::max(1.0, std::fabs(rb->resval.rreal))) {
          return where + ": " + std::to_string(rb->resval.rreal);
        }
        ++f;
        break;
      case OdDxf::ValueType::kPoint:
        // x, y and, where the file gives it, z.
        for (int axis = 0; axis < 3; ++axis) {
          const std::string* coordinate = fileValue(code + 10 * axis);
          if (!coordinate) {
            if (axis < 2) return where + ": coordinate " + std::to_string(axis) + " missing";
            break;
          }
          const double v = rb->resval.rpoint[axis];
          if (std::fabs(v - std::stod(*coordinate)) > 1e-9 * std::max(1.0, std::fabs(v))) {
            return where + ": coordinate " + std::to_string(axis) + " " + std::to_string(v);
          }
          ++f;
        }
        break;
      case OdDxf::ValueType::kInt16:
      case OdDxf::ValueType::kBool:
        if (rb->resval.rint != std::stol(*value)) return where + ": " + std::to_string(rb->resval.rint);
        ++f;
        break;
      case OdDxf::ValueType::kInt32:
        if (rb->resval.rlong != std::stol(*value)) return where + ": " + std::to_string(rb->resval.rlong);
        ++f;
        break;
      case OdDxf::ValueType::kInt64:
        if (rb->resval.mnInt64 != std::stoll(*value)) return where + ": " + std::to_string(rb->resval.mnInt64);
        ++f;
        break;
      case OdDxf::ValueType::kBinary: {
        std::string hex;
        for (int i = 0; i < rb->resval.rbinary.clen; ++i) {
          char digits[3];
          std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(rb->resval.rbinary.buf[i]));
          hex += digits;
        }
        if (hex != OdString(value->c_str()).makeUpper().toUtf8()) return where + ": " + hex;
        ++f;
        break;
      }
    }
  }
  if (f < file.size()) return "the file goes on with group " + std::to_string(file[f].first) + " " + file[f].second;
  return {};
}

// Entities of the drawings below whose source file holds them in another
// form than ours: multi-line texts written without their column data, and
// attributes (and the end of their run) whose file names the block
// definition as owner where ours is the reference that holds them.
bool sourceInAnotherForm(const std::string& file, const std::string& type) {
  return type == "MTEXT" || (file == "examples_dxf_multi_insert_with_attribs.dxf" && (type == "ATTRIB" || type == "SEQEND"));
}

// Every entity's list gives what the drawing's DXF file gives, group for
// group, as an independent reader reads that file: the same codes in the
// same order with the same values. Lists and the file written from the
// drawing agree for every entity (one writer makes both); lists and the
// source file agree wherever the source has our form.
TEST(EntityListsRead, ListsGiveTheGroupsOfTheDxfFile) {
  if (std::system("/usr/bin/python3 -c 'import ezdxf' >/dev/null 2>&1") != 0) {
    GTEST_SKIP() << "python3-ezdxf is not installed for /usr/bin/python3";
  }
  int fromSource = 0;
  for (const char* file : {"examples_dxf_text_negative_extrusion.dxf", "examples_dxf_multi_insert_with_attribs.dxf",
                           "examples_dxf_hatches_1.dxf", "examples_dxf_columns_R2018.dxf", "examples_dxf_visibility.dxf",
                           "examples_dxf_VP4.dxf", "examples_dxf_mtext_columns_R2007.dxf"}) {
    HostSession session(CorpusDrawing{file});
    const std::string path = (std::filesystem::temp_directory_path() /
                              ("entity-groups-" + std::to_string(getpid()) + ".dxf")).string();
    odDxfWriteFile(session.db(), OdString(path.c_str()));
    const auto groups = fileGroups(path);
    std::filesystem::remove(path);
    const auto source = fileGroups(std::string(KESTRIX_CORPUS_DIR) + "/" + file);
    resbuf* everyApplication = ryutBuildList(RTSTR, L"*", RTNONE);
    int compared = 0;
    ads_name at = {0, 0}, next;
    for (bool first = true; rydbEntNext(first ? nullptr : at, next) == RTNORM; first = false) {
      at[0] = next[0];
      at[1] = next[1];
      List list(rydbEntGetX(next, everyApplication));
      OdDbObjectId id;
      rydbGetObjectId(id, next);
      const auto found = groups.find(upperHandle(id));
      ASSERT_NE(found, groups.end()) << file << " " << upperHandle(id);
      const std::string type = OdString(list.text(0).c_str()).toUtf8();
      EXPECT_EQ(firstDifference(list.head, found->second), "") << file << " " << type << " " << upperHandle(id);
      if (!sourceInAnotherForm(file, type)) {
        const auto inSource = source.find(upperHandle(id));
        ASSERT_NE(inSource, source.end()) << file << " " << upperHandle(id);
        EXPECT_EQ(firstDifference(list.head, inSource->second), "") << file << " " << type << " " << upperHandle(id)
                                                                    << " (source file)";
        ++fromSource;
      }
      ++compared;
    }
    ryutRelRb(everyApplication);
    EXPECT_GE(compared, 5) << file;
  }
  EXPECT_GT(fromSource, 100);
}

// ---------------------------------------------------------------- changing

TEST(EntityListsModify, ChangedGroupsShowInTheNextList) {
  HostSession session;
  const Name line = makeLine(kOrigin, kPoint);
  {
    List list(rydbEntGet(line.n));
    list.group(10)->resval.rpoint[0] = -3;
    resbuf* layer = list.group(8);
    std::free(layer->resval.rstring);
    layer->resval.rstring = static_cast<ACHAR*>(std::malloc(6 * sizeof(ACHAR)));
    std::wcscpy(layer->resval.rstring, L"Walls");
    ASSERT_EQ(rydbEntMod(list.head), RTNORM);
  }
  List after(rydbEntGet(line.n));
  EXPECT_DOUBLE_EQ(after.group(10)->resval.rpoint[0], -3);
  EXPECT_DOUBLE_EQ(after.group(11)->resval.rpoint[0], 10);
  EXPECT_EQ(after.text(8), L"Walls");
  // The layer was made for the entity.
  EXPECT_FALSE(session.db()->findRecord(OdDbNameTable::kLayer, L"walls").isNull());
  // A short list changes only its own groups.
  List colour(ryutBuildList(-1, line.n, 62, 1, RTNONE));
  ASSERT_EQ(rydbEntMod(colour.head), RTNORM);
  List last(rydbEntGet(line.n));
  EXPECT_EQ(last.group(62)->resval.rint, 1);
  EXPECT_EQ(last.text(8), L"Walls");
  EXPECT_DOUBLE_EQ(last.group(10)->resval.rpoint[0], -3);
  // A group appended to a whole list goes where it belongs.
  List appended(rydbEntGet(line.n));
  resbuf* tail = appended.head;
  while (tail->rbnext) tail = tail->rbnext;
  tail->rbnext = ryutBuildList(39, 2.5, 62, 4, RTNONE);
  ASSERT_EQ(rydbEntMod(appended.head), RTNORM);
  List final(rydbEntGet(line.n));
  EXPECT_EQ(final.group(62)->resval.rint, 4);
  EXPECT_DOUBLE_EQ(final.group(39)->resval.rreal, 2.5);
}

// Giving an entity its own list back changes nothing, for every entity of
// real drawings (the groups go back where they came from).
TEST(EntityListsModify, OwnListGivenBackLeavesEveryEntityAsItWas) {
  for (const char* file : {"examples_dxf_text_negative_extrusion.dxf", "examples_dxf_hatches_1.dxf",
                           "examples_dxf_multi_insert_with_attribs.dxf", "examples_dxf_columns_R2018.dxf"}) {
    HostSession session(CorpusDrawing{file});
    int modified = 0;
    for (const OdDbObjectId& id : session.db()->allObjectIds()) {
      if (id.isErased() || !id.stub()->object->isKindOf(OdDbEntity::desc())) continue;
      if (id.stub()->object->isKindOf(OdDbSequenceEnd::desc())) continue;
      OdRxObjectPtr before = id.stub()->object->clone();
      Name name;
      rydbGetAdsName(name.n, id);
      List list(rydbEntGet(name.n));
      ASSERT_EQ(rydbEntMod(list.head), RTNORM) << file << " " << id.stub()->object->dxfName().toUtf8();
      OdString difference;
      EXPECT_TRUE(OdDbSchemaIo::fieldsEqual(static_cast<OdDbObject*>(before.get()), id.stub()->object, &difference))
          << file << " " << id.stub()->object->dxfName().toUtf8() << ": " << difference.toUtf8();
      ++modified;
    }
    EXPECT_GT(modified, 5) << file;
  }
}

TEST(EntityListsModify, PolylineKeepsItsVerticesAndTheirBulges) {
  HostSession session;
  const ads_point a = {0, 0, 0}, b = {10, 0, 0}, c = {10, 10, 0};
  List made(ryutBuildList(RTDXF0, L"LWPOLYLINE", 90, 3, 10, a, 42, 0.5, 10, b, 10, c, RTNONE));
  Name poly;
  ASSERT_EQ(rydbEntMakeX(made.head, poly.n), RTNORM);
  List layer(ryutBuildList(-1, poly.n, 8, L"0", RTNONE));
  ASSERT_EQ(rydbEntMod(layer.head), RTNORM);
  {
    List list(rydbEntGet(poly.n));
    ASSERT_EQ(list.count(10), 3);
    // Moving the last vertex through the whole list keeps the first vertex's bulge.
    list.group(10, 2)->resval.rpoint[1] = 20;
    ASSERT_EQ(rydbEntMod(list.head), RTNORM);
  }
  OdDbObjectPtr object = idOf(poly).openObject();
  auto* polyline = static_cast<OdDbPolyline*>(object.get());
  ASSERT_EQ(polyline->numVerts(), 3u);
  double bulge = 0;
  polyline->getBulgeAt(0, bulge);
  EXPECT_DOUBLE_EQ(bulge, 0.5);
  OdGePoint2d last;
  polyline->getPointAt(2, last);
  EXPECT_DOUBLE_EQ(last.y, 20);
}

TEST(EntityListsModify, RefusedListsLeaveTheEntityAlone) {
  HostSession session;
  const Name line = makeLine(kOrigin, kPoint);
  struct Case {
    resbuf* list;
    int errnoValue;
  };
  const Case cases[] = {
      {ryutBuildList(-1, line.n, RTDXF0, L"CIRCLE", 10, kPoint, RTNONE), ryhost::kErrnoChangeType},
      {ryutBuildList(-1, line.n, 6, L"NoSuchLinetype", 10, kPoint, RTNONE), ryhost::kErrnoBadLinetype},
      {ryutBuildList(-1, line.n, 8, L"bad<name", 10, kPoint, RTNONE), ryhost::kErrnoBadLayer},
      {ryutBuildList(-1, line.n, 10, kPoint, -3, 1001, L"NOT_REGISTERED", 1000, L"x", RTNONE), ryhost::kErrnoXdataAppPlace},
      {ryutBuildList(10, kPoint, RTNONE), ryhost::kErrnoInvalidName},
  };
  for (const Case& c : cases) {
    List list(c.list);
    EXPECT_EQ(rydbEntMod(list.head), RTERROR);
    EXPECT_EQ(errnoValue(), c.errnoValue);
  }
  List after(rydbEntGet(line.n));
  EXPECT_DOUBLE_EQ(after.group(10)->resval.rpoint[0], 0);
  EXPECT_EQ(after.text(0), L"LINE");
}

TEST(EntityListsModify, EntityOnLockedLayerIsRefused) {
  HostSession session;
  const Name line = makeLine(kOrigin, kPoint, L"Locked");
  {
    OdDbObjectPtr layer = session.db()->findRecord(OdDbNameTable::kLayer, L"Locked").openObject(OdDb::kForWrite);
    static_cast<OdDbLayerTableRecord*>(layer.get())->setIsLocked(true);
  }
  List list(ryutBuildList(-1, line.n, 10, kPoint, RTNONE));
  EXPECT_EQ(rydbEntMod(list.head), RTERROR);
  EXPECT_EQ(errnoValue(), ryhost::kErrnoLockedLayer);
  EXPECT_EQ(rydbEntDel(line.n), RTERROR);
  EXPECT_FALSE(idOf(line).isErased());
}

TEST(EntityListsModify, ExtendedDataIsReplacedPerApplication) {
  HostSession session;
  const Name line = makeLine(kOrigin, kPoint);
  ASSERT_EQ(rydbRegApp(L"KX_ONE"), RTNORM);
  ASSERT_EQ(rydbRegApp(L"KX_TWO"), RTNORM);
  List data(ryutBuildList(-1, line.n, -3, 1001, L"KX_ONE", 1000, L"first", 1002, L"{", 1070, 7, 1002, L"}", 1001,
                          L"KX_TWO", 1040, 2.5, 1010, kPoint, RTNONE));
  ASSERT_EQ(rydbEntMod(data.head), RTNORM);
  List replace(ryutBuildList(-1, line.n, -3, 1001, L"KX_ONE", 1071, 123456, RTNONE));
  ASSERT_EQ(rydbEntMod(replace.head), RTNORM);

  List apps(ryutBuildList(RTSTR, L"kx_one", RTNONE));
  List one(rydbEntGetX(line.n, apps.head));
  ASSERT_NE(one.group(-3), nullptr);
  EXPECT_EQ(one.count(1001), 1);
  EXPECT_EQ(one.group(1071)->resval.rlong, 123456);
  EXPECT_EQ(one.group(1000), nullptr);
  List all(ryutBuildList(RTSTR, L"*", RTNONE));
  List both(rydbEntGetX(line.n, all.head));
  EXPECT_EQ(both.count(1001), 2);
  EXPECT_DOUBLE_EQ(both.group(1010)->resval.rpoint[0], 10);
  List plain(rydbEntGet(line.n));
  EXPECT_EQ(plain.group(-3), nullptr);

  List unbalanced(ryutBuildList(-1, line.n, -3, 1001, L"KX_ONE", 1002, L"{", RTNONE));
  EXPECT_EQ(rydbEntMod(unbalanced.head), RTERROR);
  EXPECT_EQ(errnoValue(), ryhost::kErrnoXdataNesting);
}

// ---------------------------------------------------------------- making

TEST(EntityListsMake, SimpleEntityTakesTheDrawingsCurrentProperties) {
  HostSession session;
  List clayer(ryutBuildList(RTDXF0, L"LAYER", 2, L"Current", 70, 0, 62, 3, 6, L"Continuous", RTNONE));
  ASSERT_EQ(rydbEntMake(clayer.head), RTNORM);
  resbuf value{};
  value.restype = RTSTR;
  value.resval.rstring = const_cast<ACHAR*>(L"Current");
  ASSERT_EQ(ryedSetVar(L"CLAYER", &value), RTNORM);
  const Name line = makeLine(kOrigin, kPoint);
  List list(rydbEntGet(line.n));
  EXPECT_EQ(list.text(8), L"Current");
  Name last;
  ASSERT_EQ(rydbEntLast(last.n), RTNORM);
  EXPECT_TRUE(rydbNameEqual(last.n, line.n));

  List style(ryutBuildList(RTDXF0, L"STYLE", 2, L"Narrow", 70, 0, 40, 0.0, 41, 0.8, 3, L"romans", RTNONE));
  ASSERT_EQ(rydbEntMake(style.head), RTNORM);
  value.resval.rstring = const_cast<ACHAR*>(L"Narrow");
  ASSERT_EQ(ryedSetVar(L"TEXTSTYLE", &value), RTNORM);
  const ads_point at = {1, 1, 0};
  List text(ryutBuildList(RTDXF0, L"TEXT", 10, at, 1, L"hello", RTNONE));
  Name made;
  ASSERT_EQ(rydbEntMakeX(text.head, made.n), RTNORM);
  List textList(rydbEntGet(made.n));
  EXPECT_EQ(textList.text(7), L"Narrow");
  EXPECT_GT(textList.group(40)->resval.rreal, 0);

  List missing(ryutBuildList(RTDXF0, L"LINE", 10, kOrigin, RTNONE));
  EXPECT_EQ(rydbEntMake(missing.head), RTERROR);
  EXPECT_EQ(errnoValue(), ryhost::kErrnoMissingField);
  List unknown(ryutBuildList(RTDXF0, L"NO_SUCH_THING", 10, kOrigin, RTNONE));
  EXPECT_EQ(rydbEntMake(unknown.head), RTERROR);
  EXPECT_EQ(errnoValue(), ryhost::kErrnoBadEntityType);
}

TEST(EntityListsMake, ValuesThatCannotStandAreRefusedAndNothingIsMade) {
  HostSession session;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  const ads_point nanY = {1, nan, 0};
  const ads_point minusInfZ = {1, 2, -inf};
  const ads_point zero = {0, 0, 0};
  ASSERT_EQ(rydbRegApp(L"KX_VALUES"), RTNORM);
  const Name before = makeLine(kOrigin, kPoint);
  const size_t count = modelSpaceCount(session);
  struct Case {
    const char* what;
    resbuf* list;
    int errnoValue;
  };
  const Case cases[] = {
      {"NaN in a point", ryutBuildList(RTDXF0, L"LINE", 10, nanY, 11, kPoint, RTNONE), ryhost::kErrnoBadField},
      {"-inf in a point", ryutBuildList(RTDXF0, L"CIRCLE", 10, minusInfZ, 40, 1.0, RTNONE), ryhost::kErrnoBadField},
      {"+inf radius", ryutBuildList(RTDXF0, L"CIRCLE", 10, kPoint, 40, inf, RTNONE), ryhost::kErrnoBadField},
      {"NaN angle", ryutBuildList(RTDXF0, L"ARC", 10, kPoint, 40, 1.0, 50, nan, 51, 90.0, RTNONE), ryhost::kErrnoBadField},
      {"NaN vertex", ryutBuildList(RTDXF0, L"LWPOLYLINE", 90, 2, 10, kOrigin, 10, nanY, RTNONE), ryhost::kErrnoBadField},
      {"inf in extended data",
       ryutBuildList(RTDXF0, L"LINE", 10, kOrigin, 11, kPoint, -3, 1001, L"KX_VALUES", 1040, inf, RTNONE),
       ryhost::kErrnoBadField},
      {"zero normal", ryutBuildList(RTDXF0, L"CIRCLE", 10, kPoint, 40, 1.0, 210, zero, RTNONE), ryhost::kErrnoBadNormal},
      {"negative circle radius", ryutBuildList(RTDXF0, L"CIRCLE", 10, kPoint, 40, -1.0, RTNONE), ryhost::kErrnoBadField},
      {"negative arc radius", ryutBuildList(RTDXF0, L"ARC", 10, kPoint, 40, -2.0, 50, 0.0, 51, 90.0, RTNONE),
       ryhost::kErrnoBadField},
      {"negative text height", ryutBuildList(RTDXF0, L"TEXT", 10, kPoint, 1, L"x", 40, -2.5, RTNONE), ryhost::kErrnoBadField},
  };
  for (const Case& c : cases) {
    List list(c.list);
    EXPECT_EQ(rydbEntMake(list.head), RTERROR) << c.what;
    EXPECT_EQ(errnoValue(), c.errnoValue) << c.what;
  }
  EXPECT_EQ(modelSpaceCount(session), count);
  Name last;
  ASSERT_EQ(rydbEntLast(last.n), RTNORM);
  EXPECT_TRUE(rydbNameEqual(last.n, before.n));

  // Values near the limits are fine: a normal that is not of unit length, a
  // negative angle, a zero radius.
  const ads_point longNormal = {0, 0, 2};
  List fine(ryutBuildList(RTDXF0, L"ARC", 10, kPoint, 40, 0.0, 50, -45.0, 51, 90.0, 210, longNormal, RTNONE));
  EXPECT_EQ(rydbEntMake(fine.head), RTNORM);
  EXPECT_EQ(modelSpaceCount(session), count + 1);
}

TEST(EntityListsModify, ValuesThatCannotStandLeaveTheEntityAsItWas) {
  HostSession session;
  List made(ryutBuildList(RTDXF0, L"CIRCLE", 10, kPoint, 40, 3.0, RTNONE));
  Name circle;
  ASSERT_EQ(rydbEntMakeX(made.head, circle.n), RTNORM);
  const ads_point zero = {0, 0, 0};
  const ads_point nanX = {std::numeric_limits<double>::quiet_NaN(), 0, 0};
  List negative(ryutBuildList(-1, circle.n, 40, -3.0, RTNONE));
  EXPECT_EQ(rydbEntMod(negative.head), RTERROR);
  EXPECT_EQ(errnoValue(), ryhost::kErrnoBadField);
  List flat(ryutBuildList(-1, circle.n, 210, zero, RTNONE));
  EXPECT_EQ(rydbEntMod(flat.head), RTERROR);
  EXPECT_EQ(errnoValue(), ryhost::kErrnoBadNormal);
  List lost(ryutBuildList(-1, circle.n, 10, nanX, RTNONE));
  EXPECT_EQ(rydbEntMod(lost.head), RTERROR);
  EXPECT_EQ(errnoValue(), ryhost::kErrnoBadField);
  List after(rydbEntGet(circle.n));
  EXPECT_DOUBLE_EQ(after.group(40)->resval.rreal, 3.0);
  EXPECT_DOUBLE_EQ(after.group(10)->resval.rpoint[0], 10);
  OdDbObjectPtr object = idOf(circle).openObject();
  EXPECT_EQ(static_cast<OdDbCircle*>(object.get())->normal(), OdGeVector3d::kZAxis);
}

TEST(EntityListsMake, InsertWithAttributesAppearsAtItsSeqend) {
  HostSession session;
  List block(ryutBuildList(RTDXF0, L"BLOCK", 2, L"TAGGED", 70, 2, 10, kOrigin, RTNONE));
  List circle(ryutBuildList(RTDXF0, L"CIRCLE", 10, kOrigin, 40, 1.0, RTNONE));
  List end(ryutBuildList(RTDXF0, L"ENDBLK", RTNONE));
  ASSERT_EQ(rydbEntMake(block.head), RTNORM);
  ASSERT_EQ(rydbEntMake(circle.head), RTNORM);
  ASSERT_EQ(rydbEntMake(end.head), RTNORM);
  EXPECT_TRUE(session.modelSpace().empty());

  List insert(ryutBuildList(RTDXF0, L"INSERT", 2, L"TAGGED", 66, 1, 10, kPoint, RTNONE));
  List attrib(ryutBuildList(RTDXF0, L"ATTRIB", 10, kPoint, 40, 1.0, 1, L"value", 2, L"TAG", 70, 0, RTNONE));
  List seqend(ryutBuildList(RTDXF0, L"SEQEND", RTNONE));
  ASSERT_EQ(rydbEntMake(insert.head), RTNORM);
  ASSERT_EQ(rydbEntMake(attrib.head), RTNORM);
  EXPECT_TRUE(session.modelSpace().empty());
  Name made;
  ASSERT_EQ(rydbEntMakeX(seqend.head, made.n), RTNORM);
  ASSERT_EQ(session.modelSpace().size(), 1u);
  EXPECT_EQ(idOf(made), session.modelSpace()[0]);

  Name sub;
  ASSERT_EQ(rydbEntNext(made.n, sub.n), RTNORM);
  List attribute(rydbEntGet(sub.n));
  EXPECT_EQ(attribute.text(0), L"ATTRIB");
  EXPECT_EQ(attribute.text(1), L"value");
  EXPECT_EQ(attribute.text(2), L"TAG");
  Name marker;
  ASSERT_EQ(rydbEntNext(sub.n, marker.n), RTNORM);
  EXPECT_EQ(List(rydbEntGet(marker.n)).text(0), L"SEQEND");
  Name past;
  EXPECT_EQ(rydbEntNext(marker.n, past.n), RTERROR);
}

TEST(EntityListsMake, PolylineWithVerticesAndBrokenSequences) {
  HostSession session;
  const ads_point points[] = {{0, 0, 0}, {5, 0, 0}, {5, 5, 0}};
  List polyline(ryutBuildList(RTDXF0, L"POLYLINE", 66, 1, 70, 1, RTNONE));
  List seqend(ryutBuildList(RTDXF0, L"SEQEND", RTNONE));
  ASSERT_EQ(rydbEntMake(polyline.head), RTNORM);
  for (const auto& p : points) {
    List vertex(ryutBuildList(RTDXF0, L"VERTEX", 10, p, RTNONE));
    ASSERT_EQ(rydbEntMake(vertex.head), RTNORM);
  }
  Name made;
  ASSERT_EQ(rydbEntMakeX(seqend.head, made.n), RTNORM);
  OdDbObjectPtr object = idOf(made).openObject();
  auto* poly = dynamic_cast<OdDb2dPolyline*>(object.get());
  ASSERT_NE(poly, nullptr);
  EXPECT_EQ(poly->numVerts(), 3u);
  object.release();
  const size_t before = session.modelSpace().size();

  // A vertex without its polyline, a polyline interrupted by a line, an
  // attribute after a polyline: nothing of them reaches the drawing.
  List vertex(ryutBuildList(RTDXF0, L"VERTEX", 10, kPoint, RTNONE));
  EXPECT_EQ(rydbEntMake(vertex.head), RTERROR);
  EXPECT_EQ(errnoValue(), ryhost::kErrnoBadComplex);
  ASSERT_EQ(rydbEntMake(polyline.head), RTNORM);
  ASSERT_EQ(rydbEntMake(vertex.head), RTNORM);
  List line(ryutBuildList(RTDXF0, L"LINE", 10, kOrigin, 11, kPoint, RTNONE));
  EXPECT_EQ(rydbEntMake(line.head), RTERROR);
  EXPECT_EQ(rydbEntMake(seqend.head), RTERROR);
  ASSERT_EQ(rydbEntMake(polyline.head), RTNORM);
  List attrib(ryutBuildList(RTDXF0, L"ATTRIB", 10, kPoint, 1, L"v", 2, L"T", RTNONE));
  EXPECT_EQ(rydbEntMake(attrib.head), RTERROR);
  EXPECT_EQ(rydbEntMake(seqend.head), RTERROR);
  EXPECT_EQ(session.modelSpace().size(), before);
}

TEST(EntityListsMake, BlockDefinitionAndTableRecords) {
  HostSession session;
  List block(ryutBuildList(RTDXF0, L"BLOCK", 2, L"DOOR", 70, 0, 10, kPoint, RTNONE));
  List line(ryutBuildList(RTDXF0, L"LINE", 10, kOrigin, 11, kPoint, RTNONE));
  List end(ryutBuildList(RTDXF0, L"ENDBLK", RTNONE));
  ASSERT_EQ(rydbEntMake(block.head), RTNORM);
  ASSERT_EQ(rydbEntMake(line.head), RTNORM);
  Name made;
  ASSERT_EQ(rydbEntMakeX(end.head, made.n), RTNORM);
  OdDbObjectId blockId = session.db()->findRecord(OdDbNameTable::kBlock, L"DOOR");
  ASSERT_FALSE(blockId.isNull());
  EXPECT_EQ(idOf(made), blockId);
  EXPECT_TRUE(session.modelSpace().empty());
  OdDbObjectPtr object = blockId.openObject();
  EXPECT_EQ(static_cast<OdDbBlockTableRecord*>(object.get())->entityIds().size(), 1u);
  EXPECT_EQ(rydbEntMake(end.head), RTERROR);
  EXPECT_EQ(errnoValue(), ryhost::kErrnoBadBlockDefinition);

  List insert(ryutBuildList(RTDXF0, L"INSERT", 2, L"DOOR", 10, kOrigin, RTNONE));
  EXPECT_EQ(rydbEntMake(insert.head), RTNORM);
  List missing(ryutBuildList(RTDXF0, L"INSERT", 2, L"WINDOW", 10, kOrigin, RTNONE));
  EXPECT_EQ(rydbEntMake(missing.head), RTERROR);
  EXPECT_EQ(errnoValue(), ryhost::kErrnoBadBlockName);

  List style(ryutBuildList(RTDXF0, L"STYLE", 2, L"Narrow", 70, 0, 40, 0.0, 41, 0.8, 3, L"romans", RTNONE));
  ASSERT_EQ(rydbEntMake(style.head), RTNORM);
  EXPECT_EQ(rydbEntMake(style.head), RTERROR);
  OdDbObjectPtr record = session.db()->findRecord(OdDbNameTable::kTextStyle, L"NARROW").openObject();
  ASSERT_TRUE(record.get());
  EXPECT_DOUBLE_EQ(static_cast<OdDbTextStyleTableRecord*>(record.get())->xScale(), 0.8);
}

// ---------------------------------------------------------------- walking, erasing, handles

TEST(EntityListsWalk, NextSkipsErasedEntitiesAndEraseToggles) {
  HostSession session;
  const Name a = makeLine(kOrigin, kPoint);
  const Name b = makeLine(kPoint, kOrigin);
  const Name c = makeLine(kOrigin, kOrigin);
  ASSERT_EQ(rydbEntDel(b.n), RTNORM);
  EXPECT_TRUE(idOf(b).isErased());
  Name next;
  ASSERT_EQ(rydbEntNext(nullptr, next.n), RTNORM);
  EXPECT_TRUE(rydbNameEqual(next.n, a.n));
  ASSERT_EQ(rydbEntNext(a.n, next.n), RTNORM);
  EXPECT_TRUE(rydbNameEqual(next.n, c.n));
  EXPECT_EQ(rydbEntGet(b.n), nullptr);
  EXPECT_EQ(errnoValue(), ryhost::kErrnoDeletedEntity);
  EXPECT_EQ(rydbEntUpd(b.n), RTERROR);
  // Erasing an erased entity brings it back.
  ASSERT_EQ(rydbEntDel(b.n), RTNORM);
  EXPECT_FALSE(idOf(b).isErased());
  EXPECT_EQ(rydbEntUpd(b.n), RTNORM);
  ASSERT_EQ(rydbEntNext(a.n, next.n), RTNORM);
  EXPECT_TRUE(rydbNameEqual(next.n, b.n));
  const ads_name bogus = {12345, 678};
  EXPECT_EQ(rydbEntGet(bogus), nullptr);
  EXPECT_EQ(errnoValue(), ryhost::kErrnoInvalidName);
}

Name g_erased;
void eraseCommand() { rydbEntDel(g_erased.n); }

TEST(EntityListsWalk, UndoBringsBackWhatACommandErased) {
  HostSession session;
  g_erased = makeLine(kOrigin, kPoint);
  session.host().commands().addCommand(L"TESTS", L"KXERASE", L"KXERASE", 0, eraseCommand);
  session.run({"KXERASE"});
  EXPECT_TRUE(idOf(g_erased).isErased());
  session.run({"U"});
  EXPECT_FALSE(idOf(g_erased).isErased());
  List list(rydbEntGet(g_erased.n));
  EXPECT_EQ(list.text(0), L"LINE");
}

TEST(EntityListsWalk, HandlesNameLiveObjects) {
  HostSession session;
  const Name line = makeLine(kOrigin, kPoint);
  OdString handle = idOf(line).handle().ascii();
  Name found;
  ASSERT_EQ(rydbHandEnt(handle.c_str(), found.n), RTNORM);
  EXPECT_TRUE(rydbNameEqual(found.n, line.n));
  ASSERT_EQ(rydbHandEnt(handle.lower().c_str(), found.n), RTNORM);
  EXPECT_TRUE(rydbNameEqual(found.n, line.n));
  for (const ACHAR* bad : {L"", L"XYZ", L"FFFFFF"}) {
    EXPECT_EQ(rydbHandEnt(bad, found.n), RTERROR) << bad;
    EXPECT_EQ(errnoValue(), ryhost::kErrnoInvalidHandle);
  }
  rydbEntDel(line.n);
  EXPECT_EQ(rydbHandEnt(handle.c_str(), found.n), RTERROR);
}

TEST(EntityListsWalk, ObjectCoordinatesFollowTheArbitraryAxisRule) {
  const ads_point point = {1, 2, 3};
  const ads_point down = {0, 0, -1};
  ads_point ocs, back;
  ASSERT_EQ(rydbWcs2Ecs(point, down, false, ocs), RTNORM);
  EXPECT_DOUBLE_EQ(ocs[0], -1);
  EXPECT_DOUBLE_EQ(ocs[1], 2);
  EXPECT_DOUBLE_EQ(ocs[2], -3);
  const ads_point tilted = {0.3, -0.5, 0.8};
  ASSERT_EQ(rydbWcs2Ecs(point, tilted, false, ocs), RTNORM);
  ASSERT_EQ(rydbEcs2Wcs(ocs, tilted, false, back), RTNORM);
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(back[i], point[i], 1e-12);
  // The OCS z of a point is its distance along the normal.
  const double length = std::sqrt(0.09 + 0.25 + 0.64);
  EXPECT_NEAR(ocs[2], (0.3 * 1 - 0.5 * 2 + 0.8 * 3) / length, 1e-12);
}

}  // namespace
