#include "dialogs/Window.h"

#include <algorithm>
#include <unordered_set>

namespace {

// Windows that exist, so that a stale handle can be told from a live one.
std::unordered_set<const RyWindow*>& liveWindows() {
  static std::unordered_set<const RyWindow*> windows;
  return windows;
}

struct KindWord {
  const wchar_t* word;
  RyWindow::Kind kind;
};

constexpr KindWord kKindWords[] = {
    {L"LTEXT", RyWindow::Kind::kStatic},
    {L"RTEXT", RyWindow::Kind::kStatic},
    {L"CTEXT", RyWindow::Kind::kStatic},
    {L"ICON", RyWindow::Kind::kStatic},
    {L"EDIT", RyWindow::Kind::kEdit},
    {L"BUTTON", RyWindow::Kind::kPushButton},
    {L"DEFBUTTON", RyWindow::Kind::kPushButton},
    {L"CHECKBOX", RyWindow::Kind::kCheckBox},
    {L"RADIO", RyWindow::Kind::kRadio},
    {L"GROUPBOX", RyWindow::Kind::kGroupBox},
    {L"LISTBOX", RyWindow::Kind::kListBox},
    {L"COMBOBOX", RyWindow::Kind::kComboBox},
    {L"LISTVIEW", RyWindow::Kind::kListView},
    {L"COLORBUTTON", RyWindow::Kind::kColorButton},
};

RyWindow::Kind kindOf(const OdString& word) {
  for (const auto& entry : kKindWords) {
    if (word == entry.word) return entry.kind;
  }
  return RyWindow::Kind::kOther;
}

// The object GetDlgItem hands out: of the class of the control's kind.
std::unique_ptr<CWnd> objectFor(RyWindow::Kind kind) {
  switch (kind) {
    case RyWindow::Kind::kEdit:
      return std::make_unique<CEdit>();
    case RyWindow::Kind::kPushButton:
    case RyWindow::Kind::kCheckBox:
    case RyWindow::Kind::kRadio:
    case RyWindow::Kind::kGroupBox:
      return std::make_unique<CButton>();
    case RyWindow::Kind::kListBox:
      return std::make_unique<CListBox>();
    case RyWindow::Kind::kComboBox:
      return std::make_unique<CComboBox>();
    case RyWindow::Kind::kListView:
      return std::make_unique<CListCtrl>();
    case RyWindow::Kind::kColorButton:
      return std::make_unique<CRyColorButton>();
    case RyWindow::Kind::kStatic:
      return std::make_unique<CStatic>();
    default:
      return std::make_unique<CWnd>();
  }
}

bool hasStyle(const ryhost::DialogControl& control, const wchar_t* style) {
  return std::any_of(control.styles.begin(), control.styles.end(),
                     [&](const OdString& s) { return s == style; });
}

bool takesItsLabelFromBefore(RyWindow::Kind kind) {
  return kind == RyWindow::Kind::kEdit || kind == RyWindow::Kind::kListBox ||
         kind == RyWindow::Kind::kComboBox || kind == RyWindow::Kind::kListView;
}

std::unique_ptr<RyWindow> makeControl(const ryhost::DialogControl& control, RyWindow* dialog) {
  auto window = std::make_unique<RyWindow>();
  window->kind = kindOf(control.kind);
  window->kindWord = control.kind;
  window->id = control.id;
  window->text = control.label;
  window->label = ryhost::plainLabel(control.label);
  window->rect = RECT{control.x, control.y, control.x + control.width, control.y + control.height};
  window->parent = dialog;
  window->isDefault = control.kind == L"DEFBUTTON";
  window->groupStart = hasStyle(control, L"GROUP");
  window->enabled = !hasStyle(control, L"DISABLED");
  window->visible = !hasStyle(control, L"HIDDEN");
  window->readOnly = hasStyle(control, L"READONLY");
  window->multiple = hasStyle(control, L"MULTIPLE") || hasStyle(control, L"EXTENDED") ||
                     (window->kind == RyWindow::Kind::kListView && !hasStyle(control, L"SINGLESEL"));
  window->sorted = hasStyle(control, L"SORT");
  window->dropList = hasStyle(control, L"DROPDOWNLIST");
  window->allowMetaColor = hasStyle(control, L"ALLOWMETA");
  if (window->kind == RyWindow::Kind::kColorButton) window->color.setColorIndex(7);
  // Edit boxes and lists show their own contents: their template text is the first contents (edits) or
  // nothing.
  if (window->kind != RyWindow::Kind::kEdit && takesItsLabelFromBefore(window->kind)) window->text.empty();
  if (takesItsLabelFromBefore(window->kind)) window->label.empty();
  window->object = objectFor(window->kind);
  window->attach(window->object.get());
  return window;
}

}  // namespace

RyWindow::RyWindow() { liveWindows().insert(this); }

RyWindow::~RyWindow() {
  for (CWnd* object : attached) object->m_hWnd = nullptr;
  children.clear();
  liveWindows().erase(this);
}

RyWindow* RyWindow::findChild(int controlId) const {
  for (const auto& child : children) {
    if (child->id == controlId) return child.get();
  }
  return nullptr;
}

RyWindow* RyWindow::dialogWindow() {
  RyWindow* window = this;
  while (window->kind != Kind::kDialog && window->parent) window = window->parent;
  return window;
}

int RyWindow::selectedCount() const {
  return static_cast<int>(
      std::count_if(items.begin(), items.end(), [](const Item& item) { return item.selected; }));
}

void RyWindow::selectOnly(int index) {
  for (size_t i = 0; i < items.size(); ++i) items[i].selected = static_cast<int>(i) == index;
  current = index >= 0 && index < static_cast<int>(items.size()) ? index : -1;
}

void RyWindow::attach(CWnd* object) {
  if (object->m_hWnd && object->m_hWnd != this) object->m_hWnd->detach(object);
  object->m_hWnd = this;
  if (std::find(attached.begin(), attached.end(), object) == attached.end()) attached.push_back(object);
}

void RyWindow::detach(CWnd* object) {
  std::erase(attached, object);
  if (object->m_hWnd == this) object->m_hWnd = nullptr;
}

BOOL IsWindow(HWND window) { return window && liveWindows().count(window) ? TRUE : FALSE; }

namespace ryhost {

OdString plainLabel(const OdString& label) {
  OdString result;
  for (int i = 0; i < label.getLength(); ++i) {
    if (label[i] == L'&' && i + 1 < label.getLength())
      ++i;
    else if (label[i] == L'&')
      continue;
    result += label[i];
  }
  return result;
}

bool takesLabelFromBefore(const RyWindow& control) { return takesItsLabelFromBefore(control.kind); }

std::unique_ptr<RyWindow> makeDialogWindow(const DialogTemplate& dialogTemplate, CDialog* dialog) {
  auto window = std::make_unique<RyWindow>();
  window->kind = RyWindow::Kind::kDialog;
  window->kindWord = L"DIALOG";
  window->id = dialogTemplate.id;
  window->templateId = static_cast<UINT>(dialogTemplate.id);
  window->text = dialogTemplate.caption;
  window->label = dialogTemplate.caption;
  window->rect = RECT{0, 0, dialogTemplate.width, dialogTemplate.height};
  window->dialog = dialog;
  window->attach(dialog);
  const RyWindow* labelBefore = nullptr;
  for (const auto& control : dialogTemplate.controls) {
    window->children.push_back(makeControl(control, window.get()));
    RyWindow* made = window->children.back().get();
    if (made->isDefault) window->defaultId = made->id;
    // An edit box or list without a label of its own is read with the unnumbered text just before it.
    if (takesItsLabelFromBefore(made->kind) && labelBefore) made->label = labelBefore->label;
    labelBefore = made->kind == RyWindow::Kind::kStatic && made->id == -1 ? made : nullptr;
  }
  return window;
}

std::vector<RyWindow*> radioGroup(RyWindow* dialog, RyWindow* first) {
  std::vector<RyWindow*> group;
  bool inGroup = false;
  for (const auto& child : dialog->children) {
    if (child.get() == first) {
      inGroup = true;
    } else if (inGroup && (child->kind != RyWindow::Kind::kRadio || child->groupStart)) {
      break;
    }
    if (inGroup) group.push_back(child.get());
  }
  return group;
}

std::vector<RyWindow*> radioGroupOf(RyWindow* dialog, RyWindow* button) {
  RyWindow* first = nullptr;
  const RyWindow* previous = nullptr;
  for (const auto& child : dialog->children) {
    const bool startsGroup = child->groupStart || !previous || previous->kind != RyWindow::Kind::kRadio;
    if (child->kind == RyWindow::Kind::kRadio && startsGroup) first = child.get();
    if (child.get() == button) break;
    previous = child.get();
  }
  return radioGroup(dialog, first ? first : button);
}

int sortedIndex(const RyWindow& list, const OdString& text) {
  int index = 0;
  while (index < static_cast<int>(list.items.size()) &&
         list.items[static_cast<size_t>(index)].text.iCompare(text) <= 0)
    ++index;
  return index;
}

int findItem(const RyWindow& list, int start, const OdString& text, bool exact) {
  const int count = static_cast<int>(list.items.size());
  for (int step = 1; step <= count; ++step) {
    const int index = ((start < 0 ? -1 : start) + step) % count;
    const OdString& item = list.items[static_cast<size_t>(index)].text;
    if (exact ? item.iCompare(text) == 0 : item.left(text.getLength()).iCompare(text) == 0) return index;
  }
  return -1;
}

}  // namespace ryhost
