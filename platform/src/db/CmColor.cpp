#include "CmColor.h"

#include <climits>
#include <cwchar>

namespace {
// RGB values of the 256 palette entries (entry 0 is unused).
const OdUInt32 kPalette[256] = {
    0x000000, 0xFF0000, 0xFFFF00, 0x00FF00, 0x00FFFF, 0x0000FF, 0xFF00FF, 0xFFFFFF,
    0x808080, 0xC0C0C0, 0xFF0000, 0xFF7F7F, 0xA50000, 0xA55252, 0x7F0000, 0x7F3F3F,
    0x4C0000, 0x4C2626, 0x260000, 0x261313, 0xFF3F00, 0xFF9F7F, 0xA52900, 0xA56752,
    0x7F1F00, 0x7F4F3F, 0x4C1300, 0x4C2F26, 0x260900, 0x261713, 0xFF7F00, 0xFFBF7F,
    0xA55200, 0xA57C52, 0x7F3F00, 0x7F5F3F, 0x4C2600, 0x4C3926, 0x261300, 0x261C13,
    0xFFBF00, 0xFFDF7F, 0xA57C00, 0xA59152, 0x7F5F00, 0x7F6F3F, 0x4C3900, 0x4C4226,
    0x261C00, 0x262113, 0xFFFF00, 0xFFFF7F, 0xA5A500, 0xA5A552, 0x7F7F00, 0x7F7F3F,
    0x4C4C00, 0x4C4C26, 0x262600, 0x262613, 0xBFFF00, 0xDFFF7F, 0x7CA500, 0x91A552,
    0x5F7F00, 0x6F7F3F, 0x394C00, 0x424C26, 0x1C2600, 0x212613, 0x7FFF00, 0xBFFF7F,
    0x52A500, 0x7CA552, 0x3F7F00, 0x5F7F3F, 0x264C00, 0x394C26, 0x132600, 0x1C2613,
    0x3FFF00, 0x9FFF7F, 0x29A500, 0x67A552, 0x1F7F00, 0x4F7F3F, 0x134C00, 0x2F4C26,
    0x092600, 0x172613, 0x00FF00, 0x7FFF7F, 0x00A500, 0x52A552, 0x007F00, 0x3F7F3F,
    0x004C00, 0x264C26, 0x002600, 0x132613, 0x00FF3F, 0x7FFF9F, 0x00A529, 0x52A567,
    0x007F1F, 0x3F7F4F, 0x004C13, 0x264C2F, 0x002609, 0x135817, 0x00FF7F, 0x7FFFBF,
    0x00A552, 0x52A57C, 0x007F3F, 0x3F7F5F, 0x004C26, 0x264C39, 0x002613, 0x13581C,
    0x00FFBF, 0x7FFFDF, 0x00A57C, 0x52A591, 0x007F5F, 0x3F7F6F, 0x004C39, 0x264C42,
    0x00261C, 0x135858, 0x00FFFF, 0x7FFFFF, 0x00A5A5, 0x52A5A5, 0x007F7F, 0x3F7F7F,
    0x004C4C, 0x264C4C, 0x002626, 0x135858, 0x00BFFF, 0x7FDFFF, 0x007CA5, 0x5291A5,
    0x005F7F, 0x3F6F7F, 0x00394C, 0x26427E, 0x001C26, 0x135858, 0x007FFF, 0x7FBFFF,
    0x0052A5, 0x527CA5, 0x003F7F, 0x3F5F7F, 0x00264C, 0x26397E, 0x001326, 0x131C58,
    0x003FFF, 0x7F9FFF, 0x0029A5, 0x5267A5, 0x001F7F, 0x3F4F7F, 0x00134C, 0x262F7E,
    0x000926, 0x131758, 0x0000FF, 0x7F7FFF, 0x0000A5, 0x5252A5, 0x00007F, 0x3F3F7F,
    0x00004C, 0x26267E, 0x000026, 0x131358, 0x3F00FF, 0x9F7FFF, 0x2900A5, 0x6752A5,
    0x1F007F, 0x4F3F7F, 0x13004C, 0x2F267E, 0x090026, 0x171358, 0x7F00FF, 0xBF7FFF,
    0x5200A5, 0x7C52A5, 0x3F007F, 0x5F3F7F, 0x26004C, 0x39267E, 0x130026, 0x1C1358,
    0xBF00FF, 0xDF7FFF, 0x7C00A5, 0x9152A5, 0x5F007F, 0x6F3F7F, 0x39004C, 0x42264C,
    0x1C0026, 0x581358, 0xFF00FF, 0xFF7FFF, 0xA500A5, 0xA552A5, 0x7F007F, 0x7F3F7F,
    0x4C004C, 0x4C264C, 0x260026, 0x581358, 0xFF00BF, 0xFF7FDF, 0xA5007C, 0xA55291,
    0x7F005F, 0x7F3F6F, 0x4C0039, 0x4C2642, 0x26001C, 0x581358, 0xFF007F, 0xFF7FBF,
    0xA50052, 0xA5527C, 0x7F003F, 0x7F3F5F, 0x4C0026, 0x4C2639, 0x260013, 0x58131C,
    0xFF003F, 0xFF7F9F, 0xA50029, 0xA55267, 0x7F001F, 0x7F3F4F, 0x4C0013, 0x4C262F,
    0x260009, 0x581317, 0x000000, 0x656565, 0x666666, 0x999999, 0xCCCCCC, 0xFFFFFF,};
}  // namespace

void OdCmEntityColor::setColorMethod(ColorMethod method) {
  m_RGBM = static_cast<OdUInt32>(method) << 24;
  if (method == kForeground) m_RGBM |= 7;
}

OdInt16 OdCmEntityColor::colorIndex() const {
  switch (colorMethod()) {
    case kByLayer: return kACIbyLayer;
    case kByBlock: return kACIbyBlock;
    case kByACI: return static_cast<OdInt16>(m_RGBM & 0xFFFF);
    case kForeground: return kACIforeground;
    case kByColor: return lookUpACI(red(), green(), blue());
    case kNone: return kACInone;
    default: return static_cast<OdInt16>(m_RGBM & 0xFFFF);
  }
}

void OdCmEntityColor::setColorIndex(OdInt16 index) {
  if (index == kACIbyLayer) setColorMethod(kByLayer);
  else if (index == kACIbyBlock) setColorMethod(kByBlock);
  else if (index == kACInone) setColorMethod(kNone);
  else m_RGBM = (static_cast<OdUInt32>(kByACI) << 24) | static_cast<OdUInt16>(index < 0 ? -index : index);
}

void OdCmEntityColor::setRGB(OdUInt8 r, OdUInt8 g, OdUInt8 b) {
  m_RGBM = (static_cast<OdUInt32>(kByColor) << 24) | (static_cast<OdUInt32>(r) << 16) |
           (static_cast<OdUInt32>(g) << 8) | b;
}

OdUInt32 OdCmEntityColor::trueColor() const {
  if (isByColor()) return m_RGBM & 0xFFFFFF;
  return lookUpRGB(colorIndex());
}

OdUInt8 OdCmEntityColor::red() const { return static_cast<OdUInt8>(trueColor() >> 16); }
OdUInt8 OdCmEntityColor::green() const { return static_cast<OdUInt8>(trueColor() >> 8); }
OdUInt8 OdCmEntityColor::blue() const { return static_cast<OdUInt8>(trueColor()); }

OdUInt32 OdCmEntityColor::lookUpRGB(OdInt16 index) {
  if (index < 1 || index > 255) return 0;
  return kPalette[index];
}

OdInt16 OdCmEntityColor::lookUpACI(OdUInt8 r, OdUInt8 g, OdUInt8 b) {
  OdInt16 best = 7;
  long bestDistance = LONG_MAX;
  for (int i = 1; i < 256; ++i) {
    long dr = static_cast<long>((kPalette[i] >> 16) & 0xFF) - r;
    long dg = static_cast<long>((kPalette[i] >> 8) & 0xFF) - g;
    long db = static_cast<long>(kPalette[i] & 0xFF) - b;
    long distance = dr * dr + dg * dg + db * db;
    if (distance < bestDistance) {
      bestDistance = distance;
      best = static_cast<OdInt16>(i);
      if (distance == 0) break;
    }
  }
  return best;
}

OdString OdCmColor::toString() const {
  if (isByLayer()) return L"BYLAYER";
  if (isByBlock()) return L"BYBLOCK";
  if (isByColor()) return OdString().format(L"%d,%d,%d", red(), green(), blue());
  return OdString().format(L"%d", colorIndex());
}

bool OdCmColor::fromString(const OdString& input, OdCmColor& color) {
  OdString text = input;
  text.trimLeft().trimRight();
  if (text.iCompare(L"BYLAYER") == 0) { color = OdCmColor(OdCmEntityColor::kByLayer); return true; }
  if (text.iCompare(L"BYBLOCK") == 0) { color = OdCmColor(OdCmEntityColor::kByBlock); return true; }
  static const wchar_t* const kNames[] = {L"RED", L"YELLOW", L"GREEN", L"CYAN", L"BLUE", L"MAGENTA", L"WHITE"};
  for (int i = 0; i < 7; ++i) {
    if (text.iCompare(kNames[i]) == 0) {
      color = OdCmColor();
      color.setColorIndex(static_cast<OdInt16>(i + 1));
      return true;
    }
  }
  int r = 0, g = 0, b = 0;
  wchar_t extra = 0;
  if (swscanf(text.c_str(), L"%d,%d,%d%lc", &r, &g, &b, &extra) == 3) {
    if (r < 0 || r > 255 || g < 0 || g > 255 || b < 0 || b > 255) return false;
    color = OdCmColor();
    color.setRGB(static_cast<OdUInt8>(r), static_cast<OdUInt8>(g), static_cast<OdUInt8>(b));
    return true;
  }
  int index = 0;
  if (swscanf(text.c_str(), L"%d%lc", &index, &extra) == 1 && index >= 1 && index <= 255) {
    color = OdCmColor();
    color.setColorIndex(static_cast<OdInt16>(index));
    return true;
  }
  return false;
}
