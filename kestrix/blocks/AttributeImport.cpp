// attin: reads an attribute text file (AttributeFile.h) and writes its
// values back into the block references its rows name by handle, in one
// undo group. Rows whose handle no longer leads to a matching reference can
// be matched by hand. Layers that are only locked are unlocked for the work
// and locked again afterwards, inside the same undo group, so that one U
// restores values and lock states alike.
#include <algorithm>
#include <cstdlib>
#include <unordered_set>

#include "DbSymbolTable.h"
#include "RyDialogs.h"
#include "blocks/AttributeFile.h"
#include "blocks/RyCStdioFile.h"
#include "frame/Guards.h"
#include "frame/Names.h"
#include "frame/ResourceString.h"
#include "frame/ResultLists.h"
#include "frame/commands.h"
#include "rydb.h"
#include "ryed.h"
#include "ryerrno.h"
#include "ryut.h"

using namespace kestrix::attributes;
using kestrix::findGroup;
using kestrix::ResultList;
using kestrix::shortVariable;

namespace {

constexpr size_t kFileNameReplySize = 133;  // 132 characters and the terminator
constexpr short kLockedOnly = 4;

OdString importCaption() { return ResourceString(2232, L"输入文件名称"); }

// ---------------------------------------------------------------- choosing the file

bool openFileDialog(OdString& path) {
  CRyUiNavDialog dialog({CNavFilter(L"Txt files", L"*.txt")});
  dialog.SetDialogCaption(importCaption());
  if (dialog.DoModal() != IDOK) return false;
  path = dialog.GetPathName();
  return true;
}

// The file name typed on the command line; "~" opens the dialog.
bool askFileName(OdString& path) {
  const OdString prompt = importCaption() + L":";
  for (;;) {
    ryutPrintf(L"\n");
    wchar_t reply[kFileNameReplySize] = {};
    if (ryedGetString(1, prompt.c_str(), reply, kFileNameReplySize) != RTNORM) return false;
    OdString text(reply);
    text.trimLeft().trimRight();
    if (text.isEmpty()) {
      ryutPrintf(L"%ls\n", ResourceString(30049, L"文件名不能为空!").c_str());
    } else if (text.findOneOf(L"?*") >= 0) {
      ryutPrintf(L"%ls\n", ResourceString(571, L"\n输入非法! ").c_str());
    } else if (text.find(L'~') >= 0) {
      if (openFileDialog(path)) return true;
    } else {
      path = text;
      return true;
    }
  }
}

bool chooseImportFile(OdString& path) {
  if (shortVariable(L"FILEDIA", 1) == 1) return openFileDialog(path);
  return askFileName(path);
}

// ---------------------------------------------------------------- layers

// Layers that are locked and nothing else are unlocked while the file is
// applied and locked again, by the host's LAYER command, on every way out.
// The names go to the command escaped: a name is a name, not a pattern.
class UnlockedLayers {
 public:
  UnlockedLayers() {
    for (ResultList record(rydbTblNext(L"LAYER", 1)); record; record.reset(rydbTblNext(L"LAYER", 0))) {
      const resbuf* name = findGroup(record.get(), 2);
      const resbuf* flags = findGroup(record.get(), 70);
      if (name && flags && flags->resval.rint == kLockedOnly && unlock(name->resval.rstring)) {
        if (!m_names.isEmpty()) m_names += L",";
        m_names += kestrix::wildcardEscaped(name->resval.rstring);
      }
    }
  }
  ~UnlockedLayers() {
    if (!m_names.isEmpty())
      ryedCommand(RTSTR, L"_.LAYER", RTSTR, L"_LOCK", RTSTR, m_names.c_str(), RTSTR, L"", RTNONE);
  }
  UnlockedLayers(const UnlockedLayers&) = delete;
  UnlockedLayers& operator=(const UnlockedLayers&) = delete;

 private:
  static bool unlock(const wchar_t* name) {
    const ResultList entityName(rydbTblObjName(L"LAYER", name));
    if (!entityName) return false;
    const ResultList list(rydbEntGet(entityName->resval.rlname));
    if (resbuf* flags = const_cast<resbuf*>(findGroup(list.get(), 70))) {
      flags->resval.rint = 0;
      return rydbEntMod(list.get()) == RTNORM;
    }
    return false;
  }
  OdString m_names;
};

// ---------------------------------------------------------------- applying rows

struct PickedReference {
  ads_name entity = {0, 0};
  OdString handle, blockName;
};

enum class PickResult { kTaken, kNone, kCancelled };

class RowImporter {
 public:
  explicit RowImporter(const std::vector<OdString>& columns) : m_columns(columns) {}

  // Applies the rows in file order; returns the number of references changed.
  int run(const std::vector<attinStruct>& rows) {
    int updated = 0;
    for (const attinStruct& row : rows) {
      std::vector<size_t> unmatched;
      ads_name entity;
      if (OdSmartPtr<OdDbBlockReference> reference = matchByHandle(row, entity); !reference.isNull()) {
        if (apply(reference.get(), entity, row, unmatched)) {
          ++updated;
          reportUnmatched(row, unmatched);
        }
        continue;
      }
      if (!m_askedAboutHand) {
        m_askedAboutHand = true;
        if (RyUiMessageBox(ResourceString(2619), ResourceString(2620), MB_YESNO | MB_ICONQUESTION) != IDYES)
          break;
      }
      const PickResult result = matchByHand(row, updated);
      if (result == PickResult::kCancelled) break;
    }
    return updated;
  }

  // Attributes left as they were because their layer stayed locked.
  size_t skippedOnLockedLayers() const { return m_skipped.size(); }

 private:
  // The reference the row's handle leads to, when it is an attributed
  // reference of the row's block (any block when the row names none).
  OdSmartPtr<OdDbBlockReference> matchByHandle(const attinStruct& row, ads_name entity) {
    OdString handle = row.handle;
    handle.trimLeft().trimRight();
    handle.trimLeft(L'\'');
    if (rydbHandEnt(handle.c_str(), entity) != RTNORM) return {};
    OdSmartPtr<OdDbBlockReference> reference = openAttributedReference(entity);
    if (reference.isNull()) return {};
    if (!row.blockName.isEmpty() && !equalNoCase(row.blockName, m_blockNames.of(reference.get()))) return {};
    return reference;
  }

  // Writes the row's values into the reference's attributes; true when any
  // changed. unmatched gets the columns the reference has no attribute for.
  bool apply(OdDbBlockReference* reference, const ads_name entity, const attinStruct& row,
             std::vector<size_t>& unmatched) {
    const size_t scanned = std::min(m_columns.size(), row.values.size());
    m_unique.clear();
    bool changed = false;
    forEachAttribute(reference, [&](const OdDbObjectId&, OdDbAttribute* attribute) {
      const OdString& ownTag = attribute->tagConst();
      m_unique.add(ownTag);
      const OdString& text = attribute->textStringConst();
      for (size_t i = 0; i < scanned; ++i) {
        const OdString& value = row.values[i];
        if (!equalNoCase(m_columns[i], ownTag) || isUnchangedMark(value) || equalNoCase(text, value))
          continue;
        if (setText(attribute, value)) changed = true;
        break;
      }
    });
    for (size_t i = 0; i < m_columns.size(); ++i) {
      if (!m_unique.contains(m_columns[i])) unmatched.push_back(i);
    }
    if (changed) rydbEntUpd(entity);
    return changed;
  }

  // An attribute on a layer that stayed locked is not written, as the host
  // refuses changes to objects on locked layers.
  bool setText(OdDbAttribute* attribute, const OdString& value) {
    if (isOnLockedLayer(attribute)) {
      m_skipped.insert(attribute->objectId());
      return false;
    }
    if (attribute->upgradeOpen() != eOk) return false;
    attribute->setTextString(value);
    return true;
  }

  bool isOnLockedLayer(const OdDbEntity* entity) {
    const OdDbObjectId layerId = entity->layerId();
    auto known = m_lockedLayers.find(layerId);
    if (known != m_lockedLayers.end()) return known->second;
    OdDbObjectPtr object = layerId.openObject();
    auto* layer = dynamic_cast<const OdDbLayerTableRecord*>(object.get());
    return m_lockedLayers.emplace(layerId, layer && layer->isLocked()).first->second;
  }

  void printLabelValue(const OdString& label, const OdString& value) {
    ryutPrintf(L"%ls", ResourceString(2623).c_str());
    ryutPrintf(ResourceString(2624), label.c_str(), value.c_str());
  }

  void reportUnmatched(const attinStruct& row, const std::vector<size_t>& unmatched) {
    if (row.values.size() != m_columns.size()) return;
    for (size_t i : unmatched) {
      if (!isUnchangedMark(row.values[i])) printLabelValue(m_columns[i], row.values[i]);
    }
  }

  // ---- by hand

  PickResult matchByHand(const attinStruct& row, int& updated) {
    printListing(row);
    for (;;) {
      PickedReference picked;
      const PickResult result = pickReference(picked);
      if (result != PickResult::kTaken) return result;
      OdSmartPtr<OdDbBlockReference> reference = openAttributedReference(picked.entity);
      std::vector<size_t> unmatched;
      if (reference.isNull() || !apply(reference.get(), picked.entity, row, unmatched)) {
        ryedAlert(ResourceString(2621));
        continue;
      }
      ++updated;
      if (picked.handle != row.handle) printLabelValue(kHandleColumn, row.handle);
      if (picked.blockName != row.blockName) printLabelValue(kBlockNameColumn, row.blockName);
      reportUnmatched(row, unmatched);
      return PickResult::kTaken;
    }
  }

  void printListing(const attinStruct& row) {
    int width = 10;
    for (const OdString& tag : m_columns) width = std::max(width, tag.getLength());
    width += 4;
    const auto padded = [width](const OdString& label) {
      OdString text = L" " + label;
      while (text.getLength() <= width) text += L' ';
      return text;
    };
    ryutPrintf(L"\n%lsVALUE\n", padded(L"TAG").c_str());
    ryutPrintf(L"%ls-----\n", padded(L"---").c_str());
    ryutPrintf(L"%ls%ls\n", padded(kHandleColumn).c_str(), row.handle.c_str());
    ryutPrintf(L"%ls%ls\n", padded(kBlockNameColumn).c_str(), row.blockName.c_str());
    for (size_t i = 0; i < m_columns.size(); ++i) {
      const OdString value = i < row.values.size() ? row.values[i] : OdString();
      ryutPrintf(L"%ls%ls\n", padded(m_columns[i]).c_str(), value.c_str());
    }
    ryutPrintf(L"%ls", ResourceString(2622).c_str());
  }

  // A pick on an attributed reference, or a crossing window from a pick that
  // missed (its first reference is taken). Enter: none; Esc: cancelled.
  PickResult pickReference(PickedReference& picked) {
    const OdString prompt = L"\n" + ResourceString(2072).text();
    for (;;) {
      ads_point point = {0, 0, 0};
      const int status = ryedEntSel(prompt.c_str(), picked.entity, point);
      if (status == RTCAN) return PickResult::kCancelled;
      if (status == RTNORM) {
        if (describe(picked)) return PickResult::kTaken;
        continue;
      }
      const int error = shortVariable(L"ERRNO", 0);
      if (error == kErrnoNullReply) return PickResult::kNone;
      if (error != kErrnoMissedPick) continue;
      ads_point corner;
      const int cornerStatus = ryedGetCorner(point, ResourceString(2051), corner);
      if (cornerStatus == RTCAN) return PickResult::kCancelled;
      if (cornerStatus != RTNORM) continue;
      if (firstInCrossing(point, corner, picked.entity) && describe(picked)) return PickResult::kTaken;
    }
  }

  bool firstInCrossing(const ads_point first, const ads_point second, ads_name entity) {
    ads_name ss = {0, 0};
    const int status = ryedSSGet(L"C", first, second, attributedReferenceFilter().get(), ss);
    OdInt32 found = 0;
    if (status == RTNORM) ryedSSLength(ss, &found);
    ryutPrintf(L"%ls%ld%ls", ResourceString(2040).c_str(), static_cast<long>(found),
               ResourceString(2041).c_str());
    const bool taken = found > 0 && ryedSSName(ss, 0, entity) == RTNORM;
    if (status == RTNORM) ryedSSFree(ss);
    return taken;
  }

  // Handle and block name of a picked attributed reference; false for anything else.
  bool describe(PickedReference& picked) {
    OdSmartPtr<OdDbBlockReference> reference = openAttributedReference(picked.entity);
    if (reference.isNull()) return false;
    picked.handle = reference->objectId().handle().ascii();
    picked.blockName = m_blockNames.of(reference.get());
    return true;
  }

  const std::vector<OdString>& m_columns;
  UniqueTags m_unique;  // of the reference being applied (kept for its storage)
  BlockNames m_blockNames;
  std::unordered_map<OdDbObjectId, bool> m_lockedLayers;
  std::unordered_set<OdDbObjectId> m_skipped;
  bool m_askedAboutHand = false;
};

// ---------------------------------------------------------------- the file

// Reads the file and applies it. Nothing in the drawing changes before the
// file has been read: the undo group and the unlocked layers come after.
void importFile(const OdString& path) {
  RyCStdioFile file(RyCStdioFile::kAnsi, true, false);
  if (!file.Open(path.c_str(), CStdioFile::modeRead | CStdioFile::typeText)) {
    ryedAlert(ResourceString(2233));
    return;
  }
  file.detectEncoding();
  if (file.looksBinary()) {
    ryutPrintf(ResourceString(2617), path.c_str());
    return;
  }
  ryutPrintf(L"%ls", ResourceString(2614).c_str());
  AttributeFileRows contents;
  readAttributeRows(file, contents);
  file.Close();
  ryutPrintf(L"%ls", ResourceString(2615).c_str());
  if (!contents.headerSeen) {
    ryutPrintf(ResourceString(2618), 0);
    return;
  }
  kestrix::UndoGroup group;
  UnlockedLayers layers;
  RowImporter importer(contents.columns);
  const int updated = importer.run(contents.rows);
  if (const size_t skipped = importer.skippedOnLockedLayers())
    ryutPrintf(ResourceString(2625), static_cast<int>(skipped));
  ryutPrintf(ResourceString(2618), updated);
}

}  // namespace

void attinCommand() {
  kestrix::CmdEchoGuard guard;
  OdString path;
  if (!chooseImportFile(path)) return;
  importFile(path);
}
