// Drawing comparison (Cmp, -cmp): the options handed to the comparison
// engine, the result naming, and the dialogs.
#pragma once

#include "DwgCompareJet.h"
#include "OdString.h"
#include "RyDialogs.h"

namespace kestrix {

// The engine library, loaded when the module is attached (null when it was
// not found on the host's search path).
HMODULE comparisonLibrary();

// The module-wide comparison options: tolerance, switches A to F and the
// five colours, as the parameter dialog edits them. They live until the
// host ends and are never stored.
struct CompareSettings {
  double tolerance = 0.0001;
  int switches[6] = {1, 1, 1, 1, 0, 0};
  COLORREF colors[5] = {RGB(0, 255, 0), RGB(255, 0, 0), RGB(255, 255, 0), RGB(255, 0, 255), RGB(192, 192, 192)};
};
CompareSettings& compareSettings();

// The records handed to the engine, filled from the settings.
DwgCompareOptions engineOptions(const CompareSettings& settings);
DwgCompareColors engineColors(const CompareSettings& settings);

// The two result paths: "<folder><name>_old<ext>" and "<folder><name>_new<ext>";
// when they are equal (letter case ignored), "_new" goes before the last "."
// of the new one until they differ.
struct ResultPaths {
  OdString oldResult, newResult;
};
ResultPaths resultPaths(const OdString& folder, const OdString& oldPath, const OdString& newPath);

}  // namespace kestrix
