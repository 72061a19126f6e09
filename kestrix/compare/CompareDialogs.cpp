#include "compare/CompareDialogs.h"

#include "RyUiStdDialogs.h"
#include "frame/ResourceString.h"

namespace kestrix {

CCompareDlg::CCompareDlg() : CRyUiDialog(IDD) {
  onClicked(IDC_CMP_OLD_BROWSE, &CCompareDlg::OnBrowseOld);
  onClicked(IDC_CMP_NEW_BROWSE, &CCompareDlg::OnBrowseNew);
  onClicked(IDC_CMP_OPTIONS, &CCompareDlg::OnOptions);
}

void CCompareDlg::DoDataExchange(CDataExchange* pDX) {
  DDX_Text(pDX, IDC_CMP_OLD, m_oldPath);
  DDX_Text(pDX, IDC_CMP_NEW, m_newPath);
  DDX_Text(pDX, IDC_CMP_FOLDER, m_folder);
}

void CCompareDlg::browse(int control, CString& path) {
  GetDlgItemText(control, path);
  CNavFilterArray filters;
  filters.push_back(CNavFilter(ResourceString(25037, L"Drawings"), L"*.dxf;*.dwg"));
  CRyUiNavDialog dialog(filters, this);
  dialog.SetInitialFileName(path);
  if (dialog.DoModal() != IDOK) return;
  path = dialog.GetPathName();
  SetDlgItemText(control, path);
}

void CCompareDlg::OnBrowseOld() { browse(IDC_CMP_OLD, m_oldPath); }
void CCompareDlg::OnBrowseNew() { browse(IDC_CMP_NEW, m_newPath); }

void CCompareDlg::OnOptions() {
  CCMPParamDlg dialog(compareSettings());
  if (dialog.DoModal() == IDOK) compareSettings() = dialog.m_settings;
}

CCMPParamDlg::CCMPParamDlg(const CompareSettings& settings) : CRyUiDialog(IDD), m_settings(settings) {
  for (int i = 0; i < 5; ++i) onNotify(IDC_CMP_COLOR_1 + i, RyNotify::kClicked, [this, i] { OnColor(i); });
}

BOOL CCMPParamDlg::OnInitDialog() {
  CRyUiDialog::OnInitDialog();
  for (int i = 0; i < 5; ++i) {
    m_colorButtons[i].currentColor = m_settings.colors[i];
    CColorBtnSel::drawFace(m_colorButtons[i]);
  }
  return TRUE;
}

void CCMPParamDlg::DoDataExchange(CDataExchange* pDX) {
  DDX_Text(pDX, IDC_CMP_TOLERANCE, m_settings.tolerance);
  DDV_MinMaxDouble(pDX, m_settings.tolerance, 0.0, 1.0e6);
  for (int i = 0; i < 6; ++i) DDX_Check(pDX, IDC_CMP_SWITCH_A + i, m_settings.switches[i]);
  for (int i = 0; i < 5; ++i) {
    DDX_Control(pDX, IDC_CMP_COLOR_1 + i, m_colorButtons[i]);
    if (pDX->m_bSaveAndValidate) m_settings.colors[i] = m_colorButtons[i].currentColor;
  }
}

void CCMPParamDlg::OnColor(int index) { CColorBtnSel::takeChoice(m_colorButtons[index]); }

}  // namespace kestrix
