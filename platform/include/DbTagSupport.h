// Helpers of the conversion between objects and tags. Values that cannot
// stand: a number that is not finite, a negative size (a radius, a height)
// and a zero normal; reads of files repair such values (see
// OdDbTagContext::repairsValues), entity-data lists that give them are
// refused.
#pragma once

#include "DbSchema.h"
#include "DxfTag.h"

// False for a real or a point with a coordinate that is NaN or infinite.
bool odDxfTagIsFinite(const OdDxfTag& tag);
// Fields whose values have a range.
bool odDbFieldIsSize(const OdDbField& field);
bool odDbFieldIsNormal(const OdDbField& field);
