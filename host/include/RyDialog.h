// Dialogs of the host's toolkit, in their classic shape: a dialog class
// made from a template number, with OnInitDialog / OnOK / OnCancel and data
// exchange between member variables and controls (DoDataExchange with the
// DDX_ and DDV_ functions). Include RyDialogs.h for the whole toolkit.
//
// Where a dialog's template comes from: the resource handle given to the
// constructor; without one, the handle of the innermost CRyResourceOverride
// alive; without one, the resource handle of the command that runs (the one
// its module registered it with). A handle must be a resource library's
// (LoadLibraryW of such a file). When no template is found, DoModal returns
// -1 and Create FALSE, and the command line says why.
#pragma once

#include "RyWnd.h"

class CDataExchange;

// Thrown by CDataExchange::Fail to stop data exchange (UpdateData catches it).
class RYAD_API CUserException {};

class RYAD_API CDialog : public CWnd {
 public:
  explicit CDialog(UINT templateId = 0, CWnd* parent = nullptr, HINSTANCE resources = nullptr);
  ~CDialog() override;

  // Shows the dialog until EndDialog; returns IDOK, IDCANCEL or the value
  // given to EndDialog; -1 when the dialog cannot be shown.
  virtual INT_PTR DoModal();
  // Shows the dialog modeless (it stays up while the command goes on);
  // templateId 0 takes the constructor's. FALSE when it cannot be shown.
  virtual BOOL Create(UINT templateId = 0, CWnd* parent = nullptr);
  BOOL DestroyWindow() override;
  // TRUE: reads the controls into the variables, validating; returns FALSE
  // when a value is refused. FALSE: shows the variables in the controls.
  BOOL UpdateData(BOOL saveAndValidate = TRUE);
  // Ends a modal dialog with that result; hides a modeless one.
  void EndDialog(int result);
  UINT GetTemplateId() const { return m_templateId; }
  // The push button that Enter presses (the template's DEFBUTTON, else IDOK).
  void SetDefID(UINT id);
  DWORD GetDefID() const;
  void CenterWindow(CWnd* alternateOwner = nullptr) {}
  void GotoDlgCtrl(CWnd* control) {}

  // Called when the controls exist, before the dialog is shown: shows the
  // variables (UpdateData(FALSE)). Returns TRUE (the focus goes to the first control).
  virtual BOOL OnInitDialog();

 protected:
  // IDOK pressed (also by Enter when it is the default button): UpdateData(TRUE), then EndDialog(IDOK).
  virtual void OnOK();
  // IDCANCEL pressed or Esc: EndDialog(IDCANCEL).
  virtual void OnCancel();
  virtual void DoDataExchange(CDataExchange* pDX) {}
  // Called last when a modeless dialog's window is destroyed (a dialog made
  // with new may delete itself here).
  virtual void PostNcDestroy() {}

 private:
  bool makeWindow(UINT templateId, bool modal);
  void closeWindow();

  UINT m_templateId;
  CWnd* m_parent;
  HINSTANCE m_resources;
  int m_result = IDCANCEL;
  friend class ryhost::DialogAccess;
};

// The host's dialog base class: a CDialog with the same behaviour.
class RYAD_API CRyUiDialog : public CDialog {
 public:
  explicit CRyUiDialog(UINT templateId = 0, CWnd* parent = nullptr, HINSTANCE resources = nullptr)
      : CDialog(templateId, parent, resources) {}
};

// While alive, dialogs made without a resource handle take their templates
// from this library (for a dialog shown outside the command that owns it).
class RYAD_API CRyResourceOverride {
 public:
  explicit CRyResourceOverride(HINSTANCE resources);
  ~CRyResourceOverride();
  CRyResourceOverride(const CRyResourceOverride&) = delete;
  CRyResourceOverride& operator=(const CRyResourceOverride&) = delete;
};

class RYAD_API CDataExchange {
 public:
  CDataExchange(CWnd* dialog, BOOL saveAndValidate)
      : m_bSaveAndValidate(saveAndValidate), m_pDlgWnd(dialog) {}
  BOOL m_bSaveAndValidate;  // TRUE: controls to variables
  CWnd* m_pDlgWnd;
  int m_idLastControl = 0;
  // The control about to be exchanged (null, and a note on the command line, when there is none).
  CWnd* PrepareCtrl(int id);
  CWnd* PrepareEditCtrl(int id);
  // Stops the exchange: UpdateData returns FALSE and the dialog stays open.
  [[noreturn]] void Fail();
};

// ---- data exchange: text of edit boxes (and any control's text)
RYAD_API void DDX_Text(CDataExchange* pDX, int id, CString& value);
// Numbers: a text that is not a whole number of the kind shows a message and fails.
RYAD_API void DDX_Text(CDataExchange* pDX, int id, int& value);
RYAD_API void DDX_Text(CDataExchange* pDX, int id, UINT& value);
RYAD_API void DDX_Text(CDataExchange* pDX, int id, long& value);
RYAD_API void DDX_Text(CDataExchange* pDX, int id, double& value);
RYAD_API void DDX_Text(CDataExchange* pDX, int id, float& value);
// ---- buttons
// A check box: BST_UNCHECKED, BST_CHECKED or BST_INDETERMINATE.
RYAD_API void DDX_Check(CDataExchange* pDX, int id, int& value);
RYAD_API void DDX_Check(CDataExchange* pDX, int id, bool& value);
// A radio group given by its first button: the buttons that follow it in the
// template, up to the next control with the GROUP style or of another kind.
// The value is the index of the checked button in the group, -1 for none.
RYAD_API void DDX_Radio(CDataExchange* pDX, int firstId, int& value);
// ---- lists
RYAD_API void DDX_CBIndex(CDataExchange* pDX, int id, int& index);
// Loading selects the first item starting with the text (or, in an editable
// combo box, puts the text into its edit part); saving reads the edit part.
RYAD_API void DDX_CBString(CDataExchange* pDX, int id, CString& value);
RYAD_API void DDX_CBStringExact(CDataExchange* pDX, int id, CString& value);
RYAD_API void DDX_LBIndex(CDataExchange* pDX, int id, int& index);
RYAD_API void DDX_LBString(CDataExchange* pDX, int id, CString& value);
RYAD_API void DDX_LBStringExact(CDataExchange* pDX, int id, CString& value);
// Binds a member control object to the control of that number (the first time).
RYAD_API void DDX_Control(CDataExchange* pDX, int id, CWnd& control);
// ---- validation (on saving only; a refused value shows a message and fails)
RYAD_API void DDV_MaxChars(CDataExchange* pDX, const CString& value, int most);
RYAD_API void DDV_MinMaxInt(CDataExchange* pDX, int value, int minimum, int maximum);
RYAD_API void DDV_MinMaxDouble(CDataExchange* pDX, double value, double minimum, double maximum);
