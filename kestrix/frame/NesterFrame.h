// Frame nesting: arranges rectangular drawing frames on sheets of a given
// size, as many as fit on each sheet, the largest first.
//
// Parameters (an array of doubles):
//   [0]  sheet width (> 0)
//   [1]  sheet height; a negative value means an endless strip (the export
//        replaces it by 1e7)
//   [2]  gap kept between frames and to the sheet's edges (>= 0)
//   [3]  1 when frames may be turned by a right angle, 0 when not
//   [4 + 2i], [5 + 2i]  width and height of frame i, for i < count
// Results: for each frame, in the order given, the sheet it is on (counted
// from 0; -1 when it fits on no sheet), the position of its lower-left
// corner on that sheet, and whether it was turned; and a summary.
// Status: 0 when every frame was placed, the number of frames that fit
// nowhere otherwise, -1 for bad parameters.
#pragma once

#include "OdaCommon.h"

extern "C" {

struct NestPlacement {
  OdInt32 sheet;
  double x, y;
  OdInt32 rotated;
};

struct NestSummary {
  OdInt32 sheets;        // sheets used
  double usedHeight;     // height used on the last sheet (the strip's length)
  double utilisation;    // frame area over the area of the sheets used (0..1)
};

}

// The sheet height that stands for an endless strip.
inline constexpr double kNestEndlessStrip = 1e7;

// The nesting itself; the height is taken as given (the export has put the
// endless strip's height in place of a negative one).
int nestFrames(NestPlacement* placements, OdInt32 count, const double* parameters, NestSummary* summary);
