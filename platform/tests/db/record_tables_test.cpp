// Lists of records that files give group by group (linetype dashes,
// multiline vertices and elements, draw order pairs, group members,
// dictionary entries, image clip boundaries): the values read from groups
// laid out by hand, and the groups written for them, in file order.
#include <cmath>

#include "DbDictionary.h"
#include "DbMline.h"
#include "DbRasterImage.h"
#include "DbSymbolTable.h"
#include "db_test_support.h"

namespace {

using namespace curves_test;
using T = OdDxfTag;

// The groups of the given codes, in order.
OdDxfTagList only(const OdDxfTagList& tags, std::initializer_list<int> codes) {
  OdDxfTagList out;
  for (const auto& tag : tags) {
    if (std::find(codes.begin(), codes.end(), tag.code) != codes.end()) out.push_back(tag);
  }
  return out;
}

// Same codes, types and values (reals to the last few digits).
void expectTags(const OdDxfTagList& actual, const OdDxfTagList& expected) {
  ASSERT_EQ(codesOf(actual), codesOf(expected));
  for (size_t i = 0; i < actual.size(); ++i) {
    SCOPED_TRACE(entities_test::tagText(expected[i]));
    EXPECT_EQ(actual[i].type, expected[i].type);
    if (expected[i].type == OdDxf::ValueType::kDouble || expected[i].type == OdDxf::ValueType::kPoint) {
      EXPECT_NEAR(actual[i].x, expected[i].x, 1e-12);
      EXPECT_NEAR(actual[i].y, expected[i].y, 1e-12);
      EXPECT_NEAR(actual[i].z, expected[i].z, 1e-12);
    } else {
      EXPECT_EQ(actual[i], expected[i]);
    }
  }
}

// Counts the repairs a read reports.
struct RepairContext : TagContext {
  std::vector<std::wstring> repairs;
  void valueRepaired(OdDbObject*, const wchar_t* what) override { repairs.emplace_back(what); }
};

TEST(RecordTables, LinetypeDashesAndMultilineElements) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  // A plain dash, then a text dash with every group; the count (73) is wrong
  // and follows from the dashes when written.
  const OdDxfTagList dashes{T::integer(73, 5),  T::real(40, 1.5),       T::real(49, 1.0),    T::integer(74, 0),
                            T::real(49, -0.25), T::integer(74, 2),      T::integer(75, 0),   T::handle(340, 0x11),
                            T::real(46, 0.1),   T::real(50, 90.0),      T::real(44, -0.1),   T::real(45, -0.05),
                            T::str(9, L"GAS")};
  OdDxfTagList body{T::str(100, L"AcDbSymbolTableRecord"), T::str(100, L"AcDbLinetypeTableRecord"),
                    T::str(2, L"GAS_LINE"), T::integer(70, 0), T::integer(72, 65)};
  body.insert(body.end(), dashes.begin(), dashes.end());
  auto linetype = readTags<OdDbLinetypeTableRecord>(body, db.get());
  ASSERT_EQ(linetype->numDashes(), 2);
  EXPECT_EQ(linetype->patternLength(), 1.5);
  const OdDbLinetypeDash& plain = linetype->dashes()[0];
  EXPECT_EQ(plain.length, 1.0);
  EXPECT_EQ(plain.scale, 1.0);  // not given: a dash's own default
  const OdDbLinetypeDash& text = linetype->dashes()[1];
  EXPECT_EQ(text.complexType, 2);
  EXPECT_EQ(text.styleId.handle(), OdDbHandle(0x11));
  EXPECT_NEAR(text.rotation, M_PI / 2, 1e-15);
  EXPECT_EQ(text.offsetY, -0.05);
  EXPECT_EQ(text.text, L"GAS");
  OdDxfTagList expected = dashes;
  expected[0] = T::integer(73, 2);
  expectTags(only(tagsOf(linetype.get()), {73, 40, 49, 74, 75, 340, 46, 50, 44, 45, 9}), expected);
  // A shape dash (4) writes the shape groups but no text.
  body[body.size() - 8] = T::integer(74, 4);
  linetype = readTags<OdDbLinetypeTableRecord>(body, db.get());
  expected[5] = T::integer(74, 4);
  expected.pop_back();
  expectTags(only(tagsOf(linetype.get()), {73, 40, 49, 74, 75, 340, 46, 50, 44, 45, 9}), expected);

  // Two vertices of two elements each: element distances (74 + 41) and fill
  // distances (75 + 42), some lists empty; the vertex count (72) is wrong.
  const OdDxfTagList vertices{
      T::point(11, 0, 0, 0),  T::point(12, 1, 0, 0),  T::point(13, 0, 1, 0),  T::integer(74, 2),
      T::real(41, 0.5),       T::real(41, 0.0),       T::integer(75, 0),      T::integer(74, 1),
      T::real(41, -0.5),      T::integer(75, 2),      T::real(42, 0.1),       T::real(42, 0.2),
      T::point(11, 10, 0, 0), T::point(12, 0, 1, 0),  T::point(13, -1, 0, 0), T::integer(74, 0),
      T::integer(75, 0),      T::integer(74, 1),      T::real(41, 3.0),       T::integer(75, 0)};
  OdDxfTagList mlineBody{T::str(100, L"AcDbMline"), T::str(2, L"STANDARD"), T::integer(72, 9),
                         T::integer(73, 2),         T::point(10, 0, 0, 0),   T::point(210, 0, 0, 1)};
  mlineBody.insert(mlineBody.end(), vertices.begin(), vertices.end());
  auto mline = readTags<OdDbMline>(mlineBody, db.get());
  ASSERT_EQ(mline->numVertices(), 2);
  const OdDbMline::Vertex& first = mline->vertexDataAt(0);
  ASSERT_EQ(first.elements.size(), 2u);
  EXPECT_EQ(first.elements[0].parameters, OdGeDoubleArray({0.5, 0.0}));
  EXPECT_TRUE(first.elements[0].fillParameters.isEmpty());
  EXPECT_EQ(first.elements[1].parameters, OdGeDoubleArray({-0.5}));
  EXPECT_EQ(first.elements[1].fillParameters, OdGeDoubleArray({0.1, 0.2}));
  const OdDbMline::Vertex& second = mline->vertexDataAt(1);
  EXPECT_TRUE(second.direction.isEqualTo(OdGeVector3d(0, 1, 0)));
  EXPECT_TRUE(second.miter.isEqualTo(OdGeVector3d(-1, 0, 0)));
  ASSERT_EQ(second.elements.size(), 2u);
  EXPECT_TRUE(second.elements[0].parameters.isEmpty());
  EXPECT_EQ(second.elements[1].parameters, OdGeDoubleArray({3.0}));
  expected = vertices;
  expected.insert(expected.begin(), T::integer(72, 2));
  expectTags(only(tagsOf(mline.get()), {72, 11, 12, 13, 74, 41, 75, 42}), expected);
}

TEST(RecordTables, HandleListsOfObjects) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  // Draw order: the sort handle (5) is a handle of its own, written as one.
  const OdDxfTagList pairs{T::handle(331, 0x2A), T::handle(5, 0x30), T::handle(331, 0x2B), T::handle(5, 0x2C)};
  OdDxfTagList body{T::str(100, L"AcDbSortentsTable"), T::handle(330, 0x1F)};
  body.insert(body.end(), pairs.begin(), pairs.end());
  auto sortents = readTags<OdDbSortentsTable>(body, db.get());
  ASSERT_EQ(sortents->pairs().size(), 2u);
  EXPECT_EQ(sortents->pairs()[1].entity.handle(), OdDbHandle(0x2B));
  EXPECT_EQ(sortents->pairs()[1].sortHandle, 0x2Cu);
  expectTags(only(tagsOf(sortents.get()), {331, 5}), pairs);

  // Group members: a null handle is no member.
  auto group = readTags<OdDbGroup>({T::str(100, L"AcDbGroup"), T::str(300, L"doors"), T::integer(70, 0),
                                    T::integer(71, 1), T::handle(340, 0x40), T::handle(340, 0), T::handle(340, 0x41)},
                                   db.get());
  ASSERT_EQ(group->numEntities(), 2u);
  EXPECT_EQ(group->memberIds()[1].handle(), OdDbHandle(0x41));
  expectTags(only(tagsOf(group.get()), {340}), {T::handle(340, 0x40), T::handle(340, 0x41)});

  // Dictionary entries: 360 makes the dictionary their owner; a name whose
  // object is missing is dropped and reported. Names are found regardless
  // of case, after a read and after filing in.
  RepairContext ctx;
  ctx.db = db.get();
  const OdDxfTagList entries{T::str(100, L"AcDbDictionary"), T::integer(281, 1),   T::str(3, L"A"),
                             T::handle(360, 0x50),           T::str(3, L"LOST"),   T::str(3, L"B"),
                             T::handle(360, 0x51)};
  OdDbDictionaryPtr dict = OdDbDictionary::createObject();
  OdDbSchemaIo::readFields(dict.get(), entries.data(), entries.data() + entries.size(), ctx);
  EXPECT_TRUE(dict->isTreatElementsAsHard());
  ASSERT_EQ(dict->numEntries(), 2u);
  EXPECT_EQ(ctx.repairs, std::vector<std::wstring>{L"entry without an object"});
  EXPECT_EQ(dict->getAt(L"b").handle(), OdDbHandle(0x51));
  expectTags(only(tagsOf(dict.get()), {280, 3, 350, 360}),
             {T::integer(280, 1), T::str(3, L"A"), T::handle(360, 0x50), T::str(3, L"B"), T::handle(360, 0x51)});
  EXPECT_EQ(entities_test::viaFiler(dict.get())->getAt(L"a").handle(), OdDbHandle(0x50));

  // An erased entry of a soft-owning dictionary is not written.
  OdDbDictionaryPtr named = OdDbDictionary::cast(db->getNamedObjectsDictionaryId().safeOpenObject(OdDb::kForWrite));
  OdDbXrecordPtr kept = OdDbXrecord::createObject(), gone = OdDbXrecord::createObject();
  named->setAt(L"KEEP_ME", kept.get());
  named->setAt(L"GONE", gone.get());
  gone->erase();
  const OdDxfTagList written = tagsOf(named.get());
  EXPECT_NE(std::find(written.begin(), written.end(), T::str(3, L"KEEP_ME")), written.end());
  EXPECT_EQ(std::find(written.begin(), written.end(), T::str(3, L"GONE")), written.end());
  EXPECT_EQ(countCode(written, 3), countCode(written, 350));
}

TEST(RecordTables, ImageClipCountFollowsItsPoints) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  const OdDxfTagList clip{T::point(14, -0.5, -0.5, 0, 2), T::point(14, 0.5, -0.5, 0, 2), T::point(14, 0, 0.5, 0, 2)};
  OdDxfTagList body{T::str(100, L"AcDbRasterImage"), T::integer(71, 2), T::integer(91, 7)};
  body.insert(body.end(), clip.begin(), clip.end());
  auto image = readTags<OdDbRasterImage>(body, db.get());
  ASSERT_EQ(image->clipBoundary().size(), 3u);
  EXPECT_EQ(image->clipBoundary()[2].y, 0.5);
  OdDxfTagList expected = clip;
  expected.insert(expected.begin(), T::integer(91, 3));
  expectTags(only(tagsOf(image.get()), {91, 14}), expected);
}

}  // namespace
