// Growable array of OdGeVector2d.
#pragma once

#include "OdArray.h"
#include "Ge/GeVector2d.h"

using OdGeVector2dArray = OdArray<OdGeVector2d>;
