// Selection sets: ryedSSGet in its interactive and programmed modes, the
// set functions, the pick-first set, and ryedEntSel.
//
// Mode strings are read as a main mode ("X", "A", "I", "P", "L", "W", "C",
// "F", "WP", "CP", or none for the interactive selection) with options:
//   ":S"  one selection step, then the selection ends;
//   ":$"  pt1 holds the add and remove prompts that replace "Select objects: ";
//   ":L"  entities on locked layers are refused ("1 was on a locked layer.");
//   ":C"  the current space only: "X" and "A" otherwise take every layout,
//         the interactive selection already works in the current space;
//   ":E"  a pick takes everything within the pick box, not only the nearest;
//   ":N"  accepted; picks give the top-level entity (no nesting data is kept);
//   "+."  point picks only (no keywords, no implied window).
// A leading "_" (the language-independent form) may precede any part.
#include <algorithm>
#include <cwctype>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "core/Host.h"
#include "core/SelectionSets.h"
#include "rydb.h"
#include "ryerrno.h"
#include "ryed.h"
#include "ryut.h"
#include "sdk/EntityLists.h"
#include "sdk/Input.h"
#include "sdk/Picking.h"
#include "sdk/SelectionFilter.h"

using ryhost::Document;
using ryhost::GetReply;
using ryhost::Host;
using ryhost::Picker;
using ryhost::SelectionFilter;
using IdList = std::vector<OdDbObjectId>;

using ryhost::setErrno;

namespace {

// ---------------------------------------------------------------- modes

struct SelectionMode {
  OdString main;  // empty: interactive
  bool single = false;
  bool customPrompts = false;
  bool refuseLocked = false;
  bool currentSpaceOnly = false;
  bool pointsOnly = false;
  bool everythingInPickBox = false;
};

bool parseMode(const ACHAR* text, SelectionMode& mode) {
  OdString s = text ? text : L"";
  s.trimLeft().trimRight();
  s.makeUpper();
  static const wchar_t* const kMainModes[] = {L"X", L"A", L"I", L"P", L"L", L"W", L"C", L"F", L"WP", L"CP"};
  int i = 0;
  const int n = s.getLength();
  while (i < n) {
    const wchar_t c = s[i];
    if (c == L'_') {
      ++i;
    } else if (c == L':') {
      if (i + 1 >= n) return false;
      switch (s[i + 1]) {
        case L'S': mode.single = true; break;
        case L'$': mode.customPrompts = true; break;
        case L'L': mode.refuseLocked = true; break;
        case L'C': mode.currentSpaceOnly = true; break;
        case L'E': mode.everythingInPickBox = true; break;
        case L'N': break;
        default: return false;
      }
      i += 2;
    } else if (c == L'+' && i + 1 < n && s[i + 1] == L'.') {
      mode.pointsOnly = true;
      i += 2;
    } else {
      int end = i;
      while (end < n && std::iswalpha(static_cast<wint_t>(s[end]))) ++end;
      const OdString word = s.mid(i, end - i);
      if (word.isEmpty() || !mode.main.isEmpty()) return false;
      if (std::none_of(std::begin(kMainModes), std::end(kMainModes),
                       [&](const wchar_t* m) { return word == m; })) {
        return false;
      }
      mode.main = word;
      i = end;
    }
  }
  return true;
}

// ---------------------------------------------------------------- entities

OdDbEntityPtr openEntity(const OdDbObjectId& id) {
  if (id.isNull() || !id.isValid() || id.isErased()) return OdDbEntityPtr();
  return OdDbEntity::cast(id.openObject().get());
}

// Layer states, looked up once per layer.
class LayerStates {
 public:
  bool isLocked(const OdDbEntity* entity) { return flags(entity) & 4; }
  bool isFrozen(const OdDbEntity* entity) { return flags(entity) & 1; }

 private:
  int flags(const OdDbEntity* entity) {
    OdDbStub* stub = entity->layerId().stub();
    if (stub == m_lastStub) return m_lastFlags;
    auto known = m_flags.find(stub);
    int value = 0;
    if (known != m_flags.end()) {
      value = known->second;
    } else {
      auto* layer = stub ? dynamic_cast<const OdDbLayerTableRecord*>(stub->object) : nullptr;
      value = layer ? (layer->isFrozen() ? 1 : 0) | (layer->isLocked() ? 4 : 0) : 0;
      m_flags.emplace(stub, value);
    }
    m_lastStub = stub;
    m_lastFlags = value;
    return value;
  }
  std::unordered_map<OdDbStub*, int> m_flags;
  OdDbStub* m_lastStub = nullptr;
  int m_lastFlags = 0;
};

// The layouts' block records (model space and every paper-space layout), or the current space only.
std::vector<const OdDbBlockTableRecord*> layoutBlocks(OdDbDatabase* db, bool currentSpaceOnly) {
  std::vector<const OdDbBlockTableRecord*> blocks;
  auto blockOf = [](const OdDbObjectId& id) -> const OdDbBlockTableRecord* {
    if (id.isNull() || !id.isValid() || id.isErased()) return nullptr;
    return dynamic_cast<const OdDbBlockTableRecord*>(id.stub()->object);
  };
  if (currentSpaceOnly) {
    if (const OdDbBlockTableRecord* block = blockOf(db->currentSpaceId())) blocks.push_back(block);
    return blocks;
  }
  OdDbObjectPtr table = db->getBlockTableId().openObject();
  if (auto* symbols = dynamic_cast<OdDbSymbolTable*>(table.get())) {
    for (const OdDbObjectId& id : symbols->recordIds()) {
      const OdDbBlockTableRecord* block = blockOf(id);
      if (block && block->isLayout()) blocks.push_back(block);
    }
  }
  return blocks;
}

// Every live entity of the layouts that the filter takes, newest first;
// thawedOnly leaves out those on frozen layers. Objects are read in place
// (no open and close per entity): this walks whole drawings.
void collectAll(OdDbDatabase* db, bool currentSpaceOnly, bool thawedOnly, SelectionFilter& filter,
                LayerStates& layers, IdList& found) {
  int contributing = 0;
  for (const OdDbBlockTableRecord* block : layoutBlocks(db, currentSpaceOnly)) {
    const OdDbObjectIdArray& ids = block->entityIds();
    const size_t before = found.size();
    for (auto it = ids.rbegin(); it != ids.rend(); ++it) {
      OdDbStub* stub = it->stub();
      if (!stub || stub->isErased()) continue;
      // The run-time class check, not dynamic_cast: this loop sees every entity of the drawing.
      if (!stub->object || !stub->object->isKindOf(OdDbEntity::desc())) continue;
      auto* entity = static_cast<const OdDbEntity*>(stub->object);
      if ((thawedOnly && layers.isFrozen(entity)) || !filter.matches(entity)) continue;
      found.push_back(*it);
    }
    if (found.size() > before) ++contributing;
  }
  // Several layouts: newest first across all of them.
  if (contributing > 1)
    std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return b < a; });
}

// Keeps the live entities the filter takes (all of them without a filter);
// counts and drops those on locked layers when asked to.
void screen(const IdList& candidates, SelectionFilter* filter, LayerStates& layers, bool refuseLocked,
            IdList& kept, int& locked) {
  locked = 0;
  for (const OdDbObjectId& id : candidates) {
    OdDbEntityPtr entity = openEntity(id);
    if (entity.isNull() || (filter && !filter->matches(entity.get()))) continue;
    if (refuseLocked && layers.isLocked(entity.get())) {
      ++locked;
      continue;
    }
    kept.push_back(id);
  }
}

// Live ids of a list, in order, once each.
IdList liveIds(const std::vector<OdDbObjectId>& ids) {
  IdList live;
  std::unordered_set<OdDbStub*> seen;
  for (const OdDbObjectId& id : ids) {
    if (!id.isNull() && id.isValid() && !id.isErased() && seen.insert(id.stub()).second) live.push_back(id);
  }
  return live;
}

OdGePoint2d planOf(const OdGePoint3d& p) { return {p.x, p.y}; }

OdGePoint3d userPoint(const ads_real* p) { return OdGePoint3d(p[0], p[1], p[2]); }

// The world points of a list of RTPOINT / RT3DPOINT buffers (user coordinates).
std::vector<OdGePoint2d> pointList(const resbuf* list) {
  std::vector<OdGePoint2d> points;
  for (const resbuf* rb = list; rb; rb = rb->rbnext) {
    if (rb->restype != RTPOINT && rb->restype != RT3DPOINT) continue;
    OdGePoint3d user = userPoint(rb->resval.rpoint);
    if (rb->restype == RTPOINT) user.z = 0;
    points.push_back(planOf(ryhost::ucsToWcs(user)));
  }
  return points;
}

std::vector<OdDbObjectId>* findSet(const ads_name ss) {
  Document* doc = Host::instance().current();
  if (!doc || !ss || !ryhost::SelectionSets::isSetName(ss)) return nullptr;
  return doc->selections().find(ss[0]);
}

int makeSet(Document& doc, const IdList& ids, ads_name ss) {
  const std::int64_t number = doc.selections().create();
  *doc.selections().find(number) = ids;
  doc.selections().toName(number, ss);
  return RTNORM;
}

OdString plural(int count, const wchar_t* one, const wchar_t* many) {
  return OdString().format(L"%d %ls", count, count == 1 ? one : many);
}

// ---------------------------------------------------------------- interactive selection

// The classic "Select objects: " loop: points, handles and keywords until
// Enter, each step adding to (or, after "Remove", taking from) the set and
// reporting what it found.
class InteractiveSelection {
 public:
  InteractiveSelection(Document& doc, const SelectionMode& mode, SelectionFilter& filter,
                       const OdString& addPrompt, const OdString& removePrompt)
      : m_doc(doc),
        m_mode(mode),
        m_filter(filter),
        m_picker(doc),
        m_addPrompt(addPrompt),
        m_removePrompt(removePrompt) {}

  // RTNORM when the selection ended (the set may be empty), RTCAN on Esc.
  int run() {
    for (;;) {
      const GetReply reply =
          ryhost::readGetReply(m_removing ? m_removePrompt : m_addPrompt, ryhost::KeywordList());
      if (reply.kind == GetReply::kCancel) return RTCAN;
      if (reply.kind == GetReply::kEnter) return RTNORM;
      const size_t stepsBefore = m_steps.size();
      if (!handle(reply.text)) return RTCAN;
      if (m_mode.single && m_steps.size() > stepsBefore && !m_set.empty()) return RTNORM;
    }
  }
  const IdList& selection() const { return m_set; }

 private:
  // One change of the set, for "Undo".
  struct Step {
    IdList added, removed;
  };
  enum class Outcome { kDone, kAbandoned, kCancelled };

  // False on Esc.
  bool handle(const OdString& text) {
    OdGePoint3d point;
    if (ryhost::parseWorldPoint(text, point)) return pickOrWindow(point);
    if (text[0] == L'#') return handleName(text.mid(1));
    if (m_mode.pointsOnly) return invalid();
    const OdString keyword = keywordOf(text);
    if (keyword == L"WINDOW" || keyword == L"CROSSING" || keyword == L"BOX") return boxStep(keyword);
    if (keyword == L"FENCE")
      return pointListStep(L"\nSpecify first fence point: ", L"\nSpecify next fence point or [Undo]: ", 2,
                           kFence);
    if (keyword == L"WPOLYGON" || keyword == L"CPOLYGON") {
      return pointListStep(L"\nSpecify first polygon point: ", L"\nSpecify endpoint of line or [Undo]: ", 3,
                           keyword == L"WPOLYGON" ? kWindowPolygon : kCrossingPolygon);
    }
    if (keyword == L"ALL") {
      apply(allInCurrentSpace());
    } else if (keyword == L"PREVIOUS") {
      apply(liveIds(m_doc.selections().previous()));
    } else if (keyword == L"LAST") {
      const OdDbObjectId last = m_doc.lastEntity();
      apply(last.isNull() ? IdList() : IdList{last});
    } else if (keyword == L"ADD" || keyword == L"REMOVE") {
      m_removing = keyword == L"REMOVE";
    } else if (keyword == L"SINGLE") {
      m_mode.single = true;
    } else if (keyword == L"UNDO") {
      undo();
    } else if (text == L"?") {
      showOptions();
    } else if (keyword != L"AUTO") {
      return invalid();
    }
    return true;
  }

  // "ALL": the current space on thawed layers, oldest first.
  IdList allInCurrentSpace() {
    IdList all;
    SelectionFilter everything;
    LayerStates layers;
    collectAll(m_doc.database(), true, true, everything, layers, all);
    std::reverse(all.begin(), all.end());
    return all;
  }

  // The keyword a reply names: its full name or a prefix at least as long as
  // the abbreviation; "_" before it is the language-independent form.
  static OdString keywordOf(OdString text) {
    text.trimLeft(L'_');
    text.makeUpper();
    struct Keyword {
      const wchar_t* name;
      int shortest;
    };
    static const Keyword kKeywords[] = {
        {L"WINDOW", 1}, {L"WPOLYGON", 2}, {L"CROSSING", 1}, {L"CPOLYGON", 2}, {L"BOX", 3},
        {L"ALL", 3},    {L"FENCE", 1},    {L"PREVIOUS", 1}, {L"LAST", 1},     {L"ADD", 1},
        {L"AUTO", 2},   {L"REMOVE", 1},   {L"UNDO", 1},     {L"SINGLE", 2},
    };
    for (const Keyword& k : kKeywords) {
      const OdString name(k.name);
      if (text.getLength() >= k.shortest && name.left(text.getLength()) == text) return name;
    }
    return OdString();
  }

  bool invalid() {
    Host::instance().print(L"\n*Invalid selection*");
    showOptions();
    return true;
  }

  void showOptions() {
    Host::instance().print(m_mode.pointsOnly
                               ? OdString(L"\nExpects a point.")
                               : OdString(L"\nExpects a point or Window/Last/Crossing/BOX/ALL/Fence/"
                                          L"WPolygon/CPolygon/Add/Remove/Previous/Undo/AUto/SIngle"));
  }

  // "#2F": the entity of that handle; "#SS3": the entities of set 3 (the
  // form a set takes when a program passes it to a prompt).
  bool handleName(const OdString& name) {
    IdList found;
    if (name.left(2).iCompare(L"SS") == 0) {
      ads_name ss;
      m_doc.selections().toName(std::wcstoll(name.mid(2).c_str(), nullptr, 10), ss);
      if (const std::vector<OdDbObjectId>* set = findSet(ss)) found = liveIds(*set);
    } else if (OdDbObjectId id = ryhost::entityFromHandle(m_doc, name); !id.isNull()) {
      found.push_back(id);
    }
    apply(found);
    return true;
  }

  // A point picks what is under it; over nothing it opens a window to the
  // next point: a window when that lies to the right, a crossing to the left.
  bool pickOrWindow(const OdGePoint3d& point) {
    IdList picked;
    if (m_mode.everythingInPickBox) {
      m_picker.pickEverything(point, picked);
    } else if (OdDbObjectId nearest = m_picker.pick(point); !nearest.isNull()) {
      picked.push_back(nearest);
    }
    if (!picked.empty() || m_mode.pointsOnly) {
      apply(picked);
      return true;
    }
    OdGePoint3d other;
    const Outcome outcome = askPoint(L"\nSpecify opposite corner: ", other);
    if (outcome != Outcome::kDone) return outcome != Outcome::kCancelled;
    selectBox(point, other, other.x < point.x);
    return true;
  }

  bool boxStep(const OdString& keyword) {
    OdGePoint3d first, second;
    Outcome outcome = askPoint(L"\nSpecify first corner: ", first);
    if (outcome == Outcome::kDone) outcome = askPoint(L"\nSpecify opposite corner: ", second);
    if (outcome != Outcome::kDone) return outcome != Outcome::kCancelled;
    const bool crossing = keyword == L"CROSSING" || (keyword == L"BOX" && second.x < first.x);
    selectBox(first, second, crossing);
    return true;
  }

  void selectBox(const OdGePoint3d& corner1, const OdGePoint3d& corner2, bool crossing) {
    IdList found;
    m_picker.window(planOf(corner1), planOf(corner2), crossing, found);
    apply(found);
  }

  enum PointListKind { kFence, kWindowPolygon, kCrossingPolygon };

  bool pointListStep(const wchar_t* firstPrompt, const wchar_t* nextPrompt, size_t needed,
                     PointListKind kind) {
    std::vector<OdGePoint2d> points;
    for (;;) {
      const GetReply reply =
          ryhost::readGetReply(points.empty() ? firstPrompt : nextPrompt, ryhost::KeywordList());
      if (reply.kind == GetReply::kCancel) return false;
      if (reply.kind == GetReply::kEnter) break;
      const OdString& text = reply.text;
      OdGePoint3d point;
      if (ryhost::parseWorldPoint(text, point)) {
        points.push_back(planOf(point));
      } else if (!points.empty() && keywordOf(text) == L"UNDO") {
        points.pop_back();
      } else {
        Host::instance().print(L"\nInvalid point.");
      }
    }
    if (points.size() < needed) {
      if (!points.empty())
        Host::instance().print(OdString().format(L"\nNeeds at least %d points.", static_cast<int>(needed)));
      return true;
    }
    IdList found;
    if (kind == kFence)
      m_picker.fence(points, found);
    else
      m_picker.polygon(points, kind == kCrossingPolygon, found);
    apply(found);
    return true;
  }

  // Asks for a point until one is given; Enter abandons the step.
  Outcome askPoint(const wchar_t* prompt, OdGePoint3d& world) {
    for (;;) {
      const GetReply reply = ryhost::readGetReply(prompt, ryhost::KeywordList());
      if (reply.kind == GetReply::kCancel) return Outcome::kCancelled;
      if (reply.kind == GetReply::kEnter) return Outcome::kAbandoned;
      if (ryhost::parseWorldPoint(reply.text, world)) return Outcome::kDone;
      Host::instance().print(L"\nInvalid point.");
    }
  }

  // Adds (or removes) what a step found and reports it.
  void apply(const IdList& candidates) {
    IdList found;
    int locked = 0;
    screen(candidates, &m_filter, m_layers, m_mode.refuseLocked, found, locked);
    const int foundCount = static_cast<int>(found.size()) + locked;
    const bool hadSome = !m_set.empty();
    Step step;
    int duplicates = 0;
    for (const OdDbObjectId& id : found) {
      const bool member = m_members.count(id.stub()) != 0;
      if (m_removing && member) {
        removeMember(id);
        step.removed.push_back(id);
      } else if (!m_removing && member) {
        ++duplicates;
      } else if (!m_removing) {
        addMember(id);
        step.added.push_back(id);
      }
    }
    OdString message = OdString().format(L"\n%d found", foundCount);
    if (duplicates > 0) message += L" (" + plural(duplicates, L"duplicate", L"duplicates") + L")";
    if (m_removing) message += OdString().format(L", %d removed", static_cast<int>(step.removed.size()));
    if (hadSome || m_removing) message += OdString().format(L", %d total", static_cast<int>(m_set.size()));
    Host::instance().print(message);
    if (locked > 0) Host::instance().print(L"\n" + lockedMessage(locked));
    if (!step.added.empty() || !step.removed.empty()) m_steps.push_back(std::move(step));
  }

  static OdString lockedMessage(int locked) {
    return locked == 1 ? OdString(L"1 was on a locked layer.")
                       : OdString().format(L"%d were on a locked layer.", locked);
  }

  void undo() {
    if (m_steps.empty()) {
      Host::instance().print(L"\nNothing to undo.");
      return;
    }
    Step last = std::move(m_steps.back());
    m_steps.pop_back();
    for (const OdDbObjectId& id : last.added) removeMember(id);
    for (const OdDbObjectId& id : last.removed) addMember(id);
    Host::instance().print(OdString().format(L"\n%d total", static_cast<int>(m_set.size())));
  }

  void addMember(const OdDbObjectId& id) {
    m_set.push_back(id);
    m_members.insert(id.stub());
  }
  void removeMember(const OdDbObjectId& id) {
    m_set.erase(std::find(m_set.begin(), m_set.end(), id));
    m_members.erase(id.stub());
  }

  Document& m_doc;
  SelectionMode m_mode;
  SelectionFilter& m_filter;
  Picker m_picker;
  LayerStates m_layers;
  OdString m_addPrompt, m_removePrompt;
  bool m_removing = false;
  IdList m_set;
  std::unordered_set<OdDbStub*> m_members;
  std::vector<Step> m_steps;
};

OdString promptFrom(const ACHAR* given, const wchar_t* otherwise) {
  if (!given) return otherwise;
  OdString prompt(given);
  // Each prompt starts on its own line, after the previous step's report.
  return prompt.left(1) == L"\n" ? prompt : L"\n" + prompt;
}

bool pickFirstEnabled() { return Host::instance().sysvars().getInt(L"PICKFIRST", 1) != 0; }

// The programmed modes: what they find before the filter and the locked-layer check.
int collectProgrammed(Document& doc, const SelectionMode& mode, const void* pt1, const void* pt2,
                      SelectionFilter& filter, IdList& found) {
  OdDbDatabase* db = doc.database();
  const OdString& m = mode.main;
  if (m == L"X" || m == L"A") {
    LayerStates layers;
    collectAll(db, mode.currentSpaceOnly, m == L"A", filter, layers, found);
    return RTNORM;
  }
  if (m == L"I") {
    if (pickFirstEnabled()) found = liveIds(doc.selections().pickFirst());
    return RTNORM;
  }
  if (m == L"P") {
    found = liveIds(doc.selections().previous());
    return RTNORM;
  }
  if (m == L"L") {
    if (OdDbObjectId id = doc.lastEntity(); !id.isNull()) found.push_back(id);
    return RTNORM;
  }
  Picker picker(doc);
  if (m == L"W" || m == L"C") {
    if (!pt1 || !pt2) return RTERROR;
    const OdGePoint3d a = ryhost::ucsToWcs(userPoint(static_cast<const ads_real*>(pt1)));
    const OdGePoint3d b = ryhost::ucsToWcs(userPoint(static_cast<const ads_real*>(pt2)));
    picker.window(planOf(a), planOf(b), m == L"C", found);
    return RTNORM;
  }
  // F, WP, CP: pt1 is a list of points.
  const std::vector<OdGePoint2d> points = pointList(static_cast<const resbuf*>(pt1));
  if (points.size() < (m == L"F" ? 2u : 3u)) return RTERROR;
  if (m == L"F")
    picker.fence(points, found);
  else
    picker.polygon(points, m == L"CP", found);
  return RTNORM;
}

// A handle names an entity without a point: a curve's start, or the middle
// of the entity's box, stands for the pick point.
OdGePoint3d standInPoint(const OdDbObjectId& id) {
  OdDbEntityPtr entity = openEntity(id);
  OdGePoint3d point;
  if (entity.isNull()) return point;
  auto* curve = dynamic_cast<OdDbCurve*>(entity.get());
  if (curve && curve->getStartPoint(point) == eOk) return point;
  OdGeExtents3d extents;
  if (entity->getGeomExtents(extents) == eOk && extents.isValidExtents()) {
    point = extents.minPoint() + (extents.maxPoint() - extents.minPoint()) / 2;
  }
  return point;
}

}  // namespace

// ---------------------------------------------------------------- selection sets

int ryedSSGet(const ACHAR* modeText, const void* pt1, const void* pt2, const resbuf* filterList,
              ads_name ss) {
  Document* doc = Host::instance().current();
  if (!doc || !ss) return RTERROR;
  SelectionMode mode;
  SelectionFilter filter;
  if (!parseMode(modeText, mode) || !filter.compile(filterList)) return RTERROR;

  IdList selected;
  LayerStates layers;
  int locked = 0;
  if (!mode.main.isEmpty()) {
    IdList found;
    if (collectProgrammed(*doc, mode, pt1, pt2, filter, found) != RTNORM) return RTERROR;
    // "X" and "A" filter as they walk the drawing.
    const bool filtered = mode.main == L"X" || mode.main == L"A";
    if (filtered && !mode.refuseLocked)
      selected = std::move(found);
    else
      screen(found, filtered ? nullptr : &filter, layers, mode.refuseLocked, selected, locked);
  } else if (pt1 && !mode.customPrompts) {
    // A point given: the entity under it (with ":E", everything in the pick box).
    Picker picker(*doc);
    const OdGePoint3d world = ryhost::ucsToWcs(userPoint(static_cast<const ads_real*>(pt1)));
    IdList picked;
    if (mode.everythingInPickBox) {
      picker.pickEverything(world, picked);
    } else if (OdDbObjectId nearest = picker.pick(world); !nearest.isNull()) {
      picked.push_back(nearest);
    }
    screen(picked, &filter, layers, mode.refuseLocked, selected, locked);
  } else if (pickFirstEnabled() && !liveIds(doc->selections().pickFirst()).empty()) {
    // Objects selected before the command are the selection; they are used up.
    screen(liveIds(doc->selections().pickFirst()), &filter, layers, mode.refuseLocked, selected, locked);
    doc->selections().pickFirst().clear();
    doc->selections().previous() = selected;
  } else {
    const ACHAR* const* prompts = mode.customPrompts ? static_cast<const ACHAR* const*>(pt1) : nullptr;
    InteractiveSelection session(*doc, mode, filter,
                                 promptFrom(prompts ? prompts[0] : nullptr, L"\nSelect objects: "),
                                 promptFrom(prompts ? prompts[1] : nullptr, L"\nRemove objects: "));
    if (session.run() == RTCAN) return RTCAN;
    selected = session.selection();
    if (!selected.empty()) doc->selections().previous() = selected;
  }
  if (selected.empty()) return RTERROR;
  return makeSet(*doc, selected, ss);
}

int ryedSSFree(const ads_name ss) {
  Document* doc = Host::instance().current();
  if (!doc || !ss || !ryhost::SelectionSets::isSetName(ss)) return RTERROR;
  return doc->selections().free(ss[0]) ? RTNORM : RTERROR;
}

int ryedSSLength(const ads_name ss, OdInt32* length) {
  const std::vector<OdDbObjectId>* set = findSet(ss);
  if (!set || !length) return RTERROR;
  *length = static_cast<OdInt32>(set->size());
  return RTNORM;
}

int ryedSSName(const ads_name ss, OdInt32 index, ads_name entity) {
  const std::vector<OdDbObjectId>* set = findSet(ss);
  if (!set || !entity || index < 0 || static_cast<size_t>(index) >= set->size()) return RTERROR;
  return rydbGetAdsName(entity, (*set)[static_cast<size_t>(index)]);
}

int ryedSSAdd(const ads_name entity, const ads_name ss, ads_name result) {
  Document* doc = Host::instance().current();
  if (!doc || !result) return RTERROR;
  OdDbObjectId id;
  if (entity && !rydbNameNil(entity) && rydbGetObjectId(id, entity) != RTNORM) return RTERROR;
  if (!ss || rydbNameNil(ss)) {
    return makeSet(*doc, id.isNull() ? IdList() : IdList{id}, result);
  }
  std::vector<OdDbObjectId>* set = findSet(ss);
  if (!set) return RTERROR;
  // A set grown one entity at a time: its members are kept in a hash set
  // between calls, so that n additions take time in n, not n². The index
  // is made again when another set (another document's too) is added to or
  // this one changed size.
  struct AddIndex {
    const std::vector<OdDbObjectId>* set = nullptr;
    std::int64_t number = 0;
    size_t size = 0;
    std::unordered_set<OdDbObjectId> members;
  };
  thread_local AddIndex index;
  if (index.set != set || index.number != ss[0] || index.size != set->size()) {
    index.set = set;
    index.number = ss[0];
    index.members = std::unordered_set<OdDbObjectId>(set->begin(), set->end());
  }
  if (!id.isNull() && index.members.insert(id).second) set->push_back(id);
  index.size = set->size();
  rydbNameSet(ss, result);
  return RTNORM;
}

int ryedSSDel(const ads_name entity, const ads_name ss) {
  std::vector<OdDbObjectId>* set = findSet(ss);
  OdDbObjectId id;
  if (!set || !entity || rydbGetObjectId(id, entity) != RTNORM) return RTERROR;
  auto found = std::find(set->begin(), set->end(), id);
  if (found == set->end()) return RTERROR;
  set->erase(found);
  return RTNORM;
}

int ryedSSMemb(const ads_name entity, const ads_name ss) {
  const std::vector<OdDbObjectId>* set = findSet(ss);
  OdDbObjectId id;
  if (!set || !entity || rydbGetObjectId(id, entity) != RTNORM) return RTERROR;
  return std::find(set->begin(), set->end(), id) != set->end() ? RTNORM : RTERROR;
}

int ryedSSGetFirst(resbuf** gripSet, resbuf** pickFirstSet) {
  Document* doc = Host::instance().current();
  if (!doc) return RTERROR;
  auto asPicks = [&](const std::vector<OdDbObjectId>& ids) -> resbuf* {
    const IdList live = liveIds(ids);
    if (live.empty()) return nullptr;
    resbuf* rb = ryutNewRb(RTPICKS);
    makeSet(*doc, live, rb->resval.rlname);
    return rb;
  };
  if (gripSet) *gripSet = asPicks(doc->selections().gripSet());
  if (pickFirstSet) *pickFirstSet = asPicks(doc->selections().pickFirst());
  return RTNORM;
}

int ryedSSSetFirst(const ads_name pickFirstSet, const ads_name gripSet) {
  Document* doc = Host::instance().current();
  if (!doc) return RTERROR;
  auto take = [](const ads_name ss, std::vector<OdDbObjectId>& target) {
    if (!ss || rydbNameNil(ss)) {
      target.clear();
      return true;
    }
    const std::vector<OdDbObjectId>* set = findSet(ss);
    if (!set) return false;
    target = liveIds(*set);
    return true;
  };
  std::vector<OdDbObjectId> pickFirst, grips;
  if (!take(pickFirstSet, pickFirst) || !take(gripSet, grips)) return RTERROR;
  doc->selections().pickFirst() = std::move(pickFirst);
  doc->selections().gripSet() = std::move(grips);
  doc->selections().setPickFirstHandedOn(!doc->selections().pickFirst().empty());
  return RTNORM;
}

// ---------------------------------------------------------------- picking one entity

int ryedEntSel(const ACHAR* prompt, ads_name entity, ads_point pickPoint) {
  Host& host = Host::instance();
  Document* doc = host.current();
  if (!doc || !entity) return RTERROR;
  const ryhost::InitGet init = ryhost::takeInitGet();
  const OdString text = prompt ? OdString(prompt) : OdString(L"\nSelect object: ");
  Picker picker(*doc);
  for (;;) {
    const GetReply reply = ryhost::readGetReply(text, init.keywords);
    switch (reply.kind) {
      case GetReply::kCancel: return RTCAN;
      case GetReply::kEnter: setErrno(kErrnoNullReply); return RTERROR;
      case GetReply::kKeyword: ryhost::setLastInput(reply.text); return RTKWORD;
      case GetReply::kValue: break;
    }
    OdDbObjectId id;
    OdGePoint3d world;
    if (reply.text[0] == L'#') {
      id = ryhost::entityFromHandle(*doc, reply.text.mid(1));
      world = standInPoint(id);
    } else if (ryhost::parseWorldPoint(reply.text, world)) {
      id = picker.pick(world);
    } else if (init.flags & RSG_OTHER) {
      ryhost::setLastInput(reply.text);
      return RTKWORD;
    } else {
      host.print(init.keywords.isEmpty() ? L"\n*Invalid selection*\nExpects a point."
                                         : L"\n*Invalid selection*\nExpects a point or a keyword.");
      continue;
    }
    // The point is given back also when the pick missed: callers start a window there.
    if (pickPoint) {
      const OdGePoint3d user = ryhost::wcsToUcs(world);
      pickPoint[0] = user.x;
      pickPoint[1] = user.y;
      pickPoint[2] = user.z;
    }
    if (id.isNull()) {
      setErrno(kErrnoMissedPick);
      return RTERROR;
    }
    rydbGetAdsName(entity, id);
    return RTNORM;
  }
}
