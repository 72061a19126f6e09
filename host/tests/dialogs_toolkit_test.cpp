// The dialog toolkit driven on the console: data exchange both ways for
// every control kind, handlers, modal results, refused replies, templates
// and their lookup, and a modeless dialog changed between two prompts.
#include <filesystem>
#include <fstream>

#include "OdEdCommandStack.h"
#include "RyDialogs.h"
#include "dialogs/DialogDriver.h"
#include "harness.h"
#include "ryed.h"

namespace {

constexpr UINT kEveryControl = 900, kOptions = 901, kSmall = 902;

std::string controlLine(int id, const char* kind, const char* label, const char* styles = "") {
  std::string line = "CONTROL\t" + std::to_string(id) + "\t" + kind + "\t" + label + "\t10\t10\t80\t12";
  if (*styles) line += std::string("\t") + styles;
  return line + "\n";
}

std::string libraryText() {
  std::string text = "RYAD RESOURCE LIBRARY 1\nDIALOG 900\nCAPTION\tEvery control\nSIZE\t300\t220\n";
  text += controlLine(-1, "LTEXT", "&Name:") + controlLine(1001, "EDIT", "");
  text += controlLine(-1, "LTEXT", "Count:") + controlLine(1002, "EDIT", "");
  text += controlLine(-1, "LTEXT", "Scale:") + controlLine(1003, "EDIT", "");
  text += controlLine(1004, "CHECKBOX", "Ignore layer");
  text += controlLine(1010, "RADIO", "Union", "GROUP TABSTOP") + controlLine(1011, "RADIO", "Intersection") +
          controlLine(1012, "RADIO", "Subtraction");
  text += controlLine(-1, "LTEXT", "Blocks:") + controlLine(1020, "LISTBOX", "");
  text += controlLine(-1, "LTEXT", "Layers:") + controlLine(1021, "LISTBOX", "", "MULTIPLE SORT");
  text += controlLine(1030, "COMBOBOX", "", "DROPDOWNLIST") + controlLine(1031, "COMBOBOX", "");
  text += controlLine(1040, "LISTVIEW", "") + controlLine(1050, "COLORBUTTON", "Colour 1");
  text += controlLine(1060, "BUTTON", "Pick <") + controlLine(1061, "BUTTON", "Locked", "DISABLED");
  text += controlLine(3101, "LTEXT", "No such block", "HIDDEN");
  text += controlLine(1, "DEFBUTTON", "OK") + controlLine(2, "BUTTON", "Cancel") + "END\n";
  text += "DIALOG 901\nCAPTION\tBoolean\nSIZE\t120\t80\n";
  text += controlLine(14835, "RADIO", "Union", "GROUP") + controlLine(14836, "RADIO", "Intersection") +
          controlLine(14837, "RADIO", "Subtraction") + controlLine(14838, "CHECKBOX", "Erase tools") +
          "END\n";
  text += "DIALOG 902\nCAPTION\tSmall\nSIZE\t100\t50\n";
  text += controlLine(1001, "EDIT", "") + controlLine(1, "DEFBUTTON", "OK") +
          controlLine(2, "BUTTON", "Cancel") + "END\n";
  return text;
}

// A session with the test dialogs' resource library loaded.
class DialogTest : public ::testing::Test {
 protected:
  DialogTest() {
    m_path = std::filesystem::temp_directory_path() / ("dialogs-test-" + std::to_string(getpid()) + ".res");
    std::ofstream(m_path) << libraryText();
    m_library = LoadLibraryW(OdString(m_path.string()).c_str());
  }
  ~DialogTest() override {
    FreeLibrary(m_library);
    std::filesystem::remove(m_path);
  }
  bool transcriptHas(const std::string& part) const {
    return session.transcript().find(part) != std::string::npos;
  }

  HostSession session;
  std::filesystem::path m_path;
  HMODULE m_library = nullptr;
};

class CEveryControlDlg : public CRyUiDialog {
 public:
  explicit CEveryControlDlg(HINSTANCE resources) : CRyUiDialog(kEveryControl, nullptr, resources) {
    onSelChange(1020, &CEveryControlDlg::OnBlockChosen);
    onDblClick(1020, &CEveryControlDlg::OnBlockAccepted);
    onEditChange(1001, &CEveryControlDlg::OnNameEdited);
    onClicked(1060, &CEveryControlDlg::OnPick);
  }
  CString m_name = L"Alpha";
  int m_count = 3;
  double m_scale = 1.5;
  int m_ignore = BST_UNCHECKED;
  int m_operation = 0;
  int m_block = 0;
  CString m_style = L"Standard", m_freeStyle = L"Dash";
  CListBox m_layers;
  CListCtrl m_variables;
  CRyColorButton m_colour;
  // What OnOK read of the controls that exchange no value.
  std::vector<int> m_chosenLayers, m_chosenVariables;
  OdCmColor m_chosenColor;
  int m_nameEdits = 0;

 protected:
  BOOL OnInitDialog() override {
    auto* blocks = static_cast<CListBox*>(GetDlgItem(1020));
    for (const wchar_t* name : {L"A", L"B", L"C"}) blocks->AddString(name);
    for (const wchar_t* name : {L"Standard", L"Bold", L"Italic"})
      static_cast<CComboBox*>(GetDlgItem(1030))->AddString(name);
    for (const wchar_t* name : {L"Dash", L"Dot"}) static_cast<CComboBox*>(GetDlgItem(1031))->AddString(name);
    CRyUiDialog::OnInitDialog();  // binds the member controls, then shows the variables
    for (const wchar_t* name : {L"Walls", L"0", L"Doors"}) m_layers.AddString(name);
    m_variables.InsertColumn(0, L"Name");
    m_variables.InsertColumn(1, L"Value");
    const wchar_t* rows[][2] = {{L"ANGBASE", L"0"}, {L"CLAYER", L"Walls"}, {L"LTSCALE", L"1"}};
    for (int i = 0; i < 3; ++i) m_variables.SetItemText(m_variables.InsertItem(i, rows[i][0]), 1, rows[i][1]);
    OdCmColor green;
    green.setColorIndex(3);
    m_colour.SetColor(green);
    return TRUE;
  }
  void DoDataExchange(CDataExchange* pDX) override {
    DDX_Text(pDX, 1001, m_name);
    DDX_Text(pDX, 1002, m_count);
    DDX_Text(pDX, 1003, m_scale);
    DDX_Check(pDX, 1004, m_ignore);
    DDX_Radio(pDX, 1010, m_operation);
    DDX_LBIndex(pDX, 1020, m_block);
    DDX_CBString(pDX, 1030, m_style);
    DDX_CBString(pDX, 1031, m_freeStyle);
    DDX_Control(pDX, 1021, m_layers);
    DDX_Control(pDX, 1040, m_variables);
    DDX_Control(pDX, 1050, m_colour);
  }
  void OnOK() override {
    int indexes[8];
    m_chosenLayers.assign(indexes, indexes + m_layers.GetSelItems(8, indexes));
    m_chosenVariables.clear();
    for (POSITION at = m_variables.GetFirstSelectedItemPosition(); at;) {
      m_chosenVariables.push_back(m_variables.GetNextSelectedItem(at));
    }
    m_chosenColor = m_colour.GetColor();
    CRyUiDialog::OnOK();
  }
  void OnBlockChosen() {
    CString name;
    auto* blocks = static_cast<CListBox*>(GetDlgItem(1020));
    blocks->GetText(blocks->GetCurSel(), name);
    SetDlgItemText(1001, name);
    GetDlgItem(3101)->ShowWindow(SW_HIDE);
  }
  void OnBlockAccepted() {
    UpdateData(TRUE);
    EndDialog(3);
  }
  void OnNameEdited() { ++m_nameEdits; }
  void OnPick() { GetDlgItem(3101)->ShowWindow(SW_SHOW); }
};

TEST_F(DialogTest, EveryControlKindExchangesItsValueBothWays) {
  CEveryControlDlg dialog(m_library);
  session.reply({"1020:2", "1001=Beta", "1002=7", "1003= 2.5", "1004", "1012", "1011", "1021:0,2", "1030:2",
                 "1031=Long dash", "1040:2,0", "1050", "5", "OK"});
  ASSERT_EQ(dialog.DoModal(), IDOK);
  EXPECT_EQ(session.repliesLeft(), 0u);
  // The form showed the variables as loaded.
  for (const char* shown :
       {"Dialog 900 \"Every control\"", "Name:  [Alpha]", "Count:  [3]", "Scale:  [1.5]", "Union  (o)",
        "Ignore layer  [ ]", "[Standard]  (list only)", "Colour 1  [3]", "ANGBASE | 0", "OK  (default)"}) {
    EXPECT_TRUE(transcriptHas(shown)) << shown;
  }
  EXPECT_FALSE(transcriptHas("No such block")) << "a hidden control is not shown";
  EXPECT_EQ(dialog.m_name, L"Beta");
  EXPECT_EQ(dialog.m_count, 7);
  EXPECT_DOUBLE_EQ(dialog.m_scale, 2.5);
  EXPECT_EQ(dialog.m_ignore, BST_CHECKED);
  EXPECT_EQ(dialog.m_operation, 1);  // choosing a radio button clears the others of its group
  EXPECT_EQ(dialog.m_block, 2);
  EXPECT_EQ(dialog.m_style, L"Italic");
  EXPECT_EQ(dialog.m_freeStyle, L"Long dash");
  // The layer list is sorted: 0, Doors, Walls.
  EXPECT_EQ(dialog.m_chosenLayers, (std::vector<int>{0, 2}));
  EXPECT_EQ(dialog.m_chosenVariables, (std::vector<int>{0, 2}));
  EXPECT_EQ(dialog.m_chosenColor.colorIndex(), 5);
  // The controls (and the members bound to them) are gone with the window.
  EXPECT_EQ(dialog.GetDlgItem(1001), nullptr);
  EXPECT_EQ(dialog.m_layers.GetCount(), LB_ERR);

  // Loading: a list-only combo box selects the first item starting with the
  // text; an editable one shows a text that is no item as it is.
  CEveryControlDlg second(m_library);
  second.m_operation = 1;
  second.m_style = L"bo";
  second.m_freeStyle = L"Zigzag";
  second.m_block = 1;
  session.reply({""});
  ASSERT_EQ(second.DoModal(), IDOK);
  EXPECT_EQ(second.m_operation, 1);
  EXPECT_EQ(second.m_style, L"Bold");
  EXPECT_EQ(second.m_freeStyle, L"Zigzag");
  EXPECT_EQ(second.m_block, 1);
  EXPECT_EQ(second.m_name, L"Alpha");
}

TEST_F(DialogTest, ARefusedNumberKeepsTheDialogOpen) {
  CEveryControlDlg dialog(m_library);
  session.reply({"1002=seven", "OK", "1002=8", "1003=1.5x", "OK", "1003=0.25", "OK"});
  ASSERT_EQ(dialog.DoModal(), IDOK);
  EXPECT_EQ(session.repliesLeft(), 0u);
  EXPECT_TRUE(transcriptHas("Enter an integer."));
  EXPECT_TRUE(transcriptHas("Enter a number."));
  EXPECT_EQ(dialog.m_count, 8);
  EXPECT_DOUBLE_EQ(dialog.m_scale, 0.25);
}

TEST_F(DialogTest, HandlersFireAsOnAScreen) {
  CEveryControlDlg dialog(m_library);
  session.reply({"1060", "1020:1", "1020::2"});
  EXPECT_EQ(dialog.DoModal(), 3);
  const std::string shown = session.transcript();
  // Pick shows the error line; choosing a block hides it and fills the name.
  const size_t picked = shown.find("[Every control]: 1060");
  const size_t chosen = shown.find("[Every control]: 1020:1");
  ASSERT_NE(picked, std::string::npos);
  ASSERT_NE(chosen, std::string::npos);
  EXPECT_NE(shown.substr(picked, chosen - picked).find("3101  text     No such block"), std::string::npos);
  EXPECT_NE(shown.find("Name:  [B]", chosen), std::string::npos);
  EXPECT_NE(shown.find("3101  text     (hidden)", chosen), std::string::npos);
  EXPECT_TRUE(transcriptHas("[Every control] closed: 3"));
  // The double click read the dialog before ending it.
  EXPECT_EQ(dialog.m_name, L"C");
  EXPECT_EQ(dialog.m_block, 2);
  // The name field changed three times: loaded, then B, then C (program changes notify too).
  EXPECT_EQ(dialog.m_nameEdits, 3);
}

TEST_F(DialogTest, ModalResultsFromEnterOkCancelAndEsc) {
  struct Case {
    std::vector<std::string> replies;
    INT_PTR result;
    const wchar_t* name;
  };
  const Case cases[] = {
      {{"1001=Zed", ""}, IDOK, L"Zed"},    // Enter presses the default button
      {{"1001=Zed", "ok"}, IDOK, L"Zed"},  // words ignore letter case
      {{"1001=Zed", "Cancel"}, IDCANCEL, L"Alpha"},
      {{"1001=Zed", "^C"}, IDCANCEL, L"Alpha"},  // Esc
      {{"1001=Zed", "2"}, IDCANCEL, L"Alpha"},   // the Cancel button
      {{"1001=Zed"}, IDCANCEL, L"Alpha"},        // the replies run out
  };
  for (const Case& c : cases) {
    CEveryControlDlg dialog(m_library);
    session.reply(c.replies);
    EXPECT_EQ(dialog.DoModal(), c.result) << c.replies.back();
    EXPECT_EQ(dialog.m_name, c.name) << c.replies.back();
    EXPECT_EQ(session.repliesLeft(), 0u);
  }
  EXPECT_TRUE(transcriptHas("No more replies: the dialog is cancelled."));
}

TEST_F(DialogTest, RefusedRepliesLeaveTheDialogAsItWas) {
  CEveryControlDlg dialog(m_library);
  const std::pair<const char*, const char*> refusals[] = {
      {"1061", "Control 1061 is disabled."},
      {"3101", "Control 3101 is hidden."},
      {"1999", "The dialog has no control 1999."},
      {"1030=Heavy", "Control 1030 has no item \"Heavy\"."},
      {"1020:0,1", "Control 1020 takes one item."},
      {"1020:7", "Control 1020 has no item 7."},
      {"1004=x", "Control 1004 takes no text."},
      {"1050=BYLAYER", "BYLAYER and BYBLOCK are not offered here."},
      {"1050=300,0,0", "A true colour is red,green,blue, each from 0 to 255."},
      {"1021", "Control 1021 cannot be pressed."},
      {"zzz", "Unknown reply \"zzz\""},
  };
  for (const auto& [reply, message] : refusals) session.reply({reply});
  session.reply({"OK"});
  ASSERT_EQ(dialog.DoModal(), IDOK);
  for (const auto& [reply, message] : refusals) EXPECT_TRUE(transcriptHas(message)) << reply;
  EXPECT_EQ(dialog.m_style, L"Standard");
  EXPECT_EQ(dialog.m_block, 0);
  EXPECT_EQ(dialog.m_ignore, BST_UNCHECKED);
  EXPECT_EQ(dialog.m_chosenColor.colorIndex(), 3);
}

TEST_F(DialogTest, ListControlsKeepTheirSelectionsAsClassically) {
  CEveryControlDlg dialog(m_library);
  ASSERT_TRUE(dialog.Create());
  auto* blocks = static_cast<CListBox*>(dialog.GetDlgItem(1020));
  // The selection stays on its item while others are inserted and removed before it.
  EXPECT_EQ(blocks->SetCurSel(1), 1);
  EXPECT_EQ(blocks->InsertString(0, L"First"), 0);
  EXPECT_EQ(blocks->GetCurSel(), 2);
  EXPECT_EQ(blocks->DeleteString(0), 3);
  EXPECT_EQ(blocks->DeleteString(1), 2);
  EXPECT_EQ(blocks->GetCurSel(), LB_ERR);
  EXPECT_EQ(blocks->FindString(0, L"a"), 0);  // the search wraps to the top
  EXPECT_EQ(blocks->FindStringExact(-1, L"c"), 1);
  // Multiple selection has no current selection to set.
  EXPECT_EQ(dialog.m_layers.SetCurSel(0), LB_ERR);
  EXPECT_EQ(dialog.m_layers.SetSel(-1, TRUE), LB_OKAY);
  EXPECT_EQ(dialog.m_layers.GetSelCount(), 3);
  EXPECT_EQ(blocks->GetSelCount(), LB_ERR);
  // List views: focus and selection are separate states.
  CListCtrl& variables = dialog.m_variables;
  variables.SetItemState(1, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
  variables.SetItemState(2, LVIS_SELECTED, LVIS_SELECTED);
  EXPECT_EQ(variables.GetNextItem(-1, LVNI_SELECTED), 1);
  EXPECT_EQ(variables.GetNextItem(1, LVNI_SELECTED), 2);
  EXPECT_EQ(variables.GetNextItem(-1, LVNI_FOCUSED), 1);
  EXPECT_EQ(variables.GetSelectedCount(), 2u);
  EXPECT_EQ(variables.GetItemText(1, 1), L"Walls");
  EXPECT_FALSE(variables.SetItemText(0, 2, L"no such column"));
  // Numbers read from a text say whether they were numbers.
  BOOL translated = TRUE;
  dialog.SetDlgItemText(1002, L"12x");
  EXPECT_EQ(dialog.GetDlgItemInt(1002, &translated), 0u);
  EXPECT_FALSE(translated);
  dialog.SetDlgItemInt(1002, static_cast<UINT>(-4));
  EXPECT_EQ(static_cast<int>(dialog.GetDlgItemInt(1002, &translated)), -4);
  EXPECT_TRUE(translated);
  EXPECT_TRUE(dialog.DestroyWindow());
  EXPECT_FALSE(IsWindow(dialog.m_hWnd));
}

// ---------------------------------------------------------------- where templates come from

class CSmallDlg : public CRyUiDialog {
 public:
  explicit CSmallDlg(UINT id = kSmall, HINSTANCE resources = nullptr) : CRyUiDialog(id, nullptr, resources) {}
};

INT_PTR g_smallResult = 0;
void showSmallCommand() { g_smallResult = CSmallDlg().DoModal(); }

TEST_F(DialogTest, TemplatesComeFromTheHandleTheOverrideOrTheRunningCommand) {
  // A missing template fails as classically, and says why.
  EXPECT_EQ(CSmallDlg(999, m_library).DoModal(), -1);
  EXPECT_TRUE(transcriptHas("Dialog 999 cannot be shown: its resource library has no such dialog."));
  EXPECT_EQ(CSmallDlg().DoModal(), -1);
  EXPECT_TRUE(transcriptHas("Dialog 902 cannot be shown: it has no resource library and no command runs."));
  EXPECT_EQ(CSmallDlg(kSmall, GetModuleHandleW(nullptr)).DoModal(), -1);
  EXPECT_TRUE(transcriptHas("its resource handle is not a resource library"));
  EXPECT_FALSE(CSmallDlg(999, m_library).Create());

  // A command registered with the library finds the template through it.
  odedRegCmds()->addCommand(L"TESTS", L"SHOWSMALL", L"SHOWSMALL", 0, showSmallCommand, nullptr, -1,
                            m_library);
  session.run({"SHOWSMALL", "1001=from the command", "OK"});
  EXPECT_EQ(g_smallResult, IDOK);
  odedRegCmds()->addCommand(L"TESTS", L"SHOWBARE", L"SHOWBARE", 0, showSmallCommand);
  session.run({"SHOWBARE"});
  EXPECT_EQ(g_smallResult, -1);
  EXPECT_TRUE(transcriptHas("the command SHOWBARE was registered without a resource library"));

  {
    CRyResourceOverride resources(m_library);
    session.reply({"Cancel"});
    EXPECT_EQ(CSmallDlg().DoModal(), IDCANCEL);
  }
  EXPECT_EQ(CSmallDlg().DoModal(), -1);
}

// ---------------------------------------------------------------- another front end

// A front end without a command line: it acts on the dialog as its user
// would, through the same access every front end has.
class ScriptedFrontEnd : public ryhost::RyDialogDriver {
 public:
  std::vector<OdString> m_typed;  // texts typed into control 1001, one per OK pressed
  std::vector<OdString> m_messages;
  void showModal(CDialog& dialog) override {
    for (const OdString& text : m_typed) {
      EXPECT_TRUE(ryhost::DialogAccess::type(dialog, 1001, text).isEmpty());
      EXPECT_TRUE(ryhost::DialogAccess::pressDefault(dialog).isEmpty());
      if (ryhost::DialogAccess::window(dialog)->ended) return;
    }
  }
  void modelessShown(CDialog&) override {}
  void modelessHidden(CDialog&) override {}
  int messageBox(const OdString& text, const OdString&, UINT) override {
    m_messages.push_back(text);
    return IDOK;
  }
  bool chooseFile(const ryhost::FileRequest&, OdString&) override { return false; }
  int chooseColor(OdCmColor&, bool, const OdCmColor&, int) override { return RTCAN; }
};

class CLimitedDlg : public CRyUiDialog {
 public:
  explicit CLimitedDlg(HINSTANCE resources) : CRyUiDialog(kSmall, nullptr, resources) {}
  int m_percent = 50;

 protected:
  void DoDataExchange(CDataExchange* pDX) override {
    DDX_Text(pDX, 1001, m_percent);
    DDV_MinMaxInt(pDX, m_percent, 0, 100);
  }
};

TEST_F(DialogTest, AnotherFrontEndDrivesTheSameDialogs) {
  ScriptedFrontEnd frontEnd;
  ryhost::setDialogDriver(&frontEnd);
  frontEnd.m_typed = {L"250", L"75"};
  CLimitedDlg dialog(m_library);
  const INT_PTR result = dialog.DoModal();
  ryhost::setDialogDriver(nullptr);
  EXPECT_EQ(result, IDOK);
  EXPECT_EQ(dialog.m_percent, 75);
  EXPECT_EQ(frontEnd.m_messages, (std::vector<OdString>{L"Enter an integer from 0 to 100."}));
  // Nothing reached the command line, and the console is the front end again.
  EXPECT_FALSE(transcriptHas("Dialog 902"));
  session.reply({"Cancel"});
  EXPECT_EQ(CLimitedDlg(m_library).DoModal(), IDCANCEL);
  EXPECT_TRUE(transcriptHas("Dialog 902 \"Small\""));
}

// ---------------------------------------------------------------- modeless

class COptionsDlg : public CDialog {
 public:
  COptionsDlg() : CDialog(kOptions) {}
  int m_operation = 0;
  int m_eraseTools = 1;

 protected:
  void DoDataExchange(CDataExchange* pDX) override {
    DDX_Radio(pDX, 14835, m_operation);
    DDX_Check(pDX, 14838, m_eraseTools);
  }
};

std::vector<std::pair<int, int>> g_seen;  // operation and erase-tools after each prompt

void booleanCommand() {
  COptionsDlg dialog;
  if (!dialog.Create(kOptions)) return;
  ACHAR reply[64];
  while (ryedGetString(0, L"\nSelect: ", reply, 64) == RTNORM && reply[0]) {
    dialog.UpdateData(TRUE);
    g_seen.emplace_back(dialog.m_operation, dialog.m_eraseTools);
  }
  dialog.DestroyWindow();
}

TEST_F(DialogTest, AModelessDialogChangesBetweenTwoPromptsOfItsCommand) {
  odedRegCmds()->addCommand(L"TESTS", L"BOOLOP", L"BOOLOP", 0, booleanCommand, nullptr, -1, m_library);
  g_seen.clear();
  const std::string shown =
      session.run({"BOOLOP", "!14838", "!14836", "first", "!?", "!14837", "!14838", "second", "", "!14838"});
  EXPECT_EQ(g_seen, (std::vector<std::pair<int, int>>{{1, 0}, {2, 1}}));
  EXPECT_NE(shown.find("Dialog 901 \"Boolean\" (modeless)"), std::string::npos);
  // The reply is echoed at the prompt, the change shown, the prompt asked again.
  EXPECT_NE(shown.find("Select: !14838\n  14838 check    Erase tools  [ ]\nSelect: "), std::string::npos);
  EXPECT_NE(shown.find("[Boolean] closed"), std::string::npos);
  // Once the dialog is gone, "!" replies are ordinary replies again.
  EXPECT_NE(shown.find("Unknown command \"!14838\""), std::string::npos);
}

}  // namespace
