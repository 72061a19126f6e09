// What the layer tools share: the drawing, the selected objects as ids, and
// layers by name.
#pragma once

#include <vector>

#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "RyHostServices.h"

namespace kestrix::layers {

inline OdDbDatabase* drawing() { return oddbHostApplicationServices()->workingDatabase(); }

// The entities of "Select objects:" (mode as ryedSSGet takes it); empty
// when the user selected nothing or cancelled.
std::vector<OdDbObjectId> selectEntities(const wchar_t* mode);

// The layer of that name (case-insensitive); null when there is none.
OdDbObjectId layerNamed(const OdString& name);

OdString layerName(const OdDbObjectId& layer);

}  // namespace kestrix::layers
