// The console front end of dialogs: a dialog is printed as a short form on
// the command line and driven by replies read from the same input as every
// prompt (Host::readReply), so that scripts and tests drive dialogs like
// any other command. docs/architecture.md ("Dialogs") gives the reply forms.
#include <algorithm>
#include <cwctype>
#include <filesystem>
#include <utility>

#include "core/Host.h"
#include "dialogs/DialogDriver.h"

namespace ryhost {

namespace {

using Kind = RyWindow::Kind;
namespace fs = std::filesystem;

Host& host() { return Host::instance(); }

OdString padded(const OdString& text, int width) {
  OdString result = text;
  while (result.getLength() < width) result += L' ';
  return result;
}

// The word the form shows for a control's kind; a control of another kind
// shows its class word.
OdString kindName(const RyWindow& control) {
  static const std::pair<Kind, const wchar_t*> kNames[] = {
      {Kind::kStatic, L"text"},    {Kind::kEdit, L"edit"},         {Kind::kPushButton, L"button"},
      {Kind::kCheckBox, L"check"}, {Kind::kRadio, L"radio"},       {Kind::kGroupBox, L"group"},
      {Kind::kListBox, L"list"},   {Kind::kComboBox, L"combo"},    {Kind::kListView, L"listview"},
      {Kind::kColorButton, L"colour"},
  };
  for (const auto& [kind, name] : kNames) {
    if (kind == control.kind) return name;
  }
  return control.kindWord.lower();
}

OdString resultName(int result) {
  if (result == IDOK) return L"OK";
  if (result == IDCANCEL) return L"Cancel";
  return OdString().format(L"%d", result);
}

// The items of a list, one a line: "*" marks the selected ones.
OdString itemLines(const RyWindow& list) {
  OdString lines;
  const size_t columns = list.kind == Kind::kListView ? std::max<size_t>(list.columns.size(), 1) : 1;
  if (list.kind == Kind::kListView && !list.columns.empty()) {
    OdString headings;
    for (const auto& column : list.columns) headings += (headings.isEmpty() ? L"" : L" | ") + column.heading;
    lines += L"\n              " + headings;
  }
  for (size_t i = 0; i < list.items.size(); ++i) {
    const RyWindow::Item& item = list.items[i];
    OdString row = item.text;
    for (size_t column = 1; column < columns; ++column) {
      row += L" | " + (column <= item.cells.size() ? item.cells[column - 1] : OdString());
    }
    lines +=
        OdString().format(L"\n        %lc %3d  ", item.selected ? L'*' : L' ', static_cast<int>(i)) + row;
  }
  return lines;
}

// One control as the form shows it (several lines for lists): number,
// kind, label, then its value and states.
OdString describe(const RyWindow& control, const RyWindow& dialog) {
  const OdString number = control.id == -1 ? OdString(L"-") : OdString().format(L"%d", control.id);
  const OdString head = L"  " + padded(number, 6) + padded(kindName(control), 9);
  if (!control.visible) return head + L"(hidden)";
  std::vector<OdString> parts{takesLabelFromBefore(control) ? control.label : plainLabel(control.text)};
  switch (control.kind) {
    case Kind::kEdit:
      parts.push_back(L"[" + control.text + L"]");
      if (control.readOnly) parts.push_back(L"(read-only)");
      break;
    case Kind::kPushButton:
      if (dialog.defaultId == control.id) parts.push_back(L"(default)");
      break;
    case Kind::kCheckBox:
      parts.push_back(control.check == BST_CHECKED         ? L"[x]"
                      : control.check == BST_INDETERMINATE ? L"[-]"
                                                           : L"[ ]");
      break;
    case Kind::kRadio:
      parts.push_back(control.check == BST_CHECKED ? L"(o)" : L"( )");
      break;
    case Kind::kComboBox:
      parts.push_back(L"[" + control.text + L"]");
      if (control.dropList) parts.push_back(L"(list only)");
      break;
    case Kind::kListBox:
    case Kind::kListView:
      if (control.multiple) parts.push_back(L"(multiple)");
      break;
    case Kind::kColorButton:
      parts.push_back(L"[" + control.color.toString() + L"]");
      break;
    default:
      break;
  }
  if (!control.enabled) parts.push_back(L"(disabled)");
  OdString line = head;
  bool first = true;
  for (const OdString& part : parts) {
    if (part.isEmpty()) continue;
    line += (first ? L"" : L"  ") + part;
    first = false;
  }
  if (control.isList()) line += itemLines(control);
  return line;
}

// An unnumbered text that the next control shows as its label is not shown on its own.
bool servesAsLabel(const RyWindow& dialog, size_t index) {
  const RyWindow& control = *dialog.children[index];
  if (control.kind != Kind::kStatic || control.id != -1 || index + 1 >= dialog.children.size()) return false;
  const RyWindow& next = *dialog.children[index + 1];
  return takesLabelFromBefore(next) && next.label == plainLabel(control.text);
}

OdString header(const RyWindow& dialog) {
  return OdString().format(L"Dialog %u \"%ls\"%ls", dialog.templateId, plainLabel(dialog.text).c_str(),
                           dialog.modal ? L"" : L" (modeless)");
}

// What the form shows, control by control in form order, to print only what a reply changed.
using Snapshot = std::vector<std::pair<const RyWindow*, OdString>>;

Snapshot snapshot(const RyWindow& dialog) {
  Snapshot lines{{&dialog, header(dialog)}};
  for (const auto& control : dialog.children) lines.emplace_back(control.get(), describe(*control, dialog));
  return lines;
}

void printChanges(const Snapshot& before, const RyWindow& dialog) {
  for (const auto& [window, line] : snapshot(dialog)) {
    auto old =
        std::find_if(before.begin(), before.end(), [&](const auto& entry) { return entry.first == window; });
    if (old == before.end() || old->second != line) host().print(L"\n" + line);
  }
}

bool readIndex(const OdString& text, int& index) {
  OdString bare = text;
  bare.trimLeft().trimRight();
  if (bare.isEmpty() || !std::iswdigit(bare[0])) return false;
  wchar_t* end = nullptr;
  index = static_cast<int>(std::wcstol(bare.c_str(), &end, 10));
  return !*end;
}

// "1,3" (or nothing: no item) to indexes; false when an entry is not an index.
bool readIndexes(const OdString& text, std::vector<int>& indexes) {
  OdString bare = text;
  if (bare.trimLeft().trimRight().isEmpty()) return true;
  for (int start = 0;;) {
    const int comma = bare.find(L',', start);
    int index = 0;
    if (!readIndex(bare.mid(start, comma < 0 ? -1 : comma - start), index)) return false;
    indexes.push_back(index);
    if (comma < 0) return true;
    start = comma + 1;
  }
}

// Message-box buttons and the words that answer them.
struct ButtonWord {
  const wchar_t* word;
  int result;
};
constexpr ButtonWord kButtonWords[] = {{L"OK", IDOK},        {L"Cancel", IDCANCEL}, {L"Yes", IDYES},
                                       {L"No", IDNO},        {L"Abort", IDABORT},   {L"Retry", IDRETRY},
                                       {L"Ignore", IDIGNORE}};

std::vector<int> buttonsOf(UINT type) {
  switch (type & 0x0F) {
    case MB_OKCANCEL:
      return {IDOK, IDCANCEL};
    case MB_ABORTRETRYIGNORE:
      return {IDABORT, IDRETRY, IDIGNORE};
    case MB_YESNOCANCEL:
      return {IDYES, IDNO, IDCANCEL};
    case MB_YESNO:
      return {IDYES, IDNO};
    case MB_RETRYCANCEL:
      return {IDRETRY, IDCANCEL};
    default:
      return {IDOK};
  }
}

OdString wordOf(int result) {
  for (const auto& entry : kButtonWords) {
    if (entry.result == result) return entry.word;
  }
  return OdString();
}

int answerOf(const OdString& reply, const std::vector<int>& buttons) {
  for (int button : buttons) {
    const OdString word = wordOf(button);
    if (reply.iCompare(word) == 0 || (reply.getLength() == 1 && reply.iCompare(word.left(1)) == 0))
      return button;
  }
  return 0;
}

OdString joinedChoices(const std::vector<int>& buttons) {
  OdString text;
  for (size_t i = 0; i < buttons.size(); ++i) {
    if (i > 0) text += i + 1 == buttons.size() ? L" or " : L", ";
    text += wordOf(buttons[i]);
  }
  return text;
}

OdString filterText(const CNavFilterArray& filters) {
  OdString text;
  for (const auto& filter : filters) {
    OdString patterns;
    for (int i = 0; i < filter.GetCount(); ++i) patterns += (i ? L";" : L"") + filter.GetAt(i);
    text += (text.isEmpty() ? L"" : L", ") + filter.GetDescription() + L" (" + patterns + L")";
  }
  return text;
}

// The folder that names without a folder are taken in.
fs::path baseFolder(const FileRequest& request) {
  if (!request.initialFolder.isEmpty()) return fs::path(request.initialFolder.toUtf8());
  const fs::path initial(request.initialFileName.toUtf8());
  if (initial.is_absolute()) return initial.parent_path();
  if (Document* doc = host().current(); doc && !doc->fileName().isEmpty()) {
    return fs::absolute(fs::path(doc->fileName().toUtf8())).parent_path();
  }
  return fs::current_path();
}

fs::path resolvedPath(const FileRequest& request, const OdString& typed) {
  std::string name = typed.toUtf8();
  if (name.size() >= 2 && name[0] == '~' && name[1] == '/') {
    if (const char* home = std::getenv("HOME")) name = std::string(home) + name.substr(1);
  }
  fs::path path(name);
  if (path.is_relative()) path = baseFolder(request) / path;
  return path.lexically_normal();
}

OdString defaultExtension(const FileRequest& request) {
  return request.filters.empty() ? OdString() : request.filters.front().GetDefaultExtension();
}

// ---------------------------------------------------------------- the driver

class ConsoleDriver;

// While a modeless dialog is shown, replies starting with "!" act on it,
// at whatever prompt they are typed; the others go on to the prompt.
class ModelessInput : public InputSource {
 public:
  explicit ModelessInput(ConsoleDriver& driver) : m_driver(driver) {}
  bool readLine(OdString& line, const OdString& prompt) override;
  bool showsPrompt() const override { return m_inner && m_inner->showsPrompt(); }
  InputSource* m_inner = nullptr;

 private:
  ConsoleDriver& m_driver;
};

class ConsoleDriver : public RyDialogDriver {
 public:
  ConsoleDriver() : m_input(*this) {}

  void showModal(CDialog& dialog) override {
    printForm(*DialogAccess::window(dialog));
    while (RyWindow* window = DialogAccess::window(dialog)) {
      if (window->ended) break;
      const Reply reply = host().readReply(L"\n[" + plainLabel(window->text) + L"]: ");
      if (reply.kind == Reply::kEnd) {
        host().print(L"\nNo more replies: the dialog is cancelled.");
        DialogAccess::notify(dialog, IDCANCEL, RyNotify::kClicked);
        if (DialogAccess::window(dialog) && !DialogAccess::window(dialog)->ended) dialog.EndDialog(IDCANCEL);
        break;
      }
      const Snapshot before = snapshot(*window);
      if (reply.kind == Reply::kCancel)
        DialogAccess::notify(dialog, IDCANCEL, RyNotify::kClicked);
      else
        report(apply(dialog, reply.text));
      if (DialogAccess::window(dialog) == window && !window->ended) printChanges(before, *window);
    }
    if (RyWindow* window = DialogAccess::window(dialog)) {
      host().print(L"\n[" + plainLabel(window->text) + L"] closed: " + resultName(window->result));
    }
  }

  void modelessShown(CDialog& dialog) override {
    std::erase(m_modeless, &dialog);
    m_modeless.push_back(&dialog);
    printForm(*DialogAccess::window(dialog));
    if (host().input() != &m_input) {
      m_input.m_inner = host().input();
      host().setInput(&m_input);
    }
  }

  void modelessHidden(CDialog& dialog) override {
    std::erase(m_modeless, &dialog);
    if (RyWindow* window = DialogAccess::window(dialog))
      host().print(L"\n[" + plainLabel(window->text) + L"] closed");
    if (m_modeless.empty() && host().input() == &m_input) host().setInput(m_input.m_inner);
  }

  // A "!" reply typed at a prompt: acts on the modeless dialog shown last.
  bool applyToModeless(const OdString& reply) {
    if (m_modeless.empty()) return false;
    CDialog* dialog = m_modeless.back();
    RyWindow* window = DialogAccess::window(*dialog);
    const Snapshot before = snapshot(*window);
    report(apply(*dialog, reply));
    // The dialog may have been hidden or destroyed (even deleted) by its handlers.
    const bool stillShown = std::find(m_modeless.begin(), m_modeless.end(), dialog) != m_modeless.end();
    if (stillShown && DialogAccess::window(*dialog) == window) printChanges(before, *window);
    return true;
  }

  int messageBox(const OdString& text, const OdString& caption, UINT type) override {
    const std::vector<int> buttons = buttonsOf(type);
    host().print(L"\n[" + caption + L"] " + text);
    if (buttons.size() == 1) return buttons.front();  // nothing to choose: the box does not wait
    const size_t defaultIndex = static_cast<size_t>((type >> 8) & 0x0F);
    const int defaultButton = defaultIndex < buttons.size() ? buttons[defaultIndex] : buttons.front();
    OdString names;
    for (int button : buttons) names += (names.isEmpty() ? L"" : L"/") + wordOf(button);
    for (;;) {
      const Reply reply = host().readReply(L"\n" + names + L" <" + wordOf(defaultButton) + L">: ");
      if (reply.kind != Reply::kText) return escapeAnswer(buttons, defaultButton);
      OdString answer = reply.text;
      answer.trimLeft().trimRight();
      if (answer.isEmpty()) return defaultButton;
      if (const int button = answerOf(answer, buttons)) return button;
      host().print(L"\nAnswer " + joinedChoices(buttons) + L".");
    }
  }

  bool chooseFile(const FileRequest& request, OdString& path) override {
    OdString line = L"\n[File] " + request.caption + (request.creatingFile ? L" (save" : L" (open");
    if (!request.filters.empty()) line += L"; " + filterText(request.filters);
    host().print(line + L")");
    const OdString prompt = request.initialFileName.isEmpty()
                                ? OdString(L"\nFile name: ")
                                : L"\nFile name <" + request.initialFileName + L">: ";
    for (;;) {
      const Reply reply = host().readReply(prompt);
      if (reply.kind != Reply::kText) return false;
      OdString typed = reply.text;
      typed.trimLeft().trimRight();
      if (typed.isEmpty()) typed = request.initialFileName;
      if (typed.isEmpty()) {
        host().print(L"\nEnter a file name.");
        continue;
      }
      if (acceptFile(request, resolvedPath(request, typed), path)) return true;
    }
  }

  int chooseColor(OdCmColor& color, bool allowMetaColor, const OdCmColor& layerColor, int tabs) override {
    const bool trueColors = (tabs & kRyTrueColorTab) != 0;
    OdString shown = color.toString();
    if (color.isByLayer()) shown += L" (" + layerColor.toString() + L")";
    for (;;) {
      const Reply reply = host().readReply(L"\nColour (" + colorChoices(allowMetaColor, trueColors) + L") <" +
                                           shown + L">: ");
      if (reply.kind != Reply::kText) return RTCAN;
      if (OdString(reply.text).trimLeft().trimRight().isEmpty()) return RTNORM;
      OdString reason;
      OdCmColor chosen;
      if (parseColorReply(reply.text, allowMetaColor, trueColors, chosen, reason)) {
        color = chosen;
        return RTNORM;
      }
      host().print(L"\n" + reason);
    }
  }

 private:
  void printForm(const RyWindow& dialog) {
    OdString form = L"\n" + header(dialog);
    for (size_t i = 0; i < dialog.children.size(); ++i) {
      const RyWindow& control = *dialog.children[i];
      if (!control.visible || servesAsLabel(dialog, i)) continue;
      form += L"\n" + describe(control, dialog);
    }
    const RyWindow* defaultButton = dialog.findChild(dialog.defaultId);
    const OdString defaultName =
        defaultButton ? plainLabel(defaultButton->text) : resultName(dialog.defaultId);
    if (dialog.modal) {
      form +=
          L"\nReplies: number=text, number (press, tick, choose), number:index[,index], number::index "
          L"(double "
          L"click), OK, Cancel, ? (the form again); Enter presses " +
          defaultName + L".";
    } else {
      form +=
          L"\nAt any prompt a reply starting with ! acts on this dialog: !number=text, !number, "
          L"!number:index[,index], !number::index, !OK, !Cancel, !?";
    }
    host().print(form);
  }

  void report(const OdString& problem) {
    if (!problem.isEmpty()) host().print(L"\n" + problem);
  }

  // One reply to a dialog; returns why it was refused, or nothing.
  OdString apply(CDialog& dialog, const OdString& reply) {
    OdString text = reply;
    text.trimLeft();
    OdString word = text;
    word.trimRight();
    if (word.isEmpty()) return DialogAccess::pressDefault(dialog);
    if (word == L"?") {
      printForm(*DialogAccess::window(dialog));
      return OdString();
    }
    if (word.iCompare(L"OK") == 0) return DialogAccess::press(dialog, IDOK);
    if (word.iCompare(L"Cancel") == 0) {
      DialogAccess::notify(dialog, IDCANCEL, RyNotify::kClicked);
      return OdString();
    }
    int digits = 0;
    while (digits < text.getLength() && std::iswdigit(text[digits])) ++digits;
    const OdString unknown = L"Unknown reply \"" + word + L"\" (? shows the form and the replies).";
    if (digits == 0 || digits > 6) return unknown;
    const int id = static_cast<int>(std::wcstol(text.left(digits).c_str(), nullptr, 10));
    const OdString rest = text.mid(digits);
    if (OdString(rest).trimRight().isEmpty()) return DialogAccess::press(dialog, id);
    if (rest[0] == L'=') return DialogAccess::type(dialog, id, rest.mid(1));
    int index = 0;
    if (rest.left(2) == L"::")
      return readIndex(rest.mid(2), index) ? DialogAccess::doubleClick(dialog, id, index) : unknown;
    std::vector<int> indexes;
    if (rest[0] == L':')
      return readIndexes(rest.mid(1), indexes) ? DialogAccess::select(dialog, id, indexes) : unknown;
    return unknown;
  }

  bool acceptFile(const FileRequest& request, fs::path chosen, OdString& path) {
    std::error_code ec;
    const OdString extension = defaultExtension(request);
    if (!chosen.has_extension() && !extension.isEmpty()) {
      fs::path withExtension = chosen;
      withExtension += "." + extension.toUtf8();
      // Save names get the extension; open names get it when the bare name is no file.
      if (request.creatingFile || !fs::exists(chosen, ec)) chosen = withExtension;
    }
    const OdString shown(chosen.string());
    if (fs::is_directory(chosen, ec)) {
      host().print(L"\n" + shown + L" is a folder.");
      return false;
    }
    if (!request.creatingFile) {
      if (!fs::is_regular_file(chosen, ec)) {
        host().print(L"\nNo such file: " + shown + L".");
        return false;
      }
    } else {
      if (!fs::is_directory(chosen.parent_path(), ec)) {
        host().print(L"\nNo such folder: " + OdString(chosen.parent_path().string()) + L".");
        return false;
      }
      if (request.confirmReplace && fs::exists(chosen, ec) &&
          messageBox(shown + L" already exists. Replace it?", request.caption,
                     MB_YESNO | MB_ICONEXCLAMATION) != IDYES) {
        return false;
      }
    }
    path = shown;
    return true;
  }

  static int escapeAnswer(const std::vector<int>& buttons, int defaultButton) {
    for (int wanted : {IDCANCEL, IDNO}) {
      if (std::find(buttons.begin(), buttons.end(), wanted) != buttons.end()) return wanted;
    }
    return defaultButton;
  }

  std::vector<CDialog*> m_modeless;
  ModelessInput m_input;
};

bool ModelessInput::readLine(OdString& line, const OdString& prompt) {
  for (;;) {
    if (!m_inner || !m_inner->readLine(line, prompt)) return false;
    OdString bare = line;
    bare.trimLeft();
    if (bare.left(1) != L"!") return true;
    // Echoed and answered here; the prompt is asked again.
    if (!m_inner->showsPrompt()) host().print(line);
    if (!m_driver.applyToModeless(bare.mid(1))) return true;
    if (!m_inner->showsPrompt()) host().print(L"\n" + prompt);
  }
}

ConsoleDriver& consoleDriver() {
  static ConsoleDriver driver;
  return driver;
}

RyDialogDriver* g_driver = nullptr;

}  // namespace

RyDialogDriver& dialogDriver() { return g_driver ? *g_driver : consoleDriver(); }

void setDialogDriver(RyDialogDriver* driver) { g_driver = driver; }

}  // namespace ryhost
