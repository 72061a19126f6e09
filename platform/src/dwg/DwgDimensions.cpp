// Dimensions and leaders of a DWG file, written as the groups of their DXF
// classes.
#include <array>

#include "dwg/DwgToDxf.h"

namespace oddwg {

namespace {
bool isDefaultNormal(const double n[3]) { return n[0] == 0 && n[1] == 0 && n[2] == 1; }
}  // namespace

void DwgToDxf::dimension(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h) {
  // The data every kind shares: (R2010) RC version, 3BD normal, 2RD text
  // position and BD its elevation, RC flags (bit 0: the text stands where
  // the style puts it; bit 1: the block is this dimension's own), TV text,
  // BD text rotation, BD horizontal direction, 3BD and BD the block's
  // scale and rotation, (R2000) BS attachment, BS line spacing style, BD
  // line spacing factor, BD measurement, (R2007) B, B, B the arrows
  // flipped, 2RD the block's position.
  const bool r2007 = m_file.versionName() >= "AC1021", r2010 = m_file.versionName() >= "AC1024";
  int version = 0;
  if (r2010) version = d.readRC();
  double normal[3], text[3];
  point3(d, normal);
  text[0] = d.readRD();
  text[1] = d.readRD();
  text[2] = d.readBD();
  const int flags = d.readRC();
  const OdString userText = d.readTV(m_cp);
  const double textRotation = d.readBD(), horizontal = d.readBD();
  for (int i = 0; i < 3; ++i) d.readBD();  // the block's scale: always 1 for a dimension's own block
  d.readBD();                              // the block's rotation: the same as the dimension's
  int attachment = 5, spacingStyle = 1;
  double spacing = 1.0, measurement = 0;
  if (m_r2000) {
    attachment = d.readBS();
    spacingStyle = d.readBS();
    spacing = d.readBD();
    measurement = d.readBD();
  }
  bool r2007Flags[3] = {false, false, false};  // DXF 73, and the arrows flipped (74, 75)
  if (r2007)
    for (bool& flag : r2007Flags) flag = d.readBit();
  const double blockX = d.readRD(), blockY = d.readRD();

  // The kind's own points.
  double p10[3] = {0, 0, 0}, p13[3] = {0, 0, 0}, p14[3] = {0, 0, 0}, p15[3] = {0, 0, 0}, p16[3] = {0, 0, 0};
  double rotation = 0, oblique = 0, leader = 0;
  int kind = 0;
  switch (o.type) {
    case 0x14: {  // ordinate: 3BD 10, 13, 14; RC: 1 for an X-ordinate
      point3(d, p10);
      point3(d, p13);
      point3(d, p14);
      kind = 6 | ((d.readRC() & 1) ? 64 : 0);
      break;
    }
    case 0x15:  // linear: 3BD 13, 14, 10; BD oblique, BD rotation
    case 0x16:  // aligned: the same without the rotation
      point3(d, p13);
      point3(d, p14);
      point3(d, p10);
      oblique = d.readBD();
      if (o.type == 0x15) rotation = d.readBD();
      kind = o.type == 0x15 ? 0 : 1;
      break;
    case 0x17:  // angular by three points: 3BD 10, 13, 14, 15
      point3(d, p10);
      point3(d, p13);
      point3(d, p14);
      point3(d, p15);
      kind = 5;
      break;
    case 0x18:  // angular by two lines: 2RD 16, 3BD 13, 14, 15, 10
      p16[0] = d.readRD();
      p16[1] = d.readRD();
      p16[2] = text[2];
      point3(d, p13);
      point3(d, p14);
      point3(d, p15);
      point3(d, p10);
      kind = 2;
      break;
    case 0x19:  // radius and diameter: 3BD 10, 15, BD leader length
    case 0x1A:
      point3(d, p10);
      point3(d, p15);
      leader = d.readBD();
      kind = o.type == 0x19 ? 4 : 3;
      break;
    default: throw OdDwgDecodeError("dimension of an unknown kind", d.bitPosition());
  }
  const OdString style = nameOf(h.readH(o.handle).value);
  const OdString block = nameOf(h.readH(o.handle).value);

  m_w.writeString(100, L"AcDbDimension");
  if (r2010) m_w.writeInt(280, version);
  if (!block.isEmpty()) m_w.writeString(2, block);
  m_w.writePoint(10, p10[0], p10[1], p10[2]);
  m_w.writePoint(11, text[0], text[1], text[2]);
  if (blockX != 0 || blockY != 0) m_w.writePoint(12, blockX, blockY, 0);
  m_w.writeInt(70, kind | ((flags & 1) ? 0 : 128) | ((flags & 2) ? 32 : 0));
  m_w.writeInt(71, attachment);
  if (spacingStyle != 1) m_w.writeInt(72, spacingStyle);
  if (spacing != 1.0) m_w.writeDouble(41, spacing);
  if (m_r2000) m_w.writeDouble(42, measurement);
  if (r2007)
    for (int i = 0; i < 3; ++i) m_w.writeInt(73 + i, r2007Flags[i]);
  // A text of one space is how the file says "no text of the user's" (the
  // program that writes both forms gives an empty text in DXF for it).
  if (userText == L" ") m_w.writeString(1, L"");
  else if (!userText.isEmpty()) m_w.writeString(1, userText);
  if (textRotation != 0) degrees(53, textRotation);
  if (horizontal != 0) degrees(51, horizontal);
  if (!isDefaultNormal(normal)) m_w.writePoint(210, normal[0], normal[1], normal[2]);
  if (!style.isEmpty()) m_w.writeString(3, style);
  switch (kind & 15) {
    case 0:
    case 1:
      m_w.writeString(100, L"AcDbAlignedDimension");
      m_w.writePoint(13, p13[0], p13[1], p13[2]);
      m_w.writePoint(14, p14[0], p14[1], p14[2]);
      if (kind == 0) degrees(50, rotation);
      if (oblique != 0) degrees(52, oblique);
      if (kind == 0) m_w.writeString(100, L"AcDbRotatedDimension");
      break;
    case 2:
      m_w.writeString(100, L"AcDb2LineAngularDimension");
      m_w.writePoint(13, p13[0], p13[1], p13[2]);
      m_w.writePoint(14, p14[0], p14[1], p14[2]);
      m_w.writePoint(15, p15[0], p15[1], p15[2]);
      m_w.writePoint(16, p16[0], p16[1], p16[2]);
      break;
    case 5:
      m_w.writeString(100, L"AcDb3PointAngularDimension");
      m_w.writePoint(13, p13[0], p13[1], p13[2]);
      m_w.writePoint(14, p14[0], p14[1], p14[2]);
      m_w.writePoint(15, p15[0], p15[1], p15[2]);
      break;
    case 3:
    case 4:
      m_w.writeString(100, kind == 3 ? L"AcDbDiametricDimension" : L"AcDbRadialDimension");
      m_w.writePoint(15, p15[0], p15[1], p15[2]);
      m_w.writeDouble(40, leader);
      break;
    case 6:
      m_w.writeString(100, L"AcDbOrdinateDimension");
      m_w.writePoint(13, p13[0], p13[1], p13[2]);
      m_w.writePoint(14, p14[0], p14[1], p14[2]);
      break;
  }
}

void DwgToDxf::leader(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h) {
  // B; BS annotation type; BS path type; BL point count and 3BD points;
  // 3BD the end projected on the annotation; 3BD normal; 3BD horizontal
  // direction; (R14) 3BD block offset and 3BD annotation offset; (R13,
  // R14) BD gap; (R13-R2007) BD text height and width; B hook line along the
  // direction; B arrowhead; (R13, R14) BS arrowhead type, BD arrow size, B,
  // B, BS, BS block colour, B, B; (R2000) BS, B, B. Handles: the
  // annotation, the style.
  const bool r14 = m_file.versionName() >= "AC1014";
  d.readBit();
  const int annotationType = d.readBS(), pathType = d.readBS();
  const int32_t points = d.readBL();
  if (points < 0 || static_cast<size_t>(points) > o.size) throw OdDwgDecodeError("implausible leader point count", d.bitPosition());
  std::vector<std::array<double, 3>> vertices(static_cast<size_t>(points));
  for (auto& v : vertices) point3(d, v.data());
  double end[3], normal[3], direction[3], blockOffset[3] = {0, 0, 0}, annotationOffset[3] = {0, 0, 0};
  point3(d, end);
  point3(d, normal);
  point3(d, direction);
  if (r14) {
    point3(d, blockOffset);
    point3(d, annotationOffset);
  }
  if (!m_r2000) d.readBD();  // the gap: the style's
  // From R2010 on the annotation's height and width are not stored: the
  // annotation itself holds them.
  const bool sized = !m_file.atLeast(kDwgR2010);
  const double height = sized ? d.readBD() : 0, width = sized ? d.readBD() : 0;
  const bool hookAlongDirection = d.readBit(), arrowhead = d.readBit();
  int blockColor = -1;
  if (!m_r2000) {
    d.readBS();
    d.readBD();
    d.readBit();
    d.readBit();
    d.readBS();
    blockColor = d.readBS();
    d.readBit();
    d.readBit();
  } else {
    d.readBS();
    d.readBit();
    d.readBit();
  }
  const uint64_t annotation = h.readH(o.handle).value;
  const OdString style = nameOf(h.readH(o.handle).value);
  m_w.writeString(100, L"AcDbLeader");
  if (!style.isEmpty()) m_w.writeString(3, style);
  m_w.writeInt(71, arrowhead);
  m_w.writeInt(72, pathType);
  m_w.writeInt(73, annotationType);
  m_w.writeInt(74, hookAlongDirection);
  if (sized) {
    m_w.writeDouble(40, height);
    m_w.writeDouble(41, width);
  }
  m_w.writeInt(76, points);
  for (const auto& v : vertices) m_w.writePoint(10, v[0], v[1], v[2]);
  if (blockColor >= 0) m_w.writeInt(77, blockColor);
  if (annotation && isWrittenAny(annotation)) m_w.writeHandle(340, annotation);
  // DXF gives the vectors other than their defaults.
  if (!isDefaultNormal(normal)) m_w.writePoint(210, normal[0], normal[1], normal[2]);
  if (direction[0] != 1 || direction[1] != 0 || direction[2] != 0) m_w.writePoint(211, direction[0], direction[1], direction[2]);
  if (blockOffset[0] != 0 || blockOffset[1] != 0 || blockOffset[2] != 0) m_w.writePoint(212, blockOffset[0], blockOffset[1], blockOffset[2]);
  if (annotationOffset[0] != 0 || annotationOffset[1] != 0 || annotationOffset[2] != 0)
    m_w.writePoint(213, annotationOffset[0], annotationOffset[1], annotationOffset[2]);
}

}  // namespace oddwg
