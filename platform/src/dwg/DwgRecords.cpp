// Symbol-table records of a DWG file, written as the groups of their tables.
#include <algorithm>

#include "CmColor.h"
#include "dwg/DwgToDxf.h"

namespace oddwg {

namespace {
// One dimension variable of a DIMSTYLE record: its DXF group, how the file
// codes it, and the value DXF leaves out (the drawing defaults).
enum class Dv { B, RC, BS, BD, TV, CMC };
struct DimVar {
  int code;
  Dv kind;
  double otherwise;
};
constexpr DimVar kDimVarsR2000[] = {
    {3, Dv::TV, 0},     {4, Dv::TV, 0},     {40, Dv::BD, 1},      {41, Dv::BD, 0.18},   {42, Dv::BD, 0.0625},
    {43, Dv::BD, 0.38}, {44, Dv::BD, 0.18}, {45, Dv::BD, 0},      {46, Dv::BD, 0},      {47, Dv::BD, 0},
    {48, Dv::BD, 0},    {49, Dv::BD, 1},    {50, Dv::BD, 0.7853981633974483},           {69, Dv::BS, 0},
    {70, Dv::CMC, 0},   {71, Dv::B, 0},     {72, Dv::B, 0},       {73, Dv::B, 1},       {74, Dv::B, 1},
    {75, Dv::B, 0},     {76, Dv::B, 0},     {77, Dv::BS, 0},      {78, Dv::BS, 0},      {79, Dv::BS, 0},
    {90, Dv::BS, 0},    {140, Dv::BD, 0.18}, {141, Dv::BD, 0.09}, {142, Dv::BD, 0},     {143, Dv::BD, 25.4},
    {144, Dv::BD, 1},   {145, Dv::BD, 0},   {146, Dv::BD, 1},     {147, Dv::BD, 0.09},  {148, Dv::BD, 0},
    {170, Dv::B, 0},    {171, Dv::BS, 2},   {172, Dv::B, 0},      {173, Dv::B, 0},      {174, Dv::B, 0},
    {175, Dv::B, 0},    {176, Dv::CMC, 0},  {177, Dv::CMC, 0},    {178, Dv::CMC, 0},    {179, Dv::BS, 0},
    {271, Dv::BS, 4},   {272, Dv::BS, 4},   {273, Dv::BS, 2},     {274, Dv::BS, 2},     {275, Dv::BS, 0},
    {276, Dv::BS, 0},   {277, Dv::BS, 2},   {278, Dv::BS, 46},    {279, Dv::BS, 0},     {280, Dv::BS, 0},
    {281, Dv::B, 0},    {282, Dv::B, 0},    {283, Dv::BS, 1},     {284, Dv::BS, 0},     {285, Dv::BS, 0},
    {286, Dv::BS, 0},   {288, Dv::B, 0},    {289, Dv::BS, 3},     {290, Dv::B, 0},      {295, Dv::B, 0},
    {371, Dv::BS, -2},  {372, Dv::BS, -2},
};
// R13 and R14 keep them in another order, some in bytes, the arrow blocks by name.
constexpr DimVar kDimVarsR14[] = {
    {71, Dv::B, 0},     {72, Dv::B, 0},     {73, Dv::B, 1},     {74, Dv::B, 1},     {75, Dv::B, 0},
    {76, Dv::B, 0},     {170, Dv::B, 0},    {172, Dv::B, 0},    {173, Dv::B, 0},    {174, Dv::B, 0},
    {175, Dv::B, 0},    {171, Dv::RC, 2},   {78, Dv::RC, 0},    {281, Dv::B, 0},    {282, Dv::B, 0},
    {283, Dv::RC, 1},   {280, Dv::RC, 0},   {287, Dv::RC, 3},   {288, Dv::B, 0},    {284, Dv::RC, 0},
    {285, Dv::RC, 0},   {286, Dv::RC, 0},   {77, Dv::RC, 0},    {270, Dv::BS, 2},   {275, Dv::BS, 0},
    {271, Dv::BS, 4},   {272, Dv::BS, 4},   {273, Dv::BS, 2},   {274, Dv::BS, 2},   {40, Dv::BD, 1},
    {41, Dv::BD, 0.18}, {42, Dv::BD, 0.0625}, {43, Dv::BD, 0.38}, {44, Dv::BD, 0.18}, {45, Dv::BD, 0},
    {46, Dv::BD, 0},    {47, Dv::BD, 0},    {48, Dv::BD, 0},    {140, Dv::BD, 0.18}, {141, Dv::BD, 0.09},
    {142, Dv::BD, 0},   {143, Dv::BD, 25.4}, {144, Dv::BD, 1},  {145, Dv::BD, 0},   {146, Dv::BD, 1},
    {147, Dv::BD, 0.09}, {3, Dv::TV, 0},    {4, Dv::TV, 0},     {5, Dv::TV, 0},     {6, Dv::TV, 0},
    {7, Dv::TV, 0},     {176, Dv::BS, 0},   {177, Dv::BS, 0},   {178, Dv::BS, 0},
};
}  // namespace

// BD height, BD width, 2RD centre, 3BD target, 3BD direction, BD twist, BD
// lens length, BD front and back clip, 4 bits of view mode (perspective,
// front clip, back clip, front clip at the eye: DXF's 16 is its opposite),
// (R2000) RC render mode.
DwgToDxf::ViewHead DwgToDxf::viewHead(OdDwgBitReader& d) {
  ViewHead v;
  v.height = d.readBD();
  v.width = d.readBD();
  v.cx = d.readRD();
  v.cy = d.readRD();
  point3(d, v.target);
  point3(d, v.direction);
  v.twist = d.readBD();
  v.lens = d.readBD();
  v.front = d.readBD();
  v.back = d.readBD();
  if (d.readBit()) v.mode |= 1;
  if (d.readBit()) v.mode |= 2;
  if (d.readBit()) v.mode |= 4;
  if (!d.readBit()) v.mode |= 16;
  v.render = m_r2000 ? d.readRC() : 0;
  return v;
}

void DwgToDxf::view(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h, int flags) {
  // The view head, then (R2007) B default lights, RC lighting type, BD
  // brightness and contrast, CMC ambient colour; B paper space; (R2000) B
  // UCS kept with the view and, when set, 3BD UCS origin, X and Y axes, BD
  // elevation, BS orthographic type; (R2007) B camera plottable. Handles
  // (R2000, with a UCS): base and named UCS.
  const bool r2007 = m_file.atLeast(kDwgR2007);
  const ViewHead v = viewHead(d);
  if (r2007) lighting(d);  // not kept by views
  if (d.readBit()) flags |= 1;
  bool withUcs = false;
  double origin[3] = {0, 0, 0}, xAxis[3] = {1, 0, 0}, yAxis[3] = {0, 1, 0}, elevation = 0;
  int ortho = 0;
  if (m_r2000) {
    withUcs = d.readBit();
    if (withUcs) {
      point3(d, origin);
      point3(d, xAxis);
      point3(d, yAxis);
      elevation = d.readBD();
      ortho = d.readBS();
    }
  }
  uint64_t baseUcs = 0, namedUcs = 0;
  if (m_r2000 && withUcs) {
    baseUcs = h.readH(o.handle).value;
    namedUcs = h.readH(o.handle).value;
  }
  commonRecord(o, L"AcDbViewTableRecord");
  m_w.writeInt(70, flags);
  m_w.writeDouble(40, v.height);
  m_w.writePoint(10, v.cx, v.cy, 0);
  m_w.writeDouble(41, v.width);
  m_w.writePoint(11, v.direction[0], v.direction[1], v.direction[2]);
  m_w.writePoint(12, v.target[0], v.target[1], v.target[2]);
  m_w.writeDouble(42, v.lens);
  m_w.writeDouble(43, v.front);
  m_w.writeDouble(44, v.back);
  degrees(50, v.twist);
  m_w.writeInt(71, v.mode);
  if (!m_r2000) return;
  m_w.writeInt(281, v.render);
  m_w.writeInt(72, withUcs ? 1 : 0);
  if (!withUcs) return;
  writeUcs(origin, xAxis, yAxis, ortho, elevation, namedUcs, baseUcs);
}

void DwgToDxf::viewportRecord(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h, int flags) {
  // The view head; (R2007) the lighting: B default lights, RC lighting
  // type, BD brightness and contrast, CMC ambient colour; 2RD lower left
  // and upper right, B UCS follow, BS circle zoom, B fast zoom, 2 bits UCS
  // icon, B grid, 2RD grid spacing, B snap, B snap style, BS isometric
  // plane, BD snap rotation, 2RD snap base and spacing; (R2000) B, B UCS
  // per viewport, 3BD UCS origin, x and y axes, BD elevation, BS
  // orthographic type; (R2007) BS grid flags and major lines. Handles:
  // (R2007) background, visual style and sun; (R2000) named and base UCS.
  const bool r2007 = m_file.atLeast(kDwgR2007);
  const ViewHead v = viewHead(d);
  const Lighting light = r2007 ? lighting(d) : Lighting();
  int mode = v.mode;
  const double llx = d.readRD(), lly = d.readRD(), urx = d.readRD(), ury = d.readRD();
  if (d.readBit()) mode |= 8;  // UCS follow
  const int circleZoom = d.readBS();
  const bool fastZoom = d.readBit();
  const unsigned ucsIcon = d.readBB();
  const bool grid = d.readBit();
  const double gx = d.readRD(), gy = d.readRD();
  const bool snap = d.readBit(), snapStyle = d.readBit();
  const int isoPair = d.readBS();
  const double snapRotation = d.readBD();
  const double sbx = d.readRD(), sby = d.readRD(), ssx = d.readRD(), ssy = d.readRD();
  bool perViewport = false;
  double origin[3] = {0, 0, 0}, xAxis[3] = {1, 0, 0}, yAxis[3] = {0, 1, 0}, elevation = 0;
  int ortho = 0, gridFlags = 0, gridMajor = 0;
  if (m_r2000) {
    d.readBit();
    perViewport = d.readBit();
    point3(d, origin);
    point3(d, xAxis);
    point3(d, yAxis);
    elevation = d.readBD();
    ortho = d.readBS();
  }
  uint64_t background = 0, visualStyle = 0, sun = 0, namedUcs = 0, baseUcs = 0;
  if (r2007) {
    gridFlags = d.readBS();
    gridMajor = d.readBS();
    background = h.readH(o.handle).value;
    visualStyle = h.readH(o.handle).value;
    sun = h.readH(o.handle).value;
  }
  if (m_r2000) {
    namedUcs = h.readH(o.handle).value;
    baseUcs = h.readH(o.handle).value;
  }
  commonRecord(o, L"AcDbViewportTableRecord");
  m_w.writeInt(70, flags);
  m_w.writePoint(10, llx, lly);
  m_w.writePoint(11, urx, ury);
  m_w.writePoint(12, v.cx, v.cy);
  m_w.writePoint(13, sbx, sby);
  m_w.writePoint(14, ssx, ssy);
  m_w.writePoint(15, gx, gy);
  m_w.writePoint(16, v.direction[0], v.direction[1], v.direction[2]);
  m_w.writePoint(17, v.target[0], v.target[1], v.target[2]);
  m_w.writeDouble(40, v.height);
  m_w.writeDouble(41, v.height != 0 ? v.width / v.height : 0);
  m_w.writeDouble(42, v.lens);
  m_w.writeDouble(43, v.front);
  m_w.writeDouble(44, v.back);
  degrees(50, snapRotation);
  degrees(51, v.twist);
  m_w.writeInt(71, mode);
  m_w.writeInt(72, circleZoom);
  m_w.writeInt(73, fastZoom);
  m_w.writeInt(74, ucsIcon);
  m_w.writeInt(75, snap);
  m_w.writeInt(76, grid);
  m_w.writeInt(77, snapStyle);
  m_w.writeInt(78, isoPair);
  if (!m_r2000) return;
  m_w.writeInt(281, v.render);
  m_w.writeInt(65, perViewport);
  writeUcs(origin, xAxis, yAxis, ortho, elevation, namedUcs, baseUcs);
  if (!r2007) return;
  if (background && isWrittenAny(background)) m_w.writeHandle(332, background);
  if (visualStyle && isWrittenAny(visualStyle)) m_w.writeHandle(348, visualStyle);
  m_w.writeInt(60, gridFlags);
  m_w.writeInt(61, gridMajor);
  writeLighting(light);
  if (sun && isWrittenAny(sun)) m_w.writeHandle(361, sun);
}

void DwgToDxf::viewportEntity(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h) {
  // 3BD centre, BD width and height on the paper. R13 and R14 stop here
  // (their view is in the extended data). R2000 on: 3BD target and
  // direction, BD twist, view height, lens, front and back clip, snap
  // angle, 2RD view centre, snap base, snap spacing and grid spacing, BS
  // circle zoom, (R2007) BS grid major, BL frozen layer count, BL status
  // flags, TV plot style sheet, RC render mode, B UCS at origin, B UCS per
  // viewport, 3BD UCS origin, x and y axes, BD elevation, BS orthographic
  // type, (R2004) BS shade plot mode, (R2007) the lighting as in viewport
  // records. Handles (R2000): the frozen layers, the clip boundary, (R2000
  // only) the viewport record, the named and base UCS, (R2007) background,
  // visual style, shade plot and sun.
  double centre[3];
  point3(d, centre);
  const double width = d.readBD(), height = d.readBD();
  m_w.writeString(100, L"AcDbViewport");
  m_w.writePoint(10, centre[0], centre[1], centre[2]);
  m_w.writeDouble(40, width);
  m_w.writeDouble(41, height);
  // Status and number: on viewports stack in their block's order, the last
  // on top; a viewport switched off (status flag 0x20000) has status 0.
  int place = 0, count = 0;
  for (const OdDwgObject* other : m_owned[o.entMode == 2 ? m_modelSpace : o.entMode == 1 ? m_paperSpace : o.owner]) {
    if (other->type != 0x22) continue;
    ++count;
    if (other == &o) place = count;
  }
  if (!m_r2000) {
    m_w.writeInt(68, count - place + 1);
    m_w.writeInt(69, place);
    return;
  }
  const bool r2007 = m_file.atLeast(kDwgR2007);
  double target[3], direction[3];
  point3(d, target);
  point3(d, direction);
  const double twist = d.readBD(), viewHeight = d.readBD(), lens = d.readBD(), front = d.readBD(), back = d.readBD(),
               snapAngle = d.readBD();
  double pairs[8];
  for (double& value : pairs) value = d.readRD();
  const int circleZoom = d.readBS();
  const int gridMajor = r2007 ? d.readBS() : 0;
  const int32_t frozen = d.readBL();
  if (frozen < 0 || static_cast<size_t>(frozen) > o.size) throw OdDwgDecodeError("implausible frozen layer count", d.bitPosition());
  const int32_t flags = d.readBL();
  const OdString styleSheet = d.readTV(m_cp);
  const int render = d.readRC();
  const bool iconAtOrigin = d.readBit(), perViewport = d.readBit();
  double origin[3], xAxis[3], yAxis[3];
  point3(d, origin);
  point3(d, xAxis);
  point3(d, yAxis);
  const double elevation = d.readBD();
  const int ortho = d.readBS();
  const int shadePlot = m_file.atLeast(kDwgR2004) ? d.readBS() : 0;
  const Lighting light = r2007 ? lighting(d) : Lighting();
  std::vector<uint64_t> frozenLayers;
  for (int32_t i = 0; i < frozen; ++i) frozenLayers.push_back(h.readH(o.handle).value);
  const uint64_t clip = h.readH(o.handle).value;
  if (m_file.version() == kDwgR2000) h.readH(o.handle);  // the viewport record
  const uint64_t namedUcs = h.readH(o.handle).value, baseUcs = h.readH(o.handle).value;
  uint64_t background = 0, visualStyle = 0, shadePlotId = 0, sun = 0;
  if (r2007) {
    background = h.readH(o.handle).value;
    visualStyle = h.readH(o.handle).value;
    shadePlotId = h.readH(o.handle).value;
    sun = h.readH(o.handle).value;
  }
  const bool off = flags & 0x20000;
  m_w.writeInt(68, off ? 0 : count - place + 1);
  m_w.writeInt(69, place);
  m_w.writePoint(12, pairs[0], pairs[1]);
  m_w.writePoint(13, pairs[2], pairs[3]);
  m_w.writePoint(14, pairs[4], pairs[5]);
  m_w.writePoint(15, pairs[6], pairs[7]);
  m_w.writePoint(16, direction[0], direction[1], direction[2]);
  m_w.writePoint(17, target[0], target[1], target[2]);
  m_w.writeDouble(42, lens);
  m_w.writeDouble(43, front);
  m_w.writeDouble(44, back);
  m_w.writeDouble(45, viewHeight);
  degrees(50, snapAngle);
  degrees(51, twist);
  m_w.writeInt(72, circleZoom);
  for (uint64_t layer : frozenLayers) {
    if (isWrittenAny(layer)) m_w.writeHandle(331, layer);
  }
  m_w.writeInt(90, flags);
  if (clip && isWrittenAny(clip)) m_w.writeHandle(340, clip);
  m_w.writeString(1, styleSheet);
  m_w.writeInt(281, render);
  m_w.writeInt(71, perViewport);
  m_w.writeInt(74, iconAtOrigin);
  m_w.writePoint(110, origin[0], origin[1], origin[2]);
  m_w.writePoint(111, xAxis[0], xAxis[1], xAxis[2]);
  m_w.writePoint(112, yAxis[0], yAxis[1], yAxis[2]);
  if (namedUcs && isWrittenAny(namedUcs)) m_w.writeHandle(345, namedUcs);
  if (baseUcs && isWrittenAny(baseUcs)) m_w.writeHandle(346, baseUcs);
  m_w.writeInt(79, ortho);
  m_w.writeDouble(146, elevation);
  if (m_file.atLeast(kDwgR2004)) m_w.writeInt(170, shadePlot);
  if (!r2007) return;
  m_w.writeInt(61, gridMajor);
  if (background && isWrittenAny(background)) m_w.writeHandle(332, background);
  if (shadePlotId && isWrittenAny(shadePlotId)) m_w.writeHandle(333, shadePlotId);
  if (visualStyle && isWrittenAny(visualStyle)) m_w.writeHandle(348, visualStyle);
  writeLighting(light);
  if (sun && isWrittenAny(sun)) m_w.writeHandle(361, sun);
}

void DwgToDxf::writeUcs(const double origin[3], const double xAxis[3], const double yAxis[3], int ortho, double elevation,
                        uint64_t namedUcs, uint64_t baseUcs) {
  m_w.writePoint(110, origin[0], origin[1], origin[2]);
  m_w.writePoint(111, xAxis[0], xAxis[1], xAxis[2]);
  m_w.writePoint(112, yAxis[0], yAxis[1], yAxis[2]);
  m_w.writeInt(79, ortho);
  m_w.writeDouble(146, elevation);
  if (namedUcs && isWrittenAny(namedUcs)) m_w.writeHandle(345, namedUcs);
  if (baseUcs && isWrittenAny(baseUcs)) m_w.writeHandle(346, baseUcs);
}

DwgToDxf::Lighting DwgToDxf::lighting(OdDwgBitReader& d) {
  Lighting l;
  l.defaultLights = d.readBit();
  l.type = d.readRC();
  l.brightness = d.readBD();
  l.contrast = d.readBD();
  l.ambient = m_file.readCMC(d, &l.ambientRgb);
  return l;
}

void DwgToDxf::writeLighting(const Lighting& l) {
  m_w.writeInt(292, l.defaultLights);
  m_w.writeInt(282, l.type);
  m_w.writeDouble(141, l.brightness);
  m_w.writeDouble(142, l.contrast);
  // A true colour is written with the palette entry nearest to it.
  if (l.ambientRgb >> 24 == 0xC2) {
    const uint32_t rgb = l.ambientRgb;
    m_w.writeInt(63, OdCmEntityColor::lookUpACI((rgb >> 16) & 0xFF, (rgb >> 8) & 0xFF, rgb & 0xFF));
    m_w.writeInt(421, rgb & 0xFFFFFF);
  } else if (l.ambient != 0) {
    m_w.writeInt(63, l.ambient);
  }
}

void DwgToDxf::dimStyle(const OdDwgObject& o, OdDwgBitReader& d, OdDwgBitReader& h, int flags) {
  // The variables in the file's order (versions add some: R2007 49, 50,
  // 69, 70, 90 and 290; R2010 295 and the sub-unit factors and suffixes);
  // then the handles of the text style and the arrow blocks.
  const std::string& v = m_file.versionName();
  const bool r2007 = v >= "AC1021", r2010 = v >= "AC1024";
  struct Value {
    int code;
    double number;
    OdString text;
    bool isText;
  };
  std::vector<Value> values;
  auto readAll = [&](const DimVar* begin, const DimVar* end) {
    for (const DimVar* var = begin; var != end; ++var) {
      if (!r2007 && (var->code == 49 || var->code == 50 || var->code == 69 || var->code == 70 || var->code == 90 || var->code == 290)) continue;
      if (!r2010 && var->code == 295) continue;
      Value value{var->code, 0, OdString(), var->kind == Dv::TV};
      switch (var->kind) {
        case Dv::B: value.number = d.readBit(); break;
        case Dv::RC: value.number = d.readRC(); break;
        case Dv::BS: value.number = d.readBS(); break;
        case Dv::BD: value.number = d.readBD(); break;
        case Dv::CMC: value.number = m_file.readCMC(d); break;
        case Dv::TV: value.text = d.readTV(m_cp); break;
      }
      if (var->code == 295 && r2010) {
        d.readBD();  // sub-unit factors and suffixes: not kept by the platform
        d.readTV(m_cp);
        d.readBD();
        d.readTV(m_cp);
      }
      // R2000 on, DXF gives the values other than the defaults; R13 and R14 give them all.
      const bool r14 = !m_r2000 && !r2007;
      if (r14 || (value.isText ? !value.text.isEmpty() : value.number != var->otherwise)) values.push_back(value);
    }
  };
  if (m_r2000 || r2007) readAll(std::begin(kDimVarsR2000), std::end(kDimVarsR2000));
  else readAll(std::begin(kDimVarsR14), std::end(kDimVarsR14));
  std::vector<std::pair<int, uint64_t>> handles;
  const int count = m_r2000 || r2007 ? (r2007 ? 8 : 5) : 1;
  for (int i = 0; i < count; ++i) {
    const uint64_t handle = h.readH(o.handle).value;
    if (handle) handles.emplace_back(340 + i, handle);
  }
  std::sort(values.begin(), values.end(), [](const Value& a, const Value& b) { return a.code < b.code; });
  commonRecord(o, L"AcDbDimStyleTableRecord");
  m_w.writeInt(70, flags);
  // DXF orders them (R2000 on): texts, reals 40-50, flags 69-90, reals
  // 140-148, 170-179, 270-295, handles, lineweights; (R13, R14) texts,
  // reals, flags, 170-178, 270-274, the text style, 275-288.
  const bool r14 = !m_r2000 && !r2007;
  auto rank = [r14](int code) {
    if (r14) return code < 10 ? 0 : code < 60 ? 1 : code < 100 ? 3 : code < 150 ? 2 : code < 200 ? 4 : code < 275 ? 5 : 7;
    return code < 10 ? 0 : code < 60 ? 1 : code < 100 ? 2 : code < 150 ? 3 : code < 200 ? 4 : code < 300 ? 5 : 7;
  };
  std::stable_sort(values.begin(), values.end(), [&](const Value& a, const Value& b) { return rank(a.code) < rank(b.code); });
  bool handlesWritten = false;
  auto writeHandles = [&] {
    for (const auto& [code, handle] : handles) m_w.writeHandle(code, handle);
    handlesWritten = true;
  };
  for (const Value& value : values) {
    if (!handlesWritten && rank(value.code) == 7) writeHandles();
    if (value.isText) m_w.writeString(value.code, value.text);
    else if (OdDxf::valueTypeOf(value.code) == OdDxf::ValueType::kDouble) m_w.writeDouble(value.code, value.number);
    else m_w.writeInt(value.code, static_cast<OdInt64>(value.number));
  }
  if (!handlesWritten) writeHandles();
}

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
      // R2000 on: the space's layout.
      const uint64_t layout = m_r2000 ? h.readH(o.handle).value : 0;
      commonRecord(o, L"AcDbBlockTableRecord");
      // R2000 on, DXF gives every block its layout (null for blocks that are not spaces).
      if (m_r2000) m_w.writeHandle(340, layout && isWritten(layout) ? layout : 0);
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
      // R2013 on: one more reference (DXF 348).
      const uint64_t extra = m_file.atLeast(kDwgR2013) ? h.readH(o.handle).value : 0;
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
      if (m_file.atLeast(kDwgR2013)) m_w.writeHandle(348, extra);
      return;
    }
    case 0x35: {
      // The shape-file bit comes first, then the vertical one: every corpus
      // drawing's shape-file style (nameless, 70 = 1 in its twin) has the
      // first bit set and the second clear.
      int flags = common;
      if (d.readBit()) flags |= 1;
      if (d.readBit()) flags |= 4;
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
    case 0x45:
      dimStyle(o, d, h, common);
      return;
    case 0x41:
      viewportRecord(o, d, h, common);
      return;
    case 0x3D:
      view(o, d, h, common);
      return;
    case 0x3F: {
      // 3BD origin, X and Y axes; (R2000) BD elevation, BS orthographic
      // view type, BS orthographic type. Handles (R2000): the base UCS,
      // then the named UCS (not kept in DXF).
      double origin[3], xAxis[3], yAxis[3];
      point3(d, origin);
      point3(d, xAxis);
      point3(d, yAxis);
      commonRecord(o, L"AcDbUCSTableRecord");
      m_w.writeInt(70, common);
      m_w.writePoint(10, origin[0], origin[1], origin[2]);
      m_w.writePoint(11, xAxis[0], xAxis[1], xAxis[2]);
      m_w.writePoint(12, yAxis[0], yAxis[1], yAxis[2]);
      if (!m_r2000) return;
      const double elevation = d.readBD();
      const int viewType = d.readBS(), orthoType = d.readBS();
      const uint64_t base = h.readH(o.handle).value;
      m_w.writeInt(79, viewType);
      m_w.writeDouble(146, elevation);
      if (base && isWrittenAny(base)) m_w.writeHandle(346, base);
      if (orthoType) m_w.writeInt(71, orthoType);
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
