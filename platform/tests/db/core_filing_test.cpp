// Every persistent class files itself out and back in, and converts to tags
// and back, without losing a field: checked generically over all registered
// classes with every plain field set to a random value.
#include <gtest/gtest.h>

#include <random>

#include "DbBlockTableRecord.h"
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

// Sets every plain field of the object to a random value that a file can carry.
void randomize(OdDbObject* object, std::mt19937& rng, OdDbDatabase* db) {
  std::uniform_real_distribution<double> real(-1e6, 1e6);
  std::uniform_int_distribution<int> small(0, 100);
  OdDbObjectIdArray layers;
  layers.append(db->getLayerZeroId());
  const OdDbClassSchema* schema = object->isA()->schema();
  for (const OdDbSubclass* sub : schema->chain()) {
    for (const OdDbField& field : sub->fields) {
      if (field.flags & (OdDbField::kNoFiler)) continue;
      void* p = field.ref(object);
      switch (field.kind) {
        case OdDbFieldKind::kBool: *static_cast<bool*>(p) = small(rng) % 2; break;
        case OdDbFieldKind::kInt8: *static_cast<OdInt8*>(p) = static_cast<OdInt8>(small(rng)); break;
        case OdDbFieldKind::kInt16: *static_cast<OdInt16*>(p) = static_cast<OdInt16>(small(rng)); break;
        case OdDbFieldKind::kInt32: *static_cast<OdInt32*>(p) = small(rng) * 1000; break;
        case OdDbFieldKind::kInt64: *static_cast<OdInt64*>(p) = small(rng) * 100000; break;
        case OdDbFieldKind::kDouble: *static_cast<double*>(p) = real(rng); break;
        case OdDbFieldKind::kString: *static_cast<OdString*>(p) = OdString().format(L"text %d ü€", small(rng)); break;
        case OdDbFieldKind::kPoint2d: static_cast<OdGePoint2d*>(p)->set(real(rng), real(rng)); break;
        case OdDbFieldKind::kPoint3d: static_cast<OdGePoint3d*>(p)->set(real(rng), real(rng), real(rng)); break;
        case OdDbFieldKind::kVector3d: static_cast<OdGeVector3d*>(p)->set(0.6, 0.0, 0.8); break;
        case OdDbFieldKind::kNameRef:
          if (field.table == OdDbNameTable::kLayer) *static_cast<OdDbObjectId*>(p) = layers[0];
          break;
        case OdDbFieldKind::kHardOwner:
        case OdDbFieldKind::kSoftOwner:
        case OdDbFieldKind::kHardPointer:
        case OdDbFieldKind::kSoftPointer:
          *static_cast<OdDbObjectId*>(p) = db->getOdDbObjectId(OdDbHandle(0x1000 + small(rng)), true);
          break;
        case OdDbFieldKind::kCustom: break;
      }
    }
  }
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
