// The common object data of a DWG file (handle, reactors, extension dictionary,
// owner, extended data) and the non-graphical objects.
#include "dwg/DwgToDxf.h"

namespace oddwg {

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


}  // namespace oddwg
