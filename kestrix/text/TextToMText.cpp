// txt2mtxt: single-line texts into multiline text, either all of them into
// one (a paragraph per text, with height and colour switches where they
// change) or each into its own; the source texts are erased. Options live in
// the host settings file and are changed in CTxt2mtxtDialog, shown from the
// keyword "Settings" at the first selection prompt.
#include <cmath>
#include <limits>
#include <vector>

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "Ge/GeOcs.h"
#include "RyDialogs.h"
#include "RyHostServices.h"
#include "frame/Guards.h"
#include "frame/HostSettings.h"
#include "frame/ResourceString.h"
#include "frame/ResultLists.h"
#include "frame/commands.h"
#include "rydb.h"
#include "ryed.h"
#include "ryerrno.h"
#include "ryut.h"

namespace {

constexpr const wchar_t* kSelectTypeKey = L"TXT2MTXT_SELECTTYPE";
// Spelled so in the settings files already in use.
constexpr const wchar_t* kWordWrapKey = L"TXT2MTXT_WORDWARD";
constexpr const wchar_t* kMergeKey = L"TXT2MTXT_MERGEMTEXT";
constexpr UINT kDialogId = 3100;
constexpr int kSelectTypeBox = 3105, kWordWrapBox = 3109, kMergeBox = 3200;

// An option is on only when its value is exactly "TRUE".
bool optionOn(const wchar_t* key) { return kestrix::readHostSetting(key, L"FALSE") == L"TRUE"; }

struct Options {
  bool selectType = false, wordWrap = false, merge = false;
  static Options read() { return {optionOn(kSelectTypeKey), optionOn(kWordWrapKey), optionOn(kMergeKey)}; }
};

}  // namespace

// The three options as check boxes; OK writes them back to the settings file.
class CTxt2mtxtDialog : public CDialog {
 public:
  CTxt2mtxtDialog() : CDialog(kDialogId) {
    const Options options = Options::read();
    m_selectType = options.selectType;
    m_wordWrap = options.wordWrap;
    m_merge = options.merge;
  }

 protected:
  void DoDataExchange(CDataExchange* pDX) override {
    DDX_Check(pDX, kSelectTypeBox, m_selectType);
    DDX_Check(pDX, kWordWrapBox, m_wordWrap);
    DDX_Check(pDX, kMergeBox, m_merge);
  }
  void OnOK() override {
    m_selectType = IsDlgButtonChecked(kSelectTypeBox) == BST_CHECKED;
    m_wordWrap = IsDlgButtonChecked(kWordWrapBox) == BST_CHECKED;
    m_merge = IsDlgButtonChecked(kMergeBox) == BST_CHECKED;
    kestrix::writeHostSetting(kSelectTypeKey, m_selectType ? L"TRUE" : L"FALSE");
    kestrix::writeHostSetting(kWordWrapKey, m_wordWrap ? L"TRUE" : L"FALSE");
    kestrix::writeHostSetting(kMergeKey, m_merge ? L"TRUE" : L"FALSE");
    CDialog::OnOK();
  }

 private:
  bool m_selectType = false, m_wordWrap = false, m_merge = false;
};

namespace {

// ---------------------------------------------------------------- selection

kestrix::ResultList textFilter() {
  return kestrix::ResultList(
      ryutBuildList(-4, L"<OR", RTDXF0, L"TEXT", RTDXF0, L"MTEXT", RTDXF0, L"ATTDEF", -4, L"OR>", RTNONE));
}

bool layerLocked(const OdDbObjectId& layerId) {
  OdDbObjectPtr object = layerId.openObject();
  const auto* layer = dynamic_cast<const OdDbLayerTableRecord*>(object.get());
  return layer && layer->isLocked();
}

// A text the conversion takes: a single-line text (with the second merge
// routine also a multiline text) on an unlocked layer.
bool usable(const OdDbEntity* entity, bool acceptMText) {
  if (!entity || layerLocked(entity->layerId())) return false;
  const OdString type = entity->dxfName();
  return type.iCompare(L"TEXT") == 0 || (acceptMText && type.iCompare(L"MTEXT") == 0);
}

void setErrno(int value) {
  resbuf rb;
  rb.restype = RTSHORT;
  rb.resval.rint = static_cast<short>(value);
  ryedSetVar(L"ERRNO", &rb);
}

// The set being built and its running count of usable texts.
class Selection {
 public:
  Selection() { ryedSSAdd(nullptr, nullptr, m_ss); }
  ~Selection() {
    if (!m_handedOn) ryedSSFree(m_ss);
  }
  Selection(const Selection&) = delete;
  Selection& operator=(const Selection&) = delete;

  void acceptMText(bool accept) { m_acceptMText = accept; }
  void add(const ads_name entity) {
    if (ryedSSMemb(entity, m_ss) == RTNORM || ryedSSAdd(entity, m_ss, m_ss) != RTNORM) return;
    OdDbObjectId id;
    if (rydbGetObjectId(id, entity) != RTNORM) return;
    OdDbEntityPtr object = OdDbEntity::cast(id.openObject().get());
    if (usable(object.get(), m_acceptMText)) ++m_usable;
  }
  void addAll(const ads_name from) {
    OdInt32 length = 0;
    ryedSSLength(from, &length);
    for (OdInt32 i = 0; i < length; ++i) {
      ads_name entity;
      if (ryedSSName(from, i, entity) == RTNORM) add(entity);
    }
  }
  // What a selection call found is added and the running count printed.
  void take(int status, ads_name found) {
    if (status == RTNORM) {
      addAll(found);
      ryedSSFree(found);
    }
    report();
  }
  void report() const {
    ryutPrintf(L"%ls%d%ls", ResourceString(2043).c_str(), m_usable, ResourceString(2044).c_str());
  }
  bool empty() const {
    OdInt32 length = 0;
    ryedSSLength(m_ss, &length);
    return length == 0;
  }
  void handOn(ads_name to) {
    rydbNameSet(m_ss, to);
    m_handedOn = true;
  }

 private:
  ads_name m_ss = {0, 0};
  bool m_acceptMText = false, m_handedOn = false;
  int m_usable = 0;
};

// A selection call that failed without Esc: ERRNO 0 (nothing found), 2 (a
// name that names nothing) and 74 end quietly, any other code says so.
void reportFailedSelection() {
  const int code = kestrix::shortVariable(L"ERRNO", 0);
  if (code != 0 && code != 2 && code != 74) ryutPrintf(L"%ls", ResourceString(2061).c_str());
}

bool secondMergeRoutine() {
  const Options options = Options::read();
  return options.merge && options.selectType;
}

// The pick-first set, or the selection prompt, asked again after each pick,
// window or keyword until Enter, with the running count of usable texts
// after each step; its keyword "Settings" shows the options dialog. False
// when nothing is selected, on Esc and when a selection call fails.
bool selectTexts(ads_name ss) {
  ads_name implied = {0, 0};
  if (ryedSSGet(L"_I", nullptr, nullptr, nullptr, implied) == RTNORM) {
    OdInt32 length = 0;
    ryedSSLength(implied, &length);
    if (length > 0) {
      rydbNameSet(implied, ss);
      return true;
    }
    ryedSSFree(implied);
  }
  const kestrix::ResultList filter = textFilter();
  Selection selection;
  selection.acceptMText(secondMergeRoutine());
  for (;;) {
    setErrno(0);
    ryedInitGet(0, L"Settings ALL Previous Last _Settings ALL Previous Last");
    ads_name picked;
    ads_point where = {0, 0, 0};
    const int status = ryedEntSel(ResourceString(2042), picked, where);
    if (status == RTCAN) return false;
    if (status == RTKWORD) {
      wchar_t word[512] = {};
      ryedGetInput(word, 512);
      const OdString keyword = OdString(word).left(1) == L"_" ? OdString(word).mid(1) : OdString(word);
      if (keyword.iCompare(L"Settings") == 0) {
        CTxt2mtxtDialog dialog;
        dialog.DoModal();
        selection.acceptMText(secondMergeRoutine());
        continue;
      }
      const wchar_t* mode = keyword.iCompare(L"ALL") == 0 ? L"_X" : keyword.iCompare(L"Previous") == 0 ? L"_P" : L"_L";
      ads_name found = {0, 0};
      selection.take(ryedSSGet(mode, nullptr, nullptr, filter.get(), found), found);
      continue;
    }
    if (status == RTNORM) {
      selection.add(picked);
      selection.report();
      continue;
    }
    const int code = kestrix::shortVariable(L"ERRNO", 0);
    // Enter ends the selection.
    if (code == kErrnoNullReply) {
      if (selection.empty()) return false;
      selection.handOn(ss);
      return true;
    }
    if (code != kErrnoMissedPick) {
      reportFailedSelection();
      return false;
    }
    // A pick in empty space opens a window there.
    ads_point corner;
    const int cornerStatus = ryedGetCorner(where, ResourceString(2051), corner);
    if (cornerStatus == RTCAN) return false;
    if (cornerStatus != RTNORM) {
      reportFailedSelection();
      return false;
    }
    const wchar_t* mode = corner[0] < where[0] ? L"_C" : L"_W";
    ads_name found = {0, 0};
    selection.take(ryedSSGet(mode, where, corner, filter.get(), found), found);
  }
}

// ---------------------------------------------------------------- conversion

struct Source {
  ads_name name;
  OdDbObjectId id;
  OdString text;
  double height = 0;
  int color = 256;
  OdGePoint3d corners[4];
  OdDbObjectId layer, style;
  OdGeVector3d normal;
  double rotation = 0;
};

// The usable texts of the selection: single-line texts (and with the second
// merge routine multiline texts) on unlocked layers.
std::vector<Source> usableTexts(const ads_name ss, bool acceptMText, OdInt32& selected) {
  std::vector<Source> sources;
  selected = 0;
  ryedSSLength(ss, &selected);
  sources.reserve(static_cast<size_t>(selected));
  for (OdInt32 i = 0; i < selected; ++i) {
    Source source;
    if (ryedSSName(ss, i, source.name) != RTNORM || rydbGetObjectId(source.id, source.name) != RTNORM) continue;
    OdDbEntityPtr entity = OdDbEntity::cast(source.id.openObject().get());
    if (!usable(entity.get(), acceptMText)) continue;
    const OdString type = entity->dxfName();
    OdGePoint3dArray points;
    if (type.iCompare(L"TEXT") == 0) {
      const auto* text = static_cast<const OdDbText*>(entity.get());
      source.text = text->textString();
      source.height = text->height();
      source.normal = text->normal();
      source.rotation = text->rotation();
      source.style = text->textStyle();
      text->getBoundingPoints(points);
    } else if (acceptMText && type.iCompare(L"MTEXT") == 0) {
      const auto* mtext = static_cast<const OdDbMText*>(entity.get());
      source.text = mtext->contents();
      source.height = mtext->textHeight();
      source.normal = mtext->normal();
      source.rotation = mtext->rotation();
      source.style = mtext->textStyle();
      mtext->getBoundingPoints(points);
    } else {
      continue;
    }
    if (points.length() != 4) continue;
    for (int k = 0; k < 4; ++k) source.corners[k] = points[k];
    source.color = entity->colorIndex();
    source.layer = entity->layerId();
    sources.push_back(source);
  }
  return sources;
}

OdString heightCode(double height) {
  wchar_t buffer[64] = {};
  if (rydbRToS(height, 2, -1, buffer, 64) != RTNORM) return OdString().format(L"%g", height);
  return buffer;
}

// The contents: a paragraph per text, a height or colour switch before a
// text whose height or colour differs from the last one written.
OdString mergedContents(const std::vector<Source>& sources) {
  OdString contents;
  double height = sources.front().height;
  int color = sources.front().color;
  for (size_t i = 0; i < sources.size(); ++i) {
    const Source& source = sources[i];
    if (i > 0) {
      contents += L"\\P";
      if (source.height != height) {
        contents += L"\\H" + heightCode(source.height) + L";";
        height = source.height;
      }
      if (source.color != color) {
        contents += OdString().format(L"\\C%d;", source.color);
        color = source.color;
      }
    }
    contents += source.text;
  }
  return contents;
}

// One multiline text from the sources, placed at the top left of their
// combined box measured in the first text's direction; the sources erased.
void convert(OdDbDatabase* db, OdDbBlockTableRecord* space, const std::vector<Source>& sources, bool wordWrap) {
  const Source& first = sources.front();
  const OdGeVector3d normal = first.normal.normal();
  const OdGeVector3d along = odgeOcsToWcs(OdGeVector3d(std::cos(first.rotation), std::sin(first.rotation), 0), normal);
  const OdGeVector3d across = normal.crossProduct(along);
  const OdGePoint3d origin = first.corners[0];
  double minAlong = std::numeric_limits<double>::max(), maxAlong = -minAlong;
  double minAcross = minAlong, maxAcross = -minAlong;
  for (const Source& source : sources) {
    for (const OdGePoint3d& corner : source.corners) {
      const double a = (corner - origin).dotProduct(along), c = (corner - origin).dotProduct(across);
      minAlong = std::min(minAlong, a), maxAlong = std::max(maxAlong, a);
      minAcross = std::min(minAcross, c), maxAcross = std::max(maxAcross, c);
    }
  }
  OdDbMTextPtr mtext = OdDbMText::createObject();
  mtext->setDatabaseDefaults(db);
  mtext->setLayer(first.layer);
  if (!first.style.isNull()) mtext->setTextStyle(first.style);
  mtext->setColorIndex(static_cast<OdInt16>(first.color));
  mtext->setNormal(normal);
  mtext->setDirection(along);
  mtext->setTextHeight(first.height);
  mtext->setAttachment(OdDbMText::kTopLeft);
  mtext->setFlowDirection(OdDbMText::kByStyle);
  mtext->setLocation(origin + along * minAlong + across * maxAcross);
  mtext->setWidth(wordWrap ? maxAlong - minAlong : 0.0);
  mtext->setContents(mergedContents(sources));
  space->appendOdDbEntity(mtext.get());
  for (const Source& source : sources) rydbEntDel(source.name);
}

}  // namespace

void txt2mtxtCommand() {
  kestrix::CmdEchoGuard echo;
  ads_name ss = {0, 0};
  if (!selectTexts(ss)) return;
  const Options options = Options::read();
  const bool secondRoutine = options.merge && options.selectType;
  OdInt32 selected = 0;
  std::vector<Source> sources = usableTexts(ss, secondRoutine, selected);
  const int dropped = selected - static_cast<int>(sources.size());
  if (dropped > 0) ryutPrintf(L"%ls%d%ls", ResourceString(2046).c_str(), dropped, ResourceString(2041).c_str());
  if (sources.empty()) {
    ryedSSFree(ss);
    return;
  }
  OdDbDatabase* db = oddbHostApplicationServices()->workingDatabase();
  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->currentSpaceId().openObject(OdDb::kForWrite).get());
  if (space.isNull()) {
    ryedSSFree(ss);
    return;
  }
  if (options.merge) {
    convert(db, space.get(), sources, options.wordWrap);
  } else {
    for (const Source& source : sources) convert(db, space.get(), {source}, options.wordWrap);
    const int count = static_cast<int>(sources.size());
    ryutPrintf(formatResource(2045, L"%d text objects removed, %d MText object added.\n", count, count).c_str());
  }
  ryedSSFree(ss);
}
