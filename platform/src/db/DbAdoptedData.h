// Values that a reader built as a whole for objects it reads through groups,
// given to the objects once they are read instead of going through the
// groups one by one (extended records' items, modeler data lines).
#pragma once

#include <vector>

#include "DbDictionary.h"
#include "DbModelerGeometry.h"

// Each gives an object that was read without the values the values as read:
// not an edit (nothing for undo, the object stays unmodified).
void odDbXrecordAdoptData(OdDbXrecord* record, OdDxfTagList&& data);
void odDbModelerGeometryAdoptLines(OdDbModelerGeometry* entity, std::vector<OdDbModelerGeometry::DataLine>&& lines);
