// Entities the benchmarks fill their drawings with, each made in one call.
#pragma once

#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "DbText.h"

// The model space of a drawing, open for adding entities.
inline OdDbBlockTableRecordPtr benchModelSpace(OdDbDatabase* db) {
  return OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite));
}

inline OdDbLinePtr benchLine(const OdGePoint3d& start, const OdGePoint3d& end) {
  OdDbLinePtr line = OdDbLine::createObject();
  line->setStartPoint(start);
  line->setEndPoint(end);
  return line;
}

inline OdDbCirclePtr benchCircle(const OdGePoint3d& center, double radius) {
  OdDbCirclePtr circle = OdDbCircle::createObject();
  circle->setCenter(center);
  circle->setRadius(radius);
  return circle;
}

// Angles in radians, counter-clockwise from the x axis.
inline OdDbArcPtr benchArc(const OdGePoint3d& center, double radius, double startAngle, double endAngle) {
  OdDbArcPtr arc = OdDbArc::createObject();
  arc->setCenter(center);
  arc->setRadius(radius);
  arc->setStartAngle(startAngle);
  arc->setEndAngle(endAngle);
  return arc;
}

inline OdDbTextPtr benchText(const OdGePoint3d& position, double height, const OdString& contents) {
  OdDbTextPtr text = OdDbText::createObject();
  text->setPosition(position);
  text->setHeight(height);
  text->setTextString(contents);
  return text;
}

// A new layer of the drawing; colour 0 keeps the record's default colour.
inline OdDbObjectId benchAddLayer(OdDbDatabase* db, const OdString& name, OdInt16 colorIndex = 0) {
  OdDbObjectPtr table = db->getLayerTableId().openObject(OdDb::kForWrite);
  OdSmartPtr<OdDbLayerTableRecord> layer = OdDbLayerTableRecord::createObject();
  layer->setName(name);
  if (colorIndex != 0) layer->setColorIndex(colorIndex);
  return static_cast<OdDbSymbolTable*>(table.get())->add(layer.get());
}
