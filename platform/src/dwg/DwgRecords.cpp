// Symbol-table records of a DWG file, written as the groups of their tables.
#include "dwg/DwgToDxf.h"

namespace oddwg {

void DwgToDxf::record(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h) {
  d.readTV(m_cp);  // the name, already known
  d.readBit();  // referenced: a flag of the file, not kept by a drawing
  if (!m_file.atLeast(kDwgR2007)) d.readBS();  // xref index (no longer stored from R2007 on)
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
      // From R2004 on the record lists its entities (not for external references).
      int32_t owned = 0;
      if (m_file.atLeast(kDwgR2004) && !(info.flags & 12)) {
        owned = d.readBL();
        if (owned < 0 || static_cast<size_t>(owned) > o.size) throw OdDwgDecodeError("implausible entity count", d.bitPosition());
      }
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
      // R2007 on: insertion units, explodable, scaled uniformly.
      int units = 0, explodable = 1, scaling = 0;
      const bool r2007 = m_file.atLeast(kDwgR2007);
      if (r2007) {
        units = d.readBS();
        explodable = d.readBit();
        scaling = d.readRC();
      }
      // The handles after the (null) external reference: BLOCK, first and
      // last entity (R2004 on: every entity) unless an external reference,
      // ENDBLK, then the inserts.
      h.readH(o.handle);
      if (m_file.atLeast(kDwgR2004)) {
        for (int32_t i = 0; i < owned; ++i) info.entities.push_back(h.readH(o.handle).value);
      } else if (!(info.flags & 12)) {
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
      if (r2007) {
        m_w.writeInt(70, units);
        m_w.writeInt(280, explodable);
        m_w.writeInt(281, scaling);
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
      int color = m_file.readCMC(d);
      if (color < 0) { off = true; color = -color; }
      const uint64_t plotStyle = m_r2000 ? h.readH(o.handle).value : 0;
      const uint64_t material = m_file.atLeast(kDwgR2007) ? h.readH(o.handle).value : 0;
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
      if (material) m_w.writeHandle(347, material);
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
      // The texts of text dashes: 256 bytes, each text at its dash's shape
      // number; R2007 on 512 bytes of UTF-16, only when a dash has a text.
      char area[257] = {};
      std::wstring wideArea;
      bool texts = false;
      for (const Dash& dash : list) texts = texts || (dash.flags & 2);
      if (!m_file.atLeast(kDwgR2007)) {
        for (int i = 0; i < 256; ++i) area[i] = static_cast<char>(d.readRC());
      } else if (texts) {
        for (int i = 0; i < 256; ++i) wideArea += static_cast<wchar_t>(d.readRS());
      }
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
        if ((dash.flags & 2) && dash.shape >= 0 && dash.shape < 256) {
          if (m_file.atLeast(kDwgR2007)) {
            // R2007 on the shape number counts bytes of the area.
            const size_t at = static_cast<size_t>(dash.shape) / 2;
            const std::wstring tail = at < wideArea.size() ? wideArea.substr(at) : std::wstring();
            m_w.writeString(9, OdString(tail.substr(0, tail.find(L'\0'))));
          } else {
            m_w.writeString(9, odDecodeCodePage(std::string(area + dash.shape), m_cp));
          }
        }
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


}  // namespace oddwg
