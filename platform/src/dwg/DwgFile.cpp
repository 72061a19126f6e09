#include "dwg/DwgFile.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "OdCodePage.h"
#include "dwg/DwgPagedFile.h"
#include "dwg/DwgR2007File.h"

namespace {

struct BuiltinType {
  unsigned type;
  const wchar_t* name;
  bool entity;
};

// The fixed object types of R13 to R2000 files; types from 500 on are
// numbers of the classes section.
constexpr BuiltinType kBuiltinTypes[] = {
    {0x01, L"TEXT", true}, {0x02, L"ATTRIB", true}, {0x03, L"ATTDEF", true}, {0x04, L"BLOCK", true},
    {0x05, L"ENDBLK", true}, {0x06, L"SEQEND", true}, {0x07, L"INSERT", true}, {0x08, L"INSERT", true},
    {0x0A, L"VERTEX", true}, {0x0B, L"VERTEX", true}, {0x0C, L"VERTEX", true}, {0x0D, L"VERTEX", true},
    {0x0E, L"VERTEX", true}, {0x0F, L"POLYLINE", true}, {0x10, L"POLYLINE", true}, {0x11, L"ARC", true},
    {0x12, L"CIRCLE", true}, {0x13, L"LINE", true}, {0x14, L"DIMENSION", true}, {0x15, L"DIMENSION", true},
    {0x16, L"DIMENSION", true}, {0x17, L"DIMENSION", true}, {0x18, L"DIMENSION", true},
    {0x19, L"DIMENSION", true}, {0x1A, L"DIMENSION", true}, {0x1B, L"POINT", true}, {0x1C, L"3DFACE", true},
    {0x1D, L"POLYLINE", true}, {0x1E, L"POLYLINE", true}, {0x1F, L"SOLID", true}, {0x20, L"TRACE", true},
    {0x21, L"SHAPE", true}, {0x22, L"VIEWPORT", true}, {0x23, L"ELLIPSE", true}, {0x24, L"SPLINE", true},
    {0x25, L"REGION", true}, {0x26, L"3DSOLID", true}, {0x27, L"BODY", true}, {0x28, L"RAY", true},
    {0x29, L"XLINE", true}, {0x2A, L"DICTIONARY", false}, {0x2B, L"OLEFRAME", true}, {0x2C, L"MTEXT", true},
    {0x2D, L"LEADER", true}, {0x2E, L"TOLERANCE", true}, {0x2F, L"MLINE", true},
    {0x30, L"BLOCK_CONTROL", false}, {0x31, L"BLOCK_RECORD", false}, {0x32, L"LAYER_CONTROL", false},
    {0x33, L"LAYER", false}, {0x34, L"STYLE_CONTROL", false}, {0x35, L"STYLE", false},
    {0x38, L"LTYPE_CONTROL", false}, {0x39, L"LTYPE", false}, {0x3C, L"VIEW_CONTROL", false},
    {0x3D, L"VIEW", false}, {0x3E, L"UCS_CONTROL", false}, {0x3F, L"UCS", false},
    {0x40, L"VPORT_CONTROL", false}, {0x41, L"VPORT", false}, {0x42, L"APPID_CONTROL", false},
    {0x43, L"APPID", false}, {0x44, L"DIMSTYLE_CONTROL", false}, {0x45, L"DIMSTYLE", false},
    {0x46, L"VX_CONTROL", false}, {0x47, L"VX_TABLE_RECORD", false}, {0x48, L"GROUP", false},
    {0x49, L"MLINESTYLE", false}, {0x4A, L"OLE2FRAME", true}, {0x4C, L"LONG_TRANSACTION", false},
    {0x4D, L"LWPOLYLINE", true}, {0x4E, L"HATCH", true}, {0x4F, L"XRECORD", false},
    {0x50, L"ACDBPLACEHOLDER", false}, {0x51, L"VBA_PROJECT", false}, {0x52, L"LAYOUT", false},
    {0x1F2, L"ACAD_PROXY_ENTITY", true}, {0x1F3, L"ACAD_PROXY_OBJECT", false},
};

// Looked up for every object: the types below 0x53 by index.
const BuiltinType* builtin(unsigned type) {
  static const auto kByType = [] {
    std::array<const BuiltinType*, 0x53> byType{};
    for (const auto& t : kBuiltinTypes) {
      if (t.type < byType.size()) byType[t.type] = &t;
    }
    return byType;
  }();
  if (type < kByType.size()) return kByType[type];
  for (const auto& t : kBuiltinTypes) {
    if (t.type == type) return &t;
  }
  return nullptr;
}

bool isSymbolTableRecord(unsigned type) {
  return type == 0x31 || type == 0x33 || type == 0x35 || type == 0x39 || type == 0x3D || type == 0x3F ||
         type == 0x41 || type == 0x43 || type == 0x45 || type == 0x47;
}

// The CRC of objects and map pieces: CRC-16 (polynomial 0xA001, bits
// from the lowest), started from 0xC0C1. Eight bytes are taken per step
// (tables[k] is the CRC change of a byte followed by k zero bytes), which
// gives the CRC of the bytes one at a time in an eighth of the steps.
uint16_t crc16(const uint8_t* data, size_t size) {
  static const auto tables = [] {
    std::array<std::array<uint16_t, 256>, 8> t{};
    for (unsigned i = 0; i < 256; ++i) {
      uint16_t c = static_cast<uint16_t>(i);
      for (int k = 0; k < 8; ++k) c = (c & 1) ? static_cast<uint16_t>((c >> 1) ^ 0xA001) : static_cast<uint16_t>(c >> 1);
      t[0][i] = c;
    }
    for (size_t k = 1; k < 8; ++k) {
      for (unsigned i = 0; i < 256; ++i) t[k][i] = static_cast<uint16_t>((t[k - 1][i] >> 8) ^ t[0][t[k - 1][i] & 0xFF]);
    }
    return t;
  }();
  uint16_t crc = 0xC0C1;
  for (; size >= 8; data += 8, size -= 8) {
    const unsigned first = crc ^ (data[0] | (data[1] << 8));
    crc = static_cast<uint16_t>(tables[7][first & 0xFF] ^ tables[6][first >> 8] ^ tables[5][data[2]] ^ tables[4][data[3]] ^
                                tables[3][data[4]] ^ tables[2][data[5]] ^ tables[1][data[6]] ^ tables[0][data[7]]);
  }
  for (; size > 0; ++data, --size) crc = static_cast<uint16_t>((crc >> 8) ^ tables[0][(crc ^ *data) & 0xFF]);
  return crc;
}

std::string hex(uint64_t value) {
  char text[24];
  std::snprintf(text, sizeof text, "%llX", static_cast<unsigned long long>(value));
  return text;
}

}  // namespace

int odDwgCodePage(int number) {
  // The code-page numbers a drawing's header gives, as Windows code pages.
  static const int kPages[] = {
      0,     20127, 28591, 28592, 28593, 28594, 28595, 28596, 28597, 28598, 28599, 437,  850,  852, 855,
      857,   860,   861,   863,   864,   865,   869,   932,   10000, 950,   949,   1361, 866,  1250, 1251,
      1252,  936,   1253,  1254,  1255,  1256,  1257,  874,   932,   936,   949,   950,  1361, 1200, 1258};
  if (number <= 0 || number >= static_cast<int>(sizeof kPages / sizeof kPages[0])) return 1252;
  const int page = kPages[number];
  return odIsCodePageSupported(page) ? page : 1252;
}

const wchar_t* OdDwgFile::builtinTypeName(unsigned type) {
  const BuiltinType* t = builtin(type);
  return t ? t->name : L"";
}

bool OdDwgFile::builtinIsEntity(unsigned type) {
  const BuiltinType* t = builtin(type);
  return t && t->entity;
}

const OdDwgObject* OdDwgFile::find(uint64_t handle) const {
  auto it = m_byHandle.find(handle);
  return it == m_byHandle.end() ? nullptr : &m_objects[it->second];
}

void OdDwgFile::problem(size_t offset, const std::string& what) {
  m_problems.push_back((m_section.empty() ? "" : m_section + " ") + "offset 0x" + hex(offset) + ": " + what);
}

int OdDwgFile::readCMC(OdDwgBitReader& r, uint32_t* rgbOut) const {
  int index = r.readBS();
  if (!atLeast(kDwgR2004)) return index;
  const uint32_t rgb = static_cast<uint32_t>(r.readBL());
  if (rgbOut) *rgbOut = rgb;
  const uint8_t flags = r.readRC();
  if (flags & 1) r.readTV(m_codePage);  // colour name
  if (flags & 2) r.readTV(m_codePage);  // colour book name
  // The high byte of the RGB value: 0xC0 ByLayer, 0xC1 ByBlock, 0xC3 an
  // index in the low byte, 0xC2 a true colour (the index then stands beside it).
  switch (rgb >> 24) {
    case 0xC0: return 256;
    case 0xC1: return 0;
    case 0xC3: return index ? index : static_cast<int>(rgb & 0xFF);
    default: return index;
  }
}

bool OdDwgFile::open(std::vector<uint8_t> data) {
  m_data = std::move(data);
  if (m_data.size() < 0x19 || m_data[0] != 'A' || m_data[1] != 'C') {
    problem(0, "not a DWG file");
    return false;
  }
  m_version.assign(reinterpret_cast<const char*>(m_data.data()), 6);
  m_maintenance = m_data[0x0B];
  static const std::pair<const char*, OdDwgVersion> kVersions[] = {
      {"AC1012", kDwgR13},   {"AC1014", kDwgR14},   {"AC1015", kDwgR2000}, {"AC1018", kDwgR2004},
      {"AC1021", kDwgR2007}, {"AC1024", kDwgR2010}, {"AC1027", kDwgR2013}, {"AC1032", kDwgR2018}};
  bool known = false;
  for (const auto& [name, number] : kVersions) {
    if (m_version == name) { m_versionNumber = number; known = true; }
  }
  if (!known) {
    problem(0, "DWG version " + m_version + " is not read (R13 to R2018, AC1012 to AC1032, are)");
    return false;
  }
  // R2007 has a container of its own; R2004 and R2010 on share the paged one.
  if (!(m_versionNumber == kDwgR2007 ? openR2007() : atLeast(kDwgR2004) ? openPaged() : openLocated())) return false;
  m_section = m_objectsSection;
  for (OdDwgObject& object : m_objects) readObject(object);
  m_section.clear();
  // An anonymous block's record keeps only the prefix of its name ("*D");
  // the whole name ("*D3") is the name of its BLOCK entity.
  for (const OdDwgObject& object : m_objects) {
    if (object.type != 0x04 || !object.decoded || object.recordName.isEmpty()) continue;
    auto it = m_byHandle.find(object.owner);
    if (it == m_byHandle.end()) continue;
    OdDwgObject& record = m_objects[it->second];
    if (record.type == 0x31 && record.recordName.getLength() < object.recordName.getLength() &&
        object.recordName.left(record.recordName.getLength()) == record.recordName) {
      record.recordName = object.recordName;
    }
  }
  return true;
}

bool OdDwgFile::openLocated() {
  OdDwgBitReader header(m_data.data(), m_data.size());
  try {
    header.seekBit(0x13 * 8);
    m_codePage = odDwgCodePage(header.readRS());
    const uint32_t records = header.readRL();
    if (records > 32) throw OdDwgDecodeError("implausible number of section locators", 0x15 * 8);
    size_t headerAt = 0, headerSize = 0, classes = 0, classesSize = 0, map = 0, mapSize = 0;
    for (uint32_t i = 0; i < records; ++i) {
      const uint8_t number = header.readRC();
      const uint32_t seeker = header.readRL();
      const uint32_t size = header.readRL();
      if (number == 0) { headerAt = seeker; headerSize = size; }
      if (number == 1) { classes = seeker; classesSize = size; }
      if (number == 2) { map = seeker; mapSize = size; }
    }
    if (!map) throw OdDwgDecodeError("no object map locator", header.bitPosition());
    if (classes) readClasses(m_data, classes, classesSize);
    else problem(0x15, "no classes section locator");
    readObjectMap(m_data, map, mapSize);
    if (headerAt) readHeader(m_data, headerAt, headerSize);
  } catch (const OdDwgDecodeError& e) {
    problem(e.bit / 8, std::string("file header: ") + e.what());
    return false;
  }
  return true;
}

bool OdDwgFile::openPaged() {
  OdDwgPagedFile paged;
  const bool opened = paged.open(m_data.data(), m_data.size());
  size_t reported = 0;
  auto report = [&] {
    for (; reported < paged.problems().size(); ++reported) problem(paged.problems()[reported].first, paged.problems()[reported].second);
  };
  report();
  if (!opened) return false;
  m_codePage = odDwgCodePage(paged.codePage());
  std::vector<uint8_t> objects = paged.section("AcDb:AcDbObjects");
  const std::vector<uint8_t> handles = paged.section("AcDb:Handles");
  const std::vector<uint8_t> classes = paged.section("AcDb:Classes");
  const std::vector<uint8_t> header = paged.section("AcDb:Header");
  report();
  return readSections(std::move(objects), handles, classes, header);
}

bool OdDwgFile::openR2007() {
  if (m_data.size() > 0x14) m_codePage = odDwgCodePage(m_data[0x13] | (m_data[0x14] << 8));
  OdDwgR2007Sections sections;
  if (!odDwgReadR2007Sections(m_data, sections, [this](size_t offset, const std::string& what) { problem(offset, what); })) {
    return false;
  }
  auto& s = sections.byName;
  return readSections(std::move(s["AcDb:AcDbObjects"]), s["AcDb:Handles"], s["AcDb:Classes"], s["AcDb:Header"]);
}

bool OdDwgFile::readSections(std::vector<uint8_t> objects, const std::vector<uint8_t>& handles,
                             const std::vector<uint8_t>& classes, const std::vector<uint8_t>& header) {
  if (objects.empty() || handles.empty()) {
    problem(0, std::string("no ") + (objects.empty() ? "AcDb:AcDbObjects" : "AcDb:Handles") + " section");
    return false;
  }
  // Object offsets count from the start of the objects section.
  m_data = std::move(objects);
  m_objectsSection = "AcDb:AcDbObjects";
  m_section = "AcDb:Classes";
  if (!classes.empty()) readClasses(classes, 0, classes.size());
  m_section = "AcDb:Handles";
  readObjectMap(handles, 0, handles.size());
  m_section = "AcDb:Header";
  if (!header.empty()) readHeader(header, 0, header.size());
  m_section.clear();
  return true;
}

size_t OdDwgFile::readDataBits(OdDwgBitReader& r) const {
  // R2007: an RL with the bit position where the data and strings end.
  // R2010 on, a high part comes first (zero in every file seen; some files
  // of R2010 and R2018 have it with a maintenance release of 3 or lower),
  // and the position counts from after it.
  const size_t first = r.readRL();
  if (!atLeast(kDwgR2010) || first != 0) return first;
  return static_cast<size_t>(r.readRL()) + 32;
}

void OdDwgFile::readClasses(const std::vector<uint8_t>& buf, size_t seeker, size_t size) {
  // A sentinel of 16 bytes, the size of the class data, the data, a CRC.
  if (seeker + 20 > buf.size()) {
    problem(seeker, "classes section outside the file");
    return;
  }
  OdDwgBitReader r(buf.data() + seeker, buf.size() - seeker);
  r.seekBit(16 * 8);
  const size_t length = r.readRL();
  if (length > size || seeker + 20 + length > buf.size()) {
    problem(seeker, "classes section larger than its locator says");
    return;
  }
  // R2010 on, the high part of the bit size comes first and is not counted
  // in the section's size.
  const size_t extra = atLeast(kDwgR2010) ? std::min<size_t>(4, buf.size() - seeker - 20 - length) : 0;
  OdDwgBitReader c(buf.data() + seeker + 20, length + extra);
  try {
    int last = 0x7FFF;  // R2004 on: the highest class number comes first
    if (atLeast(kDwgR2007)) c.useStringStreamEndingAt(std::min<size_t>(c.bitSize(), readDataBits(c)));
    if (atLeast(kDwgR2004)) {
      last = c.readBS();
      c.readRC();
      c.readRC();
      c.readBit();
    }
    for (int n = 500; n <= last && c.bitPosition() + 13 <= c.bitSize(); ++n) {
      OdDwgClass cls;
      cls.number = static_cast<uint16_t>(c.readBS());
      cls.proxyFlags = static_cast<uint16_t>(c.readBS());
      cls.appName = c.readTV(m_codePage);
      cls.cppName = c.readTV(m_codePage);
      cls.dxfName = c.readTV(m_codePage);
      cls.wasZombie = c.readBit();
      cls.isEntity = c.readBS() == 0x1F2;
      if (atLeast(kDwgR2004)) {
        c.readBL();  // objects of the class in the drawing
        c.readBS();  // the file version and maintenance version that brought the class
        c.readBS();
        c.readBL();
        c.readBL();
      }
      if (cls.number < 500) break;  // padding after the last class
      m_classes.push_back(cls);
    }
  } catch (const OdDwgDecodeError& e) {
    problem(seeker + 20 + e.bit / 8, std::string("classes section: ") + e.what());
  }
}

void OdDwgFile::readHeader(const std::vector<uint8_t>& buf, size_t seeker, size_t size) {
  // A sentinel of 16 bytes, the size of the data, the variables in a fixed order.
  if (seeker + 20 > buf.size()) {
    problem(seeker, "header variables outside the file");
    return;
  }
  OdDwgBitReader r(buf.data() + seeker + 20, std::min(buf.size() - seeker - 20, size));
  const bool r2000 = isR2000();
  // R2007 on: the size in bits of data and strings comes first; the
  // strings are in their own stream, the handles follow the data.
  OdDwgBitReader handles = r;
  OdDwgHeader& h = m_header;
  auto flag = [&](const wchar_t* name) { const bool v = r.readBit(); if (name) h.ints.emplace_back(name, v ? 1 : 0); };
  auto shortVar = [&](const wchar_t* name) { const int v = r.readBS(); if (name) h.ints.emplace_back(name, v); };
  auto real = [&](const wchar_t* name) { const double v = r.readBD(); if (name) h.reals.emplace_back(name, v); };
  auto value = [&](OdDwgHeaderValue::Kind kind, const wchar_t* name, int code) -> OdDwgHeaderValue& {
    return h.addValue(kind, name, code);
  };
  auto ref = [&]() { return atLeast(kDwgR2007) ? handles.readH() : r.readH(); };
  try {
    if (atLeast(kDwgR2007)) {
      const size_t dataEnd = std::min<size_t>(r.bitSize(), readDataBits(r));
      r.useStringStreamEndingAt(dataEnd);
      handles.seekBit(dataEnd);
    }
    if (atLeast(kDwgR2013)) {
      // The versions required to read the drawing: a long of 3 bits of
      // byte count and that many bytes.
      for (unsigned n = r.readBits(3); n > 0; --n) r.readRC();
    }
    for (int i = 0; i < 4; ++i) r.readBD();
    for (int i = 0; i < 4; ++i) r.readTV(m_codePage);
    r.readBL();
    r.readBL();
    if (!r2000) r.readBS();
    if (!atLeast(kDwgR2004)) r.readH();  // the current viewport's entity header
    flag(L"$DIMASO");
    flag(L"$DIMSHO");
    if (!r2000) flag(nullptr);  // DIMSAV
    flag(L"$PLINEGEN");
    flag(L"$ORTHOMODE");
    flag(L"$REGENMODE");
    flag(L"$FILLMODE");
    flag(L"$QTEXTMODE");
    flag(L"$PSLTSCALE");
    flag(L"$LIMCHECK");
    if (!r2000) flag(L"$BLIPMODE");
    if (atLeast(kDwgR2004)) flag(nullptr);  // undocumented
    flag(L"$USRTIMER");
    flag(L"$SKPOLY");
    flag(L"$ANGDIR");
    flag(L"$SPLFRAME");
    if (!r2000) { flag(L"$ATTREQ"); flag(L"$ATTDIA"); }
    flag(L"$MIRRTEXT");
    flag(L"$WORLDVIEW");
    if (!r2000) flag(nullptr);  // WIREFRAME
    flag(L"$TILEMODE");
    flag(L"$PLIMCHECK");
    flag(L"$VISRETAIN");
    if (!r2000) flag(nullptr);  // DELOBJ
    flag(L"$DISPSILH");
    flag(L"$PELLIPSE");
    shortVar(L"$PROXYGRAPHICS");
    if (!r2000) shortVar(L"$DRAGMODE");
    shortVar(L"$TREEDEPTH");
    shortVar(L"$LUNITS");
    shortVar(L"$LUPREC");
    shortVar(L"$AUNITS");
    shortVar(L"$AUPREC");
    if (!r2000) shortVar(L"$OSMODE");
    shortVar(L"$ATTMODE");
    if (!r2000) shortVar(L"$COORDS");
    shortVar(L"$PDMODE");
    if (!r2000) shortVar(L"$PICKSTYLE");
    if (atLeast(kDwgR2004)) {
      for (int i = 0; i < 3; ++i) r.readBL();  // undocumented
    }
    for (const wchar_t* name : {L"$USERI1", L"$USERI2", L"$USERI3", L"$USERI4", L"$USERI5", L"$SPLINESEGS", L"$SURFU",
                                L"$SURFV", L"$SURFTYPE", L"$SURFTAB1", L"$SURFTAB2", L"$SPLINETYPE", L"$SHADEDGE",
                                L"$SHADEDIF", L"$UNITMODE", L"$MAXACTVP", L"$ISOLINES", L"$CMLJUST", L"$TEXTQLTY"}) {
      shortVar(name);
    }
    for (const wchar_t* name : {L"$LTSCALE", L"$TEXTSIZE", L"$TRACEWID", L"$SKETCHINC", L"$FILLETRAD", L"$THICKNESS",
                                L"$ANGBASE", L"$PDSIZE", L"$PLINEWID", L"$USERR1", L"$USERR2", L"$USERR3", L"$USERR4",
                                L"$USERR5", L"$CHAMFERA", L"$CHAMFERB", L"$CHAMFERC", L"$CHAMFERD", L"$FACETRES",
                                L"$CMLSCALE", L"$CELTSCALE"}) {
      real(name);
    }
    value(OdDwgHeaderValue::kText, L"$MENU", 1).text = r.readTV(m_codePage);
    // Dates and times: BL days and BL milliseconds into the day; R2004 on
    // three longs between the update date and the time in the drawing.
    auto date = [&](const wchar_t* name) {
      const double days = r.readBL();
      value(OdDwgHeaderValue::kReal, name, 40).v[0] = days + r.readBL() / 86400000.0;
    };
    // The creation and update dates are kept in universal time.
    date(L"$TDUCREATE");
    date(L"$TDUUPDATE");
    if (atLeast(kDwgR2004)) {
      for (int i = 0; i < 3; ++i) r.readBL();  // undocumented
    }
    date(L"$TDINDWG");
    date(L"$TDUSRTIMER");
    h.currentColor = readCMC(r);
    // The handle seed stays in the data; references go to their own stream from R2007 on.
    h.handseed = r.readH().value;
    h.currentLayer = ref().value;
    h.currentTextStyle = ref().value;
    h.currentLinetype = ref().value;
    readHeaderRest(r, handles);
    // The data ends where the strings begin (R2007 on) or after the size
    // given before it, padded to a byte.
    size_t end = r.stringStreamStart();
    if (!atLeast(kDwgR2007)) {
      OdDwgBitReader sizeReader(buf.data() + seeker + 16, 4);
      end = std::min<size_t>(r.bitSize(), sizeReader.readRL() * size_t{8});
    }
    h.unreadBits = (end > r.bitPosition() ? end - r.bitPosition() : 0) + r.stringBitsLeft();
    h.read = true;
  } catch (const OdDwgDecodeError& e) {
    problem(seeker + 20 + e.bit / 8, std::string("header variables: ") + e.what());
  }
}

void OdDwgFile::readHeaderRest(OdDwgBitReader& r, OdDwgBitReader& handles) {
  // The variables after the current linetype, in the file's order.
  using V = OdDwgHeaderValue;
  OdDwgHeader& h = m_header;
  const bool r2000 = isR2000(), r2004 = atLeast(kDwgR2004), r2007 = atLeast(kDwgR2007);
  auto value = [&](V::Kind kind, const wchar_t* name, int code) -> V& { return h.addValue(kind, name, code); };
  auto ref = [&]() { return (r2007 ? handles : r).readH().value; };
  auto flag = [&](const wchar_t* name) { value(V::kInt, name, 70).v[0] = r.readBit(); };
  auto shortVar = [&](const wchar_t* name, int code = 70) { value(V::kInt, name, code).v[0] = r.readBS(); };
  auto byte = [&](const wchar_t* name, int code = 280) { value(V::kInt, name, code).v[0] = r.readRC(); };
  auto real = [&](const wchar_t* name) { value(V::kReal, name, 40).v[0] = r.readBD(); };
  auto point3 = [&](const wchar_t* name) {
    V& v = value(V::kPoint3, name, 10);
    for (double& c : v.v) c = r.readBD();
  };
  auto point2 = [&](const wchar_t* name) {
    V& v = value(V::kPoint2, name, 10);
    v.v[0] = r.readRD();
    v.v[1] = r.readRD();
  };
  auto text = [&](const wchar_t* name, int code) { value(V::kText, name, code).text = r.readTV(m_codePage); };
  auto named = [&](const wchar_t* name, int code) { value(V::kName, name, code).handle = ref(); };
  auto handle = [&](const wchar_t* name, int code) { value(V::kHandle, name, code).handle = ref(); };
  auto colour = [&](const wchar_t* name, int code) { value(V::kInt, name, code).v[0] = readCMC(r); };

  if (r2007) handle(L"$CMATERIAL", 347);
  named(L"$DIMSTYLE", 2);
  named(L"$CMLSTYLE", 2);
  if (r2000) real(L"$PSVPSCALE");
  // Paper space, then model space: insertion base, extents, limits,
  // elevation and UCS, (R2000) the orthographic UCS.
  for (const bool paper : {true, false}) {
    point3(paper ? L"$PINSBASE" : L"$INSBASE");
    point3(paper ? L"$PEXTMIN" : L"$EXTMIN");
    point3(paper ? L"$PEXTMAX" : L"$EXTMAX");
    point2(paper ? L"$PLIMMIN" : L"$LIMMIN");
    point2(paper ? L"$PLIMMAX" : L"$LIMMAX");
    real(paper ? L"$PELEVATION" : L"$ELEVATION");
    point3(paper ? L"$PUCSORG" : L"$UCSORG");
    point3(paper ? L"$PUCSXDIR" : L"$UCSXDIR");
    point3(paper ? L"$PUCSYDIR" : L"$UCSYDIR");
    named(paper ? L"$PUCSNAME" : L"$UCSNAME", 2);
    if (!r2000) continue;
    named(paper ? L"$PUCSORTHOREF" : L"$UCSORTHOREF", 2);
    shortVar(paper ? L"$PUCSORTHOVIEW" : L"$UCSORTHOVIEW");
    named(paper ? L"$PUCSBASE" : L"$UCSBASE", 2);
    static const wchar_t* const kPaper[] = {L"$PUCSORGTOP", L"$PUCSORGBOTTOM", L"$PUCSORGLEFT", L"$PUCSORGRIGHT", L"$PUCSORGFRONT", L"$PUCSORGBACK"};
    static const wchar_t* const kModel[] = {L"$UCSORGTOP", L"$UCSORGBOTTOM", L"$UCSORGLEFT", L"$UCSORGRIGHT", L"$UCSORGFRONT", L"$UCSORGBACK"};
    for (int i = 0; i < 6; ++i) point3(paper ? kPaper[i] : kModel[i]);
  }
  if (r2000) {
    text(L"$DIMPOST", 1);
    text(L"$DIMAPOST", 1);
  } else {
    // R13 and R14 keep the dimension flags first, some in bytes.
    for (const wchar_t* name : {L"$DIMTOL", L"$DIMLIM", L"$DIMTIH", L"$DIMTOH", L"$DIMSE1", L"$DIMSE2", L"$DIMALT", L"$DIMTOFL",
                                L"$DIMSAH", L"$DIMTIX", L"$DIMSOXD"}) {
      flag(name);
    }
    byte(L"$DIMALTD", 70);
    byte(L"$DIMZIN", 70);
    flag(L"$DIMSD1");
    flag(L"$DIMSD2");
    for (const wchar_t* name : {L"$DIMTOLJ", L"$DIMJUST", L"$DIMFIT"}) byte(name, 70);
    flag(L"$DIMUPT");
    for (const wchar_t* name : {L"$DIMTZIN", L"$DIMALTZ", L"$DIMALTTZ", L"$DIMTAD"}) byte(name, 70);
    for (const wchar_t* name : {L"$DIMUNIT", L"$DIMAUNIT", L"$DIMDEC", L"$DIMTDEC", L"$DIMALTU", L"$DIMALTTD"}) shortVar(name);
    named(L"$DIMTXSTY", 7);
  }
  for (const wchar_t* name : {L"$DIMSCALE", L"$DIMASZ", L"$DIMEXO", L"$DIMDLI", L"$DIMEXE", L"$DIMRND", L"$DIMDLE", L"$DIMTP", L"$DIMTM"}) {
    real(name);
  }
  if (r2007) {
    real(L"$DIMFXL");
    real(L"$DIMJOGANG");
    shortVar(L"$DIMTFILL");
    colour(L"$DIMTFILLCLR", 70);
  }
  if (r2000) {
    for (const wchar_t* name : {L"$DIMTOL", L"$DIMLIM", L"$DIMTIH", L"$DIMTOH", L"$DIMSE1", L"$DIMSE2"}) flag(name);
    for (const wchar_t* name : {L"$DIMTAD", L"$DIMZIN", L"$DIMAZIN"}) shortVar(name);
  }
  if (r2007) shortVar(L"$DIMARCSYM");
  for (const wchar_t* name : {L"$DIMTXT", L"$DIMCEN", L"$DIMTSZ", L"$DIMALTF", L"$DIMLFAC", L"$DIMTVP", L"$DIMTFAC", L"$DIMGAP"}) {
    real(name);
  }
  if (!r2000) {
    for (const wchar_t* name : {L"$DIMPOST", L"$DIMAPOST", L"$DIMBLK", L"$DIMBLK1", L"$DIMBLK2"}) text(name, 1);
  } else {
    real(L"$DIMALTRND");
    flag(L"$DIMALT");
    shortVar(L"$DIMALTD");
    for (const wchar_t* name : {L"$DIMTOFL", L"$DIMSAH", L"$DIMTIX", L"$DIMSOXD"}) flag(name);
  }
  for (const wchar_t* name : {L"$DIMCLRD", L"$DIMCLRE", L"$DIMCLRT"}) colour(name, 70);
  if (r2000) {
    for (const wchar_t* name : {L"$DIMADEC", L"$DIMDEC", L"$DIMTDEC", L"$DIMALTU", L"$DIMALTTD", L"$DIMAUNIT", L"$DIMFRAC",
                                L"$DIMLUNIT", L"$DIMDSEP", L"$DIMTMOVE", L"$DIMJUST"}) {
      shortVar(name);
    }
    flag(L"$DIMSD1");
    flag(L"$DIMSD2");
    for (const wchar_t* name : {L"$DIMTOLJ", L"$DIMTZIN", L"$DIMALTZ", L"$DIMALTTZ"}) shortVar(name);
    flag(L"$DIMUPT");
    shortVar(L"$DIMATFIT");
  }
  if (r2007) flag(L"$DIMFXLON");
  if (atLeast(kDwgR2010)) {
    flag(L"$DIMTXTDIRECTION");
    real(L"$DIMALTMZF");
    text(L"$DIMALTMZS", 1);
    real(L"$DIMMZF");
    text(L"$DIMMZS", 1);
  }
  if (r2000) {
    named(L"$DIMTXSTY", 7);
    for (const wchar_t* name : {L"$DIMLDRBLK", L"$DIMBLK", L"$DIMBLK1", L"$DIMBLK2"}) named(name, 1);
  }
  if (r2007) {
    for (const wchar_t* name : {L"$DIMLTYPE", L"$DIMLTEX1", L"$DIMLTEX2"}) named(name, 6);
  }
  if (r2000) {
    shortVar(L"$DIMLWD");
    shortVar(L"$DIMLWE");
  }
  // The nine table controls, (R13-R2000) the viewport entity control, the
  // group, multiline style and named object dictionaries.
  for (int i = 0; i < (r2004 ? 12 : 13); ++i) ref();
  if (r2000) {
    r.readBS();  // stacked text alignment
    r.readBS();  // stacked text size
    text(L"$HYPERLINKBASE", 1);
    text(L"$STYLESHEET", 1);
    for (int i = 0; i < 3; ++i) ref();  // layout, plot settings and plot style dictionaries
    if (r2004) {
      ref();  // materials
      ref();  // colours
    }
    if (r2007) ref();  // visual styles
    if (atLeast(kDwgR2013)) ref();
    // Lineweight, line ends and joins, and switches in one long.
    const uint32_t flags = r.readBL();
    value(V::kLineWeight, L"$CELWEIGHT", 370).v[0] = flags & 0x1F;
    value(V::kInt, L"$ENDCAPS", 280).v[0] = (flags & 0x60) >> 5;
    value(V::kInt, L"$JOINSTYLE", 280).v[0] = (flags & 0x180) >> 7;
    value(V::kInt, L"$LWDISPLAY", 290).v[0] = !(flags & 0x200);
    value(V::kInt, L"$XEDIT", 290).v[0] = !(flags & 0x400);
    value(V::kInt, L"$EXTNAMES", 290).v[0] = (flags & 0x800) != 0;
    value(V::kInt, L"$PSTYLEMODE", 290).v[0] = (flags & 0x2000) != 0;
    value(V::kInt, L"$OLESTARTUP", 290).v[0] = (flags & 0x4000) != 0;
    shortVar(L"$INSUNITS");
    shortVar(L"$CEPSNTYPE", 380);
    if (h.values.back().v[0] == 3) handle(L"$CEPSNID", 390);
    text(L"$FINGERPRINTGUID", 2);
    text(L"$VERSIONGUID", 2);
  }
  if (r2004) {
    for (const wchar_t* name : {L"$SORTENTS", L"$INDEXCTL", L"$HIDETEXT", L"$XCLIPFRAME", L"$DIMASSOC", L"$HALOGAP"}) byte(name);
    // Before R2010 the clip frame is a switch (1 shown); later 2 also
    // means shown but not plotted.
    OdDwgHeaderValue& clipFrame = h.values[h.values.size() - 3];
    if (!atLeast(kDwgR2010)) {
      clipFrame.code = 290;
      clipFrame.v[0] = clipFrame.v[0] == 1;
    }
    shortVar(L"$OBSCOLOR");
    shortVar(L"$INTERSECTIONCOLOR");
    byte(L"$OBSLTYPE");
    byte(L"$INTERSECTIONDISPLAY");
    text(L"$PROJECTNAME", 1);
  }
  // The paper and model space blocks, the ByLayer, ByBlock and Continuous linetypes.
  for (int i = 0; i < 5; ++i) ref();
  if (r2007) readHeaderR2007(r, handles);
  // Four shorts of no known use end the variables (R14 on).
  if (atLeast(kDwgR14)) {
    for (int i = 0; i < 4; ++i) r.readBS();
  }
}

void OdDwgFile::readHeaderR2007(OdDwgBitReader& r, OdDwgBitReader& handles) {
  // Camera, walk, solid history, lofting, geographic location, lights and
  // interference settings.
  using V = OdDwgHeaderValue;
  OdDwgHeader& h = m_header;
  auto byte = [&](const wchar_t* name) { h.addValue(V::kInt, name, 280).v[0] = r.readRC(); };
  auto real = [&](const wchar_t* name) { h.addValue(V::kReal, name, 40).v[0] = r.readBD(); };
  auto handle = [&](const wchar_t* name, int code) { h.addValue(V::kHandle, name, code).handle = handles.readH().value; };
  h.addValue(V::kInt, L"$CAMERADISPLAY", 290).v[0] = r.readBit();
  r.readBL();
  r.readBL();
  r.readBD();
  for (const wchar_t* name : {L"$STEPSPERSEC", L"$STEPSIZE", L"$3DDWFPREC", L"$LENSLENGTH", L"$CAMERAHEIGHT"}) real(name);
  byte(L"$SOLIDHIST");
  byte(L"$SHOWHIST");
  for (const wchar_t* name : {L"$PSOLWIDTH", L"$PSOLHEIGHT", L"$LOFTANG1", L"$LOFTANG2", L"$LOFTMAG1", L"$LOFTMAG2"}) real(name);
  h.addValue(V::kInt, L"$LOFTPARAM", 70).v[0] = r.readBS();
  byte(L"$LOFTNORMALS");
  for (const wchar_t* name : {L"$LATITUDE", L"$LONGITUDE", L"$NORTHDIRECTION"}) real(name);
  h.addValue(V::kInt, L"$TIMEZONE", 70).v[0] = r.readBL();
  for (const wchar_t* name : {L"$LIGHTGLYPHDISPLAY", L"$TILEMODELIGHTSYNCH", L"$DWFFRAME", L"$DGNFRAME"}) byte(name);
  r.readBit();
  h.addValue(V::kInt, L"$INTERFERECOLOR", 62).v[0] = readCMC(r);
  handle(L"$INTERFEREOBJVS", 345);
  handle(L"$INTERFEREVPVS", 346);
  handle(L"$DRAGVS", 349);
  byte(L"$CSHADOW");
  real(L"$SHADOWPLANELOCATION");
}

void OdDwgFile::readObjectMap(const std::vector<uint8_t>& buf, size_t seeker, size_t size) {
  // Pieces of at most 2032 bytes: a big-endian size (which counts itself),
  // pairs of (handle step, offset step) as modular chars, a CRC. Handle and
  // offset start again from zero in every piece; a piece of size 2 ends it.
  size_t at = seeker;
  const size_t end = std::min(buf.size(), seeker + size);
  std::vector<std::pair<uint64_t, int64_t>> entries;
  while (at + 2 <= end) {
    const size_t pieceSize = (static_cast<size_t>(buf[at]) << 8) | buf[at + 1];
    if (pieceSize <= 2) break;
    if (at + pieceSize > buf.size()) {
      problem(at, "object map piece runs past the end of the data");
      break;
    }
    OdDwgBitReader r(buf.data() + at + 2, pieceSize - 2);
    uint64_t handle = 0;
    int64_t offset = 0;
    try {
      while (!r.atEnd()) {
        handle += r.readMCUnsigned();
        // Offsets are file positions: a step that leaves the file's range is
        // damage, not a place to wrap around to.
        const int64_t step = r.readMCSigned();
        if (__builtin_add_overflow(offset, step, &offset)) {
          problem(at, "object map offset out of range");
          break;
        }
        entries.emplace_back(handle, offset);
      }
    } catch (const OdDwgDecodeError& e) {
      problem(at + 2 + e.bit / 8, std::string("object map: ") + e.what());
    }
    at += pieceSize + 2;  // the piece and its CRC
  }
  std::sort(entries.begin(), entries.end());
  for (const auto& [handle, offset] : entries) {
    if (offset <= 0 || static_cast<size_t>(offset) >= m_data.size()) {
      problem(seeker, "object " + hex(handle) + " placed outside the " + (m_objectsSection.empty() ? "file" : "objects section") + ", dropped");
      continue;
    }
    if (m_byHandle.count(handle)) continue;
    OdDwgObject object;
    object.handle = handle;
    object.offset = static_cast<size_t>(offset);
    m_byHandle[handle] = m_objects.size();
    m_objects.push_back(object);
  }
}

void OdDwgFile::readObject(OdDwgObject& o) {
  const bool r2000 = isR2000();
  try {
    OdDwgBitReader sizeReader(m_data.data() + o.offset, m_data.size() - o.offset);
    o.size = sizeReader.readMS();
    o.start = o.offset + sizeReader.bitPosition() / 8;
    if (o.size > m_data.size() - o.start) throw OdDwgDecodeError("object runs past the end of the file", 0);
    // R2010 on, the size of the handle references (MC) follows the object's
    // size and is not counted in it.
    uint64_t handleBits = 0;
    if (atLeast(kDwgR2010)) {
      OdDwgBitReader mc(m_data.data() + o.start, m_data.size() - o.start);
      handleBits = mc.readMCUnsigned();
      o.size += mc.bitPosition() / 8;
      if (o.size > m_data.size() - o.start) throw OdDwgDecodeError("object runs past the end of the file", 0);
    }
    // The size and the data are followed by their CRC. A mismatch is
    // reported; the object is still decoded (its values may be intact).
    if (o.size + 2 <= m_data.size() - o.start) {
      const size_t end = o.start + o.size;
      const uint16_t stored = static_cast<uint16_t>(m_data[end] | (m_data[end + 1] << 8));
      if (crc16(m_data.data() + o.offset, end - o.offset) != stored) problem(o.offset, "object " + hex(o.handle) + ": CRC does not match its data");
    }
    OdDwgBitReader r = objectReader(o);
    size_t handleBit = 0;
    if (atLeast(kDwgR2010)) {
      // The size of the handle references, in bits, then the type as BOT:
      // 2 bits say one byte, one byte plus 0x1F0, or a raw short.
      r.readMCUnsigned();
      if (handleBits > o.size * 8) throw OdDwgDecodeError("handle references larger than the object", 0);
      handleBit = o.size * 8 - static_cast<size_t>(handleBits);
      switch (r.readBB()) {
        case 0: o.type = r.readRC(); break;
        case 1: o.type = 0x1F0u + r.readRC(); break;
        default: o.type = r.readRS(); break;
      }
    } else {
      o.type = static_cast<uint16_t>(r.readBS());
    }
    if (o.type >= 500 && o.type != 0xFFFF) {
      const size_t index = o.type - 500;
      if (index >= m_classes.size()) throw OdDwgDecodeError("object of an unknown class " + std::to_string(o.type), 0);
      o.dxfName = m_classes[index].dxfName;
      o.entity = m_classes[index].isEntity;
    } else {
      o.dxfName = builtinTypeName(o.type);
      o.entity = builtinIsEntity(o.type);
      if (o.dxfName.isEmpty()) throw OdDwgDecodeError("object of an unknown type " + std::to_string(o.type), 0);
    }
    if (r2000 && !atLeast(kDwgR2010)) handleBit = r.readRL();
    if (atLeast(kDwgR2007)) {
      // Strings sit at the end of the data, before the handle references.
      o.stringEnd = handleBit;
      r.useStringStreamEndingAt(handleBit);
    }
    const OdDwgHandleRef own = r.readH();
    if (own.value != o.handle) {
      throw OdDwgDecodeError("object map names handle " + hex(o.handle) + " but the object is " + hex(own.value), 0);
    }
    for (;;) {
      const int bytes = static_cast<uint16_t>(r.readBS());
      if (bytes == 0) break;
      OdDwgXData x;
      x.appHandle = r.readH().value;
      x.bytes.resize(static_cast<size_t>(bytes));
      r.readBytes(x.bytes.data(), x.bytes.size());
      o.xdata.push_back(std::move(x));
    }
    int reactors = 0;
    bool byLayerLinetype = true, noLinks = false, noXdictionary = false, colorBook = false;
    const bool r2004 = atLeast(kDwgR2004);
    int materialFlags = 0;
    bool fullStyle = false, faceStyle = false, edgeStyle = false;
    if (o.entity) {
      if (r.readBit()) {
        // The size of the graphics in bytes: RL, from R2010 on a BLL.
        const uint64_t picture = atLeast(kDwgR2010) ? r.readBLL() : r.readRL();
        if (picture > o.size) throw OdDwgDecodeError("implausible picture size", r.bitPosition());
        o.pictureBit = r.bitPosition();
        o.pictureSize = static_cast<size_t>(picture);
        r.skipBytes(static_cast<size_t>(picture));
      }
      if (!r2000) handleBit = r.readRL();
      o.entMode = static_cast<int>(r.readBB());
      reactors = r.readBL();
      if (r2004) noXdictionary = r.readBit();
      if (atLeast(kDwgR2013)) r.readBit();  // has binary data of its own
      if (!r2000) byLayerLinetype = r.readBit();
      if (!r2004) {
        noLinks = r.readBit();
        o.color = r.readBS();
      } else {
        // The colour index with flags in its high bits: 0x8000 an RGB value
        // follows, 0x4000 a colour-book reference is among the handles,
        // 0x2000 a transparency follows.
        const unsigned value = static_cast<uint16_t>(r.readBS());
        o.color = static_cast<int>(value & 0x1FF);
        if (value & 0x8000) o.trueColor = static_cast<uint32_t>(r.readBL());
        if (value & 0x2000) o.transparency = static_cast<uint32_t>(r.readBL());
        colorBook = value & 0x4000;
      }
      o.linetypeScale = r.readBD();
      // Linetype, (R2007 on) material and plot style: 0 ByLayer, 1 ByBlock,
      // 2 Continuous / none, 3 by handle; R2007 on, then shadow flags and
      // (R2010 on) whether visual styles are given.
      if (r2000) o.linetypeFlags = static_cast<int>(r.readBB());
      if (atLeast(kDwgR2007)) materialFlags = static_cast<int>(r.readBB());
      if (r2000) o.plotStyleFlags = static_cast<int>(r.readBB());
      if (atLeast(kDwgR2007)) r.readRC();  // shadow flags
      if (atLeast(kDwgR2010)) {
        fullStyle = r.readBit();
        faceStyle = r.readBit();
        edgeStyle = r.readBit();
      }
      o.invisible = r.readBS();
      if (r2000) o.lineWeight = r.readRC();
    } else {
      if (!r2000) handleBit = r.readRL();
      reactors = r.readBL();
      if (r2004) noXdictionary = r.readBit();
      if (atLeast(kDwgR2013)) r.readBit();  // has binary data of its own
    }
    if (reactors < 0 || static_cast<size_t>(reactors) > o.size) throw OdDwgDecodeError("implausible reactor count", r.bitPosition());
    o.dataBit = r.bitPosition();
    // Records, and BLOCK entities, begin with their name.
    if (isSymbolTableRecord(o.type) || o.type == 0x04) o.recordName = r.readTV(m_codePage);

    // The handle references.
    r.seekBit(handleBit);
    if (!o.entity || o.entMode == 0) o.owner = r.readH(o.handle).value;
    for (int i = 0; i < reactors; ++i) o.reactors.push_back(r.readH(o.handle).value);
    if (!noXdictionary) o.xdictionary = r.readH(o.handle).value;
    if (o.entity) {
      if (!r2000) {
        o.layer = r.readH(o.handle).value;
        if (!byLayerLinetype) o.linetype = r.readH(o.handle).value;
      }
      // Up to R2000 the entities of a block are chained; from R2004 on
      // the block record lists them.
      o.noLinks = noLinks;
      if (r2004) {
        if (colorBook) r.readH(o.handle);
      } else if (noLinks) {
        o.prevEntity = o.handle - 1;
        o.nextEntity = o.handle + 1;
      } else {
        o.prevEntity = r.readH(o.handle).value;
        o.nextEntity = r.readH(o.handle).value;
      }
      if (r2000) {
        o.layer = r.readH(o.handle).value;
        if (o.linetypeFlags == 3) o.linetype = r.readH(o.handle).value;
        if (materialFlags == 3) o.material = r.readH(o.handle).value;
        if (o.plotStyleFlags == 3) o.plotStyle = r.readH(o.handle).value;
        if (fullStyle) r.readH(o.handle);  // visual styles
        if (faceStyle) r.readH(o.handle);
        if (edgeStyle) r.readH(o.handle);
      }
    }
    o.handleBit = r.bitPosition();
    o.endBit = o.size * 8;
    o.decoded = true;
  } catch (const OdDwgDecodeError& e) {
    problem(o.offset, "object " + hex(o.handle) + " (" + (o.dxfName.isEmpty() ? std::string("?") : o.dxfName.toUtf8()) +
                          "): " + e.what() + " at bit " + std::to_string(e.bit));
  }
}
