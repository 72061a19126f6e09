// Growable array of OdGePoint3d.
#pragma once

#include "OdArray.h"
#include "Ge/GePoint3d.h"

using OdGePoint3dArray = OdArray<OdGePoint3d>;
