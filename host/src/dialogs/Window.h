// The state of a shown dialog and its controls: what a front end shows and
// what the control classes read and change. A dialog's window owns its
// controls' windows; each window knows the objects whose handle points to it.
#pragma once

#include <memory>
#include <vector>

#include "CmColor.h"
#include "RyDialog.h"
#include "sdk/ResourceLibrary.h"

struct RyWindow {
  enum class Kind {
    kDialog,
    kStatic,
    kEdit,
    kPushButton,
    kCheckBox,
    kRadio,
    kGroupBox,
    kListBox,
    kComboBox,
    kListView,
    kColorButton,
    kOther,  // a kind the toolkit does not know: kept with its text
  };
  struct Item {
    OdString text;
    std::vector<OdString> cells;  // list views: the texts of columns 1..n
    DWORD_PTR data = 0;
    bool selected = false;
  };
  struct Column {
    OdString heading;
    int format = LVCFMT_LEFT;
    int width = -1;
  };

  Kind kind = Kind::kOther;
  OdString kindWord;  // as the template names it
  int id = -1;
  OdString text;   // caption, label or edit text
  OdString label;  // what the user reads beside a control without a label of its own
  RECT rect;
  bool enabled = true, visible = true;
  bool groupStart = false;  // GROUP style: a radio group starts here
  bool isDefault = false;   // DEFBUTTON
  bool readOnly = false, multiple = false, sorted = false, dropList = false, allowMetaColor = false;
  UINT limit = 0;
  int check = BST_UNCHECKED;
  std::vector<Item> items;
  std::vector<Column> columns;
  int current = -1;  // the selected item of a single-selection list, else the caret
  DWORD extendedStyle = 0;
  OdCmColor color;

  RyWindow* parent = nullptr;
  std::vector<std::unique_ptr<RyWindow>> children;
  // The toolkit's own object for a control (GetDlgItem gives it).
  std::unique_ptr<CWnd> object;
  // Every object whose m_hWnd points here (the toolkit's and DDX_Control members).
  std::vector<CWnd*> attached;
  bool notifying = false;  // a handler of this control runs: no second notification from inside it

  // ---- dialogs only
  CDialog* dialog = nullptr;
  CWnd* owner = nullptr;  // the parent window given to the dialog
  UINT templateId = 0;
  bool modal = false;
  bool ended = false;
  int result = IDCANCEL;
  int defaultId = IDOK;

  RyWindow();
  ~RyWindow();
  RyWindow(const RyWindow&) = delete;
  RyWindow& operator=(const RyWindow&) = delete;
  RyWindow* findChild(int controlId) const;
  // The dialog window this window belongs to (itself for a dialog).
  RyWindow* dialogWindow();
  bool isList() const { return kind == Kind::kListBox || kind == Kind::kComboBox || kind == Kind::kListView; }
  bool isButton() const {
    return kind == Kind::kPushButton || kind == Kind::kCheckBox || kind == Kind::kRadio ||
           kind == Kind::kColorButton;
  }
  bool singleSelection() const { return kind == Kind::kComboBox || !multiple; }
  int selectedCount() const;
  void selectOnly(int index);
  void attach(CWnd* object);
  void detach(CWnd* object);
};

namespace ryhost {

// A whole number from a control's text or a typed reply (already trimmed): decimal with an optional
// sign and nothing after it, from minimum to maximum; false when the text is no such number.
bool parseDialogInteger(const OdString& text, long long minimum, long long maximum, long long& value);
// A label without its accelerator marks: "&Name" reads "Name", "&&" reads "&".
OdString plainLabel(const OdString& label);
// Edit boxes and lists are read with the unnumbered text just before them.
bool takesLabelFromBefore(const RyWindow& control);
// A dialog's window made from its template: controls in tab order, each
// with its kind's object.
std::unique_ptr<RyWindow> makeDialogWindow(const DialogTemplate& dialogTemplate, CDialog* dialog);
// The radio buttons of the group that starts at first (first included).
std::vector<RyWindow*> radioGroup(RyWindow* dialog, RyWindow* first);
// The radio buttons of the group a button belongs to.
std::vector<RyWindow*> radioGroupOf(RyWindow* dialog, RyWindow* button);
// The index at which a sorted list puts a new text.
int sortedIndex(const RyWindow& list, const OdString& text);
// Finds an item after start (wrapping; -1 from the top) by prefix or whole text, letter case ignored.
int findItem(const RyWindow& list, int start, const OdString& text, bool exact);

}  // namespace ryhost
