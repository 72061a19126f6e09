// Entities of a DWG file: each type's own data after the common entity data,
// written as the groups of its DXF class.
#include <algorithm>
#include <cstring>

#include "dwg/DwgToDxf.h"

namespace oddwg {

bool DwgToDxf::line(const OdDwgObject& o, OdDwgBitReader& d) {
  double s[3], e[3];
  if (m_r2000) {
    const bool flat = d.readBit();
    s[0] = d.readRD();
    e[0] = d.readDD(s[0]);
    s[1] = d.readRD();
    e[1] = d.readDD(s[1]);
    s[2] = e[2] = 0;
    if (!flat) {
      s[2] = d.readRD();
      e[2] = d.readDD(s[2]);
    }
  } else {
    for (double& v : s) v = d.readBD();
    for (double& v : e) v = d.readBD();
  }
  const double thickness = d.readBT(m_r2000);
  m_w.writeString(100, L"AcDbLine");
  if (thickness != 0) m_w.writeDouble(39, thickness);
  m_w.writePoint(10, s[0], s[1], s[2]);
  m_w.writePoint(11, e[0], e[1], e[2]);
  extrusion(d);
  return true;
}

bool DwgToDxf::circleOrArc(const OdDwgObject& o, OdDwgBitReader& d, bool arc) {
  const double x = d.readBD(), y = d.readBD(), z = d.readBD();
  const double radius = d.readBD();
  const double thickness = d.readBT(m_r2000);
  m_w.writeString(100, L"AcDbCircle");
  if (thickness != 0) m_w.writeDouble(39, thickness);
  m_w.writePoint(10, x, y, z);
  m_w.writeDouble(40, radius);
  extrusion(d);
  if (arc) {
    const double start = d.readBD(), end = d.readBD();
    m_w.writeString(100, L"AcDbArc");
    degrees(50, start);
    degrees(51, end);
  }
  return true;
}

bool DwgToDxf::point(const OdDwgObject& o, OdDwgBitReader& d) {
  const double x = d.readBD(), y = d.readBD(), z = d.readBD();
  const double thickness = d.readBT(m_r2000);
  m_w.writeString(100, L"AcDbPoint");
  m_w.writePoint(10, x, y, z);
  if (thickness != 0) m_w.writeDouble(39, thickness);
  extrusion(d);
  const double angle = d.readBD();
  if (angle != 0) degrees(50, angle);
  return true;
}

// kind: 0 TEXT, 1 ATTRIB, 2 ATTDEF (the attribute forms add their tag, flags and prompt).
bool DwgToDxf::text(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h, int kind) {
  double elevation = 0, ix = 0, iy = 0, ax = 0, ay = 0, thickness = 0, oblique = 0, rotation = 0, height = 0, width = 1;
  double e[3] = {0, 0, 1};
  int generation = 0, hAlign = 0, vAlign = 0;
  OdString value;
  bool hasAlignment = true;
  if (m_r2000) {
    const uint8_t flags = d.readRC();
    if (!(flags & 1)) elevation = d.readRD();
    ix = d.readRD();
    iy = d.readRD();
    hasAlignment = !(flags & 2);
    if (hasAlignment) {
      ax = d.readDD(ix);
      ay = d.readDD(iy);
    }
    d.readBE(true, e);
    thickness = d.readBT(true);
    if (!(flags & 4)) oblique = d.readRD();
    if (!(flags & 8)) rotation = d.readRD();
    height = d.readRD();
    if (!(flags & 16)) width = d.readRD();
    value = d.readTV(m_cp);
    if (!(flags & 32)) generation = d.readBS();
    if (!(flags & 64)) hAlign = d.readBS();
    if (!(flags & 128)) vAlign = d.readBS();
  } else {
    elevation = d.readBD();
    ix = d.readRD();
    iy = d.readRD();
    ax = d.readRD();
    ay = d.readRD();
    for (double& v : e) v = d.readBD();
    thickness = d.readBD();
    oblique = d.readBD();
    rotation = d.readBD();
    height = d.readBD();
    width = d.readBD();
    value = d.readTV(m_cp);
    generation = d.readBS();
    hAlign = d.readBS();
    vAlign = d.readBS();
  }
  OdString tag, prompt;
  int attFlags = 0;
  if (kind) {
    tag = d.readTV(m_cp);
    d.readBS();  // field length, unused
    attFlags = d.readRC();
    if (kind == 2) prompt = d.readTV(m_cp);
  }
  const OdString style = nameOf(h.readH(o.handle).value);

  m_w.writeString(100, L"AcDbText");
  if (thickness != 0) m_w.writeDouble(39, thickness);
  m_w.writePoint(10, ix, iy, elevation);
  m_w.writeDouble(40, height);
  m_w.writeString(1, value);
  if (rotation != 0) degrees(50, rotation);
  if (width != 1) m_w.writeDouble(41, width);
  if (oblique != 0) degrees(51, oblique);
  if (!style.isEmpty()) m_w.writeString(7, style);
  if (generation) m_w.writeInt(71, generation);
  if (hAlign) m_w.writeInt(72, hAlign);
  if (hasAlignment && (hAlign || vAlign)) m_w.writePoint(11, ax, ay, elevation);
  if (e[0] != 0 || e[1] != 0 || e[2] != 1) m_w.writePoint(210, e[0], e[1], e[2]);
  if (kind == 2) {
    m_w.writeString(100, L"AcDbAttributeDefinition");
    m_w.writeString(3, prompt);
  } else if (kind == 1) {
    m_w.writeString(100, L"AcDbAttribute");
  } else {
    m_w.writeString(100, L"AcDbText");
  }
  if (kind) {
    m_w.writeString(2, tag);
    m_w.writeInt(70, attFlags);
    if (vAlign) m_w.writeInt(74, vAlign);
  } else if (vAlign) {
    m_w.writeInt(73, vAlign);
  }
  return true;
}

bool DwgToDxf::insert(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h) {
  double p[3], s[3] = {1, 1, 1};
  for (double& v : p) v = d.readBD();
  if (m_r2000) {
    switch (d.readBB()) {
      case 3: break;
      case 1: s[1] = d.readDD(1.0); s[2] = d.readDD(1.0); break;
      case 2: s[0] = s[1] = s[2] = d.readRD(); break;
      default: s[0] = d.readRD(); s[1] = d.readDD(s[0]); s[2] = d.readDD(s[0]); break;
    }
  } else {
    for (double& v : s) v = d.readBD();
  }
  const double rotation = d.readBD();
  double e[3];
  for (double& v : e) v = d.readBD();
  const bool hasAttributes = d.readBit();
  if (hasAttributes && m_file.atLeast(kDwgR2004)) d.readBL();  // the attribute count: they are found by owner
  const OdString block = nameOf(h.readH(o.handle).value);
  if (block.isEmpty()) throw OdDwgDecodeError("insert of a block that is not in the file", h.bitPosition());
  m_w.writeString(100, L"AcDbBlockReference");
  if (hasAttributes) m_w.writeInt(66, 1);
  m_w.writeString(2, block);
  m_w.writePoint(10, p[0], p[1], p[2]);
  if (s[0] != 1) m_w.writeDouble(41, s[0]);
  if (s[1] != 1) m_w.writeDouble(42, s[1]);
  if (s[2] != 1) m_w.writeDouble(43, s[2]);
  if (rotation != 0) degrees(50, rotation);
  if (e[0] != 0 || e[1] != 0 || e[2] != 1) m_w.writePoint(210, e[0], e[1], e[2]);
  return true;
}

bool DwgToDxf::lwpolyline(const OdDwgObject& o, OdDwgBitReader& d) {
  const int flags = static_cast<uint16_t>(d.readBS());
  double width = 0, elevation = 0, thickness = 0, e[3] = {0, 0, 1};
  if (flags & 4) width = d.readBD();
  if (flags & 8) elevation = d.readBD();
  if (flags & 2) thickness = d.readBD();
  if (flags & 1) for (double& v : e) v = d.readBD();
  const int32_t points = d.readBL();
  const int32_t bulges = (flags & 16) ? d.readBL() : 0;
  const int32_t widths = (flags & 32) ? d.readBL() : 0;
  // What is left of the data bounds the counts: a point takes at least 4
  // bits (two DD), a bulge 2, a pair of widths 4.
  const size_t room = o.size * 8 > d.bitPosition() ? o.size * 8 - d.bitPosition() : 0;
  if (points < 0 || bulges < 0 || widths < 0 || static_cast<size_t>(points) > room / 4 || static_cast<size_t>(bulges) > room / 2 ||
      static_cast<size_t>(widths) > room / 4) {
    throw OdDwgDecodeError("implausible vertex count", d.bitPosition());
  }
  std::vector<double> xy(static_cast<size_t>(points) * 2), bulge(static_cast<size_t>(bulges)), w(static_cast<size_t>(widths) * 2);
  for (int32_t i = 0; i < points; ++i) {
    if (m_r2000 && i > 0) {
      xy[2 * i] = d.readDD(xy[2 * i - 2]);
      xy[2 * i + 1] = d.readDD(xy[2 * i - 1]);
    } else {
      xy[2 * i] = d.readRD();
      xy[2 * i + 1] = d.readRD();
    }
  }
  for (double& b : bulge) b = d.readBD();
  for (double& v : w) v = d.readBD();
  m_w.writeString(100, L"AcDbPolyline");
  m_w.writeInt(90, points);
  m_w.writeInt(70, ((flags & 512) ? 1 : 0) | ((flags & 256) ? 128 : 0));
  if (flags & 4) m_w.writeDouble(43, width);
  if (elevation != 0) m_w.writeDouble(38, elevation);
  if (thickness != 0) m_w.writeDouble(39, thickness);
  for (int32_t i = 0; i < points; ++i) {
    m_w.writePoint(10, xy[2 * i], xy[2 * i + 1]);
    if (i < widths && (w[2 * i] != 0 || w[2 * i + 1] != 0)) {
      m_w.writeDouble(40, w[2 * i]);
      m_w.writeDouble(41, w[2 * i + 1]);
    }
    if (i < bulges && bulge[i] != 0) m_w.writeDouble(42, bulge[i]);
  }
  if (e[0] != 0 || e[1] != 0 || e[2] != 1) m_w.writePoint(210, e[0], e[1], e[2]);
  return true;
}

void DwgToDxf::polyline(OdDwgBitReader& d, bool is3d) {
  if (is3d) {
    // A byte of spline flags (1 quadratic, 2 cubic fit) and one whose bit 0 closes it.
    const int spline = d.readRC();
    const int closed = d.readRC();
    m_w.writeString(100, L"AcDb3dPolyline");
    m_w.writeInt(66, 1);
    m_w.writePoint(10, 0, 0, 0);
    m_w.writeInt(70, 8 | (closed & 1) | ((spline & 3) ? 4 : 0));
    if (spline & 3) m_w.writeInt(75, (spline & 3) == 1 ? 5 : 6);
    return;
  }
  const int flags = static_cast<uint16_t>(d.readBS());
  const int curve = d.readBS();
  const double startWidth = d.readBD(), endWidth = d.readBD();
  m_polylineWidths[0] = startWidth;
  m_polylineWidths[1] = endWidth;
  const double thickness = d.readBT(m_r2000);
  const double elevation = d.readBD();
  m_w.writeString(100, L"AcDb2dPolyline");
  m_w.writeInt(66, 1);
  m_w.writePoint(10, 0, 0, elevation);
  if (thickness != 0) m_w.writeDouble(39, thickness);
  m_w.writeInt(70, flags);
  if (startWidth != 0) m_w.writeDouble(40, startWidth);
  if (endWidth != 0) m_w.writeDouble(41, endWidth);
  if (curve) m_w.writeInt(75, curve);
  extrusion(d);
}

void DwgToDxf::vertex(OdDwgBitReader& d, bool is3d) {
  const int flags = d.readRC();
  double p[3];
  point3(d, p);
  m_w.writeString(100, L"AcDbVertex");
  if (is3d) {
    m_w.writeString(100, L"AcDb3dPolylineVertex");
    m_w.writePoint(10, p[0], p[1], p[2]);
    m_w.writeInt(70, flags);
    return;
  }
  // A negative start width stands for equal start and end widths.
  double startWidth = d.readBD(), endWidth;
  if (startWidth < 0) endWidth = startWidth = -startWidth;
  else endWidth = d.readBD();
  const double bulge = d.readBD();
  const double tangent = d.readBD();
  m_w.writeString(100, L"AcDb2dVertex");
  m_w.writePoint(10, p[0], p[1], p[2]);
  // Widths equal to the polyline's defaults are its defaults, as in DXF.
  if (startWidth != m_polylineWidths[0]) m_w.writeDouble(40, startWidth);
  if (endWidth != m_polylineWidths[1]) m_w.writeDouble(41, endWidth);
  if (bulge != 0) m_w.writeDouble(42, bulge);
  m_w.writeInt(70, flags);
  if (flags & 2) degrees(50, tangent);
}

void DwgToDxf::meshPolyline(OdDwgBitReader& d, bool polyface) {
  if (polyface) {
    // Vertex and face counts.
    const int vertices = d.readBS(), faces = d.readBS();
    m_w.writeString(100, L"AcDbPolyFaceMesh");
    m_w.writeInt(66, 1);
    m_w.writePoint(10, 0, 0, 0);
    m_w.writeInt(70, 64);
    m_w.writeInt(71, vertices);
    m_w.writeInt(72, faces);
    return;
  }
  // Flags, curve type, vertex counts in M and N, surface densities.
  const int flags = static_cast<uint16_t>(d.readBS()), curve = d.readBS();
  const int m = d.readBS(), n = d.readBS(), mDensity = d.readBS(), nDensity = d.readBS();
  m_w.writeString(100, L"AcDbPolygonMesh");
  m_w.writeInt(66, 1);
  m_w.writePoint(10, 0, 0, 0);
  m_w.writeInt(70, flags | 16);
  m_w.writeInt(71, m);
  m_w.writeInt(72, n);
  if (mDensity) m_w.writeInt(73, mDensity);
  if (nDensity) m_w.writeInt(74, nDensity);
  if (curve) m_w.writeInt(75, curve);
}

void DwgToDxf::meshVertex(OdDwgBitReader& d, unsigned type) {
  m_w.writeString(100, L"AcDbVertex");
  if (type == 0x0E) {
    // A face: up to four vertex indices (negative: the edge is invisible).
    int index[4];
    for (int& i : index) i = d.readBS();
    m_w.writeString(100, L"AcDbFaceRecord");
    m_w.writePoint(10, 0, 0, 0);
    m_w.writeInt(70, 128);
    for (int i = 0; i < 4; ++i) {
      if (index[i]) m_w.writeInt(71 + i, index[i]);
    }
    return;
  }
  const int flags = d.readRC();
  double p[3];
  point3(d, p);
  m_w.writeString(100, type == 0x0D ? L"AcDbPolyFaceMeshVertex" : L"AcDbPolygonMeshVertex");
  m_w.writePoint(10, p[0], p[1], p[2]);
  m_w.writeInt(70, flags);
}

void DwgToDxf::solid(OdDwgBitReader& d, const wchar_t* subclass) {
  // Thickness, elevation, four 2D corners, extrusion.
  const double thickness = d.readBT(m_r2000);
  const double elevation = d.readBD();
  double c[8];
  for (double& v : c) v = d.readRD();
  m_w.writeString(100, subclass);
  for (int i = 0; i < 4; ++i) m_w.writePoint(10 + i, c[2 * i], c[2 * i + 1], elevation);
  if (thickness != 0) m_w.writeDouble(39, thickness);
  extrusion(d);
}

void DwgToDxf::face(OdDwgBitReader& d) {
  double c[4][3] = {};
  int invisible = 0;
  if (m_r2000) {
    // Each corner after the first defaults to the one before it.
    const bool noFlags = d.readBit();
    const bool flat = d.readBit();
    c[0][0] = d.readRD();
    c[0][1] = d.readRD();
    if (!flat) c[0][2] = d.readRD();
    for (int i = 1; i < 4; ++i) {
      for (int k = 0; k < 3; ++k) c[i][k] = d.readDD(c[i - 1][k]);
    }
    if (!noFlags) invisible = d.readBS();
  } else {
    for (auto& corner : c) point3(d, corner);
    invisible = d.readBS();
  }
  m_w.writeString(100, L"AcDbFace");
  for (int i = 0; i < 4; ++i) m_w.writePoint(10 + i, c[i][0], c[i][1], c[i][2]);
  if (invisible) m_w.writeInt(70, invisible);
}

void DwgToDxf::ellipse(OdDwgBitReader& d) {
  double center[3], major[3], normal[3];
  point3(d, center);
  point3(d, major);
  point3(d, normal);
  const double ratio = d.readBD(), start = d.readBD(), end = d.readBD();
  m_w.writeString(100, L"AcDbEllipse");
  m_w.writePoint(10, center[0], center[1], center[2]);
  m_w.writePoint(11, major[0], major[1], major[2]);
  if (normal[0] != 0 || normal[1] != 0 || normal[2] != 1) m_w.writePoint(210, normal[0], normal[1], normal[2]);
  m_w.writeDouble(40, ratio);
  m_w.writeDouble(41, start);
  m_w.writeDouble(42, end);
}

void DwgToDxf::rayOrXline(OdDwgBitReader& d, const wchar_t* subclass) {
  double base[3], direction[3];
  point3(d, base);
  point3(d, direction);
  m_w.writeString(100, subclass);
  m_w.writePoint(10, base[0], base[1], base[2]);
  m_w.writePoint(11, direction[0], direction[1], direction[2]);
}

void DwgToDxf::mtext(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h) {
  double insertion[3], normal[3], direction[3];
  point3(d, insertion);
  point3(d, normal);
  point3(d, direction);
  const double width = d.readBD();
  const double frameHeight = m_file.atLeast(kDwgR2007) ? d.readBD() : 0.0;  // R2007 on
  const double height = d.readBD();
  const int attachment = d.readBS(), drawing = d.readBS();
  d.readBD();  // extents height and width: derived
  d.readBD();
  const OdString text = d.readTV(m_cp);
  int spacingStyle = 1;
  double spacing = 1.0;
  if (m_r2000) {
    spacingStyle = d.readBS();
    spacing = d.readBD();
    d.readBit();
  }
  const OdString style = nameOf(h.readH(o.handle).value);
  m_w.writeString(100, L"AcDbMText");
  m_w.writePoint(10, insertion[0], insertion[1], insertion[2]);
  m_w.writeDouble(40, height);
  m_w.writeDouble(41, width);
  if (m_file.atLeast(kDwgR2007)) m_w.writeDouble(46, frameHeight);
  m_w.writeInt(71, attachment);
  m_w.writeInt(72, drawing);
  // Text longer than 250 characters goes in pieces: 3 groups, then the last in 1.
  const std::wstring all = text.str();
  size_t at = 0;
  for (; all.size() - at > 250; at += 250) m_w.writeString(3, std::wstring_view(all).substr(at, 250));
  m_w.writeString(1, std::wstring_view(all).substr(at));
  if (!style.isEmpty()) m_w.writeString(7, style);
  if (normal[0] != 0 || normal[1] != 0 || normal[2] != 1) m_w.writePoint(210, normal[0], normal[1], normal[2]);
  m_w.writePoint(11, direction[0], direction[1], direction[2]);
  if (m_r2000) {
    m_w.writeInt(73, spacingStyle);
    m_w.writeDouble(44, spacing);
  }
}

void DwgToDxf::image(OdDwgBitReader& d, OdDwgBitReader& h, const OdDwgObject& o, const wchar_t* subclass) {
  // BL class version, 3BD insertion point, 3BD U and V vectors, 2RD size in
  // pixels, BS display flags, B clipping, RC brightness, contrast and fade,
  // (R2010) B clip mode, BS boundary type: 1 a rectangle of two 2RD
  // corners, else BL vertex count and 2RD vertices. Handles: the image
  // definition and its reactor (null for wipeouts, which share the form).
  const int32_t version = d.readBL();
  double at[3], u[3], v[3];
  point3(d, at);
  point3(d, u);
  point3(d, v);
  const double width = d.readRD(), height = d.readRD();
  const int display = d.readBS();
  const int clipping = d.readBit();
  const int brightness = d.readRC(), contrast = d.readRC(), fade = d.readRC();
  const int clipMode = m_file.atLeast(kDwgR2010) ? d.readBit() : 0;
  const int boundary = d.readBS();
  int32_t vertices = 2;
  if (boundary != 1) {
    vertices = d.readBL();
    if (vertices < 0 || static_cast<size_t>(vertices) > o.size) throw OdDwgDecodeError("implausible clip vertex count", d.bitPosition());
  }
  std::vector<std::pair<double, double>> clip;
  for (int32_t i = 0; i < vertices; ++i) {
    const double x = d.readRD(), y = d.readRD();
    clip.emplace_back(x, y);
  }
  // The file keeps a clip polygon open; DXF closes it with the first vertex again.
  if (boundary != 1 && clip.size() > 1 && clip.back() != clip.front()) clip.push_back(clip.front());
  const uint64_t definition = h.readH(o.handle).value, reactor = h.readH(o.handle).value;
  m_w.writeString(100, subclass);
  m_w.writeInt(90, version);
  m_w.writePoint(10, at[0], at[1], at[2]);
  m_w.writePoint(11, u[0], u[1], u[2]);
  m_w.writePoint(12, v[0], v[1], v[2]);
  m_w.writePoint(13, width, height, 0);
  if (!definition || isWrittenAny(definition)) m_w.writeHandle(340, definition);
  m_w.writeInt(70, display);
  m_w.writeInt(280, clipping);
  m_w.writeInt(281, brightness);
  m_w.writeInt(282, contrast);
  m_w.writeInt(283, fade);
  if (!reactor || isWrittenAny(reactor)) m_w.writeHandle(360, reactor);
  m_w.writeInt(71, boundary);
  if (boundary != 1) m_w.writeInt(91, static_cast<OdInt64>(clip.size()));
  for (const auto& [x, y] : clip) m_w.writePoint(14, x, y, 0);
  if (clipMode) m_w.writeInt(290, clipMode);
}

bool DwgToDxf::emit(const OdDwgObject& o) {
  if (!o.decoded) return false;
  static const std::map<unsigned, const wchar_t*> kEntities = {
      {0x01, L"TEXT"}, {0x02, L"ATTRIB"}, {0x03, L"ATTDEF"}, {0x06, L"SEQEND"}, {0x07, L"INSERT"},
      {0x11, L"ARC"},  {0x12, L"CIRCLE"}, {0x13, L"LINE"},   {0x1B, L"POINT"},  {0x4D, L"LWPOLYLINE"},
      {0x1C, L"3DFACE"}, {0x1F, L"SOLID"}, {0x20, L"TRACE"}, {0x23, L"ELLIPSE"}, {0x28, L"RAY"}, {0x29, L"XLINE"},
      {0x2C, L"MTEXT"}, {0x0F, L"POLYLINE"}, {0x10, L"POLYLINE"}, {0x0A, L"VERTEX"}, {0x0B, L"VERTEX"},
      {0x1D, L"POLYLINE"}, {0x1E, L"POLYLINE"}, {0x0C, L"VERTEX"}, {0x0D, L"VERTEX"}, {0x0E, L"VERTEX"},
      {0x14, L"DIMENSION"}, {0x15, L"DIMENSION"}, {0x16, L"DIMENSION"}, {0x17, L"DIMENSION"}, {0x18, L"DIMENSION"},
      {0x19, L"DIMENSION"}, {0x1A, L"DIMENSION"}, {0x24, L"SPLINE"}, {0x2F, L"MLINE"},
      {0x25, L"REGION"}, {0x26, L"3DSOLID"}, {0x27, L"BODY"}, {0x4E, L"HATCH"}, {0x2D, L"LEADER"}, {0x22, L"VIEWPORT"}, {0x1000, L"IMAGE"}, {0x1001, L"WIPEOUT"}};
  // R13 and R14 keep light polylines as a class of their own.
  const unsigned type = o.type >= 500 && o.dxfName == L"LWPOLYLINE" ? 0x4D : o.type >= 500 && o.dxfName == L"IMAGE"     ? 0x1000
                      : o.type >= 500 && o.dxfName == L"WIPEOUT" ? 0x1001
                                                                 : o.type;
  auto known = kEntities.find(type);
  // Modeler data in the binary form that could not be converted is kept whole, as a proxy.
  const bool proxy = (known == kEntities.end() && isProxy(o)) || modelerKeptAsProxy(o);
  if (known == kEntities.end() && !proxy) {
    notRead(o);
    return false;
  }
  return decodeObject(o, [&](OdDwgBitReader& d, OdDwgBitReader& h) {
    m_w.writeString(0, proxy ? L"ACAD_PROXY_ENTITY" : known->second);
    const uint64_t owner = o.entMode == 2 ? m_modelSpace : o.entMode == 1 ? m_paperSpace : o.owner;
    commonEntity(o, owner);
    if (proxy) proxyData(o);
    else switch (type) {
      case 0x01: text(o, d, h, 0); break;
      case 0x02: text(o, d, h, 1); break;
      case 0x03: text(o, d, h, 2); break;
      case 0x06: break;
      case 0x07: insert(o, d, h); break;
      case 0x11: circleOrArc(o, d, true); break;
      case 0x12: circleOrArc(o, d, false); break;
      case 0x13: line(o, d); break;
      case 0x1B: point(o, d); break;
      case 0x4D: lwpolyline(o, d); break;
      case 0x1C: face(d); break;
      case 0x1F: solid(d, L"AcDbTrace"); break;
      case 0x20: solid(d, L"AcDbTrace"); break;
      case 0x23: ellipse(d); break;
      case 0x28: rayOrXline(d, L"AcDbRay"); break;
      case 0x29: rayOrXline(d, L"AcDbXline"); break;
      case 0x2C: mtext(o, d, h); break;
      case 0x0F: case 0x10: polyline(d, type == 0x10); break;
      case 0x0A: case 0x0B: vertex(d, type == 0x0B); break;
      case 0x1D: case 0x1E: meshPolyline(d, type == 0x1D); break;
      case 0x0C: case 0x0D: case 0x0E: meshVertex(d, type); break;
      case 0x14: case 0x15: case 0x16: case 0x17: case 0x18: case 0x19: case 0x1A: dimension(o, d, h); break;
      case 0x24: spline(o, d); break;
      case 0x2F: mline(o, d, h); break;
      case 0x25: case 0x26: case 0x27: modelerGeometry(o, d, h); break;
      case 0x4E: hatch(o, d, h); break;
      case 0x2D: leader(o, d, h); break;
      case 0x22: viewportEntity(o, d, h); break;
      case 0x1000: image(d, h, o, L"AcDbRasterImage"); break;
      case 0x1001: image(d, h, o, L"AcDbWipeout"); break;
    }
    return true;
  });
}


}  // namespace oddwg
