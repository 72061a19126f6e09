// The converter of a DWG file's objects into the DXF groups of their classes,
// shared by the units that decode entities, table records and objects.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "DbModelerGeometry.h"
#include "DbSchema.h"
#include "DwgRead.h"
#include "DxfNames.h"
#include "OdCodePage.h"
#include "dwg/DwgFile.h"
#include "dwg/DwgModelerBinary.h"
#include "dxf/DxfTagStream.h"
#include "dxf/DxfStructure.h"

namespace oddwg {


// Lineweights of R2000 files, by their index; 29-31 are ByLayer, ByBlock, default.
inline int lineWeightOf(int index) {
  static const int kWeights[] = {0,  5,  9,  13, 15, 18, 20,  25,  30,  35,  40,  50,
                                 53, 60, 70, 80, 90, 100, 106, 120, 140, 158, 200, 211};
  if (index >= 0 && index < 24) return kWeights[index];
  if (index == 30) return -2;
  if (index == 31) return -3;
  return -1;
}

inline std::wstring hexOf(uint64_t value) {
  wchar_t text[24];
  std::swprintf(text, 24, L"%llX", static_cast<unsigned long long>(value));
  return text;
}

// The tables by their DWG object types; their names are the platform's.
struct TableKind {
  unsigned controlType, recordType;
  OdDbNameTable table;
  const wchar_t* name() const { return odDxfTableKind(table)->name; }
};
inline constexpr TableKind kTables[] = {
    {0x40, 0x41, OdDbNameTable::kVport}, {0x38, 0x39, OdDbNameTable::kLinetype}, {0x32, 0x33, OdDbNameTable::kLayer},
    {0x34, 0x35, OdDbNameTable::kTextStyle}, {0x3C, 0x3D, OdDbNameTable::kView}, {0x3E, 0x3F, OdDbNameTable::kUcs},
    {0x42, 0x43, OdDbNameTable::kRegApp}, {0x44, 0x45, OdDbNameTable::kDimStyle}, {0x30, 0x31, OdDbNameTable::kBlock},
};

class DwgToDxf {
 public:
  DwgToDxf(const OdDwgFile& file, OdDxfReadReport& report) : m_file(file), m_report(report) {
    m_r2000 = file.isR2000();
    m_cp = file.codePage();
  }
  // The drawing as the DXF groups of its objects, held as values (no text).
  OdDxfTagStream convert();
  // Values that convert() leaves out of the groups, where the DXF reader
  // would only copy them into the object: built here as a whole, for the
  // objects of these handles once they are read (odDbXrecordAdoptData,
  // odDbModelerGeometryAdoptLines).
  struct Adopted {
    std::vector<std::pair<uint64_t, OdDxfTagList>> xrecordItems;
    std::vector<std::pair<uint64_t, std::vector<OdDbModelerGeometry::DataLine>>> modelerLines;
  };
  Adopted takeAdopted() { return std::move(m_adopted); }


 private:
  using Decoder = std::function<bool(const OdDwgObject&, OdDwgBitReader&, OdDwgBitReader&)>;

  // A dictionary's entries, name and object, in the file's order
  // (`cloning` receives its cloning flag from R2000 on).
  std::vector<std::pair<OdString, OdDwgHandleRef>> dictionaryEntries(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h,
                                                                     int& cloning) const;
  // The name a header variable gives for the object it refers to.
  OdString headerName(uint64_t handle) const;
  const OdString& nameOf(uint64_t handle) const {
    static const OdString kNone;
    const OdDwgObject* o = m_file.find(handle);
    return o ? o->recordName : kNone;
  }
  void notRead(const OdDwgObject& o) { ++m_notRead[o.dxfName.toUtf8()]; }
  // An object whose type has no decoder here and no class in the platform is
  // kept as a proxy: its class name, its common data and all its bytes.
  bool isProxy(const OdDwgObject& o) const;
  void proxyData(const OdDwgObject& o);
  const OdDwgClass* storedProxyClass(const OdDwgObject& o) const;
  // The CLASSES section: the file's classes, then the built-in types kept as proxies.
  void classes();
  std::map<unsigned, int> m_proxyClasses;  // built-in type kept as a proxy: its class number
  // Objects of the OBJECTS section decoded here (the rest are proxies or left out).
  static bool objectDecoded(const OdDwgObject& o);
  void failed(const OdDwgObject& o, const OdDwgDecodeError& e) {
    // Texts that may hold bytes of the file go in as wide strings (%hs fails outside ASCII).
    const OdString section(m_file.objectsSection().empty() ? "" : (m_file.objectsSection() + " ").c_str());
    m_report.repairs.push_back(OdString().format(L"%lsoffset 0x%llX: object %ls (%ls) could not be decoded (%ls at bit %zu); dropped",
                                                 section.c_str(), static_cast<unsigned long long>(o.offset), hexOf(o.handle).c_str(),
                                                 o.dxfName.c_str(), OdString(e.what()).c_str(), e.bit));
  }
  // Decodes one object with `body`, given readers at its own data and at its
  // remaining handles; its groups and extended data join the output only
  // when all were read. False when the body declined or decoding failed.
  template <class Body>
  bool decodeObject(const OdDwgObject& o, Body&& body) {
    OdDwgBitReader d = m_file.objectReader(o), h = m_file.objectReader(o);
    try {
      d.seekBit(o.dataBit);
      h.seekBit(o.handleBit);
      if (!body(d, h)) {
        discard();
        return false;
      }
      xdata(o);
    } catch (const OdDwgDecodeError& e) {
      discard();
      failed(o, e);
      return false;
    }
    flush();
    return true;
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
  // Objects of the OBJECTS section that are written: those decoded and the proxies.
  bool isWritten(uint64_t handle) const {
    const OdDwgObject* o = m_file.find(handle);
    return o && o->decoded && !o->entity && (objectDecoded(*o) || isProxy(*o));
  }
  bool object(const OdDwgObject& o);
  void xrecord(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h);
  void mlineStyle(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h);
  void layout(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h);
  void sortents(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h);
  void group(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h);
  const std::vector<uint64_t>& linetypes();
  std::vector<uint64_t> m_linetypes;
  bool m_linetypesRead = false;
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
  void image(OdDwgBitReader& d, OdDwgBitReader& h, const OdDwgObject& o, const wchar_t* subclass);
  void point3(OdDwgBitReader& d, double xyz[3]) { for (int i = 0; i < 3; ++i) xyz[i] = d.readBD(); }
  void record(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h);
  void dimStyle(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h, int flags);
  // What view records and viewport records begin with: the view's size,
  // centre, target, direction, twist, lens, clips, mode bits and render mode.
  struct ViewHead {
    double height = 0, width = 0, cx = 0, cy = 0;
    double target[3] = {0, 0, 0}, direction[3] = {0, 0, 1};
    double twist = 0, lens = 0, front = 0, back = 0;
    int mode = 0, render = 0;
  };
  ViewHead viewHead(OdDwgBitReader& d);
  void viewportRecord(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h, int flags);
  void view(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h, int flags);
  void viewportEntity(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h);
  // The lighting of viewports and their records (R2007 on): B default
  // lights, RC lighting type, BD brightness and contrast, CMC ambient
  // colour; written as DXF 292, 282, 141, 142, 63 (and 421 for a true colour).
  struct Lighting {
    bool defaultLights = false;
    int type = 0, ambient = 0;
    uint32_t ambientRgb = 0;
    double brightness = 0, contrast = 0;
  };
  Lighting lighting(OdDwgBitReader& d);
  // The UCS of views and viewport records: DXF 110-112, 79, 146, 345, 346.
  void writeUcs(const double origin[3], const double xAxis[3], const double yAxis[3], int ortho, double elevation,
                uint64_t namedUcs, uint64_t baseUcs);
  void writeLighting(const Lighting& l);
  // DwgCurves.cpp
  void spline(const OdDwgObject& o, OdDwgBitReader& d);
  void mline(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h);
  void modelerGeometry(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h);
  // The modeler data of a region, body or solid that holds it in the
  // binary form (format 2, R2007 on) converted to the text form, once per
  // object; null when the object holds the text form or no data. A failed
  // conversion keeps the entity as a proxy.
  const OdModelerText* modelerBinary(const OdDwgObject& o) const;
  bool modelerKeptAsProxy(const OdDwgObject& o) const {
    const OdModelerText* t = modelerBinary(o);
    return t && !t->ok;
  }
  mutable std::map<uint64_t, std::unique_ptr<OdModelerText>> m_modelerBinary;
  void hatch(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h);
  // DwgDimensions.cpp
  void dimension(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h);
  void leader(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h);

  void extrusion(OdDwgBitReader& d, int code = 210) {
    double e[3];
    d.readBE(m_r2000, e);
    if (e[0] != 0 || e[1] != 0 || e[2] != 1) m_w.writePoint(code, e[0], e[1], e[2]);
  }
  void degrees(int code, double radians) { m_w.writeDouble(code, odRadiansToDegrees(radians)); }

  // The groups of one object go to m_w after those kept; they are kept only
  // when the whole object was decoded, and dropped otherwise.
  void flush() {
    m_kept = m_w.size();
    m_keptAdopted = {m_adopted.xrecordItems.size(), m_adopted.modelerLines.size()};
  }
  void discard() {
    m_w.truncate(m_kept);
    m_adopted.xrecordItems.resize(m_keptAdopted.first);
    m_adopted.modelerLines.resize(m_keptAdopted.second);
  }
  struct BlockInfo {
    int flags = 0;
    double base[3] = {0, 0, 0};
    OdString path, description;
    uint64_t first = 0, last = 0;  // the block's first and last entity (R13-R2000)
    std::vector<uint64_t> entities;  // its entities in drawing order (R2004 on)
  };

  const OdDwgFile& m_file;
  OdDxfReadReport& m_report;
  OdDxfTagStream m_w;
  size_t m_kept = 0;  // bytes of m_w that are output
  OdDxfTagList m_items;  // scratch for an extended record's items
  Adopted m_adopted;
  std::pair<size_t, size_t> m_keptAdopted;  // entries of m_adopted's lists that are output
  std::map<uint64_t, BlockInfo> m_blocks;
  bool m_r2000 = true;
  int m_cp = 1252;
  std::map<uint64_t, std::vector<const OdDwgObject*>> m_owned;  // entities by the block or entity that owns them
  std::map<std::string, int> m_notRead, m_proxies;
  mutable std::map<std::wstring, bool> m_modeled;  // by DXF name: whether the platform has a class for it
  uint64_t m_modelSpace = 0, m_paperSpace = 0;
};

}  // namespace oddwg
