// blockreplace: every reference of one block definition made to refer to
// another, and the definition no longer used purged when the user says so.
// The two blocks are named in a two-step dialog (CBloRepDialog) or picked in
// the drawing; the whole command is one undo group.
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "RyDialogs.h"
#include "RyHostServices.h"
#include "blocks/BlockPick.h"
#include "frame/Guards.h"
#include "frame/Names.h"
#include "frame/ResourceString.h"
#include "frame/ResultLists.h"
#include "frame/commands.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

namespace {

constexpr UINT kDialogId = 225;
constexpr int kListId = 3092, kPickId = 3095, kNameId = 3097, kAcceptId = 3098, kCloseId = 3099,
              kErrorId = 3101, kStepId = 3103;
// Dialog results besides IDOK and IDCANCEL.
constexpr int kResultPick = 3, kResultSameBlock = 4;
constexpr size_t kKeywordReplySize = 101;  // 100 characters and the terminator

OdDbDatabase* database() { return oddbHostApplicationServices()->workingDatabase(); }

OdDbObjectId blockId(const OdString& name) {
  OdDbDatabase* db = database();
  return db ? db->findRecord(OdDbNameTable::kBlock, name) : OdDbObjectId();
}

bool blockExists(const OdString& name) {
  return kestrix::ResultList(rydbTblSearch(L"BLOCK", name.c_str(), 0)) != nullptr;
}

// Whether the definition of container holds, among its own entities, a
// reference to the block named; references nested deeper are not followed.
bool containsReference(const OdString& name, const OdString& container) {
  const OdDbObjectId wanted = blockId(name);
  OdDbObjectPtr object = blockId(container).openObject();
  auto* block = dynamic_cast<OdDbBlockTableRecord*>(object.get());
  if (wanted.isNull() || !block) return false;
  for (const OdDbObjectId& id : block->entityIds()) {
    if (id.isErased()) continue;
    OdDbObjectPtr entity = id.openObject();
    auto* reference = dynamic_cast<OdDbBlockReference*>(entity.get());
    if (reference && reference->blockTableRecord() == wanted) return true;
  }
  return false;
}

// Whether the definition of container reaches the block target through
// references at any depth (each definition visited once).
bool reachesBlock(const OdDbObjectId& container, const OdDbObjectId& target) {
  std::vector<OdDbObjectId> pending = {container};
  std::unordered_set<OdDbObjectId> visited = {container};
  while (!pending.empty()) {
    OdDbObjectPtr object = pending.back().openObject();
    pending.pop_back();
    auto* block = dynamic_cast<OdDbBlockTableRecord*>(object.get());
    if (!block) continue;
    for (const OdDbObjectId& id : block->entityIds()) {
      if (id.isErased()) continue;
      OdDbObjectPtr entity = id.openObject();
      auto* reference = dynamic_cast<OdDbBlockReference*>(entity.get());
      if (!reference) continue;
      const OdDbObjectId inner = reference->blockTableRecord();
      if (inner == target) return true;
      if (visited.insert(inner).second) pending.push_back(inner);
    }
  }
  return false;
}

void alertCannotReplace(const OdString& first, const OdString& second) {
  OdString text;
  text.format(L"The block %ls can not be replaced by %ls", first.c_str(), second.c_str());
  ryedAlert(text.c_str());
}

// Every reference of the old definition (in any space or block) given the
// new one; returns how many were switched. A reference that cannot be
// opened for write, such as one on a locked layer, is passed over.
int switchReferences(const OdString& oldName, const OdString& newName) {
  const OdDbObjectId newId = blockId(newName);
  OdDbObjectPtr object = blockId(oldName).openObject();
  auto* oldBlock = dynamic_cast<OdDbBlockTableRecord*>(object.get());
  if (newId.isNull() || !oldBlock) return 0;
  std::unordered_map<OdDbObjectId, bool> lockedLayers;
  const auto onLockedLayer = [&lockedLayers](const OdDbEntity* entity) {
    auto known = lockedLayers.find(entity->layerId());
    if (known != lockedLayers.end()) return known->second;
    OdDbObjectPtr layerObject = entity->layerId().openObject();
    auto* layer = dynamic_cast<OdDbLayerTableRecord*>(layerObject.get());
    return lockedLayers.emplace(entity->layerId(), layer && layer->isLocked()).first->second;
  };
  int switched = 0;
  for (OdDbBlockReferenceIdIteratorPtr it = oldBlock->newBlockReferenceIdIterator(); !it->done(); it->step()) {
    OdDbObjectPtr entity = it->objectId().openObject();
    auto* reference = dynamic_cast<OdDbBlockReference*>(entity.get());
    if (!reference || onLockedLayer(reference) || reference->upgradeOpen() != eOk) continue;
    reference->setBlockTableRecord(newId);
    ++switched;
  }
  return switched;
}

// Asks whether to purge the old definition, then switches the references
// (and purges). Esc switches nothing; nor does a switch that would make a
// block hold itself.
void replaceBlock(const OdString& oldName, const OdString& newName) {
  // The references of the old block inside definitions that the new block
  // holds (deeper than the direct test looks) would make a block that holds
  // itself: refused like a direct reference.
  if (reachesBlock(blockId(newName), blockId(oldName))) {
    alertCannotReplace(oldName, newName);
    return;
  }
  ryedInitGet(0, ResourceString(10001, L"Yes No _Yes No"));
  wchar_t reply[kKeywordReplySize] = {};
  const int status = ryedGetKword(ResourceString(2212), reply, kKeywordReplySize);
  if (status == RTCAN) {
    ryutPrintf(L"%ls", ResourceString(2021).c_str());
    return;
  }
  const bool purge = status != RTNORM || (reply[0] != L'N' && reply[0] != L'n');
  ryutPrintf(ResourceString(2213), switchReferences(oldName, newName));
  ryutPrintf(L"%ls", ResourceString(2214).c_str());
  if (purge) {
    // The purge command reads its name as a pattern: the block's name is escaped.
    ryedCommand(RTSTR, L"_.-purge", RTSTR, L"B", RTSTR, kestrix::wildcardEscaped(oldName).c_str(), RTSTR, L"N",
                RTNONE);
  }
}

}  // namespace

// The two-step dialog: first the block to be replaced, then its replacement.
class CBloRepDialog : public CRyUiDialog {
 public:
  explicit CBloRepDialog(const OdString& preset) : CRyUiDialog(kDialogId), m_replaced(preset) {
    onSelChange(kListId, &CBloRepDialog::OnSelectItem);
    onDblClick(kListId, &CBloRepDialog::OnAccept);
    onClicked(kAcceptId, &CBloRepDialog::OnAccept);
    onClicked(kPickId, &CBloRepDialog::OnPick);
    onClicked(kCloseId, &CBloRepDialog::OnClose);
  }

  // The block to be replaced, when chosen (or preset).
  const OdString& replacedName() const { return m_replaced; }
  // The replacement, when the second step was accepted.
  const OdString& replacementName() const { return m_replacement; }

  BOOL OnInitDialog() override {
    CRyUiDialog::OnInitDialog();
    if (OdDbDatabase* db = database()) {
      OdDbObjectPtr table = db->getBlockTableId().openObject();
      for (OdDbSymbolTableIteratorPtr it = static_cast<OdDbSymbolTable*>(table.get())->newIterator(); !it->done();
           it->step()) {
        OdDbBlockTableRecordPtr block = OdDbBlockTableRecord::cast(it->getRecord().get());
        if (block.isNull() || block->isFromExternalReference()) continue;
        const OdString name = block->getName();
        if (name.isEmpty() || name[0] == L'*' || name[0] == L'$' || name[0] == L'{') continue;
        list()->AddString(name.c_str());
      }
    }
    if (m_replaced.isEmpty()) {
      selectItem(0);
      SetDlgItemText(kStepId, ResourceString(2216));
    } else {
      selectItemAfter(m_replaced);
      SetDlgItemText(kStepId, (ResourceString(2215).text() + m_replaced).c_str());
    }
    return TRUE;
  }

 private:
  CListBox* list() const { return static_cast<CListBox*>(GetDlgItem(kListId)); }

  void selectItem(int index) {
    if (list()->GetCount() == 0) return;
    list()->SetCurSel(index);
    CString text;
    list()->GetText(index, text);
    SetDlgItemText(kNameId, text.c_str());
  }

  // The item after the one named exactly (wrapping; the first when none is).
  void selectItemAfter(const OdString& name) {
    const int count = list()->GetCount();
    int found = -1;
    for (int i = 0; i < count && found < 0; ++i) {
      CString text;
      list()->GetText(i, text);
      if (text == name) found = i;
    }
    if (count > 0) selectItem((found + 1) % count);
  }

  void showError(const OdString& name) {
    SetDlgItemText(kErrorId, (ResourceString(2218).text() + name).c_str());
    GetDlgItem(kErrorId)->ShowWindow(SW_SHOW);
  }
  void hideError() { GetDlgItem(kErrorId)->ShowWindow(SW_HIDE); }

  void OnSelectItem() {
    const int index = list()->GetCurSel();
    if (index < 0) return;
    CString text;
    list()->GetText(index, text);
    SetDlgItemText(kNameId, text.c_str());
    hideError();
  }

  void OnAccept() {
    CString name;
    GetDlgItemText(kNameId, name);
    SetDlgItemText(kErrorId, L"");
    hideError();
    if (m_replaced.isEmpty()) {
      if (!blockExists(name)) {
        showError(name);
        return;
      }
      m_replaced = name;
      SetDlgItemText(kStepId, (ResourceString(2215).text() + name).c_str());
      selectItemAfter(name);
      return;
    }
    if (name == m_replaced) {
      EndDialog(kResultSameBlock);
      ryedAlert(ResourceString(2217));
      return;
    }
    if (!blockExists(name)) {
      showError(name);
      return;
    }
    m_replacement = name;
    EndDialog(IDCANCEL);
  }

  void OnPick() {
    hideError();
    EndDialog(kResultPick);
  }

  void OnClose() { EndDialog(IDCANCEL); }

  OdString m_replaced, m_replacement;
};

void blockreplaceCommand() {
  using namespace kestrix::blocks;
  kestrix::CmdEchoGuard echo;
  kestrix::UndoGroup group;
  OdString replaced;
  for (;;) {
    CBloRepDialog dialog(replaced);
    const INT_PTR result = dialog.DoModal();
    if (result == kResultSameBlock) continue;
    if (result != kResultPick) {
      // Closed, cancelled, or the second step accepted.
      if (dialog.replacementName().isEmpty()) return;
      if (containsReference(dialog.replacedName(), dialog.replacementName())) {
        alertCannotReplace(dialog.replacedName(), dialog.replacementName());
        return;
      }
      replaceBlock(dialog.replacedName(), dialog.replacementName());
      return;
    }
    if (!dialog.replacedName().isEmpty()) replaced = dialog.replacedName();
    OdString picked;
    const BlockPick pick = pickBlockReference(picked);
    if (pick == BlockPick::kCancelled) return;
    if (pick == BlockPick::kNothing || isFromExternalReference(picked)) continue;
    if (replaced.isEmpty()) {
      replaced = picked;
      continue;
    }
    if (picked.iCompare(replaced) == 0) {
      ryedAlert(ResourceString(2217));
      continue;
    }
    // On this path the test and the order of the names are the reverse of the dialog's.
    if (containsReference(picked, replaced)) {
      alertCannotReplace(picked, replaced);
      return;
    }
    replaceBlock(replaced, picked);
    return;
  }
}
