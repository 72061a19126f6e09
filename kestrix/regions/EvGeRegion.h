// Planar regions for Boolean operations on closed outlines: exact arithmetic
// on lines and circular arcs, so that arcs stay arcs through union,
// intersection and subtraction.
//
// A loop (EvGeLoop2d) is a closed curve given the way planar polylines give
// it: vertices with the bulge of the piece that starts at each, or a full
// circle. A region (EvGeRegion2d) is one connected piece of the plane: an
// outer loop and the holes inside it. EvGeGeneralRegion2d makes a region
// from one closed loop. EvGeObjList is a list of regions that Union merges
// into disjoint regions.
//
// The arithmetic lives in EvGeRegion.cpp alone; nothing here depends on how
// it is done.
#pragma once

#include <memory>
#include <vector>

#include "Ge/GePoint2d.h"

// A vertex of a loop: a point and the bulge of the piece from it to the next
// vertex (0 straight; tan of a quarter of the arc's sweep, positive
// counter-clockwise).
struct EvGeLoopVertex {
  OdGePoint2d point;
  double bulge = 0.0;
};

// A closed planar curve: a full circle, or a closed run of straight and
// circular pieces (the last vertex leads back to the first).
struct EvGeLoop2d {
  bool isCircle = false;
  OdGePoint2d center;  // of a full circle
  double radius = 0.0;
  std::vector<EvGeLoopVertex> vertices;

  static EvGeLoop2d circle(const OdGePoint2d& center, double radius);
  // The area enclosed, positive for a counter-clockwise loop.
  double signedArea() const;
  // The same curve run the other way.
  EvGeLoop2d reversed() const;
  // Consecutive equal vertices dropped (the piece between them is empty).
  EvGeLoop2d withoutRepeatedVertices() const;
};

class EvGeObjList;

class EvGeRegion2d {
 public:
  EvGeRegion2d();
  EvGeRegion2d(const EvGeRegion2d& other);
  EvGeRegion2d& operator=(const EvGeRegion2d& other);
  virtual ~EvGeRegion2d();

  bool isEmpty() const;
  // The outer loop and the holes: 0 for an empty region.
  int loopCount() const;
  // The outer loop first (counter-clockwise), then each hole (clockwise).
  // Pieces of one circle or one line that meet are joined into one piece; a
  // loop that is a whole circle comes back as a circle.
  std::vector<EvGeLoop2d> loops() const;
  double area() const;

  // The parts this region shares with another, appended to result; false
  // when the operation failed.
  bool IntersectWith(const EvGeRegion2d& other, EvGeObjList& result) const;
  // This region less every region of the list, appended to result.
  bool SubtractBy(const EvGeObjList& tools, EvGeObjList& result) const;

  struct Impl;

 protected:
  explicit EvGeRegion2d(std::unique_ptr<Impl> impl);
  std::unique_ptr<Impl> m_impl;
  friend class EvGeObjList;
};

// A region made from one closed loop (either direction). It stays empty
// (isValid() false) when the loop bounds nothing: fewer than two pieces, a
// zero radius, pieces that cross or touch each other.
class EvGeGeneralRegion2d : public EvGeRegion2d {
 public:
  explicit EvGeGeneralRegion2d(const EvGeLoop2d& outline);
  bool isValid() const { return !isEmpty(); }
};

// An owning list of regions with a cursor (first, next, current).
class EvGeObjList {
 public:
  EvGeObjList();
  ~EvGeObjList();
  EvGeObjList(const EvGeObjList&) = delete;
  EvGeObjList& operator=(const EvGeObjList&) = delete;

  // Adds a region, merging it with the regions the list holds so that the
  // list stays a set of disjoint regions. Merging is done once for many
  // regions added in a row, when the list is next read.
  void Union(const EvGeRegion2d& region);
  // Appends a copy of a region as it is, merging nothing.
  void append(const EvGeRegion2d& region);
  // Every region of the list intersected with another, appended to result.
  bool IntersectWith(const EvGeRegion2d& region, EvGeObjList& result) const;
  void clear();
  int count() const;

  // The cursor: first() and next() return false past the last region.
  bool first() const;
  bool next() const;
  bool current() const;
  const EvGeRegion2d* GetCurRegion2D() const;
  const EvGeRegion2d* at(int index) const;

 private:
  void settle() const;  // merges what Union added
  mutable std::vector<std::unique_ptr<EvGeRegion2d>> m_regions;
  mutable std::vector<std::unique_ptr<EvGeRegion2d>> m_pending;
  mutable size_t m_cursor = 0;
};
