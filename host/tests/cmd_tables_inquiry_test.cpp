// LIST and REGEN: what the listing says about each kind of entity (in world
// coordinates and the current units), and the index that REGEN rebuilds.
#include <gtest/gtest.h>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbPolyline.h"
#include "DbText.h"
#include "host_test_support.h"
#include "core/SpatialIndex.h"

namespace {

using namespace hosttest;

std::string handleOf(const OdDbObjectId& id) { return id.handle().ascii().toUtf8(); }

TEST(ListCommand, ListsTheGeometryOfEachKindInWorldCoordinatesAndCurrentUnits) {
  HostSession session;
  OdDbDatabase* db = session.db();
  session.run({"LUPREC", "2", "-LAYER", "N", "PARTS", "C", "1", "PARTS", ""});
  OdDbLinePtr line = new OdDbLine(OdGePoint3d(1, 2, 0), OdGePoint3d(4, 6, 0));
  const OdDbObjectId lineId = addToModelSpace(db, line.get(), L"PARTS");
  line.release();
  OdDbCirclePtr circle = new OdDbCircle(OdGePoint3d(10, 0, 0), 2);
  addToModelSpace(db, circle.get());
  circle.release();
  OdDbArcPtr arc = new OdDbArc(OdGePoint3d(0, 0, 0), 3, 0, 3.14159265358979323846 / 2);
  addToModelSpace(db, arc.get());
  arc.release();
  OdDbPolylinePtr polyline = OdDbPolyline::createObject();
  polyline->addVertexAt(0, OdGePoint2d(0, 0));
  polyline->addVertexAt(1, OdGePoint2d(4, 0));
  polyline->addVertexAt(2, OdGePoint2d(4, 3));
  polyline->setClosed(true);
  addToModelSpace(db, polyline.get());
  polyline.release();
  OdDbTextPtr text = OdDbText::createObject();
  text->setDatabaseDefaults(db);
  text->setTextString(L"Note");
  text->setHeight(1.5);
  text->setPosition(OdGePoint3d(7, 8, 0));
  addToModelSpace(db, text.get());
  text.release();

  // The listing does not follow the user system: coordinates stay in world.
  const std::string out = session.run({"UCS", "Z", "90", "LIST", "ALL", ""});
  EXPECT_TRUE(contains(out, "5 found")) << out;
  EXPECT_TRUE(contains(out, "LINE  Layer: \"PARTS\""));
  EXPECT_TRUE(contains(out, "Space: Model space"));
  EXPECT_TRUE(contains(out, "Handle =  " + handleOf(lineId)));
  EXPECT_TRUE(contains(out, "from point,  X=1.00  Y=2.00  Z=0.00"));
  EXPECT_TRUE(contains(out, "to point,  X=4.00  Y=6.00  Z=0.00"));
  EXPECT_TRUE(contains(out, "Length =  5.00"));
  EXPECT_TRUE(contains(out, "Delta X =  3.00, Delta Y = 4.00"));
  EXPECT_TRUE(contains(out, "radius  2.00") && contains(out, "circumference  12.57") &&
              contains(out, "area  12.57"));
  EXPECT_TRUE(contains(out, "start angle  0") && contains(out, "end angle  90") &&
              contains(out, "length  4.71"));
  EXPECT_TRUE(contains(out, "Closed") && contains(out, "area  6.00") && contains(out, "perimeter  12.00"));
  EXPECT_TRUE(contains(out, "at point  X=4.00  Y=3.00"));
  EXPECT_TRUE(contains(out, "text  Note") && contains(out, "height  1.50") &&
              contains(out, "Style =  \"Standard\""));
  EXPECT_TRUE(contains(out, "insertion point,  X=7.00  Y=8.00"));
  expectUnchanged(session, {"LIST", "ALL", "^C"});
  expectUnchanged(session, {"LIST", "ALL", "", "U"});
}

TEST(ListCommand, BlockReferencesListTheirAttributesAndPropertiesNotByLayer) {
  HostSession session;
  OdDbDatabase* db = session.db();
  const OdDbObjectId reference =
      insertBlock(db->getModelSpaceId(), addBlock(db, L"DOOR"), OdGePoint3d(3, 4, 0));
  {
    OdDbObjectPtr object = reference.openObject(OdDb::kForWrite);
    auto* door = static_cast<OdDbBlockReference*>(object.get());
    door->setScaleFactors(OdGeScale3d(2, 2, 1));
    door->setColorIndex(5);
  }
  addAttribute(reference, L"NO", L"D-12");

  const std::string out = session.run({"LIST", "ALL", ""});
  EXPECT_TRUE(contains(out, "INSERT  Layer: \"0\"")) << out;
  EXPECT_TRUE(contains(out, "Color:  5"));
  EXPECT_TRUE(contains(out, "Block Name:  \"DOOR\""));
  EXPECT_TRUE(contains(out, "at point,  X=3.0000  Y=4.0000  Z=0.0000"));
  EXPECT_TRUE(contains(out, "X scale factor:  2.0000"));
  EXPECT_TRUE(contains(out, "ATTRIBUTE  Tag: \"NO\"  Value: \"D-12\""));
}

TEST(RegenCommand, RebuildsTheIndexThatSelectionUses) {
  HostSession session;
  OdDbLinePtr line = new OdDbLine(OdGePoint3d(0, 0, 0), OdGePoint3d(10, 0, 0));
  const OdDbObjectId id = addToModelSpace(session.db(), line.get());
  line.release();
  // An index that lost an entry (as a stale display would) misses the entity until REGEN.
  ryhost::Document* doc = session.host().current();
  doc->spatialIndex().rebuild();
  doc->spatialIndex().remove(id);
  const std::string missed = session.run({"ERASE", "C", "-1,-1", "11,1", ""});
  EXPECT_TRUE(contains(missed, "0 found")) << missed;
  const std::string out = session.run({"REGEN", "ERASE", "C", "-1,-1", "11,1", ""});
  EXPECT_TRUE(contains(out, "Regenerating model.")) << out;
  EXPECT_TRUE(contains(out, "1 found"));
  EXPECT_TRUE(id.isErased());
}

}  // namespace
