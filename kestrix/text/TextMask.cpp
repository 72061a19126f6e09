#include "text/TextMask.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "CmColor.h"
#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbDictionary.h"
#include "DbRasterImage.h"
#include "DbSolid.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "Ge/GeOcs.h"
#include "RyHostServices.h"
#include "RyUiStdDialogs.h"
#include "frame/Guards.h"
#include "frame/HostSettings.h"
#include "frame/ModuleWide.h"
#include "frame/ResourceString.h"
#include "frame/ResultLists.h"
#include "frame/commands.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

namespace kestrix::textmask {

void TextPlaneBox::grownCorners(double margin, OdGePoint3d corners[4]) const {
  const OdGePoint3d origin = lowerLeft - xAxis * margin - yAxis * margin;
  const double w = width + 2 * margin, h = height + 2 * margin;
  corners[0] = origin;
  corners[1] = origin + xAxis * w;
  corners[2] = origin + xAxis * w + yAxis * h;
  corners[3] = origin + yAxis * h;
}

bool textPlaneBox(const OdDbEntity* entity, TextPlaneBox& box) {
  if (const auto* mtext = dynamic_cast<const OdDbMText*>(entity)) {
    box.normal = mtext->normal().normal();
    box.xAxis = mtext->direction().isZeroLength() ? odgeOcsToWcs(OdGeVector3d(1, 0, 0), box.normal)
                                                  : mtext->direction().normal();
    box.yAxis = box.normal.crossProduct(box.xAxis).normal();
    box.width = mtext->actualWidth();
    box.height = mtext->actualHeight();
    box.textHeight = mtext->textHeight();
    // The attachment names the point of the box the location stands on:
    // columns left, centre, right; rows top, middle, bottom.
    const int attachment = std::clamp(static_cast<int>(mtext->attachment()), 1, 9);
    const int column = (attachment - 1) % 3, row = (attachment - 1) / 3;
    box.lowerLeft = mtext->location() - box.xAxis * (box.width * column / 2.0) -
                    box.yAxis * (box.height - box.height * row / 2.0);
    return true;
  }
  const auto* text = dynamic_cast<const OdDbText*>(entity);
  if (!text) return false;
  box.normal = text->normal().normal();
  box.xAxis = odgeOcsToWcs(OdGeVector3d(std::cos(text->rotation()), std::sin(text->rotation()), 0), box.normal);
  box.yAxis = box.normal.crossProduct(box.xAxis).normal();
  box.textHeight = text->height();
  // Bounding points: lower-left, lower-right, upper-right, upper-left.
  OdGePoint3dArray points;
  text->getBoundingPoints(points);
  if (points.length() != 4) return false;
  box.lowerLeft = points[0];
  box.width = (points[1] - points[0]).dotProduct(box.xAxis);
  box.height = (points[3] - points[0]).dotProduct(box.yAxis);
  return true;
}

}  // namespace kestrix::textmask

using namespace kestrix::textmask;

namespace {

// ---------------------------------------------------------------- remembered settings

// Kept while the module is loaded, never stored: the mask type, the offset
// as a factor of the text height, and the colour of solid masks.
OdString g_maskType;
double g_offsetFactor = -1.0;
OdInt16 g_maskColor = 2;

void resetMaskSettings() {
  g_maskType.empty();
  g_offsetFactor = -1.0;
  g_maskColor = 2;
}
KESTRIX_MODULE_WIDE_RESET(resetMaskSettings);

void normaliseSettings() {
  if (g_maskType.iCompare(L"3dface") == 0)
    g_maskType = L"3dface";
  else if (g_maskType.iCompare(L"Solid") == 0)
    g_maskType = L"Solid";
  else
    g_maskType = L"Wipeout";
  if (g_offsetFactor < 0) g_offsetFactor = 0.35;
}

const wchar_t* const kSelectionKeywords =
    L"Masktype Offset Undo Window Crossing Box ALL Previous Add Remove WPolygon CPolygon Fence "
    L"_Masktype Offset Undo Window Crossing Box ALL Previous Add Remove WPolygon CPolygon Fence";

OdString lastInput() {
  wchar_t buffer[512] = {};
  ryedGetInput(buffer, 512);
  OdString word(buffer);
  if (word.left(1) == L"_") word = word.mid(1);
  return word;
}

bool idOf(const ads_name name, OdDbObjectId& id) { return rydbGetObjectId(id, name) == RTNORM; }

// ---------------------------------------------------------------- the chosen texts

// The texts chosen so far, in the order chosen, with the steps that chose
// them so that Undo can take the last step back.
class TextChoice {
 public:
  enum class Verdict { kAccepted, kNotText, kLocked };

  // A text or multiline text on an unlocked layer.
  Verdict check(const OdDbObjectId& id) {
    OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
    if (entity.isNull()) return Verdict::kNotText;
    const OdString type = entity->dxfName();
    if (type.iCompare(L"TEXT") != 0 && type.iCompare(L"MTEXT") != 0) return Verdict::kNotText;
    return layerLocked(entity->layerId()) ? Verdict::kLocked : Verdict::kAccepted;
  }

  // Adds (or in remove mode takes out) the ids as one step; returns how many changed.
  int apply(const std::vector<OdDbObjectId>& ids) {
    Step step{m_removing, {}};
    for (const OdDbObjectId& id : ids) {
      const bool member = m_members.count(id.handle().value()) != 0;
      if (m_removing == !member) continue;
      change(id, !m_removing);
      step.ids.push_back(id);
    }
    if (!step.ids.empty()) m_steps.push_back(std::move(step));
    return static_cast<int>(step.ids.size());
  }

  // Takes back the last step; false when there is none.
  bool undo() {
    if (m_steps.empty()) return false;
    const Step step = std::move(m_steps.back());
    m_steps.pop_back();
    for (const OdDbObjectId& id : step.ids) change(id, step.removed);
    return true;
  }

  void setRemoving(bool on) { m_removing = on; }
  bool removing() const { return m_removing; }
  int count() const { return static_cast<int>(m_members.size()); }

  // The members in the order they were chosen.
  std::vector<OdDbObjectId> members() const {
    std::vector<OdDbObjectId> result;
    for (const OdDbObjectId& id : m_order) {
      if (m_members.count(id.handle().value())) result.push_back(id);
    }
    return result;
  }

  void unhighlightAll() const {
    for (const OdDbObjectId& id : members()) highlight(id, false);
  }

 private:
  struct Step {
    bool removed;
    std::vector<OdDbObjectId> ids;
  };

  static void highlight(const OdDbObjectId& id, bool on) {
    ads_name name;
    if (rydbGetAdsName(name, id) == RTNORM) ryedRedraw(name, on ? 3 : 4);
  }

  void change(const OdDbObjectId& id, bool add) {
    const OdUInt64 key = id.handle().value();
    if (add) {
      // A text chosen again after removal keeps its first place in the order.
      if (m_members.insert(key).second && m_everChosen.insert(key).second) m_order.push_back(id);
    } else {
      m_members.erase(key);
    }
    highlight(id, add);
  }

  bool layerLocked(const OdDbObjectId& layerId) {
    const OdUInt64 key = layerId.handle().value();
    auto found = m_lockedLayers.find(key);
    if (found != m_lockedLayers.end()) return found->second;
    OdDbObjectPtr object = layerId.openObject();
    const auto* layer = dynamic_cast<const OdDbLayerTableRecord*>(object.get());
    const bool locked = layer && layer->isLocked();
    m_lockedLayers.emplace(key, locked);
    return locked;
  }

  bool m_removing = false;
  std::unordered_set<OdUInt64> m_members, m_everChosen;
  std::vector<OdDbObjectId> m_order;
  std::vector<Step> m_steps;
  std::unordered_map<OdUInt64, bool> m_lockedLayers;
};

// ---------------------------------------------------------------- selection by keyword

std::vector<OdDbObjectId> idsOf(const ads_name ss) {
  std::vector<OdDbObjectId> ids;
  OdInt32 length = 0;
  ryedSSLength(ss, &length);
  ids.reserve(static_cast<size_t>(length));
  for (OdInt32 i = 0; i < length; ++i) {
    ads_name name;
    OdDbObjectId id;
    if (ryedSSName(ss, i, name) == RTNORM && idOf(name, id)) ids.push_back(id);
  }
  return ids;
}

// A programmed selection of texts and multiline texts; false when nothing was found.
bool selectTexts(const wchar_t* mode, const void* pt1, const void* pt2, std::vector<OdDbObjectId>& ids) {
  const kestrix::ResultList filter(ryutBuildList(RTDXF0, L"TEXT,MTEXT", RTNONE));
  ads_name ss = {0, 0};
  if (ryedSSGet(mode, pt1, pt2, filter.get(), ss) != RTNORM) return false;
  ids = idsOf(ss);
  ryedSSFree(ss);
  return true;
}

// Two corners: RTNORM, RTCAN on Esc, another code on Enter.
int readCorners(ads_point first, ads_point second) {
  const int status = ryedGetPoint(nullptr, ResourceString(2055), first);
  if (status != RTNORM) return status;
  return ryedGetCorner(first, ResourceString(2051), second);
}

// Points of a polygon or fence up to Enter, as a point list; null on Esc.
kestrix::ResultList readPointList(bool& cancelled) {
  cancelled = false;
  kestrix::ResultList points;
  resbuf* tail = nullptr;
  ads_point previous;
  for (;;) {
    ads_point point;
    const int status = tail ? ryedGetPoint(previous, ResourceString(2064), point)
                            : ryedGetPoint(nullptr, ResourceString(2063), point);
    if (status == RTCAN) {
      cancelled = true;
      return nullptr;
    }
    if (status != RTNORM) return points;
    resbuf* rb = ryutNewRb(RT3DPOINT);
    for (int i = 0; i < 3; ++i) rb->resval.rpoint[i] = previous[i] = point[i];
    if (tail)
      tail->rbnext = rb;
    else
      points.reset(rb);
    tail = rb;
  }
}

// ---------------------------------------------------------------- the settings prompts

void printSettings() {
  ryutPrintf(L"%ls%.4f%ls%ls", ResourceString(2047).c_str(), g_offsetFactor, ResourceString(2048).c_str(),
             g_maskType.c_str());
  if (g_maskType == L"Solid") ryutPrintf(L"%ls%d\n", ResourceString(2049).c_str(), static_cast<int>(g_maskColor));
}

// The colour of solid masks from the colour dialog; false on Cancel.
bool chooseMaskColour() {
  OdCmColor color;
  color.setColorIndex(g_maskColor);
  OdCmColor layerColor;
  layerColor.setColorIndex(7);
  for (;;) {
    if (ryedSetColorDialogTrueColor(color, false, layerColor, kRyAciTab) != RTNORM) return false;
    const int index = color.colorIndex();
    if (index >= 1 && index <= 255) {
      g_maskColor = static_cast<OdInt16>(index);
      return true;
    }
    ryutPrintf(L"%ls", ResourceString(14902).c_str());
  }
}

// Mask type sub-prompt; false on Esc.
bool promptMaskType() {
  ryutPrintf(L"%ls %ls\n", ResourceString(2052).c_str(), g_maskType.c_str());
  ryedInitGet(0, L"3dface Solid Wipeout _3dface Solid Wipeout");
  wchar_t answer[512] = {};
  const OdString prompt = ResourceString(2053).text() + g_maskType + ResourceString(2057).text();
  const int status = ryedGetKword(prompt.c_str(), answer, 512);
  if (status == RTCAN) return false;
  if (status == RTNORM) {
    OdString word(answer);
    if (word.left(1) == L"_") word = word.mid(1);
    g_maskType = word;
    normaliseSettings();
    if (g_maskType == L"Solid") return chooseMaskColour();
  }
  return true;
}

// Offset sub-prompt: a distance of zero or more; false on Esc.
bool promptOffset() {
  for (;;) {
    OdString prompt;
    prompt.format(L"%ls%.4f", ResourceString(2050).c_str(), g_offsetFactor);
    prompt += ResourceString(2057).text();
    wchar_t answer[512] = {};
    const int status = ryedGetString(0, prompt.c_str(), answer, 512);
    if (status == RTCAN) return false;
    if (status != RTNORM || answer[0] == 0) return true;
    double value = 0;
    if (rydbDisToF(answer, -1, &value) == RTNORM && value >= 0) {
      g_offsetFactor = value;
      return true;
    }
    ryutPrintf(L"%ls", ResourceString(2348).c_str());
  }
}

// ---------------------------------------------------------------- the selection loop

void reportChange(const TextChoice& choice) {
  ryutPrintf(L"%ls%d\n", ResourceString(2056).c_str(), choice.count());
}

// Passes found objects through the text-and-unlocked-layer test; returns the
// accepted ones and counts the ones on locked layers.
std::vector<OdDbObjectId> screened(TextChoice& choice, const std::vector<OdDbObjectId>& found, int& locked) {
  std::vector<OdDbObjectId> accepted;
  locked = 0;
  for (const OdDbObjectId& id : found) {
    const TextChoice::Verdict verdict = choice.check(id);
    if (verdict == TextChoice::Verdict::kAccepted)
      accepted.push_back(id);
    else if (verdict == TextChoice::Verdict::kLocked)
      ++locked;
  }
  return accepted;
}

void takeFound(TextChoice& choice, const std::vector<OdDbObjectId>& found) {
  int locked = 0;
  const std::vector<OdDbObjectId> accepted = screened(choice, found, locked);
  if (locked > 0) ryutPrintf(L"%d%ls", locked, ResourceString(2347).c_str());
  choice.apply(accepted);
  reportChange(choice);
}

enum class LoopEnd { kDone, kCancelled };

// A keyword of the selection prompt; false on Esc in a sub-prompt.
bool handleKeyword(const OdString& word, TextChoice& choice) {
  std::vector<OdDbObjectId> found;
  if (word.iCompare(L"Masktype") == 0) return promptMaskType();
  if (word.iCompare(L"Offset") == 0) return promptOffset();
  if (word.iCompare(L"Undo") == 0) {
    if (choice.undo()) reportChange(choice);
    return true;
  }
  if (word.iCompare(L"Add") == 0 || word.iCompare(L"Remove") == 0) {
    choice.setRemoving(word.iCompare(L"Remove") == 0);
    return true;
  }
  if (word.iCompare(L"ALL") == 0 || word.iCompare(L"Previous") == 0) {
    if (selectTexts(word.iCompare(L"ALL") == 0 ? L"_X" : L"_P", nullptr, nullptr, found)) takeFound(choice, found);
    return true;
  }
  if (word.iCompare(L"Window") == 0 || word.iCompare(L"Crossing") == 0 || word.iCompare(L"Box") == 0) {
    ads_point first, second;
    const int status = readCorners(first, second);
    if (status != RTNORM) return status != RTCAN;
    bool crossing = word.iCompare(L"Crossing") == 0;
    // A box drawn to the left selects by crossing, to the right by window.
    if (word.iCompare(L"Box") == 0) crossing = second[0] < first[0];
    if (selectTexts(crossing ? L"_C" : L"_W", first, second, found)) takeFound(choice, found);
    return true;
  }
  const bool fence = word.iCompare(L"Fence") == 0;
  const bool crossingPolygon = word.iCompare(L"CPolygon") == 0;
  if (fence || crossingPolygon || word.iCompare(L"WPolygon") == 0) {
    bool cancelled = false;
    const kestrix::ResultList points = readPointList(cancelled);
    if (cancelled) return false;
    if (points && selectTexts(fence ? L"_F" : crossingPolygon ? L"_CP" : L"_WP", points.get(), nullptr, found))
      takeFound(choice, found);
    return true;
  }
  return true;
}

// The selection loop: picks, keywords and implied windows up to Enter.
LoopEnd runSelection(TextChoice& choice) {
  for (;;) {
    normaliseSettings();
    ryedInitGet(0, kSelectionKeywords);
    ads_name picked;
    ads_point where = {0, 0, 0};
    const OdString prompt = choice.removing() ? ResourceString(2062).text() : ResourceString(14884).text();
    const int status = ryedEntSel(prompt.c_str(), picked, where);
    if (status == RTCAN) return LoopEnd::kCancelled;
    if (status == RTKWORD) {
      if (!handleKeyword(lastInput(), choice)) return LoopEnd::kCancelled;
      continue;
    }
    if (status == RTNORM) {
      OdDbObjectId id;
      if (!idOf(picked, id)) continue;
      switch (choice.check(id)) {
        case TextChoice::Verdict::kNotText: ryutPrintf(L"%ls", ResourceString(2054).c_str()); break;
        case TextChoice::Verdict::kLocked: ryutPrintf(L"%ls", ResourceString(2058).c_str()); break;
        case TextChoice::Verdict::kAccepted:
          choice.apply({id});
          reportChange(choice);
          break;
      }
      continue;
    }
    // Enter ends the selection; a pick in empty space starts a window there.
    if (kestrix::shortVariable(L"ERRNO", 0) != 7) return LoopEnd::kDone;
    ads_point corner;
    const int cornerStatus = ryedGetCorner(where, ResourceString(2051), corner);
    if (cornerStatus == RTCAN) return LoopEnd::kCancelled;
    if (cornerStatus != RTNORM) continue;
    std::vector<OdDbObjectId> found;
    if (!selectTexts(L"_C", where, corner, found)) found.clear();
    ryutPrintf(L"%ls%ld%ls", L"\n", static_cast<long>(found.size()), ResourceString(2346).c_str());
    takeFound(choice, found);
  }
}

// ---------------------------------------------------------------- the masks

OdDbEntityPtr makeMask(const OdGePoint3d corners[4], const OdGeVector3d& normal) {
  if (g_maskType == L"Solid") {
    OdDbSolidPtr solid = OdDbSolid::createObject();
    solid->setNormal(normal);
    // Solid corners run lower-left, lower-right, upper-left, upper-right.
    solid->setPointAt(0, corners[0]);
    solid->setPointAt(1, corners[1]);
    solid->setPointAt(2, corners[3]);
    solid->setPointAt(3, corners[2]);
    return solid;
  }
  if (g_maskType == L"3dface") {
    OdDbFacePtr face = OdDbFace::createObject();
    for (OdUInt16 i = 0; i < 4; ++i) face->setVertexAt(i, corners[i]);
    for (OdUInt16 i = 0; i < 4; ++i) face->makeEdgeInvisibleAt(i);
    return face;
  }
  OdDbWipeoutPtr wipeout = OdDbWipeout::createObject();
  OdGePoint3dArray boundary;
  for (int i = 0; i < 4; ++i) boundary.append(corners[i]);
  boundary.append(corners[0]);
  if (wipeout->setFrom(boundary, normal) != eOk) return OdDbEntityPtr();
  return wipeout;
}

// Ties text and mask in a new anonymous group under the first free "*A<n>"
// key, searching on from next; false when no key is left.
bool tieInGroup(OdDbDatabase* db, const OdDbObjectId& textId, const OdDbObjectId& maskId, long long& next) {
  const OdDbObjectId dictionaryId = db->getGroupDictionaryId(true);
  OdDbDictionaryPtr dictionary = OdDbDictionary::cast(dictionaryId.openObject(OdDb::kForWrite).get());
  if (dictionary.isNull()) return false;
  OdString key;
  for (;; ++next) {
    if (next >= 2147483647LL) return false;
    key.format(L"*A%lld", next);
    if (!dictionary->has(key)) break;
  }
  OdDbGroupPtr group = OdDbGroup::createObject();
  group->setDescription(OdString());
  dictionary->setAt(key, group.get());
  group->addPersistentReactor(dictionaryId);
  group->setAnonymous();
  group->append(textId);
  group->append(maskId);
  ++next;
  return true;
}

bool normalIsUcsZ(const OdGeVector3d& normal) {
  resbuf x{}, y{};
  if (ryedGetVar(L"UCSXDIR", &x) != RTNORM || ryedGetVar(L"UCSYDIR", &y) != RTNORM) return true;
  const OdGeVector3d z = OdGeVector3d(x.resval.rpoint[0], x.resval.rpoint[1], x.resval.rpoint[2])
                             .crossProduct(OdGeVector3d(y.resval.rpoint[0], y.resval.rpoint[1], y.resval.rpoint[2]));
  return z.isEqualTo(normal);
}

struct MaskedText {
  OdDbObjectId text, mask;
};

// Masks one text; the mask's id, or null when the text cannot be opened.
OdDbObjectId maskText(OdDbDatabase* db, OdDbBlockTableRecord* space, const OdDbObjectId& textId) {
  TextPlaneBox box;
  OdDbObjectId layerId;
  {
    OdDbEntityPtr text = OdDbEntity::cast(textId.openObject().get());
    if (text.isNull() || !textPlaneBox(text.get(), box)) return OdDbObjectId();
    layerId = text->layerId();
  }
  // A text in a plane of its own: the coordinate system follows it while
  // its mask is made, and goes back afterwards.
  bool ucsMoved = false;
  if (!normalIsUcsZ(box.normal)) {
    ads_name name;
    rydbGetAdsName(name, textId);
    ucsMoved = ryedCommand(RTSTR, L"_.UCS", RTSTR, L"_OB", RTENAME, name, RTNONE) == RTNORM;
  }
  OdGePoint3d corners[4];
  box.grownCorners(g_offsetFactor * box.textHeight, corners);
  OdDbObjectId maskId;
  if (OdDbEntityPtr mask = makeMask(corners, box.normal); !mask.isNull()) {
    mask->setDatabaseDefaults(db);
    mask->setLayer(layerId);
    if (g_maskType == L"Solid") mask->setColorIndex(g_maskColor);
    maskId = space->appendOdDbEntity(mask.get());
  }
  if (ucsMoved) ryedCommand(RTSTR, L"_.UCS", RTSTR, L"_P", RTNONE);
  return maskId;
}

// Each text drawn just above its mask, in one pass over the space's order.
void drawTextsAboveMasks(OdDbBlockTableRecord* space, const std::vector<MaskedText>& masked) {
  if (masked.empty()) return;
  OdDbSortentsTablePtr table;
  if (space->getSortentsTable(table, OdDb::kForWrite, true) != eOk) return;
  OdDbObjectIdArray order;
  table->getFullDrawOrder(order);
  std::unordered_map<OdUInt64, OdDbObjectId> textAfterMask;
  std::unordered_set<OdUInt64> inSpace, moving;
  for (const OdDbObjectId& id : order) inSpace.insert(id.handle().value());
  for (const MaskedText& pair : masked) {
    if (!inSpace.count(pair.text.handle().value())) continue;
    textAfterMask[pair.mask.handle().value()] = pair.text;
    moving.insert(pair.text.handle().value());
  }
  OdDbObjectIdArray result;
  for (const OdDbObjectId& id : order) {
    if (moving.count(id.handle().value())) continue;
    result.append(id);
    if (auto found = textAfterMask.find(id.handle().value()); found != textAfterMask.end()) result.append(found->second);
  }
  table->setDrawOrder(result);
}

}  // namespace

void textmaskCommand() {
  kestrix::CmdEchoGuard echo;
  const OdString settingsPath = kestrix::hostSettingsPath();  // kept for the command's lifetime, not read
  (void)settingsPath;
  kestrix::SysVarSaver osmode(L"OSMODE");
  const int snaps = kestrix::shortVariable(L"OSMODE", 0);
  if (snaps < 16384) osmode.setShort(static_cast<short>(snaps + 16384));

  normaliseSettings();
  printSettings();
  TextChoice choice;
  const LoopEnd end = runSelection(choice);
  choice.unhighlightAll();
  if (end == LoopEnd::kCancelled) {
    ryutPrintf(L"%ls", ResourceString(2021).c_str());
    return;
  }
  const std::vector<OdDbObjectId> texts = choice.members();
  if (texts.empty()) {
    ryutPrintf(L"%ls", ResourceString(2061).c_str());
    return;
  }

  OdDbDatabase* db = oddbHostApplicationServices()->workingDatabase();
  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->currentSpaceId().openObject(OdDb::kForWrite).get());
  if (space.isNull()) return;
  std::vector<MaskedText> masked;
  masked.reserve(texts.size());
  long long nextGroup = 1;
  bool groupsLeft = true;
  for (const OdDbObjectId& textId : texts) {
    const OdDbObjectId maskId = maskText(db, space.get(), textId);
    if (maskId.isNull()) continue;
    masked.push_back({textId, maskId});
    if (groupsLeft && !tieInGroup(db, textId, maskId, nextGroup)) {
      groupsLeft = false;
      ryutPrintf(L"%ls", ResourceString(2060).c_str());
    }
  }
  drawTextsAboveMasks(space.get(), masked);
  ryutPrintf(formatResource(2059, L"\n%d texts masked.", static_cast<int>(masked.size())).c_str());
}

// ---------------------------------------------------------------- textunmask

namespace {

// The mask grouped with the text, when the text's group holds exactly the
// text and a mask of an accepted kind.
bool maskOf(const ads_name text, ads_name mask) {
  kestrix::ResultList list(rydbEntGet(text));
  if (!list) return false;
  for (const resbuf* rb = list.get(); rb; rb = rb->rbnext) {
    if (rb->restype != 330) continue;
    kestrix::ResultList owner(rydbEntGet(rb->resval.rlname));
    const resbuf* type = kestrix::findGroup(owner.get(), 0);
    if (!type || !type->resval.rstring || OdString(type->resval.rstring).iCompare(L"GROUP") != 0) continue;
    std::vector<const resbuf*> members;
    for (const resbuf* m = owner.get(); m; m = m->rbnext) {
      if (m->restype == 340) members.push_back(m);
    }
    if (members.size() != 2) continue;
    const resbuf* other = rydbNameEqual(members[0]->resval.rlname, text) ? members[1] : members[0];
    if (rydbNameEqual(other->resval.rlname, text)) continue;
    kestrix::ResultList candidate(rydbEntGet(other->resval.rlname));
    const resbuf* kind = kestrix::findGroup(candidate.get(), 0);
    if (!kind || !kind->resval.rstring) continue;
    const OdString name(kind->resval.rstring);
    if (name.iCompare(L"3DFACE") != 0 && name.iCompare(L"SOLID") != 0 && name.iCompare(L"WIPEOUT") != 0) continue;
    rydbNameSet(other->resval.rlname, mask);
    return true;
  }
  return false;
}

}  // namespace

void textunmaskCommand() {
  kestrix::CmdEchoGuard echo;
  kestrix::SysVarSaver pickstyle(L"pickstyle");
  pickstyle.setShort(0);

  kestrix::ResultList filter(
      ryutBuildList(-4, L"<OR", RTDXF0, L"TEXT", RTDXF0, L"MTEXT", -4, L"OR>", RTNONE));
  ads_name ss = {0, 0};
  const int status = ryedSSGet(L"_:L", nullptr, nullptr, filter.get(), ss);
  if (status == RTCAN) {
    ryutPrintf(L"%ls", ResourceString(2021).c_str());
    return;
  }
  if (status != RTNORM) {
    if (kestrix::shortVariable(L"ERRNO", 0) == 0) ryutPrintf(L"%ls", ResourceString(2070).c_str());
    return;
  }
  ryutPrintf(L"%ls", ResourceString(2065).c_str());
  int removed = 0;
  OdInt32 length = 0;
  ryedSSLength(ss, &length);
  for (OdInt32 i = 0; i < length; ++i) {
    ads_name text, mask;
    if (ryedSSName(ss, i, text) != RTNORM) continue;
    // A text masked more than once has a group per mask.
    while (maskOf(text, mask)) {
      if (rydbEntDel(mask) != RTNORM) break;
      rydbEntUpd(text);
      ++removed;
    }
  }
  ryedSSFree(ss);
  if (removed > 0)
    ryutPrintf(formatResource(2069, L"\n%d text masks removed.", removed).c_str());
  else
    ryutPrintf(L"%ls", ResourceString(2070).c_str());
}
