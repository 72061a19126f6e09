// The plane and space as types. The geometry classes that differ only by dimension (entities,
// curves, straight curves, circular arcs, matrices) are written once, as templates over one of
// these; the classes of each dimension derive from them and keep their own names.
#pragma once

#include "Ge/Ge.h"

class OdGePoint2d;
class OdGeVector2d;
class OdGeMatrix2d;
class OdGeExtents2d;
class OdGeEntity2d;
class OdGeCurve2d;
class OdGeLinearEnt2d;
class OdGeLine2d;
class OdGeLineSeg2d;
class OdGeCircArc2d;

class OdGePoint3d;
class OdGeVector3d;
class OdGeMatrix3d;
class OdGeExtents3d;
class OdGeEntity3d;
class OdGeCurve3d;
class OdGeLinearEnt3d;
class OdGeLine3d;
class OdGeLineSeg3d;
class OdGeCircArc3d;

struct OdGeSpace2d {
  static constexpr unsigned int kDimension = 2;
  using Point = OdGePoint2d;
  using Vector = OdGeVector2d;
  using Matrix = OdGeMatrix2d;
  using Extents = OdGeExtents2d;
  using Entity = OdGeEntity2d;
  using Curve = OdGeCurve2d;
  using LinearEnt = OdGeLinearEnt2d;
  using Line = OdGeLine2d;
  using LineSeg = OdGeLineSeg2d;
  using CircArc = OdGeCircArc2d;
  static constexpr OdGe::EntityId kEntityKind = OdGe::kEntity2d;
  static constexpr OdGe::EntityId kCurveKind = OdGe::kCurve2d;
  static constexpr OdGe::EntityId kLinearEntKind = OdGe::kLinearEnt2d;
};

struct OdGeSpace3d {
  static constexpr unsigned int kDimension = 3;
  using Point = OdGePoint3d;
  using Vector = OdGeVector3d;
  using Matrix = OdGeMatrix3d;
  using Extents = OdGeExtents3d;
  using Entity = OdGeEntity3d;
  using Curve = OdGeCurve3d;
  using LinearEnt = OdGeLinearEnt3d;
  using Line = OdGeLine3d;
  using LineSeg = OdGeLineSeg3d;
  using CircArc = OdGeCircArc3d;
  static constexpr OdGe::EntityId kEntityKind = OdGe::kEntity3d;
  static constexpr OdGe::EntityId kCurveKind = OdGe::kCurve3d;
  static constexpr OdGe::EntityId kLinearEntKind = OdGe::kLinearEnt3d;
};
