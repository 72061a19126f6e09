// textmask and textunmask: a mask (wipeout, filled solid or 3-D face) behind
// each chosen text, tied to its text by an anonymous group "*A<n>" of the
// two, so that they move and copy as one; textunmask finds the tie from the
// text and erases the mask.
#pragma once

#include "DbEntity.h"
#include "Ge/GePoint3d.h"
#include "Ge/GeVector3d.h"

namespace kestrix::textmask {

// A text's box in its own plane: the lower-left corner (world), the text's
// direction and the perpendicular in its plane, width along the direction
// and height across it.
struct TextPlaneBox {
  OdGePoint3d lowerLeft;
  OdGeVector3d xAxis, yAxis, normal;
  double width = 0, height = 0;
  double textHeight = 0;

  // The box grown by margin on every side; corners lower-left, lower-right,
  // upper-right, upper-left.
  void grownCorners(double margin, OdGePoint3d corners[4]) const;
};

// The box of a single-line text (from its bounding points) or of a multiline
// text (location, attachment, direction and actual size); false for other
// entities.
bool textPlaneBox(const OdDbEntity* entity, TextPlaneBox& box);

}  // namespace kestrix::textmask
