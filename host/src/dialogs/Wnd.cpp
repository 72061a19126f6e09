// Windows and controls: every call reads or changes the window's state; a
// call on an object without a window does nothing and returns the classic
// error value.
#include <algorithm>
#include <cstdint>
#include <cwchar>

#include "dialogs/DialogDriver.h"
#include "dialogs/Window.h"

using ryhost::DialogAccess;
using Kind = RyWindow::Kind;

namespace {

int copyText(const OdString& text, LPTSTR buffer, int size) {
  if (!buffer || size <= 0) return 0;
  const int length = std::min(text.getLength(), size - 1);
  std::wmemcpy(buffer, text.c_str(), static_cast<size_t>(length));
  buffer[length] = 0;
  return length;
}

bool validIndex(const RyWindow* list, int index) {
  return list && index >= 0 && index < static_cast<int>(list->items.size());
}

RyWindow::Item* itemAt(RyWindow* list, int index) {
  return validIndex(list, index) ? &list->items[static_cast<size_t>(index)] : nullptr;
}

// Inserts an item, keeping the selected item or caret on the same item.
int insertItem(RyWindow* list, int index, const OdString& text) {
  list->items.insert(list->items.begin() + index, RyWindow::Item{text, {}, 0, false});
  if (list->current >= index) ++list->current;
  return index;
}

int deleteItem(RyWindow* list, int index) {
  list->items.erase(list->items.begin() + index);
  if (list->current == index)
    list->current = -1;
  else if (list->current > index)
    --list->current;
  return static_cast<int>(list->items.size());
}

// ---- The item list of list boxes and combo boxes: both answer the same
// calls alike, each with its own error value (LB_ERR, CB_ERR).

OdString textOf(LPCTSTR text) { return OdString(text ? text : L""); }

int addItem(RyWindow* list, LPCTSTR text, int error) {
  if (!list) return error;
  const OdString value = textOf(text);
  return insertItem(list, list->sorted ? ryhost::sortedIndex(*list, value) : static_cast<int>(list->items.size()),
                    value);
}

// At an index, or at the end for -1.
int insertItemAt(RyWindow* list, int index, LPCTSTR text, int error) {
  if (!list || index > static_cast<int>(list->items.size())) return error;
  return insertItem(list, index < 0 ? static_cast<int>(list->items.size()) : index, textOf(text));
}

int removeItem(RyWindow* list, UINT index, int error) {
  return validIndex(list, static_cast<int>(index)) ? deleteItem(list, static_cast<int>(index)) : error;
}

int itemText(RyWindow* list, int index, CString& text, int error) {
  const RyWindow::Item* item = itemAt(list, index);
  if (!item) return error;
  text = item->text;
  return text.getLength();
}

int itemText(RyWindow* list, int index, LPTSTR buffer, int error) {
  const RyWindow::Item* item = itemAt(list, index);
  return item ? copyText(item->text, buffer, item->text.getLength() + 1) : error;
}

int itemTextLength(RyWindow* list, int index, int error) {
  const RyWindow::Item* item = itemAt(list, index);
  return item ? item->text.getLength() : error;
}

int findText(const RyWindow* list, int start, LPCTSTR text, bool exact, int error) {
  return list ? ryhost::findItem(*list, start, textOf(text), exact) : error;
}

DWORD_PTR itemData(RyWindow* list, int index, int error) {
  const RyWindow::Item* item = itemAt(list, index);
  return item ? item->data : static_cast<DWORD_PTR>(error);
}

int setItemData(RyWindow* list, int index, DWORD_PTR data, int error, int okay) {
  RyWindow::Item* item = itemAt(list, index);
  if (!item) return error;
  item->data = data;
  return okay;
}

// Shows the selected item's text in a combo box's edit part.
void showSelection(RyWindow* combo) {
  const RyWindow::Item* item = itemAt(combo, combo->current);
  combo->text = item ? item->text : OdString();
}

}  // namespace

// ---------------------------------------------------------------- CWnd

CWnd::~CWnd() {
  if (m_hWnd) m_hWnd->detach(this);
}

RyWindow* CWnd::child(int id) const { return m_hWnd ? m_hWnd->findChild(id) : nullptr; }

int CWnd::GetDlgCtrlID() const { return m_hWnd ? m_hWnd->id : 0; }

CWnd* CWnd::GetParent() const {
  if (!m_hWnd) return nullptr;
  if (m_hWnd->kind == Kind::kDialog) return m_hWnd->owner;
  return m_hWnd->parent ? m_hWnd->parent->dialog : nullptr;
}

void CWnd::SetWindowText(LPCTSTR text) {
  RyWindow* window = m_hWnd;
  if (!window) return;
  const OdString value(text ? text : L"");
  if (window->kind == Kind::kComboBox && window->dropList) {
    // A list-only combo box shows one of its items or nothing.
    window->selectOnly(ryhost::findItem(*window, -1, value, true));
    showSelection(window);
    return;
  }
  window->text = value;
  // An edit box tells its dialog of every change, also of the program's own.
  if (window->kind == Kind::kEdit) DialogAccess::notifyFrom(window, RyNotify::kEditChange);
}

void CWnd::GetWindowText(CString& text) const { text = m_hWnd ? m_hWnd->text : OdString(); }

int CWnd::GetWindowText(LPTSTR buffer, int size) const {
  return copyText(m_hWnd ? m_hWnd->text : OdString(), buffer, size);
}

int CWnd::GetWindowTextLength() const { return m_hWnd ? m_hWnd->text.getLength() : 0; }

BOOL CWnd::EnableWindow(BOOL enable) {
  if (!m_hWnd) return FALSE;
  const BOOL wasDisabled = m_hWnd->enabled ? FALSE : TRUE;
  m_hWnd->enabled = enable != FALSE;
  return wasDisabled;
}

BOOL CWnd::IsWindowEnabled() const { return m_hWnd && m_hWnd->enabled ? TRUE : FALSE; }

BOOL CWnd::ShowWindow(int command) {
  RyWindow* window = m_hWnd;
  if (!window) return FALSE;
  const BOOL wasVisible = window->visible ? TRUE : FALSE;
  const bool show = command != SW_HIDE;
  if (window->visible == show) return wasVisible;
  window->visible = show;
  // A modeless dialog appears on (or leaves) the front end.
  if (window->kind == Kind::kDialog && !window->modal && window->dialog) {
    if (show)
      ryhost::dialogDriver().modelessShown(*window->dialog);
    else
      ryhost::dialogDriver().modelessHidden(*window->dialog);
  }
  return wasVisible;
}

BOOL CWnd::IsWindowVisible() const { return m_hWnd && m_hWnd->visible ? TRUE : FALSE; }

BOOL CWnd::DestroyWindow() {
  RyWindow* window = m_hWnd;
  if (!window || !window->parent) return FALSE;
  auto& siblings = window->parent->children;
  std::erase_if(siblings, [&](const std::unique_ptr<RyWindow>& w) { return w.get() == window; });
  return TRUE;
}

void CWnd::MoveWindow(int x, int y, int width, int height, BOOL) {
  if (m_hWnd) m_hWnd->rect = RECT{x, y, x + width, y + height};
}

void CWnd::MoveWindow(LPCRECT rect, BOOL repaint) {
  if (rect) MoveWindow(rect->left, rect->top, rect->right - rect->left, rect->bottom - rect->top, repaint);
}

BOOL CWnd::SetWindowPos(const CWnd*, int x, int y, int width, int height, UINT flags) {
  if (!m_hWnd) return FALSE;
  RECT& rect = m_hWnd->rect;
  const long oldWidth = rect.right - rect.left, oldHeight = rect.bottom - rect.top;
  if (!(flags & SWP_NOMOVE)) {
    rect.left = x;
    rect.top = y;
  }
  rect.right = rect.left + ((flags & SWP_NOSIZE) ? oldWidth : width);
  rect.bottom = rect.top + ((flags & SWP_NOSIZE) ? oldHeight : height);
  return TRUE;
}

void CWnd::GetWindowRect(LPRECT rect) const {
  if (rect) *rect = m_hWnd ? m_hWnd->rect : RECT{};
}

void CWnd::GetClientRect(LPRECT rect) const {
  if (!rect) return;
  *rect = RECT{};
  if (m_hWnd) {
    rect->right = m_hWnd->rect.right - m_hWnd->rect.left;
    rect->bottom = m_hWnd->rect.bottom - m_hWnd->rect.top;
  }
}

CWnd* CWnd::SetFocus() { return nullptr; }

CWnd* CWnd::GetDlgItem(int id) const {
  RyWindow* control = child(id);
  return control ? control->object.get() : nullptr;
}

void CWnd::SetDlgItemText(int id, LPCTSTR text) {
  if (CWnd* control = GetDlgItem(id)) control->SetWindowText(text);
}

int CWnd::GetDlgItemText(int id, CString& text) const {
  const RyWindow* control = child(id);
  text = control ? control->text : OdString();
  return text.getLength();
}

int CWnd::GetDlgItemText(int id, LPTSTR buffer, int size) const {
  const RyWindow* control = child(id);
  return copyText(control ? control->text : OdString(), buffer, size);
}

UINT CWnd::GetDlgItemInt(int id, BOOL* translated, BOOL isSigned) const {
  if (translated) *translated = FALSE;
  const RyWindow* control = child(id);
  if (!control) return 0;
  OdString text = control->text;
  text.trimLeft().trimRight();
  if (!isSigned && text.left(1) == L"-") return 0;
  long long value = 0;
  if (!ryhost::parseDialogInteger(text, isSigned ? INT32_MIN : 0, isSigned ? INT32_MAX : UINT32_MAX, value)) return 0;
  if (translated) *translated = TRUE;
  return static_cast<UINT>(value);
}

void CWnd::SetDlgItemInt(int id, UINT value, BOOL isSigned) {
  OdString text;
  if (isSigned)
    text.format(L"%d", static_cast<int>(value));
  else
    text.format(L"%u", value);
  SetDlgItemText(id, text);
}

void CWnd::CheckDlgButton(int id, UINT check) {
  if (RyWindow* control = child(id)) control->check = static_cast<int>(check);
}

UINT CWnd::IsDlgButtonChecked(int id) const {
  const RyWindow* control = child(id);
  return control ? static_cast<UINT>(control->check) : 0;
}

void CWnd::CheckRadioButton(int firstId, int lastId, int checkId) {
  if (!m_hWnd) return;
  for (const auto& control : m_hWnd->children) {
    if (control->id >= firstId && control->id <= lastId)
      control->check = control->id == checkId ? BST_CHECKED : BST_UNCHECKED;
  }
}

int CWnd::GetCheckedRadioButton(int firstId, int lastId) const {
  if (!m_hWnd) return 0;
  for (const auto& control : m_hWnd->children) {
    if (control->id >= firstId && control->id <= lastId && control->check == BST_CHECKED) return control->id;
  }
  return 0;
}

void CWnd::onNotify(int id, RyNotify notify, std::function<void()> handler) {
  for (auto& entry : m_handlers) {
    if (entry.id == id && entry.notify == notify) {
      entry.call = std::move(handler);
      return;
    }
  }
  m_handlers.push_back(Handler{id, notify, std::move(handler)});
}

// ---------------------------------------------------------------- edit boxes and buttons

void CEdit::SetLimitText(UINT most) {
  if (m_hWnd) m_hWnd->limit = most;
}

UINT CEdit::GetLimitText() const { return m_hWnd ? m_hWnd->limit : 0; }

BOOL CEdit::SetReadOnly(BOOL readOnly) {
  if (!m_hWnd) return FALSE;
  m_hWnd->readOnly = readOnly != FALSE;
  return TRUE;
}

int CButton::GetCheck() const { return m_hWnd ? m_hWnd->check : 0; }

void CButton::SetCheck(int check) {
  if (m_hWnd) m_hWnd->check = check;
}

// ---------------------------------------------------------------- list boxes

int CListBox::GetCount() const { return m_hWnd ? static_cast<int>(m_hWnd->items.size()) : LB_ERR; }

int CListBox::AddString(LPCTSTR text) { return addItem(m_hWnd, text, LB_ERR); }

int CListBox::InsertString(int index, LPCTSTR text) { return insertItemAt(m_hWnd, index, text, LB_ERR); }

int CListBox::DeleteString(UINT index) { return removeItem(m_hWnd, index, LB_ERR); }

void CListBox::ResetContent() {
  if (!m_hWnd) return;
  m_hWnd->items.clear();
  m_hWnd->current = -1;
}

int CListBox::GetCurSel() const { return m_hWnd && m_hWnd->current >= 0 ? m_hWnd->current : LB_ERR; }

int CListBox::SetCurSel(int index) {
  if (!m_hWnd || m_hWnd->multiple) return LB_ERR;
  if (index == -1) {
    m_hWnd->selectOnly(-1);
    return LB_ERR;  // as classically: clearing the selection "fails"
  }
  if (!validIndex(m_hWnd, index)) return LB_ERR;
  m_hWnd->selectOnly(index);
  return index;
}

int CListBox::GetSel(int index) const {
  const RyWindow::Item* item = itemAt(m_hWnd, index);
  return item ? (item->selected ? 1 : 0) : LB_ERR;
}

int CListBox::SetSel(int index, BOOL select) {
  if (!m_hWnd || !m_hWnd->multiple) return LB_ERR;
  if (index == -1) {
    for (auto& item : m_hWnd->items) item.selected = select != FALSE;
    return LB_OKAY;
  }
  RyWindow::Item* item = itemAt(m_hWnd, index);
  if (!item) return LB_ERR;
  item->selected = select != FALSE;
  m_hWnd->current = index;
  return LB_OKAY;
}

int CListBox::GetSelCount() const { return m_hWnd && m_hWnd->multiple ? m_hWnd->selectedCount() : LB_ERR; }

int CListBox::GetSelItems(int most, int* indexes) const {
  if (!m_hWnd || !m_hWnd->multiple || !indexes) return LB_ERR;
  int written = 0;
  for (int i = 0; i < GetCount() && written < most; ++i) {
    if (m_hWnd->items[static_cast<size_t>(i)].selected) indexes[written++] = i;
  }
  return written;
}

int CListBox::GetText(int index, CString& text) const { return itemText(m_hWnd, index, text, LB_ERR); }

int CListBox::GetText(int index, LPTSTR buffer) const { return itemText(m_hWnd, index, buffer, LB_ERR); }

int CListBox::GetTextLen(int index) const { return itemTextLength(m_hWnd, index, LB_ERR); }

int CListBox::FindString(int start, LPCTSTR text) const { return findText(m_hWnd, start, text, false, LB_ERR); }

int CListBox::FindStringExact(int start, LPCTSTR text) const { return findText(m_hWnd, start, text, true, LB_ERR); }

int CListBox::SelectString(int start, LPCTSTR text) {
  const int index = FindString(start, text);
  if (index < 0 || m_hWnd->multiple) return LB_ERR;
  m_hWnd->selectOnly(index);
  return index;
}

DWORD_PTR CListBox::GetItemData(int index) const { return itemData(m_hWnd, index, LB_ERR); }

int CListBox::SetItemData(int index, DWORD_PTR data) { return setItemData(m_hWnd, index, data, LB_ERR, LB_OKAY); }

// ---------------------------------------------------------------- combo boxes

int CComboBox::GetCount() const { return m_hWnd ? static_cast<int>(m_hWnd->items.size()) : CB_ERR; }

int CComboBox::AddString(LPCTSTR text) { return addItem(m_hWnd, text, CB_ERR); }

int CComboBox::InsertString(int index, LPCTSTR text) { return insertItemAt(m_hWnd, index, text, CB_ERR); }

int CComboBox::DeleteString(UINT index) { return removeItem(m_hWnd, index, CB_ERR); }

void CComboBox::ResetContent() {
  if (!m_hWnd) return;
  m_hWnd->items.clear();
  m_hWnd->current = -1;
  m_hWnd->text.empty();
}

int CComboBox::GetCurSel() const { return m_hWnd && m_hWnd->current >= 0 ? m_hWnd->current : CB_ERR; }

int CComboBox::SetCurSel(int index) {
  if (!m_hWnd || (index != -1 && !validIndex(m_hWnd, index))) return CB_ERR;
  m_hWnd->selectOnly(index);
  showSelection(m_hWnd);
  return index == -1 ? CB_ERR : index;
}

int CComboBox::GetLBText(int index, CString& text) const { return itemText(m_hWnd, index, text, CB_ERR); }

int CComboBox::GetLBText(int index, LPTSTR buffer) const { return itemText(m_hWnd, index, buffer, CB_ERR); }

int CComboBox::GetLBTextLen(int index) const { return itemTextLength(m_hWnd, index, CB_ERR); }

int CComboBox::FindString(int start, LPCTSTR text) const { return findText(m_hWnd, start, text, false, CB_ERR); }

int CComboBox::FindStringExact(int start, LPCTSTR text) const { return findText(m_hWnd, start, text, true, CB_ERR); }

int CComboBox::SelectString(int start, LPCTSTR text) {
  const int index = FindString(start, text);
  if (index < 0) return CB_ERR;
  return SetCurSel(index);
}

DWORD_PTR CComboBox::GetItemData(int index) const { return itemData(m_hWnd, index, CB_ERR); }

int CComboBox::SetItemData(int index, DWORD_PTR data) { return setItemData(m_hWnd, index, data, CB_ERR, CB_OKAY); }

// ---------------------------------------------------------------- list views

int CListCtrl::InsertColumn(int column, LPCTSTR heading, int format, int width, int) {
  if (!m_hWnd || column < 0) return -1;
  auto& columns = m_hWnd->columns;
  column = std::min(column, static_cast<int>(columns.size()));
  columns.insert(columns.begin() + column,
                 RyWindow::Column{OdString(heading ? heading : L""), format, width});
  return column;
}

BOOL CListCtrl::DeleteColumn(int column) {
  if (!m_hWnd || column < 0 || column >= GetColumnCount()) return FALSE;
  m_hWnd->columns.erase(m_hWnd->columns.begin() + column);
  if (column > 0) {
    for (auto& item : m_hWnd->items) {
      if (static_cast<int>(item.cells.size()) >= column) item.cells.erase(item.cells.begin() + (column - 1));
    }
  }
  return TRUE;
}

int CListCtrl::GetColumnCount() const { return m_hWnd ? static_cast<int>(m_hWnd->columns.size()) : 0; }

int CListCtrl::InsertItem(int item, LPCTSTR text) {
  if (!m_hWnd || item < 0) return -1;
  return insertItem(m_hWnd, std::min(item, GetItemCount()), OdString(text ? text : L""));
}

BOOL CListCtrl::SetItemText(int item, int subItem, LPCTSTR text) {
  RyWindow::Item* entry = itemAt(m_hWnd, item);
  if (!entry || subItem < 0 || subItem >= std::max(1, GetColumnCount())) return FALSE;
  const OdString value(text ? text : L"");
  if (subItem == 0) {
    entry->text = value;
  } else {
    if (static_cast<int>(entry->cells.size()) < subItem) entry->cells.resize(static_cast<size_t>(subItem));
    entry->cells[static_cast<size_t>(subItem - 1)] = value;
  }
  return TRUE;
}

CString CListCtrl::GetItemText(int item, int subItem) const {
  const RyWindow::Item* entry = itemAt(m_hWnd, item);
  if (!entry || subItem < 0) return CString();
  if (subItem == 0) return entry->text;
  return subItem <= static_cast<int>(entry->cells.size()) ? entry->cells[static_cast<size_t>(subItem - 1)]
                                                          : CString();
}

int CListCtrl::GetItemCount() const { return m_hWnd ? static_cast<int>(m_hWnd->items.size()) : 0; }

BOOL CListCtrl::DeleteItem(int item) {
  if (!validIndex(m_hWnd, item)) return FALSE;
  deleteItem(m_hWnd, item);
  return TRUE;
}

BOOL CListCtrl::DeleteAllItems() {
  if (!m_hWnd) return FALSE;
  m_hWnd->items.clear();
  m_hWnd->current = -1;
  return TRUE;
}

int CListCtrl::GetNextItem(int start, int flags) const {
  for (int index = std::max(start + 1, 0); index < GetItemCount(); ++index) {
    const bool selected = m_hWnd->items[static_cast<size_t>(index)].selected;
    if ((flags & LVNI_SELECTED) && !selected) continue;
    if ((flags & LVNI_FOCUSED) && index != m_hWnd->current) continue;
    return index;
  }
  return -1;
}

BOOL CListCtrl::SetItemState(int item, UINT state, UINT mask) {
  if (!m_hWnd || (item != -1 && !validIndex(m_hWnd, item))) return FALSE;
  const int first = item == -1 ? 0 : item, last = item == -1 ? GetItemCount() - 1 : item;
  for (int index = first; index <= last; ++index) {
    if (mask & LVIS_SELECTED) {
      const bool select = (state & LVIS_SELECTED) != 0;
      // A single-selection list keeps at most one item selected.
      if (select && !m_hWnd->multiple) {
        for (auto& other : m_hWnd->items) other.selected = false;
      }
      m_hWnd->items[static_cast<size_t>(index)].selected = select;
    }
    if (mask & LVIS_FOCUSED) {
      if (state & LVIS_FOCUSED)
        m_hWnd->current = index;
      else if (m_hWnd->current == index)
        m_hWnd->current = -1;
    }
  }
  return TRUE;
}

UINT CListCtrl::GetItemState(int item, UINT mask) const {
  const RyWindow::Item* entry = itemAt(m_hWnd, item);
  if (!entry) return 0;
  UINT state = 0;
  if (entry->selected) state |= LVIS_SELECTED;
  if (m_hWnd->current == item) state |= LVIS_FOCUSED;
  return state & mask;
}

UINT CListCtrl::GetSelectedCount() const { return m_hWnd ? static_cast<UINT>(m_hWnd->selectedCount()) : 0; }

// A position is the selected item's index plus one (null: no more).
POSITION CListCtrl::GetFirstSelectedItemPosition() const {
  const int first = GetNextItem(-1, LVNI_SELECTED);
  return first < 0 ? nullptr : reinterpret_cast<POSITION>(static_cast<std::uintptr_t>(first + 1));
}

int CListCtrl::GetNextSelectedItem(POSITION& position) const {
  const int index = static_cast<int>(reinterpret_cast<std::uintptr_t>(position)) - 1;
  const int next = GetNextItem(index, LVNI_SELECTED);
  position = next < 0 ? nullptr : reinterpret_cast<POSITION>(static_cast<std::uintptr_t>(next + 1));
  return index;
}

DWORD_PTR CListCtrl::GetItemData(int item) const {
  const RyWindow::Item* entry = itemAt(m_hWnd, item);
  return entry ? entry->data : 0;
}

BOOL CListCtrl::SetItemData(int item, DWORD_PTR data) {
  RyWindow::Item* entry = itemAt(m_hWnd, item);
  if (!entry) return FALSE;
  entry->data = data;
  return TRUE;
}

DWORD CListCtrl::SetExtendedStyle(DWORD style) {
  if (!m_hWnd) return 0;
  const DWORD previous = m_hWnd->extendedStyle;
  m_hWnd->extendedStyle = style;
  return previous;
}

DWORD CListCtrl::GetExtendedStyle() const { return m_hWnd ? m_hWnd->extendedStyle : 0; }

// ---------------------------------------------------------------- colour buttons

OdCmColor CRyColorButton::GetColor() const { return m_hWnd ? m_hWnd->color : OdCmColor(); }

void CRyColorButton::SetColor(const OdCmColor& color) {
  if (m_hWnd) m_hWnd->color = color;
}

COLORREF CRyColorButton::GetRGB() const {
  if (!m_hWnd) return 0;
  const OdCmColor& color = m_hWnd->color;
  if (color.isByColor()) return RGB(color.red(), color.green(), color.blue());
  if (!color.isByACI()) return 0;
  const OdUInt32 rgb = OdCmEntityColor::lookUpRGB(color.colorIndex());  // 0x00RRGGBB
  return RGB((rgb >> 16) & 0xFF, (rgb >> 8) & 0xFF, rgb & 0xFF);
}

void CRyColorButton::SetRGB(COLORREF rgb) {
  if (m_hWnd) m_hWnd->color.setRGB(GetRValue(rgb), GetGValue(rgb), GetBValue(rgb));
}

void CRyColorButton::SetAllowMetaColor(bool allow) {
  if (m_hWnd) m_hWnd->allowMetaColor = allow;
}
