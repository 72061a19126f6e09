// The DXF tokenizer on small handmade ASCII and binary inputs.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>

#include "dxf/DxfTagReader.h"

namespace {

using OdDxf::ValueType;

OdDxfTagList readAll(std::string_view data, std::string* error = nullptr) {
  OdDxfTagReader reader(data);
  OdDxfTagList tags;
  OdDxfTag tag;
  while (reader.next(tag)) tags.push_back(tag);
  if (error) *error = reader.errorMessage();
  return tags;
}

TEST(TagTypes, GroupCodeRanges) {
  struct Expected { int code; ValueType type; };
  const Expected cases[] = {
      {0, ValueType::kString},    {4, ValueType::kString},    {5, ValueType::kHandle},
      {6, ValueType::kString},    {9, ValueType::kString},    {10, ValueType::kPoint},
      {18, ValueType::kPoint},    {19, ValueType::kDouble},   {20, ValueType::kDouble},
      {59, ValueType::kDouble},   {60, ValueType::kInt16},    {79, ValueType::kInt16},
      {90, ValueType::kInt32},    {100, ValueType::kString},  {102, ValueType::kString},
      {105, ValueType::kHandle},  {110, ValueType::kPoint},   {112, ValueType::kPoint},
      {113, ValueType::kDouble},  {160, ValueType::kInt64},   {170, ValueType::kInt16},
      {210, ValueType::kPoint},   {220, ValueType::kDouble},  {270, ValueType::kInt16},
      {290, ValueType::kBool},    {300, ValueType::kString},  {310, ValueType::kBinary},
      {320, ValueType::kHandle},  {369, ValueType::kHandle},  {370, ValueType::kInt16},
      {390, ValueType::kHandle},  {400, ValueType::kInt16},   {410, ValueType::kString},
      {420, ValueType::kInt32},   {430, ValueType::kString},  {440, ValueType::kInt32},
      {459, ValueType::kInt32},   {460, ValueType::kDouble},  {470, ValueType::kString},
      {481, ValueType::kHandle},  {999, ValueType::kString},  {1003, ValueType::kString},
      {1004, ValueType::kBinary}, {1005, ValueType::kHandle}, {1009, ValueType::kString},
      {1010, ValueType::kPoint},  {1013, ValueType::kPoint},  {1014, ValueType::kDouble},
      {1059, ValueType::kDouble}, {1060, ValueType::kInt16},  {1070, ValueType::kInt16},
      {1071, ValueType::kInt32}};
  for (const Expected& expected : cases) {
    EXPECT_TRUE(OdDxf::isKnownCode(expected.code)) << expected.code;
    EXPECT_EQ(OdDxf::valueTypeOf(expected.code), expected.type) << expected.code;
  }
  for (int unknown : {-1, 80, 89, 103, 106, 150, 180, 240, 269, 482, 998, 1072, 5000}) {
    EXPECT_FALSE(OdDxf::isKnownCode(unknown)) << unknown;
  }
  EXPECT_EQ(OdDxf::stringCodePageOf(L"AC1018", L"ANSI_936"), 936);
  EXPECT_EQ(OdDxf::stringCodePageOf(L"AC1021", L"ANSI_936"), kOdCodePageUtf8);
  EXPECT_EQ(OdDxf::stringCodePageOf(L"AC1009", L""), 1252);
}

TEST(TagReaderAscii, ReadsValuesOfEveryType) {
  const std::string data =
      "  0\r\nSECTION\r\n  2\nHEADER \n 40\n  -1.5e3  \n 70\n   -7\n 90\n+2147483647\n160\n"
      "-9223372036854775808\n290\n1\n  5\n1aF\n310\n00ff7A\n1000\ntrailing  \n999\n\n";
  const OdDxfTagList tags = readAll(data);
  ASSERT_EQ(tags.size(), 11u);
  EXPECT_EQ(tags[0], OdDxfTag::str(0, L"SECTION"));
  EXPECT_EQ(tags[1], OdDxfTag::str(2, L"HEADER "));
  EXPECT_EQ(tags[2], OdDxfTag::real(40, -1500.0));
  EXPECT_EQ(tags[3], OdDxfTag::integer(70, -7));
  EXPECT_EQ(tags[4], OdDxfTag::integer(90, 2147483647));
  EXPECT_EQ(tags[5], OdDxfTag::integer(160, INT64_MIN));
  EXPECT_EQ(tags[6], OdDxfTag::integer(290, 1));
  EXPECT_EQ(tags[7], OdDxfTag::handle(5, 0x1AF));
  EXPECT_EQ(tags[8], OdDxfTag::binary(310, OdBinaryData{0x00, 0xFF, 0x7A}));
  EXPECT_EQ(tags[9], OdDxfTag::str(1000, L"trailing  "));
  EXPECT_EQ(tags[10], OdDxfTag::str(999, L""));
}

TEST(TagReaderAscii, MergesPointsAndKnowsLines) {
  const std::string data =
      " 10\n1\n 20\n2\n 30\n3\n"   // 3D point
      " 11\n4\n 21\n5\n 40\n6\n"   // 2D point, then a double
      " 20\n7\n"                   // lone y
      " 10\n8\n 30\n9\n"           // x without y, then a lone z
      "1010\n1\n1020\n2\n1030\n3\n  0\nEOF\n";
  OdDxfTagReader reader(data);
  struct Expected { int code; ValueType type; int dims; double x, y, z; int line; };
  const Expected expected[] = {
      {10, ValueType::kPoint, 3, 1, 2, 3, 1},       {11, ValueType::kPoint, 2, 4, 5, 0, 7},
      {40, ValueType::kDouble, 0, 6, 0, 0, 11},     {20, ValueType::kDouble, 0, 7, 0, 0, 13},
      {10, ValueType::kDouble, 0, 8, 0, 0, 15},     {30, ValueType::kDouble, 0, 9, 0, 0, 17},
      {1010, ValueType::kPoint, 3, 1, 2, 3, 19},    {0, ValueType::kString, 0, 0, 0, 0, 25}};
  for (const Expected& e : expected) {
    ASSERT_TRUE(reader.next()) << reader.errorMessage();
    EXPECT_EQ(reader.code(), e.code);
    EXPECT_EQ(reader.type(), e.type) << e.code;
    EXPECT_EQ(reader.dims(), e.dims) << e.code;
    if (e.type != ValueType::kString) {
      EXPECT_EQ(reader.x(), e.x);
      EXPECT_EQ(reader.y(), e.y);
      EXPECT_EQ(reader.z(), e.z);
    }
    EXPECT_EQ(reader.line(), e.line) << e.code;
  }
  EXPECT_FALSE(reader.next());
  EXPECT_TRUE(reader.atEnd());
  EXPECT_FALSE(reader.hasError());
}

TEST(TagReaderAscii, PushBackAndEndOfData) {
  OdDxfTagReader reader(std::string_view("  0\nSECTION\n 10\n1\n  0\nEOF \nignore\nthis junk\n"));
  ASSERT_TRUE(reader.next());
  reader.pushBack();
  reader.pushBack();
  ASSERT_TRUE(reader.next());
  EXPECT_EQ(reader.rawText(), "SECTION");
  ASSERT_TRUE(reader.next());  // lone x: its y was not there, the tag after it still is
  EXPECT_EQ(reader.type(), ValueType::kDouble);
  ASSERT_TRUE(reader.next());
  EXPECT_TRUE(reader.textIs("EOF"));
  EXPECT_FALSE(reader.next());
  EXPECT_TRUE(reader.atEnd());
  EXPECT_EQ(reader.bytesAfterEof(), 16u);

  OdDxfTagReader withoutEof(std::string_view("\xEF\xBB\xBF  0\nEOF\n  0\nMORE\n\n  \r\n\x1a"));
  withoutEof.setStopAtEof(false);
  int count = 0;
  while (withoutEof.next()) ++count;
  EXPECT_EQ(count, 2);
  EXPECT_TRUE(withoutEof.atEnd()) << withoutEof.errorMessage();
}

TEST(TagReaderAscii, MalformedInputGivesLineAndExpectation) {
  struct Case { const char* data; const char* message; OdResult code; };
  const Case cases[] = {
      {"  0\nA\nxyz\nB\n", "line 3: expected a group code, found 'xyz'", eSyntaxError},
      {"  0\nA\n\n  0\nB\n", "line 3: expected a group code, found ''", eSyntaxError},
      {"  0\nA\n 12 3\nB\n", "line 3: expected a group code, found ' 12 3'", eSyntaxError},
      {"  0\nA\n123456\nB\n", "line 3: expected a group code, found '123456'", eSyntaxError},
      {"  0\nA\n 40\n1.5x\n", "line 4: expected a real number for group code 40, found '1.5x'", eSyntaxError},
      {"  0\nA\n 40\n1,5\n", "line 4: expected a real number for group code 40, found '1,5'", eSyntaxError},
      {"  0\nA\n 70\n\n", "line 4: expected an integer for group code 70, found ''", eSyntaxError},
      {" 90\n99999999999999999999\n", "line 2: expected an integer for group code 90, found '99999999999999999999'",
       eSyntaxError},
      {"310\nABC\n", "line 2: expected hexadecimal data for group code 310, found 'ABC'", eSyntaxError},
      {"  0\nA\n 85\nB\n", "line 3: unknown group code 85", eSyntaxError},
      {"  0\nA\n  8\n", "line 4: unexpected end of file, expected the value of group code 8", eDxfReadAborted},
      {"  0\nA\n  8", "line 4: unexpected end of file, expected the value of group code 8", eDxfReadAborted},
      {"  0\n\x01\x02\n\xFF\n", "line 3: expected a group code, found '\\xFF'", eSyntaxError},
  };
  for (const Case& c : cases) {
    OdDxfTagReader reader(c.data);
    while (reader.next()) {
    }
    EXPECT_TRUE(reader.hasError()) << c.data;
    EXPECT_EQ(reader.errorMessage(), c.message);
    EXPECT_EQ(reader.errorCode(), c.code) << c.data;
    EXPECT_THROW(reader.throwIfError(), OdError);
  }
}

TEST(TagReaderAscii, ErrorAfterAPointComesAfterThePoint) {
  OdDxfTagReader reader(std::string_view(" 10\n1\n 20\n2\n 30\nbad\n"));
  ASSERT_TRUE(reader.next());
  EXPECT_EQ(reader.dims(), 2);
  EXPECT_FALSE(reader.next());
  EXPECT_EQ(reader.errorMessage(), "line 6: expected a real number for group code 30, found 'bad'");
}

TEST(TagReaderAscii, StringsDecodeWithTheCodePageSetMidStream) {
  const std::string data = "  1\nGr\xFC\xDF\n  1\n\xD6\xD0\\U+00FC\\M+5D6D0\n  1\n\xE4\xB8\xAD\\U+D83D\\U+DE00\n";
  OdDxfTagReader reader(data);
  ASSERT_TRUE(reader.next());
  EXPECT_EQ(reader.string(), L"Grüß");  // 1252 until told otherwise
  reader.setCodePage(936);
  ASSERT_TRUE(reader.next());
  EXPECT_EQ(reader.string(), L"中ü中");
  reader.setCodePage(kOdCodePageUtf8);
  ASSERT_TRUE(reader.next());
  EXPECT_EQ(reader.string(), L"中\U0001F600");
  reader.setDecodeEscapes(false);
  EXPECT_EQ(reader.string(), L"中\\U+D83D\\U+DE00");
}

TEST(TagReaderAscii, HandlesThatAreNotHexKeepTheirText) {
  OdDxfTagReader reader(std::string_view("  5\n\n330\n 0G \n  5\nFFFFFFFFFFFFFFFF\n"));
  OdDxfTag tag;
  ASSERT_TRUE(reader.next(tag));
  EXPECT_FALSE(reader.handleIsValid());
  ASSERT_TRUE(reader.next(tag));
  EXPECT_FALSE(reader.handleIsValid());
  EXPECT_EQ(tag.s, L" 0G ");
  ASSERT_TRUE(reader.next(tag));
  EXPECT_TRUE(reader.handleIsValid());
  EXPECT_EQ(reader.handle(), ~0ull);
  EXPECT_TRUE(tag.s.isEmpty());
}

// ---------------------------------------------------------------------------
// Binary

// The 22-byte sentinel that starts binary files, taken from a real one.
std::string binarySentinel() {
  std::ifstream in(std::string(KESTRIX_CORPUS_DIR) + "/integration_tests_data_bin_dxf_r13.dxf", std::ios::binary);
  std::string sentinel(22, '\0');
  in.read(sentinel.data(), 22);
  return sentinel;
}

class BinaryDxf {
 public:
  explicit BinaryDxf(bool shortCodes) : m_shortCodes(shortCodes), m_data(binarySentinel()) {}
  BinaryDxf& code(int code) {
    if (!m_shortCodes) return bytes(&code, 2);
    if (code < 255) return byte(code);
    byte(255);
    return bytes(&code, 2);
  }
  BinaryDxf& str(int tagCode, std::string_view text) {
    code(tagCode);
    m_data.append(text);
    return byte(0);
  }
  template <class T>
  BinaryDxf& number(int tagCode, T value) {
    code(tagCode);
    return bytes(&value, sizeof(value));
  }
  BinaryDxf& byte(int value) {
    m_data += static_cast<char>(value);
    return *this;
  }
  const std::string& data() const { return m_data; }

 private:
  BinaryDxf& bytes(const void* value, size_t size) {
    m_data.append(static_cast<const char*>(value), size);  // the machine is little-endian
    return *this;
  }
  bool m_shortCodes;
  std::string m_data;
};

TEST(TagReaderBinary, ReadsBothCodeWidths) {
  for (bool shortCodes : {false, true}) {
    BinaryDxf file(shortCodes);
    file.str(0, "SECTION").str(2, "ENTITIES").number(10, 1.5).number(20, -2.0).number(30, 0.25);
    file.number<OdInt16>(70, -3).number<OdInt32>(90, 100000).number<OdInt64>(160, -5).str(5, "2A");
    file.code(290).byte(1).code(310).byte(3).byte(0).byte(0xAB).byte(0x10);
    file.str(1000, "x\xFC").number<OdInt16>(1070, 12).number(40, 2.0).str(0, "EOF");
    OdDxfTagReader reader(file.data());
    EXPECT_TRUE(reader.isBinary());
    const OdDxfTagList expected = {
        OdDxfTag::str(0, L"SECTION"),   OdDxfTag::str(2, L"ENTITIES"),
        OdDxfTag::point(10, 1.5, -2.0, 0.25), OdDxfTag::integer(70, -3),
        OdDxfTag::integer(90, 100000),  OdDxfTag::integer(160, -5),
        OdDxfTag::handle(5, 0x2A),      OdDxfTag::integer(290, 1),
        OdDxfTag::binary(310, OdBinaryData{0x00, 0xAB, 0x10}),
        OdDxfTag::str(1000, L"xü"),     OdDxfTag::integer(1070, 12),
        OdDxfTag::real(40, 2.0),        OdDxfTag::str(0, L"EOF")};
    OdDxfTag tag;
    for (const OdDxfTag& want : expected) {
      ASSERT_TRUE(reader.next(tag)) << reader.errorMessage();
      EXPECT_EQ(tag, want) << tag.code << " short codes " << shortCodes;
    }
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.atEnd());
    EXPECT_EQ(reader.offset(), file.data().size() - (shortCodes ? 5 : 6));
  }
}

TEST(TagReaderBinary, EveryTruncationEndsWithAnErrorNamingTheOffset) {
  BinaryDxf file(false);
  file.str(0, "SECTION").number(10, 1.0).number(20, 2.0).number<OdInt32>(90, 7).code(310).byte(2).byte(1).byte(2);
  file.number<OdInt16>(70, 1).str(0, "EOF");
  const std::string& whole = file.data();
  std::string notBinary = whole;
  notBinary[20] = '\n';  // "\r\n\x1a" becomes "\r\n\n"
  EXPECT_FALSE(OdDxfTagReader::isBinaryDxf(notBinary));
  for (size_t size = 23; size < whole.size(); ++size) {
    OdDxfTagReader reader(std::string_view(whole.data(), size));
    while (reader.next()) {
    }
    if (reader.atEnd()) {
      // Only a cut exactly between tags ends cleanly.
      continue;
    }
    ASSERT_TRUE(reader.hasError()) << size;
    EXPECT_EQ(reader.errorCode(), eDxfReadAborted) << size;
    EXPECT_EQ(reader.errorMessage().rfind("byte offset ", 0), 0u) << reader.errorMessage();
  }
  std::string unknown = BinaryDxf(false).str(0, "SECTION").data();
  unknown += std::string("\x55\x00", 2);
  OdDxfTagReader reader(unknown);
  while (reader.next()) {
  }
  EXPECT_EQ(reader.errorMessage(), "byte offset 32: unknown group code 85");
}

}  // namespace
