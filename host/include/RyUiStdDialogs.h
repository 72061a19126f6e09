// The host's standard dialogs: file navigation (CRyUiNavDialog with
// CNavFilter), message boxes (RyUiMessageBox) and the colour dialog
// (ryedSetColorDialogTrueColor). Each is shown by the host's dialog front
// end; on the console it asks on the command line.
#pragma once

#include <vector>

#include "CmColor.h"
#include "RyWnd.h"

// ---------------------------------------------------------------- file navigation

// One entry of a file dialog's type list: a description and its patterns ("*.txt").
class RYAD_API CNavFilter {
 public:
  CNavFilter() = default;
  // patterns: one or more, separated by ";" ("*.dxf;*.dwg").
  explicit CNavFilter(LPCTSTR description, LPCTSTR patterns = nullptr);
  void SetDescription(LPCTSTR description) { m_description = description; }
  const CString& GetDescription() const { return m_description; }
  // Adds one pattern; returns its index.
  int Add(LPCTSTR pattern);
  int GetCount() const { return static_cast<int>(m_patterns.size()); }
  CString GetAt(int index) const;
  // "txt" for a first pattern "*.txt"; empty when the first pattern names no extension.
  CString GetDefaultExtension() const;
  // Whether a file name matches one of the patterns (letter case ignored).
  bool Matches(LPCTSTR fileName) const;

 private:
  CString m_description;
  std::vector<CString> m_patterns;
};
using CNavFilterArray = std::vector<CNavFilter>;

class RYAD_API CNavDialog {
 public:
  explicit CNavDialog(const CNavFilterArray& filters = CNavFilterArray(), CWnd* parent = nullptr);
  virtual ~CNavDialog() = default;

  void AddFilter(const CNavFilter& filter) { m_filters.push_back(filter); }
  const CNavFilterArray& GetFilters() const { return m_filters; }
  // Save mode: the file may be new; a name without extension gets the first
  // filter's. Open mode (the default): the file must exist.
  void SetCreatingFile(bool creating) { m_creatingFile = creating; }
  bool GetCreatingFile() const { return m_creatingFile; }
  void SetDialogCaption(LPCTSTR caption) { m_caption = caption; }
  const CString& GetDialogCaption() const { return m_caption; }
  // In save mode, choosing a file that exists asks whether to replace it.
  void SetConfirmReplace(bool confirm) { m_confirmReplace = confirm; }
  bool GetConfirmReplace() const { return m_confirmReplace; }
  // A preview pane (kept for a front end that has one).
  void SetPreviewPresent(bool present) { m_previewPresent = present; }
  bool GetPreviewPresent() const { return m_previewPresent; }
  // The name offered first (with or without a folder).
  void SetInitialFileName(LPCTSTR name) { m_initialFileName = name; }
  const CString& GetInitialFileName() const { return m_initialFileName; }
  // The folder of names given without one (default: the initial name's
  // folder, else the drawing's, else the current folder).
  void SetInitialFolder(LPCTSTR folder) { m_initialFolder = folder; }
  const CString& GetInitialFolder() const { return m_initialFolder; }

  // IDOK with a file chosen, IDCANCEL.
  virtual INT_PTR DoModal();
  // The chosen file: full path, name with extension, name without it, extension without its dot.
  CString GetPathName() const { return m_pathName; }
  CString GetFileName() const;
  CString GetFileTitle() const;
  CString GetFileExt() const;

 private:
  CNavFilterArray m_filters;
  CString m_caption, m_initialFileName, m_initialFolder, m_pathName;
  bool m_creatingFile = false, m_confirmReplace = false, m_previewPresent = false;
};

// The host's file navigation dialog.
class RYAD_API CRyUiNavDialog : public CNavDialog {
 public:
  using CNavDialog::CNavDialog;
};

// ---------------------------------------------------------------- message boxes

#ifndef MB_OK
#define MB_OK 0x0000
#define MB_OKCANCEL 0x0001
#define MB_ABORTRETRYIGNORE 0x0002
#define MB_YESNOCANCEL 0x0003
#define MB_YESNO 0x0004
#define MB_RETRYCANCEL 0x0005
#define MB_ICONHAND 0x0010
#define MB_ICONERROR MB_ICONHAND
#define MB_ICONSTOP MB_ICONHAND
#define MB_ICONQUESTION 0x0020
#define MB_ICONEXCLAMATION 0x0030
#define MB_ICONWARNING MB_ICONEXCLAMATION
#define MB_ICONASTERISK 0x0040
#define MB_ICONINFORMATION MB_ICONASTERISK
#define MB_DEFBUTTON1 0x0000
#define MB_DEFBUTTON2 0x0100
#define MB_DEFBUTTON3 0x0200
#endif

// Shows a message with buttons chosen by type (MB_OK ... MB_RETRYCANCEL, an
// MB_ICON* bit, an MB_DEFBUTTON* bit); returns the button pressed: IDOK,
// IDCANCEL, IDYES, IDNO, IDABORT, IDRETRY or IDIGNORE. Esc answers Cancel
// where the box has it, else No, else the default button. A box with the
// one button OK does not wait on the console.
RYAD_API int RyUiMessageBox(LPCTSTR text, LPCTSTR caption = nullptr, UINT type = MB_OK);

// ---------------------------------------------------------------- colours

// The pages of the colour dialog.
enum RyColorDialogTabs : int {
  kRyAciTab = 1,        // the 255 palette colours
  kRyTrueColorTab = 2,  // red, green and blue
  kRyColorBookTab = 4,  // colour books (none on the console)
};

// The colour dialog: color is the colour shown first and, on RTNORM, the
// one chosen. allowMetaColor offers BYLAYER and BYBLOCK; currentLayerColor
// is what BYLAYER stands for. Returns RTNORM, or RTCAN when cancelled.
RYAD_API int ryedSetColorDialogTrueColor(OdCmColor& color, bool allowMetaColor,
                                         const OdCmColor& currentLayerColor,
                                         int tabs = kRyAciTab | kRyTrueColorTab);
// The same with palette colours only: colorIndex 1..255, 256 BYLAYER, 0 BYBLOCK.
RYAD_API int ryedSetColorDialog(int& colorIndex, bool allowMetaColor, int currentLayerColor);

// ---------------------------------------------------------------- windows of the host

// The window of the current drawing's view; null when there is none (the console).
RYAD_API CView* ryedGetRyadDwgView();
