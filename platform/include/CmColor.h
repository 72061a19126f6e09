// Colours of entities and layers: by layer, by block, an index into the
// 256-entry palette, or a true colour; and transparency.
#pragma once

#include "OdString.h"

class OdCmEntityColor {
 public:
  enum ColorMethod : OdUInt8 {
    kByLayer = 0xC0,
    kByBlock = 0xC1,
    kByColor = 0xC2,  // true colour
    kByACI = 0xC3,    // palette index
    kByPen = 0xC4,
    kForeground = 0xC5,
    kByDgnIndex = 0xC7,
    kNone = 0xC8,
  };
  enum ACIcolorMethod : OdInt16 {
    kACIbyBlock = 0,
    kACIRed = 1,
    kACIYellow = 2,
    kACIGreen = 3,
    kACICyan = 4,
    kACIBlue = 5,
    kACIMagenta = 6,
    kACIforeground = 7,
    kACIWhite = 7,
    kACIbyLayer = 256,
    kACInone = 257,
  };

  OdCmEntityColor() = default;
  OdCmEntityColor(ColorMethod method) { setColorMethod(method); }
  OdCmEntityColor(OdUInt8 red, OdUInt8 green, OdUInt8 blue) { setRGB(red, green, blue); }
  static OdCmEntityColor fromIndex(OdInt16 index) {
    OdCmEntityColor c;
    c.setColorIndex(index);
    return c;
  }

  ColorMethod colorMethod() const { return static_cast<ColorMethod>(m_RGBM >> 24); }
  void setColorMethod(ColorMethod method);
  bool isByLayer() const { return colorMethod() == kByLayer; }
  bool isByBlock() const { return colorMethod() == kByBlock; }
  bool isByColor() const { return colorMethod() == kByColor; }
  bool isByACI() const { return colorMethod() == kByACI; }
  bool isForeground() const { return colorMethod() == kForeground; }
  bool isNone() const { return colorMethod() == kNone; }

  // The palette index: 0 by block, 256 by layer, 1..255 a palette entry; for a
  // true colour, the nearest palette entry.
  OdInt16 colorIndex() const;
  void setColorIndex(OdInt16 index);
  void setRGB(OdUInt8 red, OdUInt8 green, OdUInt8 blue);
  OdUInt8 red() const;
  OdUInt8 green() const;
  OdUInt8 blue() const;
  // 0x00RRGGBB, as DXF group 420 carries it.
  OdUInt32 trueColor() const;
  OdUInt32 color() const { return m_RGBM; }
  void setColor(OdUInt32 rgbm) { m_RGBM = rgbm; }

  bool operator==(const OdCmEntityColor& other) const { return m_RGBM == other.m_RGBM; }
  bool operator!=(const OdCmEntityColor& other) const { return m_RGBM != other.m_RGBM; }

  // The RGB value of a palette entry (0x00RRGGBB); 0 for entries outside 1..255.
  static OdUInt32 lookUpRGB(OdInt16 index);
  // The palette entry nearest to an RGB value (1..255).
  static OdInt16 lookUpACI(OdUInt8 red, OdUInt8 green, OdUInt8 blue);

 private:
  OdUInt32 m_RGBM = (static_cast<OdUInt32>(kByLayer) << 24);
};

// A colour with its optional name and colour-book name.
class OdCmColor {
 public:
  OdCmColor() = default;
  OdCmColor(OdCmEntityColor::ColorMethod method) : m_color(method) {}
  OdCmColor(const OdCmEntityColor& color) : m_color(color) {}

  OdCmEntityColor::ColorMethod colorMethod() const { return m_color.colorMethod(); }
  void setColorMethod(OdCmEntityColor::ColorMethod method) { m_color.setColorMethod(method); }
  bool isByLayer() const { return m_color.isByLayer(); }
  bool isByBlock() const { return m_color.isByBlock(); }
  bool isByColor() const { return m_color.isByColor(); }
  bool isByACI() const { return m_color.isByACI(); }
  bool isForeground() const { return m_color.isForeground(); }
  bool isNone() const { return m_color.isNone(); }
  OdInt16 colorIndex() const { return m_color.colorIndex(); }
  void setColorIndex(OdInt16 index) { m_color.setColorIndex(index); }
  void setRGB(OdUInt8 red, OdUInt8 green, OdUInt8 blue) { m_color.setRGB(red, green, blue); }
  OdUInt8 red() const { return m_color.red(); }
  OdUInt8 green() const { return m_color.green(); }
  OdUInt8 blue() const { return m_color.blue(); }
  OdUInt32 color() const { return m_color.color(); }
  void setColor(OdUInt32 rgbm) { m_color.setColor(rgbm); }
  const OdCmEntityColor& entityColor() const { return m_color; }

  const OdString& colorName() const { return m_colorName; }
  const OdString& bookName() const { return m_bookName; }
  void setNames(const OdString& colorName, const OdString& bookName = OdString()) {
    m_colorName = colorName;
    m_bookName = bookName;
  }
  // "BYLAYER", "BYBLOCK", "1", "255,128,0": the form the command line shows.
  OdString toString() const;
  // Parses the form toString gives (and colour names of the first seven
  // palette entries); returns false for anything else.
  static bool fromString(const OdString& text, OdCmColor& color);

  bool operator==(const OdCmColor& other) const {
    return m_color == other.m_color && m_colorName == other.m_colorName && m_bookName == other.m_bookName;
  }
  bool operator!=(const OdCmColor& other) const { return !(*this == other); }

 private:
  OdCmEntityColor m_color;
  OdString m_colorName, m_bookName;
};

// Transparency: by layer, by block, or an alpha value 0 (clear) .. 255 (opaque).
class OdCmTransparency {
 public:
  enum transparencyMethod : OdUInt8 { kByLayer = 0, kByBlock = 1, kByAlpha = 2, kErrorValue = 3 };
  OdCmTransparency() = default;
  explicit OdCmTransparency(OdUInt8 alpha) { setAlpha(alpha); }
  transparencyMethod method() const { return static_cast<transparencyMethod>(m_value >> 24); }
  void setMethod(transparencyMethod method) { m_value = static_cast<OdUInt32>(method) << 24; }
  OdUInt8 alpha() const { return static_cast<OdUInt8>(m_value & 0xFF); }
  void setAlpha(OdUInt8 alpha) { m_value = (static_cast<OdUInt32>(kByAlpha) << 24) | alpha; }
  bool isByLayer() const { return method() == kByLayer; }
  bool isByBlock() const { return method() == kByBlock; }
  bool isByAlpha() const { return method() == kByAlpha; }
  // The value DXF group 440 carries.
  OdUInt32 serializeOut() const { return m_value; }
  void serializeIn(OdUInt32 value) { m_value = value; }
  bool operator==(const OdCmTransparency& other) const { return m_value == other.m_value; }
  bool operator!=(const OdCmTransparency& other) const { return m_value != other.m_value; }

 private:
  OdUInt32 m_value = 0;
};
