// The tokenizer and writer on the real drawings of the shared corpus.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "dxf/DxfTagReader.h"
#include "dxf/DxfTagWriter.h"

namespace {

namespace fs = std::filesystem;

const fs::path kCorpus = KESTRIX_CORPUS_DIR;

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

std::vector<fs::path> corpusDrawings() {
  std::vector<fs::path> paths;
  if (!fs::is_directory(kCorpus)) return paths;
  for (const auto& entry : fs::directory_iterator(kCorpus)) {
    std::string extension = entry.path().extension().string();
    for (char& ch : extension) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    if (extension == ".dxf") paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

// All tags of a file, with the code page switched as the header tells.
struct ReadResult {
  OdDxfTagList tags;
  int codePage = kOdCodePageAnsi;
  bool binary = false;
  size_t bytesAfterEof = 0;
};

ReadResult readDrawing(std::string_view data) {
  OdDxfTagReader reader(data);
  ReadResult result;
  result.binary = reader.isBinary();
  std::wstring acadVer, dwgCodePage, *pendingVariable = nullptr;
  OdDxfTag tag;
  while (reader.next(tag)) {
    if (pendingVariable && tag.type == OdDxf::ValueType::kString) {
      *pendingVariable = tag.s.str();
      result.codePage = OdDxf::stringCodePageOf(acadVer, dwgCodePage);
      reader.setCodePage(result.codePage);
    }
    pendingVariable = nullptr;
    if (tag.code == 9 && tag.s == L"$ACADVER") pendingVariable = &acadVer;
    if (tag.code == 9 && tag.s == L"$DWGCODEPAGE") pendingVariable = &dwgCodePage;
    result.tags.push_back(tag);
  }
  EXPECT_TRUE(reader.atEnd()) << reader.errorMessage();
  result.bytesAfterEof = reader.bytesAfterEof();
  return result;
}

TEST(TagCorpus, EveryDrawingTokenizesAndRoundTrips) {
  const std::vector<fs::path> drawings = corpusDrawings();
  ASSERT_GE(drawings.size(), 50u) << "corpus missing at " << kCorpus;
  int binaryFiles = 0;
  for (const fs::path& path : drawings) {
    SCOPED_TRACE(path.filename().string());
    const std::string data = readFile(path);
    const ReadResult original = readDrawing(data);
    ASSERT_GE(original.tags.size(), 4u);
    EXPECT_EQ(original.tags.back().s, L"EOF");
    binaryFiles += original.binary;

    OdDxfTagWriter writer(original.codePage);
    writer.reserve(data.size() * 2);
    for (const OdDxfTag& tag : original.tags) writer.writeTag(tag);
    const ReadResult again = readDrawing(writer.data());
    EXPECT_EQ(again.codePage, original.codePage);
    ASSERT_EQ(again.tags.size(), original.tags.size());
    for (size_t k = 0; k < again.tags.size(); ++k) {
      ASSERT_EQ(again.tags[k], original.tags[k]) << "tag " << k << " code " << original.tags[k].code;
    }
  }
  EXPECT_EQ(binaryFiles, 3);
}

TEST(TagCorpus, BinaryDrawingsOfEachCodeWidth) {
  struct Expected { const char* file; const wchar_t* version; };
  for (const Expected& e : {Expected{"integration_tests_data_bin_dxf_r12.dxf", L"AC1009"},
                            Expected{"integration_tests_data_bin_dxf_r13.dxf", L"AC1012"},
                            Expected{"integration_tests_data_bin_dxf_r2000.dxf", L"AC1015"}}) {
    const std::string data = readFile(kCorpus / e.file);
    const ReadResult drawing = readDrawing(data);
    ASSERT_TRUE(drawing.binary) << e.file;
    ASSERT_GE(drawing.tags.size(), 4u) << e.file;
    EXPECT_EQ(drawing.tags[0], OdDxfTag::str(0, L"SECTION"));
    EXPECT_EQ(drawing.tags[1], OdDxfTag::str(2, L"HEADER"));
    EXPECT_EQ(drawing.tags[2], OdDxfTag::str(9, L"$ACADVER"));
    EXPECT_EQ(drawing.tags[3], OdDxfTag::str(1, e.version)) << e.file;
    const auto points = std::count_if(drawing.tags.begin(), drawing.tags.end(),
                                      [](const OdDxfTag& tag) { return tag.type == OdDxf::ValueType::kPoint; });
    EXPECT_GT(points, 20) << e.file;
  }
}

TEST(TagCorpus, TextAndDamageOfParticularDrawings) {
  const ReadResult unicode = readDrawing(readFile(kCorpus / "integration_tests_data_dxf_unicode.dxf"));
  EXPECT_EQ(unicode.codePage, kOdCodePageUtf8);
  EXPECT_TRUE(std::any_of(unicode.tags.begin(), unicode.tags.end(),
                          [](const OdDxfTag& tag) { return tag.s == L"Tschüss mit ü"; }));

  const ReadResult dos = readDrawing(readFile(kCorpus / "examples_edgeminer_4_world.dxf"));
  EXPECT_EQ(dos.codePage, kOdCodePageUtf8);  // AC1027: UTF-8 although it names DOS850

  const std::string trashData = readFile(kCorpus / "integration_tests_data_R12_with_trash_beyond_EOF.dxf");
  const ReadResult trash = readDrawing(trashData);
  EXPECT_EQ(trash.bytesAfterEof, 30u);  // "ignore\ninvalid\ndata\nbeyond\nEOF"
  OdDxfTagReader strict(trashData);
  strict.setStopAtEof(false);
  while (strict.next()) {
  }
  EXPECT_EQ(strict.errorMessage(), "line 19: expected a group code, found 'ignore'");
}

}  // namespace
