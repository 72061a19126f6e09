// Pictures of drawings: draws a drawing's model space (or a layout) on a
// PDF, SVG or PNG surface with cairo, as a plotter draws it: colours from the
// 256-colour table or true colours, lineweights, linetypes, texts with their
// style's font, hatches, blocks, dimensions and masks in draw order.
#pragma once

#include "DbDatabase.h"
#include "Ge/GeExtents3d.h"
#include "Ge/GePoint2d.h"
#include "OdString.h"

namespace ryhost::plot {

enum class Device { kPdf, kSvg, kPng };
enum class Area { kExtents, kLimits, kWindow, kLayout };

struct Settings {
  Device device = Device::kPdf;
  Area area = Area::kExtents;
  OdGePoint2d windowMin, windowMax;  // kWindow: two corners in world coordinates
  OdString layout;                   // kLayout: the layout's name ("" for the current paper space)
  // The sheet in millimetres, already turned to the orientation.
  double paperWidth = 297.0, paperHeight = 210.0;
  // Fit: the area fills the sheet (less a border) at its middle; otherwise
  // `scale` millimetres per drawing unit.
  bool fit = true;
  double scale = 1.0;
  // Centred on the sheet, or the area's lower-left corner put `offset`
  // millimetres from the sheet's lower-left corner.
  bool center = true;
  OdGePoint2d offset;
  bool monochrome = false;
  bool blackBackground = false;  // PNG only; PDF and SVG sheets are white
  double dpi = 150.0;            // PNG: pixels per inch of sheet
  // PNG: a size in pixels that replaces the sheet (0: from sheet and dpi).
  int pixelWidth = 0, pixelHeight = 0;
};

// Device from a file name's extension (.pdf, .svg, .png); false for others.
bool deviceFromFileName(const OdString& path, Device& device);

// The extents of what a plot of model space shows (visible layers only);
// false for an empty drawing.
bool modelExtents(OdDbDatabase* db, OdGeExtents3d& extents);

// Draws the drawing to a file. False with `error` set when nothing could be
// written (an empty area, a file that cannot be made, an unknown layout).
bool plotToFile(OdDbDatabase* db, const Settings& settings, const OdString& path, OdString& error);

// A named sheet size in millimetres, portrait (width <= height); also
// "WxH" in millimetres. False for an unknown name.
bool paperSize(const OdString& name, double& width, double& height);
// The names paperSize knows, for prompts.
const wchar_t* paperNames();

}  // namespace ryhost::plot
