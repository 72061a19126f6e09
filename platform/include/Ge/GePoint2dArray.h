// Growable array of OdGePoint2d.
#pragma once

#include "OdArray.h"
#include "Ge/GePoint2d.h"

using OdGePoint2dArray = OdArray<OdGePoint2d>;
