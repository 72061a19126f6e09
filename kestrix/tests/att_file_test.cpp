// The encoded text file in its four encodings, and the attribute file as
// spreadsheets save it again and with characters outside the code page.
#include <gmock/gmock.h>

#include "kestrix_support.h"
#include "blocks/RyCStdioFile.h"

using testing::HasSubstr;

namespace {

std::string written(const std::wstring& text, int encoding, bool escape = true, bool lineEnds = false,
                    UINT type = CStdioFile::typeText) {
  const std::string path = att::tempPath("encoded.txt");
  RyCStdioFile file(encoding, escape, lineEnds);
  EXPECT_TRUE(file.Open(OdString(path).c_str(), CStdioFile::modeCreate | CStdioFile::modeWrite | type));
  file.WriteString(text.c_str());
  file.Close();
  return att::readBytes(path);
}

std::vector<std::wstring> readBack(const std::string& bytes, int encoding, bool escape = true,
                                   bool lineEnds = false, UINT type = CStdioFile::typeText) {
  const std::string path = att::tempPath("encoded.txt");
  att::writeBytes(path, bytes);
  RyCStdioFile file(encoding, escape, lineEnds);
  EXPECT_TRUE(file.Open(OdString(path).c_str(), CStdioFile::modeRead | type));
  std::vector<std::wstring> lines;
  for (OdString line; file.ReadString(line);) lines.push_back(line.str());
  return lines;
}

int detected(const std::string& bytes) {
  const std::string path = att::tempPath("detect.txt");
  att::writeBytes(path, bytes);
  RyCStdioFile file;
  file.Open(OdString(path).c_str(), CStdioFile::modeRead);
  return file.detectEncoding();
}

// Text of the basic plane as UTF-16 little-endian with its byte-order mark.
std::string utf16le(const std::wstring& text) {
  std::string bytes = "\xFF\xFE";
  for (wchar_t ch : text) bytes += {static_cast<char>(ch & 0xFF), static_cast<char>(ch >> 8)};
  return bytes;
}

using Lines = std::vector<std::wstring>;

}  // namespace

TEST(EncodedTextFile, WritesEachEncodingAndReadsItBack) {
  HostSession session;  // the code page is the host's
  struct Case {
    std::wstring text;
    int encoding;
    bool escape, lineEnds;
    UINT type;
    std::string bytes;
  };
  const Case cases[] = {
      {L"a\t\u03A9\u00E9\n\U0001F600\\x\n", 1, true, false, CStdioFile::typeText,
       "a\t\\U+03A9\xE9\r\n\\U+D83D\\U+DE00\\x\r\n"},
      {L"\u03A9\n", 1, false, false, CStdioFile::typeText, "?\r\n"},
      {L"x\n", 1, true, true, CStdioFile::typeBinary, "x\r\n"},
      {L"x\n", 1, true, true, CStdioFile::typeText, "x\r\r\n"},
      {L"\u03A9\u00E9\n", 2, true, false, CStdioFile::typeText, "\xCE\xA9\xC3\xA9\r\n"},
      {L"\u010A\n", 3, true, false, CStdioFile::typeText, std::string("\x0A\x01\x0D\x00\x0A\x00", 6)},
      {L"\U0001F600\n", 4, true, true, CStdioFile::typeBinary,
       std::string("\xD8\x3D\xDE\x00\x00\x0D\x00\x0A", 8)},
  };
  for (const Case& c : cases) {
    const std::string bytes = written(c.text, c.encoding, c.escape, c.lineEnds, c.type);
    EXPECT_EQ(bytes, c.bytes) << c.encoding;
    if (!c.escape) continue;
    Lines expected;
    std::wistringstream in(c.text);
    for (std::wstring line; std::getline(in, line);) expected.push_back(line);
    EXPECT_EQ(readBack(bytes, c.encoding, c.escape, c.lineEnds, c.type), expected) << c.encoding;
  }
  // Without the line-end flag a binary read keeps the return.
  EXPECT_EQ(readBack("x\r\ny", 1, true, false, CStdioFile::typeBinary), (Lines{L"x\r", L"y"}));
}

TEST(EncodedTextFile, ReadsEscapesOfEitherCaseAndLeavesOtherBackslashes) {
  HostSession session;
  const std::string text = "\\u+03a9\\U+03A9 \\M+5D6D0\\m+5d6d0 \\x \\U+0000 \\U+12 \\M+9ZZZZ \\U+D83D";
  EXPECT_EQ(readBack(text, 1), (Lines{L"\u03A9\u03A9 \u4E2D\u4E2D \\x \\U+0000 \\U+12 \\M+9ZZZZ \xD83D"}));
  EXPECT_EQ(readBack(text, 1, false), (Lines{OdString(text).str()}));
  // A double-byte code page: its characters as byte pairs, the rest escaped.
  session.run({"ANSICODEPAGE", "936"});
  const std::string bytes = written(L"\u4E2D\u03A9\U0001F600\n", 1);
  EXPECT_EQ(bytes, "\xD6\xD0\xA6\xB8\\U+D83D\\U+DE00\r\n");
  EXPECT_EQ(readBack(bytes, 1), (Lines{L"\u4E2D\u03A9\U0001F600"}));
}

TEST(EncodedTextFile, RecognisesByteOrderMarksOnlyAndTellsBinaryFiles) {
  HostSession session;
  EXPECT_EQ(detected("\xEF\xBB\xBFHANDLE"), RyCStdioFile::kUtf8);
  EXPECT_EQ(detected("\xFF\xFEH\0"), RyCStdioFile::kUtf16LittleEndian);
  EXPECT_EQ(detected("\xFE\xFF\0H"), RyCStdioFile::kUtf16BigEndian);
  // Code-page text that happens to form UTF-8 is still code-page text.
  EXPECT_EQ(detected("caf\xC3\xA9"), RyCStdioFile::kAnsi);
  EXPECT_EQ(detected("plain"), RyCStdioFile::kAnsi);

  const auto binary = [](const std::string& bytes) {
    const std::string path = att::tempPath("binary.bin");
    att::writeBytes(path, bytes);
    RyCStdioFile file;
    file.Open(OdString(path).c_str(), CStdioFile::modeRead);
    file.detectEncoding();
    const bool result = file.looksBinary();
    OdString first;
    file.ReadString(first);  // the position was kept
    return std::make_pair(result, first.toUtf8());
  };
  EXPECT_TRUE(binary(std::string("PK\3\4\0\0x", 7)).first);
  EXPECT_EQ(binary("HANDLE\tBLOCKNAME\r\n"), std::make_pair(false, std::string("HANDLE\tBLOCKNAME")));
  // UTF-16 text has zero bytes but no zero code unit.
  EXPECT_EQ(binary(utf16le(L"H\tB")), std::make_pair(false, std::string("H\tB")));
}

TEST(AttributeFiles, FilesSavedAgainBySpreadsheetsAreAccepted) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  std::vector<std::string> h;
  for (int i = 0; i < 3; ++i)
    h.push_back(att::reference(session.db(), L"B", 10 * i, {{L"V", L"v"}, {L"W", L"w"}}));
  const std::string path = att::tempPath("spreadsheet.txt");
  auto values = [&](int i) {
    auto all = att::attributeValues(session.db());
    return all[h[i] + "/0"] + L"|" + all[h[i] + "/1"];
  };
  const std::string header = "HANDLE\tBLOCKNAME\tV\tW";
  // Line feeds only, a line of tabs, quotes (kept: the file has no quoting),
  // an empty last field, blank lines and a last line without its line end.
  att::writeBytes(path, header + "\n\t\t\t\n'" + h[0] + "\tB\t\"5\"\" pipe, steel\"\t\n'" + h[1] +
                            "\tB\t\"quoted\"\t<>\n\n  \n'" + h[2] + "\tB\tlast\tend");
  EXPECT_THAT(session.run({"attin", path}), HasSubstr("3 block references updated."));
  EXPECT_EQ(values(0), L"\"5\"\" pipe, steel\"|");
  EXPECT_EQ(values(1), L"\"quoted\"|w");
  EXPECT_EQ(values(2), L"last|end");

  struct Variant {
    std::string bytes;
    int reference;
    std::wstring expected;
  };
  const Variant variants[] = {
      {"\xEF\xBB\xBF" + header + "\r\n'" + h[0] +
           "\tB\tGr\xC3\xB6\xC3\x9F"
           "e\t<>\r\n",
       0, L"Gr\u00F6\u00DFe|"},
      // Without a byte-order mark the file is code-page text, whatever it looks like.
      {header + "\n'" + h[1] + "\tB\tna\xC3\xAFve\t<>\n", 1, L"na\u00C3\u00AFve|w"},
      {utf16le(OdString(header + "\r\n'" + h[1] + "\tB\t").str() + L"\u4E2D\u6587\t<>\r\n"), 1,
       L"\u4E2D\u6587|w"},
      {header + "\r'" + h[2] + "\tB\tmac\t<>\r", 2, L"mac|end"},
  };
  for (const Variant& v : variants) {
    att::writeBytes(path, v.bytes);
    EXPECT_THAT(session.run({"attin", path}), HasSubstr("1 block references updated.")) << v.reference;
    EXPECT_EQ(values(v.reference), v.expected);
  }
}

TEST(AttributeFiles, CharactersOutsideTheCodePageAreEscapedAndComeBack) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const std::string h =
      att::reference(session.db(), L"B", 0, {{L"V", L"\u03A9\u4E2D\U0001F600"}, {L"W", L"caf\u00E9"}});
  const auto before = att::attributeValues(session.db());
  const std::string path = att::tempPath("escapes.txt");
  for (const char* codePage : {"1252", "936"}) {
    session.run({"ANSICODEPAGE", codePage});
    att::exportAll(session, path);
    const std::string expected = std::string(codePage) == "1252"
                                     ? "\\U+03A9\\U+4E2D\\U+D83D\\U+DE00\tcaf\xE9"
                                     : "\xA6\xB8\xD6\xD0\\U+D83D\\U+DE00\tcaf\xA8\xA6";
    EXPECT_THAT(att::readBytes(path), HasSubstr("\tB\t" + expected + "\r\n")) << codePage;
    EXPECT_THAT(session.run({"attin", path}), HasSubstr("0 block references updated.")) << codePage;
    EXPECT_EQ(att::attributeValues(session.db()), before) << codePage;
  }
}

TEST(AttributeFiles, AnUnchangedFileChangesNothing) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  // Quotes, separators, code-page text that looks like UTF-8, text beyond
  // the code page, and text that looks like the file's own escapes.
  const std::vector<std::wstring> values = {
      L"\"a,b\"", L"x;y", L"say \"\"hi\"\"", L"\"", L"\u00C3\u00A9", L"\u4E2D\u6587",
      L"\\U+4E2D", L"C:\\M+12345\\u+00e9", L"\\U+D83D\\U+DE00", L"end\\",
  };
  std::vector<att::Attribute> attributes;
  for (size_t i = 0; i < values.size(); ++i) attributes.push_back({L"T" + std::to_wstring(i), values[i]});
  att::reference(session.db(), L"B", 0, attributes);
  const auto before = att::attributeValues(session.db());
  const std::string path = att::tempPath("unchanged.txt");
  att::exportAll(session, path);
  // Worked out by hand: 1252 bytes, the backslashes that would start an
  // escape written as escapes themselves.
  EXPECT_THAT(att::readBytes(path),
              HasSubstr("\t\"a,b\"\tx;y\tsay \"\"hi\"\"\t\"\t\xC3\xA9\t\\U+4E2D\\U+6587\t\\U+005CU+4E2D\t"
                        "C:\\U+005CM+12345\\U+005Cu+00e9\t\\U+005CU+D83D\\U+005CU+DE00\tend\\\r\n"));
  EXPECT_THAT(session.run({"attin", path}), HasSubstr("\n0 block references updated."));
  EXPECT_EQ(att::attributeValues(session.db()), before);
}
