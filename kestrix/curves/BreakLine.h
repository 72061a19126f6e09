// The settings and the symbol geometry of the break-line command.
#pragma once

#include <array>

#include "Ge/GePoint3d.h"
#include "OdString.h"

namespace kestrix::curves {

struct BreakLineSettings {
  OdString block;  // the symbol drawing, with ".DWG" when the name has no such ending
  double size = 1.0;
  double extension = 2.5;
};

// The three settings from the host settings file (defaults for what is
// missing or does not parse).
BreakLineSettings readBreakLineSettings();

// ".DWG" appended unless the upper-cased name already ends so.
OdString blockFileName(const OdString& setting);

// The six vertices of the break line from start to end with the symbol at
// location (brought onto the line) and size s: start, C, E, F, D, end.
std::array<OdGePoint3d, 6> breakSymbolVertices(const OdGePoint3d& start, const OdGePoint3d& end,
                                               const OdGePoint3d& location, double size);

// The distance of the symbol drawing's two reference points (the first two
// points of its model space), looked up in the folder given: the name as
// set, then the name with ".dxf". 1 and found = false when none can be read.
double symbolReferenceWidth(const OdString& folder, const OdString& blockName, bool* found);

}  // namespace kestrix::curves
