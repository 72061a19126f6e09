// Windows and controls of the host's dialog toolkit, in their classic
// shapes: a window (CWnd) reaches the controls of its dialog by number, and
// each control kind has its own class (CStatic, CEdit, CButton, CListBox,
// CComboBox, CListCtrl, CRyColorButton). Controls exist while their dialog
// is shown (from OnInitDialog to the end of DoModal, or from Create to
// DestroyWindow); a call on a control that does not exist does nothing and
// returns the classic error value. Include RyDialogs.h for the whole toolkit.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "CmColor.h"
#include "OdString.h"
#include "RyWindows.h"

// A window's state lives in the host; a handle points to it while the window exists.
struct RyWindow;
using HWND = RyWindow*;
using HICON = void*;
using INT_PTR = std::intptr_t;
using DWORD_PTR = std::uintptr_t;
using LPCTSTR = const wchar_t*;
using LPTSTR = wchar_t*;
using TCHAR = wchar_t;
// Strings of the toolkit are the platform's strings.
using CString = OdString;
using COLORREF = DWORD;
// An iterator over the selected items of a list view (see GetFirstSelectedItemPosition).
struct RyPosition;
using POSITION = RyPosition*;

#ifndef _T
#define _T(text) L##text
#endif

#ifndef RGB
#define RGB(r, g, b)                                                                \
  (static_cast<COLORREF>((static_cast<DWORD>(static_cast<unsigned char>(r))) |      \
                         (static_cast<DWORD>(static_cast<unsigned char>(g)) << 8) | \
                         (static_cast<DWORD>(static_cast<unsigned char>(b)) << 16)))
#define GetRValue(rgb) (static_cast<unsigned char>((rgb)&0xFF))
#define GetGValue(rgb) (static_cast<unsigned char>(((rgb) >> 8) & 0xFF))
#define GetBValue(rgb) (static_cast<unsigned char>(((rgb) >> 16) & 0xFF))
#endif

// Dialog results and the buttons that give them.
#ifndef IDOK
#define IDOK 1
#define IDCANCEL 2
#define IDABORT 3
#define IDRETRY 4
#define IDIGNORE 5
#define IDYES 6
#define IDNO 7
#endif

#ifndef SW_HIDE
#define SW_HIDE 0
#define SW_SHOWNORMAL 1
#define SW_SHOW 5
#endif

#ifndef BST_UNCHECKED
#define BST_UNCHECKED 0
#define BST_CHECKED 1
#define BST_INDETERMINATE 2
#endif

#ifndef LB_ERR
#define LB_OKAY 0
#define LB_ERR (-1)
#define CB_OKAY 0
#define CB_ERR (-1)
#endif

// List views: item states, GetNextItem flags, column formats, extended styles (kept, not drawn).
#ifndef LVIS_SELECTED
#define LVIS_FOCUSED 0x0001
#define LVIS_SELECTED 0x0002
#define LVNI_ALL 0x0000
#define LVNI_FOCUSED 0x0001
#define LVNI_SELECTED 0x0002
#define LVCFMT_LEFT 0x0000
#define LVCFMT_RIGHT 0x0001
#define LVCFMT_CENTER 0x0002
#define LVS_EX_GRIDLINES 0x0001
#define LVS_EX_CHECKBOXES 0x0004
#define LVS_EX_FULLROWSELECT 0x0020
#endif

#ifndef SWP_NOSIZE
#define SWP_NOSIZE 0x0001
#define SWP_NOMOVE 0x0002
#define SWP_NOZORDER 0x0004
#endif

struct RECT {
  long left = 0, top = 0, right = 0, bottom = 0;
};
using LPRECT = RECT*;
using LPCRECT = const RECT*;

struct POINT {
  long x = 0, y = 0;
};

class CPoint : public POINT {
 public:
  CPoint() = default;
  CPoint(long px, long py) {
    x = px;
    y = py;
  }
};

class CRect : public RECT {
 public:
  CRect() = default;
  CRect(long l, long t, long r, long b) {
    left = l;
    top = t;
    right = r;
    bottom = b;
  }
  long Width() const { return right - left; }
  long Height() const { return bottom - top; }
  CPoint TopLeft() const { return CPoint(left, top); }
  CPoint BottomRight() const { return CPoint(right, bottom); }
  void OffsetRect(long dx, long dy) {
    left += dx;
    right += dx;
    top += dy;
    bottom += dy;
  }
  operator LPRECT() { return this; }
  operator LPCRECT() const { return this; }
};

namespace ryhost {
class DialogAccess;
}

// The notifications a dialog can handle, by control number.
enum class RyNotify {
  kClicked,     // a push button pressed, a check box toggled, a radio button chosen, a colour chosen
  kSelChange,   // a list box, combo box or list view changed its selection
  kDblClick,    // an item of a list box or list view double-clicked
  kEditChange,  // the text of an edit box (also when set by the program) or a combo box's edit part changed
};

class RYAD_API CWnd {
 public:
  CWnd() = default;
  virtual ~CWnd();
  CWnd(const CWnd&) = delete;
  CWnd& operator=(const CWnd&) = delete;

  // The window's state while it exists, else null.
  HWND m_hWnd = nullptr;
  HWND GetSafeHwnd() const { return m_hWnd; }

  // ---- this window
  int GetDlgCtrlID() const;
  CWnd* GetParent() const;
  void SetWindowText(LPCTSTR text);
  void GetWindowText(CString& text) const;
  // Copies the text (cut to size - 1, terminated); returns its length.
  int GetWindowText(LPTSTR buffer, int size) const;
  int GetWindowTextLength() const;
  // Both return the previous state: TRUE when the window was disabled / visible.
  BOOL EnableWindow(BOOL enable = TRUE);
  BOOL IsWindowEnabled() const;
  BOOL ShowWindow(int command);
  BOOL IsWindowVisible() const;
  virtual BOOL DestroyWindow();
  // Positions are kept for a front end that draws them; the console does not show them.
  void MoveWindow(int x, int y, int width, int height, BOOL repaint = TRUE);
  void MoveWindow(LPCRECT rect, BOOL repaint = TRUE);
  BOOL SetWindowPos(const CWnd* insertAfter, int x, int y, int width, int height, UINT flags);
  void GetWindowRect(LPRECT rect) const;
  void GetClientRect(LPRECT rect) const;
  CWnd* SetFocus();
  void Invalidate(BOOL erase = TRUE) {}
  void UpdateWindow() {}

  // ---- the controls of this dialog, by number
  // The control's object, of its kind's class (cast it as usual); null when there is none.
  CWnd* GetDlgItem(int id) const;
  void SetDlgItemText(int id, LPCTSTR text);
  int GetDlgItemText(int id, CString& text) const;
  int GetDlgItemText(int id, LPTSTR buffer, int size) const;
  UINT GetDlgItemInt(int id, BOOL* translated = nullptr, BOOL isSigned = TRUE) const;
  void SetDlgItemInt(int id, UINT value, BOOL isSigned = TRUE);
  void CheckDlgButton(int id, UINT check);
  UINT IsDlgButtonChecked(int id) const;
  // Checks checkId and clears the other radio buttons numbered firstId..lastId.
  void CheckRadioButton(int firstId, int lastId, int checkId);
  // The checked button numbered firstId..lastId, 0 when none is.
  int GetCheckedRadioButton(int firstId, int lastId) const;

  // ---- handlers of this dialog's controls (register them in the constructor)
  // A later registration for the same control and notification replaces the earlier one.
  template <class T>
  void onClicked(int id, void (T::*handler)()) {
    onNotify(id, RyNotify::kClicked, memberHandler(handler));
  }
  template <class T>
  void onSelChange(int id, void (T::*handler)()) {
    onNotify(id, RyNotify::kSelChange, memberHandler(handler));
  }
  template <class T>
  void onDblClick(int id, void (T::*handler)()) {
    onNotify(id, RyNotify::kDblClick, memberHandler(handler));
  }
  template <class T>
  void onEditChange(int id, void (T::*handler)()) {
    onNotify(id, RyNotify::kEditChange, memberHandler(handler));
  }
  void onNotify(int id, RyNotify notify, std::function<void()> handler);

 protected:
  // The control's window inside this dialog's window, or null.
  RyWindow* child(int id) const;

 private:
  template <class T>
  std::function<void()> memberHandler(void (T::*handler)()) {
    return [this, handler] { (static_cast<T*>(this)->*handler)(); };
  }
  struct Handler {
    int id;
    RyNotify notify;
    std::function<void()> call;
  };
  std::vector<Handler> m_handlers;
  friend class ryhost::DialogAccess;
};

// The drawing view of a document (ryedGetRyadDwgView).
class RYAD_API CView : public CWnd {};

class RYAD_API CStatic : public CWnd {};

class RYAD_API CEdit : public CWnd {
 public:
  // The most characters the user may type (0: no limit).
  void SetLimitText(UINT most);
  void LimitText(int most = 0) { SetLimitText(static_cast<UINT>(most)); }
  UINT GetLimitText() const;
  BOOL SetReadOnly(BOOL readOnly = TRUE);
  void SetSel(int start, int end, BOOL noScroll = FALSE) {}
};

// Push buttons, check boxes, radio buttons and group boxes.
class RYAD_API CButton : public CWnd {
 public:
  int GetCheck() const;
  void SetCheck(int check);
};

class RYAD_API CListBox : public CWnd {
 public:
  int GetCount() const;
  // Adds at the end (in order for a SORT list); returns the index.
  int AddString(LPCTSTR text);
  // index -1 adds at the end; returns the index or LB_ERR.
  int InsertString(int index, LPCTSTR text);
  // Returns the count left, or LB_ERR.
  int DeleteString(UINT index);
  void ResetContent();
  // Single selection: the selected item or LB_ERR. Multiple selection: the
  // item last clicked (the caret), or LB_ERR.
  int GetCurSel() const;
  // Single selection only (LB_ERR on a multiple-selection list); -1 clears it.
  int SetCurSel(int index);
  int GetSel(int index) const;
  // Multiple selection: selects or clears one item (index -1: all items).
  int SetSel(int index, BOOL select = TRUE);
  int GetSelCount() const;
  // Fills up to most indexes of selected items; returns how many were written.
  int GetSelItems(int most, int* indexes) const;
  int GetText(int index, CString& text) const;
  int GetText(int index, LPTSTR buffer) const;
  int GetTextLen(int index) const;
  // The first item after start (wrapping; -1: from the top) starting with / equal to the text, letter case
  // ignored.
  int FindString(int start, LPCTSTR text) const;
  int FindStringExact(int start, LPCTSTR text) const;
  int SelectString(int start, LPCTSTR text);
  DWORD_PTR GetItemData(int index) const;
  int SetItemData(int index, DWORD_PTR data);
};

class RYAD_API CComboBox : public CWnd {
 public:
  int GetCount() const;
  int AddString(LPCTSTR text);
  int InsertString(int index, LPCTSTR text);
  int DeleteString(UINT index);
  void ResetContent();
  int GetCurSel() const;
  // Selects an item and shows its text in the edit part; -1 clears both.
  int SetCurSel(int index);
  int GetLBText(int index, CString& text) const;
  int GetLBText(int index, LPTSTR buffer) const;
  int GetLBTextLen(int index) const;
  int FindString(int start, LPCTSTR text) const;
  int FindStringExact(int start, LPCTSTR text) const;
  int SelectString(int start, LPCTSTR text);
  DWORD_PTR GetItemData(int index) const;
  int SetItemData(int index, DWORD_PTR data);
  // The edit part is the window text (GetWindowText / SetWindowText).
};

// A list with columns (report view). Items have a text per column; one or
// more may be selected (one only with the SINGLESEL style).
class RYAD_API CListCtrl : public CWnd {
 public:
  int InsertColumn(int column, LPCTSTR heading, int format = LVCFMT_LEFT, int width = -1, int subItem = -1);
  BOOL DeleteColumn(int column);
  int GetColumnCount() const;
  int InsertItem(int item, LPCTSTR text);
  BOOL SetItemText(int item, int subItem, LPCTSTR text);
  CString GetItemText(int item, int subItem) const;
  int GetItemCount() const;
  BOOL DeleteItem(int item);
  BOOL DeleteAllItems();
  // The next item after start (-1: from the top) that has every state of flags (LVNI_SELECTED, LVNI_FOCUSED);
  // -1 when none.
  int GetNextItem(int start, int flags) const;
  BOOL SetItemState(int item, UINT state, UINT mask);
  UINT GetItemState(int item, UINT mask) const;
  UINT GetSelectedCount() const;
  POSITION GetFirstSelectedItemPosition() const;
  int GetNextSelectedItem(POSITION& position) const;
  DWORD_PTR GetItemData(int item) const;
  BOOL SetItemData(int item, DWORD_PTR data);
  DWORD SetExtendedStyle(DWORD style);
  DWORD GetExtendedStyle() const;
  BOOL EnsureVisible(int item, BOOL partialOk) { return item >= 0 && item < GetItemCount(); }
};

// A button that shows a colour; pressing it opens the colour dialog and
// notifies kClicked when a colour was chosen. BYLAYER and BYBLOCK are
// offered only with the ALLOWMETA style or SetAllowMetaColor(true).
class RYAD_API CRyColorButton : public CButton {
 public:
  OdCmColor GetColor() const;
  void SetColor(const OdCmColor& color);
  // The colour as red, green and blue (a palette colour by its palette value).
  COLORREF GetRGB() const;
  void SetRGB(COLORREF rgb);
  void SetAllowMetaColor(bool allow);
};

// Whether a window still exists.
RYAD_API BOOL IsWindow(HWND window);
