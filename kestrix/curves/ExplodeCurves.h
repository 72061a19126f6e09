// The curve family of duplicate removal: every line, arc, circle and
// polyline of a selection is broken into pieces (line segments and circular
// arcs); pieces that may be co-linear or co-circular are gathered into
// buckets, each bucket is swept in sorted order, and every pair of pieces
// that meets is classified and merged as the options allow. Modified sources
// are then rewritten from their remaining pieces.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <tuple>
#include <vector>

#include "DbObjectId.h"
#include "Ge/GePoint3d.h"
#include "Ge/GeVector3d.h"

class OdDbEntity;

namespace kestrix::curves {

// The options of one run (see Overkill.cpp for their defaults).
struct OverkillOptions {
  double tolerance = 1e-6;
  bool compareLayer = true;
  bool compareLinetype = true;
  bool compareColor = true;
  bool compareLineweight = true;
  bool comparePlotStyle = true;
  bool optimizePolylines = true;
  bool combinePartial = true;
  bool combineEndToEnd = true;
  // Every comparison uses at least 1e-6.
  double effectiveTolerance() const { return tolerance > 1e-6 ? tolerance : 1e-6; }
};

// How two pieces relate.
enum PieceRelation : int {
  kUnrelated = 0,
  kIdentical = 1,
  kPartialOverlap = 2,
  kContained = 3,
  kEndToEnd = 4,
};

// One piece: a line segment from p0 to p1, or a circular arc running
// counter-clockwise about `normal` from angle `start` over `sweep` (angles in
// the object coordinate system of the normal, which is always given in one
// canonical sense so that arcs drawn either way meet). p0 and p1 are the
// ends in the order the source runs through them.
struct CurvePiece {
  bool arc = false;
  bool alive = true;
  bool changed = false;
  OdGePoint3d p0, p1;
  OdGePoint3d center;
  OdGeVector3d normal;
  double radius = 0;
  double start = 0;
  double sweep = 0;
  bool forward = true;  // the source runs counter-clockwise (arcs)
  double startWidth = 0, endWidth = 0;
  int curve = -1;  // index of the owning curve object
  int order = 0;   // position among its curve's pieces

  bool closed() const;
  // Sets p0 and p1 from the angles, keeping the source's sense.
  void updateArcEnds();
};

// Builds an arc piece from its centre, radius, normal and the start and end
// points of a counter-clockwise run about that normal over `sweep`.
CurvePiece makeArcPiece(const OdGePoint3d& center, double radius, const OdGeVector3d& normal,
                        const OdGePoint3d& ccwStart, const OdGePoint3d& ccwEnd, double sweep);
CurvePiece makeLinePiece(const OdGePoint3d& p0, const OdGePoint3d& p1);

// Base of the curve family: knows its source entity and its pieces.
class CBaseExplodeCurve {
 public:
  enum Kind { kLine, kArc, kCircle, kLwPolyline, k2dPolyline, k3dPolyline };
  CBaseExplodeCurve(const OdDbObjectId& source, Kind kind) : m_source(source), m_kind(kind) {}
  virtual ~CBaseExplodeCurve() = default;

  const OdDbObjectId& sourceId() const { return m_source; }
  Kind kind() const { return m_kind; }
  std::vector<int>& pieces() { return m_pieces; }
  bool isPolyline() const { return m_kind >= kLwPolyline; }
  bool isSameEntity(const CBaseExplodeCurve& other) const { return m_source == other.m_source; }
  void setModified() { m_modified = true; }
  bool modified() const { return m_modified; }

  // Classifies piece b against piece a (a belongs to this curve) with the
  // point tolerance; a may be reset to b when a lies within b.
  virtual int classify(CurvePiece& a, const CurvePiece& b, double tolerance) const = 0;

 private:
  OdDbObjectId m_source;
  Kind m_kind;
  std::vector<int> m_pieces;
  bool m_modified = false;
};

// A curve whose pieces are line segments (lines, 3-d polylines).
class CExplodeLine : public CBaseExplodeCurve {
 public:
  using CBaseExplodeCurve::CBaseExplodeCurve;
  int classify(CurvePiece& a, const CurvePiece& b, double tolerance) const override;
  static int classifyLines(CurvePiece& a, const CurvePiece& b, double tolerance);
  // Whether the far ends lie on each other's lines: aEnd / bEnd say which end
  // (false: p0, true: p1) of each piece is the touching one.
  static bool colinear(const CurvePiece& a, bool aEnd, const CurvePiece& b, bool bEnd, double tolerance);
};

// A curve whose pieces are circular arcs (arcs; a circle is one closed arc).
class CExplodeCircArc : public CBaseExplodeCurve {
 public:
  using CBaseExplodeCurve::CBaseExplodeCurve;
  int classify(CurvePiece& a, const CurvePiece& b, double tolerance) const override;
  static int classifyArcs(CurvePiece& a, const CurvePiece& b, double tolerance);
};

// A polyline's mixture of both.
class CExplodeLineAndArc : public CBaseExplodeCurve {
 public:
  using CBaseExplodeCurve::CBaseExplodeCurve;
  int classify(CurvePiece& a, const CurvePiece& b, double tolerance) const override;
};

// Grows piece a to cover a and b after they were classified as related
// (both lines or both arcs on one circle).
void uniteInto(CurvePiece& a, const CurvePiece& b, int relation, double tolerance);

// The curve pass of one run.
class CurvePass {
 public:
  explicit CurvePass(const OverkillOptions& options) : m_options(options) {}
  // Takes a line, arc, circle or polyline (opened for read); false for other kinds.
  bool intake(const OdDbEntity* entity);
  // Buckets, sweeps and merges; then rewrites modified sources and erases
  // emptied ones. Adds to the counters.
  void run(int& duplicates, int& overlaps);
  size_t pieceCount() const { return m_pieces.size(); }

 private:
  // The common properties the options compare, as one key of a curve.
  struct Properties {
    OdUInt64 layer, linetype, plotStyle;
    OdUInt32 color;
    int lineWeight;
    bool operator<(const Properties& o) const {
      return std::tie(layer, linetype, plotStyle, color, lineWeight) <
             std::tie(o.layer, o.linetype, o.plotStyle, o.color, o.lineWeight);
    }
  };
  void addPiece(CBaseExplodeCurve& curve, CurvePiece piece);
  void sweepLines(std::vector<int>& bucket, int& duplicates, int& overlaps);
  void sweepArcs(std::vector<int>& bucket, int& duplicates, int& overlaps);
  // Classifies a pair and acts on it; true when b (the later piece) was merged away.
  void consider(int ia, int ib, int& duplicates, int& overlaps);
  void writeBack();

  OverkillOptions m_options;
  std::vector<std::unique_ptr<CBaseExplodeCurve>> m_curves;
  std::vector<CurvePiece> m_pieces;
  std::vector<std::array<double, 2>> m_propertyKeys;  // per curve: properties id, linetype scale
  std::map<Properties, int> m_propertyIds;
};

}  // namespace kestrix::curves
