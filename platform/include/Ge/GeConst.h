// Angle constants and angle helpers of the geometry layer.
#pragma once

inline constexpr double OdaPI = 3.14159265358979323846;
inline constexpr double Oda2PI = 2.0 * OdaPI;
inline constexpr double OdaPI2 = OdaPI / 2.0;
inline constexpr double OdaPI4 = OdaPI / 4.0;

inline constexpr double OdaToRadian(double degrees) { return degrees * (OdaPI / 180.0); }
inline constexpr double OdaToDegree(double radians) { return radians * (180.0 / OdaPI); }

namespace OdGe {
inline constexpr double kPi = OdaPI;
inline constexpr double k2Pi = Oda2PI;
inline constexpr double kHalfPi = OdaPI2;
inline constexpr double kQuarterPi = OdaPI4;
// Below this magnitude of both the x and y component of a unit extrusion direction,
// the object coordinate system derives its x axis from world Y instead of world Z.
inline constexpr double kArbitraryAxisLimit = 1.0 / 64.0;
}  // namespace OdGe

// The same angle in [0, 2π).
double odgeNormalizeAngle(double angle);
