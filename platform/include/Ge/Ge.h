// Kinds of geometric entities and the outcome codes of geometric constructions.
#pragma once

namespace OdGe {

// Run-time kind of an OdGeEntity2d/OdGeEntity3d. Abstract kinds (kCurve3d, kLinearEnt3d...)
// are answered by isKindOf(); type() always returns a concrete kind.
enum EntityId {
  kEntity2d,
  kEntity3d,
  kCurve2d,
  kCurve3d,
  kLinearEnt2d,
  kLine2d,
  kLineSeg2d,
  kRay2d,
  kCircArc2d,
  kLinearEnt3d,
  kLine3d,
  kLineSeg3d,
  kRay3d,
  kCircArc3d,
  kEllipArc3d,
  kPlane,
};

// Why a construction did not produce a result.
enum ErrorCondition {
  kOk,
  k0This,                          // the object itself is degenerate (zero length, zero radius)
  k0Arg1,                          // the first argument is a zero vector
  k0Arg2,                          // the second argument is a zero vector
  kEqualArg1Arg2,                  // two points that must differ coincide
  kEqualArg1Arg3,
  kEqualArg2Arg3,
  kLinearlyDependentArg1Arg2Arg3,  // three points on one line
  kDegenerateGeometry,
};

}  // namespace OdGe
