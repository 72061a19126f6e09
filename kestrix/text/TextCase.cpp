// tcase: changes the letter case of the selected texts, multiline texts and
// attribute definitions (value and tag) by one of five rules chosen in a
// dialog. Format codes of multiline texts are never changed.
#include "text/TextCase.h"

#include <cwchar>
#include <vector>

#include "RyDialogs.h"
#include "frame/Guards.h"
#include "frame/HostSettings.h"
#include "frame/ResultLists.h"
#include "frame/commands.h"
#include "rydb.h"
#include "ryut.h"
#include "text/TextAdjust.h"

namespace kestrix::text {

namespace {

bool isBlank(wchar_t c) { return c == L' ' || c == L'\t'; }

// Two-character codes: \L \l \P \\ \{ \}; every other code runs to its ";".
bool isTwoCharacterCode(wchar_t c) {
  return c == L'L' || c == L'P' || c == L'\\' || c == L'l' || c == L'{' || c == L'}';
}

wchar_t upper(wchar_t c) { return static_cast<wchar_t>(ryutToUpper(c)); }
wchar_t lower(wchar_t c) { return static_cast<wchar_t>(ryutToLower(c)); }

// One rule's state across the string: what a letter becomes and what the
// characters between letters change in that state.
class CaseState {
 public:
  explicit CaseState(CaseRule rule) : m_rule(rule) {}

  wchar_t letter(wchar_t c) {
    switch (m_rule) {
      case CaseRule::kLower:
        return lower(c);
      case CaseRule::kUpper:
        return upper(c);
      case CaseRule::kToggle:
        return ryutIsUpper(c) ? lower(c) : ryutIsLower(c) ? upper(c) : c;
      case CaseRule::kSentence:
      case CaseRule::kTitle: {
        const bool first = m_capitalize;
        m_capitalize = false;
        return first ? upper(c) : lower(c);
      }
    }
    return c;
  }

  // A character that is not a letter and not part of a code.
  void other(wchar_t c) {
    if (m_rule == CaseRule::kSentence) {
      // A full stop starts a sentence; blanks after it wait for its first letter.
      if (c == L'.')
        m_capitalize = true;
      else if (!isBlank(c))
        m_capitalize = false;
    } else if (m_rule == CaseRule::kTitle && isBlank(c)) {
      m_capitalize = true;
    }
  }

  // A new paragraph starts a word, not a sentence.
  void paragraph() {
    if (m_rule == CaseRule::kTitle) m_capitalize = true;
  }

 private:
  CaseRule m_rule;
  bool m_capitalize = true;
};

}  // namespace

OdString changeCase(const OdString& text, CaseRule rule) {
  CaseState state(rule);
  std::wstring out;
  const int length = text.getLength();
  out.reserve(static_cast<size_t>(length));
  for (int i = 0; i < length; ++i) {
    const wchar_t c = text[i];
    if (c == L'\\') {
      if (i + 1 >= length) {
        out += c;
        break;
      }
      const wchar_t code = text[i + 1];
      if (isTwoCharacterCode(code)) {
        out += c;
        out += code;
        if (code == L'P') state.paragraph();
        ++i;
        continue;
      }
      const int end = text.find(L';', i + 1);
      const int stop = end < 0 ? length : end + 1;
      for (; i < stop; ++i) out += text[i];
      --i;
      continue;
    }
    if (c == L'{' || c == L'}') {
      out += c;
    } else if (ryutIsAlpha(c)) {
      out += state.letter(c);
    } else {
      out += c;
      state.other(c);
    }
  }
  return OdString(out.c_str());
}

namespace {

constexpr UINT kTcaseDialogId = 3110;
constexpr int kFirstRuleButton = 3111;  // 3111, 3113, 3115, 3117, 3119
const wchar_t* const kRuleKey = L"TCASE_STA";

// Rewrites the text groups of one entity: the string (group 1 and the
// chunks of group 3 before it, taken as one text) and the tag (group 2).
// The changed groups go back in a list of their own behind the entity's name.
void convertEntity(const OdDbObjectId& id, CaseRule rule) {
  ads_name entity;
  if (rydbGetAdsName(entity, id) != RTNORM) return;
  const ResultList list(rydbEntGet(entity));
  std::vector<const resbuf*> pieces;
  const resbuf* tag = nullptr;
  for (const resbuf* rb = list.get(); rb; rb = rb->rbnext) {
    if ((rb->restype == 1 || rb->restype == 3) && rb->resval.rstring) pieces.push_back(rb);
    if (rb->restype == 2 && rb->resval.rstring) tag = rb;
  }
  if (pieces.empty()) return;
  OdString joined;
  for (const resbuf* piece : pieces) joined += piece->resval.rstring;
  // The rules change letters one for one, so each piece keeps its length.
  const OdString changed = changeCase(joined, rule);
  ResultList change(ryutBuildList(-1, entity, RTNONE));
  resbuf* last = change.get();
  int at = 0;
  for (const resbuf* piece : pieces) {
    const int size = OdString(piece->resval.rstring).getLength();
    last = last->rbnext = ryutBuildList(piece->restype, changed.mid(at, size).c_str(), RTNONE);
    at += size;
  }
  if (tag) last->rbnext = ryutBuildList(2, changeCase(OdString(tag->resval.rstring), rule).c_str(), RTNONE);
  rydbEntMod(change.get());
}

}  // namespace

}  // namespace kestrix::text

using namespace kestrix::text;

// The case dialog: five radio buttons, the last choice remembered in the
// host settings file. It keeps its own copy of the selection.
class CTcaseDialog : public CDialog {
 public:
  explicit CTcaseDialog(const std::vector<OdDbObjectId>& selection) : CDialog(kTcaseDialogId), m_selection(selection) {}

  BOOL OnInitDialog() override {
    const int stored = static_cast<int>(std::wcstol(kestrix::readHostSetting(kRuleKey, L"1").c_str(), nullptr, 10));
    m_choice = stored >= 1 && stored <= 5 ? stored - 1 : 0;
    return CDialog::OnInitDialog();
  }

  // The rule chosen, or 0 when the dialog was cancelled.
  int chosenRule() const { return m_applied; }

 protected:
  void DoDataExchange(CDataExchange* pDX) override { DDX_Radio(pDX, kFirstRuleButton, m_choice); }

  void OnOK() override {
    if (!UpdateData(TRUE)) return;
    EndDialog(IDOK);
    const int rule = m_choice >= 0 && m_choice < 5 ? m_choice + 1 : 1;
    kestrix::writeHostSetting(kRuleKey, OdString().format(L"%d", rule));
    UndoGroup undo;
    for (const OdDbObjectId& id : m_selection) convertEntity(id, static_cast<CaseRule>(rule));
    m_applied = rule;
  }

 private:
  std::vector<OdDbObjectId> m_selection;
  int m_choice = 0;
  int m_applied = 0;
};

void tcaseCommand() {
  kestrix::CmdEchoGuard guard;
  SelectionSet set;
  if (!selectTexts(TextKinds::kTexts, set)) return;
  CTcaseDialog dialog(set.ids());
  dialog.DoModal();
}
