// The common object data of a DWG file (handle, reactors, extension dictionary,
// owner, extended data) and the non-graphical objects.
#include "dwg/DwgToDxf.h"

#include <cmath>
#include <iterator>
#include <string_view>

namespace oddwg {

using namespace std::string_view_literals;

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
  // R2004 on: a true colour (high byte 0xC2) goes beside its index.
  const bool trueColor = (o.trueColor >> 24) == 0xC2;
  if (o.color != 256 || trueColor) m_w.writeInt(62, o.color);
  if (trueColor) m_w.writeInt(420, static_cast<int32_t>(o.trueColor & 0xFFFFFF));
  if (m_r2000 && lineWeightOf(o.lineWeight) != -1) m_w.writeInt(370, lineWeightOf(o.lineWeight));
  if (o.linetypeScale != 1.0) m_w.writeDouble(48, o.linetypeScale);
  if (o.invisible) m_w.writeInt(60, o.invisible);
  if (o.material) m_w.writeHandle(347, o.material);
  if (o.transparency) m_w.writeInt(440, static_cast<int32_t>(o.transparency));
  // The entity's graphics as stored: the size (DXF 92, from R2010 on 160)
  // and the bytes, which need not start on a byte of the data.
  if (o.pictureSize) {
    m_w.writeInt(m_file.atLeast(kDwgR2010) ? 160 : 92, static_cast<OdInt64>(o.pictureSize));
    OdDwgBitReader r = m_file.objectReader(o);
    r.seekBit(o.pictureBit);
    uint8_t chunk[127];
    for (size_t at = 0; at < o.pictureSize; at += sizeof chunk) {
      const size_t n = std::min(sizeof chunk, o.pictureSize - at);
      for (size_t i = 0; i < n; ++i) chunk[i] = r.readRC();
      m_w.writeBinary(310, chunk, n);
    }
  }
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
            if (m_file.atLeast(kDwgR2007)) {
              // R2007 on: a count of UTF-16 units and the units.
              const size_t length = r.readRS();
              std::wstring text;
              for (size_t i = 0; i < length; ++i) text += static_cast<wchar_t>(r.readRS());
              items.push_back(OdDxfTag::str(1000, OdString(std::move(text))));
              break;
            }
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

bool DwgToDxf::objectDecoded(const OdDwgObject& o) {
  // Asked for every object of many walks: names compared as views, whose
  // lengths are known, so that most differ at the length.
  const std::wstring_view name = o.dxfName.str();
  return name == L"DICTIONARY"sv || name == L"ACDBPLACEHOLDER"sv || name == L"XRECORD"sv || name == L"LAYOUT"sv ||
         name == L"SORTENTSTABLE"sv || o.type == 0x49 || o.type == 0x48;
}

void DwgToDxf::group(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h) {
  // TV description, BS unnamed, BS selectable, BL entry count; a handle per entry.
  const OdString description = d.readTV(m_cp);
  const int unnamed = d.readBS(), selectable = d.readBS();
  const int32_t entries = d.readBL();
  if (entries < 0 || static_cast<size_t>(entries) > o.size) throw OdDwgDecodeError("implausible group entry count", d.bitPosition());
  m_w.writeString(0, L"GROUP");
  header(o, o.owner);
  m_w.writeString(100, L"AcDbGroup");
  m_w.writeString(300, description);
  m_w.writeInt(70, unnamed);
  m_w.writeInt(71, selectable);
  for (int32_t i = 0; i < entries; ++i) {
    const uint64_t entity = h.readH(o.handle).value;
    // Entities not read are left out of the group with them.
    if (isWrittenAny(entity)) m_w.writeHandle(340, entity);
  }
}

void DwgToDxf::layout(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h) {
  // The plot settings: TV page setup, TV printer, BS flags, BD margins
  // (left, bottom, right, top), BD paper width and height, TV paper size,
  // 2BD plot origin, BS paper units, rotation and plot type, 2BD window
  // corners, (R13-R2000) TV plot view name, BD real-world and drawing units,
  // TV style sheet, BS scale type, BD scale factor, 2BD paper image origin,
  // (R2004 on) BS shade plot mode, resolution level and custom DPI.
  const bool r2004 = m_file.atLeast(kDwgR2004), r2007 = m_file.atLeast(kDwgR2007);
  const OdString pageSetup = d.readTV(m_cp), printer = d.readTV(m_cp);
  const int plotFlags = d.readBS();
  double margins[4], paper[2], origin[2], window[4], units[2], imageOrigin[2];
  for (double& v : margins) v = d.readBD();
  for (double& v : paper) v = d.readBD();
  const OdString paperSize = d.readTV(m_cp);
  for (double& v : origin) v = d.readBD();
  const int paperUnits = d.readBS(), rotation = d.readBS(), plotType = d.readBS();
  for (double& v : window) v = d.readBD();
  OdString viewName = r2004 ? OdString() : d.readTV(m_cp);
  for (double& v : units) v = d.readBD();
  const OdString styleSheet = d.readTV(m_cp);
  const int scaleType = d.readBS();
  const double scaleFactor = d.readBD();
  for (double& v : imageOrigin) v = d.readBD();
  int shade[3] = {0, 0, 0};
  if (r2004) for (int& v : shade) v = d.readBS();
  // The layout: TV name, BL tab order, BS flags, 3BD UCS origin, 2RD
  // limits, 3BD insertion base, 3BD UCS X and Y axes, BD elevation, BS
  // orthographic type, 3BD extents, (R2004 on) RL viewport count.
  const OdString name = d.readTV(m_cp);
  const int32_t tabOrder = d.readBL();
  const int flags = d.readBS();
  double ucsOrigin[3], limits[4], base[3], xAxis[3], yAxis[3], extents[6];
  point3(d, ucsOrigin);
  for (double& v : limits) v = d.readRD();
  point3(d, base);
  point3(d, xAxis);
  point3(d, yAxis);
  const double elevation = d.readBD();
  const int orthoType = d.readBS();
  point3(d, extents);
  point3(d, extents + 3);
  int32_t viewports = 0;
  if (r2004) {
    viewports = d.readBL();
    if (viewports < 0 || static_cast<size_t>(viewports) > o.size) throw OdDwgDecodeError("implausible viewport count", d.bitPosition());
  }
  // Handles: (R2004 on) the plot view, (R2007 on) the visual style, the
  // paper-space block, the last active viewport, the base and named UCS,
  // (R2004 on) the viewports.
  if (r2004) viewName = nameOf(h.readH(o.handle).value);
  if (r2007) h.readH(o.handle);
  const uint64_t block = h.readH(o.handle).value, viewport = h.readH(o.handle).value;
  const uint64_t baseUcs = h.readH(o.handle).value, namedUcs = h.readH(o.handle).value;
  for (int32_t i = 0; i < viewports; ++i) h.readH(o.handle);

  m_w.writeString(0, L"LAYOUT");
  header(o, o.owner);
  m_w.writeString(100, L"AcDbPlotSettings");
  m_w.writeString(1, pageSetup);
  m_w.writeString(2, printer);
  m_w.writeString(4, paperSize);
  m_w.writeString(6, viewName);
  for (int i = 0; i < 4; ++i) m_w.writeDouble(40 + i, margins[i]);
  m_w.writeDouble(44, paper[0]);
  m_w.writeDouble(45, paper[1]);
  m_w.writeDouble(46, origin[0]);
  m_w.writeDouble(47, origin[1]);
  m_w.writeDouble(48, window[0]);
  m_w.writeDouble(49, window[1]);
  m_w.writeDouble(140, window[2]);
  m_w.writeDouble(141, window[3]);
  m_w.writeDouble(142, units[0]);
  m_w.writeDouble(143, units[1]);
  m_w.writeInt(70, plotFlags);
  m_w.writeInt(72, paperUnits);
  m_w.writeInt(73, rotation);
  m_w.writeInt(74, plotType);
  m_w.writeString(7, styleSheet);
  m_w.writeInt(75, scaleType);
  m_w.writeDouble(147, scaleFactor);
  if (r2004) for (int i = 0; i < 3; ++i) m_w.writeInt(76 + i, shade[i]);
  m_w.writeDouble(148, imageOrigin[0]);
  m_w.writeDouble(149, imageOrigin[1]);
  m_w.writeString(100, L"AcDbLayout");
  m_w.writeString(1, name);
  m_w.writeInt(70, flags);
  m_w.writeInt(71, tabOrder);
  m_w.writePoint(10, limits[0], limits[1], 0);
  m_w.writePoint(11, limits[2], limits[3], 0);
  m_w.writePoint(12, base[0], base[1], base[2]);
  m_w.writePoint(14, extents[0], extents[1], extents[2]);
  m_w.writePoint(15, extents[3], extents[4], extents[5]);
  m_w.writeDouble(146, elevation);
  m_w.writePoint(13, ucsOrigin[0], ucsOrigin[1], ucsOrigin[2]);
  m_w.writePoint(16, xAxis[0], xAxis[1], xAxis[2]);
  m_w.writePoint(17, yAxis[0], yAxis[1], yAxis[2]);
  m_w.writeInt(76, orthoType);
  m_w.writeHandle(330, block);
  // Only references to what is written.
  if (viewport && isWrittenAny(viewport)) m_w.writeHandle(331, viewport);
  if (namedUcs && isWrittenAny(namedUcs)) m_w.writeHandle(345, namedUcs);
  if (baseUcs && isWrittenAny(baseUcs)) m_w.writeHandle(346, baseUcs);
}

void DwgToDxf::sortents(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h) {
  // BL entry count and a sort handle per entry in the data; the handles:
  // the block, then the entity of each entry.
  const int32_t count = d.readBL();
  if (count < 0 || static_cast<size_t>(count) > o.size) throw OdDwgDecodeError("implausible entry count", d.bitPosition());
  std::vector<uint64_t> sortHandles;
  for (int32_t i = 0; i < count; ++i) sortHandles.push_back(d.readH(o.handle).value);
  const uint64_t block = h.readH(o.handle).value;
  m_w.writeString(0, L"SORTENTSTABLE");
  header(o, o.owner);
  m_w.writeString(100, L"AcDbSortentsTable");
  m_w.writeHandle(330, block);
  for (int32_t i = 0; i < count; ++i) {
    const uint64_t entity = h.readH(o.handle).value;
    // Entries of entities not read are left out with them.
    if (entity && !isWrittenAny(entity)) continue;
    m_w.writeHandle(331, entity);
    m_w.writeHandle(5, sortHandles[static_cast<size_t>(i)]);
  }
}

void DwgToDxf::mlineStyle(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h) {
  // TV name, TV description, BS flags, CMC fill colour, BD start and end
  // angles, RC line count; per line BD offset, CMC colour, BS linetype
  // (32767 ByLayer, 32766 ByBlock, else its place in the linetype table;
  // from R2018 on a handle to the linetype among the handles instead).
  // The file's flags swap some bits of the DXF ones: 1 and 2, 32 and 64,
  // 512 and 1024.
  const OdString name = d.readTV(m_cp), description = d.readTV(m_cp);
  const int bits = static_cast<uint16_t>(d.readBS());
  const int fill = m_file.readCMC(d);
  const double start = d.readBD(), end = d.readBD();
  const int lines = d.readRC();
  int flags = bits & ~(1 | 2 | 32 | 64 | 512 | 1024);
  const int swaps[][2] = {{1, 2}, {32, 64}, {512, 1024}};
  for (const auto& pair : swaps) {
    if (bits & pair[0]) flags |= pair[1];
    if (bits & pair[1]) flags |= pair[0];
  }
  m_w.writeString(0, L"MLINESTYLE");
  header(o, o.owner);
  m_w.writeString(100, L"AcDbMlineStyle");
  m_w.writeString(2, name);
  m_w.writeInt(70, flags);
  m_w.writeString(3, description);
  m_w.writeInt(62, fill);
  degrees(51, start);
  degrees(52, end);
  m_w.writeInt(71, lines);
  std::vector<std::pair<double, int>> pending;  // R2018 on: lines waiting for their linetype handles
  for (int i = 0; i < lines; ++i) {
    const double offset = d.readBD();
    const int color = m_file.readCMC(d);
    if (m_file.atLeast(kDwgR2018)) {
      pending.push_back({offset, color});
      continue;
    }
    const int linetype = d.readBS();
    m_w.writeDouble(49, offset);
    m_w.writeInt(62, color);
    OdString ltName = linetype == 32767 ? OdString(L"BYLAYER") : linetype == 32766 ? OdString(L"BYBLOCK") : OdString();
    if (ltName.isEmpty()) {
      const std::vector<uint64_t>& listed = linetypes();
      if (linetype >= 0 && static_cast<size_t>(linetype) < listed.size()) ltName = nameOf(listed[static_cast<size_t>(linetype)]);
    }
    m_w.writeString(6, ltName.isEmpty() ? OdString(L"BYLAYER") : ltName);
  }
  for (const auto& [offset, color] : pending) {
    const OdString& ltName = nameOf(h.readH(o.handle).value);
    m_w.writeDouble(49, offset);
    m_w.writeInt(62, color);
    m_w.writeString(6, ltName.isEmpty() ? OdString(L"BYLAYER") : ltName);
  }
}

const std::vector<uint64_t>& DwgToDxf::linetypes() {
  // The linetype table's records in the order its control lists them.
  if (m_linetypesRead) return m_linetypes;
  m_linetypesRead = true;
  for (const OdDwgObject& control : m_file.objects()) {
    if (control.type != 0x38 || !control.decoded) continue;
    try {
      OdDwgBitReader cd = m_file.objectReader(control), ch = m_file.objectReader(control);
      cd.seekBit(control.dataBit);
      ch.seekBit(control.handleBit);
      const int32_t count = cd.readBL();
      if (count < 0 || static_cast<size_t>(count) > control.size) break;
      for (int32_t i = 0; i < count; ++i) m_linetypes.push_back(ch.readH(control.handle).value);
    } catch (const OdDwgDecodeError&) {
      m_linetypes.clear();
    }
    break;
  }
  return m_linetypes;
}

bool DwgToDxf::isProxy(const OdDwgObject& o) const {
  if (!o.decoded || (o.type >= 0x30 && o.type <= 0x47) || (!o.entity && objectDecoded(o))) return false;
  auto known = m_modeled.find(o.dxfName.str());
  if (known == m_modeled.end()) {
    known = m_modeled.emplace(o.dxfName.str(), odDxfClassForObject(o.dxfName, nullptr, nullptr) != nullptr).first;
  }
  return !known->second;
}

const OdDwgClass* DwgToDxf::storedProxyClass(const OdDwgObject& o) const {
  // A proxy the file itself holds (types 0x1F2, 0x1F3) begins its own data
  // with a BL: the number of the class it stands for.
  if (o.type != 0x1F2 && o.type != 0x1F3) return nullptr;
  try {
    OdDwgBitReader d = m_file.objectReader(o);
    d.seekBit(o.dataBit);
    const int32_t number = d.readBL();
    for (const OdDwgClass& c : m_file.classes()) {
      if (c.number == number) return &c;
    }
  } catch (const OdDwgDecodeError&) {
  }
  return nullptr;
}

void DwgToDxf::proxyData(const OdDwgObject& o) {
  // The proxy form of DXF: the class by its number in the classes section
  // (built-in types kept as proxies get numbers after the file's classes;
  // the file's own proxies keep the class they stand for), the size in
  // bits and every byte of the object as stored (type, handle, extended
  // data, common data, own data, handles), so nothing is lost.
  auto number = m_proxyClasses.find(o.type);
  const OdDwgClass* stored = storedProxyClass(o);
  m_w.writeString(100, o.entity ? L"AcDbProxyEntity" : L"AcDbProxyObject");
  m_w.writeInt(90, o.entity ? 498 : 499);
  m_w.writeInt(91, stored ? stored->number : number != m_proxyClasses.end() ? number->second : static_cast<int>(o.type));
  if (o.entity) m_w.writeInt(92, 0);
  m_w.writeInt(93, static_cast<OdInt64>(o.size * 8));
  const uint8_t* bytes = m_file.data().data() + o.start;
  for (size_t at = 0; at < o.size; at += 127) m_w.writeBinary(310, bytes + at, std::min<size_t>(127, o.size - at));
  m_w.writeInt(94, 0);
  m_w.writeInt(70, 0);
  ++m_proxies[(stored ? stored->dxfName : o.dxfName).toUtf8()];
}

void DwgToDxf::classes() {
  // The file's classes keep their numbers (500 on, in order); built-in
  // types that become proxies follow, so every proxy names its class.
  m_w.writeString(0, L"SECTION");
  m_w.writeString(2, L"CLASSES");
  auto record = [&](const OdString& dxfName, const OdString& cppName, const OdString& app, int flags, bool zombie, bool entity) {
    m_w.writeString(0, L"CLASS");
    m_w.writeString(1, dxfName);
    m_w.writeString(2, cppName);
    m_w.writeString(3, app);
    m_w.writeInt(90, flags);
    m_w.writeInt(280, zombie ? 1 : 0);
    m_w.writeInt(281, entity ? 1 : 0);
  };
  for (const OdDwgClass& c : m_file.classes()) record(c.dxfName, c.cppName, c.appName, c.proxyFlags, c.wasZombie, c.isEntity);
  int next = 500 + static_cast<int>(m_file.classes().size());
  for (const OdDwgObject& o : m_file.objects()) {
    if (o.type >= 500 || m_proxyClasses.count(o.type) || !(isProxy(o) || modelerKeptAsProxy(o)) || storedProxyClass(o)) continue;
    m_proxyClasses[o.type] = next++;
    record(o.dxfName, o.dxfName, OdString(), 0, false, o.entity);
  }
  m_w.writeString(0, L"ENDSEC");
  flush();
}

void DwgToDxf::xrecord(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h) {
  // BL byte count, then items until that many bytes are read: RS group
  // code and its value in the form the code's type asks (strings RS length,
  // RC code page and bytes; reals RD; points 3 RD; 8-, 16-, 32- and 64-bit
  // integers RC, RS, RL, 8 bytes; binary RC length and bytes; handles 8
  // bytes). R2000 adds BS cloning. Handles after the common ones: the
  // objects the record refers to.
  const int32_t bytes = d.readBL();
  if (bytes < 0 || static_cast<size_t>(bytes) > o.size) throw OdDwgDecodeError("implausible xrecord size", d.bitPosition());
  const size_t end = d.bitPosition() + static_cast<size_t>(bytes) * 8;
  // Decoded into a list whose storage is kept from record to record, then
  // moved into one of the exact size.
  OdDxfTagList& items = m_items;
  items.clear();
  // Whether the DXF reader would read the items as anything but the
  // record's data: a subclass marker (100), an embedded object (101), the
  // start of extended data (1001), a number that is not finite (repaired).
  bool readerInterprets = false;
  while (d.bitPosition() < end) {
    const int code = static_cast<int16_t>(d.readRS());
    if (code <= 0 || code == 5 || code == 105 || code > 1071 || !OdDxf::isKnownCode(code)) {
      throw OdDwgDecodeError("xrecord item of group " + std::to_string(code), d.bitPosition());
    }
    readerInterprets = readerInterprets || code == 100 || code == 101 || code == 1001;
    OdDxfTag& tag = items.emplace_back();
    tag.code = static_cast<OdInt16>(code);
    // 8-bit integers and flags (280-299) are one byte.
    if (code >= 280 && code <= 299) {
      tag.type = OdDxf::valueTypeOf(code);
      tag.i = d.readRC();
      continue;
    }
    switch (tag.type = OdDxf::valueTypeOf(code)) {
      case OdDxf::ValueType::kString: {
        const uint16_t length = d.readRS();
        std::wstring& text = tag.s.str();
        if (m_file.atLeast(kDwgR2007)) {
          // R2007 on: a count of UTF-16 units and the units.
          d.readUnits(length, text);
        } else {
          d.readRC();  // the string's code page: the drawing's
          d.readText(length, m_cp, text);
        }
        std::erase(text, L'\0');  // a group's text cannot hold it
        break;
      }
      case OdDxf::ValueType::kDouble: {
        // Angles (50-58) are radians in the file, degrees in DXF.
        const double value = d.readRD();
        tag.x = code >= 50 && code <= 58 ? odRadiansToDegrees(value) : value;
        readerInterprets = readerInterprets || !std::isfinite(tag.x);
        break;
      }
      case OdDxf::ValueType::kPoint: {
        tag.x = d.readRD();
        tag.y = d.readRD();
        tag.z = d.readRD();
        tag.dims = 3;
        readerInterprets = readerInterprets || !std::isfinite(tag.x) || !std::isfinite(tag.y) || !std::isfinite(tag.z);
        break;
      }
      case OdDxf::ValueType::kInt16: tag.i = static_cast<int16_t>(d.readRS()); break;
      case OdDxf::ValueType::kInt32: tag.i = static_cast<int32_t>(d.readRL()); break;
      case OdDxf::ValueType::kInt64: {
        const uint64_t low = d.readRL(), high = d.readRL();
        tag.i = static_cast<OdInt64>(low | (high << 32));
        break;
      }
      case OdDxf::ValueType::kBinary: {
        const uint8_t size = d.readRC();
        tag.bin.resize(size);
        d.readBytes(tag.bin.data(), size);
        break;
      }
      case OdDxf::ValueType::kHandle: {
        uint8_t raw[8];
        d.readBytes(raw, 8);
        uint64_t handle = 0;
        for (int i = 0; i < 8; ++i) handle |= static_cast<uint64_t>(raw[i]) << (8 * i);
        tag.i = static_cast<OdInt64>(handle);
        break;
      }
      default: throw OdDwgDecodeError("xrecord item of group " + std::to_string(code), d.bitPosition());
    }
  }
  if (d.bitPosition() != end) throw OdDwgDecodeError("xrecord items overrun their size", d.bitPosition());
  const int cloning = m_r2000 ? d.readBS() : 1;
  m_w.writeString(0, L"XRECORD");
  header(o, o.owner);
  m_w.writeString(100, L"AcDbXrecord");
  m_w.writeInt(280, cloning);
  // Most records' items (most of the data of a small drawing) go into the
  // record as they are, without groups that the reader would only copy.
  if (readerInterprets) {
    for (const OdDxfTag& tag : items) m_w.writeTag(tag);
  } else if (!items.empty()) {
    m_adopted.xrecordItems.emplace_back(o.handle, OdDxfTagList(std::make_move_iterator(items.begin()), std::make_move_iterator(items.end())));
  }
  (void)h;
}

bool DwgToDxf::object(const OdDwgObject& o) {
  const std::wstring_view name = o.dxfName.str();
  return decodeObject(o, [&](OdDwgBitReader& d, OdDwgBitReader& h) {
    if (name == L"ACDBPLACEHOLDER"sv) {
      m_w.writeString(0, L"ACDBPLACEHOLDER");
      header(o, o.owner);
    } else if (name == L"XRECORD"sv) {
      xrecord(o, d, h);
    } else if (name == L"LAYOUT"sv) {
      layout(o, d, h);
    } else if (name == L"SORTENTSTABLE"sv) {
      sortents(o, d, h);
    } else if (o.type == 0x49) {
      mlineStyle(o, d, h);
    } else if (o.type == 0x48) {
      group(o, d, h);
    } else if (name != L"DICTIONARY"sv) {
      m_w.writeString(0, L"ACAD_PROXY_OBJECT");
      header(o, o.owner);
      proxyData(o);
    } else {
      int cloning = 1;
      const auto entries = dictionaryEntries(o, d, h, cloning);
      m_w.writeString(0, L"DICTIONARY");
      header(o, o.owner);
      m_w.writeString(100, L"AcDbDictionary");
      m_w.writeInt(281, cloning);
      for (const auto& [name, item] : entries) {
        // Entries whose objects are not read yet are left out with them.
        if (!isWritten(item.value)) continue;
        m_w.writeString(3, name);
        m_w.writeHandle(item.code == 2 ? 360 : 350, item.value);
      }
    }
    return true;
  });
}


std::vector<std::pair<OdString, OdDwgHandleRef>> DwgToDxf::dictionaryEntries(const OdDwgObject& o, OdDwgBitReader& d,
                                                                              OdDwgBitReader& h, int& cloning) const {
  // Item count, (R14) a byte, (R2000) cloning and hard-owner flags, the names; then one handle per item.
  const int32_t items = d.readBL();
  if (items < 0 || static_cast<size_t>(items) > o.size) throw OdDwgDecodeError("implausible item count", d.bitPosition());
  if (m_file.versionName() == "AC1014") d.readRC();
  if (m_r2000) {
    cloning = d.readBS();
    d.readRC();  // said to be the hard-owner flag, but set where the DXF twins show none: not used
  }
  std::vector<std::pair<OdString, OdDwgHandleRef>> entries;
  for (int32_t i = 0; i < items; ++i) entries.emplace_back(d.readTV(m_cp), OdDwgHandleRef());
  for (auto& entry : entries) entry.second = h.readH(o.handle);
  return entries;
}

}  // namespace oddwg
