#include "commands/CommandSupport.h"

#include <cmath>
#include <cwchar>

#include "DbCurves.h"
#include "DbPoint.h"
#include "DbPolyline.h"
#include "DbSolid.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "commands/Prompts.h"
#include "core/Host.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"
#include "sdk/Input.h"

namespace ryhost::cmdsupport {

// ---------------------------------------------------------------- prompts

OdString askKeyword(const OdString& prompt, const OdString& keywords, int flags) {
  OdString reply = prompt::askKeyword(prompt, keywords.c_str(), flags).text;
  reply.trimLeft().trimRight();
  return reply;
}

OdString askText(const OdString& prompt) {
  OdString reply = prompt::askText(prompt, true);
  reply.trimLeft().trimRight();
  return reply;
}

bool askPoint(const OdString& prompt, OdGePoint3d& ucsPoint, const OdGePoint3d* base,
              const OdString& keywords, OdString* keyword) {
  if (keyword) keyword->empty();
  const prompt::Answer answer =
      prompt::askPoint(prompt, ucsPoint, keywords.isEmpty() ? nullptr : keywords.c_str(), base);
  if (answer.kind == prompt::Answer::kKeyword && keyword) {
    *keyword = answer.text;
    return true;
  }
  return answer.isValue();
}

bool askReal(const OdString& prompt, double& value, int flags) {
  return prompt::askReal(prompt, value, nullptr, flags).isValue();
}

bool askAngle(const OdString& prompt, double& radians, const OdGePoint3d* base) {
  return prompt::askAngle(prompt, radians, nullptr, base).isValue();
}

bool askYesNo(const OdString& prompt, bool defaultYes) {
  const OdString answer = askKeyword(prompt, L"Yes No");
  if (answer.isEmpty()) return defaultYes;
  return answer == L"Yes";
}

// ---------------------------------------------------------------- selection

std::vector<OdDbObjectId> selectObjects(const resbuf* filter, bool refuseLocked) {
  ads_name set;
  const int code = ryedSSGet(refuseLocked ? L":L" : nullptr, nullptr, nullptr, filter, set);
  if (code == RTCAN) throw CancelledError();
  std::vector<OdDbObjectId> ids;
  if (code != RTNORM) return ids;
  OdInt32 length = 0;
  ryedSSLength(set, &length);
  for (OdInt32 i = 0; i < length; ++i) {
    ads_name entity;
    OdDbObjectId id;
    if (ryedSSName(set, i, entity) == RTNORM && rydbGetObjectId(id, entity) == RTNORM) ids.push_back(id);
  }
  ryedSSFree(set);
  return ids;
}

// ---------------------------------------------------------------- names

std::vector<OdString> splitNameList(const OdString& text) {
  std::vector<OdString> names;
  const auto add = [&names](OdString name) {
    name.trimLeft().trimRight();
    if (!name.isEmpty()) names.push_back(name);
  };
  const int length = text.getLength();
  int start = 0;
  for (int i = 0; i < length; ++i) {
    if (text[i] == L'`') {
      ++i;  // the escaped character belongs to the name, a comma too
    } else if (text[i] == L',') {
      add(text.mid(start, i - start));
      start = i + 1;
    }
  }
  add(text.mid(start));
  return names;
}

OdString literalName(const OdString& typed) {
  if (typed.find(L'`') < 0) return typed;
  std::wstring name;
  const int length = typed.getLength();
  for (int i = 0; i < length; ++i) {
    if (typed[i] == L'`' && i + 1 < length) ++i;
    name += typed[i];
  }
  return OdString(name);
}

bool nameMatches(const OdString& name, const OdString& pattern) {
  return ryutWcMatch(name.upper().c_str(), pattern.upper().c_str()) == RTNORM;
}

bool isValidSymbolName(const OdString& name) {
  return !name.isEmpty() && name.getLength() <= 255 && name.findOneOf(L"<>/\\\":;?*|,=`") < 0;
}

// ---------------------------------------------------------------- records

std::vector<OdDbObjectId> tableRecords(OdDbDatabase* db, OdDbNameTable table) {
  std::vector<OdDbObjectId> ids;
  OdDbObjectPtr object = db->tableId(table).openObject();
  auto* symbols = dynamic_cast<OdDbSymbolTable*>(object.get());
  if (!symbols) return ids;
  for (const OdDbObjectId& id : symbols->recordIds()) {
    if (!id.isNull() && id.isValid() && !id.isErased()) ids.push_back(id);
  }
  return ids;
}

OdString recordName(const OdDbObjectId& id) {
  OdDbObjectPtr object = id.openObject();
  auto* record = dynamic_cast<OdDbSymbolTableRecord*>(object.get());
  return record ? record->getName() : OdString();
}

// ---------------------------------------------------------------- texts

OdString formatDistance(double value) {
  ACHAR buffer[64];
  if (rydbRToS(value, -1, -1, buffer, 64) != RTNORM) return OdString().format(L"%g", value);
  return OdString(buffer);
}

OdString formatPoint(const OdGePoint3d& point) {
  return L"X=" + formatDistance(point.x) + L"  Y=" + formatDistance(point.y) + L"  Z=" +
         formatDistance(point.z);
}

OdString formatDirection(double direction) { return formatAngle(userAngleOfDirection(direction)); }

OdString formatAngle(double radians) {
  ACHAR buffer[64];
  if (rydbAngToS(radians, -1, -1, buffer, 64) != RTNORM) return OdString().format(L"%g", radians);
  return OdString(buffer);
}

OdString colorText(const OdCmColor& color) {
  static const wchar_t* const kNames[] = {L"red",  L"yellow",  L"green", L"cyan",
                                          L"blue", L"magenta", L"white"};
  if (color.isByACI()) {
    const OdInt16 index = color.colorIndex();
    if (index >= 1 && index <= 7) return OdString().format(L"%d (%ls)", index, kNames[index - 1]);
  }
  return color.toString();
}

namespace {

const int kStandardWeights[] = {0,  5,  9,  13, 15, 18,  20,  25,  30,  35,  40,  50,
                                53, 60, 70, 80, 90, 100, 106, 120, 140, 158, 200, 211};

}  // namespace

OdString lineWeightText(OdDb::LineWeight weight) {
  switch (weight) {
    case OdDb::kLnWtByLayer:
      return L"ByLayer";
    case OdDb::kLnWtByBlock:
      return L"ByBlock";
    case OdDb::kLnWtByLwDefault:
      return L"Default";
    default:
      return OdString().format(L"%.2fmm", static_cast<int>(weight) / 100.0);
  }
}

bool parseLineWeight(const OdString& input, bool allowByLayerBlock, OdDb::LineWeight& weight) {
  OdString text = input;
  text.trimLeft().trimRight();
  if (text.iCompare(L"DEFAULT") == 0) {
    weight = OdDb::kLnWtByLwDefault;
    return true;
  }
  if (allowByLayerBlock && text.iCompare(L"BYLAYER") == 0) {
    weight = OdDb::kLnWtByLayer;
    return true;
  }
  if (allowByLayerBlock && text.iCompare(L"BYBLOCK") == 0) {
    weight = OdDb::kLnWtByBlock;
    return true;
  }
  if (text.right(2).iCompare(L"MM") == 0) text = text.left(text.getLength() - 2);
  text.trimRight();
  wchar_t* end = nullptr;
  const double millimetres = std::wcstod(text.c_str(), &end);
  if (text.isEmpty() || !end || *end || !std::isfinite(millimetres) || millimetres < 0 ||
      millimetres > 2.11 + 1e-9)
    return false;
  const double hundredths = millimetres * 100.0;
  int nearest = kStandardWeights[0];
  for (int standard : kStandardWeights) {
    if (std::fabs(standard - hundredths) < std::fabs(nearest - hundredths)) nearest = standard;
  }
  weight = static_cast<OdDb::LineWeight>(nearest);
  return true;
}

bool parseColor(const OdString& input, bool allowByLayerBlock, OdCmColor& color) {
  OdString text = input;
  text.trimLeft().trimRight();
  if (allowByLayerBlock) {
    if (text == L"256") text = L"BYLAYER";
    if (text == L"0") text = L"BYBLOCK";
  }
  OdCmColor parsed;
  if (!OdCmColor::fromString(text, parsed)) return false;
  if (!allowByLayerBlock && (parsed.isByLayer() || parsed.isByBlock())) return false;
  color = parsed;
  return true;
}

OdCmColor askTrueColor() {
  for (;;) {
    const OdString text = askText(L"\nRed, Green, Blue: ");
    OdCmColor color;
    if (text.find(L',') > 0 && OdCmColor::fromString(text, color) && color.isByColor()) return color;
    Host::instance().print(L"\nRequires three values from 0 to 255 separated by commas.");
  }
}

OdString transparencyText(const OdCmTransparency& transparency) {
  if (transparency.isByLayer()) return L"ByLayer";
  if (transparency.isByBlock()) return L"ByBlock";
  const int percent = static_cast<int>(std::lround((255 - transparency.alpha()) * 100.0 / 255.0));
  return OdString().format(L"%d", percent);
}

OdCmTransparency transparencyFromPercent(int percent) {
  return OdCmTransparency(static_cast<OdUInt8>(std::lround((100 - percent) * 255.0 / 100.0)));
}

// ---------------------------------------------------------------- entities

bool entityThickness(const OdDbEntity* entity, double& thickness) {
  if (auto* line = dynamic_cast<const OdDbLine*>(entity))
    thickness = line->thickness();
  else if (auto* circle = dynamic_cast<const OdDbCircle*>(entity))
    thickness = circle->thickness();
  else if (auto* arc = dynamic_cast<const OdDbArc*>(entity))
    thickness = arc->thickness();
  else if (auto* point = dynamic_cast<const OdDbPoint*>(entity))
    thickness = point->thickness();
  else if (auto* quad = dynamic_cast<const OdDbPlanarQuad*>(entity))
    thickness = quad->thickness();
  else if (auto* text = dynamic_cast<const OdDbText*>(entity))
    thickness = text->thickness();
  else if (auto* polyline = dynamic_cast<const OdDbPolyline*>(entity))
    thickness = polyline->thickness();
  else if (auto* polyline2d = dynamic_cast<const OdDb2dPolyline*>(entity))
    thickness = polyline2d->thickness();
  else
    return false;
  return true;
}

bool setEntityThickness(OdDbEntity* entity, double thickness) {
  if (auto* line = dynamic_cast<OdDbLine*>(entity))
    line->setThickness(thickness);
  else if (auto* circle = dynamic_cast<OdDbCircle*>(entity))
    circle->setThickness(thickness);
  else if (auto* arc = dynamic_cast<OdDbArc*>(entity))
    arc->setThickness(thickness);
  else if (auto* point = dynamic_cast<OdDbPoint*>(entity))
    point->setThickness(thickness);
  else if (auto* quad = dynamic_cast<OdDbPlanarQuad*>(entity))
    quad->setThickness(thickness);
  else if (auto* text = dynamic_cast<OdDbText*>(entity))
    text->setThickness(thickness);
  else if (auto* polyline = dynamic_cast<OdDbPolyline*>(entity))
    polyline->setThickness(thickness);
  else if (auto* polyline2d = dynamic_cast<OdDb2dPolyline*>(entity))
    polyline2d->setThickness(thickness);
  else
    return false;
  return true;
}

}  // namespace ryhost::cmdsupport
