// The dialogs of the drawing comparison: the compare dialog (the two
// drawings and the output folder) and the parameter dialog (tolerance,
// switches and the five colours, each on a colour button).
#pragma once

#include "RyDialogs.h"
#include "compare/Compare.h"

namespace kestrix {

// A colour button of the parameter dialog: holds the colour it stands for.
class CColorBtn : public CRyColorButton {
 public:
  COLORREF currentColor = 0;
};

// Draws a colour button's face in the button's colour, and takes the colour
// the user chose on the button back into it.
class CColorBtnSel {
 public:
  static void drawFace(CColorBtn& button) { button.SetRGB(button.currentColor); }
  static void takeChoice(CColorBtn& button) { button.currentColor = button.GetRGB(); }
};

enum CompareDialogControls {
  IDC_CMP_OLD = 1001,
  IDC_CMP_OLD_BROWSE = 1002,
  IDC_CMP_NEW = 1003,
  IDC_CMP_NEW_BROWSE = 1004,
  IDC_CMP_FOLDER = 1005,
  IDC_CMP_OPTIONS = 1006,
  IDC_CMP_TOLERANCE = 1101,
  IDC_CMP_SWITCH_A = 1110,  // to 1115 for switch F
  IDC_CMP_COLOR_1 = 1120,   // to 1124 for colour 5
};

class CCompareDlg : public CRyUiDialog {
 public:
  enum { IDD = 25000 };
  CCompareDlg();
  CString m_oldPath, m_newPath, m_folder;

 protected:
  void DoDataExchange(CDataExchange* pDX) override;

 private:
  void OnBrowseOld();
  void OnBrowseNew();
  void OnOptions();
  void browse(int control, CString& path);
};

class CCMPParamDlg : public CRyUiDialog {
 public:
  enum { IDD = 25001 };
  explicit CCMPParamDlg(const CompareSettings& settings);
  BOOL OnInitDialog() override;
  // The values as the dialog left them (written back only on OK).
  CompareSettings m_settings;

 protected:
  void DoDataExchange(CDataExchange* pDX) override;

 private:
  void OnColor(int index);
  CColorBtn m_colorButtons[5];
};

}  // namespace kestrix
