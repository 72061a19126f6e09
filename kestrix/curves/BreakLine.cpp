// breakline: a straight line between two picked points, extended beyond
// both by a set length, with a zig-zag break symbol at a chosen point on it.
// The symbol drawing's two reference points set the shortest line allowed.
// The three settings live in the host settings file; the whole command is
// one undo step, and a cancelled break line leaves nothing behind.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "RyDialogs.h"
#include "RyWindows.h"
#include "curves/BreakLine.h"
#include "frame/Guards.h"
#include "frame/ModuleResources.h"
#include "frame/HostSettings.h"
#include "frame/ResourceString.h"
#include "frame/ResultLists.h"
#include "frame/commands.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

namespace kestrix::curves {

namespace {

constexpr const wchar_t* kKeyBlock = L"Breakline-Block";
constexpr const wchar_t* kKeySize = L"Breakline-Size";
constexpr const wchar_t* kKeyExtension = L"Breakline-Exe";
constexpr const wchar_t* kKeywords = L"Block Size Extension sPecify eXit _Block Size Extension sPecify eXit";

OdGePoint3d toPoint(const ads_point p) { return OdGePoint3d(p[0], p[1], p[2]); }
void toAds(const OdGePoint3d& p, ads_point out) { out[0] = p.x, out[1] = p.y, out[2] = p.z; }

// A distance setting: text of at most 80 characters in decimal units.
double distanceSetting(const wchar_t* key, const wchar_t* otherwise, double fallback) {
  const OdString text = readHostSetting(key, otherwise).left(80);
  ads_real value = 0;
  return rydbDisToF(text.c_str(), 2, &value) == RTNORM ? value : fallback;
}

}  // namespace

BreakLineSettings readBreakLineSettings() {
  BreakLineSettings settings;
  settings.block = blockFileName(readHostSetting(kKeyBlock, L"BRKLINE.DWG"));
  settings.size = distanceSetting(kKeySize, L"", 1.0);
  settings.extension = distanceSetting(kKeyExtension, L"2.5", 2.5);
  return settings;
}

namespace {

// The module's data folder "ExtendCmd", beside the module (or beside the host
// when the module's own file cannot be told).
OdString moduleDataFolder() {
  const OdString folder = kestrix::moduleFolder();
  return ryutCombinePath(folder.isEmpty() ? ryutGetRyadAppDir() : folder, L"ExtendCmd");
}

double dimscale() {
  resbuf value{};
  if (ryedGetVar(L"dimscale", &value) != RTNORM || value.restype != RTREAL || !(value.resval.rreal > 0)) return 1.0;
  return value.resval.rreal;
}

enum class Outcome { kDone, kCancelled, kNothing };

void printSettings(const BreakLineSettings& settings) {
  OdString size, extension;
  size.format(L"%.2f", settings.size);
  extension.format(L"%.2f", settings.extension);
  ryutPrintf(ResourceString(2302, L"\nCurrent settings: block = %ls, size = %ls, extension = %ls"),
             settings.block.c_str(), size.c_str(), extension.c_str());
}

// The smallest length of a break line: the symbol drawing's reference width
// scaled to size × dimscale. Says once per session when the drawing cannot be read.
double minimumLength(const BreakLineSettings& settings) {
  static bool told = false;
  bool found = false;
  const double width = symbolReferenceWidth(moduleDataFolder(), settings.block, &found);
  if (!found && !told) {
    told = true;
    ryutPrintf(ResourceString(2305, L"\nThe break symbol drawing %ls cannot be read; the built-in symbol is used."),
               settings.block.c_str());
  }
  const double k = settings.size * dimscale() / width;
  return width * std::fabs(k);
}

// The layer and lineweight of an entity, for the symbol that replaces it.
void entityStyle(const ads_name entity, OdString& layer, int& lineWeight) {
  ResultList list(rydbEntGet(entity));
  if (const resbuf* group = findGroup(list.get(), 8)) layer = group->resval.rstring;
  lineWeight = -1;
  if (const resbuf* group = findGroup(list.get(), 370)) lineWeight = group->resval.rint;
}

bool makePolyline(const std::vector<OdGePoint3d>& points, const OdString& layer, int lineWeight) {
  const ResultList list(ryutBuildList(RTDXF0, L"LWPOLYLINE", 100, L"AcDbEntity", 8, layer.c_str(), 370, lineWeight,
                                     100, L"AcDbPolyline", 90, static_cast<OdInt32>(points.size()), 70, 0, 38,
                                     points[0].z, RTNONE));
  resbuf* tail = list.get();
  while (tail->rbnext) tail = tail->rbnext;
  for (const OdGePoint3d& p : points) {
    const ads_point xyz = {p.x, p.y, 0};
    tail->rbnext = ryutBuildList(10, xyz, RTNONE);
    tail = tail->rbnext;
  }
  return rydbEntMake(list.get()) == RTNORM;
}

// The symbol on the line `line` at `location` with size s. The first mode
// replaces the line by one six-vertex polyline; the second breaks the line
// between C and D and adds the zig-zag C, E, F, D as its own polyline.
bool buildSymbol(const ads_name line, const OdGePoint3d& location, double size, bool breakExisting) {
  ResultList list(rydbEntGet(line));
  const resbuf* start = findGroup(list.get(), 10);
  const resbuf* end = findGroup(list.get(), 11);
  if (!start || !end) return false;
  const OdGePoint3d a = toPoint(start->resval.rpoint), b = toPoint(end->resval.rpoint);
  const std::array<OdGePoint3d, 6> v = breakSymbolVertices(a, b, location, size);
  OdString layer;
  int lineWeight = -1;
  entityStyle(line, layer, lineWeight);
  if (!breakExisting) {
    if (!makePolyline({v.begin(), v.end()}, layer, lineWeight)) return false;
    return ryedCommand(RTSTR, L"_.erase", RTENAME, line, RTSTR, L"", RTNONE) == RTNORM;
  }
  ads_point c, d;
  toAds(v[1], c);
  toAds(v[4], d);
  if (ryedCommand(RTSTR, L"_.break", RTENAME, line, RTSTR, L"_F", RT3DPOINT, c, RT3DPOINT, d, RTNONE) != RTNORM)
    return false;
  return makePolyline({v[1], v[2], v[3], v[4]}, layer, lineWeight);
}

// Asks for the symbol's location on the line from p1 to p2 (Enter: their
// midpoint), snapped to the line; RTCAN when cancelled.
int askLocation(const OdGePoint3d& p1, const OdGePoint3d& p2, OdGePoint3d& location) {
  for (;;) {
    ads_point picked, snapped;
    const int code = ryedGetPoint(nullptr, ResourceString(2299), picked);
    if (code == RTCAN) return RTCAN;
    if (code != RTNORM) {
      location = OdGePoint3d((p1.x + p2.x) / 2, (p1.y + p2.y) / 2, (p1.z + p2.z) / 2);
      return RTNORM;
    }
    if (ryedOsnap(picked, L"nea", snapped) == RTNORM) {
      // A snap to some other object is no point of the line.
      OdGeVector3d u = p2 - p1;
      u.normalize();
      const OdGePoint3d s = toPoint(snapped);
      const OdGePoint3d foot = p1 + u * (s - p1).dotProduct(u);
      if (foot.distanceTo(s) <= 1e-6 * std::max(1.0, p1.distanceTo(p2))) {
        location = s;
        return RTNORM;
      }
    }
    ryutPrintf(L"%ls", ResourceString(2300).c_str());
  }
}

// One break line from p1: the second point, the extended line, the symbol.
Outcome drawBreakLine(const OdGePoint3d& p1, const BreakLineSettings& settings) {
  const double shortest = minimumLength(settings);
  ads_point base, second;
  toAds(p1, base);
  OdGePoint3d p2;
  for (;;) {
    const int code = ryedGetPoint(base, ResourceString(2297), second);
    if (code == RTCAN) return Outcome::kCancelled;
    if (code != RTNORM) return Outcome::kNothing;
    p2 = toPoint(second);
    if (p1.distanceTo(p2) >= shortest) break;
    ryutPrintf(L"%ls", ResourceString(2298).c_str());
  }
  OdGeVector3d u = p2 - p1;
  u.normalize();
  ads_point from, to;
  toAds(p1 - u * settings.extension, from);
  toAds(p2 + u * settings.extension, to);
  ryedCommand(RTSTR, L"_.line", RT3DPOINT, from, RT3DPOINT, to, RTSTR, L"", RTNONE);

  SysVarSaver osmode(L"osmode");
  osmode.setShort(514);
  OdGePoint3d location;
  if (askLocation(p1, p2, location) == RTCAN) {
    ryedCommand(RTSTR, L"._erase", RTSTR, L"_L", RTSTR, L"", RTNONE);
    return Outcome::kCancelled;
  }
  osmode.setShort(0);
  ads_name line;
  if (rydbEntLast(line) != RTNORM) return Outcome::kNothing;
  buildSymbol(line, location, settings.size * dimscale(), false);
  return Outcome::kDone;
}

// "Specify": an existing line is picked and broken at the symbol's location.
Outcome breakExistingLine(const BreakLineSettings& settings) {
  ads_name line;
  ads_point pick;
  for (;;) {
    const int code = ryedEntSel(ResourceString(2303, L"\nSelect the line to break: "), line, pick);
    if (code == RTCAN) return Outcome::kCancelled;
    if (code != RTNORM) return Outcome::kNothing;
    ResultList list(rydbEntGet(line));
    const resbuf* type = findGroup(list.get(), 0);
    if (type && OdString(type->resval.rstring).iCompare(L"LINE") == 0) break;
    ryutPrintf(L"%ls", ResourceString(2304, L"\nThe object is not a line.").c_str());
  }
  ResultList list(rydbEntGet(line));
  const OdGePoint3d a = toPoint(findGroup(list.get(), 10)->resval.rpoint);
  const OdGePoint3d b = toPoint(findGroup(list.get(), 11)->resval.rpoint);
  const double size = settings.size * dimscale();
  if (a.distanceTo(b) < 7 * size) {
    ryutPrintf(L"%ls", ResourceString(2298).c_str());
    return Outcome::kNothing;
  }
  SysVarSaver osmode(L"osmode");
  osmode.setShort(514);
  OdGePoint3d location;
  if (askLocation(a, b, location) == RTCAN) return Outcome::kCancelled;
  osmode.setShort(0);
  buildSymbol(line, location, size, true);
  return Outcome::kDone;
}

// Asks for a distance setting and writes it back formatted "%.2f"; false when cancelled.
bool askDistanceSetting(unsigned int prompt, const wchar_t* key) {
  ads_real value = 0;
  const int code = ryedGetDist(nullptr, ResourceString(prompt), &value);
  if (code == RTCAN) return false;
  if (code == RTNORM) {
    OdString text;
    text.format(L"%.2f", value);
    writeHostSetting(key, text);
  }
  return true;
}

// Asks for the symbol drawing's name (a file dialog when FILEDIA is 1); false when cancelled.
bool askBlockSetting(const BreakLineSettings& settings) {
  OdString name;
  if (shortVariable(L"FILEDIA", 1) == 1) {
    CRyUiNavDialog dialog({CNavFilter(L"Drawing", L"*.dwg;*.dxf")});
    dialog.SetDialogCaption(ResourceString(2301, L"Break symbol drawing"));
    dialog.SetInitialFileName(settings.block);
    if (dialog.DoModal() != IDOK) return false;
    name = dialog.GetPathName();
  } else {
    wchar_t text[512] = {0};
    OdString prompt;
    prompt.format(L"\n%ls <%ls>: ", ResourceString(2301, L"Break symbol drawing").c_str(), settings.block.c_str());
    const int code = ryedGetString(1, prompt.c_str(), text, 512);
    if (code == RTCAN) return false;
    name = text;
  }
  if (!name.isEmpty()) writeHostSetting(kKeyBlock, name);
  return true;
}

}  // namespace

}  // namespace kestrix::curves

using namespace kestrix::curves;

void breaklineCommand() {
  kestrix::CmdEchoGuard echo;
  ryedCommand(RTSTR, L"_.undo", RTSTR, L"_begin", RTNONE);
  BreakLineSettings settings = readBreakLineSettings();
  printSettings(settings);
  const ResourceString keywords(62005, kKeywords);
  for (bool going = true; going;) {
    ryedInitGet(RSG_OTHER, keywords);
    ads_point picked;
    const int code = ryedGetPoint(nullptr, ResourceString(2294), picked);
    if (code == RTNORM) {
      if (drawBreakLine(OdGePoint3d(picked[0], picked[1], picked[2]), settings) == Outcome::kCancelled) {
        ryedCommand(RTSTR, L"_.undo", RTSTR, L"_end", RTNONE);
        ryedCommand(RTSTR, L"_.u", RTNONE);
      }
      break;
    }
    if (code != RTKWORD) break;
    wchar_t word[512] = {0};
    ryedGetInput(word, 512);
    const OdString keyword(word);
    if (keyword == L"Block") {
      going = askBlockSetting(settings);
    } else if (keyword == L"Size") {
      going = askDistanceSetting(2295, L"Breakline-Size");
    } else if (keyword == L"Extension") {
      going = askDistanceSetting(2296, L"Breakline-Exe");
    } else if (keyword == L"sPecify") {
      if (breakExistingLine(settings) == Outcome::kCancelled) {
        ryedCommand(RTSTR, L"_.undo", RTSTR, L"_end", RTNONE);
        ryedCommand(RTSTR, L"_.u", RTNONE);
      }
      break;
    } else {
      break;  // eXit or a word that is no keyword
    }
    settings = readBreakLineSettings();
    if (going) printSettings(settings);
  }
  ryedCommand(RTSTR, L"_.undo", RTSTR, L"_end", RTNONE);
}
