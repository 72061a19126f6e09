// The standard dialogs on the console: message boxes, file navigation and
// the colour dialog, and the test module's command that shows all three.
#include <filesystem>
#include <fstream>

#include "RyDialogs.h"
#include "harness.h"
#include "host_test_support.h"

using namespace hosttest;

namespace {

namespace fs = std::filesystem;

TEST(MessageBoxes, RepliesPickTheButtonsOfTheBox) {
  HostSession session;
  struct Case {
    UINT type;
    const char* reply;
    int result;
  };
  const Case cases[] = {
      {MB_YESNO, "y", IDYES},
      {MB_YESNO, "No", IDNO},
      {MB_YESNO | MB_DEFBUTTON2, "", IDNO},  // Enter: the default button
      {MB_YESNOCANCEL, "^C", IDCANCEL},      // Esc: Cancel where there is one
      {MB_YESNO, "^C", IDNO},                // else No
      {MB_OKCANCEL | MB_ICONWARNING, "CANCEL", IDCANCEL},
      {MB_RETRYCANCEL, "r", IDRETRY},
      {MB_ABORTRETRYIGNORE | MB_DEFBUTTON3, "", IDIGNORE},
  };
  for (const Case& c : cases) {
    session.reply({c.reply});
    EXPECT_EQ(RyUiMessageBox(L"Go on?", L"Question", c.type), c.result) << c.type << " " << c.reply;
  }
  EXPECT_EQ(session.repliesLeft(), 0u);
  EXPECT_TRUE(contains(session.transcript(), "[Question] Go on?\nYes/No <Yes>: y"));

  // A word that names no button of the box is asked again.
  session.reply({"ok", "yes"});
  EXPECT_EQ(RyUiMessageBox(L"Replace?", L"Files", MB_YESNO), IDYES);
  EXPECT_TRUE(contains(session.transcript(), "Answer Yes or No."));

  // A box with OK alone only shows its message.
  session.reply({"left alone"});
  EXPECT_EQ(RyUiMessageBox(L"Done.", nullptr, MB_OK | MB_ICONINFORMATION), IDOK);
  EXPECT_EQ(session.repliesLeft(), 1u);
  EXPECT_TRUE(contains(session.transcript(), "[ryad] Done."));
}

class NavDialogTest : public ::testing::Test {
 protected:
  NavDialogTest() : m_folder(fs::temp_directory_path() / ("nav-test-" + std::to_string(getpid()))) {
    fs::create_directories(m_folder);
    std::ofstream(m_folder / "old.txt") << "kept";
  }
  ~NavDialogTest() override { fs::remove_all(m_folder); }
  std::string in(const std::string& name) const { return (m_folder / name).string(); }
  CRyUiNavDialog saveDialog() const {
    CRyUiNavDialog dialog(CNavFilterArray{CNavFilter(L"Text files", L"*.txt;*.csv")});
    dialog.SetCreatingFile(true);
    dialog.SetDialogCaption(L"Export attributes");
    dialog.SetConfirmReplace(true);
    dialog.SetPreviewPresent(true);
    dialog.SetInitialFolder(OdString(m_folder.string()));
    dialog.SetInitialFileName(L"Drawing1.txt");
    return dialog;
  }

  HostSession session;
  fs::path m_folder;
};

TEST_F(NavDialogTest, SavingOffersTheInitialNameAndAsksBeforeReplacing) {
  CRyUiNavDialog dialog = saveDialog();
  session.reply({""});
  ASSERT_EQ(dialog.DoModal(), IDOK);
  EXPECT_EQ(dialog.GetPathName(), OdString(in("Drawing1.txt")));
  EXPECT_TRUE(contains(session.transcript(), "[File] Export attributes (save; Text files (*.txt;*.csv))"));
  EXPECT_TRUE(contains(session.transcript(), "File name <Drawing1.txt>: "));

  // A name without extension takes the first filter's; an existing file asks first.
  session.reply({"old", "n", "report", "old.txt", "yes"});
  ASSERT_EQ(dialog.DoModal(), IDOK);
  EXPECT_EQ(dialog.GetPathName(), OdString(in("report.txt")));
  ASSERT_EQ(dialog.DoModal(), IDOK);
  EXPECT_EQ(dialog.GetPathName(), OdString(in("old.txt")));
  EXPECT_EQ(dialog.GetFileName(), L"old.txt");
  EXPECT_EQ(dialog.GetFileTitle(), L"old");
  EXPECT_EQ(dialog.GetFileExt(), L"txt");
  EXPECT_TRUE(contains(session.transcript(), "old.txt already exists. Replace it?"));
  EXPECT_EQ(session.repliesLeft(), 0u);

  session.reply({in("no/such/folder/x.txt"), "^C"});
  EXPECT_EQ(dialog.DoModal(), IDCANCEL);
  EXPECT_TRUE(contains(session.transcript(), "No such folder: " + in("no/such/folder")));
}

TEST_F(NavDialogTest, OpeningWantsAFileThatExists) {
  CRyUiNavDialog dialog(CNavFilterArray{CNavFilter(L"Text files", L"*.txt")});
  dialog.SetDialogCaption(L"Import attributes");
  dialog.SetInitialFolder(OdString(m_folder.string()));
  session.reply({"", "missing.txt", m_folder.string(), "old"});
  ASSERT_EQ(dialog.DoModal(), IDOK);
  EXPECT_EQ(dialog.GetPathName(), OdString(in("old.txt")));
  for (const char* said : {"Enter a file name.", "No such file: ", " is a folder."}) {
    EXPECT_TRUE(contains(session.transcript(), said)) << said;
  }
  session.reply({"^C"});
  EXPECT_EQ(dialog.DoModal(), IDCANCEL);
}

TEST(NavFilters, PatternsAndTheirExtension) {
  const CNavFilter filter(L"Drawings", L"*.dxf; *.DWG");
  EXPECT_EQ(filter.GetCount(), 2);
  EXPECT_EQ(filter.GetDefaultExtension(), L"dxf");
  EXPECT_TRUE(filter.Matches(L"plan.dwg"));
  EXPECT_FALSE(filter.Matches(L"plan.dwt"));
  EXPECT_TRUE(CNavFilter(L"All", L"*.*").GetDefaultExtension().isEmpty());
  EXPECT_TRUE(CNavFilter(L"Data", L"data.*").GetDefaultExtension().isEmpty());
}

TEST(ColourDialog, AcceptsOnlyTheKindsOffered) {
  HostSession session;
  OdCmColor byLayer(OdCmEntityColor::kByLayer), color;
  color.setColorIndex(1);

  // Palette only: BYLAYER and true colours are refused and asked again.
  session.reply({"BYLAYER", "0", "10,20,30", "256", "green"});
  ASSERT_EQ(ryedSetColorDialogTrueColor(color, false, byLayer, kRyAciTab), RTNORM);
  EXPECT_EQ(color.colorIndex(), 3);
  for (const char* said :
       {"BYLAYER and BYBLOCK are not offered here.", "True colours are not offered here.", "Enter 1-255."}) {
    EXPECT_TRUE(contains(session.transcript(), said)) << said;
  }
  session.reply({"bylayer"});
  ASSERT_EQ(ryedSetColorDialogTrueColor(color, true, byLayer), RTNORM);
  EXPECT_TRUE(color.isByLayer());
  session.reply({"10, 20,30"});
  ASSERT_EQ(ryedSetColorDialogTrueColor(color, true, byLayer), RTNORM);
  EXPECT_TRUE(color.isByColor());
  EXPECT_EQ(color.red() + color.green() + color.blue(), 60);
  // Enter keeps the colour; Esc leaves it and says so.
  session.reply({"", "^C"});
  EXPECT_EQ(ryedSetColorDialogTrueColor(color, true, byLayer), RTNORM);
  EXPECT_EQ(ryedSetColorDialogTrueColor(color, true, byLayer), RTCAN);
  EXPECT_EQ(color.toString(), L"10,20,30");

  int index = 7;
  session.reply({"byblock"});
  ASSERT_EQ(ryedSetColorDialog(index, true, 2), RTNORM);
  EXPECT_EQ(index, 0);
  EXPECT_TRUE(contains(session.transcript(), "Colour (1-255, BYLAYER, BYBLOCK) <7>: "));
}

TEST(StandardDialogs, AModuleCommandShowsThemInTurn) {
  HostSession session;
  ASSERT_TRUE(session.loadModule(std::string(KESTRIX_BIN_DIR) + "/testmodule.yrx"));
  const fs::path target = fs::temp_directory_path() / ("std-dialogs-" + std::to_string(getpid()));
  const std::string shown = session.run({"TMDIALOGS", "y", target.string(), "BYBLOCK", "TMDIALOGS", "n"});
  EXPECT_TRUE(contains(shown, "The settings would go to " + target.string() + ".txt (" +
                                  target.filename().string() + ".txt), marked in colour BYBLOCK."));
  EXPECT_TRUE(contains(shown, "Nothing saved."));
  EXPECT_FALSE(fs::exists(target.string() + ".txt"));
}

}  // namespace
