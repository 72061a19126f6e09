// The dialog front end of the host: what shows dialogs, message boxes, file
// and colour dialogs to the user. The console driver (the default) shows
// them on the command line and reads the replies there; a graphical front
// end replaces it with setDialogDriver, without the module noticing.
// DialogAccess is how a front end acts on a dialog as the user would: it
// changes a control and sends the notifications a screen would send.
#pragma once

#include <vector>

#include "RyDialogs.h"
#include "dialogs/Window.h"

namespace ryhost {

struct FileRequest {
  OdString caption;
  CNavFilterArray filters;
  bool creatingFile = false;
  bool confirmReplace = false;
  bool previewPresent = false;
  OdString initialFileName;
  OdString initialFolder;
};

class RyDialogDriver {
 public:
  virtual ~RyDialogDriver() = default;
  // Runs a modal dialog, whose window is made and initialised, until it ends
  // (RyWindow::ended); the caller then destroys the window.
  virtual void showModal(CDialog& dialog) = 0;
  // A modeless dialog became visible, or was hidden or destroyed.
  virtual void modelessShown(CDialog& dialog) = 0;
  virtual void modelessHidden(CDialog& dialog) = 0;
  // Returns the button pressed (IDOK, IDCANCEL, IDYES...).
  virtual int messageBox(const OdString& text, const OdString& caption, UINT type) = 0;
  // True with the path chosen (absolute); false when cancelled.
  virtual bool chooseFile(const FileRequest& request, OdString& path) = 0;
  // RTNORM with the colour chosen in color, or RTCAN.
  virtual int chooseColor(OdCmColor& color, bool allowMetaColor, const OdCmColor& layerColor, int tabs) = 0;
  virtual CView* drawingView() { return nullptr; }
};

// The driver in use: the console driver unless one was set.
RyDialogDriver& dialogDriver();
// Replaces the driver (null: the console driver again).
void setDialogDriver(RyDialogDriver* driver);

// Reads a colour as the user types it: "1".."255", "BYLAYER", "BYBLOCK",
// "r,g,b" or a colour name; false with the reason when it is none, or a kind not allowed.
bool parseColorReply(const OdString& text, bool allowMetaColor, bool allowTrueColor, OdCmColor& color,
                     OdString& reason);
// The choices parseColorReply accepts, for a prompt ("1-255, BYLAYER, BYBLOCK, r,g,b").
OdString colorChoices(bool allowMetaColor, bool allowTrueColor);

// The caption a message box of the toolkit itself shows.
inline const wchar_t* const kToolkitCaption = L"ryad";

class DialogAccess {
 public:
  static RyWindow* window(const CWnd& wnd) { return wnd.m_hWnd; }
  // The user's acts on a control. Each returns an empty text when done,
  // otherwise why the control refused (no such control, hidden, disabled,
  // not of a kind that does this).
  // Presses a push button, toggles a check box, chooses a radio button,
  // opens a colour button's colour dialog. IDOK and IDCANCEL work without a control.
  static OdString press(CDialog& dialog, int id);
  // Types the text into an edit box or a combo box, or sets a colour button's colour ("1".."255",
  // "r,g,b"...).
  static OdString type(CDialog& dialog, int id, const OdString& text);
  // Selects list items (exactly these; several only in a multiple-selection list).
  static OdString select(CDialog& dialog, int id, const std::vector<int>& indexes);
  static OdString doubleClick(CDialog& dialog, int id, int index);
  // Enter: presses the default button.
  static OdString pressDefault(CDialog& dialog);

  // Sends a notification of a control to its dialog's handler (IDOK and
  // IDCANCEL clicks without a handler go to OnOK / OnCancel).
  static void notify(CWnd& dialog, int id, RyNotify notify);
  // A notification caused by the program (EN_CHANGE of SetWindowText).
  static void notifyFrom(RyWindow* control, RyNotify notify);
};

}  // namespace ryhost
