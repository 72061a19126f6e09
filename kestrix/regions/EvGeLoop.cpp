// Loops of planar regions measured and turned around in plain doubles.
#include <cmath>

#include "regions/EvGeRegion.h"

EvGeLoop2d EvGeLoop2d::circle(const OdGePoint2d& center, double radius) {
  EvGeLoop2d loop;
  loop.isCircle = true;
  loop.center = center;
  loop.radius = radius;
  return loop;
}

double EvGeLoop2d::signedArea() const {
  if (isCircle) return 3.14159265358979323846 * radius * radius;
  double area = 0.0;
  const size_t n = vertices.size();
  for (size_t i = 0; i < n; ++i) {
    const OdGePoint2d& a = vertices[i].point;
    const OdGePoint2d& b = vertices[(i + 1) % n].point;
    area += (a.x * b.y - b.x * a.y) / 2.0;
    const double bulge = vertices[i].bulge;
    if (bulge == 0.0) continue;
    // The circular segment between the chord and the arc: r²(θ - sin θ)/2,
    // on the left of the chord for a positive bulge.
    const double theta = 4.0 * std::atan(bulge);
    const double chord = std::hypot(b.x - a.x, b.y - a.y);
    const double r = chord / (2.0 * std::sin(theta / 2.0));
    area += r * r * (theta - std::sin(theta)) / 2.0;
  }
  return area;
}

EvGeLoop2d EvGeLoop2d::reversed() const {
  EvGeLoop2d loop = *this;
  if (isCircle) return loop;
  const size_t n = vertices.size();
  for (size_t i = 0; i < n; ++i) {
    // The piece from vertex n-1-i back to vertex n-2-i is the piece that ran from n-2-i to n-1-i.
    loop.vertices[i].point = vertices[n - 1 - i].point;
    loop.vertices[i].bulge = -vertices[(2 * n - 2 - i) % n].bulge;
  }
  return loop;
}

EvGeLoop2d EvGeLoop2d::withoutRepeatedVertices() const {
  EvGeLoop2d loop = *this;
  if (isCircle) return loop;
  loop.vertices.clear();
  for (const EvGeLoopVertex& vertex : vertices) {
    if (!loop.vertices.empty() && loop.vertices.back().point == vertex.point) {
      loop.vertices.back().bulge = vertex.bulge;  // the empty piece is dropped
      continue;
    }
    loop.vertices.push_back(vertex);
  }
  while (loop.vertices.size() > 1 && loop.vertices.back().point == loop.vertices.front().point)
    loop.vertices.pop_back();
  return loop;
}
