// Old-style polylines: picking classes by flags, owning VERTEX entities and
// the SEQEND, copies that do not share vertices, geometry, conversion to and
// from lightweight polylines, meshes, and their groups.
#include <cmath>

#include "DbPolyline.h"
#include "Ge/GePlane.h"
#include "db_test_support.h"

using namespace curves_test;

namespace {

OdDb2dVertexPtr vertex2d(double x, double y, double bulge = 0.0, OdInt16 flags = 0) {
  OdDb2dVertexPtr vertex = OdDb2dVertex::createObject();
  vertex->setPosition(OdGePoint3d(x, y, 0));
  vertex->setBulge(bulge);
  if (flags) {
    // Flags are set the way a file sets them.
    OdDxfTagList tags = tagsOf(vertex.get());
    for (auto& tag : tags) {
      if (tag.code == 70) tag.i = flags;
    }
    vertex = readTags<OdDb2dVertex>(tags);
  }
  return vertex;
}

// A 2-d polyline in model space: (0,0) -[bulge 1]- (2,0) - (2,2).
OdDb2dPolylinePtr polylineInDrawing(Drawing& drawing) {
  OdDb2dPolylinePtr pline = OdDb2dPolyline::createObject();
  drawing.modelSpace->appendOdDbEntity(pline.get());
  pline->appendVertex(vertex2d(0, 0, 1.0).get());
  pline->appendVertex(vertex2d(2, 0).get());
  pline->appendVertex(vertex2d(2, 2).get());
  return pline;
}

}  // namespace

TEST(CurvesOldStylePolyline, ClassesArePickedByTheirFlags) {
  EXPECT_EQ(odDbPolylineClassForFlags(0), OdDb2dPolyline::desc());
  EXPECT_EQ(odDbPolylineClassForFlags(1 | 2 | 128), OdDb2dPolyline::desc());
  EXPECT_EQ(odDbPolylineClassForFlags(8 | 1), OdDb3dPolyline::desc());
  EXPECT_EQ(odDbPolylineClassForFlags(16 | 32), OdDbPolygonMesh::desc());
  EXPECT_EQ(odDbPolylineClassForFlags(64), OdDbPolyFaceMesh::desc());
  EXPECT_EQ(odDbVertexClassForFlags(0), OdDb2dVertex::desc());
  EXPECT_EQ(odDbVertexClassForFlags(1 | 2 | 8), OdDb2dVertex::desc());
  EXPECT_EQ(odDbVertexClassForFlags(32), OdDb3dPolylineVertex::desc());
  EXPECT_EQ(odDbVertexClassForFlags(64), OdDbPolygonMeshVertex::desc());
  EXPECT_EQ(odDbVertexClassForFlags(128 | 64), OdDbPolyFaceMeshVertex::desc());
  EXPECT_EQ(odDbVertexClassForFlags(128), OdDbFaceRecord::desc());
  // A vertex without flags still becomes its polyline's kind.
  OdDb3dPolylinePtr pline3d = OdDb3dPolyline::createObject();
  OdDbPolyFaceMeshPtr polyface = OdDbPolyFaceMesh::createObject();
  EXPECT_EQ(odDbVertexClassForPolyline(pline3d.get(), 0), OdDb3dPolylineVertex::desc());
  EXPECT_EQ(odDbVertexClassForPolyline(polyface.get(), 0), OdDbPolyFaceMeshVertex::desc());
  EXPECT_EQ(odDbVertexClassForPolyline(polyface.get(), 128), OdDbFaceRecord::desc());

  // One DXF name for each family; the plain kinds answer to it.
  EXPECT_EQ(pline3d->dxfName(), L"POLYLINE");
  EXPECT_EQ(polyface->dxfName(), L"POLYLINE");
  EXPECT_EQ(OdDbFaceRecord::createObject()->dxfName(), L"VERTEX");
  EXPECT_EQ(odrxFindClassByDxfName(L"POLYLINE"), OdDb2dPolyline::desc());
  EXPECT_EQ(odrxFindClassByDxfName(L"VERTEX"), OdDb2dVertex::desc());
}

TEST(CurvesOldStylePolyline, OwnsItsVerticesAndEndMarker) {
  Drawing drawing;
  OdDb2dPolylinePtr pline = polylineInDrawing(drawing);
  const OdDbObjectIdArray ids = *pline->subentityIds();
  ASSERT_EQ(ids.size(), 3u);
  ASSERT_FALSE(pline->sequenceEndId().isNull());
  for (const OdDbObjectId& id : ids) {
    OdDbEntityPtr vertex = OdDbEntity::cast(id.openObject().get());
    EXPECT_EQ(vertex->ownerId(), pline->objectId());
    EXPECT_EQ(vertex->layerId(), pline->layerId());
  }
  EXPECT_TRUE(pline->acceptsSubentity(OdDb2dVertex::createObject().get()));
  EXPECT_FALSE(pline->acceptsSubentity(OdDb3dPolylineVertex::createObject().get()));

  // Inserting keeps the order: the vertex iterator walks it.
  pline->insertVertexAt(1, vertex2d(1, -3).get());
  std::vector<OdGePoint3d> walked;
  for (OdDbObjectIteratorPtr it = pline->vertexIterator(); !it->done(); it->step()) {
    walked.push_back(OdDbVertex::cast(it->entity().get())->position());
  }
  ASSERT_EQ(walked.size(), 4u);
  EXPECT_TRUE(near(walked[1], OdGePoint3d(1, -3, 0)));

  // Erasing the polyline erases what it owns; unerasing brings it back.
  const OdDbObjectId seqEnd = pline->sequenceEndId();
  ASSERT_EQ(pline->erase(), eOk);
  EXPECT_TRUE(ids[0].isErased());
  EXPECT_TRUE(seqEnd.isErased());
  ASSERT_EQ(pline->erase(false), eOk);
  EXPECT_FALSE(ids[2].isErased());
  EXPECT_FALSE(seqEnd.isErased());

  // Filing keeps the vertex list and the marker.
  OdDb2dPolylinePtr filed;
  ASSERT_TRUE(filerRoundTrip(pline.get(), &filed));
  EXPECT_EQ(*filed->subentityIds(), *pline->subentityIds());
  EXPECT_EQ(filed->sequenceEndId(), seqEnd);
}

TEST(CurvesOldStylePolyline, VerticesOfAPolylineOutsideTheDrawingFollowItIn) {
  OdDb2dPolylinePtr pline = OdDb2dPolyline::createObject();
  EXPECT_TRUE(pline->appendVertex(vertex2d(0, 0).get()).isNull());
  pline->appendVertex(vertex2d(3, 4).get());
  EXPECT_EQ(pline->numVerts(), 2u);
  EXPECT_NEAR(pline->length(), 5.0, 1e-12);

  // Appending the polyline brings its two vertices and the end marker with it.
  Drawing drawing;
  const size_t objectsBefore = drawing.db->allObjectIds().size();
  drawing.modelSpace->appendOdDbEntity(pline.get());
  EXPECT_EQ(drawing.db->allObjectIds().size(), objectsBefore + 4);
  ASSERT_EQ(pline->subentityIds()->size(), 2u);
  EXPECT_FALSE(pline->sequenceEndId().isNull());
  OdDbEntityPtr first = OdDbEntity::cast((*pline->subentityIds())[0].openObject().get());
  EXPECT_EQ(first->ownerId(), pline->objectId());
  EXPECT_EQ(first->layerId(), pline->layerId());
  EXPECT_NEAR(pline->length(), 5.0, 1e-12);
}

TEST(CurvesOldStylePolyline, CopiesOwnCopiesOfTheVertices) {
  Drawing drawing;
  OdDb2dPolylinePtr pline = polylineInDrawing(drawing);
  OdDbEntityPtr copy;
  ASSERT_EQ(pline->getTransformedCopy(OdGeMatrix3d::translation(OdGeVector3d(10, 0, 0)), copy), eOk);
  auto* moved = static_cast<OdDb2dPolyline*>(copy.get());
  EXPECT_TRUE(near(startOf(*moved), OdGePoint3d(10, 0, 0)));
  EXPECT_TRUE(near(startOf(*pline), OdGePoint3d(0, 0, 0)));  // the source did not move

  drawing.modelSpace->appendOdDbEntity(moved);
  const OdDbObjectIdArray copied = *moved->subentityIds();
  ASSERT_EQ(copied.size(), 3u);
  for (const OdDbObjectId& id : copied) EXPECT_FALSE(pline->subentityIds()->contains(id));
  EXPECT_NE(moved->sequenceEndId(), pline->sequenceEndId());
}

TEST(CurvesOldStylePolyline, PlanarGeometryFollowsThePlaneAndTheBulges) {
  Drawing drawing;
  OdDb2dPolylinePtr pline = polylineInDrawing(drawing);
  pline->setNormal(OdGeVector3d(0, 0, -1));
  pline->setElevation(4);
  // With normal -Z the plane's x axis is world -X and z runs down.
  EXPECT_TRUE(near(startOf(*pline), OdGePoint3d(0, 0, -4)));
  EXPECT_TRUE(near(pointAt(*pline, 2), OdGePoint3d(-2, 2, -4)));
  EXPECT_TRUE(near(pointAt(*pline, 0.5), OdGePoint3d(-1, -1, -4)));

  OdRxObjectPtrArray pieces;
  ASSERT_EQ(pline->explode(pieces), eOk);
  ASSERT_EQ(pieces.size(), 2u);
  OdDbArcPtr arc = OdDbArc::cast(pieces[0].get());
  ASSERT_TRUE(arc.get());
  EXPECT_TRUE(near(startOf(*arc), OdGePoint3d(0, 0, -4)));
  EXPECT_TRUE(near(OdGePoint3d::asPoint(arc->normal()), OdGePoint3d(0, 0, -1)));

  const OdGeMatrix3d mirror = OdGeMatrix3d::mirroring(OdGePlane(OdGePoint3d(0, 1, 0), OdGeVector3d(0, 1, 0)));
  std::vector<OdGePoint3d> before;
  for (double t = 0; t <= 2.0; t += 0.25) before.push_back(pointAt(*pline, t));
  ASSERT_EQ(pline->transformBy(mirror), eOk);
  for (size_t i = 0; i < before.size(); ++i) EXPECT_TRUE(near(pointAt(*pline, 0.25 * i), mirror * before[i]));
  EXPECT_EQ(pline->transformBy(OdGeMatrix3d::scaling(OdGeScale3d(1, 2, 1))), eCannotScaleNonUniformly);

  // Spline-fit: the frame's control vertices are not part of the curve.
  OdDb2dPolylinePtr fitted = OdDb2dPolyline::createObject();
  fitted->appendVertex(vertex2d(0, 0, 0, OdDbVertex::kSplineControlVertex).get());
  fitted->appendVertex(vertex2d(1, 0, 0, OdDbVertex::kSplineFitVertex).get());
  fitted->appendVertex(vertex2d(2, 5, 0, OdDbVertex::kSplineControlVertex).get());
  fitted->appendVertex(vertex2d(1, 1, 0, OdDbVertex::kSplineFitVertex).get());
  OdGeExtents3d extents;
  ASSERT_EQ(fitted->getGeomExtents(extents), eOk);
  EXPECT_TRUE(near(extents, OdGeExtents3d(OdGePoint3d(1, 0, 0), OdGePoint3d(1, 1, 0))));
}

TEST(CurvesOldStylePolyline, ConvertsToAndFromLightweightPolylines) {
  OdDbPolylinePtr source = OdDbPolyline::createObject();
  source->addVertexAt(0, OdGePoint2d(0, 0), 0.5, 0.1, 0.2);
  source->addVertexAt(1, OdGePoint2d(4, 0), -1.0, 0.3, 0.3);
  source->addVertexAt(2, OdGePoint2d(4, 3), 0.0, 0.0, 0.0, 12);
  source->setClosed(true);
  source->setNormal(OdGeVector3d(0, 0, -1));
  source->setElevation(2.5);
  source->setThickness(1);

  Drawing drawing;
  OdDb2dPolylinePtr pline = OdDb2dPolyline::createObject();
  drawing.modelSpace->appendOdDbEntity(pline.get());
  source->setPropertiesFrom(pline.get());
  ASSERT_EQ(source->convertTo(pline.get()), eOk);
  EXPECT_EQ(pline->numVerts(), 3u);
  double sourceArea = 0, area = 0;
  source->getArea(sourceArea);
  pline->getArea(area);
  EXPECT_NEAR(area, sourceArea, 1e-12);
  EXPECT_TRUE(near(pointAt(*pline, 1.5), pointAt(*source, 1.5)));
  EXPECT_EQ(source->convertTo(pline.get()), eInvalidInput);  // it has vertices now

  OdDbPolylinePtr back = OdDbPolyline::createObject();
  ASSERT_EQ(back->convertFrom(pline.get()), eOk);
  OdString difference;
  EXPECT_TRUE(OdDbSchemaIo::fieldsEqual(source.get(), back.get(), &difference)) << difference.c_str();

  OdDb2dPolylinePtr fitted = OdDb2dPolyline::createObject();
  fitted->appendVertex(vertex2d(0, 0, 0, OdDbVertex::kExtraCurveFitVertex).get());
  EXPECT_EQ(back->convertFrom(fitted.get()), eNotApplicable);
}

TEST(CurvesOldStylePolyline, ThreeDimensionalPolylinesAreStraightSegmentsInSpace) {
  Drawing drawing;
  OdDb3dPolylinePtr pline = OdDb3dPolyline::createObject();
  drawing.modelSpace->appendOdDbEntity(pline.get());
  // A unit square tilted about the x axis.
  const double c = std::cos(0.5), s = std::sin(0.5);
  for (const OdGePoint3d& p :
       {OdGePoint3d(0, 0, 0), OdGePoint3d(1, 0, 0), OdGePoint3d(1, c, s), OdGePoint3d(0, c, s)}) {
    OdDb3dPolylineVertexPtr vertex = OdDb3dPolylineVertex::createObject();
    vertex->setPosition(p);
    pline->appendVertex(vertex.get());
  }
  pline->makeClosed();
  EXPECT_NEAR(pline->length(), 4.0, 1e-12);
  double area = 0;
  ASSERT_EQ(pline->getArea(area), eOk);
  EXPECT_NEAR(area, 1.0, 1e-12);
  OdGePoint3d closest;
  ASSERT_EQ(pline->getClosestPointTo(OdGePoint3d(0.5, -1, 0), closest), eOk);
  EXPECT_TRUE(near(closest, OdGePoint3d(0.5, 0, 0)));
  OdRxObjectPtrArray pieces;
  ASSERT_EQ(pline->explode(pieces), eOk);
  ASSERT_EQ(pieces.size(), 4u);
  EXPECT_TRUE(near(OdDbLine::cast(pieces[3].get())->endPoint(), OdGePoint3d(0, 0, 0)));

  ASSERT_EQ(pline->transformBy(OdGeMatrix3d::scaling(OdGeScale3d(2, 1, 1))), eOk);
  EXPECT_NEAR(pline->length(), 6.0, 1e-12);
  const OdDxfTagList tags = tagsOf(pline.get());
  EXPECT_EQ(countCode(tags, 66), 1);
  auto flags = std::find_if(tags.begin(), tags.end(), [](const OdDxfTag& t) { return t.code == 70; });
  ASSERT_NE(flags, tags.end());
  EXPECT_EQ(flags->i, 9);
}

TEST(CurvesOldStylePolyline, PolyfaceMeshesCountTheirVerticesAndFaces) {
  Drawing drawing;
  OdDbPolyFaceMeshPtr mesh = OdDbPolyFaceMesh::createObject();
  drawing.modelSpace->appendOdDbEntity(mesh.get());
  for (const OdGePoint3d& p :
       {OdGePoint3d(0, 0, 0), OdGePoint3d(2, 0, 0), OdGePoint3d(2, 2, 1), OdGePoint3d(0, 2, 1)}) {
    OdDbPolyFaceMeshVertexPtr vertex = OdDbPolyFaceMeshVertex::createObject();
    vertex->setPosition(p);
    ASSERT_EQ(mesh->appendVertex(vertex.get()), eOk);
  }
  OdDbFaceRecordPtr face = OdDbFaceRecord::createObject();
  for (int corner = 0; corner < 4; ++corner) face->setVertexAt(corner, static_cast<OdInt16>(corner + 1));
  face->makeEdgeInvisibleAt(2);
  ASSERT_EQ(mesh->appendFaceRecord(face.get()), eOk);
  EXPECT_FALSE(face->isEdgeVisibleAt(2));
  EXPECT_EQ(mesh->appendVertex(OdDbPolyFaceMeshVertex::createObject().get()), eVertexAfterFace);
  OdDbFaceRecordPtr bad = OdDbFaceRecord::createObject();
  bad->setVertexAt(0, 5);
  EXPECT_EQ(mesh->appendFaceRecord(bad.get()), eInvalidFaceVertexIndex);

  const OdDxfTagList tags = tagsOf(mesh.get());
  auto valueOf = [&](int code) {
    return std::find_if(tags.begin(), tags.end(), [code](const OdDxfTag& t) { return t.code == code; })->i;
  };
  EXPECT_EQ(valueOf(71), 4);
  EXPECT_EQ(valueOf(72), 1);
  EXPECT_EQ(valueOf(70), 64);
  OdGeExtents3d extents;
  ASSERT_EQ(mesh->getGeomExtents(extents), eOk);
  EXPECT_TRUE(near(extents, OdGeExtents3d(OdGePoint3d(0, 0, 0), OdGePoint3d(2, 2, 1))));
  EXPECT_NEAR(mesh->distanceTo(OdGePoint3d(1, -1, 0)), 1.0, 1e-12);
  ASSERT_EQ(mesh->transformBy(OdGeMatrix3d::translation(OdGeVector3d(0, 0, 5))), eOk);
  ASSERT_EQ(mesh->getGeomExtents(extents), eOk);
  EXPECT_DOUBLE_EQ(extents.minPoint().z, 5.0);

  // The face record's groups: hidden edges as negative indices.
  const OdDxfTagList faceTags = tagsOf(face.get());
  EXPECT_EQ(codesOf(faceTags).back(), 74);
  EXPECT_EQ(std::find_if(faceTags.begin(), faceTags.end(), [](const OdDxfTag& t) { return t.code == 73; })->i,
            -3);
  EXPECT_TRUE(tagRoundTrip(face.get()));
}

TEST(CurvesOldStylePolyline, GroupsAsFilesCarryThem) {
  OdDb2dPolylinePtr pline = OdDb2dPolyline::createObject();
  pline->setElevation(7);
  pline->setDefaultStartWidth(0.5);
  const OdDxfTagList tags = tagsOf(pline.get());
  const std::vector<int> codes = codesOf(tags);
  const std::vector<int> body(std::find(codes.begin(), codes.end(), 66), codes.end());
  EXPECT_EQ(body, (std::vector<int>{66, 10, 70, 40}));
  auto base = std::find_if(tags.begin(), tags.end(), [](const OdDxfTag& t) { return t.code == 10; });
  EXPECT_DOUBLE_EQ(base->z, 7.0);
  EXPECT_TRUE(tagRoundTrip(pline.get()));

  // A vertex of a file without subclass markers (R12).
  OdDxfTagList r12;
  r12.push_back(OdDxfTag::str(8, L"0"));
  r12.push_back(OdDxfTag::point(10, 1, 2, 0));
  r12.push_back(OdDxfTag::real(40, 0.5));
  r12.push_back(OdDxfTag::real(42, -0.25));
  r12.push_back(OdDxfTag::integer(70, 2));
  r12.push_back(OdDxfTag::real(50, 90.0));
  OdDb2dVertexPtr vertex = readTags<OdDb2dVertex>(r12);
  EXPECT_TRUE(near(vertex->position(), OdGePoint3d(1, 2, 0)));
  EXPECT_DOUBLE_EQ(vertex->startWidth(), 0.5);
  EXPECT_DOUBLE_EQ(vertex->bulge(), -0.25);
  EXPECT_TRUE(vertex->isTangentUsed());
  EXPECT_NEAR(vertex->tangent(), OdaPI2, 1e-15);
  ASSERT_FALSE(vertex->extras());
  const std::vector<int> written = codesOf(tagsOf(vertex.get()));
  EXPECT_EQ(std::count(written.begin(), written.end(), 100), 3);  // AcDbEntity, AcDbVertex, AcDb2dVertex
}
