// Every persistent class files itself out and back in, and converts to tags
// and back, without losing a field: checked generically over all registered
// classes with every plain field set to a random value.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbSchema.h"
#include "DbSymbolTable.h"
#include "db/TagFiling.h"

namespace {

class TestContext : public OdDbTagContext {
 public:
  explicit TestContext(OdDbDatabase* db) : m_db(db) {}
  OdDbDatabase* database() const override { return m_db; }
  OdDbObjectId idFromHandle(OdUInt64 handle) override { return m_db->getOdDbObjectId(OdDbHandle(handle), true); }

 private:
  OdDbDatabase* m_db;
};

// A random value of the field's valid set, when it has one.
OdInt64 validValue(const OdDbField& field, std::mt19937& rng, OdInt64 otherwise) {
  if (field.validHigh >= field.validLow) {
    return std::uniform_int_distribution<OdInt64>(field.validLow, field.validHigh)(rng);
  }
  if (field.validSet) return field.validSet[std::uniform_int_distribution<int>(0, field.validSetSize - 1)(rng)];
  return otherwise;
}

// Sets every field of an object or record to a random value that a file can
// carry; arrays get two or three records, each set the same way.
void randomizeFields(const std::vector<OdDbField>& fields, void* owner, std::mt19937& rng, OdDbDatabase* db) {
  std::uniform_real_distribution<double> real(-1e6, 1e6);
  std::uniform_int_distribution<int> small(0, 100);
  for (const OdDbField& field : fields) {
    if (field.flags & (OdDbField::kNoFiler)) continue;
    if (field.presence) *field.presence(owner) = true;
    void* p = field.refIn(owner);
    if (field.shape == OdDbFieldShape::kCount) continue;
    if (field.shape == OdDbFieldShape::kArray) {
      const size_t count = 2 + static_cast<size_t>(small(rng) % 2);
      field.array->resize(p, count);
      for (size_t i = 0; i < count; ++i) randomizeFields(field.array->fields, field.array->at(p, i), rng, db);
      continue;
    }
    switch (field.kind) {
      case OdDbFieldKind::kBool: *static_cast<bool*>(p) = small(rng) % 2; break;
      case OdDbFieldKind::kInt8: *static_cast<OdInt8*>(p) = static_cast<OdInt8>(validValue(field, rng, small(rng))); break;
      case OdDbFieldKind::kInt16:
        *static_cast<OdInt16*>(p) = static_cast<OdInt16>(validValue(field, rng, small(rng)));
        break;
      case OdDbFieldKind::kInt32:
        *static_cast<OdInt32*>(p) = static_cast<OdInt32>(validValue(field, rng, small(rng) * 1000));
        break;
      case OdDbFieldKind::kInt64: *static_cast<OdInt64*>(p) = validValue(field, rng, small(rng) * 100000); break;
      case OdDbFieldKind::kDouble: *static_cast<double*>(p) = real(rng); break;
      case OdDbFieldKind::kString: *static_cast<OdString*>(p) = OdString().format(L"text %d ü€", small(rng)); break;
      case OdDbFieldKind::kPoint2d: static_cast<OdGePoint2d*>(p)->set(real(rng), real(rng)); break;
      case OdDbFieldKind::kPoint3d: static_cast<OdGePoint3d*>(p)->set(real(rng), real(rng), real(rng)); break;
      case OdDbFieldKind::kVector3d: static_cast<OdGeVector3d*>(p)->set(0.6, 0.0, 0.8); break;
      case OdDbFieldKind::kNameRef:
        if (field.table == OdDbNameTable::kLayer) *static_cast<OdDbObjectId*>(p) = db->getLayerZeroId();
        break;
      case OdDbFieldKind::kHardOwner:
      case OdDbFieldKind::kSoftOwner:
      case OdDbFieldKind::kHardPointer:
      case OdDbFieldKind::kSoftPointer:
        *static_cast<OdDbObjectId*>(p) = db->getOdDbObjectId(OdDbHandle(0x1000 + small(rng)), true);
        break;
      case OdDbFieldKind::kCustom:
        // Compound values declared as records are set field by field.
        if (auto* records = dynamic_cast<const OdDbRecordCodec*>(field.codec)) {
          randomizeFields(records->fields(), records->record(static_cast<OdDbObject*>(owner)), rng, db);
        }
        break;
    }
  }
}

void randomize(OdDbObject* object, std::mt19937& rng, OdDbDatabase* db) {
  for (const OdDbSubclass* sub : object->isA()->schema()->chain()) randomizeFields(sub->fields, object, rng, db);
}

// The persistent classes that can be created.
std::vector<OdRxClass*> persistentClasses() {
  std::vector<OdRxClass*> classes;
  for (OdRxClass* cls : odrxRegisteredClasses()) {
    if (cls->schema() && cls->constructor() && cls->isDerivedFrom(OdDbObject::desc())) classes.push_back(cls);
  }
  return classes;
}

}  // namespace

TEST(Filing, EveryClassRoundTripsThroughTheFilerAndThroughTags) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  std::mt19937 rng(7);
  const auto classes = persistentClasses();
  ASSERT_GT(classes.size(), 20u);
  for (OdRxClass* cls : classes) {
    SCOPED_TRACE(cls->name().toUtf8());
    OdRxObjectPtr created = cls->create();
    auto* original = static_cast<OdDbObject*>(created.get());
    randomize(original, rng, db.get());
    original->extrasForWrite().xdata = {OdDxfTag::str(1001, L"ACAD"), OdDxfTag::real(1040, 2.5),
                                        OdDxfTag::point(1010, 1, 2, 3)};

    OdDbMemoryFiler filer(db.get());
    original->dwgOutFields(&filer);
    OdRxObjectPtr restoredPtr = cls->create();
    auto* restored = static_cast<OdDbObject*>(restoredPtr.get());
    filer.rewind();
    restored->dwgInFields(&filer);
    OdString difference;
    EXPECT_TRUE(OdDbSchemaIo::fieldsEqual(original, restored, &difference)) << difference.toUtf8();
    EXPECT_EQ(restored->xData(), original->xData());
    EXPECT_TRUE(filer.atEnd());

    TestContext ctx(db.get());
    OdDxfTagList tags;
    OdDbSchemaIo::writeFields(original, tags, ctx, true);
    OdRxObjectPtr fromTagsPtr = cls->create();
    auto* fromTags = static_cast<OdDbObject*>(fromTagsPtr.get());
    OdDbSchemaIo::readFields(fromTags, tags.data(), tags.data() + tags.size(), ctx);
    OdDxfTagList again;
    OdDbSchemaIo::writeFields(fromTags, again, ctx, true);
    EXPECT_EQ(tags, again);
  }
}

TEST(Filing, UnknownGroupsStayInPlace) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  TestContext ctx(db.get());
  // A layer record with groups the table does not know, between known ones,
  // and an unknown subclass at the end.
  OdDxfTagList tags{OdDxfTag::str(100, L"AcDbSymbolTableRecord"), OdDxfTag::str(100, L"AcDbLayerTableRecord"),
                    OdDxfTag::str(2, L"WALLS"),         OdDxfTag::integer(70, 0),
                    OdDxfTag::real(41, 4.0),            OdDxfTag::integer(62, -3),
                    OdDxfTag::str(6, L"Continuous"),    OdDxfTag::str(100, L"AcDbFutureLayerPart"),
                    OdDxfTag::integer(62, 5),           OdDxfTag::str(1, L"kept")};
  OdSmartPtr<OdDbLayerTableRecord> layer = OdDbLayerTableRecord::createObject();
  OdDbSchemaIo::readFields(layer.get(), tags.data(), tags.data() + tags.size(), ctx);
  EXPECT_EQ(layer->getName(), L"WALLS");
  EXPECT_TRUE(layer->isOff());
  EXPECT_EQ(layer->colorIndex(), 3);
  ASSERT_NE(layer->extras(), nullptr);
  // The unknown subclass's 62 did not overwrite the colour.
  OdDxfTagList written;
  OdDbSchemaIo::writeFields(layer.get(), written, ctx, true);
  auto at = [&](const OdDxfTag& t) { return std::find(written.begin(), written.end(), t) - written.begin(); };
  EXPECT_LT(at(OdDxfTag::integer(70, 0)), at(tags[4]));
  EXPECT_LT(at(tags[4]), at(OdDxfTag::integer(62, -3)));
  const auto marker = at(OdDxfTag::str(100, L"AcDbFutureLayerPart"));
  ASSERT_LT(marker, static_cast<long>(written.size()));
  EXPECT_EQ(written[static_cast<size_t>(marker) + 1], OdDxfTag::integer(62, 5));
  EXPECT_EQ(written[static_cast<size_t>(marker) + 2], OdDxfTag::str(1, L"kept"));
}

TEST(Filing, RequiredGroupsComeFromTheTables) {
  auto required = [](const wchar_t* className) {
    std::vector<int> codes = OdDbSchemaIo::requiredCodes(*odrxFindClass(className)->schema());
    std::sort(codes.begin(), codes.end());
    return codes;
  };
  EXPECT_EQ(required(L"OdDbLine"), (std::vector<int>{10, 11}));
  EXPECT_EQ(required(L"OdDbArc"), (std::vector<int>{10, 40, 50, 51}));
  EXPECT_EQ(required(L"OdDbText"), (std::vector<int>{1, 10}));
  // An attribute needs its value and tag; a definition only its tag.
  EXPECT_EQ(required(L"OdDbAttribute"), (std::vector<int>{1, 2, 10}));
  EXPECT_EQ(required(L"OdDbAttributeDefinition"), (std::vector<int>{2, 10}));
  // A vertex of a lightweight polyline, inside its record.
  EXPECT_EQ(required(L"OdDbPolyline"), (std::vector<int>{10}));
  EXPECT_EQ(required(L"OdDbBlockReference"), (std::vector<int>{2, 10}));
  EXPECT_TRUE(required(L"OdDbHatch").empty());
}

namespace {

// The plain fields whose value in a freshly made object differs from the
// default its table declares ("Class/field").
void collectDefaultDifferences(const OdRxClass* cls, const OdDbObject* object, std::vector<std::string>& out) {
  for (const OdDbSubclass* sub : cls->schema()->chain()) {
    for (const OdDbField& field : sub->fields) {
      if (field.shape != OdDbFieldShape::kValue || field.kind == OdDbFieldKind::kCustom || field.isId()) continue;
      if (field.hasDefault(object)) continue;
      out.push_back(cls->name().toUtf8() + "/" + OdString(field.name).toUtf8());
    }
  }
}

}  // namespace

// A fresh object holds its table's defaults: the value a repaired field goes
// back to, and the value an optional field leaves unwritten, is the value a
// new object starts with.
TEST(Filing, MemberDefaultsAreTheTablesDefaults) {
  // Fields left out, with why:
  const std::vector<std::string> leftOut = {
      // The dimension subclass's flags hold the kind of dimension (and the
      // block-owned bit), so each dimension class starts with its own
      // value, while the one table they share can declare only one.
      "OdDbAlignedDimension/flags", "OdDbRotatedDimension/flags", "OdDbRadialDimension/flags",
      "OdDbDiametricDimension/flags", "OdDb2LineAngularDimension/flags", "OdDb3PointAngularDimension/flags",
      "OdDbOrdinateDimension/flags",
      // A text style starts with the font file "txt"; a text field's declared
      // default is the empty text (an empty style font is written as such).
      "OdDbTextStyleTableRecord/fileName",
  };
  std::vector<std::string> differences;
  for (OdRxClass* cls : persistentClasses()) {
    OdRxObjectPtr created = cls->create();
    collectDefaultDifferences(cls, static_cast<OdDbObject*>(created.get()), differences);
  }
  for (const std::string& difference : differences) {
    if (std::find(leftOut.begin(), leftOut.end(), difference) == leftOut.end()) ADD_FAILURE() << difference;
  }
  // The comparison sees a value that is not the default.
  OdDbCirclePtr circle = OdDbCircle::createObject();
  circle->setRadius(5);
  std::vector<std::string> changed;
  collectDefaultDifferences(OdDbCircle::desc(), circle.get(), changed);
  EXPECT_EQ(changed, std::vector<std::string>{"OdDbCircle/radius"});
}
