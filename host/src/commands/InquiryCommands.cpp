// LIST: what the selected objects are: type, handle, layer, space, the
// properties not taken from the layer, and the main geometry of each, in
// world coordinates and the drawing's current units.
// REGEN: the console has no display; regenerating refreshes the spatial
// index that picking and window selection use.
#include <algorithm>
#include <cmath>
#include <type_traits>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbDimension.h"
#include "DbPoint.h"
#include "DbPolyline.h"
#include "DbSolid.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "commands/CommandRegistry.h"
#include "commands/CommandSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"
#include "core/SpatialIndex.h"

namespace ryhost {

namespace {

using namespace cmdsupport;

void say(const OdString& text) { Host::instance().print(text); }

OdString quoted(const OdString& text) { return L"\"" + text + L"\""; }

// One line of a listing: the label right-aligned in a column, then the value.
void field(const wchar_t* label, const OdString& value) {
  say(OdString().format(L"\n%26ls  %ls", label, value.c_str()));
}

void pointField(const wchar_t* label, const OdGePoint3d& point) { field(label, formatPoint(point)); }

OdString spaceOf(const OdDbEntity* entity) {
  OdDbObjectPtr owner = entity->ownerId().openObject();
  auto* block = dynamic_cast<OdDbBlockTableRecord*>(owner.get());
  if (!block) {
    // Attributes and vertices belong to the entity that owns them.
    auto* parent = dynamic_cast<OdDbEntity*>(owner.get());
    return parent ? spaceOf(parent) : OdString(L"unknown");
  }
  if (block->isModelSpace()) return L"Model space";
  if (block->isLayout()) return L"Paper space";
  return L"Block " + quoted(block->getName());
}

void listCommon(const OdDbEntity* entity) {
  say(OdString().format(L"\n\n%26ls  Layer: %ls", entity->dxfName().c_str(),
                        quoted(entity->layer()).c_str()));
  field(L"", L"Space: " + spaceOf(entity));
  field(L"Handle =", entity->handle().ascii());
  if (!entity->color().isByLayer()) field(L"Color:", colorText(entity->color()));
  const OdString linetype = recordName(entity->linetypeId());
  if (!linetype.isEmpty() && linetype.iCompare(L"ByLayer") != 0) field(L"Linetype:", quoted(linetype));
  if (entity->linetypeScale() != 1.0) field(L"Linetype scale:", formatDistance(entity->linetypeScale()));
  if (entity->lineWeight() != OdDb::kLnWtByLayer) field(L"Lineweight:", lineWeightText(entity->lineWeight()));
  if (!entity->transparency().isByLayer()) field(L"Transparency:", transparencyText(entity->transparency()));
  double thickness = 0;
  if (entityThickness(entity, thickness) && thickness != 0) field(L"Thickness =", formatDistance(thickness));
}

void listLine(const OdDbLine* line) {
  const OdGeVector3d delta = line->endPoint() - line->startPoint();
  pointField(L"from point,", line->startPoint());
  pointField(L"to point,", line->endPoint());
  field(L"Length =", formatDistance(delta.length()) + L",  Angle in XY Plane = " +
                         formatDirection(std::atan2(delta.y, delta.x)));
  field(L"Delta X =", formatDistance(delta.x) + L", Delta Y = " + formatDistance(delta.y) + L", Delta Z = " +
                          formatDistance(delta.z));
}

void listCircle(const OdDbCircle* circle) {
  double area = 0;
  circle->getArea(area);
  pointField(L"center point,", circle->center());
  field(L"radius", formatDistance(circle->radius()));
  field(L"circumference", formatDistance(circle->circumference()));
  field(L"area", formatDistance(area));
}

void listArc(const OdDbArc* arc) {
  pointField(L"center point,", arc->center());
  field(L"radius", formatDistance(arc->radius()));
  field(L"start angle", formatDirection(arc->startAngle()));
  field(L"end angle", formatDirection(arc->endAngle()));
  field(L"length", formatDistance(arc->length()));
  field(L"total angle", formatAngle(arc->totalAngle()));
}

OdString justificationOf(const OdDbText* text) {
  static const wchar_t* const kHorizontal[] = {L"left", L"center", L"right", L"aligned", L"middle", L"fit"};
  static const wchar_t* const kVertical[] = {L"baseline", L"bottom", L"middle", L"top"};
  const int h = std::clamp(static_cast<int>(text->horizontalMode()), 0, 5);
  const int v = std::clamp(static_cast<int>(text->verticalMode()), 0, 3);
  if (h == OdDb::kTextAlign || h == OdDb::kTextFit || h == OdDb::kTextMid) return kHorizontal[h];
  return OdString(kVertical[v]) + L" " + kHorizontal[h];
}

void listText(const OdDbText* text) {
  if (auto* attribute = dynamic_cast<const OdDbAttribute*>(text)) field(L"Tag:", quoted(attribute->tag()));
  if (auto* definition = dynamic_cast<const OdDbAttributeDefinition*>(text)) {
    field(L"Tag:", quoted(definition->tag()));
    field(L"Prompt:", quoted(definition->prompt()));
  }
  field(L"Style =", quoted(recordName(text->textStyle())));
  pointField(L"insertion point,", text->position());
  if (!text->isDefaultAlignment()) pointField(L"alignment point,", text->alignmentPoint());
  field(L"justification", justificationOf(text));
  field(L"height", formatDistance(text->height()));
  field(L"text", text->textString());
  field(L"rotation angle", formatDirection(text->rotation()));
  field(L"width scale factor", formatDistance(text->widthFactor()));
  field(L"obliquing angle", formatAngle(text->oblique()));
}

void listMText(const OdDbMText* mtext) {
  static const wchar_t* const kAttachments[] = {L"TopLeft",    L"TopCenter",    L"TopRight",
                                                L"MiddleLeft", L"MiddleCenter", L"MiddleRight",
                                                L"BottomLeft", L"BottomCenter", L"BottomRight"};
  pointField(L"Location:", mtext->location());
  field(L"Width:", formatDistance(mtext->width()));
  field(L"Text style:", quoted(recordName(mtext->textStyle())));
  field(L"Text height:", formatDistance(mtext->textHeight()));
  field(L"Rotation:", formatDirection(mtext->rotation()));
  const int attachment = std::clamp(static_cast<int>(mtext->attachment()), 1, 9);
  field(L"Attachment:", kAttachments[attachment - 1]);
  field(L"Contents:", mtext->text());
}

void listCurveSummary(const OdDbCurve* curve) {
  double end = 0, length = 0, area = 0;
  if (curve->getEndParam(end) == eOk && curve->getDistAtParam(end, length) == eOk)
    field(curve->isClosed() ? L"perimeter" : L"length", formatDistance(length));
  if (curve->isClosed() && curve->getArea(area) == eOk) field(L"area", formatDistance(area));
}

void listPolyline(const OdDbPolyline* polyline) {
  field(L"", polyline->isClosed() ? L"Closed" : L"Open");
  double width = 0;
  if (polyline->getConstantWidth(width) == eOk) field(L"Constant width", formatDistance(width));
  listCurveSummary(polyline);
  for (unsigned int i = 0; i < polyline->numVerts(); ++i) {
    OdGePoint3d point;
    polyline->getPointAt(i, point);
    pointField(L"at point", point);
    if (polyline->getBulgeAt(i) != 0) field(L"bulge", formatDistance(polyline->getBulgeAt(i)));
  }
}

template <class Polyline>
void listOldPolyline(const Polyline* polyline) {
  field(L"", polyline->isClosed() ? L"Closed" : L"Open");
  listCurveSummary(polyline);
  for (OdDbObjectIteratorPtr it = polyline->vertexIterator(); !it->done(); it->step()) {
    OdDbEntityPtr vertex = it->entity();
    if (auto* vertex2d = dynamic_cast<const OdDb2dVertex*>(vertex.get())) {
      if constexpr (std::is_same_v<Polyline, OdDb2dPolyline>)
        pointField(L"at point", polyline->vertexPosition(*vertex2d));
    } else if (auto* vertex3d = dynamic_cast<const OdDbVertex*>(vertex.get())) {
      pointField(L"at point", vertex3d->position());
    }
  }
}

void listEllipse(const OdDbEllipse* ellipse) {
  pointField(L"Center:", ellipse->center());
  const OdGeVector3d major = ellipse->majorAxis(), minor = ellipse->minorAxis();
  field(L"Major axis:", formatPoint(OdGePoint3d(major.x, major.y, major.z)));
  field(L"Minor axis:", formatPoint(OdGePoint3d(minor.x, minor.y, minor.z)));
  field(L"Radius ratio:", formatDistance(ellipse->radiusRatio()));
  if (!ellipse->isClosed()) {
    field(L"Start angle:", formatAngle(ellipse->startAngle()));
    field(L"End angle:", formatAngle(ellipse->endAngle()));
  }
  listCurveSummary(ellipse);
}

void listBlockReference(const OdDbBlockReference* reference) {
  field(L"Block Name:", quoted(recordName(reference->blockTableRecord())));
  pointField(L"at point,", reference->position());
  const OdGeScale3d scale = reference->scaleFactors();
  field(L"X scale factor:", formatDistance(scale.sx));
  field(L"Y scale factor:", formatDistance(scale.sy));
  field(L"Z scale factor:", formatDistance(scale.sz));
  field(L"rotation angle:", formatDirection(reference->rotation()));
  if (auto* array = dynamic_cast<const OdDbMInsertBlock*>(reference)) {
    field(L"Columns:", OdString().format(L"%d", array->columns()));
    field(L"Rows:", OdString().format(L"%d", array->rows()));
    field(L"Column spacing:", formatDistance(array->columnSpacing()));
    field(L"Row spacing:", formatDistance(array->rowSpacing()));
  }
  for (OdDbObjectIteratorPtr it = reference->attributeIterator(); !it->done(); it->step()) {
    OdDbEntityPtr entity = it->entity();
    auto* attribute = dynamic_cast<const OdDbAttribute*>(entity.get());
    if (!attribute) continue;
    field(L"ATTRIBUTE", L"Tag: " + quoted(attribute->tag()) + L"  Value: " + quoted(attribute->value()));
    pointField(L"at point,", attribute->position());
  }
}

void listCorners(const OdDbEntity* entity) {
  OdGePoint3d corners[4];
  if (auto* quad = dynamic_cast<const OdDbPlanarQuad*>(entity)) {
    for (OdUInt16 i = 0; i < 4; ++i) quad->getPointAt(i, corners[i]);
  } else if (auto* face = dynamic_cast<const OdDbFace*>(entity)) {
    for (OdUInt16 i = 0; i < 4; ++i) face->getVertexAt(i, corners[i]);
  }
  for (const OdGePoint3d& corner : corners) pointField(L"point,", corner);
}

void listExtents(const OdDbEntity* entity) {
  OdGeExtents3d extents;
  if (entity->getGeomExtents(extents) != eOk || !extents.isValidExtents()) return;
  pointField(L"lower left corner,", extents.minPoint());
  pointField(L"upper right corner,", extents.maxPoint());
}

void listEntity(const OdDbEntity* entity) {
  listCommon(entity);
  if (auto* line = dynamic_cast<const OdDbLine*>(entity))
    listLine(line);
  else if (auto* circle = dynamic_cast<const OdDbCircle*>(entity))
    listCircle(circle);
  else if (auto* arc = dynamic_cast<const OdDbArc*>(entity))
    listArc(arc);
  else if (auto* text = dynamic_cast<const OdDbText*>(entity))
    listText(text);
  else if (auto* mtext = dynamic_cast<const OdDbMText*>(entity))
    listMText(mtext);
  else if (auto* polyline = dynamic_cast<const OdDbPolyline*>(entity))
    listPolyline(polyline);
  else if (auto* polyline2d = dynamic_cast<const OdDb2dPolyline*>(entity))
    listOldPolyline(polyline2d);
  else if (auto* polyline3d = dynamic_cast<const OdDb3dPolyline*>(entity))
    listOldPolyline(polyline3d);
  else if (auto* ellipse = dynamic_cast<const OdDbEllipse*>(entity))
    listEllipse(ellipse);
  else if (auto* reference = dynamic_cast<const OdDbBlockReference*>(entity))
    listBlockReference(reference);
  else if (auto* point = dynamic_cast<const OdDbPoint*>(entity))
    pointField(L"at point,", point->position());
  else if (entity->isKindOf(OdDbPlanarQuad::desc()) || entity->isKindOf(OdDbFace::desc()))
    listCorners(entity);
  else if (auto* curve = dynamic_cast<const OdDbCurve*>(entity)) {
    OdGePoint3d start, end;
    if (curve->getStartPoint(start) == eOk) pointField(L"start point,", start);
    if (curve->getEndPoint(end) == eOk) pointField(L"end point,", end);
    listCurveSummary(curve);
  } else {
    listExtents(entity);
  }
}

void listCommand() {
  for (const OdDbObjectId& id : selectObjects(nullptr, false)) {
    OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
    if (entity.get()) listEntity(entity.get());
  }
}

void regenCommand() {
  say(L"\nRegenerating model.");
  Host::instance().current()->spatialIndex().rebuild();
}

}  // namespace

void registerInquiryCommands(CommandStack& stack) {
  addHostCommands(stack, {{L"LIST", OdEdCommand::kUsePickSet, listCommand},
                          {L"REGEN", OdEdCommand::kModal, regenCommand}});
}

RYAD_HOST_COMMANDS(registerInquiryCommands);

}  // namespace ryhost
