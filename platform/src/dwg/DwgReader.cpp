// Turns the objects of a DWG file into the platform's own objects. Each
// decoded object is written as the DXF groups of its class (exact doubles,
// handles and owners as in the DWG file) and read by the DXF reader, so the
// class's field table builds the object and every repair pass of a DXF read
// (missing tables, standard records, dictionaries) applies unchanged.
#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <set>

#include "DbSchema.h"
#include "DwgRead.h"
#include "OdCodePage.h"
#include "dwg/DwgFile.h"
#include "dxf/DxfTagWriter.h"

namespace {

// Lineweights of R2000 files, by their index; 29-31 are ByLayer, ByBlock, default.
int lineWeightOf(int index) {
  static const int kWeights[] = {0,  5,  9,  13, 15, 18, 20,  25,  30,  35,  40,  50,
                                 53, 60, 70, 80, 90, 100, 106, 120, 140, 158, 200, 211};
  if (index >= 0 && index < 24) return kWeights[index];
  if (index == 30) return -2;
  if (index == 31) return -3;
  return -1;
}

std::wstring hexOf(uint64_t value) {
  wchar_t text[24];
  std::swprintf(text, 24, L"%llX", static_cast<unsigned long long>(value));
  return text;
}

struct TableKind {
  unsigned controlType, recordType;
  const wchar_t* name;
};
constexpr TableKind kTables[] = {
    {0x40, 0x41, L"VPORT"}, {0x38, 0x39, L"LTYPE"}, {0x32, 0x33, L"LAYER"}, {0x34, 0x35, L"STYLE"},
    {0x3C, 0x3D, L"VIEW"},  {0x3E, 0x3F, L"UCS"},   {0x42, 0x43, L"APPID"}, {0x44, 0x45, L"DIMSTYLE"},
    {0x30, 0x31, L"BLOCK_RECORD"},
};

class DwgToDxf {
 public:
  DwgToDxf(const OdDwgFile& file, OdDxfReadReport& report) : m_file(file), m_report(report) {
    m_r2000 = file.isR2000();
    m_cp = file.codePage();
    m_w = OdDxfTagWriter(OdDxf::stringCodePageOf(OdString(file.versionName().c_str()).c_str(), odDxfNameOfCodePage(m_cp).c_str()),
                         OdDxfTagWriter::LineEnding::kLf);
  }
  std::string convert();

 private:
  using Decoder = std::function<bool(const OdDwgObject&, OdDwgBitReader&, OdDwgBitReader&)>;

  OdString nameOf(uint64_t handle) const {
    const OdDwgObject* o = m_file.find(handle);
    return o ? o->recordName : OdString();
  }
  void notRead(const OdDwgObject& o) { ++m_notRead[o.dxfName.toUtf8()]; }
  void failed(const OdDwgObject& o, const OdDwgDecodeError& e) {
    m_report.repairs.push_back(OdString().format(L"offset 0x%llX: object %ls (%ls) could not be decoded (%hs at bit %zu); dropped",
                                                 static_cast<unsigned long long>(o.offset), hexOf(o.handle).c_str(),
                                                 o.dxfName.c_str(), e.what(), e.bit));
  }
  // Writes one object; false when its type is not read yet or decoding failed.
  bool emit(const OdDwgObject& o);
  void commonEntity(const OdDwgObject& o, uint64_t owner);
  void commonRecord(const OdDwgObject& o, const wchar_t* subclass);
  void xdata(const OdDwgObject& o);
  // Handle, reactors, extension dictionary and owner (only references to objects that are written).
  void header(const OdDwgObject& o, uint64_t owner);
  bool isWrittenAny(uint64_t handle) const {
    const OdDwgObject* o = m_file.find(handle);
    return o && o->decoded && (o->entity || isWritten(handle) || (o->type >= 0x30 && o->type <= 0x47));
  }
  void entityList(uint64_t block);
  // Objects of the OBJECTS section read so far: dictionaries and placeholders.
  bool isWritten(uint64_t handle) const {
    const OdDwgObject* o = m_file.find(handle);
    return o && o->decoded && (o->dxfName == L"DICTIONARY" || o->dxfName == L"ACDBPLACEHOLDER");
  }
  bool object(const OdDwgObject& o);
  void children(uint64_t parent);

  // Type decoders: `d` is at the type's own data, `h` after the common handles.
  bool line(const OdDwgObject& o, OdDwgBitReader& d);
  bool circleOrArc(const OdDwgObject& o, OdDwgBitReader& d, bool arc);
  bool point(const OdDwgObject& o, OdDwgBitReader& d);
  bool text(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h, int kind);
  bool insert(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h);
  bool lwpolyline(const OdDwgObject& o, OdDwgBitReader& d);
  void solid(OdDwgBitReader& d, const wchar_t* subclass);
  void polyline(OdDwgBitReader& d, bool is3d);
  void vertex(OdDwgBitReader& d, bool is3d);
  void meshPolyline(OdDwgBitReader& d, bool polyface);
  void meshVertex(OdDwgBitReader& d, unsigned type);
  double m_polylineWidths[2] = {0, 0};  // the default widths of the polyline whose vertices are read
  void face(OdDwgBitReader& d);
  void ellipse(OdDwgBitReader& d);
  void rayOrXline(OdDwgBitReader& d, const wchar_t* subclass);
  void mtext(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h);
  void point3(OdDwgBitReader& d, double xyz[3]) { for (int i = 0; i < 3; ++i) xyz[i] = d.readBD(); }
  void record(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h);

  void extrusion(OdDwgBitReader& d, int code = 210) {
    double e[3];
    d.readBE(m_r2000, e);
    if (e[0] != 0 || e[1] != 0 || e[2] != 1) m_w.writePoint(code, e[0], e[1], e[2]);
  }
  void degrees(int code, double radians) { m_w.writeDouble(code, odRadiansToDegrees(radians)); }

  // The groups of one object go to m_w; they join the output only when the
  // whole object was decoded.
  void flush() { m_out += m_w.release(); }
  struct BlockInfo {
    int flags = 0;
    double base[3] = {0, 0, 0};
    OdString path, description;
    uint64_t first = 0, last = 0;  // the block's first and last entity
  };

  const OdDwgFile& m_file;
  OdDxfReadReport& m_report;
  OdDxfTagWriter m_w;
  std::string m_out;
  std::map<uint64_t, BlockInfo> m_blocks;
  bool m_r2000 = true;
  int m_cp = 1252;
  std::map<uint64_t, std::vector<const OdDwgObject*>> m_owned;  // entities by the block or entity that owns them
  std::map<std::string, int> m_notRead;
  uint64_t m_modelSpace = 0, m_paperSpace = 0;
};

void DwgToDxf::header(const OdDwgObject& o, uint64_t owner) {
  m_w.writeHandle(5, o.handle);
  bool any = false;
  for (uint64_t reactor : o.reactors) {
    if (!isWrittenAny(reactor)) continue;
    if (!any) m_w.writeString(102, L"{ACAD_REACTORS");
    any = true;
    m_w.writeHandle(330, reactor);
  }
  if (any) m_w.writeString(102, L"}");
  if (o.xdictionary && isWritten(o.xdictionary)) {
    m_w.writeString(102, L"{ACAD_XDICTIONARY");
    m_w.writeHandle(360, o.xdictionary);
    m_w.writeString(102, L"}");
  }
  m_w.writeHandle(330, owner);
}

void DwgToDxf::commonEntity(const OdDwgObject& o, uint64_t owner) {
  header(o, owner);
  m_w.writeString(100, L"AcDbEntity");
  m_w.writeString(8, nameOf(o.layer).isEmpty() ? OdString(L"0") : nameOf(o.layer));
  if (o.linetypeFlags == 1) m_w.writeString(6, L"ByBlock");
  else if (o.linetypeFlags == 2) m_w.writeString(6, L"Continuous");
  else if (o.linetype && !nameOf(o.linetype).isEmpty() && nameOf(o.linetype).iCompare(L"ByLayer") != 0)
    m_w.writeString(6, nameOf(o.linetype));
  if (o.color != 256) m_w.writeInt(62, o.color);
  if (m_r2000 && lineWeightOf(o.lineWeight) != -1) m_w.writeInt(370, lineWeightOf(o.lineWeight));
  if (o.linetypeScale != 1.0) m_w.writeDouble(48, o.linetypeScale);
  if (o.invisible) m_w.writeInt(60, o.invisible);
}

void DwgToDxf::commonRecord(const OdDwgObject& o, const wchar_t* subclass) {
  header(o, o.owner);
  m_w.writeString(100, L"AcDbSymbolTableRecord");
  m_w.writeString(100, subclass);
  m_w.writeString(2, o.recordName);
}

void DwgToDxf::xdata(const OdDwgObject& o) {
  // Items of each application: a type byte and its value.
  for (const OdDwgXData& x : o.xdata) {
    OdString app = nameOf(x.appHandle);
    if (app.isEmpty()) continue;
    OdDwgBitReader r(x.bytes.data(), x.bytes.size());
    std::vector<OdDxfTag> items;
    try {
      while (!r.atEnd()) {
        const uint8_t type = r.readRC();
        switch (type) {
          case 0: {
            const uint8_t length = r.readRC();
            r.readRS();  // the string's code page: the drawing's
            std::string bytes(length, '\0');
            for (auto& c : bytes) c = static_cast<char>(r.readRC());
            items.push_back(OdDxfTag::str(1000, OdString(odDecodeCodePage(bytes, m_cp).c_str())));
            break;
          }
          case 2: items.push_back(OdDxfTag::str(1002, r.readRC() ? L"}" : L"{")); break;
          case 3: case 5: {
            uint64_t handle = 0;
            for (int i = 0; i < 8; ++i) handle = (handle << 8) | r.readRC();
            if (type == 3) items.push_back(OdDxfTag::str(1003, nameOf(handle)));
            else items.push_back(OdDxfTag::handle(1005, handle));
            break;
          }
          case 4: {
            OdBinaryData bytes(r.readRC());
            for (auto& b : bytes) b = r.readRC();
            items.push_back(OdDxfTag::binary(1004, bytes));
            break;
          }
          case 10: case 11: case 12: case 13: {
            const double x = r.readRD(), y = r.readRD(), z = r.readRD();
            items.push_back(OdDxfTag::point(1000 + type, x, y, z));
            break;
          }
          case 40: case 41: case 42: items.push_back(OdDxfTag::real(1000 + type, r.readRD())); break;
          case 70: items.push_back(OdDxfTag::integer(1070, static_cast<int16_t>(r.readRS()))); break;
          case 71: items.push_back(OdDxfTag::integer(1071, static_cast<int32_t>(r.readRL()))); break;
                    default: throw OdDwgDecodeError("unknown extended data item " + std::to_string(type), r.bitPosition());
        }
      }
    } catch (const OdDwgDecodeError& e) {
      failed(o, e);
      continue;
    }
    m_w.writeString(1001, app);
    for (const OdDxfTag& tag : items) m_w.writeTag(tag);
  }
}

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
  const size_t room = o.size * 8;
  if (points < 0 || bulges < 0 || widths < 0 || static_cast<size_t>(points) > room || static_cast<size_t>(bulges) > room ||
      static_cast<size_t>(widths) > room) {
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
  const double width = d.readBD(), height = d.readBD();
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

void DwgToDxf::record(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h) {
  d.readTV(m_cp);  // the name, already known
  d.readBit();  // referenced: a flag of the file, not kept by a drawing
  d.readBS();  // xref index
  const bool dependent = d.readBit();
  const int common = dependent ? 16 : 0;
  h.readH(o.handle);  // the external reference's block (or a null handle)
  switch (o.type) {
    case 0x31: {
      BlockInfo& info = m_blocks[o.handle];
      info.flags = common;
      if (d.readBit()) info.flags |= 1;
      if (d.readBit()) info.flags |= 2;
      if (d.readBit()) info.flags |= 4;
      if (d.readBit()) info.flags |= 8;
      if (m_r2000) d.readBit();  // loaded
      for (double& v : info.base) v = d.readBD();
      info.path = d.readTV(m_cp);
      size_t inserts = 0;
      OdBinaryData preview;
      if (m_r2000) {
        while (d.readRC() != 0) ++inserts;  // one non-zero byte per insert
        info.description = d.readTV(m_cp);
        const int32_t size = d.readBL();
        if (size < 0 || static_cast<size_t>(size) > o.size) throw OdDwgDecodeError("implausible preview size", d.bitPosition());
        preview.resize(static_cast<size_t>(size));
        for (auto& b : preview) b = d.readRC();
      }
      // The handles after the (null) external reference: BLOCK, first and
      // last entity unless an external reference, ENDBLK, then the inserts.
      h.readH(o.handle);
      if (!(info.flags & 12)) {
        info.first = h.readH(o.handle).value;
        info.last = h.readH(o.handle).value;
      }
      h.readH(o.handle);
      std::vector<uint64_t> references;
      for (size_t i = 0; i < inserts; ++i) references.push_back(h.readH(o.handle).value);
      commonRecord(o, L"AcDbBlockTableRecord");
      for (size_t at = 0; at < preview.size(); at += 127) {
        OdBinaryData chunk(preview.begin() + static_cast<std::ptrdiff_t>(at),
                           preview.begin() + static_cast<std::ptrdiff_t>(std::min(preview.size(), at + 127)));
        m_w.writeBinary(310, chunk);
      }
      if (!references.empty()) {
        m_w.writeString(102, L"{BLKREFS");
        for (uint64_t r : references) m_w.writeHandle(331, r);
        m_w.writeString(102, L"}");
      }
      return;
    }
    case 0x33: {
      int flags = common;
      bool off = false;
      int lineWeight = -3;
      bool plot = true;
      if (m_r2000) {
        const int bits = static_cast<uint16_t>(d.readBS());
        if (bits & 1) flags |= 1;
        off = bits & 2;
        if (bits & 4) flags |= 2;
        if (bits & 8) flags |= 4;
        plot = bits & 16;
        lineWeight = lineWeightOf((bits & 0x3E0) >> 5);
      } else {
        if (d.readBit()) flags |= 1;
        d.readBit();
        if (d.readBit()) flags |= 2;
        if (d.readBit()) flags |= 4;
      }
      int color = d.readCMC();
      if (color < 0) { off = true; color = -color; }
      const uint64_t plotStyle = m_r2000 ? h.readH(o.handle).value : 0;
      const OdString linetype = nameOf(h.readH(o.handle).value);
      commonRecord(o, L"AcDbLayerTableRecord");
      m_w.writeInt(70, flags);
      m_w.writeInt(62, off ? -color : color);
      m_w.writeString(6, linetype.isEmpty() ? OdString(L"Continuous") : linetype);
      if (m_r2000) {
        if (!plot) m_w.writeInt(290, 0);
        m_w.writeInt(370, lineWeight);
        if (isWritten(plotStyle)) m_w.writeHandle(390, plotStyle);
      }
      return;
    }
    case 0x35: {
      int flags = common;
      if (d.readBit()) flags |= 4;
      if (d.readBit()) flags |= 1;
      const double fixed = d.readBD(), width = d.readBD(), oblique = d.readBD();
      const int generation = d.readRC();
      const double last = d.readBD();
      const OdString font = d.readTV(m_cp), bigFont = d.readTV(m_cp);
      commonRecord(o, L"AcDbTextStyleTableRecord");
      m_w.writeInt(70, flags);
      m_w.writeDouble(40, fixed);
      m_w.writeDouble(41, width);
      degrees(50, oblique);
      m_w.writeInt(71, generation);
      m_w.writeDouble(42, last);
      m_w.writeString(3, font);
      m_w.writeString(4, bigFont);
      return;
    }
    case 0x39: {
      const OdString description = d.readTV(m_cp);
      const double length = d.readBD();
      const int alignment = d.readRC();
      const int dashes = d.readRC();
      struct Dash {
        double length, x, y, scale, rotation;
        int shape, flags;
      };
      std::vector<Dash> list(static_cast<size_t>(dashes));
      for (Dash& dash : list) {
        dash.length = d.readBD();
        dash.shape = d.readBS();
        dash.x = d.readRD();
        dash.y = d.readRD();
        dash.scale = d.readBD();
        dash.rotation = d.readBD();
        dash.flags = d.readBS();
      }
      // The texts of text dashes: 256 bytes, each text at its dash's shape number.
      char area[257] = {};
      for (int i = 0; i < 256; ++i) area[i] = static_cast<char>(d.readRC());
      commonRecord(o, L"AcDbLinetypeTableRecord");
      m_w.writeInt(70, common);
      m_w.writeString(3, description);
      m_w.writeInt(72, alignment);
      m_w.writeInt(73, dashes);
      m_w.writeDouble(40, length);
      for (const Dash& dash : list) {
        const uint64_t style = h.readH(o.handle).value;
        m_w.writeDouble(49, dash.length);
        m_w.writeInt(74, dash.flags);
        if (!dash.flags) continue;
        m_w.writeInt(75, (dash.flags & 2) ? 0 : dash.shape);
        if (style) m_w.writeHandle(340, style);
        m_w.writeDouble(46, dash.scale);
        degrees(50, dash.rotation);
        m_w.writeDouble(44, dash.x);
        m_w.writeDouble(45, dash.y);
        if ((dash.flags & 2) && dash.shape >= 0 && dash.shape < 256)
          m_w.writeString(9, odDecodeCodePage(std::string(area + dash.shape), m_cp));
      }
      return;
    }
    case 0x43:
      commonRecord(o, L"AcDbRegAppTableRecord");
      m_w.writeInt(70, common);
      return;
    default:
      throw OdDwgDecodeError("record type not read yet", 0);
  }
}

bool DwgToDxf::emit(const OdDwgObject& o) {
  if (!o.decoded) return false;
  static const std::map<unsigned, const wchar_t*> kEntities = {
      {0x01, L"TEXT"}, {0x02, L"ATTRIB"}, {0x03, L"ATTDEF"}, {0x06, L"SEQEND"}, {0x07, L"INSERT"},
      {0x11, L"ARC"},  {0x12, L"CIRCLE"}, {0x13, L"LINE"},   {0x1B, L"POINT"},  {0x4D, L"LWPOLYLINE"},
      {0x1C, L"3DFACE"}, {0x1F, L"SOLID"}, {0x20, L"TRACE"}, {0x23, L"ELLIPSE"}, {0x28, L"RAY"}, {0x29, L"XLINE"},
      {0x2C, L"MTEXT"}, {0x0F, L"POLYLINE"}, {0x10, L"POLYLINE"}, {0x0A, L"VERTEX"}, {0x0B, L"VERTEX"},
      {0x1D, L"POLYLINE"}, {0x1E, L"POLYLINE"}, {0x0C, L"VERTEX"}, {0x0D, L"VERTEX"}, {0x0E, L"VERTEX"}};
  // R13 and R14 keep light polylines as a class of their own.
  const unsigned type = o.type >= 500 && o.dxfName == L"LWPOLYLINE" ? 0x4D : o.type;
  auto known = kEntities.find(type);
  if (known == kEntities.end()) {
    notRead(o);
    return false;
  }
  OdDwgBitReader d = m_file.objectReader(o), h = m_file.objectReader(o);
  try {
    d.seekBit(o.dataBit);
    h.seekBit(o.handleBit);
    m_w.writeString(0, known->second);
    const uint64_t owner = o.entMode == 2 ? m_modelSpace : o.entMode == 1 ? m_paperSpace : o.owner;
    commonEntity(o, owner);
    switch (type) {
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
    }
    xdata(o);
  } catch (const OdDwgDecodeError& e) {
    m_w.release();
    failed(o, e);
    return false;
  }
  flush();
  return true;
}

bool DwgToDxf::object(const OdDwgObject& o) {
  OdDwgBitReader d = m_file.objectReader(o), h = m_file.objectReader(o);
  try {
    d.seekBit(o.dataBit);
    h.seekBit(o.handleBit);
    if (o.dxfName == L"ACDBPLACEHOLDER") {
      m_w.writeString(0, L"ACDBPLACEHOLDER");
      header(o, o.owner);
    } else {
      // Item count, (R14) a byte, (R2000) cloning and hard-owner flags, the names; then one handle per item.
      const int32_t items = d.readBL();
      if (items < 0 || static_cast<size_t>(items) > o.size) throw OdDwgDecodeError("implausible item count", d.bitPosition());
      int cloning = 1;
      if (m_file.versionName() == "AC1014") d.readRC();
      if (m_r2000) {
        cloning = d.readBS();
        d.readRC();  // said to be the hard-owner flag, but set where the DXF twins show none: not used
      }
      std::vector<OdString> names;
      for (int32_t i = 0; i < items; ++i) names.push_back(d.readTV(m_cp));
      m_w.writeString(0, L"DICTIONARY");
      header(o, o.owner);
      m_w.writeString(100, L"AcDbDictionary");
      m_w.writeInt(281, cloning);
      for (int32_t i = 0; i < items; ++i) {
        const OdDwgHandleRef item = h.readH(o.handle);
        // Entries whose objects are not read yet are left out with them.
        if (!isWritten(item.value)) continue;
        m_w.writeString(3, names[static_cast<size_t>(i)]);
        m_w.writeHandle(item.code == 2 ? 360 : 350, item.value);
      }
    }
    xdata(o);
  } catch (const OdDwgDecodeError& e) {
    m_w.release();
    failed(o, e);
    return false;
  }
  flush();
  return true;
}

void DwgToDxf::children(uint64_t parent) {
  // Attributes or vertices, then the sequence end.
  const OdDwgObject* end = nullptr;
  for (const OdDwgObject* child : m_owned[parent]) {
    if (child->type == 0x06) end = child;
    else if (child->type == 0x02 || (child->type >= 0x0A && child->type <= 0x0E)) emit(*child);
  }
  if (end) emit(*end);
}

void DwgToDxf::entityList(uint64_t block) {
  // Drawing order: from the block's first entity along the next links to
  // its last; entities the chain misses follow in handle order.
  std::vector<const OdDwgObject*> ordered;
  std::vector<const OdDwgObject*>& owned = m_owned[block];
  const BlockInfo& info = m_blocks[block];
  std::set<uint64_t> inBlock, taken;
  for (const OdDwgObject* o : owned) inBlock.insert(o->handle);
  for (uint64_t at = info.first; at && inBlock.count(at) && !taken.count(at);) {
    const OdDwgObject* o = m_file.find(at);
    ordered.push_back(o);
    taken.insert(at);
    if (at == info.last) break;
    at = o->nextEntity;
  }
  for (const OdDwgObject* o : owned) {
    if (!taken.count(o->handle)) ordered.push_back(o);
  }
  for (const OdDwgObject* o : ordered) {
    if (o->type == 0x04 || o->type == 0x05 || o->type == 0x02 || o->type == 0x06) continue;
    if (o->dxfName == L"VERTEX") continue;
    if (emit(*o) && (o->type == 0x07 || o->type == 0x0F || o->type == 0x10 || o->type == 0x1D || o->type == 0x1E)) {
      children(o->handle);
    }
  }
}

std::string DwgToDxf::convert() {
  uint64_t seed = 1;
  for (const OdDwgObject& o : m_file.objects()) {
    seed = std::max(seed, o.handle + 1);
    if (o.type == 0x31 && o.recordName.iCompare(L"*Model_Space") == 0) m_modelSpace = o.handle;
    if (o.type == 0x31 && o.recordName.iCompare(L"*Paper_Space") == 0) m_paperSpace = o.handle;
  }
  for (const OdDwgObject& o : m_file.objects()) {
    if (!o.entity || !o.decoded) continue;
    m_owned[o.entMode == 2 ? m_modelSpace : o.entMode == 1 ? m_paperSpace : o.owner].push_back(&o);
  }

  m_w.writeString(0, L"SECTION");
  m_w.writeString(2, L"HEADER");
  m_w.writeString(9, L"$ACADVER");
  m_w.writeString(1, OdString(m_file.versionName().c_str()));
  m_w.writeString(9, L"$DWGCODEPAGE");
  m_w.writeString(3, odDxfNameOfCodePage(m_cp));
  const OdDwgHeader& header = m_file.header();
  m_w.writeString(9, L"$HANDSEED");
  m_w.writeHandle(5, std::max(seed, header.handseed));
  if (header.read) {
    // Variables that DXF does not carry are left out.
    for (const auto& [name, value] : header.ints) {
      if (std::wstring_view(name) == L"$TEXTQLTY") continue;
      m_w.writeString(9, name);
      m_w.writeInt(70, value);
    }
    for (const auto& [name, value] : header.reals) {
      m_w.writeString(9, name);
      if (std::wstring_view(name) == L"$ANGBASE") degrees(50, value);
      else m_w.writeDouble(40, value);
    }
    m_w.writeString(9, L"$CECOLOR");
    m_w.writeInt(62, header.currentColor);
    const std::pair<const wchar_t*, uint64_t> names[] = {
        {L"$CLAYER", header.currentLayer}, {L"$TEXTSTYLE", header.currentTextStyle}, {L"$CELTYPE", header.currentLinetype}};
    const int codes[] = {8, 7, 6};
    for (int i = 0; i < 3; ++i) {
      if (nameOf(names[i].second).isEmpty()) continue;
      m_w.writeString(9, names[i].first);
      m_w.writeString(codes[i], nameOf(names[i].second));
    }
  }
  m_w.writeString(0, L"ENDSEC");
  m_w.writeString(0, L"SECTION");
  m_w.writeString(2, L"TABLES");
  flush();
  for (const TableKind& kind : kTables) {
    const OdDwgObject* control = nullptr;
    for (const OdDwgObject& o : m_file.objects()) {
      if (o.type == kind.controlType && o.decoded) { control = &o; break; }
    }
    if (!control) continue;
    m_w.writeString(0, L"TABLE");
    m_w.writeString(2, kind.name);
    m_w.writeHandle(5, control->handle);
    m_w.writeHandle(330, 0);
    m_w.writeString(100, L"AcDbSymbolTable");
    flush();
    // The records are those the table lists (the spaces and ByLayer / ByBlock
    // linetypes are listed apart); others are not part of the drawing.
    std::vector<uint64_t> listed;
    try {
      OdDwgBitReader cd = m_file.objectReader(*control), ch = m_file.objectReader(*control);
      cd.seekBit(control->dataBit);
      ch.seekBit(control->handleBit);
      const int32_t count = cd.readBL();
      if (count < 0 || static_cast<size_t>(count) > control->size) throw OdDwgDecodeError("implausible record count", cd.bitPosition());
      const int extra = kind.controlType == 0x30 || kind.controlType == 0x38 ? 2 : 0;
      for (int32_t i = 0; i < count + extra; ++i) listed.push_back(ch.readH(control->handle).value);
    } catch (const OdDwgDecodeError& e) {
      failed(*control, e);
    }
    std::sort(listed.begin(), listed.end());
    listed.erase(std::unique(listed.begin(), listed.end()), listed.end());
    for (const OdDwgObject& o : m_file.objects()) {
      if (o.type != kind.recordType || !o.decoded) continue;
      if (!std::binary_search(listed.begin(), listed.end(), o.handle)) {
        m_report.repairs.push_back(OdString().format(L"%ls record %ls is not listed in its table; left out", kind.name, hexOf(o.handle).c_str()));
        continue;
      }
      OdDwgBitReader d = m_file.objectReader(o), h = m_file.objectReader(o);
      try {
        if (o.type != 0x31 && o.type != 0x33 && o.type != 0x35 && o.type != 0x39 && o.type != 0x43) {
          notRead(o);
          continue;
        }
        d.seekBit(o.dataBit);
        h.seekBit(o.handleBit);
        m_w.writeString(0, kind.name);
        record(o, d, h);
        xdata(o);
        flush();
      } catch (const OdDwgDecodeError& e) {
        m_w.release();
        failed(o, e);
      }
    }
    m_w.writeString(0, L"ENDTAB");
  }
  m_w.writeString(0, L"ENDSEC");
  m_w.writeString(0, L"SECTION");
  m_w.writeString(2, L"BLOCKS");
  flush();
  for (const OdDwgObject& record : m_file.objects()) {
    if (record.type != 0x31 || !m_blocks.count(record.handle)) continue;
    const BlockInfo& info = m_blocks[record.handle];
    const OdDwgObject *begin = nullptr, *end = nullptr;
    for (const OdDwgObject* o : m_owned[record.handle]) {
      if (o->type == 0x04) begin = o;
      if (o->type == 0x05) end = o;
    }
    m_w.writeString(0, L"BLOCK");
    if (begin) commonEntity(*begin, record.handle);
    m_w.writeString(100, L"AcDbBlockBegin");
    m_w.writeString(2, record.recordName);
    m_w.writeInt(70, info.flags);
    m_w.writePoint(10, info.base[0], info.base[1], info.base[2]);
    m_w.writeString(3, record.recordName);
    m_w.writeString(1, info.path);
    if (!info.description.isEmpty()) m_w.writeString(4, info.description);
    flush();
    entityList(record.handle);
    m_w.writeString(0, L"ENDBLK");
    if (end) commonEntity(*end, record.handle);
    m_w.writeString(100, L"AcDbBlockEnd");
    flush();
  }
  m_w.writeString(0, L"ENDSEC");
  // Objects: the named-object dictionary (the one without owner) first.
  m_w.writeString(0, L"SECTION");
  m_w.writeString(2, L"OBJECTS");
  flush();
  for (int pass = 0; pass < 2; ++pass) {
    for (const OdDwgObject& o : m_file.objects()) {
      if (!isWritten(o.handle) || (pass == 0) != (o.type == 0x2A && o.owner == 0)) continue;
      object(o);
    }
  }
  for (const OdDwgObject& o : m_file.objects()) {
    if (o.decoded && !o.entity && !isWritten(o.handle) && !(o.type >= 0x30 && o.type <= 0x47)) notRead(o);
  }
  m_w.writeString(0, L"ENDSEC");
  m_w.writeString(0, L"EOF");
  flush();

  for (const auto& [name, count] : m_notRead) {
    m_report.repairs.push_back(OdString().format(L"%d %hs object%ls not read yet; left out", count, name.c_str(), count == 1 ? L"" : L"s"));
  }
  return std::move(m_out);
}

}  // namespace

bool odIsDwgData(std::string_view data) {
  return data.size() >= 6 && data.substr(0, 4) == "AC10" && data[4] >= '0' && data[4] <= '9';
}

OdDbDatabasePtr odDwgReadBuffer(std::string_view data, OdDxfReadReport* report) {
  OdDxfReadReport local;
  OdDxfReadReport& out = report ? *report : local;
  OdDwgFile file;
  if (!file.open(std::vector<uint8_t>(data.begin(), data.end()))) {
    const std::string why = file.problems().empty() ? "unreadable" : file.problems().front();
    const bool version = why.find("DWG version") != std::string::npos;
    throw OdError(version ? eInvalidDwgVersion : eDwgNotRecoverable, OdString(why.c_str()));
  }
  std::vector<OdString> problems;
  for (const std::string& p : file.problems()) problems.push_back(OdString(p.c_str()));
  DwgToDxf converter(file, out);
  const std::string dxf = converter.convert();
  std::vector<OdString> conversion = std::move(out.repairs);
  out.repairs.clear();
  OdDbDatabasePtr db = odDxfReadBuffer(dxf, &out);
  // What the file itself lacked comes first, then what was left out, then the DXF-level repairs.
  std::vector<OdString> all = std::move(problems);
  all.insert(all.end(), conversion.begin(), conversion.end());
  all.insert(all.end(), out.repairs.begin(), out.repairs.end());
  out.repairs = std::move(all);
  out.versionName = OdString(file.versionName().c_str());
  return db;
}
