// attout and attin in the real host with the real module: the round trip
// through an edited file in one undo step, unique tags and columns, the
// forms of rows, locked layers, the question and the matching by hand,
// the command-line file name, and corpus drawings.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>

#include "OdEdCommandStack.h"
#include "kestrix_support.h"

using testing::HasSubstr;
using testing::Not;

namespace {

// The global names of the commands started while it is attached.
struct CommandLog : OdEditorReactor {
  CommandLog() { odedEditor()->addReactor(this); }
  ~CommandLog() override { odedEditor()->removeReactor(this); }
  void commandWillStart(const OdString& name) override { started.push_back(name.toUtf8()); }
  std::vector<std::string> started;
};

std::vector<std::string> fields(const std::string& line) {
  std::vector<std::string> result;
  std::istringstream in(line);
  for (std::string field; std::getline(in, field, '\t');) result.push_back(field);
  if (!line.empty() && line.back() == '\t') result.push_back("");
  return result;
}

std::string joined(const std::vector<std::string>& parts, char separator) {
  std::string text;
  for (size_t i = 0; i < parts.size(); ++i) text += (i ? std::string(1, separator) : "") + parts[i];
  return text;
}

// A drawing of n references with one attribute V (value "0") each, on the layers given by index.
std::vector<std::string> plainReferences(OdDbDatabase* db, int n,
                                         const std::vector<OdDbObjectId>& layers = {}) {
  std::vector<std::string> handles;
  for (int i = 0; i < n; ++i) {
    const OdDbObjectId layer = i < static_cast<int>(layers.size()) ? layers[i] : OdDbObjectId();
    handles.push_back(att::reference(db, L"B", 100.0 * i, {{L"V", L"0", layer}}));
  }
  return handles;
}

std::wstring valueOf(HostSession& session, const std::string& handle) {
  return att::attributeValues(session.db())[handle + "/0"];
}

}  // namespace

TEST(AttributeCommands, EditedFileChangesExactlyTheIntendedAttributesInOneUndoStep) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  std::vector<std::string> handles;
  for (int i = 0; i < 30; ++i) {
    const std::wstring n = std::to_wstring(i);
    if (i % 3 == 0)
      handles.push_back(att::reference(session.db(), L"DOOR", i,
                                       {{L"NUMBER", L"D" + n}, {L"WIDTH", L"900"}, {L"FIRE", L"EI30"}}));
    if (i % 3 == 1)
      handles.push_back(
          att::reference(session.db(), L"WINDOW", i, {{L"NUMBER", L"W" + n}, {L"TYPE", L"fixed"}}));
    if (i % 3 == 2)
      handles.push_back(
          att::reference(session.db(), L"ROOM", i, {{L"NAME", L"room" + n}, {L"AREA", L"12.5"}}));
  }
  const auto before = att::attributeValues(session.db());
  const std::string path = att::tempPath("roundtrip.txt");
  EXPECT_THAT(att::exportAll(session, path), HasSubstr("Attributes exported to " + path + "."));

  std::vector<std::string> rows = att::lines(path);
  ASSERT_EQ(rows.size(), 31u);
  EXPECT_EQ(rows[0], "HANDLE\tBLOCKNAME\tNUMBER\tWIDTH\tFIRE\tTYPE\tNAME\tAREA");
  EXPECT_EQ(rows[1], "'" + handles[0] + "\tDOOR\tD0\t900\tEI30\t<>\t<>\t<>");
  EXPECT_EQ(rows[3], "'" + handles[2] + "\tROOM\t<>\t<>\t<>\t<>\troom2\t12.5");
  // The edit: every fire rating in lower case (no change), a width, a window
  // type in other letter case (no change), a name left as "<>", an area, a
  // number, and one row dropped though it was changed.
  std::vector<std::vector<std::string>> table;
  for (const auto& row : rows) table.push_back(fields(row));
  for (auto& row : table) {
    if (row[4] == "EI30") row[4] = "ei30";
  }
  table[1][3] = "1000";
  table[2][5] = "FIXED";
  table[3][6] = "<>";
  table[3][7] = "14";
  table[5][2] = "W4-new";
  table[4][2] = "dropped";
  table.erase(table.begin() + 4);
  std::string edited;
  for (const auto& row : table) edited += joined(row, '\t') + "\r\n";
  att::writeBytes(path, edited);

  std::string out = session.run({"attin", path});
  EXPECT_THAT(
      out,
      HasSubstr("Reading the attribute file...\nThe attribute file was read.\n3 block references updated."));
  auto expected = before;
  expected[handles[0] + "/1"] = L"1000";
  expected[handles[2] + "/1"] = L"14";
  expected[handles[4] + "/0"] = L"W4-new";
  EXPECT_EQ(att::attributeValues(session.db()), expected);

  session.run({"U"});
  EXPECT_EQ(att::attributeValues(session.db()), before);
}

TEST(AttributeCommands, RepeatedTagsAreNumberedAndColumnsFollowTheSelection) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const std::string a = att::reference(session.db(), L"T1", 0, {{L"A", L"1"}, {L"a", L"2"}, {L"A", L"3"}});
  const std::string xy = att::reference(session.db(), L"T2", 10, {{L"X", L"x"}, {L"Y", L"y"}});
  const std::string yz = att::reference(session.db(), L"T3", 20, {{L"Y", L"y2"}, {L"Z", L"z"}});
  const std::string path = att::tempPath("tags.txt");
  att::exportAll(session, path);
  EXPECT_EQ(att::lines(path), (std::vector<std::string>{
                                  "HANDLE\tBLOCKNAME\tA\ta(1)\tA(2)\tX\tY\tZ",
                                  "'" + a + "\tT1\t1\t2\t3\t<>\t<>\t<>",
                                  "'" + xy + "\tT2\t<>\t<>\t<>\tx\ty\t<>",
                                  "'" + yz + "\tT3\t<>\t<>\t<>\t<>\ty2\tz",
                              }));
  // Every attribute of a repeated tag takes the first column of the bare
  // tag; the numbered columns change nothing and are not reported.
  att::writeBytes(path, "HANDLE\tBLOCKNAME\tA\ta(1)\tA(2)\tX\n'" + a + "\tT1\tnew\tother\tthird\tlost\n");
  const std::string out = session.run({"attin", path});
  EXPECT_THAT(out, HasSubstr("1 block references updated."));
  EXPECT_THAT(out, HasSubstr("Not matched in the block reference:\n  X: lost"));
  EXPECT_THAT(out, Not(HasSubstr("a(1):")));
  auto values = att::attributeValues(session.db());
  EXPECT_EQ(values[a + "/0"] + values[a + "/1"] + values[a + "/2"], L"newnewnew");
}

TEST(AttributeCommands, RowsAreMatchedByHandleAndDroppedWhenTheirValuesDoNotFit) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const auto h = plainReferences(session.db(), 5);
  const std::string path = att::tempPath("rows.txt");
  att::writeBytes(path, "HANDLE\tBLOCKNAME\tV\n'" + h[0] + "\tB\tone\n  '" + h[1] + "  \tb\ttwo\n" + h[2] +
                            "\t\tthree\n'" + h[3] + "\tB\tfour\textra\n'" + h[4] + "\tB\n");
  CommandLog log;
  EXPECT_THAT(session.run({"attin", path}), HasSubstr("3 block references updated."));
  EXPECT_EQ(valueOf(session, h[0]) + valueOf(session, h[1]) + valueOf(session, h[2]), L"onetwothree");
  EXPECT_EQ(valueOf(session, h[3]) + valueOf(session, h[4]), L"00");
  EXPECT_EQ(log.started, (std::vector<std::string>{"attin", "UNDO", "UNDO"}));

  // Without a header nothing is read as a row: no group, no change.
  att::writeBytes(path, "'" + h[3] + "\tB\tfour\n");
  log.started.clear();
  EXPECT_THAT(session.run({"attin", path}), HasSubstr("0 block references updated."));
  EXPECT_EQ(log.started, std::vector<std::string>{"attin"});
  EXPECT_EQ(valueOf(session, h[3]), L"0");
}

TEST(AttributeCommands, OnlyLayersThatAreJustLockedAreUnlockedAndLockedAgain) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const OdDbObjectId locked = att::layer(session.db(), L"L1"), lockedFrozen = att::layer(session.db(), L"L2");
  const auto h = plainReferences(session.db(), 2, {locked, lockedFrozen});
  att::layer(session.db(), L"L1", 4);
  att::layer(session.db(), L"L2", 5);
  const std::string path = att::tempPath("layers.txt");
  att::writeBytes(path, "HANDLE\tBLOCKNAME\tV\n'" + h[0] + "\tB\tnew\n'" + h[1] + "\tB\tnew\n");
  EXPECT_THAT(session.run({"attin", path}), HasSubstr("1 block references updated."));
  EXPECT_EQ(valueOf(session, h[0]), L"new");
  EXPECT_EQ(valueOf(session, h[1]), L"0");  // its layer stayed locked
  EXPECT_EQ(att::layerFlags(session.db(), L"L1"), 4);
  EXPECT_EQ(att::layerFlags(session.db(), L"L2"), 5);
}

TEST(AttributeCommands, LayersAreLockedAgainByNameAndOneUndoRestoresAll) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  // Each locked layer's name holds a wildcard character that a layer name
  // may hold; its unlocked neighbour is what that name would match as a
  // pattern. (* ? , and the reverse quote are refused in record names.)
  const std::pair<const wchar_t*, const wchar_t*> names[] = {
      {L"L#1", L"L51"}, {L"L@1", L"LA1"}, {L"L.1", L"L_1"}, {L"~L", L"M"},
      {L"[L]", L"L"},   {L"L-1", L"L-2"}, {L"A[B]C", L"ABC"},
  };
  std::vector<OdDbObjectId> layers;
  for (const auto& [locked, neighbour] : names) {
    layers.push_back(att::layer(session.db(), locked));
    att::layer(session.db(), neighbour);
  }
  layers.push_back(att::layer(session.db(), L"FROZEN"));
  const auto h = plainReferences(session.db(), static_cast<int>(layers.size()), layers);
  for (const auto& [locked, neighbour] : names) att::layer(session.db(), locked, 4);
  att::layer(session.db(), L"FROZEN", 5);
  const auto before = att::attributeValues(session.db());
  const std::string path = att::tempPath("names.txt");
  std::string file = "HANDLE\tBLOCKNAME\tV\n";
  for (const std::string& handle : h) file += "'" + handle + "\tB\tnew\n";
  att::writeBytes(path, file);

  const std::string out = session.run({"attin", path});
  EXPECT_THAT(out, HasSubstr("\n1 attributes on locked layers were left as they were.\n7 block references updated."));
  const auto expectLocks = [&](const char* when) {
    for (const auto& [locked, neighbour] : names) {
      EXPECT_EQ(att::layerFlags(session.db(), locked), 4) << when << " " << OdString(locked).toUtf8();
      EXPECT_EQ(att::layerFlags(session.db(), neighbour), 0) << when << " " << OdString(neighbour).toUtf8();
    }
    EXPECT_EQ(att::layerFlags(session.db(), L"FROZEN"), 5) << when;
  };
  expectLocks("after attin");
  EXPECT_EQ(valueOf(session, h[0]) + valueOf(session, h[6]) + valueOf(session, h[7]), L"newnew0");

  session.run({"U"});
  EXPECT_EQ(att::attributeValues(session.db()), before);
  expectLocks("after U");
}

TEST(AttributeCommands, UnmatchedRowsStopOnNoAndGoByHandOnYes) {
  const std::string path = att::tempPath("hand.txt");
  {
    HostSession session;
    ASSERT_TRUE(session.loadModule());
    const auto h = plainReferences(session.db(), 1);
    att::writeBytes(path, "HANDLE\tBLOCKNAME\tV\n'FFFFF\tB\tx\n'" + h[0] + "\tB\tlater\n");
    EXPECT_THAT(session.run({"attin", path, "No"}), HasSubstr("0 block references updated."));
    EXPECT_EQ(valueOf(session, h[0]), L"0");
    EXPECT_FALSE(session.db()->isUndoBlockStarted());
  }
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const auto h = plainReferences(session.db(), 3);
  att::writeBytes(path, "HANDLE\tBLOCKNAME\tV\n'FFFFF\tB\tpicked\n'FFFFE\tB\tPICKED\n'" + h[1] +
                            "\tB\tq\n'FFFFD\tB\tz\n'" + h[2] + "\tB\tnever\n");
  // Row 1: a missed pick whose crossing window holds the first reference.
  // Row 2: a pick that changes nothing (letter case only), then Enter skips
  // the row. Row 3 matches by handle. Row 4: Esc stops; row 5 is not reached.
  const std::string out = session.run({"attin", path, "Yes", "50,50", "-5,-5", "#" + h[0], "", "^C"});
  EXPECT_THAT(
      out,
      HasSubstr(
          "\n TAG           VALUE\n ---           -----\n HANDLE        'FFFFF\n"
          " BLOCKNAME     B\n V             picked\nPick the block reference that this row belongs to."));
  EXPECT_THAT(out, HasSubstr("Select objects: 1"));
  EXPECT_THAT(out, HasSubstr("Not matched in the block reference:\n  HANDLE: 'FFFFF"));
  EXPECT_THAT(out, Not(HasSubstr("BLOCKNAME: B")));
  EXPECT_THAT(out, HasSubstr("[Alert] The picked block reference was not changed."));
  EXPECT_THAT(out, HasSubstr("2 block references updated."));
  EXPECT_EQ(valueOf(session, h[0]) + valueOf(session, h[1]) + valueOf(session, h[2]), L"pickedq0");
  EXPECT_FALSE(session.db()->isUndoBlockStarted());
  session.run({"U"});
  EXPECT_EQ(valueOf(session, h[0]) + valueOf(session, h[1]) + valueOf(session, h[2]), L"000");
}

TEST(AttributeCommands, FileNameOnTheCommandLineWhenFileDialogsAreOff) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const auto h = plainReferences(session.db(), 1);
  const std::string path = att::tempPath("typed name.txt");
  att::writeBytes(path, "HANDLE\tBLOCKNAME\tV\n'" + h[0] + "\tB\ttyped\n");
  session.run({"FILEDIA", "0"});
  const std::string out = session.run({"attin", "  ", "a?b.txt", "*.txt", "~", "^C", "  " + path + " "});
  EXPECT_THAT(out,
              HasSubstr("Enter a file name:  \nThe file name cannot be empty!\n\nEnter a file name:a?b.txt\n"
                        "Invalid input! \n\nEnter a file name:*.txt\nInvalid input! \n"));
  EXPECT_THAT(out, HasSubstr("[File] Enter a file name (open; Txt files (*.txt))"));
  EXPECT_EQ(valueOf(session, h[0]), L"typed");
  EXPECT_THAT(session.run({"attin", "^C"}), Not(HasSubstr("Reading")));
  // A folder is no file to read.
  EXPECT_THAT(session.run({"attin", std::filesystem::temp_directory_path().string()}),
              HasSubstr("[Alert] The attribute file cannot be opened."));
}

TEST(AttributeCommands, ExportReportsWhatItCannotDo) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  plainReferences(session.db(), 1);
  const std::string path = att::tempPath("nothing.txt");
  std::filesystem::remove(path);
  EXPECT_THAT(session.run({"attout", path, ""}),
              HasSubstr("No block references with attributes were selected."));
  EXPECT_FALSE(std::filesystem::exists(path));
  // A folder where no file can be made.
  EXPECT_THAT(session.run({"attout", "/proc/att.txt", "ALL", ""}),
              HasSubstr("[Alert] The file /proc/att.txt cannot be created."));
  // Esc in the dialog: nothing selected, nothing written.
  EXPECT_THAT(session.run({"attout", "^C"}), Not(HasSubstr("Select objects")));
  // Esc at the selection is a cancel, not an empty selection.
  const std::string cancelled = session.run({"attout", path, "^C"});
  EXPECT_THAT(cancelled, HasSubstr("*Cancel*"));
  EXPECT_THAT(cancelled, Not(HasSubstr("No block references")));
  // A write that ends early (here at a file size limit, as on a full disk)
  // is no export, and leaves no half file behind.
  plainReferences(session.db(), 200);
  const std::string cut = att::tempPath("cut.txt");
  std::filesystem::remove(cut);
  rlimit previous{};
  getrlimit(RLIMIT_FSIZE, &previous);
  rlimit small = previous;
  small.rlim_cur = 1000;
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  const std::string out = session.run({"attout", cut, "ALL", ""});
  setrlimit(RLIMIT_FSIZE, &previous);
  std::signal(SIGXFSZ, handler);
  EXPECT_THAT(out, HasSubstr("[Alert] The file " + cut + " cannot be created."));
  EXPECT_THAT(out, Not(HasSubstr("Attributes exported")));
  EXPECT_FALSE(std::filesystem::exists(cut));
}

TEST(AttributeCommands, ABinaryFileIsRefusedWithAWarning) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const auto h = plainReferences(session.db(), 1);
  const std::string path = att::tempPath("drawing.bin");
  att::writeBytes(path, "HANDLE\tBLOCKNAME\tV\n'" + h[0] + std::string("\tB\tx\0\0\n", 7));
  CommandLog log;
  const std::string out = session.run({"attin", path});
  EXPECT_THAT(out, HasSubstr(path + " is not a text file; nothing was read."));
  EXPECT_THAT(out, Not(HasSubstr("block references updated")));
  EXPECT_EQ(valueOf(session, h[0]), L"0");
  EXPECT_EQ(log.started, std::vector<std::string>{"attin"});
}

TEST(AttributeCommands, CorpusDrawingsGoThereAndBack) {
  const std::string path = att::tempPath("corpus.txt");
  {
    HostSession session(CorpusDrawing{"examples_dxf_multi_insert_with_attribs.dxf"});
    ASSERT_TRUE(session.loadModule());
    att::exportAll(session, path);
    EXPECT_EQ(att::lines(path), (std::vector<std::string>{"HANDLE\tBLOCKNAME\tNAME\tXPOS\tYPOS",
                                                          "'3B\tFLAG\tFlag\tx = 0.000\ty = 0.000"}));
  }
  HostSession session(CorpusDrawing{"examples_dxf_text_negative_extrusion.dxf"});
  ASSERT_TRUE(session.loadModule());
  const auto before = att::attributeValues(session.db());
  att::exportAll(session, path);
  // The same file read back changes nothing.
  EXPECT_THAT(session.run({"attin", path}), HasSubstr("0 block references updated."));
  EXPECT_EQ(att::attributeValues(session.db()), before);
  att::writeBytes(path, "HANDLE\tBLOCKNAME\tTAG-ROTATED\n'756\tATT_BLOCK\tturned\n");
  EXPECT_THAT(session.run({"attin", path}), HasSubstr("1 block references updated."));
  EXPECT_EQ(att::attributeValues(session.db())["756/1"], L"turned");
}
