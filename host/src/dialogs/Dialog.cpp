// Dialogs: finding the template, the modal and modeless lifetimes of the
// window, and data exchange between controls and variables.
#include <cerrno>
#include <climits>
#include <cmath>
#include <cwchar>
#include <typeinfo>

#include "core/Host.h"
#include "dialogs/DialogDriver.h"
#include "dialogs/Window.h"

using ryhost::Host;
using Kind = RyWindow::Kind;

namespace {

// Handles of the CRyResourceOverride objects alive, innermost last.
std::vector<HINSTANCE>& resourceOverrides() {
  static std::vector<HINSTANCE> handles;
  return handles;
}

// The resource library a dialog made with the given handle reads its template from, or null with the reason.
const ryhost::ResourceLibrary* templateLibrary(HINSTANCE own, OdString& reason) {
  HINSTANCE handle = own;
  if (!handle && !resourceOverrides().empty()) handle = resourceOverrides().back();
  if (!handle) {
    OdEdCommand* command = Host::instance().runningCommand();
    handle = command ? command->resourceHandle() : nullptr;
    if (!handle) {
      reason = command
                   ? L"the command " + command->globalName() + L" was registered without a resource library"
                   : OdString(L"it has no resource library and no command runs");
      return nullptr;
    }
  }
  const ryhost::ResourceLibrary* library = ryhost::resourceLibraryOf(handle);
  if (!library) reason = L"its resource handle is not a resource library";
  return library;
}

void note(const OdString& text) { Host::instance().print(L"\n" + text); }

// A refused value: the message a screen would show, then the exchange stops.
[[noreturn]] void refuse(CDataExchange* pDX, const OdString& message) {
  ryhost::dialogDriver().messageBox(message, ryhost::kToolkitCaption, MB_OK | MB_ICONEXCLAMATION);
  pDX->Fail();
}

OdString trimmedText(CWnd* control) {
  CString text;
  control->GetWindowText(text);
  return text.trimLeft().trimRight();
}

bool parseReal(const OdString& text, double& value) {
  if (text.isEmpty()) return false;
  wchar_t* end = nullptr;
  errno = 0;
  value = std::wcstod(text.c_str(), &end);
  return !*end && errno == 0 && std::isfinite(value);
}

template <class T>
void exchangeInteger(CDataExchange* pDX, int id, T& value, long long minimum, long long maximum,
                     const wchar_t* format) {
  CWnd* control = pDX->PrepareEditCtrl(id);
  if (!control) return;
  if (!pDX->m_bSaveAndValidate) {
    control->SetWindowText(OdString().format(format, value));
    return;
  }
  long long parsed = 0;
  if (!ryhost::parseDialogInteger(trimmedText(control), minimum, maximum, parsed)) {
    refuse(pDX, minimum < 0 ? L"Enter an integer." : L"Enter a whole number that is not negative.");
  }
  value = static_cast<T>(parsed);
}

template <class T>
void exchangeReal(CDataExchange* pDX, int id, T& value, int digits) {
  CWnd* control = pDX->PrepareEditCtrl(id);
  if (!control) return;
  if (!pDX->m_bSaveAndValidate) {
    control->SetWindowText(OdString().format(L"%.*g", digits, static_cast<double>(value)));
    return;
  }
  double parsed = 0;
  if (!parseReal(trimmedText(control), parsed)) refuse(pDX, L"Enter a number.");
  value = static_cast<T>(parsed);
}

// Whether a member object may stand for a control of that kind.
bool fitsKind(const CWnd& object, Kind kind) {
  switch (kind) {
    case Kind::kEdit:
      return dynamic_cast<const CEdit*>(&object) != nullptr;
    case Kind::kPushButton:
    case Kind::kCheckBox:
    case Kind::kRadio:
    case Kind::kGroupBox:
      return dynamic_cast<const CButton*>(&object) != nullptr;
    case Kind::kColorButton:
      return dynamic_cast<const CRyColorButton*>(&object) != nullptr;
    case Kind::kListBox:
      return dynamic_cast<const CListBox*>(&object) != nullptr;
    case Kind::kComboBox:
      return dynamic_cast<const CComboBox*>(&object) != nullptr;
    case Kind::kListView:
      return dynamic_cast<const CListCtrl*>(&object) != nullptr;
    default:
      return typeid(object) == typeid(CWnd) || dynamic_cast<const CStatic*>(&object) != nullptr;
  }
}

}  // namespace

bool ryhost::parseDialogInteger(const OdString& text, long long minimum, long long maximum, long long& value) {
  if (text.isEmpty()) return false;
  wchar_t* end = nullptr;
  errno = 0;
  value = std::wcstoll(text.c_str(), &end, 10);
  return !*end && errno == 0 && value >= minimum && value <= maximum;
}

// ---------------------------------------------------------------- CDialog

CDialog::CDialog(UINT templateId, CWnd* parent, HINSTANCE resources)
    : m_templateId(templateId), m_parent(parent), m_resources(resources) {}

CDialog::~CDialog() { closeWindow(); }

bool CDialog::makeWindow(UINT templateId, bool modal) {
  OdString reason;
  const ryhost::ResourceLibrary* library = templateLibrary(m_resources, reason);
  const ryhost::DialogTemplate* dialogTemplate =
      library ? library->dialog(static_cast<int>(templateId)) : nullptr;
  if (library && !dialogTemplate) reason = L"its resource library has no such dialog";
  if (!dialogTemplate) {
    note(OdString().format(L"Dialog %u cannot be shown: %ls.", templateId, reason.c_str()));
    return false;
  }
  RyWindow* window = ryhost::makeDialogWindow(*dialogTemplate, this).release();  // owned through m_hWnd
  window->modal = modal;
  window->owner = m_parent;
  return true;
}

void CDialog::closeWindow() {
  RyWindow* window = m_hWnd;
  if (!window) return;
  if (!window->modal && window->visible) {
    window->visible = false;
    ryhost::dialogDriver().modelessHidden(*this);
  }
  delete window;  // clears m_hWnd of every object attached to it
}

INT_PTR CDialog::DoModal() {
  if (m_hWnd || !makeWindow(m_templateId, true)) return -1;
  struct Closer {
    CDialog* dialog;
    ~Closer() { dialog->closeWindow(); }
  } closer{this};
  m_result = IDCANCEL;
  OnInitDialog();
  if (m_hWnd && !m_hWnd->ended) ryhost::dialogDriver().showModal(*this);
  return m_result;
}

BOOL CDialog::Create(UINT templateId, CWnd* parent) {
  if (parent) m_parent = parent;
  if (templateId) m_templateId = templateId;
  if (m_hWnd || !makeWindow(m_templateId, false)) return FALSE;
  OnInitDialog();
  // Shown at once: a modeless template needs no visible style.
  if (m_hWnd && m_hWnd->visible) ryhost::dialogDriver().modelessShown(*this);
  return m_hWnd ? TRUE : FALSE;
}

BOOL CDialog::DestroyWindow() {
  if (!m_hWnd) return FALSE;
  if (m_hWnd->modal) {
    // A modal dialog ends through its loop, which then destroys the window.
    EndDialog(IDCANCEL);
    return TRUE;
  }
  closeWindow();
  PostNcDestroy();
  return TRUE;
}

BOOL CDialog::UpdateData(BOOL saveAndValidate) {
  if (!m_hWnd) return FALSE;
  CDataExchange exchange(this, saveAndValidate);
  try {
    DoDataExchange(&exchange);
  } catch (const CUserException&) {
    return FALSE;
  }
  return TRUE;
}

void CDialog::EndDialog(int result) {
  m_result = result;
  if (!m_hWnd) return;
  m_hWnd->ended = true;
  m_hWnd->result = result;
  if (!m_hWnd->modal) ShowWindow(SW_HIDE);
}

void CDialog::SetDefID(UINT id) {
  if (m_hWnd) m_hWnd->defaultId = static_cast<int>(id);
}

DWORD CDialog::GetDefID() const { return m_hWnd ? static_cast<DWORD>(m_hWnd->defaultId) : 0; }

BOOL CDialog::OnInitDialog() {
  UpdateData(FALSE);
  return TRUE;
}

void CDialog::OnOK() {
  if (!UpdateData(TRUE)) return;
  EndDialog(IDOK);
}

void CDialog::OnCancel() { EndDialog(IDCANCEL); }

CRyResourceOverride::CRyResourceOverride(HINSTANCE resources) { resourceOverrides().push_back(resources); }

CRyResourceOverride::~CRyResourceOverride() {
  if (!resourceOverrides().empty()) resourceOverrides().pop_back();
}

// ---------------------------------------------------------------- data exchange

CWnd* CDataExchange::PrepareCtrl(int id) {
  m_idLastControl = id;
  CWnd* control = m_pDlgWnd ? m_pDlgWnd->GetDlgItem(id) : nullptr;
  if (!control && m_pDlgWnd && m_pDlgWnd->m_hWnd) {
    note(OdString().format(L"Dialog %u has no control %d to exchange.", m_pDlgWnd->m_hWnd->templateId, id));
  }
  return control;
}

CWnd* CDataExchange::PrepareEditCtrl(int id) { return PrepareCtrl(id); }

void CDataExchange::Fail() { throw CUserException(); }

void DDX_Text(CDataExchange* pDX, int id, CString& value) {
  CWnd* control = pDX->PrepareEditCtrl(id);
  if (!control) return;
  if (pDX->m_bSaveAndValidate)
    control->GetWindowText(value);
  else
    control->SetWindowText(value);
}

void DDX_Text(CDataExchange* pDX, int id, int& value) {
  exchangeInteger(pDX, id, value, INT_MIN, INT_MAX, L"%d");
}
void DDX_Text(CDataExchange* pDX, int id, UINT& value) {
  exchangeInteger(pDX, id, value, 0, UINT_MAX, L"%u");
}
void DDX_Text(CDataExchange* pDX, int id, long& value) {
  exchangeInteger(pDX, id, value, LONG_MIN, LONG_MAX, L"%ld");
}
void DDX_Text(CDataExchange* pDX, int id, double& value) { exchangeReal(pDX, id, value, 15); }
void DDX_Text(CDataExchange* pDX, int id, float& value) { exchangeReal(pDX, id, value, 6); }

void DDX_Check(CDataExchange* pDX, int id, int& value) {
  auto* button = static_cast<CButton*>(pDX->PrepareCtrl(id));
  if (!button) return;
  if (pDX->m_bSaveAndValidate)
    value = button->GetCheck();
  else
    button->SetCheck(value);
}

void DDX_Check(CDataExchange* pDX, int id, bool& value) {
  int check = value ? BST_CHECKED : BST_UNCHECKED;
  DDX_Check(pDX, id, check);
  value = check == BST_CHECKED;
}

void DDX_Radio(CDataExchange* pDX, int firstId, int& value) {
  if (!pDX->PrepareCtrl(firstId)) return;
  RyWindow* dialog = pDX->m_pDlgWnd->m_hWnd;
  const std::vector<RyWindow*> group = ryhost::radioGroup(dialog, dialog->findChild(firstId));
  if (pDX->m_bSaveAndValidate) value = -1;
  for (size_t i = 0; i < group.size(); ++i) {
    if (pDX->m_bSaveAndValidate) {
      if (group[i]->check == BST_CHECKED) value = static_cast<int>(i);
    } else {
      group[i]->check = static_cast<int>(i) == value ? BST_CHECKED : BST_UNCHECKED;
    }
  }
}

void DDX_CBIndex(CDataExchange* pDX, int id, int& index) {
  auto* combo = static_cast<CComboBox*>(pDX->PrepareCtrl(id));
  if (!combo) return;
  if (pDX->m_bSaveAndValidate)
    index = combo->GetCurSel();
  else
    combo->SetCurSel(index);
}

namespace {

void exchangeComboString(CDataExchange* pDX, int id, CString& value, bool exact) {
  auto* combo = static_cast<CComboBox*>(pDX->PrepareCtrl(id));
  if (!combo) return;
  if (pDX->m_bSaveAndValidate) {
    combo->GetWindowText(value);
    return;
  }
  const int index = exact ? combo->FindStringExact(-1, value) : combo->FindString(-1, value);
  if (index >= 0)
    combo->SetCurSel(index);
  else if (!combo->m_hWnd->dropList)
    combo->SetWindowText(value);
  else
    combo->SetCurSel(-1);
}

void exchangeListString(CDataExchange* pDX, int id, CString& value, bool exact) {
  auto* list = static_cast<CListBox*>(pDX->PrepareCtrl(id));
  if (!list) return;
  if (pDX->m_bSaveAndValidate) {
    const int index = list->GetCurSel();
    if (index >= 0)
      list->GetText(index, value);
    else
      value.empty();
    return;
  }
  list->SetCurSel(exact ? list->FindStringExact(-1, value) : list->FindString(-1, value));
}

}  // namespace

void DDX_CBString(CDataExchange* pDX, int id, CString& value) { exchangeComboString(pDX, id, value, false); }
void DDX_CBStringExact(CDataExchange* pDX, int id, CString& value) {
  exchangeComboString(pDX, id, value, true);
}

void DDX_LBIndex(CDataExchange* pDX, int id, int& index) {
  auto* list = static_cast<CListBox*>(pDX->PrepareCtrl(id));
  if (!list) return;
  if (pDX->m_bSaveAndValidate)
    index = list->GetCurSel();
  else
    list->SetCurSel(index);
}

void DDX_LBString(CDataExchange* pDX, int id, CString& value) { exchangeListString(pDX, id, value, false); }
void DDX_LBStringExact(CDataExchange* pDX, int id, CString& value) {
  exchangeListString(pDX, id, value, true);
}

void DDX_Control(CDataExchange* pDX, int id, CWnd& control) {
  if (control.m_hWnd) return;  // bound at the first exchange
  CWnd* shown = pDX->PrepareCtrl(id);
  if (!shown) return;
  if (!fitsKind(control, shown->m_hWnd->kind)) {
    note(OdString().format(L"Dialog %u: control %d is a %ls; the object bound to it is of another class.",
                           pDX->m_pDlgWnd->m_hWnd->templateId, id, shown->m_hWnd->kindWord.c_str()));
  }
  shown->m_hWnd->attach(&control);
}

void DDV_MaxChars(CDataExchange* pDX, const CString& value, int most) {
  if (!pDX->m_bSaveAndValidate) {
    if (auto* edit = dynamic_cast<CEdit*>(pDX->m_pDlgWnd->GetDlgItem(pDX->m_idLastControl))) {
      edit->SetLimitText(static_cast<UINT>(most));
    }
    return;
  }
  if (value.getLength() > most) refuse(pDX, OdString().format(L"Enter no more than %d characters.", most));
}

void DDV_MinMaxInt(CDataExchange* pDX, int value, int minimum, int maximum) {
  if (pDX->m_bSaveAndValidate && (value < minimum || value > maximum)) {
    refuse(pDX, OdString().format(L"Enter an integer from %d to %d.", minimum, maximum));
  }
}

void DDV_MinMaxDouble(CDataExchange* pDX, double value, double minimum, double maximum) {
  if (pDX->m_bSaveAndValidate && (value < minimum || value > maximum)) {
    refuse(pDX, OdString().format(L"Enter a number from %g to %g.", minimum, maximum));
  }
}
