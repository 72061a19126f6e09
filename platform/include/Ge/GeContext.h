// Process-wide settings of the geometry layer.
#pragma once

#include "Ge/GeTol.h"

struct OdGeContext {
  // Default tolerance of every comparison that does not get one explicitly. Changing it affects all
  // threads; prefer passing an OdGeTol to the call that needs a different one.
  static OdGeTol gTol;
};
