// What the user does to a dialog, as any front end passes it on: the
// control changes and its dialog hears the notification a screen would send.
#include <climits>

#include "dialogs/DialogDriver.h"

using Kind = RyWindow::Kind;

namespace ryhost {

namespace {

RyWindow* dialogWindow(CDialog& dialog) { return DialogAccess::window(dialog); }

OdString refusal(const wchar_t* format, int id) { return OdString().format(format, id); }

// Why the user cannot reach the control, or empty when they can.
OdString unusable(const RyWindow* control, int id) {
  if (!control) return refusal(L"The dialog has no control %d.", id);
  if (!control->visible) return refusal(L"Control %d is hidden.", id);
  if (!control->enabled) return refusal(L"Control %d is disabled.", id);
  return OdString();
}

bool readInt(const OdString& text, long long& value) {
  OdString bare = text;
  return parseDialogInteger(bare.trimLeft().trimRight(), LLONG_MIN, LLONG_MAX, value);
}

}  // namespace

bool parseColorReply(const OdString& text, bool allowMetaColor, bool allowTrueColor, OdCmColor& color,
                     OdString& reason) {
  OdString bare = text;
  bare.trimLeft().trimRight();
  const bool byLayer = bare.iCompare(L"BYLAYER") == 0, byBlock = bare.iCompare(L"BYBLOCK") == 0;
  if (byLayer || byBlock) {
    if (!allowMetaColor) {
      reason = L"BYLAYER and BYBLOCK are not offered here.";
      return false;
    }
    color = OdCmColor(byLayer ? OdCmEntityColor::kByLayer : OdCmEntityColor::kByBlock);
    return true;
  }
  if (bare.find(L',') >= 0) {
    std::vector<OdString> parts;
    for (int start = 0;;) {
      const int comma = bare.find(L',', start);
      parts.push_back(bare.mid(start, comma < 0 ? -1 : comma - start));
      if (comma < 0) break;
      start = comma + 1;
    }
    long long rgb[3] = {};
    bool wellFormed = parts.size() == 3;
    for (size_t i = 0; wellFormed && i < 3; ++i)
      wellFormed = readInt(parts[i], rgb[i]) && rgb[i] >= 0 && rgb[i] <= 255;
    if (!wellFormed) {
      reason = L"A true colour is red,green,blue, each from 0 to 255.";
      return false;
    }
    if (!allowTrueColor) {
      reason = L"True colours are not offered here.";
      return false;
    }
    color = OdCmColor();
    color.setRGB(static_cast<OdUInt8>(rgb[0]), static_cast<OdUInt8>(rgb[1]), static_cast<OdUInt8>(rgb[2]));
    return true;
  }
  long long index = 0;
  if (!readInt(bare, index)) {
    OdCmColor named;
    index = OdCmColor::fromString(bare, named) && named.isByACI() ? named.colorIndex() : 0;
  }
  if (index >= 1 && index <= 255) {
    color = OdCmColor();
    color.setColorIndex(static_cast<OdInt16>(index));
    return true;
  }
  reason = L"Enter " + colorChoices(allowMetaColor, allowTrueColor) + L".";
  return false;
}

OdString colorChoices(bool allowMetaColor, bool allowTrueColor) {
  OdString choices = L"1-255";
  if (allowMetaColor) choices += L", BYLAYER, BYBLOCK";
  if (allowTrueColor) choices += L", r,g,b";
  return choices;
}

void DialogAccess::notify(CWnd& dialog, int id, RyNotify notify) {
  for (const auto& handler : dialog.m_handlers) {
    if (handler.id == id && handler.notify == notify) {
      auto call = handler.call;  // the handler may register others
      call();
      return;
    }
  }
  auto* modal = dynamic_cast<CDialog*>(&dialog);
  if (!modal || notify != RyNotify::kClicked) return;
  if (id == IDOK)
    modal->OnOK();
  else if (id == IDCANCEL)
    modal->OnCancel();
}

void DialogAccess::notifyFrom(RyWindow* control, RyNotify notify) {
  RyWindow* dialog = control->dialogWindow();
  if (control->notifying || !dialog->dialog) return;
  control->notifying = true;
  DialogAccess::notify(*dialog->dialog, control->id, notify);
  if (IsWindow(control)) control->notifying = false;
}

OdString DialogAccess::press(CDialog& dialog, int id) {
  RyWindow* window = dialogWindow(dialog);
  RyWindow* control = window ? window->findChild(id) : nullptr;
  if (window && !control && (id == IDOK || id == IDCANCEL)) {
    notify(dialog, id, RyNotify::kClicked);
    return OdString();
  }
  if (OdString why = unusable(control, id); !why.isEmpty()) return why;
  switch (control->kind) {
    case Kind::kPushButton:
      break;
    case Kind::kCheckBox:
      control->check = control->check == BST_CHECKED ? BST_UNCHECKED : BST_CHECKED;
      break;
    case Kind::kRadio:
      for (RyWindow* button : radioGroupOf(window, control)) {
        button->check = button == control ? BST_CHECKED : BST_UNCHECKED;
      }
      break;
    case Kind::kColorButton: {
      OdCmColor color = control->color;
      OdCmColor layerColor;
      layerColor.setColorIndex(7);
      if (dialogDriver().chooseColor(color, control->allowMetaColor, layerColor,
                                     kRyAciTab | kRyTrueColorTab) != RTNORM) {
        return OdString();
      }
      if (!IsWindow(control)) return OdString();
      control->color = color;
      break;
    }
    default:
      return refusal(L"Control %d cannot be pressed.", id);
  }
  notifyFrom(control, RyNotify::kClicked);
  return OdString();
}

OdString DialogAccess::type(CDialog& dialog, int id, const OdString& text) {
  RyWindow* window = dialogWindow(dialog);
  RyWindow* control = window ? window->findChild(id) : nullptr;
  if (OdString why = unusable(control, id); !why.isEmpty()) return why;
  if (control->kind == Kind::kEdit) {
    if (control->readOnly) return refusal(L"Control %d is read-only.", id);
    if (control->limit && static_cast<UINT>(text.getLength()) > control->limit) {
      return OdString().format(L"Control %d takes at most %u characters.", id, control->limit);
    }
    control->text = text;
    notifyFrom(control, RyNotify::kEditChange);
    return OdString();
  }
  if (control->kind == Kind::kComboBox) {
    const int index = findItem(*control, -1, text, true);
    if (control->dropList) {
      if (index < 0) return OdString().format(L"Control %d has no item \"%ls\".", id, text.c_str());
      return select(dialog, id, {index});
    }
    control->text = text;
    control->selectOnly(index);
    notifyFrom(control, RyNotify::kEditChange);
    return OdString();
  }
  if (control->kind == Kind::kColorButton) {
    OdString reason;
    OdCmColor color;
    if (!parseColorReply(text, control->allowMetaColor, true, color, reason)) return reason;
    control->color = color;
    notifyFrom(control, RyNotify::kClicked);
    return OdString();
  }
  return refusal(L"Control %d takes no text.", id);
}

OdString DialogAccess::select(CDialog& dialog, int id, const std::vector<int>& indexes) {
  RyWindow* window = dialogWindow(dialog);
  RyWindow* control = window ? window->findChild(id) : nullptr;
  if (OdString why = unusable(control, id); !why.isEmpty()) return why;
  if (!control->isList()) return refusal(L"Control %d has no items.", id);
  for (int index : indexes) {
    if (index < 0 || index >= static_cast<int>(control->items.size())) {
      return OdString().format(L"Control %d has no item %d.", id, index);
    }
  }
  if (control->singleSelection() && indexes.size() != 1) return refusal(L"Control %d takes one item.", id);
  for (auto& item : control->items) item.selected = false;
  for (int index : indexes) control->items[static_cast<size_t>(index)].selected = true;
  control->current = indexes.empty() ? -1 : indexes.back();
  if (control->kind == Kind::kComboBox)
    control->text = control->items[static_cast<size_t>(control->current)].text;
  notifyFrom(control, RyNotify::kSelChange);
  return OdString();
}

OdString DialogAccess::doubleClick(CDialog& dialog, int id, int index) {
  OdString why = select(dialog, id, {index});
  if (!why.isEmpty()) return why;
  RyWindow* window = dialogWindow(dialog);
  if (RyWindow* control = window ? window->findChild(id) : nullptr) notifyFrom(control, RyNotify::kDblClick);
  return OdString();
}

OdString DialogAccess::pressDefault(CDialog& dialog) {
  RyWindow* window = dialogWindow(dialog);
  return window ? press(dialog, window->defaultId) : OdString();
}

}  // namespace ryhost
