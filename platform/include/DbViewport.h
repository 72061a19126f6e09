// Viewports of a layout: a window on the paper that shows model space.
#pragma once

#include "DbEntity.h"

class OdDbViewport : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbViewport);
  ODDB_DECLARE_SCHEMA();

 public:
  // The window on the paper: its centre, width and height (paper units).
  OdGePoint3d centerPoint() const { return m_centerPoint; }
  void setCenterPoint(const OdGePoint3d& point) { assertWriteEnabled(); m_centerPoint = point; }
  double width() const { return m_width; }
  void setWidth(double width) { assertWriteEnabled(); m_width = width; }
  double height() const { return m_height; }
  void setHeight(double height) { assertWriteEnabled(); m_height = height; }

  // Status: 0 off, otherwise on (the value orders the viewports, -1 on but
  // not active); the number identifies the viewport in its layout.
  OdInt16 status() const { return m_status; }
  void setStatus(OdInt16 status) { assertWriteEnabled(); m_status = status; }
  bool isOn() const { return m_status != 0; }
  OdInt16 number() const { return m_number; }
  void setNumber(OdInt16 number) { assertWriteEnabled(); m_number = number; }

  // The view: centre (in view coordinates) and height of the shown model
  // area, the direction from the target to the camera, the target, twist.
  OdGePoint2d viewCenter() const { return m_viewCenter; }
  void setViewCenter(const OdGePoint2d& point) { assertWriteEnabled(); m_viewCenter = point; }
  double viewHeight() const { return m_viewHeight; }
  void setViewHeight(double height) { assertWriteEnabled(); m_viewHeight = height; }
  OdGeVector3d viewDirection() const { return m_viewDirection; }
  void setViewDirection(const OdGeVector3d& direction) { assertWriteEnabled(); m_viewDirection = direction; }
  OdGePoint3d viewTarget() const { return m_viewTarget; }
  void setViewTarget(const OdGePoint3d& target) { assertWriteEnabled(); m_viewTarget = target; }
  double twistAngle() const { return m_twistAngle; }
  void setTwistAngle(double angle) { assertWriteEnabled(); m_twistAngle = angle; }
  double lensLength() const { return m_lensLength; }
  void setLensLength(double length) { assertWriteEnabled(); m_lensLength = length; }
  double frontClipDistance() const { return m_frontClip; }
  double backClipDistance() const { return m_backClip; }
  OdInt32 statusFlags() const { return m_statusFlags; }
  void setStatusFlags(OdInt32 flags) { assertWriteEnabled(); m_statusFlags = flags; }
  // Paper units per model unit: the window height over the view height.
  double customScale() const;
  OdResult setCustomScale(double scale);

  OdGePoint2d snapBasePoint() const { return m_snapBase; }
  OdGeVector2d snapIncrement() const { return m_snapSpacing.asVector(); }
  OdGeVector2d gridIncrement() const { return m_gridSpacing.asVector(); }
  double snapAngle() const { return m_snapAngle; }
  // The viewport's own coordinate system, when it has one.
  void getUcs(OdGePoint3d& origin, OdGeVector3d& xAxis, OdGeVector3d& yAxis) const;
  double elevation() const { return m_elevation; }
  // The entity whose outline clips the viewport (null for a rectangle).
  OdDbObjectId nonRectClipEntityId() const { return m_clipEntityId; }
  void setNonRectClipEntityId(const OdDbObjectId& id) { assertWriteEnabled(); m_clipEntityId = id; }

  // The window on the paper.
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  // Viewports move and scale on the paper; they do not turn.
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  // Viewports are picked by their frame.
  double distanceTo(const OdGePoint3d& point) const override;

 protected:
  OdGePoint3d m_centerPoint;
  double m_width = 0;
  double m_height = 0;
  OdInt16 m_status = 0;
  OdInt16 m_number = 0;
  OdGePoint2d m_viewCenter;
  OdGePoint2d m_snapBase;
  OdGePoint2d m_snapSpacing = OdGePoint2d(10, 10);
  OdGePoint2d m_gridSpacing = OdGePoint2d(10, 10);
  OdGeVector3d m_viewDirection = OdGeVector3d(0, 0, 1);
  OdGePoint3d m_viewTarget;
  double m_lensLength = 50;
  double m_frontClip = 0;
  double m_backClip = 0;
  double m_viewHeight = 0;
  double m_snapAngle = 0;
  double m_twistAngle = 0;
  OdInt16 m_circleSides = 100;
  OdInt32 m_statusFlags = 0;
  OdDbObjectId m_clipEntityId;
  OdString m_plotStyleSheet;
  OdInt8 m_renderMode = 0;
  OdInt16 m_ucsPerViewport = 0;
  OdInt16 m_ucsIconAtOrigin = 0;
  OdGePoint3d m_ucsOrigin;
  OdGeVector3d m_ucsXAxis = OdGeVector3d(1, 0, 0);
  OdGeVector3d m_ucsYAxis = OdGeVector3d(0, 1, 0);
  OdInt16 m_orthographicType = 0;
  double m_elevation = 0;
  OdInt16 m_shadePlotMode = 0;
};
using OdDbViewportPtr = OdSmartPtr<OdDbViewport>;
