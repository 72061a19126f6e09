// The prompting functions of the SDK: initget and its keywords, the
// get-functions (keyword, string, point, corner, distance, angle,
// orientation, real, integer), the last keyword input and grread on the
// console.
//
// Every reply comes from Host::readReply. A reply starting with "'" runs a
// transparent command (or shows a system variable) and the prompt is shown
// again. Points are typed and returned in the current user coordinate system
// (Document::ucs() maps them to world); the points a get-function accepts
// become LASTPOINT, which relative entries ("@...") start from.
#include "sdk/Input.h"

#include <charconv>
#include <type_traits>
#include <cmath>
#include <cwchar>
#include <deque>
#include <string>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbDimension.h"
#include "DbHatch.h"
#include "DbPolyline.h"
#include "DbSolid.h"
#include "DbText.h"
#include "RyApDocManager.h"
#include "core/Host.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

using ryhost::Host;

namespace ryhost {

namespace {

constexpr double kTwoPi = 6.283185307179586476925286766559;

// The prompting state of one document.
struct InputState {
  InitGet pending;              // the last initget, until a get-function takes it
  OdString lastInput;           // the keyword or text of the last RTKWORD reply
  std::deque<int> pendingKeys;  // grread: the rest of a line typed as keys
};

InputState& currentState() {
  static RyApDataManager<InputState> states;
  return states.docData();
}

double normalized(double radians) {
  double a = std::fmod(radians, kTwoPi);
  if (a < 0) a += kTwoPi;
  if (a >= kTwoPi) a = 0;
  return a;
}

bool startsWithNoCase(const OdString& text, const OdString& prefix) {
  return prefix.getLength() <= text.getLength() && sameTextNoCase(text.left(prefix.getLength()), prefix);
}

void runTransparent(const OdString& text) {
  Host& host = Host::instance();
  if (host.runCommand(text)) return;
  OdString name = text.mid(1);
  name.trimLeft();
  if (host.sysvars().find(name)) {
    host.runSysVarCommand(name);
    return;
  }
  host.reportUnknownCommand(name);
}

}  // namespace

// ---------------------------------------------------------------- keywords

bool sameTextNoCase(const OdString& a, const OdString& b) {
  if (a.getLength() != b.getLength()) return false;
  for (int i = 0; i < a.getLength(); ++i) {
    if (a[i] != b[i] && ryutToUpper(a[i]) != ryutToUpper(b[i]) && ryutToLower(a[i]) != ryutToLower(b[i]))
      return false;
  }
  return true;
}

KeywordList::KeywordList(const OdString& spec) {
  bool global = false;
  const std::wstring& s = spec.str();
  size_t i = 0;
  while (i < s.size()) {
    while (i < s.size() && ryutIsSpace(s[i])) ++i;
    size_t end = i;
    while (end < s.size() && !ryutIsSpace(s[end])) ++end;
    if (end == i) break;
    OdString token(s.substr(i, end - i));
    i = end;
    if (token[0] == L'_') {
      global = true;
      token = token.mid(1);
      if (token.isEmpty()) continue;
    }
    (global ? m_global : m_local).push_back(parseWord(token));
  }
}

KeywordList::Word KeywordList::parseWord(const OdString& token) {
  Word word;
  const int comma = token.find(L',');
  if (comma > 0) {
    word.full = token.left(comma);
    word.abbreviation = token.mid(comma + 1);
    const bool isPrefix = !word.abbreviation.isEmpty() && startsWithNoCase(word.full, word.abbreviation);
    word.shortestPrefix = isPrefix ? word.abbreviation.getLength() : word.full.getLength();
    return word;
  }
  word.full = token;
  bool hasLower = false;
  int afterLastCapital = 0;
  for (int i = 0; i < token.getLength(); ++i) {
    if (ryutIsUpper(token[i])) {
      word.abbreviation += token[i];
      afterLastCapital = i + 1;
    } else if (ryutIsLower(token[i])) {
      hasLower = true;
    }
  }
  if (word.abbreviation.isEmpty() || !hasLower) {
    word.abbreviation.empty();
    word.shortestPrefix = token.getLength();
  } else {
    word.shortestPrefix = afterLastCapital;
  }
  return word;
}

int KeywordList::find(const std::vector<Word>& words, const OdString& reply) {
  for (size_t i = 0; i < words.size(); ++i) {
    if (sameTextNoCase(words[i].full, reply)) return static_cast<int>(i);
  }
  for (size_t i = 0; i < words.size(); ++i) {
    const Word& word = words[i];
    if (!word.abbreviation.isEmpty() && sameTextNoCase(word.abbreviation, reply)) return static_cast<int>(i);
    if (reply.getLength() >= word.shortestPrefix && startsWithNoCase(word.full, reply))
      return static_cast<int>(i);
  }
  return -1;
}

bool KeywordList::match(const OdString& reply, OdString& globalKeyword) const {
  if (reply.isEmpty() || m_local.empty()) return false;
  if (reply[0] == L'_' && reply.getLength() > 1) {
    const std::vector<Word>& words = m_global.empty() ? m_local : m_global;
    const int index = find(words, reply.mid(1));
    if (index < 0) return false;
    globalKeyword = words[static_cast<size_t>(index)].full;
    return true;
  }
  const int index = find(m_local, reply);
  if (index < 0) return false;
  const auto i = static_cast<size_t>(index);
  globalKeyword = i < m_global.size() ? m_global[i].full : m_local[i].full;
  return true;
}

// ---------------------------------------------------------------- initget state

InitGet takeInitGet() {
  InputState& state = currentState();
  InitGet taken = std::move(state.pending);
  state.pending = InitGet();
  return taken;
}

void setLastInput(const OdString& text) { currentState().lastInput = text; }

GetReply readGetReply(const OdString& prompt, const KeywordList& keywords) {
  Host& host = Host::instance();
  for (;;) {
    Reply reply = host.readReply(prompt);
    if (reply.kind != Reply::kText) return {GetReply::kCancel, OdString()};
    OdString text = reply.text;
    text.trimLeft().trimRight();
    if (text.isEmpty()) return {GetReply::kEnter, OdString()};
    if (text[0] == L'\'' && text.getLength() > 1) {
      runTransparent(text);
      continue;
    }
    OdString keyword;
    if (keywords.match(text, keyword)) return {GetReply::kKeyword, keyword};
    return {GetReply::kValue, text};
  }
}

// ---------------------------------------------------------------- coordinate systems

OdGeMatrix3d ucsToWorld() {
  Document* doc = Host::instance().current();
  return doc ? doc->ucs() : OdGeMatrix3d::kIdentity;
}

OdGePoint3d ucsToWcs(const OdGePoint3d& point) { return ucsToWorld() * point; }

OdGePoint3d wcsToUcs(const OdGePoint3d& point) {
  OdGeMatrix3d toUcs;
  return ucsToWorld().inverse(toUcs) ? toUcs * point : point;
}

OdGePoint3d lastPoint() {
  SysVarValue value;
  if (Host::instance().sysvars().get(L"LASTPOINT", value) != RTNORM) return OdGePoint3d();
  return OdGePoint3d(value.p[0], value.p[1], value.p[2]);
}

void setLastPoint(const OdGePoint3d& ucsPoint) {
  SysVarValue value;
  value.type = RT3DPOINT;
  value.p[0] = ucsPoint.x, value.p[1] = ucsPoint.y, value.p[2] = ucsPoint.z;
  Host::instance().sysvars().set(L"LASTPOINT", value);
}

bool entityOcsNormal(const OdDbEntity* entity, OdGeVector3d& normal) {
  if (auto* circle = dynamic_cast<const OdDbCircle*>(entity))
    normal = circle->normal();
  else if (auto* arc = dynamic_cast<const OdDbArc*>(entity))
    normal = arc->normal();
  else if (auto* text = dynamic_cast<const OdDbText*>(entity))
    normal = text->normal();
  else if (auto* reference = dynamic_cast<const OdDbBlockReference*>(entity))
    normal = reference->normal();
  else if (auto* polyline = dynamic_cast<const OdDbPolyline*>(entity))
    normal = polyline->normal();
  else if (auto* polyline2d = dynamic_cast<const OdDb2dPolyline*>(entity))
    normal = polyline2d->normal();
  else if (auto* quad = dynamic_cast<const OdDbPlanarQuad*>(entity))
    normal = quad->normal();
  else if (auto* dimension = dynamic_cast<const OdDbDimension*>(entity))
    normal = dimension->normal();
  else if (auto* hatch = dynamic_cast<const OdDbHatch*>(entity))
    normal = hatch->normal();
  else
    return false;
  return true;
}

// ---------------------------------------------------------------- entry forms

bool parseDistance(const OdString& text, double& value) {
  return rydbDisToF(text.c_str(), -1, &value) == RTNORM;
}

double directionOfUserAngle(double userAngle) {
  const auto& vars = Host::instance().sysvars();
  const double base = vars.getReal(L"ANGBASE", 0.0);
  return normalized(vars.getInt(L"ANGDIR", 0) ? base - userAngle : base + userAngle);
}

double userAngleOfDirection(double direction) {
  const auto& vars = Host::instance().sysvars();
  const double base = vars.getReal(L"ANGBASE", 0.0);
  return normalized(vars.getInt(L"ANGDIR", 0) ? base - direction : direction - base);
}

bool parseDirection(const OdString& text, double& direction) {
  double angle = 0;
  if (rydbAngToF(text.c_str(), -1, &angle) != RTNORM) return false;
  direction = directionOfUserAngle(angle);
  return true;
}

namespace {

std::vector<OdString> split(const OdString& text, wchar_t separator) {
  std::vector<OdString> parts;
  int start = 0;
  for (;;) {
    const int at = text.find(separator, start);
    OdString part = text.mid(start, at < 0 ? -1 : at - start);
    part.trimLeft().trimRight();
    parts.push_back(part);
    if (at < 0) return parts;
    start = at + 1;
  }
}

// The coordinates of an entry without its "@" and "*": "x,y[,z]" or the polar
// forms. hasZ tells whether the entry gave the third coordinate.
bool parseCoordinates(const OdString& text, OdGeVector3d& v, bool& hasZ) {
  const int less = text.find(L'<');
  if (less < 0) {
    const std::vector<OdString> parts = split(text, L',');
    if (parts.size() < 2 || parts.size() > 3) return false;
    double c[3] = {0, 0, 0};
    for (size_t i = 0; i < parts.size(); ++i) {
      if (!parseDistance(parts[i], c[i])) return false;
    }
    v = OdGeVector3d(c[0], c[1], c[2]);
    hasZ = parts.size() == 3;
    return true;
  }
  double distance = 0, direction = 0;
  OdString distanceText = text.left(less);
  distanceText.trimRight();
  if (!parseDistance(distanceText, distance)) return false;
  const OdString rest = text.mid(less + 1);
  if (rest.find(L'<') >= 0) {
    // Spherical: distance, direction in the xy plane, angle up from the plane.
    const std::vector<OdString> angles = split(rest, L'<');
    double slope = 0;
    if (angles.size() != 2 || !parseDirection(angles[0], direction) ||
        rydbAngToF(angles[1].c_str(), -1, &slope) != RTNORM) {
      return false;
    }
    v = OdGeVector3d(std::cos(slope) * std::cos(direction), std::cos(slope) * std::sin(direction),
                     std::sin(slope)) *
        distance;
    hasZ = true;
    return true;
  }
  const std::vector<OdString> parts = split(rest, L',');
  double z = 0;
  if (parts.size() > 2 || !parseDirection(parts[0], direction) ||
      (parts.size() == 2 && !parseDistance(parts[1], z))) {
    return false;
  }
  v = OdGeVector3d(distance * std::cos(direction), distance * std::sin(direction), z);
  hasZ = parts.size() == 2;
  return true;
}

}  // namespace

bool parsePoint(const OdString& input, OdGePoint3d& ucsPoint) {
  OdString text = input;
  text.trimLeft().trimRight();
  bool relative = false, world = false;
  while (!text.isEmpty() && ((text[0] == L'@' && !relative) || (text[0] == L'*' && !world))) {
    (text[0] == L'@' ? relative : world) = true;
    text = text.mid(1);
    text.trimLeft();
  }
  if (text.isEmpty()) {
    if (!relative || world) return false;
    ucsPoint = lastPoint();
    return true;
  }
  OdGeVector3d v;
  bool hasZ = false;
  if (!parseCoordinates(text, v, hasZ)) return false;
  const double elevation = Host::instance().sysvars().getReal(L"ELEVATION", 0.0);
  if (!relative && !hasZ) v.z = elevation;
  if (world) {
    OdGeMatrix3d toUcs;
    if (!ucsToWorld().inverse(toUcs)) return false;
    ucsPoint = relative ? lastPoint() + toUcs * v : toUcs * OdGePoint3d(v.x, v.y, v.z);
  } else {
    ucsPoint = relative ? lastPoint() + v : OdGePoint3d(v.x, v.y, v.z);
  }
  return true;
}

}  // namespace ryhost

// ---------------------------------------------------------------- get-functions

using namespace ryhost;

namespace {

OdString promptOf(const ACHAR* prompt) { return OdString(prompt ? prompt : L""); }

void say(const wchar_t* message) { Host::instance().print(message); }

// Copies a reply into the caller's buffer; a reply too long for it is cut
// and reported with RTINPUTTRUNCATED.
int copyReply(const OdString& text, ACHAR* result, size_t size) {
  const size_t n = static_cast<size_t>(text.getLength());
  const size_t copied = std::min(n, size - 1);
  std::wmemcpy(result, text.c_str(), copied);
  result[copied] = 0;
  return copied == n ? RTNORM : RTINPUTTRUNCATED;
}

// A number refused by RSG_NOZERO or RSG_NONEG: says why and returns true.
bool refused(double value, int flags) {
  const bool zero = (flags & RSG_NOZERO) && value == 0, negative = (flags & RSG_NONEG) && value < 0;
  if (!zero && !negative) return false;
  if ((flags & RSG_NOZERO) && (flags & RSG_NONEG))
    say(L"\nValue must be positive and nonzero.");
  else
    say(zero ? L"\nValue must be nonzero." : L"\nValue must be positive.");
  return true;
}

// What a get-function says when a reply is none of the things it takes.
struct Requirement {
  const wchar_t* plain;
  const wchar_t* withKeywords;
  const wchar_t* text(const InitGet& init) const { return init.keywords.isEmpty() ? plain : withKeywords; }
};

// The common part of a get-function's loop: one reply, with Esc, Enter
// and keywords dealt with. True with a text to interpret; false with the
// code to return, or 0 to ask again.
bool nextValue(const ACHAR* prompt, const InitGet& init, const Requirement& requirement, OdString& text,
               int& code) {
  const GetReply reply = readGetReply(promptOf(prompt), init.keywords);
  code = 0;
  switch (reply.kind) {
    case GetReply::kCancel: code = RTCAN; return false;
    case GetReply::kEnter:
      if (init.flags & RSG_NONULL)
        say(requirement.text(init));
      else
        code = RTNONE;
      return false;
    case GetReply::kKeyword:
      setLastInput(reply.text);
      code = RTKWORD;
      return false;
    case GetReply::kValue: text = reply.text; return true;
  }
  return false;
}

// A reply that is no value: arbitrary input with RSG_OTHER, else the
// requirement is shown and the prompt asked again (0).
int otherInput(const InitGet& init, const Requirement& requirement, const OdString& text) {
  if (init.flags & RSG_OTHER) {
    setLastInput(text);
    return RTKWORD;
  }
  say(requirement.text(init));
  return 0;
}

enum class PointReply { kPoint, kNotAPoint, kAgain, kCancel };

// A point typed, or object snap modes ("end", "mid,cen"...) and then the
// point to snap.
PointReply interpretPoint(const OdString& text, OdGePoint3d& point) {
  if (parsePoint(text, point)) return PointReply::kPoint;
  if (!isSnapModeList(text)) return PointReply::kNotAPoint;
  const GetReply reply = readGetReply(L"\nof ", KeywordList());
  if (reply.kind == GetReply::kCancel) return PointReply::kCancel;
  OdGePoint3d typed;
  if (reply.kind != GetReply::kValue || !parsePoint(reply.text, typed)) {
    say(L"\nInvalid point.");
    return PointReply::kAgain;
  }
  if (snapPoint(typed, text, point) != SnapOutcome::kSnapped) {
    say(L"\nNo snap point found.");
    return PointReply::kAgain;
  }
  return PointReply::kPoint;
}

// With LIMCHECK on, points outside the drawing limits are refused (unless RSG_NOLIM).
bool outsideLimits(const OdGePoint3d& ucsPoint, int flags) {
  auto& vars = Host::instance().sysvars();
  if ((flags & RSG_NOLIM) || vars.getInt(L"LIMCHECK", 0) == 0) return false;
  SysVarValue low, high;
  if (vars.get(L"LIMMIN", low) != RTNORM || vars.get(L"LIMMAX", high) != RTNORM) return false;
  const OdGePoint3d world = ucsToWcs(ucsPoint);
  return world.x < low.p[0] || world.y < low.p[1] || world.x > high.p[0] || world.y > high.p[1];
}

// Asks for the second point of a distance or an angle typed by two points.
int readSecondPoint(const InitGet& init, OdGePoint3d& point) {
  for (;;) {
    const GetReply reply = readGetReply(L"\nSecond point: ", KeywordList());
    if (reply.kind == GetReply::kCancel) return RTCAN;
    if (reply.kind == GetReply::kEnter) {
      if (!(init.flags & RSG_NONULL)) return RTNONE;
      say(L"\nInvalid point.");
      continue;
    }
    switch (interpretPoint(reply.text, point)) {
      case PointReply::kPoint: setLastPoint(point); return RTNORM;
      case PointReply::kCancel: return RTCAN;
      case PointReply::kNotAPoint: say(L"\nInvalid point."); break;
      case PointReply::kAgain: break;
    }
  }
}

// The loop of a get-function: each reply that is a value goes to
// `interpret`, which returns RTNORM when it has stored the result, 0 to ask
// again, or another code to return.
template <class Interpret>
int readReplies(const ACHAR* prompt, const InitGet& init, const Requirement& requirement, Interpret interpret) {
  for (;;) {
    OdString text;
    int code = 0;
    if (!nextValue(prompt, init, requirement, text, code)) {
      if (code) return code;
      continue;
    }
    if ((code = interpret(text)) != 0) return code;
  }
}

// A reply read as a point: RTNORM with the point, 0 to ask again, or the
// code to return (Esc, arbitrary input).
int replyPoint(const InitGet& init, const Requirement& requirement, const OdString& text, OdGePoint3d& point) {
  switch (interpretPoint(text, point)) {
    case PointReply::kCancel: return RTCAN;
    case PointReply::kAgain: return 0;
    case PointReply::kNotAPoint: return otherInput(init, requirement, text);
    case PointReply::kPoint: break;
  }
  return RTNORM;
}

// The ends of a distance or direction given by a point: from the base to
// the point, or without a base from the point to a second one asked for.
int spanOf(const ads_point base, const InitGet& init, const OdGePoint3d& point, OdGePoint3d& from, OdGePoint3d& to) {
  setLastPoint(point);
  from = base ? OdGePoint3d(base[0], base[1], base[2]) : point;
  to = point;
  return base ? RTNORM : readSecondPoint(init, to);
}

void store(const OdGePoint3d& point, ads_point result) {
  result[0] = point.x, result[1] = point.y, result[2] = point.z;
}

int readPoint(const ads_point base, const ACHAR* prompt, ads_point result, bool corner) {
  const InitGet init = takeInitGet();
  if (!result || (corner && !base)) return RTERROR;
  static const Requirement requirement{L"\nInvalid point.", L"\nPoint or option keyword required."};
  return readReplies(prompt, init, requirement, [&](const OdString& text) -> int {
    OdGePoint3d point;
    if (const int code = replyPoint(init, requirement, text, point); code != RTNORM) return code;
    if (outsideLimits(point, init.flags)) {
      say(L"\n**Outside limits");
      return 0;
    }
    setLastPoint(point);
    store(point, result);
    return RTNORM;
  });
}

// getangle and getorient: a typed angle or the direction of two points.
int readAngle(const ads_point base, const ACHAR* prompt, ads_real* result, bool orientation) {
  const InitGet init = takeInitGet();
  if (!result) return RTERROR;
  static const Requirement withBase{L"\nRequires valid numeric angle or second point.",
                                    L"\nRequires valid numeric angle, second point, or option keyword."};
  static const Requirement withoutBase{L"\nRequires valid numeric angle or two points.",
                                       L"\nRequires valid numeric angle, two points, or option keyword."};
  const Requirement& requirement = base ? withBase : withoutBase;
  const double angleBase = Host::instance().sysvars().getReal(L"ANGBASE", 0.0);
  return readReplies(prompt, init, requirement, [&](const OdString& text) -> int {
    double typed = 0, direction = 0;
    if (rydbAngToF(text.c_str(), -1, &typed) == RTNORM) {
      // Typed angles count from ANGBASE in the ANGDIR sense.
      direction = directionOfUserAngle(typed);
    } else {
      OdGePoint3d point, from, to;
      if (const int code = replyPoint(init, requirement, text, point); code != RTNORM) return code;
      if (const int code = spanOf(base, init, point, from, to); code != RTNORM) return code;
      direction = normalized(std::atan2(to.y - from.y, to.x - from.x));
    }
    const double angle = orientation ? direction : normalized(direction - angleBase);
    if (refused(angle, init.flags & RSG_NOZERO)) return 0;
    *result = angle;
    return RTNORM;
  });
}


}  // namespace

namespace {

// A number as typed: decimal or scientific, with one optional sign.
template <class Number>
bool parseNumber(const OdString& text, Number& value) {
  std::string s = text.toUtf8();
  if (!s.empty() && s[0] == '+') s.erase(0, 1);
  if (s.empty() || s[0] == '+') return false;
  auto [end, error] = std::from_chars(s.data(), s.data() + s.size(), value);
  if (error != std::errc() || end != s.data() + s.size()) return false;
  if constexpr (std::is_floating_point_v<Number>) return std::isfinite(value);
  return true;
}

}  // namespace

bool ryhost::parseReal(const OdString& text, double& value) { return parseNumber(text, value); }
bool ryhost::parseInteger(const OdString& text, long long& value) { return parseNumber(text, value); }

int ryedInitGet(int flags, const ACHAR* keywords) {
  InputState& state = currentState();
  state.pending.flags = flags;
  state.pending.keywords = KeywordList(OdString(keywords ? keywords : L""));
  return RTNORM;
}

int ryedGetKword(const ACHAR* prompt, ACHAR* result, size_t size) {
  const InitGet init = takeInitGet();
  if (!result || size == 0) return RTERROR;
  result[0] = 0;
  if (init.keywords.isEmpty() && !(init.flags & RSG_OTHER)) return RTERROR;  // nothing could be accepted
  for (;;) {
    const GetReply reply = readGetReply(promptOf(prompt), init.keywords);
    switch (reply.kind) {
      case GetReply::kCancel: return RTCAN;
      case GetReply::kEnter:
        if (!(init.flags & RSG_NONULL)) return RTNONE;
        break;
      case GetReply::kKeyword: setLastInput(reply.text); return copyReply(reply.text, result, size);
      case GetReply::kValue:
        if (init.flags & RSG_OTHER) {
          setLastInput(reply.text);
          return copyReply(reply.text, result, size);
        }
        break;
    }
    say(L"\nInvalid option keyword.");
  }
}

int ryedGetString(int allowSpaces, const ACHAR* prompt, ACHAR* result, size_t size) {
  takeInitGet();  // an initget applies to the next call even when that call ignores it
  if (!result || size == 0) return RTERROR;
  result[0] = 0;
  Reply reply = Host::instance().readReply(promptOf(prompt));
  if (reply.kind != Reply::kText) return RTCAN;
  OdString text = reply.text;
  // Without allowSpaces a space ends the reply, as it does on the command line.
  const int space = allowSpaces ? -1 : text.find(L' ');
  if (space >= 0) text = text.left(space);
  return copyReply(text, result, size);
}

int ryedGetPoint(const ads_point base, const ACHAR* prompt, ads_point result) {
  return readPoint(base, prompt, result, false);
}

int ryedGetCorner(const ads_point base, const ACHAR* prompt, ads_point result) {
  return readPoint(base, prompt, result, true);
}

int ryedGetDist(const ads_point base, const ACHAR* prompt, ads_real* result) {
  const InitGet init = takeInitGet();
  if (!result) return RTERROR;
  static const Requirement withBase{L"\nRequires numeric distance or second point.",
                                    L"\nRequires numeric distance, second point, or option keyword."};
  static const Requirement withoutBase{L"\nRequires numeric distance or two points.",
                                       L"\nRequires numeric distance, two points, or option keyword."};
  const Requirement& requirement = base ? withBase : withoutBase;
  return readReplies(prompt, init, requirement, [&](const OdString& text) -> int {
    double distance = 0;
    if (!parseDistance(text, distance)) {
      OdGePoint3d point, from, to;
      if (const int code = replyPoint(init, requirement, text, point); code != RTNORM) return code;
      if (const int code = spanOf(base, init, point, from, to); code != RTNORM) return code;
      OdGeVector3d span = to - from;
      if (init.flags & RSG_2D) span.z = 0;
      distance = span.length();
    }
    if (refused(distance, init.flags)) return 0;
    *result = distance;
    return RTNORM;
  });
}

int ryedGetAngle(const ads_point base, const ACHAR* prompt, ads_real* result) {
  return readAngle(base, prompt, result, false);
}

int ryedGetOrient(const ads_point base, const ACHAR* prompt, ads_real* result) {
  return readAngle(base, prompt, result, true);
}

int ryedGetReal(const ACHAR* prompt, ads_real* result) {
  const InitGet init = takeInitGet();
  if (!result) return RTERROR;
  static const Requirement requirement{L"\nRequires numeric value.",
                                       L"\nRequires a number or an option keyword."};
  return readReplies(prompt, init, requirement, [&](const OdString& text) -> int {
    double value = 0;
    if (!parseReal(text, value)) return otherInput(init, requirement, text);
    if (refused(value, init.flags)) return 0;
    *result = value;
    return RTNORM;
  });
}

int ryedGetInt(const ACHAR* prompt, int* result) {
  const InitGet init = takeInitGet();
  if (!result) return RTERROR;
  static const Requirement requirement{L"\nRequires an integer value.",
                                       L"\nRequires an integer value or option keyword."};
  return readReplies(prompt, init, requirement, [&](const OdString& text) -> int {
    long long value = 0;
    if (!parseInteger(text, value)) return otherInput(init, requirement, text);
    if (value < -32768 || value > 32767) {
      say(L"\nRequires an integer between -32768 and 32767.");
      return 0;
    }
    if (refused(static_cast<double>(value), init.flags)) return 0;
    *result = static_cast<int>(value);
    return RTNORM;
  });
}

int ryedGetInput(ACHAR* result, size_t size) {
  if (!result || size == 0) return RTERROR;
  return copyReply(currentState().lastInput, result, size);
}

int ryedGrRead(int, int* type, resbuf* result) {
  if (!type || !result) return RTERROR;
  InputState& state = currentState();
  auto key = [&](int code) {
    *type = 2;
    result->restype = RTSHORT;
    result->resval.rint = static_cast<short>(code);
    return RTNORM;
  };
  if (!state.pendingKeys.empty()) {
    const int code = state.pendingKeys.front();
    state.pendingKeys.pop_front();
    return key(code);
  }
  Reply reply = Host::instance().readReply(OdString());
  if (reply.kind != Reply::kText) return RTCAN;
  if (reply.text.isEmpty()) return key(13);  // Enter
  OdGePoint3d point;
  if (parsePoint(reply.text, point)) {
    *type = 3;
    result->restype = RT3DPOINT;
    store(point, result->resval.rpoint);
    return RTNORM;
  }
  // Any other line is a run of keys, delivered one per call.
  for (int i = 1; i < reply.text.getLength(); ++i) state.pendingKeys.push_back(reply.text[i]);
  return key(reply.text[0]);
}
