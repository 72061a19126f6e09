// The host's dialog toolkit for modules: windows and controls by number
// (RyWnd.h), dialogs with data exchange and handlers (RyDialog.h), and the
// standard dialogs: files, message boxes, colours (RyUiStdDialogs.h).
//
// A dialog in short:
//
//   class CTolDlg : public CRyUiDialog {
//    public:
//     CTolDlg() : CRyUiDialog(251) { onClicked(1010, &CTolDlg::OnReset); }
//     double m_tolerance = 1e-6;
//     int m_ignoreLayer = 0;
//    protected:
//     void DoDataExchange(CDataExchange* pDX) override {
//       DDX_Text(pDX, 1001, m_tolerance);
//       DDX_Check(pDX, 1002, m_ignoreLayer);
//     }
//     void OnReset() { SetDlgItemText(1001, L"0.000001"); }
//   };
//   CTolDlg dialog;
//   if (dialog.DoModal() == IDOK) ...
#pragma once

#include "RyDialog.h"
#include "RyUiStdDialogs.h"
#include "RyWnd.h"
