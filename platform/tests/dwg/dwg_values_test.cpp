// Values of decoded objects checked by hand-worked relations and against
// the same drawing saved in another version, for drawings whose own twin
// cannot be used.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>

#include "DbDatabase.h"
#include "DbObject.h"
#include "DbSchema.h"
#include "DbTagSupport.h"
#include "DxfFile.h"
#include "dwg_files.h"

namespace {

OdDxfTagList groupsOf(OdDbObject* object) {
  OdDxfTagList tags;
  OdDbDatabaseTagContext context(object->database());
  OdDbSchemaIo::writeFields(object, tags, context, true);
  return tags;
}

const OdDxfTag* first(const OdDxfTagList& tags, int code) {
  for (const OdDxfTag& t : tags) {
    if (t.code == code) return &t;
  }
  return nullptr;
}

double distance(const OdDxfTag& a, const OdDxfTag& b) { return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z); }
// The distance in the plane of a dimension whose normal is z.
double planeDistance(const OdDxfTag& a, const OdDxfTag& b) { return std::hypot(a.x - b.x, a.y - b.y); }

struct Dimension {
  int kind;
  OdDxfTag p13, p14, p10;
  double measurement = -1;
};

std::vector<Dimension> dimensionsOf(OdDbDatabase* db) {
  std::vector<Dimension> found;
  db->forEachObjectId([&](const OdDbObjectId& id) {
    OdDbObjectPtr o = id.openObject();
    if (o.isNull() || o->dxfName() != L"DIMENSION") return;
    const OdDxfTagList tags = groupsOf(o.get());
    const OdDxfTag *kind = first(tags, 70), *p13 = first(tags, 13), *p14 = first(tags, 14), *p10 = first(tags, 10), *m = first(tags, 42);
    if (!kind || !p13 || !p14 || !p10) return;
    found.push_back({static_cast<int>(kind->i & 15), *p13, *p14, *p10, m ? m->x : -1});
  });
  return found;
}

// The R13 drawing's twin was saved anew with other handles; the same
// drawing saved as R2000 has a twin. Every dimension of the R13 file is
// found there with the same kind and points, and for the aligned ones the
// distance of the two extension-line points, worked out from the R13
// values, is the measurement the R2000 twin states.
TEST(DwgValues, DimensionsOfTheR13DrawingAgreeWithTheR2000Save) {
  OdDbDatabasePtr r13 = odDxfReadFile(OdString((dwgCorpusDir() + "/example_r13.dwg").c_str()));
  OdDbDatabasePtr r2000 = odDxfReadFile(OdString((dwgCorpusDir() + "/example_2000.dxf").c_str()));
  const std::vector<Dimension> ours = dimensionsOf(r13.get()), theirs = dimensionsOf(r2000.get());
  ASSERT_EQ(ours.size(), 9u);
  int aligned = 0;
  for (const Dimension& d : ours) {
    const Dimension* match = nullptr;
    for (const Dimension& t : theirs) {
      if (t.kind == d.kind && distance(t.p13, d.p13) < 1e-9 && distance(t.p14, d.p14) < 1e-9 && distance(t.p10, d.p10) < 1e-9) match = &t;
    }
    ASSERT_NE(match, nullptr) << "dimension of kind " << d.kind << " at " << d.p13.x << "," << d.p13.y;
    if (d.kind == 1) {
      EXPECT_NEAR(planeDistance(d.p13, d.p14), match->measurement, 1e-9 * match->measurement);
      ++aligned;
    }
  }
  EXPECT_GT(aligned, 0);
}

// The aligned dimension 37E of the R2000 drawing: its stored measurement
// is the distance of its extension-line points in its plane (their z, 1 and
// 0, does not count), worked out by hand: (-473.7587524534901,
// 10344.68927305872) to (-54.05474532926735, 11789.64909083308) is
// sqrt(419.704007^2 + 1444.959818^2) = 1504.679477.
TEST(DwgValues, AlignedDimensionMeasuresItsPoints) {
  OdDbDatabasePtr db = odDxfReadFile(OdString((dwgCorpusDir() + "/example_2000.dwg").c_str()));
  OdDbObjectPtr dimension = db->getOdDbObjectId(OdDbHandle(0x37E), false).openObject();
  ASSERT_FALSE(dimension.isNull());
  const OdDxfTagList tags = groupsOf(dimension.get());
  ASSERT_NE(first(tags, 42), nullptr);
  EXPECT_NEAR(first(tags, 42)->x, 1504.679477, 1e-6);
  EXPECT_NEAR(planeDistance(*first(tags, 13), *first(tags, 14)), 1504.679477, 1e-6);
  EXPECT_DOUBLE_EQ(first(tags, 13)->z, 1.0);
  EXPECT_EQ(first(tags, 70)->i & 15, 1);
}

// The hatch 24F is bounded by the light polyline 8E (its one boundary
// object): its six line edges run along the polyline's six vertices, each
// edge starting where the one before ends, the last closing on the first.
// The two decoders read the same corners from different objects.
TEST(DwgValues, HatchEdgesFollowTheirBoundaryPolyline) {
  OdDbDatabasePtr db = odDxfReadFile(OdString((dwgCorpusDir() + "/example_2000.dwg").c_str()));
  OdDbObjectPtr hatch = db->getOdDbObjectId(OdDbHandle(0x24F), false).openObject();
  OdDbObjectPtr polyline = db->getOdDbObjectId(OdDbHandle(0x8E), false).openObject();
  ASSERT_FALSE(hatch.isNull());
  ASSERT_FALSE(polyline.isNull());
  const OdDxfTagList h = groupsOf(hatch.get()), p = groupsOf(polyline.get());
  std::vector<const OdDxfTag*> starts, ends, corners;
  bool boundaryObject = false;
  for (size_t i = 0; i < h.size(); ++i) {
    if (h[i].code == 72 && h[i].i == 1 && i + 2 < h.size()) {
      starts.push_back(&h[i + 1]);
      ends.push_back(&h[i + 2]);
    }
    boundaryObject = boundaryObject || (h[i].code == 330 && h[i].type == OdDxf::ValueType::kHandle && h[i].i == 0x8E);
  }
  for (const OdDxfTag& t : p) {
    if (t.code == 10) corners.push_back(&t);
  }
  ASSERT_EQ(starts.size(), 6u);
  ASSERT_EQ(corners.size(), 6u);
  for (size_t i = 0; i < 6; ++i) {
    EXPECT_NEAR(starts[i]->x, corners[i]->x, 1e-9);
    EXPECT_NEAR(starts[i]->y, corners[i]->y, 1e-9);
    EXPECT_NEAR(ends[i]->x, starts[(i + 1) % 6]->x, 1e-9);
    EXPECT_NEAR(ends[i]->y, starts[(i + 1) % 6]->y, 1e-9);
  }
  EXPECT_EQ(first(h, 2)->s, L"ANGLE");
  EXPECT_EQ(first(h, 91)->i, 1);
}

// The same drawings saved as R2000 and as R2013 and R2018: the splines
// (whose R2013 form adds flags that say how a spline was made, beside the
// scenario the R2000 form states alone) and the multilines with their
// styles (whose R2018 lines name their linetype by handle, not by index)
// read alike, object by object.
TEST(DwgValues, SplinesAndMultilinesOfR2013AndR2018ReadAsTheirR2000Saves) {
  for (const char* drawing : {"Spline", "Multiline"}) {
    OdDbDatabasePtr r2000 = odDxfReadFile(OdString((dwgCorpusDir() + "/2000_" + drawing + ".dwg").c_str()));
    for (const char* version : {"2013", "2018"}) {
      OdDbDatabasePtr later = odDxfReadFile(OdString((dwgCorpusDir() + "/" + version + "_" + drawing + ".dwg").c_str()));
      std::map<std::string, int> compared;
      r2000->forEachObjectId([&](const OdDbObjectId& id) {
        OdDbObjectPtr ours = id.openObject();
        if (ours.isNull() || (ours->dxfName() != L"SPLINE" && ours->dxfName() != L"MLINE" && ours->dxfName() != L"MLINESTYLE")) return;
        OdDbObjectPtr theirs = later->getOdDbObjectId(id.handle(), false).openObject();
        ASSERT_FALSE(theirs.isNull()) << version << " " << id.handle().ascii().toUtf8();
        const OdDxfTagList a = groupsOf(ours.get()), b = groupsOf(theirs.get());
        ASSERT_EQ(a.size(), b.size()) << version << " " << id.handle().ascii().toUtf8();
        for (size_t i = 0; i < a.size(); ++i) {
          EXPECT_EQ(a[i].code, b[i].code);
          EXPECT_NEAR(a[i].x, b[i].x, 1e-9) << a[i].code;
          EXPECT_NEAR(a[i].y, b[i].y, 1e-9) << a[i].code;
          EXPECT_NEAR(a[i].z, b[i].z, 1e-9) << a[i].code;
          EXPECT_EQ(a[i].i, b[i].i) << a[i].code;
          EXPECT_EQ(a[i].s.iCompare(b[i].s), 0) << a[i].code << " " << a[i].s.toUtf8() << " " << b[i].s.toUtf8();  // names: case aside
        }
        ++compared[ours->dxfName().toUtf8()];
      });
      if (std::string(drawing) == "Spline") EXPECT_GT(compared["SPLINE"], 0);
      else EXPECT_TRUE(compared["MLINE"] > 0 && compared["MLINESTYLE"] > 0) << version;
    }
  }
}

}  // namespace
