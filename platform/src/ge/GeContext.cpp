#include "Ge/GeContext.h"

#include <cmath>

#include "Ge/GeConst.h"

OdGeTol OdGeContext::gTol;

double odgeNormalizeAngle(double angle) {
  double result = std::fmod(angle, Oda2PI);
  if (result < 0.0) result += Oda2PI;
  // A tiny negative input rounds up to exactly 2π.
  return result >= Oda2PI ? 0.0 : result;
}
