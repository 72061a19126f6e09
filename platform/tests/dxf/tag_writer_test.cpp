// The ASCII tag writer: its format, and writer -> reader round trips.
#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <random>

#include "dxf/DxfTagReader.h"
#include "dxf/DxfTagWriter.h"

namespace {

using OdDxf::ValueType;

TEST(TagWriter, WritesTheClassicLayout) {
  OdDxfTagWriter writer;
  writer.writeRawString(0, "SECTION");
  writer.writeInt(70, -12);
  writer.writeHandle(5, 0x2AF);
  writer.writeHandle(330, 0);
  writer.writeString(1001, L"APP");
  writer.writeBinary(310, OdBinaryData{0x00, 0xAB, 0x7F});
  writer.writePoint(10, 1.0, 2.5);
  EXPECT_EQ(writer.data(),
            "  0\r\nSECTION\r\n 70\r\n-12\r\n  5\r\n2AF\r\n330\r\n0\r\n1001\r\nAPP\r\n310\r\n00AB7F\r\n"
            " 10\r\n1.0\r\n 20\r\n2.5\r\n");
  OdDxfTagWriter lf(kOdCodePageUtf8, OdDxfTagWriter::LineEnding::kLf);
  lf.writeTag(OdDxfTag::point(1010, 0.0, -0.0, 3.0));
  lf.writeTag(OdDxfTag::integer(290, 1));
  EXPECT_EQ(lf.release(), "1010\n0.0\n1020\n-0.0\n1030\n3.0\n290\n1\n");
  EXPECT_EQ(lf.size(), 0u);
}

TEST(TagWriter, DoublesAreShortestAndAlwaysReal) {
  struct Case { double value; const char* text; };
  const Case cases[] = {{0.0, "0.0"},         {1.0, "1.0"},       {-2.0, "-2.0"},      {0.1, "0.1"},
                        {1e20, "1.0E+20"},    {1.5e-7, "1.5E-07"}, {123456.0, "123456.0"},
                        {1e16, "1.0E+16"},    {5e-324, "5.0E-324"}, {-1.7976931348623157e308, "-1.7976931348623157E+308"}};
  for (const Case& c : cases) {
    EXPECT_EQ(OdDxfTag::real(40, c.value).valueText(), OdString(c.text)) << c.text;
  }
  EXPECT_EQ(OdDxfTag::point(10, 1, 2, 3).valueText(), L"1.0,2.0,3.0");
}

TEST(TagWriter, StringsAreEncodedForTheFileVersion) {
  OdDxfTagWriter ansi(1252, OdDxfTagWriter::LineEnding::kLf);
  ansi.writeString(1, L"Grüß 中\n\\U+0041");
  EXPECT_EQ(ansi.data(), "  1\nGr\xFC\xDF \\U+4E2D\\U+000A\\U+005CU+0041\n");
  EXPECT_FALSE(ansi.textWasLossy());
  OdDxfTagWriter utf8(kOdCodePageUtf8, OdDxfTagWriter::LineEnding::kLf);
  utf8.writeString(1, L"Grüß 中");
  EXPECT_EQ(utf8.data(), "  1\nGr\xC3\xBC\xC3\x9F \xE4\xB8\xAD\n");
  utf8.writeString(1, std::wstring(L"a\0b", 3));
  EXPECT_TRUE(utf8.textWasLossy());
}

// ---------------------------------------------------------------------------
// Round trips

class RandomTags {
 public:
  explicit RandomTags(unsigned seed) : m_random(seed) {}

  OdDxfTag next() {
    switch (pick(7)) {
      case 0: return OdDxfTag::str(pickOf({1, 2, 3, 7, 8, 100, 300, 1000, 999}), text());
      case 1: return OdDxfTag::real(pickOf({40, 41, 50, 140, 460, 1040, 1041}), real());
      case 2: {
        const int code = pickOf({10, 11, 18, 110, 112, 210, 1010, 1013});
        return OdDxfTag::point(code, real(), real(), real(), pick(2) ? 3 : 2);
      }
      case 3: return integerTag();
      case 4: {
        if (pick(20) == 0) return OdDxfTag::str(330, L"no handle");  // text that is no handle stays text
        return OdDxfTag::handle(pickOf({5, 105, 330, 360, 390, 480, 1005}), m_random() >> pick(64));
      }
      case 5: {
        OdBinaryData bytes(pick(128));
        for (auto& byte : bytes) byte = static_cast<OdUInt8>(m_random());
        return OdDxfTag::binary(pickOf({310, 311, 1004}), bytes);
      }
      default: return OdDxfTag::integer(pickOf({290, 299}), pick(2));
    }
  }

 private:
  unsigned pick(unsigned count) { return static_cast<unsigned>(m_random() % count); }
  int pickOf(std::initializer_list<int> codes) { return codes.begin()[pick(static_cast<unsigned>(codes.size()))]; }

  double real() {
    switch (pick(6)) {
      case 0: return std::bit_cast<double>(m_random() & 0x000FFFFFFFFFFFFFull);  // subnormal
      case 1: return pick(2) ? -0.0 : std::numeric_limits<double>::max();
      case 2: return -std::numeric_limits<double>::min();
      case 3: return static_cast<double>(static_cast<int>(m_random() % 2001) - 1000);
      default: {
        const double value = std::bit_cast<double>(m_random());
        return std::isfinite(value) ? value : 1e300;
      }
    }
  }

  OdDxfTag integerTag() {
    struct Range { int code; OdInt64 low, high; };
    static constexpr Range kRanges[] = {
        {70, INT16_MIN, INT16_MAX}, {1070, INT16_MIN, INT16_MAX}, {90, INT32_MIN, INT32_MAX},
        {1071, INT32_MIN, INT32_MAX}, {160, INT64_MIN, INT64_MAX}};
    const Range& range = kRanges[pick(5)];
    OdInt64 value;
    switch (pick(3)) {
      case 0: value = range.low; break;
      case 1: value = range.high; break;
      default: value = static_cast<OdInt64>(m_random()) % (range.high / 2);
    }
    return OdDxfTag::integer(range.code, value);
  }

  OdString text() {
    static const wchar_t* const kPieces[] = {
        L"abc", L" ", L"Grüße", L"é", L"€", L"中文", L"漢字", L"한", L"\U0001F600", L"\\", L"\\U+0041", L"\\M+18ABF",
        L"\\P", L"\n", L"\r", L"\t", L"^J", L"EOF", L"SECTION", L"0.5"};
    std::wstring result;
    for (unsigned count = pick(6); count > 0; --count) result += kPieces[pick(std::size(kPieces))];
    return OdString(result);
  }

  std::mt19937_64 m_random;
};

OdDxfTagList readBack(std::string_view data, int codePage) {
  OdDxfTagReader reader(data);
  reader.setCodePage(codePage);
  OdDxfTagList tags;
  OdDxfTag tag;
  while (reader.next(tag)) tags.push_back(tag);
  EXPECT_TRUE(reader.atEnd()) << reader.errorMessage();
  return tags;
}

TEST(TagRoundTrip, RandomTagsReadBackIdentical) {
  for (int codePage : {kOdCodePageUtf8, 1252, 936}) {
    RandomTags random(static_cast<unsigned>(codePage));
    OdDxfTagList written;
    OdDxfTagWriter writer(codePage, codePage == 1252 ? OdDxfTagWriter::LineEnding::kLf
                                                     : OdDxfTagWriter::LineEnding::kCrLf);
    for (int k = 0; k < 5000; ++k) {
      written.push_back(random.next());
      writer.writeTag(written.back());
    }
    EXPECT_FALSE(writer.textWasLossy());
    const OdDxfTagList read = readBack(writer.data(), codePage);
    ASSERT_EQ(read.size(), written.size()) << codePage;
    for (size_t k = 0; k < read.size(); ++k) {
      ASSERT_EQ(read[k], written[k]) << "code page " << codePage << ", tag " << k << ", code " << written[k].code
                                     << ": " << written[k].valueText().toUtf8() << " read as "
                                     << read[k].valueText().toUtf8();
    }
  }
}

TEST(TagRoundTrip, DamagedFilesNeverCrashOrHang) {
  RandomTags random(99);
  OdDxfTagWriter writer(1252);
  for (int k = 0; k < 200; ++k) writer.writeTag(random.next());
  const std::string whole(writer.data());
  std::mt19937 damage(5);
  for (int round = 0; round < 3000; ++round) {
    std::string data = whole.substr(0, damage() % whole.size());
    for (int flips = damage() % 4; flips > 0 && !data.empty(); --flips) {
      data[damage() % data.size()] = static_cast<char>(damage());
    }
    OdDxfTagReader reader(data);
    size_t tags = 0;
    while (reader.next()) ++tags;
    ASSERT_LE(tags, whole.size());
    ASSERT_NE(reader.atEnd(), reader.hasError());
    if (reader.hasError()) {
      ASSERT_EQ(reader.errorMessage().rfind("line ", 0), 0u) << reader.errorMessage();
    }
  }
}

}  // namespace
