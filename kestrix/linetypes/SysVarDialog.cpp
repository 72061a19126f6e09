// sysvdlg: lists the host's system variables as the catalogue describes
// them, lets the user change values, and saves chosen variables to an
// "isv" file or loads such a file back to apply it.
#include "linetypes/SysVarDialog.h"

#include <algorithm>

#include "frame/ModuleResources.h"
#include "frame/ResourceString.h"
#include "frame/commands.h"
#include "ryed.h"
#include "ryut.h"

namespace kestrix::sysvars {

namespace {

const wchar_t* const kFromFileLabel = L"*.From File";
constexpr int kMostSavedRows = 5000;

CNavFilterArray setFileFilters() { return {CNavFilter(ResourceString(2254), L"*.isv")}; }

}  // namespace

CSYSVDLG::CSYSVDLG(const CIniFile& catalogue)
    : CRyUiDialog(kSysVarDialog), m_catalogue(catalogue), m_host(hostVariables()) {
  onEditChange(kFilterEdit, &CSYSVDLG::OnFilterEdited);
  onSelChange(kVariableList, &CSYSVDLG::OnRowChosen);
  onClicked(kSetButton, &CSYSVDLG::OnSet);
  onClicked(kSaveButton, &CSYSVDLG::OnSave);
  onClicked(kLoadButton, &CSYSVDLG::OnLoad);
}

void CSYSVDLG::DoDataExchange(CDataExchange* pDX) { DDX_Control(pDX, kVariableList, m_list); }

BOOL CSYSVDLG::OnInitDialog() {
  CRyUiDialog::OnInitDialog();
  m_list.InsertColumn(0, ResourceString(2262));
  m_list.InsertColumn(1, ResourceString(2263));
  m_list.InsertColumn(2, ResourceString(2264));
  m_list.InsertColumn(3, ResourceString(2265));
  m_filling = true;
  SetDlgItemText(kFilterEdit, L"*");
  m_filling = false;
  fromCatalogue();
  return TRUE;
}

// The catalogue's description of a variable with the host's type and flag.
CSYSVDLG::Row CSYSVDLG::rowFor(const OdString& name) const {
  Row row;
  row.name = name;
  if (const CatalogueEntry* entry = m_catalogue.find(name)) {
    row.name = entry->name;
    row.type = entry->type;
    row.description = entry->description;
    row.values = entry->values;
  }
  for (const HostVariable& variable : m_host) {
    if (variable.name.iCompare(name) == 0) {
      row.hostType = variable.type;
      row.readOnly = variable.readOnly;
    }
  }
  return row;
}

void CSYSVDLG::fromCatalogue() {
  m_rows.clear();
  for (const CatalogueEntry& entry : m_catalogue.entries()) {
    if (entry.heading) {
      Row heading;
      heading.heading = true;
      heading.name = entry.name;
      m_rows.push_back(heading);
    } else {
      m_rows.push_back(rowFor(entry.name));
    }
  }
  m_fromFile = false;
  refill();
}

// The list again from the rows of the source that pass the filter; a
// heading stays when a variable of its group does.
void CSYSVDLG::refill() {
  CString pattern;
  GetDlgItemText(kFilterEdit, pattern);
  pattern.trimLeft();
  pattern.trimRight();
  if (pattern.isEmpty()) pattern = L"*";
  SetDlgItemText(kFilterLabel, m_fromFile ? OdString(kFromFileLabel) : pattern);

  m_list.DeleteAllItems();
  int pendingHeading = -1;
  for (size_t i = 0; i < m_rows.size(); ++i) {
    const Row& row = m_rows[i];
    if (row.heading) {
      pendingHeading = static_cast<int>(i);
      continue;
    }
    if (!m_fromFile && ryutWcMatch(row.name.c_str(), pattern.c_str()) != RTNORM) continue;
    if (pendingHeading >= 0) {
      const int item = m_list.InsertItem(m_list.GetItemCount(), (L"[" + m_rows[pendingHeading].name + L"]").c_str());
      m_list.SetItemData(item, static_cast<DWORD_PTR>(pendingHeading));
      pendingHeading = -1;
    }
    OdString type = row.type.isEmpty() ? OdString(L"?") : row.type;
    if (row.readOnly) type += L" " + ResourceString(2257).text();
    OdString description = row.description;
    if (!row.values.isEmpty()) description += L" (" + row.values + L")";
    const int item = m_list.InsertItem(m_list.GetItemCount(), row.name.c_str());
    m_list.SetItemText(item, 1, type.c_str());
    m_list.SetItemText(item, 2, shownValue(row).c_str());
    m_list.SetItemText(item, 3, description.c_str());
    m_list.SetItemData(item, static_cast<DWORD_PTR>(i));
  }
  SetDlgItemText(kValueEdit, L"");
}

OdString CSYSVDLG::shownValue(const Row& row) const {
  if (const OdString* changed = change(row.name)) return *changed;
  OdString text;
  if (row.hostType != RTNONE && currentValue(row.name, row.type, text)) return text;
  return OdString();
}

const OdString* CSYSVDLG::change(const OdString& name) const {
  for (const auto& [changedName, value] : m_changes) {
    if (changedName.iCompare(name) == 0) return &value;
  }
  return nullptr;
}

void CSYSVDLG::setChange(const OdString& name, const OdString& value) {
  for (auto& [changedName, changedValue] : m_changes) {
    if (changedName.iCompare(name) == 0) {
      changedValue = value;
      return;
    }
  }
  m_changes.emplace_back(name, value);
}

// The first selected row that is a variable, as an index into the rows; -1 when none is.
int CSYSVDLG::chosenRow() const {
  for (POSITION at = m_list.GetFirstSelectedItemPosition(); at;) {
    const size_t row = m_list.GetItemData(m_list.GetNextSelectedItem(at));
    if (row < m_rows.size() && !m_rows[row].heading) return static_cast<int>(row);
  }
  return -1;
}

void CSYSVDLG::OnFilterEdited() {
  if (m_filling) return;
  // A filter typed after a load goes back to the catalogue; the loaded values stay as changes.
  if (m_fromFile) {
    fromCatalogue();
  } else {
    refill();
  }
}

void CSYSVDLG::OnRowChosen() {
  const int index = chosenRow();
  if (index < 0) {
    SetDlgItemText(kValueEdit, L"");
    SetDlgItemText(kInfoLine, L"");
    return;
  }
  const Row& row = m_rows[static_cast<size_t>(index)];
  SetDlgItemText(kValueEdit, shownValue(row).c_str());
  SetDlgItemText(kInfoLine, (row.name + L": " + row.description).c_str());
}

void CSYSVDLG::OnSet() {
  const int index = chosenRow();
  if (index < 0) return;
  const Row& row = m_rows[static_cast<size_t>(index)];
  if (row.hostType == RTNONE) {
    SetDlgItemText(kInfoLine, formatResource(2260, L"error", row.name.c_str()).c_str());
    return;
  }
  if (row.readOnly) {
    SetDlgItemText(kInfoLine, (row.name + L" " + ResourceString(2257).text()).c_str());
    return;
  }
  CString text;
  GetDlgItemText(kValueEdit, text);
  resbuf value{};
  if (!parseValue(text, row.hostType, value)) {
    SetDlgItemText(kInfoLine, formatResource(2258, L"error", text.c_str(), row.type.c_str()).c_str());
    return;
  }
  const OdString shown = formatValue(value, row.type);
  releaseValue(value);
  setChange(row.name, shown);
  for (int item = 0; item < m_list.GetItemCount(); ++item) {
    if (m_list.GetItemData(item) == static_cast<DWORD_PTR>(index)) m_list.SetItemText(item, 2, shown.c_str());
  }
  SetDlgItemText(kInfoLine, (row.name + L" = " + shown).c_str());
}

// Saves the selected rows, or every row of the list when none is selected;
// values are read from the host, and rows without one are left out.
void CSYSVDLG::OnSave() {
  std::vector<int> items;
  for (POSITION at = m_list.GetFirstSelectedItemPosition(); at && static_cast<int>(items.size()) < kMostSavedRows;)
    items.push_back(m_list.GetNextSelectedItem(at));
  if (items.empty()) {
    for (int item = 0; item < m_list.GetItemCount() && item < kMostSavedRows; ++item) items.push_back(item);
  }
  CSysVarSet set;
  for (int item : items) {
    const size_t index = m_list.GetItemData(item);
    if (index >= m_rows.size() || m_rows[index].heading) continue;
    const Row& row = m_rows[index];
    OdString value;
    if (row.hostType != RTNONE && currentValue(row.name, row.type, value)) set.add(row.name, value);
  }

  CRyUiNavDialog dialog(setFileFilters());
  dialog.SetCreatingFile(true);
  dialog.SetConfirmReplace(true);
  dialog.SetDialogCaption(ResourceString(2250));
  dialog.SetInitialFileName(L"sysvars.isv");
  if (dialog.DoModal() != IDOK) return;
  const OdString path = dialog.GetPathName();
  if (!set.Save(path)) {
    RyUiMessageBox((ResourceString(2236).text() + path + ResourceString(2237).text()).c_str());
    return;
  }
  SetDlgItemText(kInfoLine,
                 formatResource(2259, L"error", static_cast<int>(set.items().size()), path.c_str()).c_str());
}

void CSYSVDLG::OnLoad() {
  CRyUiNavDialog dialog(setFileFilters());
  dialog.SetDialogCaption(ResourceString(2251));
  if (dialog.DoModal() != IDOK) return;
  const OdString path = dialog.GetPathName();
  CSysVarSet set;
  if (!set.Load(path)) {
    RyUiMessageBox((ResourceString(2252).text() + path).c_str());
    return;
  }
  // The loaded values replace the changes made so far.
  m_changes.clear();
  m_rows.clear();
  for (const CSysVarSet::Item& item : set.items()) {
    m_rows.push_back(rowFor(item.name));
    setChange(m_rows.back().name, item.value);
  }
  m_fromFile = true;
  refill();
}

}  // namespace kestrix::sysvars

using namespace kestrix::sysvars;

namespace {

// Gives the changes of the dialog to the host; read-only variables are
// skipped, values the host refuses are named on the command line.
void applyChanges(const std::vector<std::pair<OdString, OdString>>& changes) {
  const std::vector<HostVariable> host = hostVariables();
  int set = 0;
  for (const auto& [name, text] : changes) {
    auto variable = std::find_if(host.begin(), host.end(),
                                 [&name](const HostVariable& v) { return v.name.iCompare(name) == 0; });
    if (variable == host.end()) {
      ryutPrintf(L"\n%ls", formatResource(2260, L"error", name.c_str()).c_str());
      continue;
    }
    if (variable->readOnly) continue;
    resbuf value{};
    const bool accepted = parseValue(text, variable->type, value) && ryedSetVar(name.c_str(), &value) == RTNORM;
    releaseValue(value);
    if (accepted) {
      ++set;
    } else {
      ryutPrintf(formatResource(2256, L"error", name.c_str(), text.c_str()).c_str());
    }
  }
  ryutPrintf(formatResource(2255, L"error", set).c_str());
}

}  // namespace

void sysvdlgCommand() {
  CIniFile catalogue;
  if (!catalogue.Read(cataloguePath(kestrix::moduleFolder()))) {
    RyUiMessageBox(ResourceString(2253));
    return;
  }
  // The command runs no host command, so cmdecho is left as it is: quieted,
  // the dialog would show and save 0 instead of the user's value.
  CSYSVDLG dialog(catalogue);
  if (dialog.DoModal() != IDOK || dialog.changes().empty()) return;
  applyChanges(dialog.changes());
}
