// txt2mtxt in the real host with the real module: merged contents, box and
// properties as python3-ezdxf reads them, one text a multiline text, the
// settings file and its dialog, locked layers, Esc and U.
#include <gmock/gmock.h>

#include "RyWindows.h"
#include "kestrix_support.h"

using testing::HasSubstr;

namespace {

void setOptions(const wchar_t* selectType, const wchar_t* wordWrap, const wchar_t* merge) {
  WritePrivateProfileStringW(L"RYADEXCMD", L"TXT2MTXT_SELECTTYPE", selectType, L"RYAD.INI");
  WritePrivateProfileStringW(L"RYADEXCMD", L"TXT2MTXT_WORDWARD", wordWrap, L"RYAD.INI");
  WritePrivateProfileStringW(L"RYADEXCMD", L"TXT2MTXT_MERGEMTEXT", merge, L"RYAD.INI");
}

std::wstring option(const wchar_t* key) {
  wchar_t buffer[30] = {};
  GetPrivateProfileStringW(L"RYADEXCMD", key, L"missing", buffer, 30, L"RYAD.INI");
  return buffer;
}

const char* const kTextReport = R"(
for e in doc.modelspace():
    if e.dxftype() == 'MTEXT':
        print('MTEXT', e.dxf.color, e.dxf.layer, e.dxf.style, e.dxf.attachment_point, e.dxf.flow_direction,
              '%.9f %.9f %.9f' % tuple(e.dxf.insert), '%.9f' % e.dxf.char_height, '%.9f' % e.dxf.get('width', 0),
              '%.9f %.9f %.9f' % tuple(e.dxf.get('text_direction', (1, 0, 0))))
        print('CONTENTS', e.text)
    elif e.dxftype() == 'TEXT':
        print('TEXT', e.dxf.text)
)";

struct Report {
  int audit = -1;
  std::vector<std::vector<std::string>> mtexts;
  std::vector<std::string> contents, texts;
};

Report read(OdDbDatabase* db, const std::string& name) {
  Report report;
  for (const std::string& line : txtmask::ezdxfLines(db, name, kTextReport)) {
    const std::vector<std::string> w = txtmask::words(line);
    if (w.empty()) continue;
    if (w[0] == "AUDIT") report.audit = std::stoi(w[1]);
    if (w[0] == "MTEXT") report.mtexts.push_back(w);
    if (w[0] == "CONTENTS") report.contents.push_back(line.substr(9));
    if (w[0] == "TEXT") report.texts.push_back(line.substr(5));
    if (w[0] == "Traceback") ADD_FAILURE() << line;
  }
  return report;
}

TEST(TextToMText, MixedTextsMergeIntoOneWithSwitchesWhereHeightOrColourChangesAndUndoBringsThemBack) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  setOptions(L"FALSE", L"FALSE", L"FALSE");
  OdDbDatabase* db = session.db();
  const OdDbObjectId notes = att::layer(db, L"Notes");
  txtmask::TextSpec first;
  first.text = L"First", first.height = 2, first.color = 3, first.layer = notes;
  txtmask::TextSpec second = first;
  second.text = L"Second", second.at = {0, -3, 0}, second.layer = OdDbObjectId();
  txtmask::TextSpec third;
  third.text = L"Third", third.at = {0, -7, 0}, third.height = 3, third.color = 1;
  txtmask::TextSpec fourth = third;
  fourth.text = L"Fourth", fourth.at = {20, -10, 0}, fourth.rotation = M_PI / 2;
  std::vector<std::string> picks;
  for (const txtmask::TextSpec& spec : {first, second, third, fourth}) picks.push_back("#" + txtmask::handleOf(txtmask::text(db, spec)));

  // The options are set in the dialog from the prompt's keyword, then the
  // texts picked in order.
  std::vector<std::string> replies = {"txt2mtxt", "Settings", "3200", "3109", "OK", picks[0]};
  replies.insert(replies.end(), picks.begin() + 1, picks.end());
  replies.push_back("");
  session.run(replies);
  EXPECT_EQ(option(L"TXT2MTXT_MERGEMTEXT"), L"TRUE");
  EXPECT_EQ(option(L"TXT2MTXT_WORDWARD"), L"TRUE");
  EXPECT_EQ(option(L"TXT2MTXT_SELECTTYPE"), L"FALSE");

  const Report report = read(db, "merged");
  EXPECT_EQ(report.audit, 0);
  EXPECT_TRUE(report.texts.empty());
  ASSERT_EQ(report.mtexts.size(), 1u);
  EXPECT_EQ(report.contents[0], "First\\PSecond\\P\\H3.0000;\\C1;Third\\PFourth");
  const std::vector<std::string>& m = report.mtexts[0];
  EXPECT_EQ(m[1], "3");      // the first text's colour
  EXPECT_EQ(m[2], "Notes");  // and layer
  EXPECT_EQ(m[3], "Standard");
  EXPECT_EQ(m[4], "1");  // top left
  EXPECT_EQ(m[5], "5");  // by style
  // Boxes along x: "First" 5 x 0.7 x 2 = 7, "Second" 8.4, "Third" 10.5; the
  // turned "Fourth" stands 3 wide left of x = 20 and 12.6 up from y = -10.
  // So the combined box runs x 0..20 and tops out at y = 2.6.
  EXPECT_NEAR(std::stod(m[6]), 0, 1e-9);
  EXPECT_NEAR(std::stod(m[7]), 2.6, 1e-9);
  EXPECT_NEAR(std::stod(m[9]), 2, 1e-9);   // the first text's height
  EXPECT_NEAR(std::stod(m[10]), 20, 1e-9);  // word wrap at the widest extent
  EXPECT_NEAR(std::stod(m[11]), 1, 1e-9);   // the first text's direction

  session.run({"U"});
  const Report undone = read(db, "undone");
  EXPECT_TRUE(undone.mtexts.empty());
  EXPECT_THAT(undone.texts, testing::UnorderedElementsAre("First", "Second", "Third", "Fourth"));
}

TEST(TextToMText, EachTextOnItsOwnWithoutWrapAndOnlyUpperCaseTrueTurnsAnOptionOn) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  setOptions(L"FALSE", L"true", L"True");
  OdDbDatabase* db = session.db();
  txtmask::TextSpec spec;
  spec.text = L"Turned", spec.height = 2, spec.rotation = M_PI / 2, spec.at = {5, 5, 0};
  const OdDbObjectId turned = txtmask::text(db, spec);
  std::string out = session.run({"txt2mtxt", "#" + txtmask::handleOf(turned), ""});
  EXPECT_THAT(out, HasSubstr("1 text objects removed, 1 MText object added."));
  Report report = read(db, "single");
  ASSERT_EQ(report.mtexts.size(), 1u);
  EXPECT_EQ(report.contents[0], "Turned");
  const std::vector<std::string>& m = report.mtexts[0];
  // Turned by 90 degrees its top left is the baseline start moved one height
  // to the left (-x): (3, 5); no wrap width; direction +y.
  EXPECT_NEAR(std::stod(m[6]), 3, 1e-9);
  EXPECT_NEAR(std::stod(m[7]), 5, 1e-9);
  EXPECT_NEAR(std::stod(m[10]), 0, 1e-9);
  EXPECT_NEAR(std::stod(m[12]), 1, 1e-9);
  EXPECT_EQ(m[1], "256");  // a text by layer stays by layer

  // Two more texts, one of them on a locked layer: that one stays a text.
  spec.rotation = 0, spec.text = L"Free";
  const OdDbObjectId free = txtmask::text(db, spec);
  spec.text = L"Kept", spec.layer = att::layer(db, L"Locked", 4);
  const OdDbObjectId locked = txtmask::text(db, spec);
  out = session.run({"txt2mtxt", "#" + txtmask::handleOf(free), "#" + txtmask::handleOf(locked), ""});
  EXPECT_THAT(out, HasSubstr("No text converted for 1 object(s) on locked layers or not single-line texts."));
  EXPECT_THAT(out, HasSubstr("1 text objects removed, 1 MText object added."));
  report = read(db, "locked");
  EXPECT_EQ(report.mtexts.size(), 2u);
  EXPECT_EQ(report.texts, std::vector<std::string>{"Kept"});
}

TEST(TextToMText, TheSecondMergeTakesMultilineTextsInAndTheFirstDoesNot) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  OdDbDatabase* db = session.db();
  txtmask::TextSpec spec;
  spec.text = L"Head";
  const std::string text = "#" + txtmask::handleOf(txtmask::text(db, spec));
  const std::string mtext = "#" + txtmask::handleOf(txtmask::mtext(db, L"One\\PTwo", {0, -3, 0}, 1, OdDbMText::kTopLeft, 0));
  setOptions(L"FALSE", L"FALSE", L"TRUE");
  EXPECT_THAT(session.run({"txt2mtxt", text, mtext, ""}),
              HasSubstr("No text converted for 1 object(s) on locked layers or not single-line texts."));
  Report report = read(db, "first-merge");
  ASSERT_EQ(report.mtexts.size(), 2u);  // the new one and the one left
  session.run({"U"});
  setOptions(L"TRUE", L"FALSE", L"TRUE");
  session.run({"txt2mtxt", text, mtext, ""});
  report = read(db, "second-merge");
  ASSERT_EQ(report.mtexts.size(), 1u);
  EXPECT_EQ(report.contents[0], "Head\\POne\\PTwo");
}

TEST(TextToMText, TheRunningCountTakesOnlyUsableTextsAndAFailedSelectionSaysSoUnlessItIsEnter) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  setOptions(L"FALSE", L"FALSE", L"TRUE");
  OdDbDatabase* db = session.db();
  txtmask::TextSpec spec;
  spec.text = L"One";
  const std::string one = "#" + txtmask::handleOf(txtmask::text(db, spec));
  spec.text = L"Two", spec.at = {0, -5, 0};
  const std::string two = "#" + txtmask::handleOf(txtmask::text(db, spec));
  spec.text = L"Kept", spec.at = {0, -10, 0}, spec.layer = att::layer(db, L"Locked", 4);
  const std::string locked = "#" + txtmask::handleOf(txtmask::text(db, spec));

  // Each step prints the count so far: the locked text and a second pick of
  // the same text add nothing to it.
  const std::string out = session.run({"txt2mtxt", one, locked, one, two, ""});
  EXPECT_THAT(out, HasSubstr("Texts to convert: 1 so far.\nSelect texts to convert or [Settings/ALL/Previous/Last]: " +
                             locked + "\nTexts to convert: 1 so far.\nSelect texts to convert or [Settings/ALL/"
                             "Previous/Last]: " + one + "\nTexts to convert: 1 so far."));
  EXPECT_THAT(out, HasSubstr(two + "\nTexts to convert: 2 so far."));
  Report report = read(db, "counted");
  ASSERT_EQ(report.mtexts.size(), 1u);
  EXPECT_EQ(report.contents[0], "One\\PTwo");
  EXPECT_EQ(report.texts, std::vector<std::string>{"Kept"});

  // Enter at once ends quietly. A pick in empty space answered by Enter at
  // the corner prompt leaves ERRNO at 7 (a missed pick): the selection failed,
  // and the catalogue's "Nothing selected." (message 2061) says so.
  const std::string quiet = session.run({"txt2mtxt", ""});
  EXPECT_THAT(quiet, testing::Not(HasSubstr("Nothing selected.")));
  const std::string failed = session.run({"txt2mtxt", "500,500", ""});
  EXPECT_THAT(failed, HasSubstr("Specify opposite corner: \nNothing selected."));
  EXPECT_EQ(session.host().sysvars().getInt(L"ERRNO", -1), 7);
  report = read(db, "failed");
  EXPECT_EQ(report.mtexts.size(), 1u);
  EXPECT_EQ(report.texts, std::vector<std::string>{"Kept"});
}

TEST(TextToMText, EscAndACancelledDialogChangeNothing) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  setOptions(L"FALSE", L"FALSE", L"FALSE");
  txtmask::TextSpec spec;
  txtmask::text(session.db(), spec);
  session.run({"CMDECHO", "1"});
  session.run({"txt2mtxt", "Settings", "3200", "Cancel", "^C"});
  EXPECT_EQ(option(L"TXT2MTXT_MERGEMTEXT"), L"FALSE");
  EXPECT_EQ(session.host().sysvars().getInt(L"CMDECHO", -1), 1);
  const Report report = read(session.db(), "cancelled");
  EXPECT_TRUE(report.mtexts.empty());
  EXPECT_EQ(report.texts.size(), 1u);
}

}  // namespace
