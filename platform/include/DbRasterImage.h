// Raster images placed in the drawing, and wipeouts (areas that mask what
// lies below them, such as the background of a text).
#pragma once

#include "DbEntity.h"
#include "Ge/GePoint2dArray.h"
#include "Ge/GePoint3dArray.h"
#include "Ge/GeVector2d.h"

// An image is a grid of pixels: pixel (i, j) covers the square around the
// point origin + u * (i + 0.5) + v * (rows - j - 0.5), where u and v are the
// vectors of one pixel and rows the image height in pixels. Clip boundaries
// are given in these pixel coordinates: x to the right from the left edge's
// -0.5, y downwards from the top edge's -0.5.
class OdDbRasterImage : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbRasterImage);
  ODDB_DECLARE_SCHEMA();

 public:
  enum ImageDisplayOpt { kShow = 1, kShowUnAligned = 2, kClip = 4, kTransparent = 8 };
  enum ClipBoundaryType { kInvalid = 0, kRect = 1, kPoly = 2 };

  OdDbObjectId imageDefId() const { return m_imageDefId; }
  void setImageDefId(const OdDbObjectId& id) { assertWriteEnabled(); m_imageDefId = id; }
  OdDbObjectId reactorId() const { return m_reactorId; }
  void setReactorId(const OdDbObjectId& id) { assertWriteEnabled(); m_reactorId = id; }

  // Lower-left corner and the vectors along the bottom and the left side of
  // the whole image (world coordinates).
  void getOrientation(OdGePoint3d& origin, OdGeVector3d& u, OdGeVector3d& v) const;
  OdResult setOrientation(const OdGePoint3d& origin, const OdGeVector3d& u, const OdGeVector3d& v);
  // Size in pixels.
  OdGeVector2d imageSize() const { return m_imageSize.asVector(); }
  void setImageSize(const OdGeVector2d& size);

  bool isSetDisplayOpt(ImageDisplayOpt option) const { return m_displayFlags & option; }
  void setDisplayOpt(ImageDisplayOpt option, bool on);
  OdInt8 brightness() const { return m_brightness; }
  OdResult setBrightness(OdInt8 value);
  OdInt8 contrast() const { return m_contrast; }
  OdResult setContrast(OdInt8 value);
  OdInt8 fade() const { return m_fade; }
  OdResult setFade(OdInt8 value);

  // Clipping: the boundary in pixel coordinates (two opposite corners for a
  // rectangle, the vertices for a polygon).
  bool isClipped() const { return m_clipping != 0; }
  void setClipped(bool on);
  ClipBoundaryType clipBoundaryType() const { return static_cast<ClipBoundaryType>(m_clipType); }
  const OdGePoint2dArray& clipBoundary() const { return m_clipVertices; }
  OdResult setClipBoundary(ClipBoundaryType type, const OdGePoint2dArray& points);
  // The whole image as a rectangular boundary.
  void setClipBoundaryToWholeImage();
  bool isClipInverted() const { return m_clipInverted; }
  void setClipInverted(bool on) { assertWriteEnabled(); m_clipInverted = on; }

  // Pixel coordinates to world and back (in the image's plane).
  OdGePoint3d pixelToWorld(const OdGePoint2d& pixel) const;
  OdGePoint2d worldToPixel(const OdGePoint3d& point) const;
  // The outline the image shows as a closed polygon in world coordinates
  // (the last point repeats the first): the clip boundary when clipping is
  // on, else the image frame.
  OdResult getVertices(OdGePoint3dArray& vertices) const;

  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  double distanceTo(const OdGePoint3d& point) const override;

 protected:
  static std::vector<OdDbField> imageFields();
  // The pixel coordinates of the outline (see getVertices).
  void outlineInPixels(OdGePoint2dArray& points) const;

  OdInt32 m_classVersion = 0;
  OdGePoint3d m_origin;
  OdGeVector3d m_uPixel = OdGeVector3d(1, 0, 0);
  OdGeVector3d m_vPixel = OdGeVector3d(0, 1, 0);
  OdGePoint2d m_imageSize = OdGePoint2d(1, 1);
  OdDbObjectId m_imageDefId;
  OdInt16 m_displayFlags = kShow | kShowUnAligned;
  OdInt8 m_clipping = 0;
  OdInt8 m_brightness = 50;
  OdInt8 m_contrast = 50;
  OdInt8 m_fade = 0;
  OdDbObjectId m_reactorId;
  OdInt16 m_clipType = kRect;
  OdGePoint2dArray m_clipVertices;
  bool m_clipInverted = false;
};
using OdDbRasterImagePtr = OdSmartPtr<OdDbRasterImage>;

// A wipeout is an image of one pixel stretched over the bounding box of its
// boundary, clipped to the boundary polygon.
class OdDbWipeout : public OdDbRasterImage {
  ODRX_DECLARE_MEMBERS(OdDbWipeout);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbWipeout();
  // Frames the polygon (world points in the plane of the normal; closed or
  // not): the origin at the lower left of its box in that plane, u and v
  // spanning the box, and the polygon as the clip boundary.
  OdResult setFrom(const OdGePoint3dArray& polygon, const OdGeVector3d& normal);
};
using OdDbWipeoutPtr = OdSmartPtr<OdDbWipeout>;
