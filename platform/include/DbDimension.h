// Dimensions: measured annotations. A dimension keeps its defining points
// and its picture as an anonymous block ("*D…") that it alone references.
// Every kind is written as DIMENSION; group 70 tells the kind (see
// odDbDimensionClassForType).
#pragma once

#include "DbEntity.h"
#include "Ge/GePoint3dArray.h"

class OdDbDimension : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbDimension);
  ODDB_DECLARE_SCHEMA();

 public:
  // Kinds (group 70 & 0x0F) and the flag bits of group 70.
  enum DimensionType {
    kRotated = 0,
    kAligned = 1,
    kAngular2Line = 2,
    kDiametric = 3,
    kRadial = 4,
    kAngular3Point = 5,
    kOrdinate = 6,
  };
  enum DimensionFlags { kBlockIsOwnedOnly = 32, kOrdinateXType = 64, kUserTextPosition = 128 };

  int dimensionType() const { return m_flags & 0x0F; }
  OdInt16 dimensionFlags() const { return m_flags; }

  OdDbObjectId dimensionStyle() const { return m_styleId; }
  void setDimensionStyle(const OdDbObjectId& styleId) { assertWriteEnabled(); m_styleId = styleId; }
  // The anonymous block that holds the dimension's picture.
  OdDbObjectId dimBlockId() const { return m_blockId; }
  void setDimBlockId(const OdDbObjectId& blockId) { assertWriteEnabled(); m_blockId = blockId; }
  // Where the block is placed (world coordinates; the origin by default).
  OdGePoint3d dimBlockPosition() const;
  void setDimBlockPosition(const OdGePoint3d& point);

  // Middle of the text, in world coordinates. Setting it marks the position
  // as chosen by the user.
  OdGePoint3d textPosition() const;
  void setTextPosition(const OdGePoint3d& point);
  bool isUsingDefaultTextPosition() const { return !(m_flags & kUserTextPosition); }
  void useDefaultTextPosition();
  void useSetTextPosition();

  // Text that replaces the measurement ("<>" stands for it; empty: the measurement alone).
  OdString dimensionText() const { return m_text; }
  void setDimensionText(const OdString& text) { assertWriteEnabled(); m_text = text; }
  // Text rotation away from its default direction, in radians.
  double textRotation() const { return m_textRotation; }
  void setTextRotation(double angle) { assertWriteEnabled(); m_textRotation = angle; }
  // The negative of the angle from the plane's x axis to the x axis the
  // dimension was drawn in, in radians.
  double horizontalRotation() const { return m_horizontalRotation; }
  void setHorizontalRotation(double angle) { assertWriteEnabled(); m_horizontalRotation = angle; }
  // Multiline text attachment (1 top left … 9 bottom right).
  OdInt16 textAttachment() const { return m_attachment; }
  void setTextAttachment(OdInt16 attachment) { assertWriteEnabled(); m_attachment = attachment; }
  OdInt16 textLineSpacingStyle() const { return m_lineSpacingStyle; }
  void setTextLineSpacingStyle(OdInt16 style) { assertWriteEnabled(); m_lineSpacingStyle = style; }
  double textLineSpacingFactor() const { return m_lineSpacingFactor; }
  void setTextLineSpacingFactor(double factor) { assertWriteEnabled(); m_lineSpacingFactor = factor; }

  OdGeVector3d normal() const { return m_normal; }
  // Keeps the plane-stored points where they are in the world.
  void setNormal(const OdGeVector3d& normal);

  // The value the dimension measures, from its defining points: a distance,
  // or an angle in radians for angular dimensions.
  virtual double measurement() const = 0;
  // The measurement as last stored (group 42); kept up to date by the
  // setters and transformBy.
  double storedMeasurement() const { return m_measurement; }

  // The picture's extents (the defining points when there is no block).
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  // Moves every defining point, the text and the plane. A dimension in a
  // database also carries the entities of its own block along.
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  // Copies of the block's entities, placed as the dimension shows them.
  OdResult explode(OdRxObjectPtrArray& entities) const override;
  double distanceTo(const OdGePoint3d& point) const override;
  // The database's current dimension style.
  void subSetDatabaseDefaults(OdDbDatabase* database) override;

 protected:
  explicit OdDbDimension(int type);
  OdDbDimension() = default;
  // Points in world coordinates of the subclass (for transformations and extents).
  virtual void getWorldPoints(OdArray<OdGePoint3d*>& points) { points.clear(); }
  // Angles in the plane that the subclass keeps (absolute directions).
  virtual void getPlaneAngles(OdArray<double*>& angles) { angles.clear(); }
  // Points stored in plane coordinates by the subclass.
  virtual void getPlanePoints(OdArray<OdGePoint3d*>& points) { points.clear(); }
  void updateMeasurement() { m_measurement = measurement(); }
  OdGeMatrix3d blockTransform() const;
  void allDefiningPoints(OdGePoint3dArray& points) const;

  OdInt8 m_version = 0;
  OdDbObjectId m_blockId;
  OdGePoint3d m_defPoint;       // world
  OdGePoint3d m_textPosition;   // plane coordinates
  OdGePoint3d m_blockPosition;  // plane coordinates
  OdInt16 m_flags = 0;
  OdInt16 m_attachment = 5;
  OdInt16 m_lineSpacingStyle = 1;
  double m_lineSpacingFactor = 1.0;
  double m_measurement = 0;
  OdString m_text;
  double m_textRotation = 0;
  double m_horizontalRotation = 0;
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
  OdDbObjectId m_styleId;
};
using OdDbDimensionPtr = OdSmartPtr<OdDbDimension>;

// Linear dimension along the line between the extension line points.
class OdDbAlignedDimension : public OdDbDimension {
  ODRX_DECLARE_MEMBERS(OdDbAlignedDimension);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbAlignedDimension() : OdDbDimension(kAligned) {}
  OdDbAlignedDimension(const OdGePoint3d& xLine1Point, const OdGePoint3d& xLine2Point,
                       const OdGePoint3d& dimLinePoint, const OdString& text = OdString(),
                       const OdDbObjectId& styleId = OdDbObjectId());

  OdGePoint3d xLine1Point() const { return m_xLine1Point; }
  void setXLine1Point(const OdGePoint3d& point);
  OdGePoint3d xLine2Point() const { return m_xLine2Point; }
  void setXLine2Point(const OdGePoint3d& point);
  // A point on the dimension line.
  OdGePoint3d dimLinePoint() const { return m_defPoint; }
  void setDimLinePoint(const OdGePoint3d& point);
  double oblique() const { return m_oblique; }
  void setOblique(double angle) { assertWriteEnabled(); m_oblique = angle; }

  double measurement() const override;

 protected:
  void getWorldPoints(OdArray<OdGePoint3d*>& points) override;

  OdGePoint3d m_xLine1Point, m_xLine2Point;
  double m_oblique = 0;
};
using OdDbAlignedDimensionPtr = OdSmartPtr<OdDbAlignedDimension>;

// Linear dimension measured along a direction (horizontal, vertical or any).
class OdDbRotatedDimension : public OdDbDimension {
  ODRX_DECLARE_MEMBERS(OdDbRotatedDimension);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbRotatedDimension() : OdDbDimension(kRotated) {}
  OdDbRotatedDimension(double rotation, const OdGePoint3d& xLine1Point, const OdGePoint3d& xLine2Point,
                       const OdGePoint3d& dimLinePoint, const OdString& text = OdString(),
                       const OdDbObjectId& styleId = OdDbObjectId());

  OdGePoint3d xLine1Point() const { return m_xLine1Point; }
  void setXLine1Point(const OdGePoint3d& point);
  OdGePoint3d xLine2Point() const { return m_xLine2Point; }
  void setXLine2Point(const OdGePoint3d& point);
  OdGePoint3d dimLinePoint() const { return m_defPoint; }
  void setDimLinePoint(const OdGePoint3d& point);
  // Direction of the measurement in the plane, in radians.
  double rotation() const { return m_rotation; }
  void setRotation(double angle);
  double oblique() const { return m_oblique; }
  void setOblique(double angle) { assertWriteEnabled(); m_oblique = angle; }

  double measurement() const override;

 protected:
  void getWorldPoints(OdArray<OdGePoint3d*>& points) override;
  void getPlaneAngles(OdArray<double*>& angles) override { angles = {&m_rotation}; }

  OdGePoint3d m_xLine1Point, m_xLine2Point;
  double m_rotation = 0;
  double m_oblique = 0;
};
using OdDbRotatedDimensionPtr = OdSmartPtr<OdDbRotatedDimension>;

// Angle between two lines (13-14 and 15-10), on the side of the arc point.
class OdDb2LineAngularDimension : public OdDbDimension {
  ODRX_DECLARE_MEMBERS(OdDb2LineAngularDimension);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDb2LineAngularDimension() : OdDbDimension(kAngular2Line) {}
  OdDb2LineAngularDimension(const OdGePoint3d& xLine1Start, const OdGePoint3d& xLine1End,
                            const OdGePoint3d& xLine2Start, const OdGePoint3d& xLine2End,
                            const OdGePoint3d& arcPoint, const OdString& text = OdString(),
                            const OdDbObjectId& styleId = OdDbObjectId());

  OdGePoint3d xLine1Start() const { return m_xLine1Start; }
  void setXLine1Start(const OdGePoint3d& point);
  OdGePoint3d xLine1End() const { return m_xLine1End; }
  void setXLine1End(const OdGePoint3d& point);
  OdGePoint3d xLine2Start() const { return m_xLine2Start; }
  void setXLine2Start(const OdGePoint3d& point);
  OdGePoint3d xLine2End() const { return m_defPoint; }
  void setXLine2End(const OdGePoint3d& point);
  // A point on the dimension arc (world coordinates).
  OdGePoint3d arcPoint() const;
  void setArcPoint(const OdGePoint3d& point);

  double measurement() const override;

 protected:
  void getWorldPoints(OdArray<OdGePoint3d*>& points) override;
  void getPlanePoints(OdArray<OdGePoint3d*>& points) override { points = {&m_arcPoint}; }

  OdGePoint3d m_xLine1Start, m_xLine1End, m_xLine2Start;
  OdGePoint3d m_arcPoint;  // plane coordinates
};
using OdDb2LineAngularDimensionPtr = OdSmartPtr<OdDb2LineAngularDimension>;

// Angle at a centre between two points, on the side of the arc point.
class OdDb3PointAngularDimension : public OdDbDimension {
  ODRX_DECLARE_MEMBERS(OdDb3PointAngularDimension);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDb3PointAngularDimension() : OdDbDimension(kAngular3Point) {}
  OdDb3PointAngularDimension(const OdGePoint3d& centerPoint, const OdGePoint3d& xLine1Point,
                             const OdGePoint3d& xLine2Point, const OdGePoint3d& arcPoint,
                             const OdString& text = OdString(), const OdDbObjectId& styleId = OdDbObjectId());

  OdGePoint3d centerPoint() const { return m_centerPoint; }
  void setCenterPoint(const OdGePoint3d& point);
  OdGePoint3d xLine1Point() const { return m_xLine1Point; }
  void setXLine1Point(const OdGePoint3d& point);
  OdGePoint3d xLine2Point() const { return m_xLine2Point; }
  void setXLine2Point(const OdGePoint3d& point);
  OdGePoint3d arcPoint() const { return m_defPoint; }
  void setArcPoint(const OdGePoint3d& point);

  double measurement() const override;

 protected:
  void getWorldPoints(OdArray<OdGePoint3d*>& points) override;

  OdGePoint3d m_xLine1Point, m_xLine2Point, m_centerPoint;
};
using OdDb3PointAngularDimensionPtr = OdSmartPtr<OdDb3PointAngularDimension>;

// Diameter between two opposite points of a circle.
class OdDbDiametricDimension : public OdDbDimension {
  ODRX_DECLARE_MEMBERS(OdDbDiametricDimension);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbDiametricDimension() : OdDbDimension(kDiametric) {}
  OdDbDiametricDimension(const OdGePoint3d& chordPoint, const OdGePoint3d& farChordPoint, double leaderLength,
                         const OdString& text = OdString(), const OdDbObjectId& styleId = OdDbObjectId());

  OdGePoint3d chordPoint() const { return m_chordPoint; }
  void setChordPoint(const OdGePoint3d& point);
  OdGePoint3d farChordPoint() const { return m_defPoint; }
  void setFarChordPoint(const OdGePoint3d& point);
  double leaderLength() const { return m_leaderLength; }
  void setLeaderLength(double length) { assertWriteEnabled(); m_leaderLength = length; }

  double measurement() const override { return m_chordPoint.distanceTo(m_defPoint); }

 protected:
  void getWorldPoints(OdArray<OdGePoint3d*>& points) override { points = {&m_chordPoint}; }

  OdGePoint3d m_chordPoint;
  double m_leaderLength = 0;
};
using OdDbDiametricDimensionPtr = OdSmartPtr<OdDbDiametricDimension>;

// Radius from a centre to a point of a circle or arc.
class OdDbRadialDimension : public OdDbDimension {
  ODRX_DECLARE_MEMBERS(OdDbRadialDimension);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbRadialDimension() : OdDbDimension(kRadial) {}
  OdDbRadialDimension(const OdGePoint3d& center, const OdGePoint3d& chordPoint, double leaderLength,
                      const OdString& text = OdString(), const OdDbObjectId& styleId = OdDbObjectId());

  OdGePoint3d center() const { return m_defPoint; }
  void setCenter(const OdGePoint3d& point);
  OdGePoint3d chordPoint() const { return m_chordPoint; }
  void setChordPoint(const OdGePoint3d& point);
  double leaderLength() const { return m_leaderLength; }
  void setLeaderLength(double length) { assertWriteEnabled(); m_leaderLength = length; }

  double measurement() const override { return m_chordPoint.distanceTo(m_defPoint); }

 protected:
  void getWorldPoints(OdArray<OdGePoint3d*>& points) override { points = {&m_chordPoint}; }

  OdGePoint3d m_chordPoint;
  double m_leaderLength = 0;
};
using OdDbRadialDimensionPtr = OdSmartPtr<OdDbRadialDimension>;

// The x or y distance of a feature from an origin, with a leader.
class OdDbOrdinateDimension : public OdDbDimension {
  ODRX_DECLARE_MEMBERS(OdDbOrdinateDimension);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbOrdinateDimension() : OdDbDimension(kOrdinate) {}
  OdDbOrdinateDimension(bool useXAxis, const OdGePoint3d& definingPoint, const OdGePoint3d& leaderEndPoint,
                        const OdString& text = OdString(), const OdDbObjectId& styleId = OdDbObjectId());

  // Measures along the x axis (else the y axis) of the dimension's plane,
  // turned by the horizontal rotation.
  bool isUsingXAxis() const { return m_flags & kOrdinateXType; }
  void useXAxis();
  void useYAxis();
  OdGePoint3d origin() const { return m_defPoint; }
  void setOrigin(const OdGePoint3d& point);
  OdGePoint3d definingPoint() const { return m_definingPoint; }
  void setDefiningPoint(const OdGePoint3d& point);
  OdGePoint3d leaderEndPoint() const { return m_leaderEndPoint; }
  void setLeaderEndPoint(const OdGePoint3d& point);

  double measurement() const override;

 protected:
  void getWorldPoints(OdArray<OdGePoint3d*>& points) override {
    points = {&m_definingPoint, &m_leaderEndPoint};
  }

  OdGePoint3d m_definingPoint, m_leaderEndPoint;
};
using OdDbOrdinateDimensionPtr = OdSmartPtr<OdDbOrdinateDimension>;

// The class of a DIMENSION read from a file, from its group 70 (the kind is
// flags & 0x0F: 0 rotated, 1 aligned, 2 two-line angular, 3 diametric,
// 4 radial, 5 three-point angular, 6 ordinate). Null for any other kind:
// the reader keeps such an object as it found it.
OdRxClass* odDbDimensionClassForType(int flags70);
