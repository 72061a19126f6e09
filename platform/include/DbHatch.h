// Hatches: areas bounded by loops, filled solid or with a pattern of lines.
#pragma once

#include "DbEntity.h"
#include "Ge/GeCircArc2d.h"
#include "Ge/GeLineSeg2d.h"
#include "Ge/GePoint2dArray.h"
#include "Ge/GeVector2d.h"

// One edge of a boundary loop, in the hatch's plane: 2-d coordinates of the
// object coordinate system of the hatch's normal, angles in radians.
struct OdDbHatchEdge {
  enum Type : OdInt16 { kLine = 1, kCircArc = 2, kEllipArc = 3, kSpline = 4 };
  Type type = kLine;

  // kLine: from start to end.
  OdGePoint2d start, end;

  // kCircArc and kEllipArc. A counter-clockwise arc runs counter-clockwise
  // from startAngle to endAngle, both measured counter-clockwise from the x
  // axis (of the major axis for ellipses); a clockwise arc runs clockwise,
  // with both angles measured clockwise - the convention of OdGeCircArc2d
  // with isClockWise. Ellipse angles are parameters (eccentric angles).
  OdGePoint2d center;
  double radius = 0;           // kCircArc
  OdGeVector2d majorAxis;      // kEllipArc: from the centre to the end of the major axis
  double minorMajorRatio = 1;  // kEllipArc: minor radius / major radius
  double startAngle = 0;
  double endAngle = 0;
  bool isCounterClockwise = true;

  // kSpline (non-uniform rational B-spline).
  int degree = 3;
  bool rational = false;
  bool periodic = false;
  OdGeDoubleArray knots;
  OdGePoint2dArray controlPoints;
  OdGeDoubleArray weights;     // empty, or one per control point when rational
  OdGePoint2dArray fitPoints;  // optional fit data (files from R2010 on)
  OdGeVector2d startTangent, endTangent;

  static OdDbHatchEdge line(const OdGePoint2d& start, const OdGePoint2d& end);
  static OdDbHatchEdge circularArc(const OdGePoint2d& center, double radius, double startAngle,
                                   double endAngle, bool isCounterClockwise = true);
  static OdDbHatchEdge ellipticalArc(const OdGePoint2d& center, const OdGeVector2d& majorAxis,
                                     double minorMajorRatio, double startAngle, double endAngle,
                                     bool isCounterClockwise = true);
  static OdDbHatchEdge spline(int degree, const OdGeDoubleArray& knots, const OdGePoint2dArray& controlPoints,
                              const OdGeDoubleArray& weights = OdGeDoubleArray(), bool periodic = false);

  // The edge as a geometry object (kLine and kCircArc only).
  OdGeLineSeg2d lineSeg() const { return OdGeLineSeg2d(start, end); }
  OdGeCircArc2d circArc() const;
  // Points along the edge from its start to its end (both included); arcs
  // and splines are divided finely enough for drawing and picking.
  void getSamplePoints(OdGePoint2dArray& points) const;
  OdGePoint2d startPoint() const;
  OdGePoint2d endPoint() const;
};
using OdDbHatchEdgeArray = OdArray<OdDbHatchEdge>;

// One line family of a hatch pattern: lines at `angle` through basePoint,
// repeated every `offset`, drawn with the dash lengths (positive: drawn,
// negative: gap, zero: a dot; empty: continuous). Pattern scale and angle
// are already applied, as files store them.
struct OdDbHatchPatternLine {
  double angle = 0;
  OdGePoint2d basePoint;
  OdGeVector2d offset;
  OdGeDoubleArray dashes;
};
using OdDbHatchPatternLineArray = OdArray<OdDbHatchPatternLine>;

class OdDbHatch : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbHatch);
  ODDB_DECLARE_SCHEMA();

 public:
  enum HatchLoopType {
    kDefault = 0,
    kExternal = 1,
    kPolyline = 2,
    kDerived = 4,
    kTextbox = 8,
    kOutermost = 16,
    kNotClosed = 32,
    kSelfIntersecting = 64,
    kTextIsland = 128,
    kDuplicate = 256,
  };
  // Which nested loops are filled: alternate levels, only the outermost
  // level, or everything inside the outermost loops.
  enum HatchStyle { kNormal = 0, kOuter = 1, kIgnore = 2 };
  enum HatchPatternType { kUserDefined = 0, kPreDefined = 1, kCustomDefined = 2 };

  OdDbHatch();
  ~OdDbHatch() override;

  // The plane: elevation along the normal, and the normal.
  double elevation() const { return m_elevationPoint.z; }
  void setElevation(double elevation);
  OdGeVector3d normal() const { return m_normal; }
  // Changes the plane; the loops keep their plane coordinates.
  void setNormal(const OdGeVector3d& normal);

  // Loops.
  int numLoops() const;
  OdInt32 loopTypeAt(int loopIndex) const;
  // A polyline loop: vertices and one bulge per vertex (all zero when it has
  // none). eNotApplicable for a loop of edges.
  OdResult getLoopAt(int loopIndex, OdInt32& loopType, OdGePoint2dArray& vertices,
                     OdGeDoubleArray& bulges) const;
  // Any loop as edges (a polyline loop as lines and circular arcs).
  OdResult getLoopAt(int loopIndex, OdInt32& loopType, OdDbHatchEdgeArray& edges) const;
  // Appends a closed polyline loop (kPolyline is added to the type); bulges
  // may be empty or hold one value per vertex.
  OdResult appendLoop(OdInt32 loopType, const OdGePoint2dArray& vertices,
                      const OdGeDoubleArray& bulges = OdGeDoubleArray());
  OdResult appendLoop(OdInt32 loopType, const OdDbHatchEdgeArray& edges);
  OdResult removeLoopAt(int loopIndex);
  // Objects the loop was made from (associative hatches).
  OdDbObjectIdArray getAssocObjIdsAt(int loopIndex) const;
  OdResult setAssocObjIdsAt(int loopIndex, const OdDbObjectIdArray& ids);

  // Fill.
  bool isSolidFill() const { return m_solidFill != 0; }
  OdString patternName() const { return m_patternName; }
  HatchPatternType patternType() const;
  // Sets the pattern by name ("SOLID" makes a solid fill). The line
  // families stay as they are: set them with setPatternDefinitions.
  void setPattern(HatchPatternType type, const OdString& name);
  double patternAngle() const;
  // Turns the pattern's line families about the origin by the difference.
  void setPatternAngle(double angle);
  double patternScale() const;
  // Scales the pattern's line families by the ratio of the scales.
  void setPatternScale(double scale);
  bool patternDouble() const;
  void setPatternDouble(bool isDouble);
  int numPatternDefinitions() const;
  OdResult getPatternDefinitionAt(int index, double& angle, double& baseX, double& baseY, double& offsetX,
                                  double& offsetY, OdGeDoubleArray& dashes) const;
  OdDbHatchPatternLineArray patternDefinitions() const;
  void setPatternDefinitions(const OdDbHatchPatternLineArray& lines);
  HatchStyle hatchStyle() const;
  void setHatchStyle(HatchStyle style);
  bool associative() const { return m_associative != 0; }
  void setAssociative(bool on);

  // Seed points (plane coordinates).
  int numSeedPoints() const;
  OdGePoint2d getSeedPointAt(int index) const;
  void appendSeedPoint(const OdGePoint2d& point);
  OdResult removeSeedPointAt(int index);

  // The filled area: outer loops less their holes, by the hatch style.
  OdResult getArea(double& area) const;

  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  // Moves the loops, seeds and pattern with the plane. Arcs need a map that
  // keeps circles circular (eCannotScaleNonUniformly otherwise).
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  double distanceTo(const OdGePoint3d& point) const override;

  // Internal: the file form of the loops, pattern and seeds (angles in
  // degrees, as read), kept out of line.
  struct EdgeRecord;
  struct LoopRecord;
  struct PatternLineRecord;
  struct Data;

 private:
  friend struct OdDbHatchDataCodec;
  void polygonize(std::vector<OdGePoint2dArray>& polygons) const;
  std::vector<int> loopDepths(const std::vector<OdGePoint2dArray>& polygons) const;
  bool isFilledAt(const OdGePoint2d& point, const std::vector<OdGePoint2dArray>& polygons,
                  const std::vector<int>& depths) const;

  OdGePoint3d m_elevationPoint;  // (0, 0, elevation) in plane coordinates
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
  OdString m_patternName;
  OdInt16 m_solidFill = 0;
  OdInt16 m_associative = 0;
  std::unique_ptr<Data> m_data;
};
using OdDbHatchPtr = OdSmartPtr<OdDbHatch>;
