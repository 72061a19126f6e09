// Code-page conversions and the \U+ / \M+ escapes.
#include <gtest/gtest.h>

#include <random>

#include "OdCodePage.h"

namespace {

TEST(CodePageNames, DxfNamesMapBothWays) {
  EXPECT_EQ(odCodePageFromDxfName(L"ANSI_1252"), 1252);
  EXPECT_EQ(odCodePageFromDxfName(L"ansi_936"), 936);
  EXPECT_EQ(odCodePageFromDxfName(L"DOS437"), 437);
  EXPECT_EQ(odCodePageFromDxfName(L"DOS850"), 850);
  EXPECT_EQ(odCodePageFromDxfName(L"ISO8859-1"), 28591);
  EXPECT_EQ(odCodePageFromDxfName(L"ISO8859-15"), 28605);
  EXPECT_EQ(odCodePageFromDxfName(L"BIG5"), 950);
  EXPECT_EQ(odCodePageFromDxfName(L"GB2312"), 936);
  EXPECT_EQ(odCodePageFromDxfName(L"KSC5601"), 949);
  EXPECT_EQ(odCodePageFromDxfName(L"JOHAB"), 1361);
  EXPECT_EQ(odCodePageFromDxfName(L" ANSI_1251 "), 1251);
  EXPECT_EQ(odCodePageFromDxfName(L"ANSI_"), kOdCodePageNone);
  EXPECT_EQ(odCodePageFromDxfName(L"KLINGON"), kOdCodePageNone);
  for (int codePage : {874, 932, 936, 949, 950, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258, 437,
                       850, 852, 866, 28591, 28595, 28605, 10000, 1361, 65001}) {
    const OdString name = odDxfNameOfCodePage(codePage);
    ASSERT_FALSE(name.isEmpty()) << codePage;
    EXPECT_EQ(odCodePageFromDxfName(name.str()), codePage) << name.toUtf8();
    EXPECT_TRUE(odIsCodePageSupported(codePage)) << codePage;
  }
  EXPECT_EQ(odDxfNameOfCodePage(1252), L"ANSI_1252");
  EXPECT_EQ(odDxfNameOfCodePage(437), L"DOS437");
  EXPECT_TRUE(odDxfNameOfCodePage(12345).isEmpty());
  EXPECT_FALSE(odIsCodePageSupported(12345));
}

TEST(CodePageDecode, SingleAndDoubleByteText) {
  EXPECT_EQ(odDecodeCodePage("Gr\xFC\xDF \x80", 1252), L"Grüß €");
  EXPECT_EQ(odDecodeCodePage("\xCF\xF0\xE8\xE2\xE5\xF2", 1251), L"Привет");
  EXPECT_EQ(odDecodeCodePage("\x81\xB3", 437), L"ü│");
  EXPECT_EQ(odDecodeCodePage("a\xD6\xD0\xCE\xC4z", 936), L"a中文z");
  EXPECT_EQ(odDecodeCodePage("\x93\xFA\x96\x7B", 932), L"日本");
  EXPECT_EQ(odDecodeCodePage("\xC7\xD1\xB1\xDB", 949), L"한글");
  EXPECT_EQ(odDecodeCodePage("\xA4\xA4\xA4\xE5", 950), L"中文");
  EXPECT_EQ(odDecodeCodePage("\xB1\xA4\x5C", 932), L"ｱ､\\");  // half-width katakana are single bytes
}

TEST(CodePageDecode, InvalidBytesBecomeReplacementCharacters) {
  EXPECT_EQ(odDecodeCodePage("a\x81z", 1252), L"a\xFFFDz");       // undefined in 1252
  EXPECT_EQ(odDecodeCodePage("a\xD6", 936), L"a\xFFFD");          // lead byte at the end
  EXPECT_EQ(odDecodeCodePage("\xD6\n", 936), L"\xFFFD\n");        // bad trail byte is kept
  EXPECT_EQ(odDecodeCodePage("\xFF\xFF", 932), L"\xFFFD\xFFFD");
  EXPECT_EQ(odDecodeCodePage("x\x80y", 12345), L"x\xFFFDy");      // unknown code page: ASCII only
  // Random bytes never break a decoder; every output character is valid.
  std::mt19937 random(7);
  for (int codePage : {1252, 932, 936, 949, 950, 1361, kOdCodePageUtf8}) {
    std::string bytes(4096, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    const std::wstring text = odDecodeCodePage(bytes, codePage);
    EXPECT_LE(text.size(), bytes.size());
    for (wchar_t ch : text) ASSERT_TRUE(ch < 0xD800 || (ch > 0xDFFF && ch <= 0x10FFFF)) << codePage;
  }
}

TEST(CodePageEncode, UnmappableCharactersAreEscapedOrReplaced) {
  bool lossy = true;
  EXPECT_EQ(odEncodeCodePage(L"Grüß €", 1252, true, &lossy), "Gr\xFC\xDF \x80");
  EXPECT_FALSE(lossy);
  EXPECT_EQ(odEncodeCodePage(L"a中b", 1252, true, &lossy), "a\\U+4E2Db");
  EXPECT_TRUE(lossy);
  EXPECT_EQ(odEncodeCodePage(L"a中b", 1252, false, &lossy), "a?b");
  EXPECT_TRUE(lossy);
  // No best fit: 'é' is not silently turned into 'e' where the code page lacks it.
  EXPECT_EQ(odEncodeCodePage(L"é", 1251, true, &lossy), "\\U+00E9");
  EXPECT_EQ(odEncodeCodePage(L"é", 437, true, &lossy), "\x82");
  EXPECT_EQ(odEncodeCodePage(L"\U0001F600", 936, true, &lossy), "\\U+D83D\\U+DE00");
  EXPECT_EQ(odEncodeCodePage(L"中文", 936, true, &lossy), "\xD6\xD0\xCE\xC4");
  EXPECT_FALSE(lossy);
  EXPECT_EQ(odEncodeCodePage(L"日本ｱ", 932, true, &lossy), "\x93\xFA\x96\x7B\xB1");
}

TEST(CodePageEncode, EveryCharacterOfACodePageRoundTrips) {
  for (int codePage : {1252, 1250, 1251, 437, 850, 874, 28595, 10000, 932, 936, 949, 950, 1361}) {
    std::wstring all;
    for (int b = 0x20; b < 0x100; ++b) {
      const std::wstring one = odDecodeCodePage(std::string(1, static_cast<char>(b)), codePage);
      if (one != L"\xFFFD") all += one;
    }
    all += odDecodeCodePage("\xB0\xA1\xC8\xFE\x88\x9F", codePage);  // some double-byte pairs
    std::erase(all, L'\xFFFD');
    bool lossy = true;
    const std::string bytes = odEncodeCodePage(all, codePage, true, &lossy);
    EXPECT_FALSE(lossy) << codePage;
    EXPECT_EQ(odDecodeCodePage(bytes, codePage), all) << codePage;
  }
}

TEST(CodePageEscapes, UnicodeAndMultibyteEscapesDecode) {
  std::wstring text = L"Tsch\\U+00FCss \\U+d83d\\U+DE00 \\M+18ABF \\M+5D6D0 \\M+3C7D1";
  EXPECT_TRUE(odDecodeUnicodeEscapes(text));
  EXPECT_EQ(text, L"Tschüss \U0001F600 漢 中 한");
  // What does not stand for a valid character stays as written.
  for (const wchar_t* kept : {L"\\U+D83D alone", L"\\U+DE00", L"\\U+0000", L"\\U+12G4", L"\\U+12", L"\\M+9897A",
                              L"\\M+1FFFF", L"\\u+00FC", L"end \\"}) {
    std::wstring same = kept;
    EXPECT_FALSE(odDecodeUnicodeEscapes(same)) << same;
    EXPECT_EQ(same, kept);
  }
}

TEST(CodePageConverter, DecodesEscapesOnlyAtCharacterBoundaries) {
  std::wstring out;
  // 0x95 0x5C is one Shift-JIS character whose trail byte is a backslash.
  OdCodePageConverter(932).decode("\x95\\U+0041 \\U+0041", out, true);
  EXPECT_EQ(out, L"表U+0041 A");
  out.clear();
  OdCodePageConverter(kOdCodePageUtf8).decode("\xC3\xA9\\U+00E9\xE2\x82", out, true);
  EXPECT_EQ(out, L"éé\xFFFD\xFFFD");
}

TEST(CodePageConverter, DxfTextEscapingReadsBackExactly) {
  const std::wstring texts[] = {
      L"line\nbreak\r\n", L"literal \\U+0041 and \\M+18140 and \\P", L"trailing backslash \\", L"中文 Grüße \U0001F600"};
  for (int codePage : {1252, 936, kOdCodePageUtf8}) {
    const OdCodePageConverter converter(codePage);
    for (const std::wstring& text : texts) {
      std::string bytes;
      converter.encode(text, bytes, OdCodePageConverter::Escaping::kDxfText);
      EXPECT_EQ(bytes.find_first_of("\r\n"), std::string::npos);
      std::wstring back;
      converter.decode(bytes, back, true);
      EXPECT_EQ(back, text) << codePage << " " << bytes;
    }
    std::string bytes;
    EXPECT_TRUE(converter.encode(std::wstring(L"a\0b", 3), bytes, OdCodePageConverter::Escaping::kDxfText));
    EXPECT_EQ(bytes, "ab");
  }
}

}  // namespace
