// Growable array of OdGeVector3d.
#pragma once

#include "OdArray.h"
#include "Ge/GeVector3d.h"

using OdGeVector3dArray = OdArray<OdGeVector3d>;
