// Tags in memory read as the same calls written as DXF text read: the text
// writer and reader are the oracle, tag by tag and for whole drawings.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "DbDatabase.h"
#include "DxfFile.h"
#include "dxf/DxfTagReader.h"
#include "dxf/DxfTagStream.h"
#include "dxf/DxfTagWriter.h"

namespace {

// The same calls to both writers.
template <class Writer>
void writeSample(Writer& w) {
  w.writeString(0, L"SECTION");
  w.writeString(1, std::wstring(L"nul\0inside", 10));
  w.writeString(1, L"\u03a9mega \\U+0041 and \\M+18140 kept  ");
  w.writeString(1, L"line\r\nbreak");
  // Point codes: merged x/y/z, x/y, a lone x, a lone y, a 2-D point and its z.
  w.writeDouble(10, 1.5);
  w.writeDouble(20, -2.25);
  w.writeDouble(30, 1e-300);
  w.writeDouble(11, 0.1);
  w.writeDouble(21, 0.2);
  w.writeInt(70, 3);
  w.writeDouble(12, 7.0);
  w.writeDouble(22, 8.0);
  w.writeDouble(13, -0.0);
  w.writeInt(70, 4);
  w.writePoint(14, 1, 2);
  w.writeDouble(34, 3);
  w.writePoint(210, 0, 0, 1);
  // A point written for codes that are no point codes: its separate doubles.
  w.writePoint(113, 5, 6, 7);
  // Values written for codes of another type.
  w.writeInt(41, 12);              // an integer for a real
  w.writeInt(90, 1LL << 40);       // out of its code's range: kept
  w.writeHandle(1, 0x1F);          // a handle for a string
  w.writeString(330, L"2A");       // hex text for a handle
  w.writeString(330, L"NOTHEX");   // a name where a handle goes
  w.writeHandle(5, 0);
  w.writeHandle(360, 0xFFFFFFFFFFFFull);
  w.writeBool(290, true);
  const OdUInt8 bytes[] = {0, 1, 0xAB, 0xFF};
  w.writeBinary(310, bytes, sizeof bytes);
  w.writeTag(OdDxfTag::point(1010, 1, 2, 3));
  w.writeTag(OdDxfTag::str(1000, L"xdata"));
  w.writeTag(OdDxfTag::integer(1071, -5));
  w.writeString(0, L" EOF ");
  w.writeString(0, L"AFTER");
}

struct Read {
  std::vector<OdDxfTag> tags;
  std::vector<int> lines;
  std::string error;
};

template <class Reader>
Read readAll(Reader& reader) {
  Read out;
  OdDxfTag tag;
  while (reader.next(tag)) {
    out.tags.push_back(tag);
    out.lines.push_back(reader.line());
  }
  out.error = reader.errorMessage();
  return out;
}

Read viaText(const std::function<void(OdDxfTagWriter&)>& write, bool stopAtEof = true) {
  OdDxfTagWriter writer(kOdCodePageAnsi, OdDxfTagWriter::LineEnding::kLf);
  write(writer);
  const std::string text(writer.data());
  OdDxfTagReader reader(text);
  reader.setStopAtEof(stopAtEof);
  return readAll(reader);
}

Read viaStream(const std::function<void(OdDxfTagStream&)>& write, bool stopAtEof = true) {
  OdDxfTagStream stream;
  write(stream);
  OdDxfTagStreamReader reader(stream);
  reader.setStopAtEof(stopAtEof);
  return readAll(reader);
}

void expectSame(const Read& text, const Read& stream) {
  ASSERT_EQ(text.tags.size(), stream.tags.size());
  for (size_t i = 0; i < text.tags.size(); ++i) {
    EXPECT_EQ(text.tags[i], stream.tags[i]) << "tag " << i << ": " << text.tags[i].code << " "
                                             << text.tags[i].valueText().toUtf8() << " / "
                                             << stream.tags[i].valueText().toUtf8();
    EXPECT_EQ(text.lines[i], stream.lines[i]) << "tag " << i;
  }
  EXPECT_EQ(text.error, stream.error);
}

TEST(DxfTagStream, ReadsTheTagsTheTextGives) {
  const Read text = viaText([](OdDxfTagWriter& w) { writeSample(w); });
  expectSame(text, viaStream([](OdDxfTagStream& w) { writeSample(w); }));
  // What the sample is meant to cover, worked out by hand.
  ASSERT_GE(text.tags.size(), 6u);
  EXPECT_EQ(text.tags[1].s, OdString(L"nulinside"));
  EXPECT_EQ(text.tags[4].dims, 3);
  EXPECT_EQ(text.tags[4].z, 1e-300);
  EXPECT_EQ(text.tags.back().s, OdString(L" EOF "));
  // And without stopping at EOF, the tag after it.
  expectSame(viaText([](OdDxfTagWriter& w) { writeSample(w); }, false),
             viaStream([](OdDxfTagStream& w) { writeSample(w); }, false));
}

TEST(DxfTagStream, ValuesThatDoNotReadFailAsInText) {
  const auto realForInteger = [](auto& w) {
    w.writeString(0, L"LINE");
    w.writeDouble(70, 1.5);
  };
  const Read text = viaText(realForInteger);
  EXPECT_NE(text.error, "");
  expectSame(text, viaStream(realForInteger));
  const auto unknownCode = [](auto& w) {
    w.writeInt(70, 1);
    w.writeString(1100, L"x");
  };
  expectSame(viaText(unknownCode), viaStream(unknownCode));
}

TEST(DxfTagStream, PushBackDeliversTheTagAgain) {
  OdDxfTagStream stream;
  stream.writeDouble(10, 1);
  stream.writeDouble(20, 2);
  stream.writeString(0, L"EOF");
  OdDxfTagStreamReader reader(stream);
  OdDxfTag first, again;
  ASSERT_TRUE(reader.next(first));
  reader.pushBack();
  reader.pushBack();
  ASSERT_TRUE(reader.next(again));
  EXPECT_EQ(first, again);
  EXPECT_EQ(again.dims, 2);
  ASSERT_TRUE(reader.next(again));  // EOF ends the data, and comes back once pushed back
  EXPECT_FALSE(reader.next(again));
  reader.pushBack();
  ASSERT_TRUE(reader.next(again));
  EXPECT_EQ(again.s, OdString(L"EOF"));
  EXPECT_EQ(reader.line(), 5);
}

// Whole drawings: the tags of each file of the corpus, handed over in memory,
// give the drawing the file gives, with the same repairs.
TEST(DxfTagStream, CorpusDrawingsReadAlike) {
  namespace fs = std::filesystem;
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(std::string(KESTRIX_CORPUS_DIR) + "/dwg")) {
    if (entry.path().extension() == ".dxf") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  ASSERT_FALSE(files.empty());
  for (const fs::path& path : files) {
    SCOPED_TRACE(path.filename().string());
    std::ifstream in(path, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    const std::string data = content.str();
    OdDxfReadReport fromText, fromTags;
    OdDbDatabasePtr expected;
    try {
      expected = odDxfReadBuffer(data, &fromText);
    } catch (const OdError&) {
      continue;  // files the reader refuses are not this test's concern
    }
    // The file's tags, strings decoded with the code page its header names.
    OdDxfTagStream stream;
    OdDxfTagReader reader(data);
    reader.setCodePage(OdDxf::stringCodePageOf(fromText.versionName.c_str(),
                                               expected->headerString(L"$DWGCODEPAGE").c_str()));
    OdDxfTag tag;
    while (reader.next(tag)) stream.writeTag(tag);
    OdDbDatabasePtr actual = odDxfReadTags(stream, &fromTags);
    EXPECT_EQ(odDxfWriteBuffer(expected.get(), odDxfSaveVersion(expected.get())),
              odDxfWriteBuffer(actual.get(), odDxfSaveVersion(actual.get())));
    // Repairs that name lines differ where the text had comments or blank groups.
    EXPECT_EQ(fromText.repairs.size(), fromTags.repairs.size());
  }
}

}  // namespace
